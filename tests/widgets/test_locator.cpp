#include "widgets/locator.h"

#include <cmath>
#include <gtest/gtest.h>

// One sub-square is 5 minutes of longitude by 2.5 minutes of latitude.
static const double SUB_LON = 5.0 / 60.0;
static const double SUB_LAT = 2.5 / 60.0;

TEST(Locator, SixCharactersAaLieJustInsideTheSquaresCorner)
{
    // JO62: field J (180 E of -180) and O (140 N of -90), square 6 and 2:
    // the south-west corner is 12 E, 52 N.
    double lat = 0, lon = 0;
    ASSERT_EQ(0, grid_to_position("JO62aa", &lat, &lon));
    EXPECT_NEAR(12.0 + 2.5 / 60.0, lon, 1e-12);
    EXPECT_NEAR(52.0 + 1.25 / 60.0, lat, 1e-12);
}

TEST(Locator, FourCharactersLieTwelveAndAHalfSubSquaresIn)
{
    double lat = 0, lon = 0;
    ASSERT_EQ(0, grid_to_position("JO62", &lat, &lon));
    EXPECT_NEAR(12.0 + 12.5 * SUB_LON, lon, 1e-12);
    EXPECT_NEAR(52.0 + 12.5 * SUB_LAT, lat, 1e-12);
    // Not the middle of the square, which would be 13 E, 52.5 N.
    EXPECT_GT(fabs(lon - 13.0), 0.04);
    EXPECT_GT(fabs(lat - 52.5), 0.02);
}

TEST(Locator, ShortOrBrokenSubSquareReadsAsFourCharacters)
{
    double lat4, lon4;
    ASSERT_EQ(0, grid_to_position("JO62", &lat4, &lon4));
    const char *as_four[] = {"JO62q", "JO62q5", "JO625m", "JO62 m"};
    for (const char *grid : as_four)
    {
        double lat = 0, lon = 0;
        ASSERT_EQ(0, grid_to_position(grid, &lat, &lon)) << grid;
        EXPECT_DOUBLE_EQ(lat4, lat) << grid;
        EXPECT_DOUBLE_EQ(lon4, lon) << grid;
    }
}

TEST(Locator, EitherCaseAndNothingPastTheSixth)
{
    double lat, lon;
    ASSERT_EQ(0, grid_to_position("JO62qm", &lat, &lon));
    const char *same[] = {"jo62QM", "Jo62Qm", "JO62qm55", "JO62qmxx"};
    for (const char *grid : same)
    {
        double other_lat = 0, other_lon = 0;
        ASSERT_EQ(0, grid_to_position(grid, &other_lat, &other_lon)) << grid;
        EXPECT_DOUBLE_EQ(lat, other_lat) << grid;
        EXPECT_DOUBLE_EQ(lon, other_lon) << grid;
    }
}

TEST(Locator, LettersPastTheSystemsRangeAreStillRead)
{
    // Field Z is eight past R; nothing bounds it.
    double lat = 0, lon = 0;
    ASSERT_EQ(0, grid_to_position("ZZ99zz", &lat, &lon));
    EXPECT_NEAR(25 * 20 + 18 + 25.5 * SUB_LON - 180.0, lon, 1e-9);
    EXPECT_NEAR(25 * 10 + 9 + 25.5 * SUB_LAT - 90.0, lat, 1e-9);
}

TEST(Locator, BadTextsLeaveTheOutputsAlone)
{
    const char *bad[] = {"", "J", "JO", "JO6", "1O62", "J162", "JOA2", "JO6A", "-O62", "JO 62"};
    for (const char *grid : bad)
    {
        double lat = 7.0, lon = 8.0;
        EXPECT_EQ(1, grid_to_position(grid, &lat, &lon)) << grid;
        EXPECT_EQ(7.0, lat) << grid;
        EXPECT_EQ(8.0, lon) << grid;
    }
    double lat = 7.0, lon = 8.0;
    EXPECT_EQ(1, grid_to_position(nullptr, &lat, &lon));
}

TEST(Locator, PositionToSixCharacters)
{
    struct Row
    {
        double lat, lon;
        const char *grid;
    };
    const Row rows[] = {
        {52.0 + 1.25 / 60.0, 12.0 + 2.5 / 60.0, "JO62aa"},
        {40.35, -74.65, "FN20qi"}, // Princeton
        {-0.5, -0.5, "II99sm"},    // both signs negative
        {0.0, -180.0, "AJ00aa"},   // the western edge
        {0.0, 180.0, "SJ00aa"},    // field S, one past the system's last
        {-90.0, 0.0, "JA00aa"},    // the south pole
    };
    for (const Row &row : rows)
    {
        char grid[7] = "xxxxxx";
        EXPECT_EQ(0, position_to_grid(grid, row.lat, row.lon)) << row.grid;
        EXPECT_STREQ(row.grid, grid);
    }
}

