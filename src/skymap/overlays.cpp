#include "skymap/overlays.h"

#include "core/ini_file.h"
#include "core/settings.h"

#include <cstring>

OverlaySettings overlays;

// The keys in the order the file keeps them, each with its default; a key is
// a switch or a number. A number from a hand-edited file is held to what the
// dialog can show: a turn of 30 hours would put the picture off the map.
struct OverlayKey
{
    const char *key;
    const char *fallback;
    uint8_t OverlaySettings::*flag;
    int32_t OverlaySettings::*number;
    int32_t most;
};

static const OverlayKey overlay_keys[] = {
    {"SunOverlay", "true", &OverlaySettings::SunOverlay, nullptr, 0},
    {"MoonOverlay", "true", &OverlaySettings::MoonOverlay, nullptr, 0},
    {"MercuryOverlay", "true", &OverlaySettings::MercuryOverlay, nullptr, 0},
    {"VenusOverlay", "true", &OverlaySettings::VenusOverlay, nullptr, 0},
    {"MarsOverlay", "true", &OverlaySettings::MarsOverlay, nullptr, 0},
    {"SaturnOverlay", "true", &OverlaySettings::SaturnOverlay, nullptr, 0},
    {"JupiterOverlay", "true", &OverlaySettings::JupiterOverlay, nullptr, 0},
    {"NeptuneOverlay", "true", &OverlaySettings::NeptuneOverlay, nullptr, 0},
    {"UranusOverlay", "true", &OverlaySettings::UranusOverlay, nullptr, 0},
    {"PlutoOverlay", "true", &OverlaySettings::PlutoOverlay, nullptr, 0},
    {"SunShadingOverlay", "false", &OverlaySettings::SunShadingOverlay, nullptr, 0},
    {"MoonShadingOverlay", "false", &OverlaySettings::MoonShadingOverlay, nullptr, 0},
    {"SkyNoiseOverlay", "true", &OverlaySettings::SkyNoiseOverlay, nullptr, 0},
    {"StarsOverlay", "true", &OverlaySettings::StarsOverlay, nullptr, 0},
    {"StarsMagnitude", "6", nullptr, &OverlaySettings::StarsMagnitude, 20},
    {"ConstellationsOverlay", "false", &OverlaySettings::ConstellationsOverlay, nullptr, 0},
    {"LatitudeGridlines", "true", &OverlaySettings::LatitudeGridlines, nullptr, 0},
    {"LongitudeGridlines", "true", &OverlaySettings::LongitudeGridlines, nullptr, 0},
    {"MapOffset", "0", nullptr, &OverlaySettings::MapOffset, 23},
};

static const char overlay_section[] = "OVERLAYS";

int LoadOverlays(const char *file_name, OverlaySettings &record)
{
    char path[1024];
    IniFile ini;
    settings_path(file_name, path, sizeof path);
    ini_read(path, &ini);
    memset(&record, 0, sizeof record);
    for (const OverlayKey &k : overlay_keys)
    {
        if (k.flag)
        {
            record.*k.flag = (uint8_t)ini_bool(&ini, overlay_section, k.key, k.fallback);
        }
        else
        {
            int value = ini_int(&ini, overlay_section, k.key, k.fallback);
            record.*k.number = value < 0 ? 0 : value > k.most ? k.most : value;
        }
    }
    return 0;
}

int SaveOverlays(const char *file_name, const OverlaySettings &record)
{
    char path[1024];
    IniFile ini;
    settings_path(file_name, path, sizeof path);
    ini_read(path, &ini);
    for (const OverlayKey &k : overlay_keys)
    {
        if (k.flag)
        {
            ini_set_bool(&ini, overlay_section, k.key, record.*k.flag);
        }
        else
        {
            ini_set_int(&ini, overlay_section, k.key, record.*k.number);
        }
    }
    ini_write(path, &ini);
    return 0;
}
