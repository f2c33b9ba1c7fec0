// The drive's primitives and mode buttons: which frames go out in which
// order, what the panel shows, and what the sleeps cost.
#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "drive_recorder.h"
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

TEST_F(DriveOutputs, StartSetsDutyBeforeRelayAndStopCutsRelayFirst)
{
    set_az_duty_cycle(60);
    sent();
    az_right(1);
    EXPECT_EQ(sent(), "pwm(1,4,60) relay(1,4,1)");
    EXPECT_EQ(az_direction, DIR_RIGHT);
    EXPECT_EQ(az_drive_on, 1);
    EXPECT_EQ(az_pwm_port_state, 3);
    EXPECT_EQ(az_pwm_active, 1);
    EXPECT_EQ(panel_last_style[PANEL_RIGHT], STYLE_DARKRED);

    az_right(0);
    EXPECT_EQ(sent(), "relay(1,4,0) pwm(1,4,0)");
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(az_pwm_port_state, 1);
    EXPECT_EQ(az_pwm_active, 0);
    EXPECT_EQ(panel_last_style[PANEL_RIGHT], STYLE_GRAY);
    EXPECT_TRUE(drive_record.sleeps.empty());
}

TEST_F(DriveOutputs, EachDirectionUsesItsAxisAddressAndPort)
{
    set_az_duty_cycle(30);
    set_el_duty_cycle(40);
    sent();
    az_left(1);
    EXPECT_EQ(sent(), "pwm(1,3,30) relay(1,3,1)");
    el_up(1);
    EXPECT_EQ(sent(), "pwm(2,1,40) relay(2,1,1)");
    el_up(0);
    el_down(1);
    EXPECT_EQ(sent(), "relay(2,1,0) pwm(2,1,0) pwm(2,2,40) relay(2,2,1)");
    EXPECT_EQ(el_direction, DIR_DOWN);
    EXPECT_EQ(panel_last_style[PANEL_DOWN], STYLE_DARKRED);
    EXPECT_EQ(panel_last_style[PANEL_UP], STYLE_GRAY);
}

TEST_F(DriveOutputs, RelayOnlyAxisSendsNoPwmFromTheMotionPrimitives)
{
    settings.AzimuthPwmActive = 0;
    az_left(1);
    az_left(0);
    EXPECT_EQ(sent(), "relay(1,3,1) relay(1,3,0)");
}

TEST_F(DriveOutputs, BrakeIsReleasedBeforeAndSetAfterTheMotorRunsDown)
{
    settings.az_brake_enabled = 1;
    settings.AzimuthPwmActive = 0;
    settings.az_brake_delay = 1500;
    az_left(1);
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({100}));
    EXPECT_EQ(sent(), "relay(1,3,1)");
    az_left(0);
    EXPECT_EQ(sent(), "relay(1,3,0)");
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({100, 1500}));

    // An axis at rest has nothing to brake: no delay.
    az_right(0);
    EXPECT_EQ(drive_record.sleeps.size(), 2u);
    EXPECT_EQ(sent(), "");
}

TEST_F(DriveOutputs, ElevationBrakeUsesItsOwnDelay)
{
    settings.el_brake_enabled = 1;
    settings.el_brake_delay = 700;
    settings.az_brake_delay = 3000;
    el_down(1);
    el_down(0);
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({100, 700}));
}

TEST_F(DriveOutputs, SecondDirectionOffSendsNothingOnceTheAxisIsOff)
{
    az_left(1);
    sent();
    az_left(0);
    az_right(0);
    EXPECT_EQ(sent(), "relay(1,3,0) pwm(1,3,0) pwm(1,4,0)");
}

TEST_F(DriveOutputs, StartInTheRunningDirectionChangesNothingButANewDutyStillArrives)
{
    set_az_duty_cycle(25);
    az_left(1);
    sent();
    az_left(1);
    EXPECT_EQ(sent(), "");
    set_az_duty_cycle(100);
    EXPECT_EQ(sent(), "pwm(1,3,100)");
}

TEST_F(DriveOutputs, DutySetterSendsOnlyAChangeOfTheWholeNumber)
{
    set_az_duty_cycle(24.9);
    EXPECT_EQ(az_duty, 24);
    EXPECT_EQ(sent(), "pwm(1,3,0) pwm(1,4,0)") << "an axis at rest records the duty and sends two zeros";
    set_az_duty_cycle(24.0);
    set_az_duty_cycle(24.99);
    EXPECT_EQ(sent(), "");
    az_right(1);
    sent();
    set_az_duty_cycle(50.5);
    EXPECT_EQ(sent(), "pwm(1,4,50)");
    set_el_duty_cycle(10);
    el_up(1);
    sent();
    set_el_duty_cycle(20);
    EXPECT_EQ(sent(), "pwm(2,1,20)");
}

