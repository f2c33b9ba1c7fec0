#include "widgets/system_clock.h"

#include "support/test_env.h"

#include <QDir>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

TEST(ClockCommand, SixNumbersMakeAUtcDateCommand)
{
    struct Row
    {
        DateTimeFields fields; // Month, Day, Year, Hours, Minutes, Seconds
        int as_root, result;
        std::vector<std::string> words;
        const char *why;
    } rows[] = {
        {{3, 7, 2024, 9, 5, 1}, 0, 0, {"sudo", "-n", "date", "-u", "030709052024.01"}, "MMDDhhmmYYYY.ss as UTC"},
        {{2, 31, 2100, 0, 0, 0}, 1, 0, {"date", "-u", "023100002100.00"}, "root needs no sudo; 31 February as it is"},
        {{-1, 1, 2024, 0, 0, 0}, 1, -1, {}, "a negative field"},
        {{1, 100, 2024, 0, 0, 0}, 1, -1, {}, "a field wider than its digits"},
        {{1, 1, 10000, 0, 0, 0}, 1, -1, {}, "a five-digit year"},
    };
    for (const Row &row : rows)
    {
        ClockCommand command = {};
        EXPECT_EQ(clock_command_build(&row.fields, row.as_root, &command), row.result) << row.why;
        EXPECT_EQ(std::vector<std::string>(command.words, command.words + command.count), row.words) << row.why;
    }
}

// The real runner, on harmless commands: the reason of a failure is the
// command's own first line, or why it could not start.
TEST(ClockCommand, RunnerSaysWhyItFailed)
{
    struct Row
    {
        ClockCommand command;
        int result;
        const char *why;
    } rows[] = {
        {{{"sh", "-c", "exit 0"}, 3}, 0, ""},
        {{{"sh", "-c", "printf 'no\nx'>&2;exit 1"}, 3}, -1, "no"},
        {{{"sh", "-c", "exit 3"}, 3}, -1, "sh failed"},
        {{{"/nonexistent/date"}, 1}, -1, "no command /nonexistent/date"},
    };
    for (const Row &row : rows)
    {
        char why[128] = "";
        EXPECT_EQ(clock_run_command(&row.command, why, sizeof why), row.result) << row.why;
        EXPECT_STREQ(why, row.why);
    }
}

TEST(ClockCommand, NetworkTimeDaemonsAreFoundByName)
{
    struct Row
    {
        const char *comm;
        int active;
    } rows[] = {{"systemd-timesyn", 1}, {"chronyd", 1}, {"ntpd", 1}, {"ntpdate", 0}, {"chronyc", 0}};
    std::string root = std::string(test_home()) + "/proc";
    QDir().mkpath(QString::fromStdString(root + "/1"));
    for (const Row &row : rows)
    {
        FILE *f = fopen((root + "/1/comm").c_str(), "w");
        fprintf(f, "%s\n", row.comm);
        fclose(f);
        EXPECT_EQ(clock_network_time_active(root.c_str()), row.active) << row.comm;
    }
    EXPECT_EQ(0, clock_network_time_active("/nonexistent/proc"));
}
