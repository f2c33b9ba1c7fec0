#include "widgets/locator.h"

#include <cctype>
#include <cmath>

// The constants of the station's long-standing arithmetic, kept digit for digit
// so that the distance and bearing shown agree with the logs operators compare
// them with.
static const double LOCATOR_PI = 3.14159265359;
static const double LOCATOR_TWO_PI = 6.28318530718;
static const double LOCATOR_RADIANS = 0.017453292519944444;
static const double LOCATOR_DEGREES = 57.29577951307855;
static const double EARTH_RADIUS_KM = 6367.0;

// Letters and digits of the ASCII set only: a locator is never localised.
static int locator_letter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

static int locator_digit(char c)
{
    return c >= '0' && c <= '9';
}

int grid_to_position(const char *grid, double *latitude, double *longitude)
{
    if (!grid || !locator_letter(grid[0]) || !locator_letter(grid[1]) || !locator_digit(grid[2]) ||
        !locator_digit(grid[3]))
    {
        return 1;
    }
    int a = toupper((unsigned char)grid[0]) - 'A';
    int b = toupper((unsigned char)grid[1]) - 'A';
    int c = grid[2] - '0';
    int d = grid[3] - '0';
    // Without a sub-square the point lies near the middle of the square; the
    // fifth character is tested first, so a four-character text ends there.
    int e = 12, f = 12;
    if (locator_letter(grid[4]) && locator_letter(grid[5]))
    {
        e = tolower((unsigned char)grid[4]) - 'a';
        f = tolower((unsigned char)grid[5]) - 'a';
    }
    *longitude = 20.0 * a + 2.0 * c + (e + 0.5) * 5.0 / 60.0 - 180.0;
    *latitude = 10.0 * b + d + (f + 0.5) * 2.5 / 60.0 - 90.0;
    return 0;
}

int position_to_grid(char grid[7], double latitude, double longitude)
{
    grid[0] = 0;
    if (longitude < -180.0 || longitude > 180.0)
    {
        return 1;
    }
    double y = latitude + 90.0;
    double x = longitude + 180.0;
    // Every step truncates, so longitude 180 gives field S, one past R: the
    // sky map asks for the sub-point of a body on the date line and shows it.
    int x2 = (int)(x / 2.0);
    grid[0] = (char)('A' + (int)(x / 20.0));
    grid[1] = (char)('A' + (int)(y / 10.0));
    grid[2] = (char)('0' + x2 % 10);
    grid[3] = (char)('0' + (int)y % 10);
    grid[4] = (char)('a' + (int)((x - 2.0 * x2) * 60.0 / 5.0));
    grid[5] = (char)('a' + (int)((y - (int)y) * 60.0 / 2.5));
    grid[6] = 0;
    return 0;
}

// The arc between two points on the unit sphere, from the spherical law of
// cosines, the angles in radians.
static double locator_arc(double lat1, double lon1, double lat2, double lon2)
{
    // Near the poles cos^2 + sin^2 rounds below 1 and a point would lie a
    // tenth of a metre from itself.
    if (lat1 == lat2 && lon1 == lon2)
    {
        return 0.0;
    }
    double c = cos(lon1 - lon2) * cos(lat1) * cos(lat2) + sin(lat1) * sin(lat2);
    // Rounding can push c a hair past 1 for a point and itself; the square
    // root would then be of a negative number and the distance not a number.
    double rest = 1.0 - c * c;
    double s = rest > 0.0 ? sqrt(rest) : 0.0;
    double a = atan(fabs(s / c));
    if (c < 0.0)
    {
        a = LOCATOR_PI - a;
    }
    return a;
}

double grid_distance(const char *from, const char *to)
{
    double lat1, lon1, lat2, lon2;
    if (grid_to_position(from, &lat1, &lon1) != 0 || grid_to_position(to, &lat2, &lon2) != 0)
    {
        return 0.0;
    }
    double a = locator_arc(lat1 / 180.0 * LOCATOR_PI, lon1 / 180.0 * LOCATOR_PI, lat2 / 180.0 * LOCATOR_PI,
                           lon2 / 180.0 * LOCATOR_PI);
    return a * EARTH_RADIUS_KM;
}

double grid_bearing(const char *from, const char *to)
{
    double lat1, lon1, lat2, lon2;
    if (grid_to_position(from, &lat1, &lon1) != 0 || grid_to_position(to, &lat2, &lon2) != 0)
    {
        return 0.0;
    }
    lat1 *= LOCATOR_RADIANS;
    lon1 *= LOCATOR_RADIANS;
    lat2 *= LOCATOR_RADIANS;
    lon2 *= LOCATOR_RADIANS;
    double a = locator_arc(lat1, lon1, lat2, lon2);
    double d = lon2 - lon1;
    double n = sin(d) * cos(lat2) * cos(lat1);
    double m = sin(lat2) - cos(a) * sin(lat1);
    // A point and itself have no direction (0 / 0); north is as good as any
    // and keeps a number on the panel.
    if (n == 0.0 && m == 0.0)
    {
        return 0.0;
    }
    double b = atan(fabs(n / m));
    if (m < 0.0)
    {
        b = LOCATOR_PI - b;
    }
    if (n < 0.0)
    {
        b = -b;
    }
    if (b < 0.0)
    {
        b += LOCATOR_TWO_PI;
    }
    return b * LOCATOR_DEGREES;
}
