#include "core/state.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

TEST(TimeText, AsctimeWithoutItsNewlineWhateverTheLocale)
{
    std::string saved = setlocale(LC_TIME, nullptr);
    ASSERT_NE(setlocale(LC_TIME, "de_DE.UTF-8"), nullptr) << "the de_DE.UTF-8 locale is not installed";
    const struct
    {
        struct tm t;
        const char *want;
    } rows[] = {
        {{0, 0, 0, 3, 2, 124, 0, 0, 0}, "Sun Mar  3 00:00:00 2024"}, // a one-digit day keeps two blanks
        {{9, 5, 14, 23, 10, 126, 1, 0, 0}, "Mon Nov 23 14:05:09 2026"},
        {{59, 59, 23, 1, 11, 126, 2, 0, 0}, "Tue Dec  1 23:59:59 2026"},
        {{0, 0, 0, 1, -4, 126, 9, 0, 0}, "Sun Jan  1 00:00:00 2026"}, // fields out of range stay inside the tables
    };
    for (const auto &row : rows)
    {
        EXPECT_STREQ(row.want, TimeText(&row.t));
    }
    setlocale(LC_TIME, saved.c_str());
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
    EXPECT_EQ(-1, az_read_status);
    EXPECT_EQ(0.0, source_table[3].az);
    EXPECT_EQ(0.0, settings.Frequency);
}
