// The projection and its inverse, the cuts of the wrapped pictures, and the
// date-line test of the outlines: the arithmetic every layer shares.
#include "skymap/map_projection.h"

#include <gtest/gtest.h>

TEST(MapProjection, PlacesToPixels)
{
    struct Row
    {
        double latitude, longitude;
        int width, height, offset, x, y;
        const char *why;
    };
    static const Row rows[] = {
        {0, 0, 800, 400, 0, 400, 200, "Greenwich on the equator is the centre"},
        {0, 180, 800, 400, 0, 0, 200, "+180 wraps to the left edge, not to x = W"},
        {0, -180, 800, 400, 0, 0, 200, "-180 is the left edge"},
        {90, -179.9, 800, 400, 0, 0, 0, "the pole is the top row"},
        {-89.9, 179.9, 800, 400, 0, 799, 399, "the last column and row"},
        {0, 0, 800, 400, 6, 598, 200, "six hours turn the map by 6 x 33 pixels"},
        {0, 90, 800, 400, 7, 31, 200, "the turn wraps round the right edge"},
        {10, 0, 1600, 800, 1, 866, 355, "twice the size"},
        {0, -181, 800, 400, 0, 798, 200, "a little past -180 still lands on the map"},
    };
    for (const Row &r : rows)
    {
        int x = -1, y = -1;
        map_point(r.latitude, r.longitude, r.width, r.height, r.offset, &x, &y);
        EXPECT_EQ(x, r.x) << r.why;
        EXPECT_EQ(y, r.y) << r.why;
    }
}

// A click is read back to the place drawn under it, whatever the turn.
TEST(MapProjection, PixelsToPlaces)
{
    struct Row
    {
        int x, y, offset, status;
        double latitude, longitude;
        const char *why;
    };
    static const Row rows[] = {
        {400, 200, 0, 0, 0.0, 0.0, "the centre"},
        {598, 200, 6, 0, 0.0, 0.0, "where Greenwich is drawn at six hours"},
        {0, 0, 0, 0, 90.0, -180.0, "the top left corner"},
        {10, 100, 12, 0, 45.0, 6.3, "a turned pixel left of the turn wraps back"},
        {800, 10, 0, -1, 0, 0, "off the right edge"},
        {10, 400, 0, -1, 0, 0, "below the map"},
        {-1, 10, 0, -1, 0, 0, "left of the map"},
    };
    for (const Row &r : rows)
    {
        double latitude = 99, longitude = 99;
        EXPECT_EQ(map_position(r.x, r.y, 800, 400, r.offset, &latitude, &longitude), r.status) << r.why;
        if (r.status == 0)
        {
            EXPECT_NEAR(latitude, r.latitude, 1e-9) << r.why;
            EXPECT_NEAR(longitude, r.longitude, 1e-9) << r.why;
        }
    }
}

// Up to a turn of 12 hours the world picture is cut at whole hours counted
// from the right, which at 800 pixels (800 mod 24 = 8) leaves it 8 pixels
// right of the overlays; beyond 12 both cuts agree.
TEST(MapProjection, WrappedPicturesAndTheirCuts)
{
    for (int offset = 1; offset <= 23; offset++)
    {
        int world_shift = 800 - map_world_cut(800, offset);
        int overlay_shift = 800 - map_overlay_cut(800, offset);
        int x, y;
        map_point(0, -180, 800, 400, offset, &x, &y);
        EXPECT_EQ(overlay_shift, x) << "overlays move with the icons, offset " << offset;
        EXPECT_EQ(world_shift - overlay_shift, offset <= 12 ? 8 : 0) << "offset " << offset;
    }
    EXPECT_EQ(map_world_cut(960, 6), 720) << "a width that divides by 24 has no gap";
    EXPECT_EQ(map_overlay_cut(960, 6), 720);

    // The sky noise picture's anchor lands on the map column asked for.
    for (int anchor : {0, 100, 188, 189, 500, 799})
    {
        int cut = map_sky_noise_cut(800, anchor);
        int landed = sky_noise_anchor_x >= cut ? sky_noise_anchor_x - cut : sky_noise_anchor_x + 800 - cut;
        EXPECT_EQ(landed, anchor);
    }
}

TEST(MapProjection, OutlineEdgesAcrossTheDateLine)
{
    struct Row
    {
        double l0, l1;
        int edge;
        const char *why;
    };
    static const Row rows[] = {
        {-170, 170, MAP_EDGE_EAST_SPLIT, "from the left edge to the right edge"},
        {170, -160, MAP_EDGE_WEST_SPLIT, "from the right edge to the left edge"},
        {-10, 10, MAP_EDGE_LINE, "across Greenwich"},
        {-45, 45.5, MAP_EDGE_EAST_SPLIT, "a jump of more than a quarter of the world is taken for the date line"},
        {-45, 45, MAP_EDGE_LINE, "exactly a quarter is drawn"},
        {100, 170, MAP_EDGE_LINE, "on one side"},
        {0, 120, MAP_EDGE_LINE, "from exactly 0 is no crossing"},
    };
    for (const Row &r : rows)
    {
        EXPECT_EQ(map_edge(r.l0, r.l1), r.edge) << r.why;
    }
}
