// Quiet motion: which error an axis steps on by the second of the minute,
// and that only AUTO waits for the window.
#include "core/clock.h"
#include "core/drive.h"
#include "core/quiet_motion.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

struct QuietRow
{
    int second;
    double error;
    int window_start;
    double want;
    const char *why;
};

static const QuietRow quiet_rows[] = {
    {49, 3.0, 50, 0.0, "a second before the window nothing starts"},
    {50, 3.0, 50, 3.0, "the window opens at its own second"},
    {59, -3.0, 50, -3.0, "the last second of the minute is inside, either way"},
    {0, 3.0, 50, 0.0, "the minute closes the window: a running move stops"},
    {25, 0.5, 50, 0.0, "mid-period a small error waits too"},
    {58, 2.0, 59, 0.0, "a one-second window"},
    {59, 2.0, 59, 2.0, "and its one second"},
    {0, 2.0, 0, 2.0, "a window from second 0 is the whole minute"},
    {30, 2.0, -5, 2.0, "a negative start is the whole minute"},
    {58, 2.0, 75, 0.0, "a start past the minute is its last second"},
    {59, 2.0, 75, 2.0, "which still opens"},
};

TEST(QuietMotion, ErrorBySecondOfTheMinute)
{
    for (const QuietRow &r : quiet_rows)
    {
        EXPECT_EQ(quiet_motion_error(r.error, r.second, r.window_start), r.want) << r.why;
    }
}

// A whole drive step at a given UTC second: the target 5 degrees off on both
// axes, the motors at rest.
struct ModeRow
{
    int park, quiet, second;
    int want_start;
    const char *why;
};

static const ModeRow mode_rows[] = {
    {0, 1, 20, 0, "AUTO with quiet motion waits mid-period"},
    {0, 1, 52, 1, "and moves in the window"},
    {1, 1, 20, 1, "PARK is the operator's own command and never waits"},
};

TEST(QuietMotion, OnlyAutoWaitsForTheWindow)
{
    for (const ModeRow &r : mode_rows)
    {
        SCOPED_TRACE(r.why);
        test_reset_state();
        drive_test_settings();
        drive_record_start();
        settings.QuietMotion = r.quiet;
        settings.QuietWindowStart = 50;
        clock_freeze(1710000000 - 1710000000 % 60 + r.second);
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = row.az_tracking_enable = row.el_tracking_enable = 1;
        az_position = 100;
        el_position = 20;
        source_az = settings.Park_Azimuth = 105;
        source_el = settings.Park_Elevation = 25;
        r.park ? drive_park_pressed() : drive_auto_pressed();
        drive_step(SOURCE_USER_AZEL, 0, 0, 0);
        EXPECT_EQ(az_drive_on, r.want_start);
        EXPECT_EQ(el_drive_on, r.want_start);
    }
}
