#include "widgets/locator.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

// One sub-square is 5 minutes of longitude by 2.5 minutes of latitude.
static const double SUB_LON = 5.0 / 60.0;
static const double SUB_LAT = 2.5 / 60.0;

// JO62: field J (180 E of -180) and O (140 N of -90), square 6 and 2, has its
// south-west corner at 12 E, 52 N. Four characters lie 12.5 sub-squares in
// (not the middle of the square, 13 E 52.5 N); a short or broken sub-square
// reads as four; case and anything past the sixth don't matter; letters past
// R are still read.
TEST(Locator, GridToPosition)
{
    struct Row
    {
        const char *grid;
        double lat, lon;
    };
    const Row rows[] = {
        {"JO62aa", 52.0 + 0.5 * SUB_LAT, 12.0 + 0.5 * SUB_LON},
        {"JO62", 52.0 + 12.5 * SUB_LAT, 12.0 + 12.5 * SUB_LON},
        {"JO62q", 52.0 + 12.5 * SUB_LAT, 12.0 + 12.5 * SUB_LON},
        {"JO62q5", 52.0 + 12.5 * SUB_LAT, 12.0 + 12.5 * SUB_LON},
        {"JO625m", 52.0 + 12.5 * SUB_LAT, 12.0 + 12.5 * SUB_LON},
        {"JO62 m", 52.0 + 12.5 * SUB_LAT, 12.0 + 12.5 * SUB_LON},
        {"jo62QM", 52.0 + 12.5 * SUB_LAT, 12.0 + 16.5 * SUB_LON},
        {"JO62qm55", 52.0 + 12.5 * SUB_LAT, 12.0 + 16.5 * SUB_LON},
        {"JO62qmxx", 52.0 + 12.5 * SUB_LAT, 12.0 + 16.5 * SUB_LON},
        {"ZZ99zz", 25 * 10 + 9 + 25.5 * SUB_LAT - 90.0, 25 * 20 + 18 + 25.5 * SUB_LON - 180.0},
    };
    for (const Row &row : rows)
    {
        double lat = 0, lon = 0;
        ASSERT_EQ(0, grid_to_position(row.grid, &lat, &lon)) << row.grid;
        EXPECT_NEAR(row.lat, lat, 1e-9) << row.grid;
        EXPECT_NEAR(row.lon, lon, 1e-9) << row.grid;
    }
}

TEST(Locator, BadTextsLeaveTheOutputsAlone)
{
    const char *bad[] = {nullptr, "", "J", "JO", "JO6", "1O62", "J162", "JOA2", "JO6A", "-O62", "JO 62"};
    for (const char *grid : bad)
    {
        double lat = 7.0, lon = 8.0;
        EXPECT_EQ(1, grid_to_position(grid, &lat, &lon)) << (grid ? grid : "null");
        EXPECT_TRUE(lat == 7.0 && lon == 8.0) << (grid ? grid : "null");
    }
}

// Field S at longitude 180 is one past the system's last; outside the world
// the text is empty; the latitude isn't checked.
TEST(Locator, PositionToGrid)
{
    struct Row
    {
        double lat, lon;
        const char *grid;
        int result;
    };
    const Row rows[] = {
        {40.35, -74.65, "FN20qi", 0}, {-0.5, -0.5, "II99sm", 0}, {0.0, -180.0, "AJ00aa", 0},
        {0.0, 180.0, "SJ00aa", 0},    {-90.0, 0.0, "JA00aa", 0}, {95.0, 0.0, nullptr, 0},
        {10.0, 180.0001, "", 1},      {10.0, -180.0001, "", 1},  {10.0, -1000.0, "", 1},
    };
    for (const Row &row : rows)
    {
        char grid[7] = "xxxxxx";
        EXPECT_EQ(row.result, position_to_grid(grid, row.lat, row.lon)) << row.lat << " " << row.lon;
        EXPECT_TRUE(!row.grid || strcmp(row.grid, grid) == 0) << grid;
    }
    for (const char *grid : {"JO62qm", "QE37pb", "GG66rh", "AA00aa", "RR99xx"})
    {
        double lat, lon;
        char back[7];
        grid_to_position(grid, &lat, &lon);
        ASSERT_EQ(0, position_to_grid(back, lat, lon));
        EXPECT_STREQ(grid, back);
    }
}

// Distances on the 6367 km sphere, worked by hand: 9 degrees along a meridian
// is 9 / 180 x 3.14159265359 x 6367; JJ00 and AI09ml are antipodes, half the
// circumference. Ed Williams' Aviation Formulary, worked example LAX to JFK:
// 0.623585 radians (3970.37 km), initial course 1.150035 radians (65.89
// degrees); DM03tw and FN30cp hold the airports to a kilometre or two.
TEST(GreatCircle, PublishedAndHandWorkedFigures)
{
    struct Row
    {
        const char *from, *to;
        double distance, distance_tolerance, bearing, bearing_tolerance;
    };
    const Row rows[] = {
        {"JJ00", "JJ09", 1000.126, 0.001, 0.0, 1e-9},
        {"JJ09", "JJ00", 1000.126, 0.001, 180.0, 1e-9},
        {"JJ00", "AI09ml", 20002.520, 0.01, -1, 0},
        {"DM03tw", "FN30cp", 3970.37, 4.0, 65.89, 0.2},
        {"JJ00", "KJ00", -1, 0, 89.5, 0.5},
        {"JJ00", "IJ00", -1, 0, 270.5, 0.5},
        {"JJ55", "II55", -1, 0, 225.0, 45.0},
        {"JJ55", "KI55", -1, 0, 135.0, 45.0},
        {"JJ55", "IK55", -1, 0, 315.0, 45.0},
        {"JO62qm", "JO62qm", 0.0, 0.0, -1, 0},
        {"AA00aa", "AA00aa", 0.0, 0.0, -1, 0},
        {"JO62qm", "XX", 0.0, 0.0, -1, 0},
        {"", "JO62qm", 0.0, 0.0, -1, 0},
        {"JO62qm", "12ab", -1, 0, 0.0, 0.0},
        {"JO6", "FN20", -1, 0, 0.0, 0.0},
    };
    for (const Row &row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.from << " to " << row.to);
        double bearing = grid_bearing(row.from, row.to);
        EXPECT_FALSE(std::isnan(bearing));
        if (row.distance >= 0)
        {
            EXPECT_NEAR(row.distance, grid_distance(row.from, row.to), row.distance_tolerance);
        }
        if (row.bearing >= 0)
        {
            EXPECT_NEAR(row.bearing, bearing, row.bearing_tolerance);
        }
    }
}
