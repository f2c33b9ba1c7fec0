#include "core/cycle.h"
#include "core/state.h"
#include "support/test_env.h"

#include <gtest/gtest.h>
#include <vector>

// Each group records the ticks it ran in, so the cadence can be read off.
struct CycleLog
{
    std::vector<int> ticks[CYCLE_GROUP_COUNT];
    std::vector<int> order; // groups of the current tick, in call order
    int tick;
};

static CycleLog *cycle_log;

template <int G> static void record(void *, int)
{
    cycle_log->ticks[G].push_back(cycle_log->tick);
    cycle_log->order.push_back(G);
}

template <int... G> static CycleActions make_actions(std::integer_sequence<int, G...>)
{
    CycleActions a = {};
    ((a.run[G] = record<G>), ...);
    return a;
}

class Cycle : public ::testing::Test
{
  protected:
    CycleLog log = {};
    CycleActions actions = {};
    CycleConditions conditions = {};

    void SetUp() override
    {
        test_reset_state();
        cycle_log = &log;
        actions = make_actions(std::make_integer_sequence<int, CYCLE_GROUP_COUNT>{});
        for (int i = 0; i < 5; i++)
        {
            conditions.weather_interval_ms[i] = 1000;
        }
    }

    void run(int ticks)
    {
        for (int i = 1; i <= ticks; i++)
        {
            log.tick = i;
            log.order.clear();
            cycle_tick(&actions, &conditions);
        }
    }

    static std::vector<int> every(int first, int period, int last)
    {
        std::vector<int> v;
        for (int t = first; t <= last; t += period)
        {
            v.push_back(t);
        }
        return v;
    }
};

TEST_F(Cycle, FirstTickRunsEveryGatedGroupInOrder)
{
    conditions.easycomm_active = 1;
    for (int i = 0; i < 5; i++)
    {
        conditions.weather_enabled[i] = 1;
    }
    run(1);
    std::vector<int> expected = {CYCLE_DISPLAY,        CYCLE_POSITION,       CYCLE_ADC,
                                 CYCLE_EASYCOMM,       CYCLE_FREQUENCY,      CYCLE_WIND_SPEED,
                                 CYCLE_WIND_DIRECTION, CYCLE_THERMOMETER,    CYCLE_ALTIMETER,
                                 CYCLE_BAROMETER,      CYCLE_REMOTE_DISPLAY, CYCLE_PANEL_PAGE};
    EXPECT_EQ(expected, log.order);
    EXPECT_EQ(0, refresh_now);
}

TEST_F(Cycle, PeriodsOverManyTicks)
{
    run(300);
    EXPECT_EQ(every(1, 11, 300), log.ticks[CYCLE_DISPLAY]) << "550 ms";
    EXPECT_EQ(every(1, 2, 300), log.ticks[CYCLE_POSITION]) << "100 ms";
    EXPECT_EQ(every(1, 3, 300), log.ticks[CYCLE_ADC]) << "150 ms";
    EXPECT_EQ(every(1, 3, 300), log.ticks[CYCLE_FREQUENCY]);
    EXPECT_EQ(every(1, 3, 300), log.ticks[CYCLE_REMOTE_DISPLAY]);
    EXPECT_EQ(every(1, 1, 300), log.ticks[CYCLE_PANEL_PAGE]);
    EXPECT_TRUE(log.ticks[CYCLE_REMOTE_SWITCH].empty()) << "switches are off";
    EXPECT_TRUE(log.ticks[CYCLE_EASYCOMM].empty()) << "no EasyComm link";
    EXPECT_TRUE(log.ticks[CYCLE_ROTCTL].empty());
    EXPECT_TRUE(log.ticks[CYCLE_WIND_SPEED].empty()) << "no sensor enabled";
}

TEST_F(Cycle, RemoteSwitchesFirstRunOnTheThirdTick)
{
    conditions.remote_switches = 1;
    run(30);
    EXPECT_EQ(every(3, 3, 30), log.ticks[CYCLE_REMOTE_SWITCH]);
}

TEST_F(Cycle, RemoteSwitchCounterStandsStillWhileSwitchesAreOff)
{
    run(10);
    EXPECT_EQ(0, remote_switch_ms);
    conditions.remote_switches = 1;
    log = {};
    run(3);
    EXPECT_EQ(std::vector<int>{3}, log.ticks[CYCLE_REMOTE_SWITCH]);
}

