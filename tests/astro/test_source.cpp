#include "astro/source.h"

#include "astro/angles.h"
#include "astro/refraction.h"
#include "astro_test_time.h"
#include "support/test_env.h"

#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <libnova/precession.h>
#include <libnova/transform.h>

namespace
{

const double sentinel = -12345.0;

std::array<double *, 17> figures(SourceRecord &r)
{
    return {&r.az,        &r.el,         &r.doppler_hz, &r.sky_temp, &r.spatial_offset, &r.degradation,
            &r.path_loss, &r.hour_angle, &r.ra,         &r.dec,      &r.distance,       &r.phase,
            &r.sub_lat,   &r.sub_lng,    &r.rise,       &r.set,      &r.transit};
}

// A record whose figures are all marked, so a test sees what a call touched.
SourceRecord marked(void)
{
    SourceRecord r = {};
    for (double *f : figures(r))
    {
        *f = sentinel;
    }
    r.above_horizon = 7;
    r.rst_status = 99;
    return r;
}

const struct tm eclipse = astro_test_utc(2024, 4, 8, 18, 17, 16);

SourceRecord calculate(int index, int mask, const struct tm &tm = eclipse, double lat = 52.0, double lon = 5.0,
                       SourceRecord r = marked())
{
    source_calculate(index, mask, &tm, lat, lon, 1296.0, r);
    return r;
}

double wrap180(double degrees)
{
    return remainder(degrees, 360.0);
}

class Source : public testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }
};

} // namespace

// Figures outside the mask keep what the last call that asked for them left;
// rise and set bring the position with them. Mars (row 6) has every figure
// but an hour angle, which only the Moon has.
TEST_F(Source, MaskBitsTouchOnlyTheirFigures)
{
    struct Row
    {
        int mask;
        bool position, distance, phase, rise;
    };
    const Row rows[] = {
        {SOURCE_MASK_POSITION, true, false, false, false},
        {SOURCE_MASK_DISTANCE, false, true, false, false},
        {SOURCE_MASK_PHASE, false, false, true, false},
        {SOURCE_MASK_RISE_SET, true, false, false, true},
    };
    for (const Row &row : rows)
    {
        SCOPED_TRACE(row.mask);
        SourceRecord r = calculate(6, row.mask);
        EXPECT_EQ(r.az != sentinel && r.sub_lng != sentinel, row.position);
        EXPECT_EQ(r.distance != sentinel, row.distance);
        EXPECT_EQ(r.phase != sentinel, row.phase);
        EXPECT_EQ(r.rise != sentinel && r.rst_status == 0, row.rise);
        EXPECT_EQ(r.hour_angle, sentinel);
    }
}

// Every row ends the same way; an index that names no row only marks the
// record.
TEST_F(Source, CommonEndingMarksEveryRow)
{
    for (int index = -1; index < 28; index++)
    {
        SCOPED_TRACE(index);
        bool real = index >= 0 && index < 24;
        if (index >= 24 && index <= 26)
        {
            continue;
        }
        SourceRecord before = marked();
        before.el = -1.0;
        SourceRecord r = calculate(index, SOURCE_MASK_ALL, eclipse, 52.0, 5.0, before);
        EXPECT_EQ(r.computed, 1u);
        EXPECT_EQ(r.above_horizon, r.el >= 0.0 ? 1u : 0u);
        EXPECT_EQ(r.az_tracking_enable + r.el_tracking_enable, 2);
        EXPECT_TRUE(!real || (r.az >= 0.0 && r.az < 360.0)) << r.az;
        EXPECT_TRUE(r.above_horizon || r.doppler_hz == 0.0);
        EXPECT_TRUE(real || (r.az == sentinel && r.rise == sentinel && r.ra == sentinel));
    }
}

