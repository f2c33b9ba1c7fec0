#include "core/state.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>

static struct tm make_tm(int year, int mon, int mday, int hour, int min, int sec, int wday)
{
    struct tm t = {};
    t.tm_year = year - 1900;
    t.tm_mon = mon - 1;
    t.tm_mday = mday;
    t.tm_hour = hour;
    t.tm_min = min;
    t.tm_sec = sec;
    t.tm_wday = wday;
    return t;
}

TEST(TimeText, MatchesAsctimeWithoutItsNewline)
{
    struct tm t = make_tm(2026, 11, 23, 14, 5, 9, 1);
    char reference[64];
    asctime_r(&t, reference);
    reference[strcspn(reference, "\n")] = 0;
    EXPECT_STREQ(reference, TimeText(&t));
    EXPECT_EQ(24u, strlen(TimeText(&t)));
}

TEST(TimeText, SingleDigitDayKeepsTwoBlanks)
{
    struct tm t = make_tm(2024, 3, 3, 0, 0, 0, 0);
    EXPECT_STREQ("Sun Mar  3 00:00:00 2024", TimeText(&t));
}

TEST(TimeText, EveryWeekdayAndMonthName)
{
    const char *days[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const char *months[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int m = 1; m <= 12; m++)
    {
        struct tm t = make_tm(2025, m, 28, 23, 59, 59, m % 7);
        const char *text = TimeText(&t);
        EXPECT_EQ(0, strncmp(days[m % 7], text, 3)) << text;
        EXPECT_EQ(0, strncmp(months[m - 1], text + 4, 3)) << text;
        EXPECT_STREQ("28 23:59:59 2025", text + 8);
    }
}

TEST(TimeText, NamesDoNotFollowTheLocale)
{
    const char *before = setlocale(LC_TIME, nullptr);
    std::string saved = before ? before : "C";
    if (!setlocale(LC_TIME, "de_DE.UTF-8"))
    {
        GTEST_FAIL() << "the de_DE.UTF-8 locale is not installed";
    }
    struct tm t = make_tm(2026, 12, 1, 8, 0, 0, 2);
    EXPECT_STREQ("Tue Dec  1 08:00:00 2026", TimeText(&t));
    setlocale(LC_TIME, saved.c_str());
}

TEST(TimeText, FieldsOutOfRangeDoNotReadPastTheTables)
{
    struct tm t = make_tm(2026, 1, 1, 0, 0, 0, 9);
    t.tm_mon = -4;
    EXPECT_EQ(0, strncmp("Sun Jan", TimeText(&t), 7));
}

TEST(State, ResetRestoresStartValues)
{
    az_direction = DIR_RIGHT;
    refresh_now = 0;
    last_tracking_source = 5;
    remote_socket[1] = 7;
    az_read_status = 0;
    source_table[3].az = 12;
    settings.Frequency = 144;
    state_reset();
    EXPECT_EQ(DIR_STOPPED, az_direction);
    EXPECT_EQ(1, refresh_now);
    EXPECT_EQ(-1, last_tracking_source);
    EXPECT_EQ(-1, remote_socket[1]);
    EXPECT_EQ(-1, remote_client[0]);
    EXPECT_EQ(-1, az_read_status);
    EXPECT_EQ(1, az_pwm_port_state);
    EXPECT_EQ(1, source_changed);
    EXPECT_EQ(0.0, source_table[3].az);
    EXPECT_EQ(0.0, settings.Frequency);
    EXPECT_STREQ("Morvane.ini", ini_file_name);
}

TEST(State, TextCopyCutsToTheField)
{
    char call[12];
    text_copy(call, sizeof call, "VERYLONGCALLSIGN/P");
    EXPECT_STREQ("VERYLONGCAL", call);
    text_copy(call, sizeof call, nullptr);
    EXPECT_STREQ("", call);
}
