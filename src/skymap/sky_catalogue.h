// The sky map's background: the 88 constellations with the anchor of their
// label, the boundary outlines, and the deep-sky objects, all in the same
// constellation order (AND = 0 ... VUL = 87). The rows are constant data
// compiled into the program from data/skydata by the sky table generator,
// so the map needs no file at run time. Right ascension is in hours,
// declination in degrees; the outlines and label anchors are at B1875, the
// objects at J2000, and the map puts them on the Earth with no precession.
#pragma once

#include <cstdint>

enum
{
    CONSTELLATION_COUNT = 88,
    DEEP_SKY_TYPE_COUNT = 13
};

// The object classes the map draws, as bits over the type number: galaxies
// (1), open (2) and globular (3) clusters, galaxy groups (7), clusters with
// nebulosity (9), asterisms (10) and planetary nebulae (11). Type 0 rows are
// duplicates, stars and unidentified entries, kept so a number is not lost.
constexpr int32_t drawable_object_types = 1 << 1 | 1 << 2 | 1 << 3 | 1 << 7 | 1 << 9 | 1 << 10 | 1 << 11;

struct ConstellationInfo
{
    char abbreviation[5];
    char name[35];
    double ra; // the label's anchor: the area-weighted centre
    double dec;
    double area;       // square degrees
    int32_t size_rank; // 1 (Hydra) to 88 (Crux)
};

struct BoundaryPoint
{
    double ra;
    double dec;
};

// An open outline: the edge from the last point back to the first is not
// drawn. Every edge runs along a constant right ascension or declination.
struct BoundaryGroup
{
    char abbreviation[8]; // "SER1" for group 75: Serpens Caput alone
    int32_t count;
    const BoundaryPoint *points;
};

struct DeepSkyObject
{
    int32_t number; // NGC or IC number; the row does not say which
    int32_t type;   // class 0 to 12
    double ra;
    double dec;
    double dimension; // arc minutes, 0 where unknown
    double magnitude; // 0 where unknown: such objects pass every limit
};

// Sorted by rising right ascension within a group.
struct DeepSkyGroup
{
    char abbreviation[8];
    int32_t count;
    const DeepSkyObject *objects;
};

extern const ConstellationInfo constellation_table[CONSTELLATION_COUNT];
extern const BoundaryGroup *const boundary_table[CONSTELLATION_COUNT];
extern const DeepSkyGroup *const deep_sky_table[CONSTELLATION_COUNT];