TEST_F(Cycle, ServicesRunEveryTickWhileStarted)
{
    conditions.rotctl_running = 1;
    conditions.pst_running = 1;
    run(20);
    EXPECT_EQ(every(1, 1, 20), log.ticks[CYCLE_ROTCTL]);
    EXPECT_EQ(every(1, 1, 20), log.ticks[CYCLE_PSTROTATOR]);
}

TEST_F(Cycle, WeatherSensorsAtTheirIntervals)
{
    conditions.weather_enabled[0] = 1;
    conditions.weather_interval_ms[0] = 100; // wind speed: above 100 is every third tick
    conditions.weather_enabled[3] = 1;
    conditions.weather_interval_ms[3] = 10000; // altimeter
    run(420);
    EXPECT_EQ(every(1, 3, 420), log.ticks[CYCLE_WIND_SPEED]);
    EXPECT_EQ(every(1, 201, 420), log.ticks[CYCLE_ALTIMETER]);
}

TEST_F(Cycle, CalibrationWriteEveryTickWhilePending)
{
    conditions.calibration_pending = 1;
    run(4);
    EXPECT_EQ(every(1, 1, 4), log.ticks[CYCLE_BARO_CALIBRATION]);
}

TEST_F(Cycle, CountersKeepTheirValuesAcrossAPause)
{
    run(5); // display ran on tick 1, so its counter stands at 4 ticks
    EXPECT_EQ(200, display_ms);
    log = {};
    run(7);
    EXPECT_EQ(std::vector<int>{7}, log.ticks[CYCLE_DISPLAY]) << "11 ticks after the first, counting both runs";
}

TEST_F(Cycle, TrackingSourceIsTakenOnceAtEntry)
{
    static int seen[2];
    static int calls;
    calls = 0;
    actions.run[CYCLE_DISPLAY] = [](void *, int source)
    {
        seen[calls++] = source;
        settings.TrackingSource = 9; // a dialog slot changing it mid-tick
    };
    actions.run[CYCLE_POSITION] = [](void *, int source) { seen[calls++] = source; };
    settings.TrackingSource = 4;
    run(1);
    EXPECT_EQ(4, seen[0]);
    EXPECT_EQ(4, seen[1]);
}

TEST(CycleGuard, GuardTimersNeverGoNegative)
{
    test_reset_state();
    az_guard_ms = 120;
    el_guard_ms = 30;
    cycle_guard_timers();
    EXPECT_EQ(70, az_guard_ms);
    EXPECT_EQ(0, el_guard_ms);
    cycle_guard_timers();
    cycle_guard_timers();
    EXPECT_EQ(0, az_guard_ms);
    az_guard_ms = 50;
    cycle_guard_timers();
    EXPECT_EQ(0, az_guard_ms) << "50 is not above 50";
}

TEST(CycleMask, DisplayMaskRules)
{
    struct Row
    {
        int refresh, source, last, seconds, mask;
        const char *why;
    };
    const Row rows[] = {
        {1, 5, 5, 30, 15, "the first tick recomputes everything"},
        {0, 5, 4, 30, 15, "a change of source recomputes everything"},
        {0, 5, 5, 30, 1, "an ordinary tick only moves the position"},
        {0, 5, 5, 0, 11, "second 0 adds distance and rise and set"},
        {0, 0, 0, 30, 3, "the Moon's distance is always fresh"},
        {0, 0, 0, 0, 11, "the Moon at second 0"},
        {1, 0, 0, 0, 15, "a first tick at second 0 on the Moon is still 15, not 27"},
    };
    for (const Row &r : rows)
    {
        EXPECT_EQ(r.mask, cycle_display_mask(r.refresh, r.source, r.last, r.seconds)) << r.why;
    }
}

TEST(CyclePages, SliderPositionsToPages)
{
    const int expected[4][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 2}};
    for (int pos = 0; pos < 4; pos++)
    {
        int p1 = -1, p2 = -1;
        cycle_panel_pages(pos, &p1, &p2);
        EXPECT_EQ(expected[pos][0], p1) << pos;
        EXPECT_EQ(expected[pos][1], p2) << pos;
    }
}
