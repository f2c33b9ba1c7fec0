#include "astro/refraction.h"

#include "core/state.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

// The textbook figures at 1010 mb and 10 C, in arc minutes: about 29' for a
// source on the geometric horizon, 5.3' at 10 degrees, 1' at 45, none at the
// zenith. Thinner and warmer air bends less, in proportion.
TEST(Refraction, StandardFiguresAndTheirScaling)
{
    const double rows[][2] = {{0.0, 29.0}, {10.0, 5.3}, {45.0, 1.0}, {90.0, 0.0}};
    for (auto &row : rows)
    {
        EXPECT_NEAR(refraction_degrees(row[0], 1010.0, 10.0) * 60.0, row[1], 0.15) << row[0];
    }
    double base = refraction_degrees(5.0, 1010.0, 10.0);
    EXPECT_DOUBLE_EQ(refraction_degrees(5.0, 505.0, 10.0), base / 2.0);
    EXPECT_GT(refraction_degrees(5.0, 1010.0, -20.0), base);
    // Below the horizon the apparent elevation keeps rising with the geometric one.
    double last = -10.0;
    for (double h = -5.0; h <= 5.0; h += 0.05)
    {
        double apparent = h + refraction_degrees(h, 1013.25, 15.0);
        EXPECT_GT(apparent, last) << h;
        last = apparent;
    }
}

// The station's air comes from the weather station's thermometer and
// barometer when they are polled and believable, else from the standard
// atmosphere at the station's height.
TEST(Refraction, StationAirFromTheWeatherStationOrTheStandardAtmosphere)
{
    struct Row
    {
        int addr;
        bool thermometer, barometer;
        int16_t temperature_raw;
        uint32_t pressure_raw;
        double height, want_mb, want_c;
        const char *why;
    };
    const Row rows[] = {
        {-1, true, true, -105, 950000, 0, 1013.25, 15.0, "no weather station: sea-level standard"},
        {-1, true, true, -105, 950000, 1000, 898.75, 8.5, "standard at 1000 m"},
        {3, true, true, -105, 950000, 1000, 950.0, -10.5, "both sensors read"},
        {3, false, true, -105, 950000, 0, 950.0, 15.0, "thermometer not polled"},
        {3, true, true, -105, 0, 0, 1013.25, -10.5, "barometer not yet answered"},
        {3, true, true, 900, 2000000, 0, 1013.25, 15.0, "readings no station sees"},
    };
    for (const Row &r : rows)
    {
        SCOPED_TRACE(r.why);
        test_reset_state();
        weather.WxStationAddr = r.addr;
        weather.Thermometer = r.thermometer;
        weather.Barometer = r.barometer;
        temperature_raw = r.temperature_raw;
        pressure_raw = r.pressure_raw;
        double mb, c;
        refraction_station_air(r.height, &mb, &c);
        EXPECT_NEAR(mb, r.want_mb, 0.05);
        EXPECT_NEAR(c, r.want_c, 1e-9);
    }
    settings.StationHeight = 0.0;
    EXPECT_EQ(refraction_apparent_elevation(1.0), 1.0) << "off by default";
    settings.Refraction = 1;
    EXPECT_DOUBLE_EQ(refraction_apparent_elevation(1.0), 1.0 + refraction_degrees(1.0, 1013.25, 15.0));
}