TEST(Locator, PositionToGridRoundTripsTheSubSquare)
{
    const char *grids[] = {"JO62qm", "FN20qi", "QE37pb", "GG66rh", "AA00aa", "RR99xx"};
    for (const char *grid : grids)
    {
        double lat, lon;
        ASSERT_EQ(0, grid_to_position(grid, &lat, &lon));
        char back[7];
        ASSERT_EQ(0, position_to_grid(back, lat, lon));
        EXPECT_STREQ(grid, back);
    }
}

TEST(Locator, LongitudeOutsideTheWorldGivesAnEmptyText)
{
    const double outside[] = {180.0001, -180.0001, 360.0, -1000.0};
    for (double lon : outside)
    {
        char grid[7] = "xxxxxx";
        EXPECT_EQ(1, position_to_grid(grid, 10.0, lon)) << lon;
        EXPECT_STREQ("", grid);
    }
    // The latitude isn't checked.
    char grid[7];
    EXPECT_EQ(0, position_to_grid(grid, 95.0, 0.0));
}

// The distance of 9 degrees along a meridian on the 6367 km sphere, worked by
// hand: 9 / 180 x 3.14159265359 x 6367.
TEST(GreatCircle, NineDegreesAlongAMeridian)
{
    EXPECT_NEAR(1000.126, grid_distance("JJ00", "JJ09"), 0.001);
    EXPECT_NEAR(1000.126, grid_distance("JJ09", "JJ00"), 0.001);
    EXPECT_NEAR(0.0, grid_bearing("JJ00", "JJ09"), 1e-9);
    EXPECT_NEAR(180.0, grid_bearing("JJ09", "JJ00"), 1e-9);
}

// JJ00 and AI09ml are antipodes: half the circumference, 3.14159265359 x 6367.
TEST(GreatCircle, AntipodesAreHalfTheCircumference)
{
    double lat1, lon1, lat2, lon2;
    ASSERT_EQ(0, grid_to_position("JJ00", &lat1, &lon1));
    ASSERT_EQ(0, grid_to_position("AI09ml", &lat2, &lon2));
    ASSERT_NEAR(-lat1, lat2, 1e-12);
    ASSERT_NEAR(lon1 - 180.0, lon2, 1e-12);
    EXPECT_NEAR(20002.520, grid_distance("JJ00", "AI09ml"), 0.01);
}

// Ed Williams' Aviation Formulary, worked example LAX to JFK: distance 0.623585
// radians (3970.37 km on our sphere), initial true course 1.150035 radians
// (65.89 degrees). The locators DM03tw and FN30cp hold the two airports to
// within a sub-square, a kilometre or two.
TEST(GreatCircle, LosAngelesToNewYorkAsPublished)
{
    EXPECT_NEAR(3970.37, grid_distance("DM03tw", "FN30cp"), 4.0);
    EXPECT_NEAR(65.89, grid_bearing("DM03tw", "FN30cp"), 0.2);
}

TEST(GreatCircle, BearingLandsInTheRightQuadrant)
{
    // From 0.52 N a great circle to a point due east or west first bends
    // towards the pole, a hair off 90 and 270.
    double east = grid_bearing("JJ00", "KJ00");
    double west = grid_bearing("JJ00", "IJ00");
    EXPECT_GT(east, 89.0);
    EXPECT_LT(east, 90.0);
    EXPECT_GT(west, 270.0);
    EXPECT_LT(west, 271.0);
    double south_west = grid_bearing("JJ55", "II55");
    double south_east = grid_bearing("JJ55", "KI55");
    EXPECT_GT(south_west, 180.0);
    EXPECT_LT(south_west, 270.0);
    EXPECT_GT(south_east, 90.0);
    EXPECT_LT(south_east, 180.0);
    double north_west = grid_bearing("JJ55", "IK55");
    EXPECT_GT(north_west, 270.0);
    EXPECT_LT(north_west, 360.0);
}

TEST(GreatCircle, ALocatorToItselfIsZeroAndANumber)
{
    const char *grids[] = {"JO62qm", "FN20", "AA00aa", "RR99xx"};
    for (const char *grid : grids)
    {
        EXPECT_EQ(0.0, grid_distance(grid, grid)) << grid;
        double bearing = grid_bearing(grid, grid);
        EXPECT_FALSE(std::isnan(bearing)) << grid;
    }
}

TEST(GreatCircle, BadLocatorGivesZeroForBoth)
{
    EXPECT_EQ(0.0, grid_distance("JO62qm", "XX"));
    EXPECT_EQ(0.0, grid_distance("", "JO62qm"));
    EXPECT_EQ(0.0, grid_bearing("JO62qm", "12ab"));
    EXPECT_EQ(0.0, grid_bearing("JO6", "FN20"));
}
