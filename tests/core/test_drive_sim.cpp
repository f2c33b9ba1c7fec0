// The drive against the station simulator: its frames in the simulator's
// log, and the simulated mount driven in closed loop, in simulated time.
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
    // The mount at az/el, the User Az/El target at source_az/el, AUTO on.
    void track(double az, double el, double to_az, double to_el)
    {
        sim.station.mount.az = az;
        sim.station.mount.el = el;
        source_az = to_az;
        source_el = to_el;
        drive_auto_pressed();
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
        SetUp();
        track(s.az, s.el, 200, 30);
        run_seconds(300);
        EXPECT_LE(std::fabs(sim.station.mount.az - 200), 0.3);
        EXPECT_LE(std::fabs(sim.station.mount.el - 30), 0.3);
        EXPECT_EQ(sim.az_starts, 1);
        EXPECT_EQ(sim.el_starts, 1);
        EXPECT_EQ(outputs_on(), 0);

        // A quarter of an hour more: settled means no further start.
        run_seconds(900);
        EXPECT_EQ(sim.az_starts + sim.el_starts, 2);
        EXPECT_EQ(auto_tracking, 1);
    }
}

TEST_F(DriveSimTest, FailedReadHoldsOneAxisWhileTheOtherTracks)
{
    track(100, 10, 200, 60);
    run_seconds(5);
    sim.az_read_fails = 1;
    double held = sim.station.mount.az;
    run_seconds(20);
    // One position cycle at top speed, then the mount's run-down.
    EXPECT_NEAR(sim.station.mount.az, held, 0.2 + 0.3 + 0.05) << "stopped at the first failed cycle";
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_NEAR(sim.station.mount.el, 35, 1.0) << "elevation went on at full speed";
    sim.az_read_fails = 0;
    run_seconds(120);
    EXPECT_NEAR(sim.station.mount.az, 200, 0.3) << "azimuth resumes by itself";
    EXPECT_NEAR(sim.station.mount.el, 60, 0.3);
}

TEST_F(DriveSimTest, SourceBelowTheHorizonHoldsTheMountUntilItRises)
{
    track(100, 10, 120, 30);
    run_seconds(3);
    source_table[SOURCE_USER_AZEL].above_horizon = 0;
    run_seconds(3); // the stop and the run-down
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
