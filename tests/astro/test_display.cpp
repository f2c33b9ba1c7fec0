#include "core/display.h"

#include "astro/source.h"
#include "astro_test_time.h"
#include "core/clock.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace
{

// The display group as the cycle runs it: the clock frozen, the station set,
// the first-tick refresh already behind us unless a test asks for it.
class DisplayGroup : public testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        settings.Latitude = 25.29;
        settings.Longitude = -104.13;
        settings.Frequency = 1296.0;
        refresh_now = 0;
    }

    void run_at(int hour, int minute, int second, int source, int last = -1)
    {
        last_tracking_source = last < 0 ? source : last;
        clock_freeze(astro_test_time(2024, 4, 8, hour, minute, second));
        settings.TrackingSource = source;
        display_group(source, 0);
    }

    static std::string text(int control)
    {
        return panel_last_text[control];
    }
};

} // namespace

TEST_F(DisplayGroup, PositionTicksKeepFiguresOutsideTheMask)
{
    source_table[SOURCE_SUN].distance = 42.0;
    source_table[SOURCE_SUN].rise = 7.0;
    source_table[SOURCE_SUN].phase = 0.25;
    run_at(18, 17, 30, SOURCE_SUN);
    const SourceRecord &sun = source_table[SOURCE_SUN];
    EXPECT_TRUE(sun.distance == 42.0 && sun.rise == 7.0 && sun.phase == 0.25);
    EXPECT_GT(sun.el, 69.0);                                                    // the position itself is refreshed
    EXPECT_EQ(text(PANEL_AU) + text(PANEL_RISE_TIME) + text(PANEL_SOURCE), ""); // redrawn on a full refresh only
}

// A change of source: mask 15, every figure, and the panel redrawn.
TEST_F(DisplayGroup, SourceChangeRecomputesEverythingAtTheNextGroup)
{
    source_table[SOURCE_SUN].distance = 42.0;
    run_at(18, 17, 30, SOURCE_SUN, SOURCE_MOON);
    EXPECT_EQ(last_tracking_source, SOURCE_SUN);
    EXPECT_NEAR(source_table[SOURCE_SUN].distance, 1.0015, 0.0005);
    EXPECT_EQ(source_table[SOURCE_SUN].phase, 1.0);
    EXPECT_EQ(text(PANEL_SOURCE), "SUN");
    EXPECT_EQ(text(PANEL_AU), " 1.001507 AU");
    // Sunrise at Nazas on eclipse day, 12:39 UT (libnova).
    EXPECT_EQ(text(PANEL_RISE_TIME), "Rise: 04-08 12:39");
    EXPECT_EQ(text(PANEL_SET_TIME).substr(0, 11), "Set: 04-09 ");
    // The source buttons and the needle follow the row.
    EXPECT_TRUE(source_az == source_table[SOURCE_SUN].az && source_el == source_table[SOURCE_SUN].el);
    EXPECT_EQ(panel_dial_repaints[DIAL_AZIMUTH], 1);
}

// At second 0 distance and rise and set come along; the Moon's distance is
// shown in kilometres at every tick.
TEST_F(DisplayGroup, MinuteTickAndTheMoonsDistance)
{
    run_at(18, 17, 16, SOURCE_MOON);
    EXPECT_EQ(text(PANEL_AU), "359786 km");
    EXPECT_EQ(text(PANEL_RISE_TIME), "");
    run_at(18, 18, 0, SOURCE_MOON);
    EXPECT_EQ(text(PANEL_RISE_TIME).substr(0, 12), "Rise: 04-08 ");
    char lha[16];
    snprintf(lha, sizeof lha, "%5.2f", source_table[SOURCE_MOON].hour_angle);
    EXPECT_EQ(text(PANEL_LHA), lha);
}

// The DX station in Tokyo, where it is three in the morning and the new Moon
// is down: its shift is 0 and the mutual figure is half of ours.
TEST_F(DisplayGroup, DopplerLabelsForHomeDxAndMutual)
{
    doppler_mode = 3;
    home_station_valid = 1;
    dx_station_valid = 1;
    dx_latitude = 35.7;
    dx_longitude = 139.7;
    run_at(18, 17, 16, SOURCE_MOON);
    EXPECT_TRUE(dx_source_record.computed && !dx_source_record.above_horizon);
    EXPECT_EQ(text(PANEL_HOME_DOPPLER), "    449 Hz");
    EXPECT_EQ(text(PANEL_DX_DOPPLER), "      0 Hz");
    EXPECT_EQ(text(PANEL_MUTUAL_DOPPLER), "    224 Hz");
}

TEST_F(DisplayGroup, DopplerLabelsBlankForUnknownStationsAndUntouchedWhenOff)
{
    doppler_mode = 1;
    run_at(18, 17, 16, SOURCE_MOON);
    EXPECT_EQ(text(PANEL_HOME_DOPPLER) + text(PANEL_DX_DOPPLER), "  ");
    EXPECT_EQ(dx_source_record.computed, 0u);

    panel_record_start();
    doppler_mode = 0;
    home_station_valid = 1;
    run_at(18, 17, 30, SOURCE_MOON);
    EXPECT_EQ(text(PANEL_HOME_DOPPLER), "");
}

// A TrackingSource from a hand-edited file that names no row must not write
// outside the table.
TEST_F(DisplayGroup, SourceOutsideTheTableIsHarmless)
{
    run_at(18, 17, 30, 40);
    EXPECT_EQ(text(PANEL_SOURCE_AZIMUTH), "   0.00");
    EXPECT_EQ(last_tracking_source, 40);
}
