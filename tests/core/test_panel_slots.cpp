// The panel's buttons without a window: CAL, the User Az/El keypad, the
// paused-dialog discipline and a new tracking source.
#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/panel_slots.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/test_env.h"
#include "widgets/enter.h"

#include <gtest/gtest.h>

class PanelSlots : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        enter_reset();
        drive_test_settings();
        drive_record_start();
    }
    void TearDown() override
    {
        enter_reset();
    }
};

TEST_F(PanelSlots, CalibrateMakesTheAntennaReadTheSource)
{
    settings.TrackingSource = SOURCE_SUN;
    source_table[SOURCE_SUN].az = 150;
    source_table[SOURCE_SUN].el = 35;
    az_manual = 1;
    az_position = 100;
    settings.Azimuth_Offset = 2;
    az_changed = 0;
    panel_az_calibrate_pressed();
    EXPECT_DOUBLE_EQ(settings.Azimuth_Offset, 52);
    EXPECT_EQ(az_changed, 1);
    // The next read carries the new offset: raw 98 + 52.
    EXPECT_DOUBLE_EQ(98 + settings.Azimuth_Offset, 150);

    el_position = 30;
    settings.Elevation_Offset = -1;
    panel_el_calibrate_pressed();
    EXPECT_DOUBLE_EQ(settings.Elevation_Offset, 4);
    EXPECT_EQ(settings.Azimuth_Offset, 52) << "each CAL touches its own axis";
}

TEST_F(PanelSlots, SourceButtonsEditTheUserTargetOnlyForUserAzEl)
{
    const char *answers[] = {"123.4", "-2.5"};
    enter_set_answers(answers, 2);
    settings.TrackingSource = SOURCE_MOON;
    settings.User_Azimuth = 10;
    panel_az_source_pressed();
    EXPECT_EQ(enter_call_count, 0);
    EXPECT_EQ(settings.User_Azimuth, 10);

    settings.TrackingSource = SOURCE_USER_AZEL;
    panel_az_source_pressed();
    EXPECT_STREQ(enter_last_text, "  10.00");
    EXPECT_EQ(enter_last_max_length, 10);
    EXPECT_DOUBLE_EQ(source_az, 123.4);
    EXPECT_DOUBLE_EQ(settings.User_Azimuth, 123.4);
    EXPECT_DOUBLE_EQ(source_table[SOURCE_USER_AZEL].az, 123.4);
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 123.40");

    // No range check: a negative elevation is taken as typed.
    panel_el_source_pressed();
    EXPECT_DOUBLE_EQ(source_el, -2.5);
    EXPECT_DOUBLE_EQ(settings.User_Elevation, -2.5);
    EXPECT_DOUBLE_EQ(source_table[SOURCE_USER_AZEL].el, -2.5);
}

TEST_F(PanelSlots, CancelledKeypadKeepsTheShownValue)
{
    const char *answers[] = {nullptr};
    enter_set_answers(answers, 1);
    settings.TrackingSource = SOURCE_USER_AZEL;
    settings.User_Azimuth = 45.678;
    panel_az_source_pressed();
    EXPECT_DOUBLE_EQ(settings.User_Azimuth, 45.68);
    EXPECT_DOUBLE_EQ(source_az, 45.68);
}

TEST_F(PanelSlots, PausedDialogHaltsTheDriveAndLeavesAutoOff)
{
    drive_auto_pressed();
    az_right(1);
    el_up(1);
    source_changed = az_changed = el_changed = 0;
    drive_record_clear();
    panel_pause_begin();
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(az_drive_on + el_drive_on, 0);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    ASSERT_FALSE(drive_record.calls.empty());
    EXPECT_EQ(bus_call_text(drive_record.calls.front()), "relay(2,1,0)") << "every output off comes first";
    panel_pause_end();
    EXPECT_EQ(source_changed + az_changed + el_changed, 3);
    EXPECT_EQ(auto_tracking, 0);
}

TEST_F(PanelSlots, RemoteSourceStopsTheAntennaOtherSourcesLeaveItAlone)
{
    drive_auto_pressed();
    settings.TrackingSource = SOURCE_MOON;
    panel_setup_tracking_source();
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_TRUE(drive_record.sleeps.empty());

    for (int source : {SOURCE_EASYCOMM, SOURCE_GPREDICT, SOURCE_PSTROTATOR})
    {
        drive_auto_pressed();
        if (!auto_tracking)
        {
            drive_auto_pressed();
        }
        drive_record_clear();
        settings.TrackingSource = source;
        panel_setup_tracking_source();
        EXPECT_EQ(auto_tracking, 0) << source;
        EXPECT_EQ(park_active, 0) << source;
        EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY) << source;
        EXPECT_EQ(drive_record.sleeps, std::vector<int>({500})) << "PARK's end flashes STOP, row " << source;
    }
}

TEST_F(PanelSlots, AcceptedParametersGiveTheDialsTheirNewLimits)
{
    settings.AzimuthLimitMin = 270;
    settings.AzimuthLimitMax = 90;
    panel_antenna_accepted(0);
    EXPECT_EQ(panel_dial_repaints[DIAL_AZIMUTH], 1);
    EXPECT_EQ(panel_dial_repaints[DIAL_ELEVATION], 1);
    panel_antenna_accepted(2);
    EXPECT_EQ(panel_dial_repaints[DIAL_AZIMUTH], 1) << "a hidden dial is not repainted";
}
