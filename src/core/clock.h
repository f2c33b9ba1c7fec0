// Every read of a clock in the program goes through here, so a test can
// freeze or shift time and the drive's sleeps can be made to cost nothing.
#pragma once

#include <cstdint>
#include <ctime>

// UTC seconds: the system clock, or the frozen value, plus the shift.
time_t clock_utc(void);
// Milliseconds from an arbitrary start that never jumps; for timing only.
int64_t clock_monotonic_ms(void);
// The date and time fields of a UTC instant: month 1 to 12, the full year.
struct DateTimeFields;
void clock_date_fields(time_t utc, DateTimeFields *fields);
// Block the GUI thread, as the drive's brake and jog waits do.
void sys_sleep_ms(int ms);

// For tests and tools.
void clock_freeze(time_t utc); // 0 lets the clock run again
void clock_shift(long seconds);
void clock_set_sleep_hook(void (*hook)(int ms)); // null restores the real sleep
void clock_reset(void);
