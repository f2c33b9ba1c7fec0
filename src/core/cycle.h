// The cadence of the 50 ms cycle: which group runs in which tick, and in
// which order. The groups' work lives with their owners; this file only
// counts ticks, so the cadence runs in a test without a window or a bus.
#pragma once

#include <cstdint>

enum CycleGroup
{
    CYCLE_DISPLAY,          // source and display, 550 ms
    CYCLE_GUARD,            // guard timers, every tick
    CYCLE_POSITION,         // position and drive, 100 ms
    CYCLE_ADC,              // analogue inputs, 150 ms
    CYCLE_REMOTE_SWITCH,    // remote switches, 150 ms while enabled
    CYCLE_EASYCOMM,         // 150 ms
    CYCLE_FREQUENCY,        // rig and frequencies, 150 ms
    CYCLE_ROTCTL,           // every tick while the service runs
    CYCLE_PSTROTATOR,       // every tick while the client runs
    CYCLE_WIND_SPEED,       // weather sensors, each at its interval
    CYCLE_WIND_DIRECTION,
    CYCLE_THERMOMETER,
    CYCLE_BARO_CALIBRATION, // every tick while the write is pending
    CYCLE_ALTIMETER,
    CYCLE_BAROMETER,
    CYCLE_REMOTE_DISPLAY,   // 150 ms
    CYCLE_PANEL_PAGE,       // every tick
    CYCLE_GROUP_COUNT
};

enum
{
    CYCLE_TICK_MS = 50
};

// What decides, this tick, whether a group that has its own switch runs.
struct CycleConditions
{
    int remote_switches;   // RemoteSwitches: the switch counter runs only then
    int easycomm_active;
    int rotctl_running;    // GPREDICT Active and the service started
    int pst_running;       // PSTROTATOR Active and the client started
    int weather_enabled[5];     // wind speed, wind direction, thermometer, altimeter, barometer
    int weather_interval_ms[5]; // the same order
    int calibration_pending;
};

typedef void (*CycleAction)(void *context, int source);

struct CycleActions
{
    CycleAction run[CYCLE_GROUP_COUNT]; // a null entry is a group not yet wired
    void *context;
};

// The conditions as the shared state has them now.
CycleConditions cycle_conditions_now(void);

// One tick: take TrackingSource once, run every group that falls due, in the
// fixed order, and clear refresh_now last. Returns the mask of the groups
// that fell due (bit n for CycleGroup n), whether or not an action was wired.
uint32_t cycle_tick(const CycleActions *actions, const CycleConditions *conditions);

// The guard timers' step: each loses a tick, never going below 0. The
// watchdog's motor time gains the tick.
void cycle_guard_timers(void);

// The source mask of a display tick: 1, or 15 on the first tick or after a
// change of source; with 10 at second 0 and 2 for the Moon.
int cycle_display_mask(int refresh, int source, int last_source, int seconds);

// The dial pages for a slider position.
void cycle_panel_pages(int slider, int *page1, int *page2);
