// What the sky map shows: one switch per layer, the magnitude limit of the
// catalogue objects and the map's turn, kept in the OVERLAYS section of the
// main INI file between runs.
#pragma once

#include <cstdint>

struct OverlaySettings
{
    uint8_t SunOverlay;
    uint8_t MoonOverlay;
    uint8_t MercuryOverlay; // a planet's switch also decides whether the map computes its row
    uint8_t VenusOverlay;
    uint8_t MarsOverlay;
    uint8_t SaturnOverlay;
    uint8_t JupiterOverlay;
    uint8_t NeptuneOverlay;
    uint8_t UranusOverlay;
    uint8_t PlutoOverlay;
    uint8_t SunShadingOverlay;
    uint8_t MoonShadingOverlay;
    uint8_t SkyNoiseOverlay; // the sky noise picture and the radio source markers
    int32_t StarsMagnitude;  // objects fainter than this are left out; magnitude 0 (unknown) never is
    uint8_t StarsOverlay;
    uint8_t ConstellationsOverlay;
    uint8_t LatitudeGridlines;
    uint8_t LongitudeGridlines;
    int32_t MapOffset; // hours, 0 to 23, that the map is turned to the right
};

extern OverlaySettings overlays;

// Clear the record and read every key of the section from the named INI file
// of the settings folder; a missing file or key gives its default. Returns 0.
int LoadOverlays(const char *file_name, OverlaySettings &record);
// Write every key, the other sections of the file as they were. Returns 0;
// a file that cannot be written is not reported.
int SaveOverlays(const char *file_name, const OverlaySettings &record);
