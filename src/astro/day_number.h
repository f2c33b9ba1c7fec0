// The day count of the Moon and Sun routines and of the sub-points: days from
// 2000 January 0.0 UT, so 1.5 at 12:00 UT on 1 January 2000.
#pragma once

// year, month 1..12 and day are whole numbers; ut_hours may be negative or
// above 24, which is how the Moon's earlier sample reaches into the day before.
double day_number(int year, int month, int day, double ut_hours);
