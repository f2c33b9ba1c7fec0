#include "core/clock.h"

#include "core/state.h"

#include <ctime>
#include <unistd.h>

static time_t frozen_utc;
static long shift_seconds;
static void (*sleep_hook)(int ms);

time_t clock_utc(void)
{
    time_t now = frozen_utc != 0 ? frozen_utc : time(nullptr);
    return now + shift_seconds;
}

int64_t clock_monotonic_ms(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (int64_t)ts.tv_sec * 1000 + ts.tv_nsec / 1000000;
}

void clock_date_fields(time_t utc, DateTimeFields *fields)
{
    struct tm broken;
    gmtime_r(&utc, &broken);
    fields->Month = broken.tm_mon + 1;
    fields->Day = broken.tm_mday;
    fields->Year = broken.tm_year + 1900;
    fields->Hours = broken.tm_hour;
    fields->Minutes = broken.tm_min;
    fields->Seconds = broken.tm_sec;
}

void sys_sleep_ms(int ms)
{
    if (ms <= 0)
    {
        return;
    }
    if (sleep_hook)
    {
        sleep_hook(ms);
        return;
    }
    usleep((useconds_t)ms * 1000);
}

void clock_freeze(time_t utc)
{
    frozen_utc = utc;
}

void clock_shift(long seconds)
{
    shift_seconds = seconds;
}

void clock_set_sleep_hook(void (*hook)(int ms))
{
    sleep_hook = hook;
}

void clock_reset(void)
{
    frozen_utc = 0;
    shift_seconds = 0;
    sleep_hook = nullptr;
}
