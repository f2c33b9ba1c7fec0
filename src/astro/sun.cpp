#include "astro/sun.h"

#include "astro/angles.h"
#include "astro/day_number.h"

#include <cmath>

// Source: P. Schlyter, "How to compute planetary positions": the Sun's mean
// elements, one Newton step on Kepler's equation, the mean obliquity of date.
void sun_position(double d, double ut_hours, double latitude, double longitude, SunPosition *position)
{
    double M = fmod(356.047 + 0.9856002585 * d + 3600000.0, 360.0);
    double e = 0.016709 - 1.151e-9 * d;
    double w = 282.9404 + 4.70935e-5 * d;

    double E0 = M + e * RAD * sind(M) * (1.0 + e * cosd(M));
    double E = E0 - (E0 - e * RAD * sind(E0) - M) / (1.0 - e * cosd(E0));
    double x = cosd(E) - e;
    double y = sqrt(1.0 - e * e) * sind(E);
    double r = sqrt(x * x + y * y);
    double lon = fmod(atan2(y, x) * RAD + w + 720.0, 360.0);

    double ob = 23.4393 - 3.563e-7 * d;
    double xs = r * cosd(lon);
    double ys = r * sind(lon);
    double Y = ys * cosd(ob);
    double Z = ys * sind(ob);
    double ra = atan2(Y, xs) * RAD;
    double dec = atan2(Z, sqrt(Y * Y + xs * xs)) * RAD;

    // Sidereal time from the Sun's mean longitude M + w, in hours.
    double lst = fmod((fmod(M + w + 720.0, 360.0) + 180.0) / 15.0 + ut_hours + longitude / 15.0 + 48.0, 24.0);
    double H = 15.0 * lst - ra;

    position->ra = ra;
    position->dec = dec;
    position->az =
        fmod(atan2(cosd(dec) * sind(H), sind(latitude) * cosd(dec) * cosd(H) - cosd(latitude) * sind(dec)) * RAD +
                 180.0 + 360.0,
             360.0);
    position->el = asin(cosd(latitude) * cosd(dec) * cosd(H) + sind(latitude) * sind(dec)) * RAD;
}

// The Sun's parallax (9 arc seconds) is ignored.
void sun_calculate(const struct tm *utc, double latitude, double longitude, SourceRecord *record)
{
    double ut = utc->tm_hour + utc->tm_min / 60.0 + utc->tm_sec / 3600.0;
    double d = day_number(utc->tm_year + 1900, utc->tm_mon + 1, utc->tm_mday, ut);
    SunPosition sun;
    sun_position(d, ut, latitude, longitude, &sun);
    record->az = sun.az;
    record->el = sun.el;
    record->ra = sun.ra;
    record->dec = sun.dec;
    record->doppler_hz = 0.0;
    record->sky_temp = 0.0;
    record->above_horizon = sun.el >= 0.0 ? 1 : 0;
}
