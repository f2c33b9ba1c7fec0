// The compiled-in catalogue against the published figures: sizes, ranges,
// the rows that tell whether a table was read right, and the rules the map
// relies on (one order for all three tables, open outlines of straight
// edges, objects sorted by right ascension).
#include "skymap/map_layers.h"
#include "skymap/sky_catalogue.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

int group_of(const char *abbreviation)
{
    for (int g = 0; g < CONSTELLATION_COUNT; g++)
    {
        if (strcmp(constellation_table[g].abbreviation, abbreviation) == 0)
        {
            return g;
        }
    }
    return -1;
}

const DeepSkyObject *find_object(const char *abbreviation, int number)
{
    const DeepSkyGroup *g = deep_sky_table[group_of(abbreviation)];
    for (int i = 0; i < g->count; i++)
    {
        if (g->objects[i].number == number)
        {
            return &g->objects[i];
        }
    }
    return nullptr;
}

} // namespace

// The official IAU figures: the label anchors of five constellations, the
// areas, and the rank by area from Hydra (1) to Crux (88).
TEST(SkyCatalogue, ConstellationsTellingRows)
{
    struct Row
    {
        int group;
        const char *abbreviation, *name;
        double ra, dec, area;
        int rank;
    };
    static const Row rows[] = {
        {0, "AND", "Andromeda", 0.5687843, 38.906066, 722.28, 19},
        {1, "ANT", "Antila", 10.0481195, -33.230888, 238.9, 62},
        {41, "HYA", "Hydra", 10.4663294, -16.493166, 1302.84, 1},
        {29, "CRU", "Crux", 12.3333333, -59.299916, 68.45, 88},
        {87, "VUL", "Vulpecula", 20.1969092, 24.138347, 268.17, 55},
        {10, "CAM", "Camelopardis", NAN, NAN, NAN, 0},
        {66, "PSA", "Pisces Austrinus", NAN, NAN, NAN, 0},
        {75, "SER", "Serpens", NAN, NAN, NAN, 0},
    };
    for (const Row &r : rows)
    {
        const ConstellationInfo &c = constellation_table[r.group];
        EXPECT_STREQ(c.abbreviation, r.abbreviation);
        EXPECT_STREQ(c.name, r.name);
        if (r.rank)
        {
            EXPECT_EQ(c.ra, r.ra) << r.abbreviation;
            EXPECT_EQ(c.dec, r.dec) << r.abbreviation;
            EXPECT_EQ(c.area, r.area) << r.abbreviation;
            EXPECT_EQ(c.size_rank, r.rank) << r.abbreviation;
        }
    }
    int rank_seen[CONSTELLATION_COUNT + 1] = {};
    for (const ConstellationInfo &c : constellation_table)
    {
        ASSERT_GE(c.size_rank, 1);
        ASSERT_LE(c.size_rank, CONSTELLATION_COUNT);
        rank_seen[c.size_rank]++;
    }
    for (int rank = 1; rank <= CONSTELLATION_COUNT; rank++)
    {
        EXPECT_EQ(rank_seen[rank], 1) << "rank " << rank;
    }
}

// 1,537 points in open outlines of 4 to 50 points, every one of the 1,449
// edges along a constant right ascension or declination, in the same order
// as the constellations (Serpens Caput alone, as "SER1").
TEST(SkyCatalogue, BoundaryOutlines)
{
    int points = 0, edges = 0, straight = 0, fewest = 1000, most = 0;
    double ra_low = 99, ra_high = -99, dec_low = 99, dec_high = -99;
    for (int g = 0; g < CONSTELLATION_COUNT; g++)
    {
        const BoundaryGroup *b = boundary_table[g];
        EXPECT_EQ(strncmp(b->abbreviation, constellation_table[g].abbreviation, 3), 0) << g;
        fewest = std::min(fewest, b->count);
        most = std::max(most, b->count);
        points += b->count;
        for (int i = 0; i < b->count; i++)
        {
            const BoundaryPoint &p = b->points[i];
            ra_low = std::min(ra_low, p.ra);
            ra_high = std::max(ra_high, p.ra);
            dec_low = std::min(dec_low, p.dec);
            dec_high = std::max(dec_high, p.dec);
            if (i > 0)
            {
                edges++;
                straight += p.ra == b->points[i - 1].ra || p.dec == b->points[i - 1].dec;
            }
        }
        EXPECT_FALSE(b->points[0].ra == b->points[b->count - 1].ra && b->points[0].dec == b->points[b->count - 1].dec)
            << b->abbreviation << " is closed";
    }
    EXPECT_EQ(points, 1537);
    EXPECT_EQ(edges, 1449);
    EXPECT_EQ(straight, edges);
    EXPECT_EQ(fewest, 4);
    EXPECT_EQ(most, 50);
    EXPECT_EQ(ra_low, 0.0);
    EXPECT_EQ(ra_high, 23.8333333);
    EXPECT_EQ(dec_low, -85.0);
    EXPECT_EQ(dec_high, 88.0);
    EXPECT_STREQ(boundary_table[75]->abbreviation, "SER1");

    const BoundaryGroup *crux = boundary_table[group_of("CRU")];
    const BoundaryPoint want[] = {{11.8333333, -55.0}, {12.8333333, -55.0}, {12.8333333, -64.0}, {11.8333333, -64.0}};
    ASSERT_EQ(crux->count, 4);
    for (int i = 0; i < 4; i++)
    {
        EXPECT_EQ(crux->points[i].ra, want[i].ra);
        EXPECT_EQ(crux->points[i].dec, want[i].dec);
    }
}

