// The OVERLAYS section: defaults on a first run, every key written in its
// order, a round trip, and what a hand-edited file may not do.
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"
#include "skymap/overlays.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{

std::string ini_path(void)
{
    char path[1024];
    settings_path("Morvane.ini", path, sizeof path);
    return path;
}

} // namespace

TEST(Overlays, FirstRunGivesTheDefaultsAndSavesEveryKeyInOrder)
{
    test_clear_settings();
    OverlaySettings o;
    memset(&o, 0xff, sizeof o);
    LoadOverlays("Morvane.ini", o);
    const uint8_t on[] = {o.SunOverlay,      o.MoonOverlay,    o.MercuryOverlay,    o.VenusOverlay,      o.MarsOverlay,
                          o.SaturnOverlay,   o.JupiterOverlay, o.NeptuneOverlay,    o.UranusOverlay,     o.PlutoOverlay,
                          o.SkyNoiseOverlay, o.StarsOverlay,   o.LatitudeGridlines, o.LongitudeGridlines};
    for (uint8_t flag : on)
    {
        EXPECT_EQ(flag, 1);
    }
    EXPECT_EQ(o.SunShadingOverlay + o.MoonShadingOverlay + o.ConstellationsOverlay, 0);
    EXPECT_EQ(o.StarsMagnitude, 6);
    EXPECT_EQ(o.MapOffset, 0);

    SaveOverlays("Morvane.ini", o);
    EXPECT_EQ(test_read_file(ini_path()),
              "[OVERLAYS]\nSunOverlay=true\nMoonOverlay=true\nMercuryOverlay=true\nVenusOverlay=true\n"
              "MarsOverlay=true\nSaturnOverlay=true\nJupiterOverlay=true\nNeptuneOverlay=true\nUranusOverlay=true\n"
              "PlutoOverlay=true\nSunShadingOverlay=false\nMoonShadingOverlay=false\nSkyNoiseOverlay=true\n"
              "StarsOverlay=true\nStarsMagnitude=6\nConstellationsOverlay=false\nLatitudeGridlines=true\n"
              "LongitudeGridlines=true\nMapOffset=0\n");
}

// Every field comes back as written, and the main sections stay as they were.
TEST(Overlays, RoundTripKeepsTheOtherSections)
{
    test_clear_settings();
    state_reset();
    settings.Frequency = 432.1;
    SaveSettings("Morvane.ini", &settings);
    OverlaySettings o;
    memset(&o, 0, sizeof o);
    o.MoonOverlay = o.PlutoOverlay = o.SunShadingOverlay = o.ConstellationsOverlay = 1;
    o.StarsMagnitude = 20;
    o.MapOffset = 23;
    SaveOverlays("Morvane.ini", o);

    OverlaySettings back;
    memset(&back, 0x55, sizeof back);
    LoadOverlays("Morvane.ini", back);
    EXPECT_EQ(memcmp(&o, &back, sizeof o), 0);
    LoadSettings("Morvane.ini", &settings);
    EXPECT_EQ(settings.Frequency, 432.1);
}

TEST(Overlays, NumbersOutOfTheDialogsRangeAreHeldToIt)
{
    struct Row
    {
        const char *magnitude, *offset;
        int want_magnitude, want_offset;
    };
    static const Row rows[] = {{"25", "30", 20, 23}, {"-3", "-1", 0, 0}, {"x", "", 0, 0}, {"12", "12", 12, 12}};
    for (const Row &r : rows)
    {
        test_clear_settings();
        IniFile ini;
        ini_set(&ini, "OVERLAYS", "StarsMagnitude", r.magnitude);
        ini_set(&ini, "OVERLAYS", "MapOffset", r.offset);
        ASSERT_EQ(ini_write(ini_path().c_str(), &ini), 0);
        OverlaySettings o;
        LoadOverlays("Morvane.ini", o);
        EXPECT_EQ(o.StarsMagnitude, r.want_magnitude) << r.magnitude;
        EXPECT_EQ(o.MapOffset, r.want_offset) << r.offset;
    }
}