// Meeus, examples 33.a and 41.a: Venus on 1992 December 20, 0h TD, at RA
// 21h04m41.454s, Dec -18 deg 53' 16.84", 0.910947 AU, illuminated 0.647.
// libnova works in the J2000 frame and Meeus in that of the date: seven years
// of precession, 0.1 degree, lie between them. A slip in the table of planet
// functions would be off by whole degrees.
TEST_F(Source, PlanetRowsUseTheirOwnPlanet)
{
    struct tm tm = astro_test_utc(1992, 12, 20, 0, 0, 0);
    SourceRecord venus = calculate(5, SOURCE_MASK_ALL, tm);
    EXPECT_NEAR(venus.ra, (21.0 + 4.0 / 60.0 + 41.454 / 3600.0), 0.01);
    EXPECT_NEAR(venus.dec, -(18.0 + 53.0 / 60.0 + 16.84 / 3600.0), 0.05);
    EXPECT_NEAR(venus.distance, 0.910947, 2e-4);
    EXPECT_NEAR(venus.phase, 0.647, 0.005);
    EXPECT_EQ(venus.sub_lat, venus.dec);
    EXPECT_GT(fabs(calculate(6, SOURCE_MASK_ALL, tm).ra - venus.ra), 1.0);
    EXPECT_NEAR(calculate(11, SOURCE_MASK_ALL, tm).distance, 29.5, 1.5); // Pluto near perihelion
}

// Slow sources get the rise and set of the day before, with no search for
// the next event. At the rise so found the source stands on libnova's
// horizon for stars and planets, -0.5667 degrees.
TEST_F(Source, FixedSourcesTakeTheDayBeforesRiseAndSet)
{
    double jd = source_julian_day(&eclipse);
    settings.User_RA = 12.0;
    settings.User_Declination = 10.0;
    for (int index : {3, 6, 15})
    {
        SCOPED_TRACE(index);
        SourceRecord r = calculate(index, SOURCE_MASK_ALL);
        ASSERT_EQ(r.rst_status, 0);
        EXPECT_TRUE(r.rise > jd - 1.5 && r.rise < jd + 0.5 && r.set > jd - 1.5 && r.set < jd + 0.5)
            << r.rise - jd << " " << r.set - jd;
        EXPECT_NEAR(calculate(index, SOURCE_MASK_POSITION, astro_test_utc_of_jd(r.rise)).el, -0.5667, 0.05);
    }
    // Cygnus A never sets at 52 N: the times stay as they were.
    SourceRecord cygnus = calculate(14, SOURCE_MASK_ALL);
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
    SourceRecord r = calculate(13, SOURCE_MASK_ALL, tm, 50.0, ra_degrees - 280.46061837);
    EXPECT_NEAR(r.ra, ra_degrees / 15.0, 1e-12);
    EXPECT_DOUBLE_EQ(r.dec, 58.8);
    EXPECT_NEAR(r.el, 81.2, 0.02);
    EXPECT_NEAR(wrap180(r.az), 0.0, 0.05);
    EXPECT_EQ(r.distance, sentinel); // bits 2 and 4 do nothing for radio sources
    EXPECT_NEAR(calculate(12, 1, tm).dec, -(29.0 + 28.118 / 3600.0), 1e-12); // the sign of Sagittarius A
    EXPECT_NEAR(calculate(15, 1, tm).ra, 5.58, 1e-12);
}

// The sub-point lies 1.5 days of the sidereal excess, 1.478 degrees, west of
// the geometric one (RA - Meeus' Greenwich sidereal time, eq. 12.4), at any
// date.
TEST_F(Source, SubPointLiesAFixedStepWestOfTheGeometricOne)
{
    for (const struct tm &tm : {astro_test_utc(2000, 1, 1, 12, 0, 0), eclipse, astro_test_utc(2031, 7, 3, 3, 5, 9)})
    {
        double lat, lng, jd = source_julian_day(&tm), T = (jd - 2451545.0) / 36525.0;
        double gmst = 280.46061837 + 360.98564736629 * (jd - 2451545.0) + 0.000387933 * T * T - T * T * T / 38710000.0;
        sub_point(&tm, 6.5, -12.0, &lat, &lng);
        EXPECT_DOUBLE_EQ(lat, -12.0);
        EXPECT_NEAR(wrap180(15.0 * 6.5 - gmst - lng), 1.478, 0.003);
        EXPECT_TRUE(lng > -180.0 && lng <= 180.0) << lng;
    }
}