TEST_F(DriveOutputs, AllOffGoesElevationFirstWhateverTheFlagsSay)
{
    all_relays_off();
    EXPECT_EQ(sent(), "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0)");
    az_left(1);
    el_up(1);
    sent();
    all_pwm_off();
    EXPECT_EQ(sent(), "pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0)");
    EXPECT_EQ(az_pwm_port_state, 1);
    EXPECT_EQ(el_pwm_port_state, 1);
    EXPECT_EQ(az_pwm_active, 0);
    EXPECT_EQ(el_pwm_active, 0);
    all_relays_off();
    EXPECT_EQ(az_drive_on, 0);
    EXPECT_EQ(el_drive_on, 0);
}

TEST_F(DriveOutputs, AxisWithoutAnAddressSendsNothingForThatAxis)
{
    settings.AZ_Addr = -1;
    az_right(1);
    EXPECT_EQ(az_drive_on, 1) << "the flags still follow the commands";
    set_az_duty_cycle(70);
    all_relays_off();
    all_pwm_off();
    el_up(1);
    EXPECT_EQ(sent(), "relay(2,1,0) relay(2,2,0) pwm(2,1,0) pwm(2,2,0) pwm(2,1,0) relay(2,1,1)");
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
    EXPECT_EQ(sent(), "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0) "
                      "pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0) "
                      "pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0)");
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(park_active, 0);
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(el_direction, DIR_STOPPED);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_DARKRED);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    EXPECT_EQ(panel_last_style[PANEL_PARK], STYLE_GRAY);
    EXPECT_EQ(panel_last_style[PANEL_RIGHT], STYLE_GRAY);
    stop_all(0);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
    EXPECT_EQ(sent(), "");
}

TEST_F(DriveModes, StopAllOnRelayOnlyAxesSendsNoPwm)
{
    settings.AzimuthPwmActive = settings.ElevationPwmActive = 0;
    stop_all(1);
    EXPECT_EQ(sent(), "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0)");
}

TEST_F(DriveModes, AutoTogglesAndClearsParkAndTheStartErrors)
{
    park_control(1);
    az_start_error = 5;
    el_start_error = -5;
    drive_auto_pressed();
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_EQ(park_active, 0);
    EXPECT_EQ(az_start_error, 0);
    EXPECT_EQ(el_start_error, 0);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_DARKGREEN);
    EXPECT_EQ(panel_last_style[PANEL_PARK], STYLE_GRAY);

    az_left(1);
    drive_auto_pressed();
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(az_drive_on, 0);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
}

TEST_F(DriveModes, ParkTogglesAndItsEndFlashesStopForHalfASecond)
{
    drive_auto_pressed();
    drive_park_pressed();
    EXPECT_EQ(park_active, 1);
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(panel_last_style[PANEL_PARK], STYLE_DARKRED);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);

    drive_park_pressed();
    EXPECT_EQ(park_active, 0);
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({500}));
    EXPECT_EQ(drive_record.stop_style_at_sleep, std::vector<int>({STYLE_DARKRED}));
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
    EXPECT_EQ(panel_last_style[PANEL_PARK], STYLE_GRAY);
}

TEST_F(DriveModes, StopButtonFlashesRedAndEndsAutoAndPark)
{
    drive_auto_pressed();
    drive_stop_pressed();
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(drive_record.stop_style_at_sleep, std::vector<int>({STYLE_DARKRED}));
    EXPECT_EQ(drive_record.sleeps, std::vector<int>({500}));
    EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
}

TEST_F(DriveModes, ManualToggleStopsTheAxisAndRedrawsItsButton)
{
    az_right(1);
    drive_az_manual_pressed();
    EXPECT_EQ(az_manual, 1);
    EXPECT_EQ(az_drive_on, 0);
    EXPECT_STREQ(panel_last_text[PANEL_AZ_MANUAL], "MAN");
    EXPECT_EQ(panel_last_visible[PANEL_AZ_CALIBRATE], 1);
    drive_el_manual_pressed();
    drive_el_manual_pressed();
    EXPECT_EQ(el_manual, 0);
    EXPECT_STREQ(panel_last_text[PANEL_EL_MANUAL], "AUTO");
    drive_az_manual_pressed();
    EXPECT_EQ(az_manual, 0);
}

class DriveJog : public DriveOutputs
{
};

TEST_F(DriveJog, ArrowsDoNothingOutsideManual)
{
    drive_left_pressed();
    drive_up_pressed();
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(az_direction, DIR_STOPPED);
}

TEST_F(DriveJog, FirstPressStartsAtManualDutyAndSecondPressStops)
{
    az_manual = 1;
    drive_left_pressed();
    EXPECT_EQ(az_speed_mode, SPEED_MANUAL);
    EXPECT_EQ(az_duty, 50);
    EXPECT_EQ(sent(), "pwm(1,3,0) pwm(1,4,0) pwm(1,3,50) relay(1,3,1)");
    drive_left_pressed();
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(sent(), "relay(1,3,0) pwm(1,3,0)");
}

TEST_F(DriveJog, OppositeArrowReversesAfterTheWholeSecondsOfTheGuard)
{
    struct
    {
        double guard;
        int sleep_ms;
    } rows[] = {{2.5, 2000}, {0.5, 0}, {2.0, 2000}, {9.0, 9000}};
    for (auto row : rows)
    {
        test_reset_state();
        drive_test_settings();
        drive_record_start();
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
