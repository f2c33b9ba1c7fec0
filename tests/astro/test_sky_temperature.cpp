#include "astro/sky_temperature.h"

#include <cmath>
#include <gtest/gtest.h>

// At 144 MHz the scaling is 1, so the figure is the table entry itself.
TEST(SkyTemperature, EntryBoundaries)
{
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 0.0), 231.0);
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 1.5), 231.0);   // entry 179 covers 0 up to 2
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 2.0), 234.0);   // entry 0 starts at 2
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 3.999), 234.0); // no interpolation within a step
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 4.0), 246.0);
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 359.999), 238.0); // entry 178
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 268.0), 3038.0);  // the galactic centre's peak, entry 133
}

// (234 - 2.7) (144 / 1296)^2.6 + 2.7, worked by hand: 3.46409104211992 K.
TEST(SkyTemperature, ScalesWithFrequencyAboveTheCosmicBackground)
{
    EXPECT_NEAR(sky_temperature(1296.0, 2.0), 3.46409104211992, 1e-12);
    EXPECT_GT(sky_temperature(50.0, 2.0), 234.0);
}

TEST(SkyTemperature, NoInputReadsOutsideTheTable)
{
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 360.0), 231.0);
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, -0.5), 238.0);
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, 722.0), 234.0);
    EXPECT_DOUBLE_EQ(sky_temperature(144.0, NAN), 231.0);
}
