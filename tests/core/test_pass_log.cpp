// The pass log: a pass on the simulated mount in virtual time, its files and
// summary against the simulator's own relay counts; the summary line read
// back, hostile lines refused; a file that cannot be written.
#include "core/clock.h"
#include "core/drive.h"
#include "core/pass_log.h"
#include "core/settings.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "support/test_env.h"

#include <QDir>
#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

static std::string pass_file(time_t t)
{
    char name[48], path[600];
    pass_log_file_name(t, name, sizeof name);
    settings_path(name, path, sizeof path);
    return path;
}

static std::vector<std::string> pass_lines(const std::string &path)
{
    std::vector<std::string> lines;
    std::istringstream text(test_read_file(path));
    for (std::string line; std::getline(text, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

static int pass_is_sample(const std::string &line)
{
    return !line.empty() && line[0] >= '0' && line[0] <= '9';
}

// 2024-03-09 23:57:30 UTC: the pass runs across midnight into a new file.
static const time_t before_midnight = 1710028800 - 150;

class PassLogSim : public ::testing::Test
{
  protected:
    DriveSim sim;

    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        drive_test_settings();
        drive_sim_start(&sim);
        settings.TrackingSource = SOURCE_USER_AZEL;
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = row.az_tracking_enable = row.el_tracking_enable = 1;
        sim.utc_start = before_midnight;
        sim.after_read = pass_log_step;
        clock_freeze(before_midnight);
    }
    void TearDown() override
    {
        drive_sim_stop();
    }
    void run_seconds(double seconds)
    {
        for (int64_t until = sim.ms + (int64_t)(seconds * 1000); sim.ms < until;)
        {
            source_az = 200 + sim.ms / 240000.0;
            source_el = 40 + sim.ms / 240000.0;
            drive_sim_tick(&sim);
        }
    }
    int switchings(int address, int port_a, int port_b)
    {
        return sim.station.outputs[address].relay_switches[port_a] +
               sim.station.outputs[address].relay_switches[port_b];
    }
};

TEST_F(PassLogSim, APassAcrossMidnightLogsEverySecondAndAgreesWithTheMount)
{
    sim.station.mount.az = 170;
    sim.station.mount.el = 30;
    drive_auto_pressed();
    run_seconds(300);
    drive_auto_pressed();
    time_t last = clock_utc();
    run_seconds(5);

    std::vector<std::string> day1 = pass_lines(pass_file(before_midnight));
    std::vector<std::string> day2 = pass_lines(pass_file(last));
    ASSERT_GE(day1.size(), 2u);
    ASSERT_GE(day2.size(), 3u);
    for (auto *day : {&day1, &day2})
    {
        EXPECT_EQ((*day)[0].rfind("utc,source,target_az", 0), 0u) << "each day's file starts with the header";
        EXPECT_EQ((*day)[1].rfind("# pass summary:", 0), 0u);
    }
    // One line for every second from AUTO on to AUTO off, split at midnight.
    std::vector<std::string> samples;
    for (auto *day : {&day1, &day2})
    {
        for (const std::string &line : *day)
        {
            if (pass_is_sample(line))
            {
                samples.push_back(line);
            }
        }
    }
    EXPECT_EQ(std::count_if(day1.begin(), day1.end(), pass_is_sample), 150);
    ASSERT_EQ(samples.size(), (size_t)(last - before_midnight + 1));
    EXPECT_EQ(samples.front().rfind("2024-03-09T23:57:30Z,User Az/El,200.00,40.00,170.00,30.00,30.00,10.00,", 0), 0u)
        << samples.front();
    EXPECT_EQ(samples[150].rfind("2024-03-10T00:00:00Z,", 0), 0u);

    PassSummary s;
    ASSERT_EQ(pass_summary_parse(day2.back().c_str(), &s), 0) << day2.back();
    EXPECT_EQ(s.start, before_midnight);
    EXPECT_EQ(s.end, last);
    EXPECT_STREQ(s.source, "User Az/El");
    // The simulator's boards count their own closings and openings.
    EXPECT_EQ(s.az_starts, sim.az_starts);
    EXPECT_EQ(s.el_starts, sim.el_starts);
    EXPECT_EQ(s.az_switchings, switchings(settings.AZ_Addr, 3, 4));
    EXPECT_EQ(s.el_switchings, switchings(settings.EL_Addr, 1, 2));
    // The first slew is not tracking; after it the error stays within the
    // start threshold and a position cycle's drift.
    EXPECT_GT(s.tracked, 200);
    EXPECT_LT(s.tracked, 295);
    EXPECT_LE(s.az_max, 1.05);
    EXPECT_LE(s.el_max, 1.05);
    EXPECT_GT(s.az_rms, 0.1);
    EXPECT_LT(s.az_rms, s.az_max);
    EXPECT_EQ(s.quiet, 0);

    // The tool shows the one pass.
    std::string command = std::string(getenv("MORVANE_BIN")) + "/morvane-passlog 2>&1";
    FILE *tool = popen(command.c_str(), "r");
    ASSERT_NE(tool, nullptr);
    char out[4096] = "";
    size_t n = fread(out, 1, sizeof out - 1, tool);
    out[n] = 0;
    EXPECT_EQ(pclose(tool), 0) << out;
    EXPECT_NE(strstr(out, "2024-03-09 23:57:30   0:05:0"), nullptr) << out;
    EXPECT_NE(strstr(out, "User Az/El"), nullptr) << out;
}

static int pass_warnings;
static void pass_count_warnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    pass_warnings += type == QtWarningMsg && message.startsWith("Pass log");
}

// A directory where the day's file should be: every open fails. The failure
// is told once, memory stays within the buffer, and once the file can be
// written every second is either there or counted as lost.
TEST_F(PassLogSim, AFileThatCannotBeWrittenIsToldOnceAndCountedLater)
{
    sim.utc_start = before_midnight - 3600;
    clock_freeze(sim.utc_start);
    QDir().mkpath(QString::fromStdString(pass_file(sim.utc_start)));
    pass_warnings = 0;
    QtMessageHandler previous = qInstallMessageHandler(pass_count_warnings);
    sim.station.mount.az = 200;
    sim.station.mount.el = 40;
    drive_auto_pressed();
    run_seconds(300);
    EXPECT_EQ(pass_warnings, 1);
    QDir(QString::fromStdString(pass_file(sim.utc_start))).removeRecursively();
    run_seconds(30);
    drive_auto_pressed();
    time_t last = clock_utc();
    run_seconds(1);
    qInstallMessageHandler(previous);
    EXPECT_EQ(pass_warnings, 1) << "told once";

    std::vector<std::string> lines = pass_lines(pass_file(sim.utc_start));
    ASSERT_GE(lines.size(), 4u);
    long lost = 0;
    int notes = 0;
    for (const std::string &line : lines)
    {
        notes += sscanf(line.c_str(), "# %ld lines lost", &lost) == 1;
    }
    EXPECT_EQ(notes, 1);
    long written = std::count_if(lines.begin(), lines.end(), pass_is_sample);
    EXPECT_GT(written, 60) << "the buffer kept what fitted";
    EXPECT_EQ(written + lost, last - sim.utc_start + 1);
    PassSummary s;
    EXPECT_EQ(pass_summary_parse(lines.back().c_str(), &s), 0) << lines.back();
}

TEST(PassLog, SummaryLineReadsBackAndOtherLinesAreRefused)
{
    PassSummary s = {};
    s.start = 1710028800;
    s.end = s.start + 3599;
    strcpy(s.source, "Moon");
    s.tracked = 3550;
    s.az_rms = 0.604;
    s.az_max = 1.012;
    s.el_rms = 0.611;
    s.el_max = 1.009;
    s.az_starts = 11;
    s.el_starts = 9;
    s.az_switchings = 22;
    s.el_switchings = 18;
    s.quiet = 1;
    char line[PASS_LINE_MAX];
    pass_summary_format(&s, line, sizeof line);
    EXPECT_STREQ(line,
                 "# pass,2024-03-10T00:00:00Z,2024-03-10T00:59:59Z,Moon,3550,0.604,1.012,0.611,1.009,11,9,22,18,1");
    PassSummary r;
    ASSERT_EQ(pass_summary_parse((std::string(line) + "\r\n").c_str(), &r), 0) << "a line as a file holds it";
    char again[PASS_LINE_MAX];
    pass_summary_format(&r, again, sizeof again);
    EXPECT_STREQ(again, line);

    const std::string good = line;
    const std::string hostile[] = {
        "",
        "2024-03-10T00:00:00Z,Moon,200.00,40.00,199.90,40.10,0.10,-0.10,stop,stop,0,1296000000,1296000000",
        "# pass summary: start_utc,end_utc,source,tracked_s,az_rms_deg,az_max_deg,el_rms_deg,el_max_deg,az_starts,"
        "el_starts,az_switchings,el_switchings,quiet",
        good.substr(0, good.size() - 2),
        good + ",7",
        "# pass,2024-13-10T00:00:00Z" + good.substr(27),
        "# pass,2024-03-10 00:00:00Z" + good.substr(27),
        "# pass,2024-03-10T00:00:00Z,2024-03-10T00:59:59Z,Moon,3550,-0.604,1.012,0.611,1.009,11,9,22,18,1",
        "# pass,2024-03-10T00:00:00Z,2024-03-10T00:59:59Z,Moon,3550,nan,1.012,0.611,1.009,11,9,22,18,1",
        "# pass,2024-03-10T00:00:00Z,2024-03-10T00:59:59Z,Moon,35.5,0.604,1.012,0.611,1.009,11,9,22,18,1",
        "# pass,2024-03-10T00:00:00Z,2024-03-10T00:59:59Z," + std::string(40, 'M') + ",1,0,0,0,0,0,0,0,0,0",
        "# pass," + std::string(300, ','),
    };
    for (const std::string &h : hostile)
    {
        EXPECT_EQ(pass_summary_parse(h.c_str(), &r), -1) << h;
    }
}