// The catalogue as shipped: every NGC and IC number that OpenNGC places, so
// more rows (and fainter and larger objects) than the older lists had.
TEST(SkyCatalogue, DeepSkyRowsAndClasses)
{
    static const int per_type[DEEP_SKY_TYPE_COUNT] = {1860, 9975, 650, 204, 162, 42, 2, 43, 11, 78, 60, 129, 0};
    int counted[DEEP_SKY_TYPE_COUNT] = {};
    int rows = 0, fewest = 100000, most = 0, drawn_at_20 = 0, drawn_at_0 = 0;
    for (int g = 0; g < CONSTELLATION_COUNT; g++)
    {
        const DeepSkyGroup *d = deep_sky_table[g];
        EXPECT_STREQ(d->abbreviation, constellation_table[g].abbreviation);
        fewest = std::min(fewest, d->count);
        most = std::max(most, d->count);
        for (int i = 0; i < d->count; i++)
        {
            const DeepSkyObject &o = d->objects[i];
            ASSERT_TRUE(o.type >= 0 && o.type < DEEP_SKY_TYPE_COUNT);
            ASSERT_TRUE(o.number >= 1 && o.number <= 7840);
            counted[o.type]++;
            rows++;
            drawn_at_20 += map_star_drawn(&o, 20);
            drawn_at_0 += map_star_drawn(&o, 0);
            if (i > 0)
            {
                EXPECT_LE(d->objects[i - 1].ra, o.ra) << d->abbreviation << " row " << i;
            }
        }
    }
    EXPECT_EQ(rows, 13216);
    for (int t = 0; t < DEEP_SKY_TYPE_COUNT; t++)
    {
        EXPECT_EQ(counted[t], per_type[t]) << "type " << t;
    }
    EXPECT_EQ(drawable_object_types, 3726);
    EXPECT_EQ(fewest, 5);
    EXPECT_EQ(most, 1180);
    // At the faintest limit every drawable row is on the map but one of
    // magnitude 21; those of unknown magnitude are there at every limit.
    EXPECT_EQ(drawn_at_20, 11138);
    EXPECT_EQ(drawn_at_0, 285);

    struct Row
    {
        const char *abbreviation;
        int number, type;
        double ra, dec, dimension, magnitude;
    };
    static const Row telling[] = {
        {"AND", 224, 1, 0.7116667, 41.2666667, 177.8, 4.4},
        {"HER", 6205, 3, 16.695, 36.4666667, 16.5, 5.8},
        {"ORI", 1976, 4, 5.5883333, -5.3833333, 90.0, 4.0},
    };
    for (const Row &r : telling)
    {
        const DeepSkyObject *o = find_object(r.abbreviation, r.number);
        ASSERT_NE(o, nullptr) << r.number;
        EXPECT_EQ(o->type, r.type) << r.number;
        EXPECT_EQ(o->ra, r.ra) << r.number;
        EXPECT_EQ(o->dec, r.dec) << r.number;
        EXPECT_EQ(o->dimension, r.dimension) << r.number;
        EXPECT_EQ(o->magnitude, r.magnitude) << r.number;
    }
}
