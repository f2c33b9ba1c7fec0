#include "astro/precise_moon.h"

#include "astro/angles.h"
#include "astro/moon.h"
#include "astro/precession.h"
#include "astro/refraction.h"
#include "astro/source.h"

#include <cmath>
#include <libnova/lunar.h>

// Terms of the series below 1e-8 radian (0.002") and 2 m are left out: the
// position moves by 0.03" RMS and the range rate by 0.2 mm/s, far inside the
// theory's own agreement with the numerical ephemerides, at a seventh of the
// cost of the whole series.
static const double elp_truncation = 1e-8;

// Half the span of the range difference, in seconds: long enough that the
// last bit of a Julian date (40 microseconds) costs under a millimetre per
// second, short enough that the curvature of the range costs less still.
static const double rate_half_span = 30.0;

static const double seconds_per_day = 86400.0;

double precise_tt_minus_utc(double jd_utc)
{
    // 0h UTC of the days from which TAI - UTC is 11, 12, ... 37 s; 10 s before.
    static const double leap_days[] = {2441499.5, 2441683.5, 2442048.5, 2442413.5, 2442778.5, 2443144.5, 2443509.5,
                                       2443874.5, 2444239.5, 2444786.5, 2445151.5, 2445516.5, 2446247.5, 2447161.5,
                                       2447892.5, 2448257.5, 2448804.5, 2449169.5, 2449534.5, 2450083.5, 2450630.5,
                                       2451179.5, 2453736.5, 2454832.5, 2456109.5, 2457204.5, 2457754.5};
    double tai_utc = 10.0;
    for (double day : leap_days)
    {
        if (jd_utc >= day)
        {
            tai_utc += 1.0;
        }
    }
    return tai_utc + 32.184;
}

// Greenwich apparent sidereal time in degrees: the mean one of IAU 1982
// (Meeus, eq. 12.4) plus the equation of the equinoxes.
static double precise_sidereal(double jd_ut1, const Nutation *n)
{
    double d = jd_ut1 - 2451545.0;
    double T = d / 36525.0;
    double gmst = 280.46061837 + 360.98564736629 * d + (0.000387933 - T / 38710000.0) * T * T;
    double eps = n->mean_obliquity + n->obliquity;
    return fmod(gmst + n->longitude * cosd(eps), 360.0);
}

// The mean equator of date to the true one.
static void precise_nutate(const Nutation *n, double v[3])
{
    double e = n->mean_obliquity, et = e + n->obliquity, dp = n->longitude;
    double y = cosd(e) * v[1] + sind(e) * v[2];
    double z = -sind(e) * v[1] + cosd(e) * v[2];
    double x = cosd(dp) * v[0] - sind(dp) * y;
    y = sind(dp) * v[0] + cosd(dp) * y;
    v[0] = x;
    v[1] = cosd(et) * y - sind(et) * z;
    v[2] = sind(et) * y + cosd(et) * z;
}

// The geocentric Moon at jd_utc on the true equator and equinox of date, km.
static void precise_moon_equatorial(double jd_utc, double v[3])
{
    double jd_tt = jd_utc + precise_tt_minus_utc(jd_utc) / seconds_per_day;
    struct ln_rect_posn ecl;
    ln_get_lunar_geo_posn(jd_tt, &ecl, elp_truncation);
    // The series gives the mean ecliptic and equinox of J2000.
    const double e0 = 23.43929111111111;
    v[0] = ecl.X;
    v[1] = cosd(e0) * ecl.Y - sind(e0) * ecl.Z;
    v[2] = sind(e0) * ecl.Y + cosd(e0) * ecl.Z;
    double p[3][3];
    precession_matrix(jd_tt, p);
    matrix_apply(p, v);
    Nutation n;
    nutation_of_date(jd_tt, &n);
    precise_nutate(&n, v);
}

