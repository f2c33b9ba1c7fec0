#include "astro/radio_sources.h"

#include <libnova/utility.h>

enum
{
    RADIO_FIRST_ROW = 12,
    RADIO_COUNT = 12
};

struct RadioSource
{
    struct ln_hms ra;
    struct ln_dms dec; // neg, degrees, minutes, seconds
};

// Kept as the catalogue writes them, and converted at each use.
static const RadioSource radio_table[RADIO_COUNT] = {
    {{17, 45, 40.0409}, {1, 29, 0, 28.118}}, // Sagittarius A
    {{23, 23, 26.0}, {0, 58, 48, 0.0}},      // Cassiopeia A
    {{19, 59, 24.0}, {0, 40, 43, 48.0}},     // Cygnus A
    {{5, 34, 48.0}, {0, 22, 0, 36.0}},       // Taurus A
    {{12, 30, 36.0}, {0, 12, 23, 24.0}},     // Virgo A
    {{13, 25, 12.0}, {1, 43, 0, 0.0}},       // Centaurus A
    {{5, 35, 24.0}, {1, 5, 22, 48.0}},       // Orion M42
    {{18, 17, 24.0}, {1, 16, 8, 24.0}},      // M17
    {{3, 19, 30.0}, {0, 41, 30, 36.0}},      // Perseus A
    {{22, 28, 12.0}, {0, 0, 0, 0.0}},        // Aquarius
    {{9, 59, 24.0}, {0, 30, 45, 0.0}},       // Leo
    {{5, 30, 0.0}, {1, 44, 59, 24.0}},       // Pictor
};

int radio_source_position(int index, struct ln_equ_posn *position)
{
    int i = index - RADIO_FIRST_ROW;
    if (i < 0 || i >= RADIO_COUNT)
    {
        return -1;
    }
    // libnova's converters take non-const records.
    RadioSource source = radio_table[i];
    position->ra = ln_hms_to_deg(&source.ra);
    position->dec = ln_dms_to_deg(&source.dec);
    return 0;
}
