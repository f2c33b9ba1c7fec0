#include "astro/day_number.h"

#include <gtest/gtest.h>

// Day 1.5 is 2000-01-01 12:00 UT by definition; -3543 is the worked example of
// P. Schlyter's "How to compute planetary positions" (1990 April 19, 0:00 UT).
TEST(DayNumber, PublishedInstants)
{
    EXPECT_DOUBLE_EQ(day_number(2000, 1, 1, 12.0), 1.5);
    EXPECT_DOUBLE_EQ(day_number(2001, 1, 1, 12.0), 367.5);
    EXPECT_DOUBLE_EQ(day_number(1990, 4, 19, 0.0), -3543.0);
}

// A floating division anywhere but the last would put month and year
// boundaries at fractions of a day.
TEST(DayNumber, IntegerDivisionsKeepWholeDaysAcrossMonthsAndYears)
{
    EXPECT_DOUBLE_EQ(day_number(2024, 3, 1, 0.0) - day_number(2024, 2, 29, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(day_number(2023, 3, 1, 0.0) - day_number(2023, 2, 28, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(day_number(2026, 1, 1, 0.0) - day_number(2025, 12, 31, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(day_number(2025, 9, 1, 0.0) - day_number(2025, 8, 31, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(day_number(2025, 12, 31, 0.0) - day_number(2025, 1, 1, 0.0), 364.0);
}

// The Moon's earlier sample at 00:00:30 runs with a negative UT on the same
// date; it must land on the evening before.
TEST(DayNumber, NegativeAndLargeHoursRunIntoTheNeighbouringDays)
{
    double ut = -100.0 / 3600.0;
    EXPECT_NEAR(day_number(2026, 1, 1, ut), day_number(2025, 12, 31, 24.0 + ut), 1e-9);
    EXPECT_NEAR(day_number(2026, 1, 1, 30.0), day_number(2026, 1, 2, 6.0), 1e-9);
}
