#include "astro/day_number.h"

// P. Schlyter, "How to compute planetary positions": every division but the
// last is an integer division, so the months fall on whole days and
// 2001-01-01 12:00 UT gives 367.5.
double day_number(int year, int month, int day, double ut_hours)
{
    long y = year;
    long m = month;
    long whole = 367 * y - 7 * (y + (m + 9) / 12) / 4 + 275 * m / 9 + day - 730530;
    return (double)whole + ut_hours / 24.0;
}
