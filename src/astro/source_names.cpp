#include "astro/source_names.h"

#include "core/state.h"

const char *source_name(int index)
{
    static const char *const names[SOURCE_COUNT] = {
        "Moon",          "Sun",          "User Az/El", "User RA/Dec", "Mercury",  "Venus",     "Mars",
        "Jupiter",       "Saturn",       "Uranus",     "Neptune",     "Pluto",    "Sagittarius A",
        "Cassiopeia A",  "Cygnus A",     "Taurus A",   "Virgo A",     "Centaurus A", "Orion M42", "M17",
        "Perseus A",     "Aquarius",     "Leo",        "Pictor",      "EasyComm", "GPredict",  "PstRotator",
    };
    return index >= 0 && index < SOURCE_COUNT ? names[index] : "";
}
