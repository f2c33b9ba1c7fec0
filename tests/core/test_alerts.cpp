// The alerts: each trigger and action, firing once per arming, the output
// line alerts that repeat, the latches shared between alerts, the section's
// load rules, and the Park and Track actions on the simulated mount.
#include "bus/alerts.h"
#include "bus/weather.h"
#include "core/drive.h"
#include "core/settings.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

class AlertsTest : public ::testing::Test
{
  protected:
    SourceRecord *row;

    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        settings.TrackingSource = SOURCE_MOON;
        text_copy(settings.Grid, sizeof settings.Grid, "JO62sm"); // AUTO on the Moon needs a home
        row = &source_table[SOURCE_MOON];
        drive_record_start();
    }
    AlertEntry &arm(int n, int trigger, int action, double threshold = 0)
    {
        AlertEntry &a = alerts[n];
        a.Active = 1;
        a.Triggered = 0;
        a.Trigger = trigger;
        a.Action = action;
        a.Threshold = threshold;
        return a;
    }
    // How many of the next passes show a message.
    int messages(int passes)
    {
        int shown = 0;
        for (int i = 0; i < passes; i++)
        {
            panel_last_status[0] = 0;
            alerts_evaluate(alerts);
            shown += panel_last_status[0] != 0;
        }
        return shown;
    }
};

TEST_F(AlertsTest, EachTriggerFiresOnItsConditionAndAnEqualElevationFiresNeither)
{
    struct
    {
        int trigger;
        uint32_t above;
        double el, threshold;
        int fires;
    } cases[] = {
        {TRIGGER_ABOVE_HORIZON, 1, 5, 0, 1},      {TRIGGER_ABOVE_HORIZON, 0, -5, 0, 0},
        {TRIGGER_BELOW_HORIZON, 0, -5, 0, 1},     {TRIGGER_BELOW_HORIZON, 1, 5, 0, 0},
        {TRIGGER_ABOVE_THRESHOLD, 1, 10.1, 10, 1}, {TRIGGER_ABOVE_THRESHOLD, 1, 10, 10, 0},
        {TRIGGER_BELOW_THRESHOLD, 1, 9.9, 10, 1},  {TRIGGER_BELOW_THRESHOLD, 1, 10, 10, 0},
        {TRIGGER_COUNT, 1, 10, 10, 0}, // an index above 6 never fires
    };
    for (auto c : cases)
    {
        row->above_horizon = c.above;
        row->el = c.el;
        arm(0, c.trigger, ACTION_ALARM, c.threshold);
        EXPECT_EQ(c.fires, messages(1)) << c.trigger << " at " << c.el;
    }
    row->above_horizon = 1;
    arm(0, TRIGGER_ABOVE_HORIZON, ACTION_ALARM);
    text_copy(alerts[0].Name, sizeof alerts[0].Name, "Moonrise");
    alerts_evaluate(alerts);
    EXPECT_STREQ("Moonrise (Trigger: SOURCE ABOVE HORIZON, Action: ALARM)", panel_last_status);
}

TEST_F(AlertsTest, AlarmFiresOncePerArmingWhileOutputLineAlertsRepeatEveryPass)
{
    row->above_horizon = 1;
    arm(0, TRIGGER_ABOVE_HORIZON, ACTION_ALARM);
    EXPECT_EQ(1, messages(10)); // at the first pass, as the source is already up
    // A new threshold does not re-arm; the dialog's switch, action or trigger do.
    alerts[0].Threshold = 40;
    EXPECT_EQ(0, messages(3));
    alerts[0].Triggered = 0;
    EXPECT_EQ(1, messages(3));

    alerts[0].Active = 0;
    arm(1, TRIGGER_ABOVE_HORIZON, ACTION_ALRT_1);
    EXPECT_EQ(5, messages(5));
    EXPECT_EQ(0, alerts[1].Triggered);
    row->above_horizon = 0;
    EXPECT_EQ(0, messages(5));
    // A switched-off alert is skipped whatever it would say.
    alerts[1].Active = 0;
    row->above_horizon = 1;
    EXPECT_EQ(0, messages(2));
}

