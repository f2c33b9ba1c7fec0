#include "astro/sun.h"

#include "astro/angles.h"
#include "astro/day_number.h"
#include "astro_test_time.h"

#include <gtest/gtest.h>

// Worked step by step from the published formulas (Schlyter's Sun), apart
// from this code: Munich, 2025-11-05 09:30:15 UT.
TEST(Sun, MatchesTheWrittenFormulasInDoublePrecision)
{
    double ut = 9.0 + 30.0 / 60.0 + 15.0 / 3600.0;
    SunPosition s;
    sun_position(day_number(2025, 11, 5, ut), ut, 48.1, 11.6, &s);
    EXPECT_NEAR(s.ra, -139.227264920327, 1e-9);
    EXPECT_NEAR(s.dec, -15.8063331049721, 1e-9);
    EXPECT_NEAR(s.az, 157.187748713501, 1e-9);
    EXPECT_NEAR(s.el, 23.2131629162321, 1e-9);
}

// Meeus, Astronomical Algorithms, example 25.a: 1992 October 13.0 TD, apparent
// RA 198.38083, Dec -7.78507. The right ascension is kept in -180..180.
TEST(Sun, AgreesWithMeeusExample25a)
{
    SunPosition s;
    sun_position(day_number(1992, 10, 13, 0.0), 0.0, 0.0, 0.0, &s);
    EXPECT_NEAR(s.ra, 198.38083 - 360.0, 0.02);
    EXPECT_NEAR(s.dec, -7.78507, 0.02);
}

TEST(Sun, RightAscensionStaysWithinTwelveHoursEitherSide)
{
    int negative = 0;
    for (int day = 0; day < 366; day += 3)
    {
        time_t t = astro_test_time(2025, 1, 1, 12, 0, 0) + (time_t)day * 86400;
        struct tm tm;
        gmtime_r(&t, &tm);
        SourceRecord r = {};
        sun_calculate(&tm, 52.0, 5.0, &r);
        double hours = r.ra / 15.0;
        EXPECT_TRUE(hours > -12.0 && hours <= 12.0) << day;
        negative += hours < 0.0;
    }
    EXPECT_GT(negative, 30); // the autumn half of the year runs negative
}

// Near local noon the Sun stands due south at 90 - latitude + declination,
// near midnight as far below the horizon; it has no Doppler and no sky figure.
TEST(Sun, CalculateFillsTheRecordAndClearsTheMoonFigures)
{
    for (int hour : {12, 0})
    {
        struct tm tm = astro_test_utc(2025, 6, 21, hour, 2, 0);
        SourceRecord r = {};
        r.doppler_hz = r.sky_temp = 5.0;
        sun_calculate(&tm, 45.0, 0.0, &r);
        EXPECT_NEAR(r.el, hour ? 90.0 - 45.0 + 23.44 : -(90.0 - 45.0 - 23.44), 0.05);
        EXPECT_NEAR(r.az, hour ? 180.0 : 0.0, hour ? 0.5 : 360.0);
        EXPECT_EQ(r.above_horizon, hour ? 1u : 0u);
        EXPECT_TRUE(r.doppler_hz == 0.0 && r.sky_temp == 0.0) << hour;
    }
}
