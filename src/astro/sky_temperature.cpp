#include "astro/sky_temperature.h"

#include <cmath>

// Sky temperature in kelvin at 144 MHz along the ecliptic, in 2-degree steps.
// Entry i covers longitudes 2(i+1) up to 2(i+2); the last entry covers 0 to 2.
static const int sky_temp_144[180] = {
    234,  246, 257, 267, 275, 280,  283,  286,  291,  298,  305,  313,  322,  331,  341,  351,  361,  369,  376,  381,
    383,  382, 379, 374, 370, 366,  363,  361,  363,  368,  376,  388,  401,  415,  428,  440,  453,  467,  487,  512,
    544,  579, 607, 618, 609, 588,  563,  539,  512,  482,  450,  422,  398,  379,  363,  349,  334,  319,  302,  282,
    262,  242, 226, 213, 205, 200,  198,  197,  196,  197,  200,  202,  204,  205,  204,  203,  202,  201,  203,  206,
    212,  218, 223, 227, 231, 236,  240,  243,  247,  257,  276,  301,  324,  339,  346,  344,  339,  331,  323,  316,
    312,  310, 312, 317, 327, 341,  358,  375,  392,  407,  422,  437,  451,  466,  480,  494,  511,  530,  552,  579,
    612,  653, 702, 768, 863, 1008, 1232, 1557, 1966, 2385, 2719, 2924, 3018, 3038, 2986, 2836, 2570, 2213, 1823, 1461,
    1163, 939, 783, 677, 602, 543,  494,  452,  419,  392,  373,  360,  353,  350,  350,  350,  350,  350,  350,  348,
    344,  337, 329, 319, 307, 295,  284,  276,  272,  272,  273,  274,  274,  271,  266,  260,  252,  245,  238,  231,
};

// The table's index of a longitude. A longitude outside 0..360 is first
// brought into it, and one that is not a number reads the 0-to-2 entry, so no
// input can index outside the table.
static int sky_temperature_index(double longitude)
{
    if (longitude < 0.0 || longitude >= 360.0)
    {
        longitude = fmod(longitude, 360.0);
        if (longitude < 0.0)
        {
            longitude += 360.0;
        }
    }
    if (!(longitude >= 2.0))
    {
        return 179;
    }
    int i = (int)floor(longitude / 2.0) - 1;
    return i > 179 ? 179 : i;
}

// The galactic background falls with frequency by the spectral index 2.6;
// the 2.7 K of the cosmic background does not scale.
double sky_temperature(double frequency_mhz, double ecliptic_longitude)
{
    double t144 = sky_temp_144[sky_temperature_index(ecliptic_longitude)];
    return (t144 - 2.7) * pow(144.0 / frequency_mhz, 2.6) + 2.7;
}
