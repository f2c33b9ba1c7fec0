// The drive against the station simulator: its frames in the simulator's
// log, and the simulated mount driven in closed loop, in simulated time.
#include "bus/sim_fixture.h"
#include "core/drive.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "support/test_env.h"

#include <cmath>
#include <gtest/gtest.h>

class DriveSimTest : public ::testing::Test
{
  protected:
    DriveSim sim;

    void SetUp() override
    {
        test_reset_state();
        drive_test_settings();
        drive_sim_start(&sim);
        settings.TrackingSource = SOURCE_USER_AZEL;
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = 1;
        row.az_tracking_enable = row.el_tracking_enable = 1;
    }
    void TearDown() override
    {
        drive_sim_stop();
    }
    void place(double az, double el)
    {
        sim.station.mount.az = az;
        sim.station.mount.el = el;
    }
    void run_seconds(double seconds)
    {
        for (int i = 0; i < (int)(seconds * 20); i++)
        {
            drive_sim_tick(&sim);
        }
    }
    // A relay left on, a PWM port left at a duty, on either board.
    int outputs_on()
    {
        int on = 0;
        for (int a : {settings.AZ_Addr, settings.EL_Addr})
        {
            for (int p = 1; p <= 4; p++)
            {
                on += sim.station.outputs[a].relay[p] != 0;
            }
        }
        return on;
    }
};

TEST_F(DriveSimTest, StartAndStopFramesReachTheDevicesInOrder)
{
    set_az_duty_cycle(60);
    az_right(1);
    az_right(0);
    set_el_duty_cycle(30);
    el_up(1);
    std::vector<std::string> want = {"> F0 33 03 00", "> F0 33 04 00", "> F0 33 04 3C", "> F0 32 04 01",
                                     "> F0 32 04 00", "> F0 33 04 00", "> F1 33 01 00", "> F1 33 02 00",
                                     "> F1 33 01 1E", "> F1 32 01 01"};
    EXPECT_EQ(drive_sim_frames(&sim), want);
    EXPECT_EQ(sim.station.outputs[1].relay[1], 1);
    EXPECT_EQ(sim.station.outputs[1].duty[1], 30);
}

TEST_F(DriveSimTest, SettlesInsideTheHysteresisFromThreeStartsWithoutHunting)
{
    // Far below and left, far above and right, and a few degrees off: with the
    // default parameters each axis gets there in one move, fast then slow.
    struct
    {
        double az, el;
    } starts[] = {{10, 5}, {350, 85}, {197.5, 31.5}};
    for (auto s : starts)
    {
        SCOPED_TRACE(testing::Message() << "from " << s.az << "/" << s.el);
        drive_sim_stop();
        test_reset_state();
        SetUp();
        sim.station.mount.coast_ms = 400;
        place(s.az, s.el);
        source_az = 200;
        source_el = 30;
        drive_auto_pressed();
        run_seconds(300);
        int az_starts = sim.az_starts, el_starts = sim.el_starts;
        EXPECT_LT(std::fabs(sim.station.mount.az - 200), settings.Azimuth_Start);
        EXPECT_LT(std::fabs(sim.station.mount.el - 30), settings.Elevation_Start);
        EXPECT_LE(std::fabs(sim.station.mount.az - 200), 0.3);
        EXPECT_LE(std::fabs(sim.station.mount.el - 30), 0.3);
        EXPECT_EQ(az_starts, 1);
        EXPECT_EQ(el_starts, 1);
        EXPECT_EQ(outputs_on(), 0);

        // A quarter of an hour more: settled means no further start.
        run_seconds(900);
        EXPECT_EQ(sim.az_starts, az_starts);
        EXPECT_EQ(sim.el_starts, el_starts);
        EXPECT_EQ(auto_tracking, 1);
    }
}

TEST_F(DriveSimTest, JogPulsesCloseASmallErrorWithoutAGuardBetweenThem)
{
    settings.AzimuthJogEnable = 1;
    settings.AzimuthJogTime = 100;
    place(195, 30);
    source_az = 200;
    source_el = 30;
    drive_auto_pressed();
    run_seconds(10);
    // 2 degrees a second at full duty: a tenth of a second moves 0.2 degrees,
    // so 4 degrees take about 20 pulses, one per position cycle.
    EXPECT_LT(std::fabs(sim.station.mount.az - 200), settings.Azimuth_Start);
    EXPECT_GE(sim.az_starts, 18);
    EXPECT_LE(sim.az_starts, 22);
    EXPECT_EQ(az_guard_ms, 0);
}

