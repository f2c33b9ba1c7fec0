#include "astro/moon.h"

#include "astro/angles.h"
#include "astro/day_number.h"
#include "astro/refraction.h"

#include <cmath>

struct MoonEcliptic
{
    double lon; // degrees, of date
    double lat; // degrees
    double r;   // Earth radii
    double ls;  // the Sun's mean longitude, degrees: it sets the sidereal time
};

// Perturbed ecliptic position from the mean orbital elements at day d.
// Source: P. Schlyter, "How to compute planetary positions", the Moon's
// elements and its twelve longitude, five latitude and twelve distance terms.
static void moon_ecliptic(double d, MoonEcliptic *out)
{
    double N = 125.1228 - 0.0529538083 * d;
    double w = fmod(318.0634 + 0.1643573223 * d + 360000.0, 360.0);
    double M = fmod(115.3654 + 13.0649929509 * d + 360000.0, 360.0);
    const double a = 60.2666;
    const double e = 0.0549;
    const double i = 0.08980417133212215; // 5.1454 degrees, in radians

    // Kepler's equation by two Newton steps from a second-order start.
    double E = M + e * RAD * sind(M) * (1.0 + e * cosd(M));
    for (int step = 0; step < 2; step++)
    {
        E = E - (E - e * RAD * sind(E) - M) / (1.0 - e * cosd(E));
    }
    double x = a * (cosd(E) - e);
    double y = a * sind(E) * sqrt(0.99698599);
    double r = sqrt(x * x + y * y);
    double v = fmod(atan2(y, x) * RAD + 720.0, 360.0);

    double u = v + w;
    double xe = r * (cosd(N) * cosd(u) - sind(N) * sind(u) * cos(i));
    double ye = r * (cosd(N) * sind(u) * cos(i) + sind(N) * cosd(u));
    double ze = r * sind(u) * sin(i);

    double Ms = fmod(356.047 + 0.9856002585 * d + 3600000.0, 360.0);
    double Ls = fmod(282.9404 + 4.70935e-5 * d + Ms + 720.0, 360.0);
    double Lm = fmod(M + w + N + 720.0, 360.0);
    double D = fmod(Lm - Ls + 360.0, 360.0);
    double F = fmod(Lm - N + 360.0, 360.0);

    out->lon = fmod(atan2(ye, xe) * RAD + 720.0, 360.0) - 1.274 * sind(M - 2 * D) + 0.658 * sind(2 * D) -
               0.186 * sind(Ms) - 0.059 * sind(2 * M - 2 * D) - 0.057 * sind(M - 2 * D + Ms) + 0.053 * sind(M + 2 * D) +
               0.046 * sind(2 * D - Ms) + 0.041 * sind(M - Ms) - 0.035 * sind(D) - 0.031 * sind(M + Ms) -
               0.015 * sind(2 * F - 2 * D) + 0.011 * sind(M - 4 * D);
    out->lat = atan2(ze, sqrt(xe * xe + ye * ye)) * RAD - 0.173 * sind(F - 2 * D) - 0.055 * sind(M - F - 2 * D) -
               0.046 * sind(M + F - 2 * D) + 0.033 * sind(F + 2 * D) + 0.017 * sind(2 * M + F);
    // The distance comes from its own series, not from the r of the orbit.
    out->r = 60.36298 - 3.27746 * cosd(M) - 0.57994 * cosd(M - 2 * D) - 0.46357 * cosd(2 * D) - 0.08904 * cosd(2 * M) +
             0.03865 * cosd(2 * M - 2 * D) - 0.03237 * cosd(2 * D - Ms) - 0.02688 * cosd(M + 2 * D) -
             0.02358 * cosd(M - 2 * D + Ms) - 0.0203 * cosd(M - Ms) + 0.01719 * cosd(D) + 0.01671 * cosd(M + Ms);
    out->ls = Ls;
}

// Topocentric declination by the parallax in declination (Schlyter). At the
// equator the formula is 0/0, because g and gclat both vanish; its limit as
// the latitude tends to 0, where sin(gclat)/sin(g) tends to cos(H0), is
// dec + p cos(H0) sin(dec), and that is what a station at latitude 0 gets.
static double moon_topocentric_dec(double dec, double gclat, double h0, double p)
{
    if (gclat == 0.0)
    {
        return dec + p * cosd(h0) * sind(dec);
    }
    double g = atan(tan(gclat / RAD) / cosd(h0)) * RAD;
    return dec - p * sind(gclat) * sind(g - dec) / sind(g);
}

// Elevation and azimuth from hour angle H and declination dt (degrees). The
// azimuth goes by the half-angle tangent, which keeps full precision near
// north and south where an arc cosine would not.
static void moon_horizontal(double H, double dt, double latitude, double *az, double *el)
{
    double sin_h = cosd(-H) * cosd(dt) * cosd(latitude) + sind(dt) * sind(latitude);
    double cos_h = sqrt(1.0 - sin_h * sin_h);
    *el = atan(sin_h / cos_h) * RAD;
    double sin_a = sind(-H) * cosd(dt) / cos_h;
    double cos_a = (sind(dt) - sin_h * sind(latitude)) / (cos_h * cosd(latitude));
    double t = cos_a > 0.0 ? sin_a / (1.0 + cos_a) : (1.0 - cos_a) / sin_a;
    double A = 2.0 * atan(t);
    if (A < 0.0)
    {
        A += 2.0 * M_PI;
    }
    *az = A * RAD;
}

