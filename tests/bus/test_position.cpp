#include "support/panel_record.h"
#include "support/test_env.h"

#include "bus/position.h"
#include "core/panel_seam.h"
#include "core/position_group.h"
#include "core/state.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(PositionCorrection, OffsetWrapTableAndClampsPerAxis)
{
    struct Row
    {
        int elevation;
        double degrees, offset;
        int row;
        double entry, want;
        const char *why;
    };
    const Row rows[] = {
        {0, 360.0, 0.0, 35, 0.0, 360.0, "a full turn uses the last row and stays at 360"},
        {0, 359.0, 2.0, 0, 0.5, 1.5, "361 wraps to 1 and takes row 0"},
        {0, 5.0, -10.0, 35, 0.25, 355.25, "-5 wraps to 355 and takes row 35"},
        {0, 0.5, 0.0, 0, -1.0, 0.0, "a negative result is clamped to 0"},
        {0, 355.0, 0.0, 35, 7.0, 360.0, "past 360 is clamped to exactly 360"},
        {0, 19.99, 0.0, 1, 0.1, 20.09, "row 1 holds 10 up to but not including 20"},
        {0, 20.0, 0.0, 2, 0.2, 20.2, "20 starts row 2"},
        {0, -400.0, 0.0, 0, 0.0, 0.0, "the wrap is done once only"},
        {0, 1.5e12, 0.0, 35, 0.0, 360.0, "a count of noise far past a turn takes the last row"},
        {1, 45.0, 0.0, 4, 0.5, 45.5, "elevation takes its row"},
        {1, 350.0, 0.0, 9, 0.5, -9.5, "350 takes row 9 and reads -10 plus the entry"},
        {1, 120.0, 0.0, 9, 1.0, 121.0, "from 100 on every value takes row 9"},
        {1, 269.0, 0.0, 9, 0.0, 269.0, "below 270 stays positive"},
        {1, 270.0, 0.0, 9, 0.0, -90.0, "270 becomes -90"},
        {1, 2.0, -5.0, 9, 0.0, -3.0, "offset below zero wraps to 357, then reads -3"},
        {1, 10.0, 0.0, 1, -20.0, -10.0, "a negative elevation is not clamped"},
    };
    for (const Row &row : rows)
    {
        test_reset_state();
        (row.elevation ? settings.Elevation_Offset : settings.Azimuth_Offset) = row.offset;
        (row.elevation ? settings.EL : settings.AZ)[row.row] = row.entry;
        double got = row.elevation ? position_correct_elevation(row.degrees) : position_correct_azimuth(row.degrees);
        EXPECT_NEAR(row.want, got, 1e-9) << row.why;
    }
}

TEST(PositionArithmetic, ZeroResolutionMedianAndFirstUnsmoothedReading)
{
    EXPECT_DOUBLE_EQ(90.0, position_counts_to_degrees(1024, 4096));
    EXPECT_DOUBLE_EQ(180.0, position_counts_to_degrees(18000, 0));
    EXPECT_TRUE(std::isfinite(position_counts_to_degrees(65535, 0)));
    // One failed sample (0) does not move the median of five.
    uint16_t samples[5] = {500, 0, 510, 505, 507};
    EXPECT_DOUBLE_EQ(505 * 0.0048828125, adc_median_volts(samples));
    EXPECT_EQ(510, samples[4]);
    EXPECT_DOUBLE_EQ(2.0, adc_smooth(1000.0, 2.0));
    EXPECT_DOUBLE_EQ(0.4 * 2.0 + 0.6 * 450.0, adc_smooth(450.0, 2.0));
    EXPECT_DOUBLE_EQ(90.0, adc_position(1.0, 0.5, 2.5, 360.0));
    EXPECT_DOUBLE_EQ(0.0, adc_position(1.65, 2.0, 2.0, 360.0));
}

TEST(PositionLimits, WithAndWithoutThroughNorth)
{
    struct Row
    {
        double position, minimum, maximum;
        int want;
    };
    const Row rows[] = {
        {270.0, 270.0, 90.0, 1}, {90.0, 270.0, 90.0, 1}, {180.0, 270.0, 90.0, 1}, {0.0, 270.0, 90.0, 0},
        {300.0, 270.0, 90.0, 0}, {0.0, 0.0, 360.0, 1},   {360.0, 0.0, 360.0, 1},  {180.0, 0.0, 360.0, 0},
        {42.0, 42.0, 42.0, 1},   {10.0, 42.0, 42.0, 1},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(row.want, position_az_limit_hit(row.position, row.minimum, row.maximum))
            << row.position << " in " << row.minimum << ".." << row.maximum;
    }
    EXPECT_EQ(1, position_el_limit_hit(0.0, 0.0, 90.0));
    EXPECT_EQ(0, position_el_limit_hit(0.1, 0.0, 90.0));
}

class PositionWithoutSensors : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        settings.AZ_Addr = settings.EL_Addr = -1;
        settings.AzimuthLimitMax = 360;
        settings.ElevationLimitMax = 90;
    }
};

TEST_F(PositionWithoutSensors, AxesReadOffsetPlusTableAndEqualAnalogueEndsReadZero)
{
    settings.Azimuth_Offset = 12.0;
    settings.AZ[1] = 0.5;
    settings.Elevation_Offset = 3.0;
    EXPECT_EQ(0, ReadPosition());
    EXPECT_DOUBLE_EQ(12.5, az_position);
    EXPECT_DOUBLE_EQ(3.0, el_position);
    EXPECT_STREQ("", panel_last_status);
    settings.ads1115_present = 1;
    settings.ADC_Active[0] = 1;
    settings.ADC_Minimum[0] = settings.ADC_Maximum[0] = 1.0;
    settings.ADC_Range[0] = 360.0;
    adc_volts[0] = 2.0;
    EXPECT_EQ(0, ReadPosition());
    EXPECT_DOUBLE_EQ(12.5, az_position);
}

TEST_F(PositionWithoutSensors, GroupShowsTheLimitMarkOnLabelAndDial)
{
    settings.Elevation_Offset = 45.0;
    PositionLimits limits = position_group(0);
    EXPECT_EQ(0, limits.through_north);
    EXPECT_EQ(1, limits.az_limit_hit);
    EXPECT_EQ(0, limits.el_limit_hit);
    EXPECT_STREQ("   0.00 *", panel_last_text[PANEL_ANTENNA_AZIMUTH]);
    EXPECT_STREQ("  45.00", panel_last_text[PANEL_ANTENNA_ELEVATION]);
    EXPECT_EQ(1, panel_dial_repaints[DIAL_AZIMUTH]);
    position_group(1);
    EXPECT_EQ(1, panel_dial_repaints[DIAL_AZIMUTH]);
    settings.AzimuthLimitMin = 270;
    settings.AzimuthLimitMax = 90;
    EXPECT_EQ(1, position_group(1).through_north);
}