TEST_F(AlertsTest, ALatchFiresTheFirstArmedAlertAndTheNextWaitsForTheNextSetting)
{
    weather.wind_speed_alarm = 1; // latched while no alert asked for it
    alerts_evaluate(alerts);
    EXPECT_EQ(1, weather.wind_speed_alarm);
    arm(0, TRIGGER_WIND_SPEED, ACTION_ALARM);
    arm(1, TRIGGER_WIND_SPEED, ACTION_ALARM);
    alerts_evaluate(alerts);
    EXPECT_EQ(1, alerts[0].Triggered);
    EXPECT_EQ(0, alerts[1].Triggered);
    EXPECT_EQ(0, weather.wind_speed_alarm);
    alerts_evaluate(alerts);
    EXPECT_EQ(0, alerts[1].Triggered);
    weather_show_wind_speed(500, 0); // limit 0: every reading latches
    alerts_evaluate(alerts);
    EXPECT_EQ(1, alerts[1].Triggered);

    // The direction and thermometer latches in the same way.
    arm(2, TRIGGER_WIND_DIRECTION, ACTION_ALARM);
    arm(3, TRIGGER_THERMOMETER, ACTION_ALARM);
    weather.wind_direction_alarm = weather.thermometer_alarm = 1;
    EXPECT_EQ(1, messages(1));
    EXPECT_EQ(1, alerts[2].Triggered + alerts[3].Triggered - 1);
    EXPECT_EQ(0, weather.wind_direction_alarm + weather.thermometer_alarm);
}

TEST_F(AlertsTest, ParkAndTrackGoThroughThePanelsPathsAndAnotherSourceIsWatchedAtOnce)
{
    row->above_horizon = 1;
    auto_tracking = 1;
    arm(0, TRIGGER_ABOVE_HORIZON, ACTION_PARK);
    alerts_evaluate(alerts);
    EXPECT_EQ(1, park_active);
    EXPECT_EQ(0, auto_tracking);
    EXPECT_EQ(STYLE_DARKRED, panel_last_style[PANEL_PARK]);

    // Track from PARK: PARK ends and AUTO runs; a running AUTO is left running.
    alerts[0].Active = 0;
    arm(1, TRIGGER_BELOW_HORIZON, ACTION_TRACK);
    alerts_evaluate(alerts);
    EXPECT_EQ(0, alerts[1].Triggered); // the Moon is up
    settings.TrackingSource = SOURCE_SUN;
    source_table[SOURCE_SUN].above_horizon = 0;
    alerts_evaluate(alerts);
    EXPECT_EQ(1, alerts[1].Triggered);
    EXPECT_EQ(0, park_active);
    EXPECT_EQ(1, auto_tracking);
    EXPECT_EQ(STYLE_DARKGREEN, panel_last_style[PANEL_AUTO]);
    alerts[1].Triggered = 0;
    alerts_evaluate(alerts);
    EXPECT_EQ(1, auto_tracking);
}

