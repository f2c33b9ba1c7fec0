// Broken-down UTC instants for the astronomy tests.
#pragma once

#include <ctime>

inline struct tm astro_test_utc(int year, int month, int day, int hour, int minute, int second)
{
    struct tm tm = {};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    return tm;
}

// The same instant as seconds since 1970, for the frozen clock.
inline time_t astro_test_time(int year, int month, int day, int hour, int minute, int second)
{
    struct tm tm = astro_test_utc(year, month, day, hour, minute, second);
    return timegm(&tm);
}

// A Julian date back to a broken-down UTC time, to the second.
inline struct tm astro_test_utc_of_jd(double jd)
{
    time_t t = (time_t)((jd - 2440587.5) * 86400.0 + 0.5);
    struct tm tm;
    gmtime_r(&t, &tm);
    return tm;
}
