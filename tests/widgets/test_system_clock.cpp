#include "widgets/system_clock.h"

#include "support/test_env.h"

#include <QDir>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

static std::vector<std::string> words(const ClockCommand &command)
{
    return std::vector<std::string>(command.words, command.words + command.count);
}

struct CommandRow
{
    DateTimeFields fields; // Month, Day, Year, Hours, Minutes, Seconds
    int as_root;
    int result;
    std::vector<std::string> words;
    const char *why;
};

TEST(ClockCommand, SixNumbersMakeAUtcDateCommand)
{
    const CommandRow rows[] = {
        {{3, 7, 2024, 9, 5, 1}, 0, 0, {"sudo", "-n", "date", "-u", "030709052024.01"}, "MMDDhhmmYYYY.ss as UTC"},
        {{12, 31, 2047, 23, 59, 59}, 1, 0, {"date", "-u", "123123592047.59"}, "root needs no sudo"},
        {{2, 31, 2025, 0, 0, 0}, 1, 0, {"date", "-u", "023100002025.00"}, "31 February goes unchanged"},
        {{1, 1, 2100, 0, 0, 0}, 1, 0, {"date", "-u", "010100002100.00"}, "a year past the list"},
        {{-1, 1, 2024, 0, 0, 0}, 1, -1, {}, "a negative field"},
        {{1, 100, 2024, 0, 0, 0}, 1, -1, {}, "a field wider than its digits"},
        {{1, 1, 10000, 0, 0, 0}, 1, -1, {}, "a five-digit year"},
    };
    for (const CommandRow &row : rows)
    {
        ClockCommand command = {};
        EXPECT_EQ(clock_command_build(&row.fields, row.as_root, &command), row.result) << row.why;
        EXPECT_EQ(words(command), row.words) << row.why;
    }
}

static int runs;
static int refuse(const ClockCommand *, char *why, int why_size)
{
    runs++;
    snprintf(why, (size_t)why_size, "sudo: a password is required");
    return -1;
}

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

    // The set goes through the seam; the machine's clock is never touched.
    clock_set_runner(refuse);
    DateTimeFields fields = {2, 31, 2025, 0, 0, 0};
    char why[128];
    EXPECT_EQ(-1, clock_set_system(&fields, why, sizeof why));
    EXPECT_EQ(1, runs);
    EXPECT_STREQ("sudo: a password is required", why);
    fields.Year = 12345;
    EXPECT_EQ(-1, clock_set_system(&fields, why, sizeof why));
    EXPECT_EQ(1, runs) << "a date that does not fit runs nothing";
    clock_set_runner(nullptr);
}

// A folder laid out like /proc, with the process names given.
static std::string fake_proc(const char *name, const std::vector<std::string> &comms)
{
    std::string root = std::string(test_home()) + "/" + name;
    QDir().mkpath(QString::fromStdString(root + "/self"));
    int pid = 1;
    for (const std::string &comm : comms)
    {
        std::string dir = root + "/" + std::to_string(pid++);
        QDir().mkpath(QString::fromStdString(dir));
        FILE *f = fopen((dir + "/comm").c_str(), "w");
        fprintf(f, "%s\n", comm.c_str());
        fclose(f);
    }
    return root;
}

TEST(ClockCommand, NetworkTimeDaemonsAreFoundByName)
{
    struct Row
    {
        const char *name;
        std::vector<std::string> comms;
        int active;
    } rows[] = {
        {"timesyncd", {"systemd", "systemd-timesyn", "bash"}, 1},
        {"chrony", {"chronyd"}, 1},
        {"ntp", {"sshd", "ntpd"}, 1},
        {"none", {"systemd", "ntpdate", "chronyc"}, 0},
        {"empty", {}, 0},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(clock_network_time_active(fake_proc(row.name, row.comms).c_str()), row.active) << row.name;
    }
    EXPECT_EQ(0, clock_network_time_active("/nonexistent/proc"));
}