TEST_F(AlertsTest, LoadSwitchesOffAlertsThatMoveTheAntennaAndArmsAll)
{
    for (int n = 0; n < ALERT_COUNT; n++)
    {
        arm(n, n, n); // actions Alarm, Park, Track, ALRT-0, ALRT-1, ADDR-0
        alerts[n].Triggered = 1;
    }
    text_copy(alerts[4].Name, sizeof alerts[4].Name, "Gate, east");
    alerts[2].Threshold = 12.5;
    alerts_save("Morvane.ini", alerts);
    std::string file = test_read_file(std::string(settings_directory()) + "Morvane.ini");
    EXPECT_NE(std::string::npos, file.find("Alert2Active=true")); // saved as on ...
    EXPECT_NE(std::string::npos, file.find("Alert1Name=Alert-1"));
    alerts_reset();
    alerts_load("Morvane.ini", alerts);
    const uint8_t active[ALERT_COUNT] = {1, 0, 0, 1, 1, 1}; // ... and comes back off
    for (int n = 0; n < ALERT_COUNT; n++)
    {
        EXPECT_EQ(active[n], alerts[n].Active) << n;
        EXPECT_EQ(0, alerts[n].Triggered);
        EXPECT_EQ(n, alerts[n].Action);
        EXPECT_EQ(n, alerts[n].Trigger);
    }
    EXPECT_STREQ("Gate, east", alerts[4].Name);
    EXPECT_DOUBLE_EQ(12.5, alerts[2].Threshold);

    // A fresh file: the default names, all off.
    test_clear_settings();
    alerts_load("Morvane.ini", alerts);
    EXPECT_STREQ("Alert-6", alerts[5].Name);
    EXPECT_EQ(0, alerts[5].Active);
    EXPECT_EQ(-1, alert_output_address);
}

// The wind alarm's Park on the simulated mount: the antenna gets there.
TEST(AlertsOnTheMount, AWindAlarmWithParkParksTheMountAndTrackTakesItBack)
{
    test_reset_state();
    test_clear_settings();
    drive_test_settings();
    DriveSim sim;
    drive_sim_start(&sim);
    // Parked below the upper elevation limit, so AUTO may move the axis again.
    settings.Park_Elevation = 80;
    settings.TrackingSource = SOURCE_USER_AZEL;
    SourceRecord &row = source_table[SOURCE_USER_AZEL];
    row.above_horizon = 1;
    row.az_tracking_enable = row.el_tracking_enable = 1;
    row.az = source_az = 100;
    row.el = source_el = 30;
    sim.station.mount.az = 100;
    sim.station.mount.el = 30;
    drive_auto_pressed();

    weather.WindSpeedAlarmHigh = 60;
    AlertEntry &a = alerts[0];
    a.Active = 1;
    a.Trigger = TRIGGER_WIND_SPEED;
    a.Action = ACTION_PARK;
    AlertEntry &b = alerts[1];
    b.Active = 1;
    b.Trigger = TRIGGER_ABOVE_THRESHOLD;
    b.Threshold = 10;
    b.Action = ACTION_TRACK;
    b.Triggered = 1; // armed only after the gale
    weather_show_wind_speed(700, 0);
    // The park ends by itself once both axes are there.
    for (int tick = 0; tick < 2400 && (tick == 0 || park_active); tick++)
    {
        if (tick % 11 == 0)
        {
            alerts_evaluate(alerts);
        }
        drive_sim_tick(&sim);
    }
    EXPECT_NEAR(180, sim.station.mount.az, 1);
    EXPECT_NEAR(80, sim.station.mount.el, 1);
    EXPECT_EQ(0, auto_tracking);

    // Track while the wind alarm parks again: AUTO takes over in mid-move,
    // and the axes turn back to the source instead of running on.
    a.Triggered = 0;
    weather_show_wind_speed(700, 0);
    sim.station.mount.az = 100;
    sim.station.mount.el = 30;
    for (int tick = 0; tick < 2400 && (tick <= 200 || std::fabs(sim.station.mount.el - 30) > 0.5 ||
                                        sim.station.mount.el_rate != 0);
         tick++)
    {
        if (tick % 11 == 0)
        {
            alerts_evaluate(alerts);
        }
        if (tick == 200)
        {
            b.Triggered = 0; // armed while PARK moves the mount up
            EXPECT_EQ(1, park_active);
            EXPECT_GT(sim.station.mount.el, 35);
        }
        drive_sim_tick(&sim);
    }
    EXPECT_EQ(1, auto_tracking);
    EXPECT_NEAR(30, sim.station.mount.el, 0.5);
    EXPECT_NEAR(100, sim.station.mount.az, 0.5);
    drive_sim_stop();
}
