#include "astro/source.h"

#include "astro/angles.h"
#include "astro/moon.h"
#include "astro_test_time.h"
#include "support/test_env.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

const double sentinel = -12345.0;

class Source : public testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }

    // A record whose figures are all marked, so a test sees what a call touched.
    static SourceRecord marked(void)
    {
        SourceRecord r;
        memset(&r, 0, sizeof r);
        double *figures[] = {&r.az,        &r.el,         &r.doppler_hz, &r.sky_temp, &r.spatial_offset, &r.degradation,
                             &r.path_loss, &r.hour_angle, &r.ra,         &r.dec,      &r.distance,       &r.phase,
                             &r.sub_lat,   &r.sub_lng,    &r.rise,       &r.set,      &r.transit};
        for (double *f : figures)
        {
            *f = sentinel;
        }
        r.computed = 0;
        r.above_horizon = 7;
        r.az_tracking_enable = r.el_tracking_enable = 0;
        r.rst_status = 99;
        return r;
    }

    static SourceRecord calculate(int index, int mask, const struct tm &tm, double lat, double lon,
                                  SourceRecord r = marked())
    {
        source_calculate(index, mask, &tm, lat, lon, 1296.0, r);
        return r;
    }
};

// Meeus' sidereal time at Greenwich (Astronomical Algorithms, eq. 12.4), degrees.
double meeus_gmst(double jd)
{
    double T = (jd - 2451545.0) / 36525.0;
    double theta = 280.46061837 + 360.98564736629 * (jd - 2451545.0) + 0.000387933 * T * T - T * T * T / 38710000.0;
    return fmod(fmod(theta, 360.0) + 360.0, 360.0);
}

// Field by field and exact: the same row to the last bit.
void expect_same(const SourceRecord &a, const SourceRecord &b)
{
    EXPECT_EQ(a.above_horizon, b.above_horizon);
    EXPECT_EQ(a.rst_status, b.rst_status);
    const double fa[] = {a.az,        a.el,         a.doppler_hz, a.sky_temp, a.spatial_offset, a.degradation,
                         a.path_loss, a.hour_angle, a.ra,         a.dec,      a.distance,       a.phase,
                         a.sub_lat,   a.sub_lng,    a.rise,       a.set,      a.transit};
    const double fb[] = {b.az,        b.el,         b.doppler_hz, b.sky_temp, b.spatial_offset, b.degradation,
                         b.path_loss, b.hour_angle, b.ra,         b.dec,      b.distance,       b.phase,
                         b.sub_lat,   b.sub_lng,    b.rise,       b.set,      b.transit};
    for (size_t i = 0; i < sizeof fa / sizeof fa[0]; i++)
    {
        EXPECT_EQ(memcmp(&fa[i], &fb[i], sizeof fa[i]), 0) << "figure " << i;
    }
}

double wrap180(double degrees)
{
    double w = fmod(degrees + 180.0, 360.0);
    return (w < 0 ? w + 360.0 : w) - 180.0;
}

} // namespace

TEST_F(Source, JulianDayOfPlainUtc)
{
    struct tm tm = astro_test_utc(2000, 1, 1, 12, 0, 0);
    EXPECT_DOUBLE_EQ(source_julian_day(&tm), 2451545.0);
    tm = astro_test_utc(1992, 4, 12, 0, 0, 0);
    EXPECT_DOUBLE_EQ(source_julian_day(&tm), 2448724.5); // Meeus 47.a
}

// Figures outside the mask keep what the last call that asked for them left.
TEST_F(Source, MaskBitsTouchOnlyTheirFigures)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    SourceRecord r = calculate(6, SOURCE_MASK_POSITION, tm, 52.0, 5.0);
    EXPECT_NE(r.az, sentinel);
    EXPECT_NE(r.sub_lng, sentinel);
    EXPECT_EQ(r.distance, sentinel);
    EXPECT_EQ(r.phase, sentinel);
    EXPECT_EQ(r.rise, sentinel);
    EXPECT_EQ(r.rst_status, 99);
    EXPECT_EQ(r.hour_angle, sentinel); // only the Moon has one

    r = calculate(6, SOURCE_MASK_DISTANCE, tm, 52.0, 5.0);
    EXPECT_EQ(r.az, sentinel);
    EXPECT_NE(r.distance, sentinel);
    EXPECT_EQ(r.phase, sentinel);

    r = calculate(6, SOURCE_MASK_PHASE, tm, 52.0, 5.0);
    EXPECT_GT(r.phase, 0.8);
    EXPECT_EQ(r.distance, sentinel);
}

TEST_F(Source, RiseAndSetBringThePositionWithThem)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    SourceRecord r = calculate(6, SOURCE_MASK_RISE_SET, tm, 52.0, 5.0);
    EXPECT_NE(r.az, sentinel);
    EXPECT_NE(r.rise, sentinel);
    EXPECT_EQ(r.rst_status, 0);
    EXPECT_EQ(r.distance, sentinel);
}