// The Moon's row: degrees become hours, and the path figures follow from the
// distance and the sky behind.
TEST_F(Source, MoonRowCarriesTheEmeFigures)
{
    SourceRecord r = calculate(0, SOURCE_MASK_POSITION, eclipse, 25.29, -104.13);
    EXPECT_NEAR(r.ra, 17.7336050425419 / 15.0, 1e-10);
    EXPECT_NEAR(r.distance * 1.5e8, 359785.563844241, 1e-6);
    EXPECT_NEAR(r.path_loss, -40.0 * log10(359785.563844241 / 356903.0), 1e-9);
    EXPECT_TRUE(r.sky_temp > 2.7 && r.degradation < r.path_loss + 0.01 && r.phase == sentinel);
}

// A Moon or Sun that is up shows the rise it had, not libnova's coming one
// (London 1992-04-12 00:00 UT, the Moon up). Sydney 01:00 UT (11:00 local):
// the Sun rose the UT day before; at 10:00 UT, after the 06:54 UT set, the
// set moves to the next evening and the rise is tomorrow's 21:00 UT.
TEST_F(Source, RiseAndSetOfTheMoonAndSun)
{
    struct Row
    {
        int index;
        struct tm tm;
        double lat, lon, rise, set, tolerance;
    };
    const Row rows[] = {
        {0, astro_test_utc(1992, 4, 12, 0, 0, 0), 51.5, -0.1, -0.5, 0.5, 0.5},
        {1, astro_test_utc(2024, 6, 21, 1, 0, 0), -33.87, 151.21, -0.25, 0.25, 0.25},
        {1, astro_test_utc(2024, 6, 21, 10, 0, 0), -33.87, 151.21, 11.0 / 24.0, (20.0 + 54.0 / 60.0) / 24.0, 0.01},
    };
    for (const Row &row : rows)
    {
        SCOPED_TRACE(row.index);
        double jd = source_julian_day(&row.tm);
        SourceRecord r = calculate(row.index, SOURCE_MASK_ALL, row.tm, row.lat, row.lon);
        EXPECT_EQ(r.above_horizon, row.rise < 0 ? 1u : 0u);
        EXPECT_NEAR(r.rise - jd, row.rise, row.tolerance);
        EXPECT_NEAR(r.set - jd, row.set, row.tolerance);
    }
    SourceRecord sun = calculate(1, SOURCE_MASK_ALL, rows[1].tm, -33.87, 151.21);
    EXPECT_DOUBLE_EQ(sun.phase, 1.0);
    EXPECT_NEAR(sun.distance, 1.0163, 0.001); // aphelion is two weeks away
}

TEST_F(Source, UserRowsComeFromTheSettings)
{
    settings.User_Azimuth = 200.0;
    settings.User_Elevation = -3.0;
    SourceRecord r = calculate(2, SOURCE_MASK_ALL);
    EXPECT_TRUE(r.az == 200.0 && r.el == -3.0 && r.above_horizon == 0u);
    EXPECT_TRUE(r.ra == 0.0 && r.rise == 0.0 && r.rst_status == 0 && r.sky_temp == sentinel);

    settings.User_RA = 17.76;
    settings.User_Declination = -29.0;
    r = calculate(3, SOURCE_MASK_POSITION);
    EXPECT_TRUE(r.ra == 17.76 && r.dec == -29.0);
    EXPECT_GT(r.sky_temp, 10.0); // towards the galactic centre, hot even at 1296 MHz
    EXPECT_TRUE(r.degradation == sentinel && r.path_loss == sentinel);
    EXPECT_TRUE(r.distance == 0.0 && r.doppler_hz == 0.0 && r.phase == 0.0);
}

// A remote row keeps the direction its protocol wrote, and never tracks.
TEST_F(Source, RemoteRowsKeepWhatTheirProtocolWrote)
{
    for (int index = SOURCE_EASYCOMM; index <= SOURCE_PSTROTATOR; index++)
    {
        SourceRecord before = marked();
        before.az = 123.0;
        before.el = index == SOURCE_GPREDICT ? -5.0 : 10.0;
        SourceRecord r = calculate(index, SOURCE_MASK_ALL, eclipse, 52.0, 5.0, before);
        EXPECT_EQ(r.az, 123.0);
        EXPECT_EQ(r.above_horizon, index == SOURCE_GPREDICT ? 0u : 1u);
        EXPECT_EQ(r.az_tracking_enable + r.el_tracking_enable, 0);
        EXPECT_TRUE(r.ra == 0.0 && r.distance == 0.0 && r.set == 0.0 && r.rst_status == 0) << index;
    }
}