// From the true equator of date to the Earth-fixed frame, by the sidereal
// time at jd_utc.
static void precise_earth_fixed(double jd_utc, const double v[3], double f[3])
{
    Nutation n;
    nutation_of_date(jd_utc + precise_tt_minus_utc(jd_utc) / seconds_per_day, &n);
    double g = precise_sidereal(jd_utc, &n);
    f[0] = cosd(g) * v[0] + sind(g) * v[1];
    f[1] = -sind(g) * v[0] + cosd(g) * v[1];
    f[2] = v[2];
}

// The station on the WGS84 ellipsoid, Earth-fixed, km.
static void precise_station(double latitude, double longitude, double height, double s[3])
{
    const double a = 6378.137, e2 = 6.69437999014e-3;
    double N = a / sqrt(1.0 - e2 * sind(latitude) * sind(latitude));
    double h = height / 1000.0;
    s[0] = (N + h) * cosd(latitude) * cosd(longitude);
    s[1] = (N + h) * cosd(latitude) * sind(longitude);
    s[2] = (N * (1.0 - e2) + h) * sind(latitude);
}

// The range from the station to the Moon at v (true equator of jd_utc), km.
static double precise_range(const double v[3], double jd_utc, const double station[3])
{
    double f[3];
    precise_earth_fixed(jd_utc, v, f);
    return sqrt((f[0] - station[0]) * (f[0] - station[0]) + (f[1] - station[1]) * (f[1] - station[1]) +
                (f[2] - station[2]) * (f[2] - station[2]));
}

void precise_moon_position(double jd_utc, double latitude, double longitude, double height, PreciseMoon *moon)
{
    double station[3];
    precise_station(latitude, longitude, height, station);
    double h = rate_half_span / seconds_per_day;
    double before[3], after[3];
    precise_moon_equatorial(jd_utc - h, before);
    precise_moon_equatorial(jd_utc + h, after);

    // The midpoint of two samples in a non-rotating frame is the Moon of the
    // instant to a metre; in the Earth-fixed frame it would be a kilometre off.
    double v[3], f[3];
    for (int i = 0; i < 3; i++)
    {
        v[i] = (before[i] + after[i]) / 2.0;
    }
    precise_earth_fixed(jd_utc, v, f);
    double d[3] = {f[0] - station[0], f[1] - station[1], f[2] - station[2]};

    // East, north and up at the station, along the normal of the ellipsoid.
    double east = -sind(longitude) * d[0] + cosd(longitude) * d[1];
    double north =
        -sind(latitude) * cosd(longitude) * d[0] - sind(latitude) * sind(longitude) * d[1] + cosd(latitude) * d[2];
    double up =
        cosd(latitude) * cosd(longitude) * d[0] + cosd(latitude) * sind(longitude) * d[1] + sind(latitude) * d[2];
    moon->az = fmod(atan2(east, north) * RAD + 360.0, 360.0);
    moon->el = atan2(up, sqrt(east * east + north * north)) * RAD;
    moon->range = sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    moon->distance = sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    moon->ra = fmod(atan2(v[1], v[0]) * RAD + 360.0, 360.0);
    moon->dec = asin(v[2] / moon->distance) * RAD;
    moon->hour_angle = remainder(longitude - atan2(d[1], d[0]) * RAD, 360.0);

    moon->range_rate = (precise_range(after, jd_utc + h, station) - precise_range(before, jd_utc - h, station)) /
                       (2.0 * rate_half_span);
}

void precise_moon_calculate(const struct tm *utc, double latitude, double longitude, double height, double frequency,
                            SourceRecord *record)
{
    PreciseMoon moon;
    precise_moon_position(source_julian_day(utc), latitude, longitude, height, &moon);
    // Two-way: out and back. A receding Moon lowers the echo.
    double doppler = -2.0 * moon.range_rate * frequency * 1e6 / 299792.458;
    moon_fill_record(moon.az, moon.el, moon.ra, moon.dec, moon.distance, moon.hour_angle - longitude, doppler, latitude,
                     record);
}
