// The drive step as a table: set the globals, run one step, read what it
// commanded. The same rows run through azimuth and elevation.
#include "core/cycle.h"
#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

// The names of one axis, so the rows run through both.
struct AxisNames
{
    const char *name;
    double *position, *target, *start_error;
    int32_t *drive_on, *direction, *guard_ms, *speed_mode, *duty, *jog_shade;
    int plus, minus, arrow_plus, arrow_minus; // what a positive and a negative error drive and light
    void (*start)(int direction);
    uint8_t *jog_enable;
};

static void az_start(int direction)
{
    direction == DIR_RIGHT ? az_right(1) : az_left(1);
}

static void el_start(int direction)
{
    direction == DIR_UP ? el_up(1) : el_down(1);
}

static const AxisNames azimuth = {"azimuth",    &az_position,  &source_az,   &az_start_error,
                                  &az_drive_on, &az_direction, &az_guard_ms, &az_speed_mode,
                                  &az_duty,     &az_jog_shade, DIR_RIGHT,    DIR_LEFT,
                                  PANEL_RIGHT,  PANEL_LEFT,    az_start,     &settings.AzimuthJogEnable};
static const AxisNames elevation = {"elevation",  &el_position,  &source_el,   &el_start_error,
                                    &el_drive_on, &el_direction, &el_guard_ms, &el_speed_mode,
                                    &el_duty,     &el_jog_shade, DIR_UP,       DIR_DOWN,
                                    PANEL_UP,     PANEL_DOWN,    el_start,     &settings.ElevationJogEnable};

// Start 1.0, stop 0.25, slow degrees 10, guard 2.0 s, duties 25 / 100, jog 30 ms.
// Errors are sums of powers of two, so target minus position is exactly the
// row's error and the equality rows test the comparisons themselves.
struct StepRow
{
    double error, start_error;       // with the motor running, the start error's sign is its direction
    int running_mode, guard_ms, jog; // running_mode 0 is idle, else the speed mode it runs in
    // want_running: +1 toward a positive error, -1 toward a negative one, 0 stopped
    int want_running, want_mode, want_duty, want_guard_ms, want_pulse;
    const char *why;
};

static const StepRow step_rows[] = {
    {1.00, 0, 0, 0, 0, +1, SPEED_SLOW, 25, 0, 0, "an error equal to the start threshold starts"},
    {0.875, 0, 0, 0, 0, 0, SPEED_SLOW, 0, 0, 0, "an error just inside the start threshold starts nothing"},
    {-1.00, 0, 0, 0, 0, -1, SPEED_SLOW, 25, 0, 0, "a negative error starts the other way"},
    {10.0, 0, 0, 0, 0, +1, SPEED_SLOW, 25, 0, 0, "an error equal to the slow degrees is slow"},
    {10.125, 0, 0, 0, 0, +1, SPEED_FAST, 100, 0, 0, "an error above the slow degrees is fast"},
    {-45.0, 0, 0, 0, 0, -1, SPEED_FAST, 100, 0, 0, "a large negative error is fast"},
    {5.0, 0, 0, 50, 0, 0, SPEED_SLOW, 0, 50, 0, "a guard time not yet run out holds the start"},
    {0.25, 3.0, SPEED_SLOW, 0, 0, 0, SPEED_SLOW, 25, 2000, 0, "an error equal to the stop threshold stops"},
    {0.375, 3.0, SPEED_SLOW, 0, 0, +1, SPEED_SLOW, 25, 0, 0, "an error just outside the stop band runs on"},
    {-0.25, 3.0, SPEED_SLOW, 0, 0, 0, SPEED_SLOW, 25, 2000, 0, "stop and overshoot fire in one step"},
    {-0.50, 3.0, SPEED_SLOW, 0, 0, 0, SPEED_SLOW, 25, 2000, 0, "a sign flip outside the stop band is an overshoot"},
    {-5.0, 30.0, SPEED_FAST, 0, 0, 0, SPEED_FAST, 100, 2000, 0, "a fast motor that overshoots stops too"},
    {0.5, -3.0, SPEED_SLOW, 0, 0, 0, SPEED_SLOW, 25, 2000, 0, "overshoot from the negative side"},
    {5.0, 30.0, SPEED_FAST, 0, 0, +1, SPEED_SLOW, 25, 0, 0, "a fast motor slows down inside the slow degrees"},
    {10.0, 30.0, SPEED_FAST, 0, 0, +1, SPEED_SLOW, 25, 0, 0, "and already at exactly the slow degrees"},
    {20.0, 5.0, SPEED_SLOW, 0, 0, +1, SPEED_FAST, 100, 0, 0, "a slow motor speeds up when the error grows"},
    {5.0, 0, 0, 0, 1, 0, SPEED_JOG, 100, 0, 1, "with jog a start inside the slow degrees is one pulse"},
    {-5.0, 0, 0, 0, 1, 0, SPEED_JOG, 100, 0, 1, "the pulse goes either way"},
    {0.5, 0, 0, 0, 1, 0, SPEED_SLOW, 0, 0, 0, "jog stops pulsing inside the start threshold"},
    {20.0, 0, 0, 0, 1, +1, SPEED_FAST, 100, 0, 0, "jog leaves a large error to the fast speed"},
    {5.0, 30.0, SPEED_FAST, 0, 1, 0, SPEED_JOG, 100, 0, 1, "a fast motor entering the slow degrees ends in a pulse"},
};