// libnova reuses its last nutation within 0.1 day. A row must come out the
// same, to the last bit, whatever was computed before it.
TEST_F(Source, ResultsDoNotDependOnCallHistory)
{
    struct tm later = astro_test_utc(2024, 4, 8, 19, 30, 0);
    settings.User_RA = 3.0;
    for (int index : {0, 1, 3, 5})
    {
        SourceRecord fresh = calculate(index, SOURCE_MASK_ALL, later);
        calculate(index, SOURCE_MASK_ALL);
        SourceRecord after = calculate(index, SOURCE_MASK_ALL, later);
        EXPECT_EQ(fresh.above_horizon, after.above_horizon);
        for (int i = 0; i < 17; i++)
        {
            EXPECT_EQ(memcmp(figures(fresh)[i], figures(after)[i], sizeof(double)), 0) << index << " figure " << i;
        }
    }
}

// With refraction on, every sky source stands higher by the refraction of the
// station's air (here the standard atmosphere 200 m up), its azimuth
// unchanged; the directions the user or a remote program gave are taken as
// they are. The Moon at 52 N, 5 E at the eclipse's end is 0.3 degree below the
// horizon and refraction brings it up, with its Doppler.
TEST_F(Source, RefractionRaisesTheSkySources)
{
    settings.StationHeight = 200.0;
    settings.User_RA = 1.0;
    settings.User_Elevation = 10.0;
    double mb, celsius;
    refraction_station_air(200.0, &mb, &celsius);
    for (int index : {0, 1, 2, 3, 6, 13, (int)SOURCE_GPREDICT})
    {
        SCOPED_TRACE(index);
        SourceRecord before = marked();
        before.el = 10.0;
        settings.Refraction = 0;
        SourceRecord geometric = calculate(index, SOURCE_MASK_POSITION, eclipse, 52.0, 5.0, before);
        settings.Refraction = 1;
        SourceRecord apparent = calculate(index, SOURCE_MASK_POSITION, eclipse, 52.0, 5.0, before);
        bool sky = index != SOURCE_USER_AZEL && index != SOURCE_GPREDICT;
        double lift = sky ? refraction_degrees(geometric.el, mb, celsius) : 0.0;
        EXPECT_DOUBLE_EQ(apparent.el, geometric.el + lift);
        EXPECT_EQ(apparent.az, geometric.az);
        if (index == SOURCE_MOON)
        {
            EXPECT_TRUE(geometric.el < 0.0 && geometric.doppler_hz == 0.0);
            EXPECT_TRUE(apparent.above_horizon == 1u && apparent.doppler_hz != 0.0);
        }
    }
}

// With precession on, a radio source meets the horizon where it stands on
// the sky of the date (libnova's own precession, an independent rendering of
// the same theory), 0.2 degree from its J2000 place by 2024; the row still
// shows the position as given.
TEST_F(Source, PrecessionMovesRadioSourcesToTheDate)
{
    double jd = source_julian_day(&eclipse);
    struct ln_equ_posn j2000 = {15.0 * (23.0 + 23.0 / 60.0 + 26.0 / 3600.0), 58.8}, of_date;
    ln_get_equ_prec(&j2000, jd, &of_date);
    struct ln_lnlat_posn observer = {5.0, 52.0};
    struct ln_hrz_posn want;
    ln_get_hrz_from_equ(&of_date, &observer, jd, &want);

    SourceRecord given = calculate(13, SOURCE_MASK_ALL);
    settings.Precession = 1;
    SourceRecord r = calculate(13, SOURCE_MASK_ALL);
    EXPECT_NEAR(r.el, want.alt, 1e-4);
    EXPECT_NEAR(wrap180(r.az - want.az - 180.0), 0.0, 1e-4);
    EXPECT_GT(hypot(r.el - given.el, (r.az - given.az) * cos(r.el / RAD)), 0.15);
    EXPECT_TRUE(r.ra == given.ra && r.dec == given.dec && r.sub_lng == given.sub_lng);
}
