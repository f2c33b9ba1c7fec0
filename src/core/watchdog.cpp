#include "core/watchdog.h"

#include <cmath>

AxisWatch az_watch, el_watch;

void watch_reset(AxisWatch *w)
{
    *w = AxisWatch();
}

void watch_tick(AxisWatch *w, int elapsed_ms)
{
    if (w->sign != 0)
    {
        w->idle_ms += elapsed_ms;
    }
}

// An azimuth encoder reads 0 to 360: a step across north is a small one.
static double watch_moved(double from, double to)
{
    double moved = to - from;
    return moved - 360.0 * std::floor((moved + 180.0) / 360.0);
}

int watch_step(AxisWatch *w, int sign, double reading, int limit_ms)
{
    if (sign == 0 || sign != w->sign)
    {
        watch_reset(w);
        w->sign = sign;
        w->reading = reading;
        return 0;
    }
    w->progress += sign * watch_moved(w->reading, reading);
    w->reading = reading;
    if (w->progress > w->furthest)
    {
        w->furthest = w->progress;
        w->idle_ms = 0;
    }
    return w->furthest - w->progress > WATCH_RUNAWAY_DEGREES || w->idle_ms >= limit_ms;
}
