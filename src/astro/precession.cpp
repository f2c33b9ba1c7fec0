#include "astro/precession.h"

#include "astro/angles.h"

#include <cmath>

void matrix_apply(const double m[3][3], double v[3])
{
    double x = m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2];
    double y = m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2];
    double z = m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2];
    v[0] = x;
    v[1] = y;
    v[2] = z;
}

void precession_matrix(double jd, double m[3][3])
{
    double T = (jd - 2451545.0) / 36525.0;
    // Arc seconds, Lieske et al. 1977, from J2000 to the date.
    double zeta = ((0.017998 * T + 0.30188) * T + 2306.2181) * T / 3600.0;
    double z = ((0.018203 * T + 1.09468) * T + 2306.2181) * T / 3600.0;
    double theta = ((-0.041833 * T - 0.42665) * T + 2004.3109) * T / 3600.0;
    double cz = cosd(zeta), sz = sind(zeta), cZ = cosd(z), sZ = sind(z), ct = cosd(theta), st = sind(theta);
    // R3(-z) R2(theta) R3(-zeta)
    m[0][0] = cZ * ct * cz - sZ * sz;
    m[0][1] = -cZ * ct * sz - sZ * cz;
    m[0][2] = -cZ * st;
    m[1][0] = sZ * ct * cz + cZ * sz;
    m[1][1] = -sZ * ct * sz + cZ * cz;
    m[1][2] = -sZ * st;
    m[2][0] = st * cz;
    m[2][1] = -st * sz;
    m[2][2] = ct;
}

void precession_equ_of_date(double ra, double dec, double jd, double *ra_date, double *dec_date)
{
    double m[3][3];
    double v[3] = {cosd(dec) * cosd(ra), cosd(dec) * sind(ra), sind(dec)};
    precession_matrix(jd, m);
    matrix_apply(m, v);
    *ra_date = fmod(atan2(v[1], v[0]) * RAD + 360.0, 360.0);
    *dec_date = atan2(v[2], sqrt(v[0] * v[0] + v[1] * v[1])) * RAD;
}

void nutation_of_date(double jd, Nutation *nutation)
{
    double T = (jd - 2451545.0) / 36525.0;
    // The Moon's ascending node, and the mean longitudes of the Sun and Moon.
    double omega = 125.04452 - 1934.136261 * T;
    double L = 280.4665 + 36000.7698 * T;
    double Lm = 218.3165 + 481267.8813 * T;
    nutation->longitude =
        (-17.20 * sind(omega) - 1.32 * sind(2.0 * L) - 0.23 * sind(2.0 * Lm) + 0.21 * sind(2.0 * omega)) / 3600.0;
    nutation->obliquity =
        (9.20 * cosd(omega) + 0.57 * cosd(2.0 * L) + 0.10 * cosd(2.0 * Lm) - 0.09 * cosd(2.0 * omega)) / 3600.0;
    nutation->mean_obliquity = 23.43929111111111 + ((0.001813 * T - 0.00059) * T - 46.8150) * T / 3600.0;
}
