// The wind stow on the simulated station: a gust profile from the weather
// station's wind sensor parks the mount, a wind that stays above the calm
// level holds it there, and a calm that lasts the set minutes takes it back
// to the source in AUTO. The operator's own buttons end a stow.
#include "bus/sei_commands.h"
#include "bus/weather.h"
#include "bus/wind_stow.h"
#include "core/drive.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

class WindStowTest : public ::testing::Test
{
  protected:
    DriveSim sim;

    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        drive_test_settings();
        drive_sim_start(&sim);
        // Parked below the upper elevation limit, so AUTO may move the axis again.
        settings.Park_Elevation = 80;
        settings.TrackingSource = SOURCE_USER_AZEL;
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = 1;
        row.az_tracking_enable = row.el_tracking_enable = 1;
        row.az = source_az = 120;
        row.el = source_el = 25;
        sim.station.mount.az = 120;
        sim.station.mount.el = 25;
        weather.WxStationAddr = sim.station.weather.address;
        weather.WindSpeed = true;
        weather.WindSpeedAlarmHigh = 60;
        weather.WindStow = 1;
        weather.WindStowResume = 35;
        weather.WindStowResumeMinutes = 10;
    }
    void TearDown() override
    {
        drive_sim_stop();
    }
    // The wind sensor's word as the station sends it, through its frame.
    uint16_t read_wind(void)
    {
        uint8_t frame[4], reply[SIM_REPLY_MAX];
        int delay_ms;
        int length = sei_command_frame(weather.WxStationAddr, SEI_READ_WIND_SPEED, nullptr, 0, frame);
        sim_reply(&sim.station, frame, length, reply, sizeof reply, &delay_ms);
        return sei_get_u16(reply);
    }
    // Simulated seconds of the drive with the wind polled every 150 ms.
    void run_until(double seconds)
    {
        while (sim.ms < (int64_t)(seconds * 1000))
        {
            if (sim.tick % 3 == 0)
            {
                weather_show_wind_speed(read_wind(), 0);
                wind_stow_step(weather_wind_speed_shown, (time_t)(sim.ms / 1000));
            }
            drive_sim_tick(&sim);
        }
    }
    void wind(double kmh)
    {
        sim.station.weather.wind_speed_kmh = kmh;
    }
    int at_park(void)
    {
        return std::fabs(sim.station.mount.az - 180) < 1 && std::fabs(sim.station.mount.el - 80) < 1;
    }
};

TEST_F(WindStowTest, AGustParksTheWindHoldsItAndALastingCalmReturnsToTheSource)
{
    drive_auto_pressed();
    wind(20);
    run_until(30);
    EXPECT_EQ(STOW_IDLE, wind_stow.state);
    wind(75); // the gust
    run_until(31);
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    EXPECT_EQ(1, park_active);
    EXPECT_NE(std::string::npos, std::string(panel_last_status).find("Wind stow: parked"));
    // Gusty but above the calm level: the park holds.
    const double gusts[] = {50, 40, 58, 36, 45};
    for (int i = 0; i < 5; i++)
    {
        wind(gusts[i]);
        run_until(60 + 60 * i);
    }
    EXPECT_TRUE(at_park());
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    // Calm for seven minutes, then one gust above the calm level starts the wait again.
    wind(20);
    run_until(360 + 420);
    wind(40);
    run_until(781);
    wind(15);
    run_until(781 + 590);
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    EXPECT_TRUE(at_park());
    run_until(781 + 610);
    EXPECT_EQ(STOW_IDLE, wind_stow.state);
    EXPECT_EQ(1, auto_tracking);
    EXPECT_EQ(0, park_active);
    EXPECT_NE(std::string::npos, std::string(panel_last_status).find("tracking again"));
    run_until(781 + 720);
    EXPECT_NEAR(120, sim.station.mount.az, 0.5);
    EXPECT_NEAR(25, sim.station.mount.el, 0.5);
}

TEST_F(WindStowTest, OffByDefaultAndEndedByTheOperator)
{
    weather.WindStow = 0;
    drive_auto_pressed();
    wind(90);
    run_until(10);
    EXPECT_EQ(0, park_active);
    EXPECT_EQ(1, auto_tracking);

    // An antenna that was not tracking stays parked after the calm.
    drive_stop_pressed();
    weather.WindStow = 1;
    run_until(11);
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    wind(10);
    run_until(11 + 605);
    EXPECT_EQ(STOW_IDLE, wind_stow.state);
    EXPECT_TRUE(at_park());
    EXPECT_EQ(0, auto_tracking);
    EXPECT_NE(std::string::npos, std::string(panel_last_status).find("stays parked"));

    // The operator's AUTO during a stow ends it; the wind, still above the
    // alarm level at the next reading, stows again.
    wind(80);
    run_until(620);
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    drive_auto_pressed();
    wind_stow_step(80, 620);
    EXPECT_EQ(STOW_IDLE, wind_stow.state);
    EXPECT_STREQ("Wind stow ended by the operator", panel_last_status);
    wind_stow_step(80, 620);
    EXPECT_EQ(STOW_PARKED, wind_stow.state);
    EXPECT_EQ(1, park_active);

    // With the alarm level at its default 0 no stow hangs on it.
    drive_stop_pressed();
    weather.WindSpeedAlarmHigh = 0;
    run_until(630);
    EXPECT_EQ(0, park_active);
}
