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
    // The azimuth motor of board 0 on port 3 or 4 with a duty.
    void az_motor(int port, int duty)
    {
        out[0].relay[3] = out[0].relay[4] = 0;
        out[0].duty[3] = out[0].duty[4] = 0;
        if (port)
        {
            out[0].relay[port] = 1;
            out[0].duty[port] = (uint8_t)duty;
        }
    }
};

TEST_F(SimMountPhysics, MotorsRampUpAndReverseAtTheirAcceleration)
{
    // 2 deg/s^2 to a top speed of 2 deg/s: one second and one degree to get
    // there, then two degrees a second.
    az_motor(4, 100);
    run(10, 100);
    EXPECT_NEAR(101.0, m.az, 1e-6);
    EXPECT_NEAR(2.0, m.az_rate, 1e-9);
    run(10, 100);
    EXPECT_NEAR(103.0, m.az, 1e-6);
    // Reversing under power brakes through zero at the same rate: two
    // seconds from +2 to -2 deg/s, which lands back where it started.
    az_motor(3, 100);
    run(20, 100);
    EXPECT_NEAR(-2.0, m.az_rate, 1e-9);
    EXPECT_NEAR(103.0, m.az, 1e-6);
    // Elevation ramps at its own 1 deg/s^2 on board 1; the board at another
    // address and the azimuth board's port 1 move nothing.
    out[0].relay[1] = 1;
    out[0].duty[1] = 100;
    out[2].relay[1] = 1;
    out[2].duty[1] = 100;
    out[1].relay[1] = 1;
    out[1].duty[1] = 100;
    run(10, 100);
    EXPECT_NEAR(30.5, m.el, 1e-6);
    // No time is no motion.
    double az = m.az;
    mount_advance(&m, out, -50);
    EXPECT_EQ(az, m.az);
}

TEST_F(SimMountPhysics, DutyMinimumDutyAndRelayOnlyAxes)
{
    struct Row
    {
        int pwm, relay_plus, relay_minus, duty;
        double want_rate;
        const char *why;
    };
    const Row rows[] = {
        {1, 1, 0, 25, 0.5, "a quarter duty gives a quarter of the top speed"},
        {1, 1, 0, 0, 0.0, "a closed relay with no duty moves a PWM axis not at all"},
        {1, 1, 0, 9, 0.0, "below the minimum duty the motor only hums"},
        {1, 1, 0, 10, 0.2, "at the minimum duty it turns"},
        {1, 0, 0, 100, 0.0, "a duty without its relay does nothing"},
        {1, 1, 1, 100, 0.0, "both relays closed cancel out"},
        {0, 1, 0, 0, 2.0, "a relay-only axis runs at full speed"},
        {0, 0, 1, 25, -2.0, "and ignores any duty"},
    };
    for (const Row &row : rows)
    {
        SetUp();
        m.az_pwm = (uint8_t)row.pwm;
        out[0] = SimOutputs();
        out[0].relay[4] = (uint8_t)row.relay_plus;
        out[0].relay[3] = (uint8_t)row.relay_minus;
        out[0].duty[4] = out[0].duty[3] = (uint8_t)row.duty;
        run(50, 100);
        EXPECT_NEAR(row.want_rate, m.az_rate, 1e-9) << row.why;
    }
}

TEST_F(SimMountPhysics, AStoppedMotorCoastsInProportionToItsSpeed)
{
    struct Row
    {
        double coast;
        int duty;
        double want_run_on;
    };
    const Row rows[] = {{0.3, 100, 0.3}, {0.3, 50, 0.15}, {0.0, 100, 0.0}};
    for (const Row &row : rows)
    {
        SetUp();
        m.coast_deg = row.coast;
        az_motor(4, row.duty);
        run(30, 100);
        double stopped_at = m.az;
        az_motor(0, 0);
        run(50, 100);
        EXPECT_NEAR(row.want_run_on, m.az - stopped_at, 0.002) << "coast " << row.coast << " duty " << row.duty;
        EXPECT_EQ(0.0, m.az_rate);
    }
}

TEST_F(SimMountPhysics, EndStopsClampAndCountEachArrival)
{
    out[1].relay[1] = 1;
    out[1].duty[1] = 100;
    run(100, 1000);
    EXPECT_DOUBLE_EQ(m.el_max, m.el);
    EXPECT_DOUBLE_EQ(0.0, m.el_rate);
    EXPECT_EQ(1, m.el_stop_hits) << "pushing on against the stop is one hit";
    out[1].relay[1] = 0;
    out[1].relay[2] = 1;
    out[1].duty[2] = 100;
    run(3, 1000);
    out[1].relay[2] = 0;
    out[1].relay[1] = 1;
    run(10, 1000);
    EXPECT_EQ(2, m.el_stop_hits);
    az_motor(3, 100);
    run(200, 1000);
    EXPECT_DOUBLE_EQ(m.az_min, m.az);
    EXPECT_EQ(1, m.az_stop_hits);
}
