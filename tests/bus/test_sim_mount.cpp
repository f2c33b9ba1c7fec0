#include "sim/mount.h"

#include <gtest/gtest.h>

class SimMountPhysics : public ::testing::Test
{
  protected:
    SimMount m;
    SimOutputs out[SIM_ADDRESSES] = {};
    void SetUp() override
    {
        mount_init(&m);
        m.az = 100.0;
        m.el = 30.0;
    }
    void run(int ticks, int ms)
    {
        for (int i = 0; i < ticks; i++)
        {
            mount_advance(&m, out, ms);
        }
    }
};

TEST_F(SimMountPhysics, RelayOnlyAxesRunAtTopSpeedInTheirDirection)
{
    out[0].relay[4] = 1;
    run(10, 100);
    EXPECT_NEAR(102.0, m.az, 1e-9);
    out[0].relay[4] = 0;
    out[0].relay[3] = 1;
    run(20, 100);
    EXPECT_NEAR(98.0, m.az, 1e-9);
    // Boards at other addresses and the azimuth board's port 1 do not drive.
    out[0].relay[3] = 0;
    out[0].relay[1] = 1;
    out[2].relay[4] = 1;
    out[1].relay[1] = 1;
    run(10, 100);
    EXPECT_NEAR(31.0, m.el, 1e-9);
    out[1].relay[1] = 0;
    out[1].relay[2] = 1;
    run(10, 100);
    // No time is no motion.
    mount_advance(&m, out, -50);
    EXPECT_NEAR(30.0, m.el, 1e-9);
    EXPECT_NEAR(98.0, m.az, 1e-9);
}

TEST_F(SimMountPhysics, DutyScalesTheSpeedAndBothRelaysCancel)
{
    out[0].relay[4] = 1;
    out[0].duty[4] = 25;
    run(4, 500);
    EXPECT_NEAR(101.0, m.az, 1e-9);
    out[0].relay[3] = 1;
    run(4, 500);
    EXPECT_NEAR(101.0, m.az, 1e-9);
}

TEST_F(SimMountPhysics, EndStopsHoldTheMount)
{
    out[1].relay[1] = 1;
    run(100, 1000);
    EXPECT_DOUBLE_EQ(m.el_max, m.el);
    EXPECT_DOUBLE_EQ(0.0, m.el_rate);
    out[0].relay[3] = 1;
    run(100, 1000);
    EXPECT_DOUBLE_EQ(m.az_min, m.az);
}

TEST_F(SimMountPhysics, CoastRunsDownAfterTheStop)
{
    m.coast_ms = 1000;
    out[0].relay[4] = 1;
    run(1, 1000);
    EXPECT_NEAR(102.0, m.az, 1e-9);
    out[0].relay[4] = 0;
    run(10, 100);
    // Linear run-down from 2 deg/s over one second covers one degree.
    EXPECT_NEAR(103.0, m.az, 1e-9);
    EXPECT_DOUBLE_EQ(0.0, m.az_rate);
    run(10, 100);
    EXPECT_NEAR(103.0, m.az, 1e-9);
}
