#include "core/cycle.h"

#include "bus/weather.h"
#include "core/state.h"
#include "core/watchdog.h"
#include "remote/easycomm.h"

// A group's counter gains one tick and fires when it passes the threshold; the
// strict comparison makes the period one tick longer than the threshold.
static int cycle_gate(int32_t *counter, int threshold, int forced)
{
    *counter += CYCLE_TICK_MS;
    if (*counter > threshold || forced)
    {
        *counter = 0;
        return 1;
    }
    return 0;
}

CycleConditions cycle_conditions_now(void)
{
    CycleConditions c = {};
    c.remote_switches = settings.RemoteSwitches;
    c.easycomm_active = easycomm.active;
    c.rotctl_running = settings.GpredictActive && gpredict_running;
    c.pst_running = settings.PstActive && pstrotator_running;
    weather_cycle_conditions(&c);
    return c;
}

void cycle_guard_timers(void)
{
    az_guard_ms = az_guard_ms > CYCLE_TICK_MS ? az_guard_ms - CYCLE_TICK_MS : 0;
    el_guard_ms = el_guard_ms > CYCLE_TICK_MS ? el_guard_ms - CYCLE_TICK_MS : 0;
    watch_tick(&az_watch, CYCLE_TICK_MS);
    watch_tick(&el_watch, CYCLE_TICK_MS);
}

int cycle_display_mask(int refresh, int source, int last_source, int seconds)
{
    // The bits are added as flags: a first tick at second 0 stays 15, with the
    // Moon's distance and phase still in it.
    int mask = refresh || source != last_source ? 15 : 1;
    if (seconds == 0)
    {
        mask |= 10;
    }
    if (source == SOURCE_MOON)
    {
        mask |= 2;
    }
    return mask;
}

void cycle_panel_pages(int slider, int *page1, int *page2)
{
    static const int pages1[4] = {0, 1, 2, 3};
    static const int pages2[4] = {0, 1, 2, 2};
    int i = slider < 0 ? 0 : slider > 3 ? 3 : slider;
    *page1 = pages1[i];
    *page2 = pages2[i];
}

static uint32_t cycle_due(const CycleConditions *c)
{
    int32_t *weather_counters[5] = {&wind_speed_ms, &wind_direction_ms, &thermometer_ms, &altimeter_ms,
                                    &barometer_ms};
    static const int weather_groups[5] = {CYCLE_WIND_SPEED, CYCLE_WIND_DIRECTION, CYCLE_THERMOMETER,
                                          CYCLE_ALTIMETER, CYCLE_BAROMETER};
    uint32_t due = 0;
    int forced = refresh_now;

    due |= (uint32_t)cycle_gate(&display_ms, 500, forced) << CYCLE_DISPLAY;
    due |= 1u << CYCLE_GUARD;
    due |= (uint32_t)cycle_gate(&position_ms, 50, forced) << CYCLE_POSITION;
    due |= (uint32_t)cycle_gate(&adc_ms, 100, forced) << CYCLE_ADC;
    if (c->remote_switches)
    {
        due |= (uint32_t)cycle_gate(&remote_switch_ms, 100, 0) << CYCLE_REMOTE_SWITCH;
    }
    if (cycle_gate(&easycomm_ms, 100, forced) && c->easycomm_active)
    {
        due |= 1u << CYCLE_EASYCOMM;
    }
    due |= (uint32_t)cycle_gate(&frequency_ms, 100, forced) << CYCLE_FREQUENCY;
    due |= (uint32_t)(c->rotctl_running != 0) << CYCLE_ROTCTL;
    due |= (uint32_t)(c->pst_running != 0) << CYCLE_PSTROTATOR;
    for (int i = 0; i < 5; i++)
    {
        if (cycle_gate(weather_counters[i], c->weather_interval_ms[i], forced) && c->weather_enabled[i])
        {
            due |= 1u << weather_groups[i];
        }
    }
    due |= (uint32_t)(c->calibration_pending != 0) << CYCLE_BARO_CALIBRATION;
    due |= (uint32_t)cycle_gate(&remote_display_ms, 100, forced) << CYCLE_REMOTE_DISPLAY;
    due |= 1u << CYCLE_PANEL_PAGE;
    return due;
}

uint32_t cycle_tick(const CycleActions *actions, const CycleConditions *conditions)
{
    int source = settings.TrackingSource;
    uint32_t due = cycle_due(conditions);
    for (int group = 0; group < CYCLE_GROUP_COUNT; group++)
    {
        if (!(due & (1u << group)))
        {
            continue;
        }
        if (group == CYCLE_GUARD)
        {
            cycle_guard_timers();
        }
        else if (actions && actions->run[group])
        {
            actions->run[group](actions->context, source);
        }
    }
    refresh_now = 0;
    return due;
}