void moon_position(int year, int month, int day, double ut_hours, double longitude, double latitude,
                   MoonPosition *position)
{
    double d = day_number(year, month, day, ut_hours);
    MoonEcliptic ecl;
    moon_ecliptic(d, &ecl);

    // Ecliptic of date to equatorial, with the mean obliquity.
    double ob = 23.4393 - 3.563e-7 * d;
    double X = ecl.r * cosd(ecl.lon) * cosd(ecl.lat);
    double Y = ecl.r * sind(ecl.lon) * cosd(ecl.lat);
    double Z = ecl.r * sind(ecl.lat);
    double Ye = Y * cosd(ob) - Z * sind(ob);
    double Ze = Y * sind(ob) + Z * cosd(ob);
    double ra = fmod(atan2(Ye, X) * RAD + 360.0, 360.0);
    double dec = atan2(Ze, sqrt(X * X + Ye * Ye)) * RAD;

    // Local sidereal time from the Sun's mean longitude, in hours.
    double lst = fmod((ecl.ls + 180.0) / 15.0 + ut_hours + longitude / 15.0 + 48.0, 24.0);
    double h0 = 15.0 * lst - ra;

    // Parallax on a flattened Earth: geocentric latitude and the radius factor.
    double gclat = latitude - 0.1924 * sind(2.0 * latitude);
    double p = asin(1.0 / ecl.r) * RAD * (0.99883 + 0.00167 * cosd(2.0 * latitude));
    double top_ra = ra - p * cosd(gclat) * sind(h0) / cosd(dec);
    double top_dec = moon_topocentric_dec(dec, gclat, h0, p);

    double H = 15.0 * lst - top_ra;
    if (H > 180.0)
    {
        H -= 360.0;
    }
    if (H < -180.0)
    {
        H += 360.0;
    }
    position->ra = ra;
    position->dec = dec;
    position->top_ra = top_ra;
    position->top_dec = top_dec;
    position->sidereal = lst;
    position->hour_angle = H;
    position->distance = ecl.r * 6378.14;
    moon_horizontal(H, top_dec, latitude, &position->az, &position->el);
}

struct Vector3
{
    double x, y, z;
};

static Vector3 moon_vector(const MoonPosition *m)
{
    return {m->distance * cosd(m->dec) * cosd(m->ra), m->distance * cosd(m->dec) * sind(m->ra),
            m->distance * sind(m->dec)};
}

// Range rate in km/s between the station S (km, equatorial, rotating with the
// Earth) and the Moon, whose velocity comes from the two samples 100 s apart.
static double moon_range_rate(const MoonPosition *earlier, const MoonPosition *later, const Vector3 *S)
{
    const double earth_rate = 7.292115852756013e-5; // radians per second
    Vector3 R0 = moon_vector(earlier);
    Vector3 R = moon_vector(later);
    Vector3 V = {-S->y * earth_rate, S->x * earth_rate, 0.0};
    Vector3 Vm = {(R.x - R0.x) / 100.0, (R.y - R0.y) / 100.0, (R.z - R0.z) / 100.0};
    Vector3 L = {R.x - S->x, R.y - S->y, R.z - S->z};
    double range = sqrt(L.x * L.x + L.y * L.y + L.z * L.z);
    return ((Vm.x - V.x) * L.x + (Vm.y - V.y) * L.y + (Vm.z - V.z) * L.z) / range;
}

void moon_fill_record(double az, double el, double ra, double dec, double distance, double hour_angle, double doppler,
                      double latitude, SourceRecord *record)
{
    record->az = az;
    record->el = refraction_apparent_elevation(el);
    record->ra = ra;
    record->dec = dec;
    record->distance = distance / 1.5e8;
    record->hour_angle = hour_angle;
    record->sky_temp = 0.0;
    // The angle between the local verticals' planes through the Moon, which
    // turns a linear polarisation on its way out and back.
    record->spatial_offset =
        atan2(sind(record->az) * cosd(latitude),
              cosd(record->el) * sind(latitude) - cosd(record->az) * cosd(latitude) * sind(record->el)) *
        RAD;
    if (record->el >= 0.0)
    {
        record->above_horizon = 1;
        record->doppler_hz = doppler;
    }
    else
    {
        record->above_horizon = 0;
        record->doppler_hz = 0.0;
    }
}

void moon_calculate(const struct tm *utc, double latitude, double longitude, double frequency, SourceRecord *record)
{
    // The station on the IAU 1976 ellipsoid (a = 6378140 m, e^2 = 0.006694385),
    // 200 m up; z takes a(1 - e^2), the foot of the normal on the axis.
    double Nf = 1.0 / sqrt(1.0 - 0.00669438499958795 * sind(latitude) * sind(latitude));
    double p = (6378140.0 * Nf + 200.0) * cosd(latitude);
    double z = (6335442.275258727 * Nf + 200.0) * sind(latitude);
    double rho = sqrt(p * p + z * z) / 1000.0;
    double pg = atan2(z, p);

    int year = utc->tm_year + 1900;
    int month = utc->tm_mon + 1;
    double ut = utc->tm_hour + utc->tm_min / 60.0 + utc->tm_sec / 3600.0;
    // The earlier sample may fall before 00:00 UT: a negative UT stays on the
    // same date, which the day count handles.
    MoonPosition earlier, later;
    moon_position(year, month, utc->tm_mday, ut - 100.0 / 3600.0, longitude, latitude, &earlier);
    moon_position(year, month, utc->tm_mday, ut, longitude, latitude, &later);

    double theta = later.sidereal * 6.28318530718 / 24.0;
    Vector3 S = {rho * cos(pg) * cos(theta), rho * cos(pg) * sin(theta), rho * sin(pg)};
    double rr = moon_range_rate(&earlier, &later, &S);
    // Two-way: out and back. A receding Moon lowers the echo.
    double doppler = 2.0 * (-rr * frequency * 1e6 / 299792.458);

    moon_fill_record(later.az, later.el, later.ra, later.dec, later.distance, later.hour_angle - longitude, doppler,
                     latitude, record);
}