class DriveStep : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        drive_test_settings();
        drive_record_start();
        settings.AzimuthJogTime = settings.ElevationJogTime = 30;
        settings.Azimuth_Stop = settings.Elevation_Stop = 0.25;
        settings.TrackingSource = SOURCE_USER_AZEL;
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = 1;
        row.az_tracking_enable = row.el_tracking_enable = 1;
        az_position = source_az = 100;
        el_position = source_el = 50;
        auto_tracking = 1;
    }
    void step(int through_north = 0, int az_limit = 0, int el_limit = 0)
    {
        drive_step(settings.TrackingSource, through_north, az_limit, el_limit);
    }
    void run_row(const AxisNames &a, const StepRow &r)
    {
        SetUp();
        *a.jog_enable = (uint8_t)r.jog;
        if (r.running_mode)
        {
            *a.speed_mode = r.running_mode;
            *a.duty = r.running_mode == SPEED_FAST ? 100 : 25;
            a.start(r.start_error > 0 ? a.plus : a.minus);
            *a.start_error = r.start_error;
        }
        *a.guard_ms = r.guard_ms;
        *a.target = *a.position + r.error;
        drive_record_clear();
        step();

        SCOPED_TRACE(std::string(a.name) + ": " + r.why);
        int want_direction = r.want_running > 0 ? a.plus : r.want_running < 0 ? a.minus : DIR_STOPPED;
        EXPECT_EQ(*a.direction, want_direction);
        EXPECT_EQ(*a.drive_on, r.want_running != 0);
        EXPECT_EQ(*a.speed_mode, r.want_mode);
        EXPECT_EQ(*a.duty, r.want_duty);
        EXPECT_EQ(*a.guard_ms, r.want_guard_ms);
        EXPECT_EQ(drive_record.slept_ms, r.want_pulse ? 30 : 0);
        if (r.want_pulse)
        {
            int shade = r.error > 0 ? a.plus : a.minus;
            EXPECT_EQ(*a.jog_shade, shade);
            EXPECT_EQ(panel_last_style[shade == a.plus ? a.arrow_plus : a.arrow_minus], STYLE_DARKRED);
        }
        if (!r.running_mode && r.want_running)
        {
            EXPECT_EQ(*a.start_error, r.error);
        }
        EXPECT_EQ(az_drive_on + el_drive_on, r.want_running != 0) << "the other axis stays idle";
    }
};

TEST_F(DriveStep, RowsOnBothAxes)
{
    for (const AxisNames *a : {&azimuth, &elevation})
    {
        for (const StepRow &r : step_rows)
        {
            run_row(*a, r);
        }
    }
}

TEST_F(DriveStep, StopLargerThanStartStartsAndStopsOverAndOver)
{
    settings.Azimuth_Stop = 2.0;
    source_az = 101.5;
    int starts = 0;
    for (int tick = 0; tick < 200; tick++)
    {
        int was_on = az_drive_on;
        if (tick % 2 == 0)
        {
            step();
        }
        cycle_guard_timers();
        starts += !was_on && az_drive_on;
    }
    // Start, stop with a 2 s guard, start again once it ran out: 10 s of ticks.
    EXPECT_GE(starts, 4);
    EXPECT_LE(starts, 5);
}

TEST_F(DriveStep, ThroughNorthTakesTheShortWayOnlyForTheSouthernCase)
{
    struct
    {
        double min, max, source, position, want_error;
        const char *why;
    } rows[] = {
        {270, 90, 350, 10, -20, "source past north going down, antenna on the low side: left through 0"},
        {270, 90, 350, 300, 50, "both on the high side: plain difference"},
        {270, 90, 10, 80, -70, "both on the low side"},
        {270, 90, 270, 90, -180, "exactly on both limits still counts"},
        {270, 90, 10, 350, -340, "no shortcut the other way"},
        {0, 360, 10, 350, -340, "ordinary limits: no shortcut at all"},
    };
    for (auto r : rows)
    {
        SetUp();
        settings.AzimuthLimitMin = r.min;
        settings.AzimuthLimitMax = r.max;
        source_az = r.source;
        az_position = r.position;
        step(r.min > r.max);
        EXPECT_DOUBLE_EQ(az_error, r.want_error) << r.why;
        EXPECT_EQ(az_direction, r.want_error > 0 ? DIR_RIGHT : DIR_LEFT) << r.why;
    }
}

