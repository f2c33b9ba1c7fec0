#include "astro/precession.h"

#include <gtest/gtest.h>

// Meeus, Astronomical Algorithms, example 21.b: theta Persei, at J2000 (its
// proper motion applied) 41.054063, +49.227750 degrees, stands at 41.547214,
// +49.348483 on the mean equator of 2028 November 13.19 TD.
TEST(Precession, MovesAStarAsMeeusExample)
{
    double ra, dec;
    precession_equ_of_date(41.054063, 49.227750, 2462088.69, &ra, &dec);
    EXPECT_NEAR(ra, 41.547214, 2e-6);
    EXPECT_NEAR(dec, 49.348483, 2e-6);
    precession_equ_of_date(359.9, -10.0, 2451545.0, &ra, &dec);
    EXPECT_NEAR(ra, 359.9, 1e-9) << "no change at J2000, and right ascension stays in 0..360";
}

// Meeus, example 22.a, 1987 April 10 0h TD: nutation -3.788" in longitude and
// +9.443" in obliquity, mean obliquity 23 deg 26' 27.407". The four-term
// series is held to its stated 0.5" and 0.1".
TEST(Precession, NutationAsMeeusExample)
{
    Nutation n;
    nutation_of_date(2446895.5, &n);
    EXPECT_NEAR(n.longitude * 3600.0, -3.788, 0.5);
    EXPECT_NEAR(n.obliquity * 3600.0, 9.443, 0.1);
    EXPECT_NEAR(n.mean_obliquity, 23.0 + 26.0 / 60.0 + 27.407 / 3600.0, 0.001 / 3600.0);
}
