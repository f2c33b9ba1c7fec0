// The drive's primitives and mode buttons: which frames go out in which
// order, what the panel shows, and what the sleeps cost.
#include "core/drive.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

class DriveOutputs : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        drive_test_settings();
        drive_record_start();
    }
    std::string sent()
    {
        std::string text = bus_calls_text(drive_record.calls);
        drive_record.calls.clear();
        return text;
    }
};

// Each row runs its commands on a fresh station and reads the frames and
// sleeps they produced.
struct FrameRow
{
    const char *why;
    void (*commands)(void);
    const char *frames;
    std::vector<int> sleeps;
};

static const FrameRow frame_rows[] = {
    {"a start sets the duty before the relay, a stop cuts the relay first",
     [] { set_az_duty_cycle(60), az_right(1), az_right(0); },
     "pwm(1,3,0) pwm(1,4,0) pwm(1,4,60) relay(1,4,1) relay(1,4,0) pwm(1,4,0)",
     {}},
    {"each direction uses its axis address and port",
     [] { set_az_duty_cycle(30), set_el_duty_cycle(40), az_left(1), el_up(1), el_up(0), el_down(1); },
     "pwm(1,3,0) pwm(1,4,0) pwm(2,1,0) pwm(2,2,0) pwm(1,3,30) relay(1,3,1) pwm(2,1,40) relay(2,1,1) "
     "relay(2,1,0) pwm(2,1,0) pwm(2,2,40) relay(2,2,1)",
     {}},
    {"a relay-only axis sends no PWM",
     [] { settings.AzimuthPwmActive = 0, az_left(1), az_left(0); },
     "relay(1,3,1) relay(1,3,0)",
     {}},
    {"the brake is released before a start and set after the run-down; an axis at rest has nothing to brake",
     []
     {
         settings.az_brake_enabled = 1, settings.AzimuthPwmActive = 0, settings.az_brake_delay = 1500;
         az_left(1), az_left(0), az_right(0);
     },
     "relay(1,3,1) relay(1,3,0)",
     {100, 1500}},
    {"the elevation brake uses its own delay",
     []
     {
         settings.el_brake_enabled = 1, settings.ElevationPwmActive = 0, settings.el_brake_delay = 700;
         settings.az_brake_delay = 3000, el_down(1), el_down(0);
     },
     "relay(2,2,1) relay(2,2,0)",
     {100, 700}},
    {"the second direction off sends only its zero duty",
     [] { az_left(1), drive_record_clear(), az_left(0), az_right(0); },
     "relay(1,3,0) pwm(1,3,0) pwm(1,4,0)",
     {}},
    {"a start in the running direction sends nothing, a new duty still arrives",
     [] { set_az_duty_cycle(25), az_left(1), drive_record_clear(), az_left(1), set_az_duty_cycle(100); },
     "pwm(1,3,100)",
     {}},
    {"the duty setter sends only a change of the whole number",
     [] {
         set_az_duty_cycle(24.9), set_az_duty_cycle(24.0), set_az_duty_cycle(24.99), az_right(1),
             set_az_duty_cycle(50.5);
     },
     "pwm(1,3,0) pwm(1,4,0) pwm(1,4,24) relay(1,4,1) pwm(1,4,50)",
     {}},
    {"all off goes elevation first",
     [] { all_relays_off(), all_pwm_off(); },
     "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0) pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0)",
     {}},
    {"an axis without an address sends nothing for that axis",
     [] { settings.AZ_Addr = -1, az_right(1), set_az_duty_cycle(70), all_relays_off(), all_pwm_off(), el_up(1); },
     "relay(2,1,0) relay(2,2,0) pwm(2,1,0) pwm(2,2,0) pwm(2,1,0) relay(2,1,1)",
     {}},
    {"the first jog press starts at the manual duty, the second stops",
     [] { az_manual = 1, drive_left_pressed(), drive_left_pressed(); },
     "pwm(1,3,0) pwm(1,4,0) pwm(1,3,50) relay(1,3,1) relay(1,3,0) pwm(1,3,0)",
     {}},
    {"arrows do nothing outside manual", [] { drive_left_pressed(), drive_up_pressed(); }, "", {}},
};

TEST_F(DriveOutputs, FramesAndSleepsInOrder)
{
    for (const FrameRow &row : frame_rows)
    {
        SetUp();
        row.commands();
        EXPECT_EQ(sent(), row.frames) << row.why;
        EXPECT_EQ(drive_record.sleeps, row.sleeps) << row.why;
    }
}

class DriveModes : public DriveOutputs
{
};

