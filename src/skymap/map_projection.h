// The map's one projection: an equirectangular world, longitude -180 at the
// left edge, latitude +90 at the top, turned to the right by the map offset
// in whole twenty-fourths of the width. Pure arithmetic, shared by the
// drawing, the mouse and the tests.
#pragma once

// The column of the sky noise picture at which Sagittarius A stands.
constexpr int sky_noise_anchor_x = 188;

// A place to its pixel. Longitude +180 lands on x = 0, as -180 does; a
// longitude a little past either edge still lands on the map.
void map_point(double latitude, double longitude, int width, int height, int offset_hours, int *x, int *y);

// A pixel of the map (relative to its top left corner) back to the place
// drawn there: 0, or -1 when the pixel lies off the map.
int map_position(int x, int y, int width, int height, int offset_hours, double *latitude, double *longitude);

// Where a wrapped picture is cut: the source column that is painted at x = 0.
// The world picture is cut at whole hours of 24 counted from the right while
// the turn is 12 hours or less, which for a width of 800 leaves it 8 pixels
// further right than what is drawn over it; the overlays are cut at the turn
// itself. The sky noise picture is cut so that its anchor column lands on
// anchor_x, the map column of Sagittarius A.
int map_world_cut(int width, int offset_hours);
int map_overlay_cut(int width, int offset_hours);
int map_sky_noise_cut(int width, int anchor_x);

// How an outline edge from longitude l0 to l1 is drawn. Going across the map
// edge, the two ends are each joined to their own side of the map instead of
// by a line across the whole world.
enum MapEdge
{
    MAP_EDGE_LINE,
    MAP_EDGE_EAST_SPLIT, // l0 near -180 (the left edge), l1 near +180 (the right edge)
    MAP_EDGE_WEST_SPLIT  // l0 near +180, l1 near -180
};
int map_edge(double l0, double l1);
