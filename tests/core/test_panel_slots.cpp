// The panel's buttons without a window: CAL, the User Az/El keypad, the
// paused-dialog discipline and a new tracking source.
#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/panel_slots.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/panel_record.h"
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

    el_position = 30;
    settings.Elevation_Offset = -1;
    panel_el_calibrate_pressed();
    EXPECT_DOUBLE_EQ(settings.Elevation_Offset, 4);
    EXPECT_EQ(settings.Azimuth_Offset, 52) << "each CAL touches its own axis";
}

TEST_F(PanelSlots, SourceButtonsEditTheUserTargetOnlyForUserAzEl)
{
    const char *answers[] = {"123.4", "-2.5", nullptr, "9999999999", "12345678901"};
    enter_set_answers(answers, 5);
    settings.TrackingSource = SOURCE_MOON;
    settings.User_Azimuth = 10.004;
    panel_az_source_pressed();
    EXPECT_EQ(enter_call_count, 0);
    settings.TrackingSource = SOURCE_USER_AZEL;
    panel_az_source_pressed();
    EXPECT_STREQ(enter_last_text, "  10.00");
    EXPECT_DOUBLE_EQ(source_table[SOURCE_USER_AZEL].az, 123.4);
    EXPECT_DOUBLE_EQ(settings.User_Azimuth, source_az);
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 123.40");
    // No range check: a negative elevation is taken as typed.
    panel_el_source_pressed();
    EXPECT_DOUBLE_EQ(source_el, -2.5);
    EXPECT_DOUBLE_EQ(settings.User_Elevation, -2.5);
    // A cancelled keypad keeps the shown value, rounded as shown.
    settings.User_Azimuth = 45.678;
    panel_az_source_pressed();
    EXPECT_DOUBLE_EQ(source_az, 45.68);
    // Ten digits fill the keypad's limit and end there; an eleventh is cut.
    panel_az_source_pressed();
    EXPECT_DOUBLE_EQ(source_az, 9999999999.0);
    panel_el_source_pressed();
    EXPECT_DOUBLE_EQ(source_el, 1234567890.0);
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
    EXPECT_EQ(bus_calls_text(drive_record.calls).substr(0, 12), "relay(2,1,0)") << "every output off comes first";
    panel_pause_end();
    EXPECT_EQ(source_changed + az_changed + el_changed, 3);
    EXPECT_EQ(auto_tracking, 0);
}

TEST_F(PanelSlots, RemoteSourceStopsTheAntennaOtherSourcesLeaveItAlone)
{
    for (int source : {SOURCE_MOON, SOURCE_EASYCOMM, SOURCE_GPREDICT, SOURCE_PSTROTATOR})
    {
        SetUp();
        drive_auto_pressed();
        settings.TrackingSource = source;
        panel_setup_tracking_source();
        int remote = source != SOURCE_MOON;
        EXPECT_EQ(auto_tracking, !remote) << source;
        EXPECT_EQ(panel_last_style[PANEL_AUTO], remote ? STYLE_GRAY : STYLE_DARKGREEN) << source;
        EXPECT_EQ(drive_record.sleeps, remote ? std::vector<int>({500}) : std::vector<int>()) << "STOP's flash";
    }
}