TEST_F(DriveModes, StopAllSwitchesEverythingOffAndClearsTheModes)
{
    auto_tracking = 1;
    az_right(1);
    el_up(1);
    sent();
    stop_all(1);
    EXPECT_EQ(sent(), "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0) pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0) "
                      "pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0)");
    EXPECT_EQ(auto_tracking + park_active + az_drive_on + el_drive_on, 0);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_DARKRED);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    stop_all(0);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
    EXPECT_EQ(sent(), "");
}

TEST_F(DriveModes, AutoParkAndStopToggleEachOther)
{
    park_control(1);
    az_start_error = 5;
    el_start_error = -5;
    drive_auto_pressed();
    EXPECT_EQ(auto_tracking * 10 + park_active, 10);
    EXPECT_EQ(az_start_error + el_start_error, 0) << "AUTO clears both start errors";
    EXPECT_EQ(panel_last_style[PANEL_PARK], STYLE_GRAY);
    az_left(1);
    drive_auto_pressed();
    EXPECT_EQ(auto_tracking + az_drive_on, 0) << "a second AUTO stops the motors";
    drive_auto_pressed();
    drive_park_pressed();
    EXPECT_EQ(auto_tracking * 10 + park_active, 1);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    // PARK's second press and STOP both end with STOP red for half a second.
    drive_record_clear();
    drive_park_pressed();
    drive_auto_pressed();
    drive_stop_pressed();
    EXPECT_EQ(auto_tracking + park_active, 0);
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({500, 500}));
    EXPECT_EQ(drive_record.stop_style_at_sleep, std::vector<int>({STYLE_DARKRED, STYLE_DARKRED}));
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
}

// Every source worked out for the home station waits for one; the sources
// that bring their own direction do not.
struct HomeRow
{
    int source;
    int want_auto;
    const char *why;
};

static const HomeRow home_rows[] = {
    {SOURCE_MOON, 0, "the Moon"},
    {SOURCE_SUN, 0, "the Sun"},
    {4, 0, "a planet"},
    {12, 0, "a radio source"},
    {SOURCE_USER_RADEC, 0, "User RA/Dec"},
    {SOURCE_USER_AZEL, 1, "User Az/El is a direction already"},
    {SOURCE_EASYCOMM, 1, "EasyComm"},
    {SOURCE_GPREDICT, 1, "GPredict"},
    {SOURCE_PSTROTATOR, 1, "PstRotator"},
};

TEST_F(DriveModes, AutoWaitsForAHomeStationOnComputedSources)
{
    for (const HomeRow &r : home_rows)
    {
        SCOPED_TRACE(r.why);
        SetUp();
        settings.Grid[0] = 0;
        settings.TrackingSource = r.source;
        drive_auto_pressed();
        EXPECT_EQ(r.want_auto, auto_tracking);
        EXPECT_EQ(r.want_auto ? STYLE_DARKGREEN : STYLE_NONE, panel_last_style[PANEL_AUTO]);
        EXPECT_STREQ(r.want_auto ? "" : "Set the home station first", panel_last_status);
    }
    settings.Grid[0] = 0;
    panel_update_display();
    EXPECT_STREQ("Set home", panel_last_text[PANEL_HOME_STATION]);
}

TEST_F(DriveModes, ManualToggleStopsTheAxisAndRedrawsItsButton)
{
    az_right(1);
    EXPECT_EQ(panel_last_style[PANEL_RIGHT], STYLE_DARKRED);
    drive_az_manual_pressed();
    EXPECT_EQ(panel_last_style[PANEL_RIGHT], STYLE_GRAY) << "the stopped arrow goes gray";
    EXPECT_EQ(az_manual * 10 + az_drive_on, 10);
    EXPECT_STREQ(panel_last_text[PANEL_AZ_MANUAL], "MAN");
    EXPECT_EQ(panel_last_visible[PANEL_AZ_CALIBRATE], 1);
    drive_az_manual_pressed();
    EXPECT_STREQ(panel_last_text[PANEL_AZ_MANUAL], "AUTO");
}

TEST_F(DriveModes, OppositeArrowReversesAfterTheWholeSecondsOfTheGuard)
{
    struct
    {
        double guard;
        int sleep_ms;
    } rows[] = {{2.5, 2000}, {0.5, 0}, {2.0, 2000}, {9.0, 9000}};
    for (auto row : rows)
    {
        SetUp();
        settings.ElevationGuardTime = row.guard;
        el_manual = 1;
        drive_up_pressed();
        sent();
        drive_down_pressed();
        EXPECT_EQ(el_direction, DIR_DOWN) << row.guard;
        EXPECT_EQ(drive_record.slept_ms, row.sleep_ms) << row.guard;
        EXPECT_EQ(sent(), "relay(2,1,0) pwm(2,1,0) pwm(2,2,50) relay(2,2,1)") << row.guard;
    }
}