TEST_F(DriveStep, NegativeSourceElevationHoldsOnlyElevation)
{
    source_az = 150;
    source_el = -0.5;
    el_position = -5;
    settings.ElevationLimitMin = -10;
    step();
    EXPECT_EQ(az_drive_on, 1);
    EXPECT_EQ(el_drive_on, 0);
}

TEST_F(DriveStep, RemoteRowsWithoutAValidReportMoveNothing)
{
    for (int source : {SOURCE_EASYCOMM, SOURCE_GPREDICT, SOURCE_PSTROTATOR})
    {
        SetUp();
        settings.TrackingSource = source;
        source_table[source].above_horizon = 1;
        source_az = 200;
        source_el = 70;
        step();
        EXPECT_EQ(az_drive_on + el_drive_on, 0) << source;
        EXPECT_EQ(bus_calls_text(drive_record.calls), "") << source;

        source_table[source].az_tracking_enable = 1;
        step();
        EXPECT_EQ(az_drive_on, 1) << "a report on one axis frees that axis only, row " << source;
        EXPECT_EQ(el_drive_on, 0) << source;
    }
}

TEST_F(DriveStep, AutoWithTheOtherAxisInManualTracksOnlyTheFreeAxis)
{
    el_manual = 1;
    source_az = 150;
    source_el = 60;
    step();
    EXPECT_EQ(az_direction, DIR_RIGHT);
    EXPECT_EQ(el_drive_on, 0);
    EXPECT_EQ(el_error, 0) << "a manual axis gets no target in AUTO";

    // The manual axis is still stopped at a limit in AUTO.
    drive_up_pressed();
    ASSERT_EQ(el_direction, DIR_UP);
    step(0, 0, 1);
    EXPECT_EQ(el_direction, DIR_STOPPED);
    EXPECT_EQ(az_direction, DIR_RIGHT);
}

TEST_F(DriveStep, LimitsCutAManualMoveAtTheNextPositionCycle)
{
    auto_tracking = 0;
    az_manual = 1;
    drive_left_pressed();
    step();
    EXPECT_EQ(az_direction, DIR_LEFT) << "inside the limits a manual move runs on";
    drive_record_clear();
    step(0, 1, 0);
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(bus_calls_text(drive_record.calls), "relay(1,3,0) pwm(1,3,0)");

    // At the limit an idle PWM axis gets its zero duty on every cycle.
    drive_record_clear();
    step(0, 1, 1);
    EXPECT_EQ(bus_calls_text(drive_record.calls), "pwm(1,3,0) pwm(2,2,0)");
}

TEST_F(DriveStep, ParkDrivesThereAndEndsWithTheStopFlashWhenNothingCanStart)
{
    auto_tracking = 0;
    park_control(1);
    step();
    EXPECT_EQ(az_direction * 10 + el_direction, DIR_RIGHT * 10 + DIR_UP);
    EXPECT_DOUBLE_EQ(az_error, 80);
    struct
    {
        int guard, jog;
        double az, el;
        const char *why;
    } rows[] = {
        {2000, 0, 100, 40, "both guards still running"},
        {0, 0, 179.9, 89.9, "both errors inside the start thresholds"},
        {0, 1, 175, 85, "jog pulses leave both motors off"},
    };
    for (auto r : rows)
    {
        SetUp();
        auto_tracking = 0;
        settings.AzimuthJogEnable = settings.ElevationJogEnable = (uint8_t)r.jog;
        az_guard_ms = el_guard_ms = r.guard;
        az_position = r.az;
        el_position = r.el;
        drive_park_pressed();
        drive_record_clear();
        step();
        EXPECT_EQ(park_active, 0) << r.why;
        EXPECT_NE(az_position, 180) << r.why;
        ASSERT_FALSE(drive_record.stop_style_at_sleep.empty()) << r.why;
        EXPECT_EQ(drive_record.stop_style_at_sleep.back(), STYLE_DARKRED) << r.why;
        EXPECT_EQ(panel_last_style[PANEL_STOP] + panel_last_style[PANEL_PARK], 2 * STYLE_GRAY) << r.why;
    }
}