TEST_F(Source, CommonEndingMarksEveryRow)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    for (int index = 0; index < 24; index++)
    {
        SCOPED_TRACE(index);
        SourceRecord r = calculate(index, SOURCE_MASK_ALL, tm, 52.0, 5.0);
        EXPECT_EQ(r.computed, 1u);
        EXPECT_EQ(r.above_horizon, r.el >= 0.0 ? 1u : 0u);
        EXPECT_EQ(r.az_tracking_enable, 1);
        EXPECT_EQ(r.el_tracking_enable, 1);
        EXPECT_GE(r.az, 0.0);
        EXPECT_LT(r.az, 360.0);
        if (!r.above_horizon)
        {
            EXPECT_EQ(r.doppler_hz, 0.0);
        }
    }
}

// An index that names no row only marks the record.
TEST_F(Source, IndexOutsideTheTableOnlyMarksTheRecord)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    SourceRecord before = marked();
    before.el = -1.0;
    SourceRecord r = calculate(27, SOURCE_MASK_ALL, tm, 52.0, 5.0, before);
    EXPECT_EQ(r.computed, 1u);
    EXPECT_EQ(r.above_horizon, 0u);
    EXPECT_EQ(r.doppler_hz, 0.0);
    EXPECT_EQ(r.az_tracking_enable, 1);
    EXPECT_EQ(r.az, sentinel);
    EXPECT_EQ(r.rise, sentinel);
    r = calculate(-1, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_EQ(r.computed, 1u);
    EXPECT_EQ(r.ra, sentinel);
}