TEST_F(DriveSimTest, ParkDrivesTheMountThereAndEndsByItself)
{
    place(120, 20);
    settings.Park_Azimuth = 150;
    settings.Park_Elevation = 60;
    drive_park_pressed();
    run_seconds(120);
    EXPECT_EQ(park_active, 0);
    EXPECT_NEAR(sim.station.mount.az, 150, 0.3);
    EXPECT_NEAR(sim.station.mount.el, 60, 0.3);
    EXPECT_EQ(outputs_on(), 0);
}

TEST_F(DriveSimTest, SouthernStationDrivesLeftThroughNorth)
{
    settings.AzimuthLimitMin = 270;
    settings.AzimuthLimitMax = 90;
    place(10, 30);
    source_az = 355;
    source_el = 30;
    drive_auto_pressed();
    run_seconds(60);
    // The mount's own scale runs past north: 355 is -5 on it.
    EXPECT_NEAR(sim.station.mount.az, -5, 0.3);
    EXPECT_LE(sim.az_starts, 2);
}

TEST_F(DriveSimTest, ManualMoveStopsAtTheLimit)
{
    place(5, 30);
    az_manual = 1;
    drive_left_pressed();
    run_seconds(10);
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_NEAR(sim.station.mount.az, 0, 0.25) << "cut at the first position cycle on the limit";
    EXPECT_EQ(outputs_on(), 0);
}

TEST_F(DriveSimTest, FailedReadHoldsOneAxisWhileTheOtherTracks)
{
    place(100, 10);
    source_az = 200;
    source_el = 60;
    drive_auto_pressed();
    run_seconds(5);
    sim.az_read_fails = 1;
    double held = sim.station.mount.az;
    run_seconds(20);
    EXPECT_NEAR(sim.station.mount.az, held, 0.2) << "stopped at the first failed cycle";
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_NEAR(sim.station.mount.el, 35, 1.0) << "elevation went on at full speed";
    sim.az_read_fails = 0;
    run_seconds(120);
    EXPECT_NEAR(sim.station.mount.az, 200, 0.3) << "azimuth resumes by itself";
    EXPECT_NEAR(sim.station.mount.el, 60, 0.3);
}

TEST_F(DriveSimTest, SourceBelowTheHorizonHoldsTheMountUntilItRises)
{
    place(100, 10);
    source_az = 120;
    source_el = 30;
    drive_auto_pressed();
    run_seconds(3);
    source_table[SOURCE_USER_AZEL].above_horizon = 0;
    run_seconds(0.1);
    double az = sim.station.mount.az, el = sim.station.mount.el;
    run_seconds(30);
    EXPECT_EQ(sim.station.mount.az, az);
    EXPECT_EQ(sim.station.mount.el, el);
    EXPECT_EQ(outputs_on(), 0);
    source_table[SOURCE_USER_AZEL].above_horizon = 1;
    run_seconds(60);
    EXPECT_NEAR(sim.station.mount.az, 120, 0.3);
    EXPECT_NEAR(sim.station.mount.el, 30, 0.3);
}

// The whole path through the SEI link on the simulator's pseudo-terminal.
TEST_F(SimBus, StopAllReachesTheBoardsThroughTheLink)
{
    settings.AzimuthPwmActive = settings.ElevationPwmActive = 1;
    az_right(1);
    EXPECT_EQ(1, frames_arrived("> F0 32 04 01", 1));
    stop_all(1);
    EXPECT_EQ(1, frames_arrived("> F1 32 01 00", 1));
    EXPECT_EQ(1, frames_arrived("> F0 32 04 00", 1));
    EXPECT_EQ(3, frames_arrived("> F0 33 04 00", 3)) << "all off, the right stop, and the pwm off of az_right";
    std::lock_guard<std::mutex> hold(sim->lock);
    EXPECT_EQ(sim->station.outputs[0].relay[4], 0);
}
