#include "astro/moon.h"

#include "astro/angles.h"
#include "astro/day_number.h"
#include "astro/sun.h"
#include "astro_test_time.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{

// Figures worked out step by step from the published formulas (Schlyter's
// elements and perturbations, the station on the IAU 1976 ellipsoid 200 m up,
// the 100 s finite difference), independently of this code.
struct MoonRow
{
    int year, month, day, hour, minute, second;
    double latitude, longitude, mhz;
    double az, el, ra, dec, distance_km, doppler_hz, hour_angle, spatial_offset;
    const char *why;
};

const MoonRow moon_rows[] = {
    {2024, 4, 8, 18, 17, 16, 25.29, -104.13, 1296.0, 149.369642473464, 69.8359733038573, 17.7336050425419,
     7.93568790224577, 359785.563844241, 448.810679733477, 93.9233754285791, 27.6962693357036,
     "rising in the south-east: approaching, positive shift"},
    {2026, 1, 1, 0, 0, 30, 52.0, 5.0, 1296.0, 247.165789211054, 48.9428696255742, 63.9498286425859, 26.4345860308992,
     361015.94800653, -1275.92017555009, 37.3069529155491, -39.1189069271419,
     "setting in the west, with the earlier sample before 00:00 UT"},
    {2023, 6, 15, 12, 34, 56, -33.9, 151.2, 144.0, 135.616547512295, -72.1012003048947, 50.0259483931982,
     20.1639249066014, 387942.74268772, 0.0, -317.941691296028, 141.729577491692,
     "below the horizon of a southern station: no shift"},
};

SourceRecord moon_at(struct tm tm, double latitude = 52.0, double longitude = 5.0, double mhz = 1296.0)
{
    SourceRecord record = {};
    moon_calculate(&tm, latitude, longitude, mhz, &record);
    return record;
}

} // namespace

TEST(Moon, MatchesTheWrittenFormulasInDoublePrecision)
{
    for (const MoonRow &row : moon_rows)
    {
        SCOPED_TRACE(row.why);
        SourceRecord r = moon_at(astro_test_utc(row.year, row.month, row.day, row.hour, row.minute, row.second),
                                 row.latitude, row.longitude, row.mhz);
        EXPECT_NEAR(r.az, row.az, 1e-9);
        EXPECT_NEAR(r.el, row.el, 1e-9);
        EXPECT_NEAR(r.ra, row.ra, 1e-9); // still degrees here
        EXPECT_NEAR(r.dec, row.dec, 1e-9);
        EXPECT_NEAR(r.distance * 1.5e8, row.distance_km, 1e-6);
        EXPECT_NEAR(r.doppler_hz, row.doppler_hz, 1e-6);
        EXPECT_NEAR(r.hour_angle, row.hour_angle, 1e-9);
        EXPECT_NEAR(r.spatial_offset, row.spatial_offset, 1e-9);
        EXPECT_EQ(r.above_horizon, row.el >= 0.0 ? 1u : 0u);
        EXPECT_NE(r.spatial_offset, 0.0); // a Moon below the horizon is still followed
    }
}

// Meeus, Astronomical Algorithms, example 47.a: 1992 April 12, 0h TD, the
// Moon at RA 134.688470, Dec 13.768368, 368409.7 km. Our low-precision theory
// holds to a few arc minutes and some kilometres.
TEST(Moon, AgreesWithMeeusExample47a)
{
    MoonPosition m;
    moon_position(1992, 4, 12, 0.0, 0.0, 51.0, &m);
    EXPECT_NEAR(m.ra, 134.688470, 0.05);
    EXPECT_NEAR(m.dec, 13.768368, 0.05);
    EXPECT_NEAR(m.distance, 368409.7, 30.0);
}

// The earlier sample of 00:00:30 runs at UT -70 s: a wrong day would put the
// Moon's velocity off by a day's motion and the shift off by kilohertz.
TEST(Moon, DopplerIsContinuousAcrossMidnight)
{
    double before = moon_at(astro_test_utc(2025, 12, 31, 23, 59, 50)).doppler_hz;
    double at = moon_at(astro_test_utc(2026, 1, 1, 0, 0, 30)).doppler_hz;
    double after = moon_at(astro_test_utc(2026, 1, 1, 0, 1, 10)).doppler_hz;
    EXPECT_NEAR(at, (before + after) / 2.0, 0.5);
    EXPECT_NEAR(moon_at(astro_test_utc(2026, 1, 1, 0, 1, 40)).doppler_hz,
                moon_at(astro_test_utc(2026, 1, 1, 0, 1, 41)).doppler_hz, 1.0);
}

// At latitude 0 the topocentric declination is 0/0; the station gets the
// limit, dec + p cos(H0) sin(dec), which joins the figures on either side.
TEST(Moon, EquatorGivesTheLimitNotNaN)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    SourceRecord at = moon_at(tm, 0.0, -104.13), north = moon_at(tm, 1e-7, -104.13),
                 south = moon_at(tm, -1e-7, -104.13);
    ASSERT_TRUE(std::isfinite(at.el) && std::isfinite(at.az));
    EXPECT_EQ(at.above_horizon, 1u);
    EXPECT_NEAR(at.el, north.el, 1e-5);
    EXPECT_NEAR(at.el, south.el, 1e-5);
    EXPECT_NEAR(at.az, north.az, 1e-5);
    EXPECT_NEAR(at.doppler_hz, north.doppler_hz, 1e-3);
}

// NASA's eclipse predictions (F. Espenak): greatest eclipse of 2024 April 8 at
// 18:17:16 UT, 25 deg 17' N, 104 deg 08' W; of 2017 August 21 at 18:25:32 UT,
// 36 deg 58' N, 87 deg 40' W. On the central line Sun and Moon coincide.
TEST(Eclipse, SunAndMoonCoincideOnTheCentralLine)
{
    const double eclipses[][8] = {
        {2024, 4, 8, 18, 17, 16, 25.0 + 17.0 / 60.0, -(104.0 + 8.0 / 60.0)},
        {2017, 8, 21, 18, 25, 32, 36.0 + 58.0 / 60.0, -(87.0 + 40.0 / 60.0)},
    };
    for (const double *e : eclipses)
    {
        SCOPED_TRACE(e[0]);
        SourceRecord moon = moon_at(astro_test_utc(e[0], e[1], e[2], e[3], e[4], e[5]), e[6], e[7]);
        double ut = e[3] + e[4] / 60.0 + e[5] / 3600.0;
        SunPosition sun;
        sun_position(day_number(e[0], e[1], e[2], ut), ut, e[6], e[7], &sun);
        EXPECT_NEAR(moon.az, sun.az, 0.1 / cos(sun.el / RAD));
        EXPECT_NEAR(moon.el, sun.el, 0.1);
    }
}