// Meeus, examples 33.a and 41.a: Venus on 1992 December 20, 0h TD, at RA
// 21h04m41.454s, Dec -18 deg 53' 16.84", 0.910947 AU, illuminated 0.647.
// libnova works in the J2000 frame and Meeus in that of the date: seven years
// of precession, 0.1 degree, lie between them. A slip in the table of planet
// functions would be off by whole degrees.
TEST_F(Source, PlanetRowsUseTheirOwnPlanet)
{
    struct tm tm = astro_test_utc(1992, 12, 20, 0, 0, 0);
    SourceRecord venus = calculate(5, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_NEAR(venus.ra, (21.0 + 4.0 / 60.0 + 41.454 / 3600.0), 0.01);
    EXPECT_NEAR(venus.dec, -(18.0 + 53.0 / 60.0 + 16.84 / 3600.0), 0.05);
    EXPECT_NEAR(venus.distance, 0.910947, 2e-4);
    EXPECT_NEAR(venus.phase, 0.647, 0.005);
    EXPECT_EQ(venus.sub_lat, venus.dec);

    SourceRecord mars = calculate(6, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_GT(fabs(mars.ra - venus.ra), 1.0);
    SourceRecord pluto = calculate(11, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_GT(pluto.distance, 28.0); // Pluto was near perihelion, about 29 AU
    EXPECT_LT(pluto.distance, 31.0);
}

// Slow sources get the rise and set of the day before, with no search for
// the next event. At the rise so found the source stands on libnova's
// horizon for stars and planets, -0.5667 degrees.
TEST_F(Source, FixedSourcesTakeTheDayBeforesRiseAndSet)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    double jd = source_julian_day(&tm);
    settings.User_RA = 12.0;
    settings.User_Declination = 10.0;
    for (int index : {3, 6, 15})
    {
        SCOPED_TRACE(index);
        SourceRecord r = calculate(index, SOURCE_MASK_ALL, tm, 52.0, 5.0);
        ASSERT_EQ(r.rst_status, 0);
        EXPECT_GT(r.rise, jd - 1.5);
        EXPECT_LT(r.rise, jd + 0.5);
        EXPECT_GT(r.set, jd - 1.5);
        EXPECT_LT(r.set, jd + 0.5);
        struct tm at_rise = astro_test_utc_of_jd(r.rise);
        SourceRecord there = calculate(index, SOURCE_MASK_POSITION, at_rise, 52.0, 5.0);
        EXPECT_NEAR(there.el, -0.5667, 0.05);
    }
    // Cygnus A never sets at 52 N: the times stay as they were.
    SourceRecord cygnus = calculate(14, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_EQ(cygnus.rst_status, 1);
    EXPECT_EQ(cygnus.rise, sentinel);
}

// Cassiopeia A at its upper culmination seen from 50 N: the station's
// longitude is chosen so that the local sidereal time (Meeus 12.4, 280.46061837
// at 2000 January 1 12h UT) equals its right ascension, 23h 23m 26s. It then
// stands due north at 90 - (58.8 - 50) degrees.
TEST_F(Source, RadioSourceAtCulmination)
{
    struct tm tm = astro_test_utc(2000, 1, 1, 12, 0, 0);
    double ra_degrees = 15.0 * (23.0 + 23.0 / 60.0 + 26.0 / 3600.0);
    double longitude = ra_degrees - 280.46061837;
    SourceRecord r = calculate(13, SOURCE_MASK_POSITION, tm, 50.0, longitude);
    EXPECT_NEAR(r.ra, ra_degrees / 15.0, 1e-12);
    EXPECT_DOUBLE_EQ(r.dec, 58.8);
    EXPECT_NEAR(r.el, 81.2, 0.02);
    EXPECT_NEAR(wrap180(r.az), 0.0, 0.05);
    EXPECT_EQ(r.distance, sentinel); // bits 2 and 4 do nothing for radio sources

    r = calculate(12, SOURCE_MASK_POSITION, tm, 50.0, 0.0);
    EXPECT_NEAR(r.dec, -(29.0 + 28.118 / 3600.0), 1e-12); // the sign of Sagittarius A
    r = calculate(15, SOURCE_MASK_POSITION, tm, 50.0, 0.0);
    EXPECT_NEAR(r.ra, 5.58, 1e-12);
}

// The sub-point lies 1.5 days of the sidereal excess, 1.478 degrees, west of
// the geometric one (RA - Meeus' Greenwich sidereal time), at any date.
TEST_F(Source, SubPointLiesAFixedStepWestOfTheGeometricOne)
{
    const int instants[][6] = {{2000, 1, 1, 12, 0, 0}, {2024, 4, 8, 18, 17, 16}, {2031, 7, 3, 3, 5, 9}};
    for (const auto &i : instants)
    {
        struct tm tm = astro_test_utc(i[0], i[1], i[2], i[3], i[4], i[5]);
        double lat, lng;
        sub_point(&tm, 6.5, -12.0, &lat, &lng);
        double geometric = wrap180(15.0 * 6.5 - meeus_gmst(source_julian_day(&tm)));
        EXPECT_DOUBLE_EQ(lat, -12.0);
        EXPECT_NEAR(wrap180(geometric - lng), 1.478, 0.003);
        EXPECT_GT(lng, -180.0);
        EXPECT_LE(lng, 180.0);
    }
    struct tm noon = astro_test_utc(2000, 1, 1, 12, 0, 0);
    double lat, lng;
    sub_point(&noon, 0.0, 0.0, &lat, &lng);
    EXPECT_NEAR(lng, 78.0609105641882, 1e-9); // worked by hand from the formula
}

// The Moon's row: degrees become hours, and the path figures follow from the
// distance and the sky behind.
TEST_F(Source, MoonRowCarriesTheEmeFigures)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    SourceRecord r = calculate(0, SOURCE_MASK_POSITION, tm, 25.29, -104.13);
    EXPECT_NEAR(r.ra, 17.7336050425419 / 15.0, 1e-10);
    EXPECT_NEAR(r.distance * 1.5e8, 359785.563844241, 1e-6);
    EXPECT_NEAR(r.path_loss, -40.0 * log10(359785.563844241 / 356903.0), 1e-9);
    EXPECT_GT(r.sky_temp, 2.7);
    EXPECT_LT(r.degradation, r.path_loss + 0.01);
    EXPECT_EQ(r.sub_lat, r.dec);
    EXPECT_EQ(r.phase, sentinel);
    EXPECT_EQ(r.rise, sentinel);
}

// 1992-04-12 00:00 UT, London: the Moon is up, and today's libnova answer is
// the coming rise in the afternoon. The row shows the rise it had instead, at
// which our own Moon stands on the horizon (libnova's horizon for the Moon's
// centre, less the parallax, is near -0.8 degrees).
TEST_F(Source, MoonThatIsUpShowsItsPrecedingRise)
{
    struct tm tm = astro_test_utc(1992, 4, 12, 0, 0, 0);
    double jd = source_julian_day(&tm);
    SourceRecord r = calculate(0, SOURCE_MASK_ALL, tm, 51.5, -0.1);
    ASSERT_EQ(r.above_horizon, 1u);
    EXPECT_LT(r.rise, jd);
    EXPECT_GT(r.rise, jd - 1.0);
    EXPECT_GT(r.set, jd);
    EXPECT_LT(r.set, jd + 1.0);
    struct tm at_rise = astro_test_utc_of_jd(r.rise);
    SourceRecord moon = {};
    moon_calculate(&at_rise, 51.5, -0.1, 1296.0, &moon);
    EXPECT_NEAR(moon.el, -0.8, 1.0);
    EXPECT_LT(moon.az, 180.0);
}

// Sydney at 11:00 local (01:00 UT): the Sun rose the UT day before.
TEST_F(Source, SunThatIsUpShowsItsPrecedingRise)
{
    struct tm tm = astro_test_utc(2024, 6, 21, 1, 0, 0);
    double jd = source_julian_day(&tm);
    SourceRecord r = calculate(1, SOURCE_MASK_ALL, tm, -33.87, 151.21);
    ASSERT_EQ(r.above_horizon, 1u);
    EXPECT_LT(r.rise, jd);
    EXPECT_GT(r.rise, jd - 0.5);
    EXPECT_GT(r.set, jd);
    EXPECT_LT(r.set, jd + 0.5);
    EXPECT_DOUBLE_EQ(r.phase, 1.0);
    EXPECT_NEAR(r.distance, 1.0163, 0.001); // aphelion is two weeks away
}

// Sydney at 20:00 local (10:00 UT) on midwinter day, after sunset (06:54
// UT): the set moves to the next evening, and the rise shown is the one the
// first answer gave, tomorrow's 07:00 local (21:00 UT).
TEST_F(Source, SunAfterSetShowsTheNextSet)
{
    struct tm tm = astro_test_utc(2024, 6, 21, 10, 0, 0);
    double jd = source_julian_day(&tm);
    SourceRecord r = calculate(1, SOURCE_MASK_ALL, tm, -33.87, 151.21);
    ASSERT_EQ(r.above_horizon, 0u);
    EXPECT_NEAR(r.set - jd, (20.0 + 54.0 / 60.0) / 24.0, 0.01);
    EXPECT_NEAR(r.rise - jd, 11.0 / 24.0, 0.01);
}

TEST_F(Source, UserRowsComeFromTheSettings)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    settings.User_Azimuth = 200.0;
    settings.User_Elevation = -3.0;
    SourceRecord r = calculate(2, SOURCE_MASK_ALL, tm, 52.0, 5.0);
    EXPECT_EQ(r.az, 200.0);
    EXPECT_EQ(r.el, -3.0);
    EXPECT_EQ(r.above_horizon, 0u);
    EXPECT_EQ(r.ra, 0.0);
    EXPECT_EQ(r.rise, 0.0);
    EXPECT_EQ(r.rst_status, 0);
    EXPECT_EQ(r.sky_temp, sentinel);

    settings.User_RA = 17.76;
    settings.User_Declination = -29.0;
    r = calculate(3, SOURCE_MASK_POSITION, tm, 52.0, 5.0);
    EXPECT_EQ(r.ra, 17.76);
    EXPECT_EQ(r.dec, -29.0);
    EXPECT_GT(r.sky_temp, 10.0); // towards the galactic centre, hot even at 1296 MHz
    EXPECT_EQ(r.degradation, sentinel);
    EXPECT_EQ(r.path_loss, sentinel);
    EXPECT_EQ(r.distance, 0.0);
    EXPECT_EQ(r.doppler_hz, 0.0);
    EXPECT_EQ(r.phase, 0.0);
}

// A remote row keeps the direction and enables its protocol wrote.
TEST_F(Source, RemoteRowsKeepWhatTheirProtocolWrote)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    for (int index = SOURCE_EASYCOMM; index <= SOURCE_PSTROTATOR; index++)
    {
        SourceRecord before = marked();
        before.az = 123.0;
        before.el = index == SOURCE_GPREDICT ? -5.0 : 10.0;
        SourceRecord r = calculate(index, SOURCE_MASK_ALL, tm, 52.0, 5.0, before);
        EXPECT_EQ(r.az, 123.0);
        EXPECT_EQ(r.above_horizon, index == SOURCE_GPREDICT ? 0u : 1u);
        EXPECT_EQ(r.az_tracking_enable, 0);
        EXPECT_EQ(r.el_tracking_enable, 0);
        EXPECT_EQ(r.ra, 0.0);
        EXPECT_EQ(r.distance, 0.0);
        EXPECT_EQ(r.set, 0.0);
        EXPECT_EQ(r.rst_status, 0);
    }
}

// libnova reuses its last nutation within 0.1 day. A row must come out the
// same whatever was computed before it.
TEST_F(Source, ResultsDoNotDependOnCallHistory)
{
    struct tm t1 = astro_test_utc(2024, 4, 8, 18, 17, 16);
    struct tm t2 = astro_test_utc(2024, 4, 8, 19, 30, 0);
    for (int index : {0, 1, 3, 5})
    {
        SCOPED_TRACE(index);
        settings.User_RA = 3.0;
        SourceRecord fresh = calculate(index, SOURCE_MASK_ALL, t2, 52.0, 5.0);
        calculate(index, SOURCE_MASK_ALL, t1, 52.0, 5.0);
        SourceRecord after = calculate(index, SOURCE_MASK_ALL, t2, 52.0, 5.0);
        expect_same(fresh, after);
    }
}
