#include "skymap/map_projection.h"

static int map_wrap(int x, int width)
{
    x %= width;
    return x < 0 ? x + width : x;
}

void map_point(double latitude, double longitude, int width, int height, int offset_hours, int *x, int *y)
{
    int column = (int)((longitude + 180.0) / (360.0 / width));
    *x = map_wrap(column + width / 24 * offset_hours, width);
    *y = (int)((90.0 - latitude) / (180.0 / height));
}

int map_position(int x, int y, int width, int height, int offset_hours, double *latitude, double *longitude)
{
    if (x < 0 || x >= width || y < 0 || y >= height)
    {
        return -1;
    }
    x -= width / 24 * offset_hours;
    if (x < 0)
    {
        x += width;
    }
    *longitude = x * (360.0 / width) - 180.0;
    *latitude = 90.0 - y * (180.0 / height);
    return 0;
}

int map_world_cut(int width, int offset_hours)
{
    int w24 = width / 24;
    return offset_hours <= 12 ? (24 - offset_hours) * w24 : width - w24 * offset_hours;
}

int map_overlay_cut(int width, int offset_hours)
{
    return width - width / 24 * offset_hours;
}

int map_sky_noise_cut(int width, int anchor_x)
{
    return anchor_x > sky_noise_anchor_x ? width - anchor_x + sky_noise_anchor_x : sky_noise_anchor_x - anchor_x;
}

// Only a jump of more than a quarter of the world is taken for the date line:
// an edge near the pole may be long, but never that long.
int map_edge(double l0, double l1)
{
    if (l1 > 0 && l0 < 0 && l1 - l0 > 90.0)
    {
        return MAP_EDGE_EAST_SPLIT;
    }
    if (l1 < 0 && l0 > 0 && l0 - l1 > 90.0)
    {
        return MAP_EDGE_WEST_SPLIT;
    }
    return MAP_EDGE_LINE;
}
