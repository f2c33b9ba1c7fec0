// The precise Moon against figures computed elsewhere: a JPL-based ephemeris
// for pointing and range rate, and Meeus' worked example for the frames.
#include "astro/precise_moon.h"

#include "astro/source.h"
#include "astro_test_time.h"
#include "support/test_env.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{

// Reference values from the Swiss Ephemeris 2.10.03 (swetest, Debian's
// swe-basic-data: semo_18.se1, compressed from JPL DE431), geometric
// positions (-true -noaberr -nodefl), the time given as UT1 = UTC, station on
// the WGS84 ellipsoid (-topoLON,LAT,HEIGHT). The topocentric azimuth and
// altitude at the instant (-fih, azimuth turned from south to north), the
// topocentric distance 10 s before and after (-fw), and the geocentric right
// ascension, declination and distance on the true equator of date (-fadw).
struct MoonReference
{
    const char *utc;
    double latitude, longitude, height;
    double az, el, range_before, range_after, ra, dec, distance;
};

const MoonReference references[] = {
    {"2024-04-08 18:17:16", 52, 5, 200, 281.9914066, -0.3194594, 359783.163885523, 359788.858093075, 17.7389958,
     7.8984880, 359802.538538867},
    {"2025-03-14 06:58:00", 39.7, -104.9, 1600, 175.2979952, 52.3423426, 396429.566315768, 396429.826915160,
     174.5901361, 2.6849263, 401504.961150108},
    {"2025-07-21 13:30:00", -33.9, 151.2, 50, 89.7474029, -56.9119088, 373781.654515652, 373777.831669987, 74.5073776,
     27.8055714, 368457.956663593},
    {"2026-01-03 22:05:40", 69.65, 18.96, 10, 155.7997540, 43.9857631, 359356.357008728, 359356.280670972, 112.7864811,
     25.7285185, 363810.447975252},
    {"2025-10-07 03:00:00", 0, -78.5, 2800, 74.9635252, 59.4681827, 356027.624204154, 356022.683573834, 11.6802453,
     7.4574255, 361535.873188691},
    {"2024-12-31 23:59:59", 35, 139.7, 40, 130.8284496, 8.3251233, 380751.182096730, 380744.857388854, 296.6803245,
     -25.8604763, 381735.707539452},
};

double jd_of(const char *text)
{
    struct tm tm = {};
    strptime(text, "%Y-%m-%d %H:%M:%S", &tm);
    return source_julian_day(&tm);
}

// 1 Hz of two-way shift at 10368 MHz, in km/s of range rate.
const double one_hertz_at_10368 = 299792.458 / (2.0 * 10368e6);

} // namespace

// Pointing within 0.001 degree and range rate within 1 Hz at 10368 MHz of
// the ephemeris, which over a year of hourly samples agree to 0.0003 degree
// and 0.3 Hz RMS. The range rate is checked against the difference of the
// ephemeris' own ranges 20 s apart, which shares no code with ours.
TEST(PreciseMoon, AgreesWithAJplBasedEphemeris)
{
    for (const MoonReference &r : references)
    {
        SCOPED_TRACE(r.utc);
        PreciseMoon m;
        precise_moon_position(jd_of(r.utc), r.latitude, r.longitude, r.height, &m);
        EXPECT_NEAR(m.el, r.el, 0.001);
        EXPECT_NEAR(remainder(m.az - r.az, 360.0) * cos(r.el / 57.29577951307855), 0.0, 0.001);
        // The theory and the numerical ephemeris differ by a few hundred metres
        // in distance: 0.2" at the Moon, and a slow drift for the Doppler.
        EXPECT_NEAR(m.range, (r.range_before + r.range_after) / 2.0, 0.3);
        EXPECT_NEAR(m.range_rate, (r.range_after - r.range_before) / 20.0, one_hertz_at_10368);
        EXPECT_NEAR(remainder(m.ra - r.ra, 360.0) * cos(r.dec / 57.29577951307855), 0.0, 0.001);
        EXPECT_NEAR(m.dec, r.dec, 0.001);
        EXPECT_NEAR(m.distance, r.distance, 0.3);
    }
}

// Meeus, Astronomical Algorithms, example 47.a: 1992 April 12, 0h TD, the
// apparent right ascension 134.688470 and declination 13.768368 degrees at
// 368409.7 km, from his shortened series (good to about 10"). TD is UTC plus
// 26 leap seconds and 32.184 s then. This checks the chain from the theory's
// J2000 ecliptic to the true equator of date, which a wrong sign of the
// precession (0.1 degree by 1992) or nutation would break.
TEST(PreciseMoon, FramesMatchMeeusExample)
{
    double jd_utc = 2448724.5 - 58.184 / 86400.0;
    EXPECT_DOUBLE_EQ(precise_tt_minus_utc(jd_utc), 58.184);
    PreciseMoon m;
    precise_moon_position(jd_utc, 0.0, 0.0, 0.0, &m);
    EXPECT_NEAR(m.ra, 134.688470, 0.003);
    EXPECT_NEAR(m.dec, 13.768368, 0.003);
    EXPECT_NEAR(m.distance, 368409.7, 5.0);
}

// The row: a two-way shift scaled by the frequency, none below the horizon,
// and the home station's height used only at the home station.
TEST(PreciseMoon, RowFollowsFromThePosition)
{
    test_reset_state();
    settings.PreciseMoon = 1;
    settings.Latitude = 39.7;
    settings.Longitude = -104.9;
    settings.StationHeight = 1600.0;
    const MoonReference &up = references[1];
    struct tm tm = {};
    strptime(up.utc, "%Y-%m-%d %H:%M:%S", &tm);
    PreciseMoon m;
    precise_moon_position(jd_of(up.utc), up.latitude, up.longitude, 1600.0, &m);

    SourceRecord row = {};
    source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, up.latitude, up.longitude, 10368.0, row);
    EXPECT_DOUBLE_EQ(row.doppler_hz, -2.0 * m.range_rate * 10368e6 / 299792.458);
    EXPECT_TRUE(row.az == m.az && row.el == m.el && row.ra * 15.0 == m.ra && row.distance == m.distance / 1.5e8);
    EXPECT_DOUBLE_EQ(row.hour_angle, m.hour_angle - up.longitude);

    // A station elsewhere (the DX) stands at 200 m, which changes the
    // rotation's share of the echo.
    SourceRecord dx = {};
    source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, up.latitude, up.longitude + 1e-9, 10368.0, dx);
    PreciseMoon low;
    precise_moon_position(jd_of(up.utc), up.latitude, up.longitude + 1e-9, 200.0, &low);
    EXPECT_DOUBLE_EQ(dx.doppler_hz, -2.0 * low.range_rate * 10368e6 / 299792.458);
    EXPECT_NE(dx.doppler_hz, row.doppler_hz);

    const MoonReference &down = references[2];
    strptime(down.utc, "%Y-%m-%d %H:%M:%S", &tm);
    source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, down.latitude, down.longitude, 10368.0, row);
    EXPECT_TRUE(row.el < 0.0 && row.doppler_hz == 0.0 && row.above_horizon == 0u);
}
