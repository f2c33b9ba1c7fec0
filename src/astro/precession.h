// The equator and equinox of date: precession from J2000 (IAU 1976) and the
// leading terms of the nutation (IAU 1980), as plain functions of the date.
#pragma once

// The rotation from the mean equator and equinox of J2000 to those of the
// date jd (TT, though UTC will do for a position of the sky): v_date = m v_2000.
// Lieske's angles zeta, z, theta (Meeus, Astronomical Algorithms, eq. 21.3).
void precession_matrix(double jd, double m[3][3]);

// A right ascension and declination given at J2000 (degrees), on the mean
// equator and equinox of jd. Right ascension in 0..360.
void precession_equ_of_date(double ra, double dec, double jd, double *ra_date, double *dec_date);

struct Nutation
{
    double longitude;      // delta psi, degrees
    double obliquity;      // delta epsilon, degrees
    double mean_obliquity; // of the ecliptic, degrees
};

// Nutation at jd (TT) by its four largest terms (Meeus, eq. 22.2 and the
// short series after 22.A): within 0.5" in longitude and 0.1" in obliquity,
// far below what a beam or a Doppler shift can tell. The mean obliquity is
// IAU 1980's.
void nutation_of_date(double jd, Nutation *nutation);

// Turn a vector in place: v = m v.
void matrix_apply(const double m[3][3], double v[3]);
