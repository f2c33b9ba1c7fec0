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

TEST_F(Cycle, EachGroupAtItsPeriod)
{
    // 300 ticks with rotctl, PstRotator, a pending calibration, the remote
    // switches and two weather sensors on; every other group off.
    conditions.rotctl_running = conditions.pst_running = conditions.calibration_pending = 1;
    conditions.remote_switches = 1;
    conditions.weather_enabled[0] = conditions.weather_enabled[3] = 1;
    conditions.weather_interval_ms[0] = 100;   // wind speed: above 100 ms is every third tick
    conditions.weather_interval_ms[3] = 10000; // altimeter
    run(420);
    const struct
    {
        int group, first, period;
        const char *why;
    } rows[] = {{CYCLE_DISPLAY, 1, 11, "550 ms"},
                {CYCLE_POSITION, 1, 2, "100 ms"},
                {CYCLE_ADC, 1, 3, "150 ms"},
                {CYCLE_FREQUENCY, 1, 3, "150 ms"},
                {CYCLE_REMOTE_DISPLAY, 1, 3, "150 ms"},
                {CYCLE_PANEL_PAGE, 1, 1, "every tick"},
                {CYCLE_REMOTE_SWITCH, 3, 3, "first on the third tick"},
                {CYCLE_ROTCTL, 1, 1, "services every tick while started"},
                {CYCLE_PSTROTATOR, 1, 1, "services every tick while started"},
                {CYCLE_BARO_CALIBRATION, 1, 1, "every tick while pending"},
                {CYCLE_WIND_SPEED, 1, 3, "an interval of 100 ms"},
                {CYCLE_ALTIMETER, 1, 201, "an interval of 10 s"},
                {CYCLE_EASYCOMM, 1, 0, "no EasyComm link"},
                {CYCLE_THERMOMETER, 1, 0, "no sensor enabled"}};
    for (const auto &r : rows)
    {
        EXPECT_EQ(r.period ? every(r.first, r.period, 420) : std::vector<int>(), log.ticks[r.group]) << r.why;
    }
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
    EXPECT_EQ(4 * 10 + 4, seen[0] * 10 + seen[1]);
}

TEST(CycleGuard, GuardTimersStopAtZero)
{
    test_reset_state();
    az_guard_ms = 120;
    el_guard_ms = 30;
    cycle_guard_timers();
    EXPECT_EQ(70, az_guard_ms);
    // The drive starts only at exactly 0, so a guard that went below would hold for ever.
    EXPECT_EQ(0, el_guard_ms);
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
