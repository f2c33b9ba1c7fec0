#include "rig/rig_survey.h"

#include "rig/rig_loader.h"
#include "rig_test_files.h"
#include "rigsim/rigsim_pty.h"
#include "support/test_env.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QThread>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

struct SurveyRow
{
    const char *file;
    int tx_follows_rx, rx_follows_tx;
};

static void check_rows(const std::string &folder, const SurveyRow *rows, int count)
{
    for (int i = 0; i < count; i++)
    {
        test_reset_state();
        rig_load_path((folder + "/" + rows[i].file).c_str(), 0);
        EXPECT_EQ(rig_survey_reads(pmFreqA) && rig_survey_writes(pmFreqB), rows[i].tx_follows_rx) << rows[i].file;
        EXPECT_EQ(rig_survey_reads(pmFreqB) && rig_survey_writes(pmFreqA), rows[i].rx_follows_tx) << rows[i].file;
        char text[2048];
        EXPECT_EQ(rig_survey(text, sizeof text), rows[i].tx_follows_rx && rows[i].rx_follows_tx ? 0 : 1);
    }
}

TEST(RigSurvey, OwnFilesFollowBothWays)
{
    const SurveyRow rows[] = {{"Simulator CI-V.ini", 1, 1}, {"Simulator Kenwood.ini", 1, 1}};
    check_rows(rig_test_own_folder(), rows, 2);
}

TEST(RigSurvey, PublishedFiles)
{
    std::string folder = rig_test_real_folder();
    if (folder.empty())
    {
        GTEST_SKIP() << "no published rig files beside the project";
    }
    // The ASCII radios work only because our reader keeps the ';' of "(FA;)".
    const SurveyRow rows[] = {{"IC-9700.ini", 1, 1}, {"IC-7300.ini", 1, 1},     {"IC-7610.ini", 1, 1},
                              {"TS-2000.ini", 1, 1}, {"Elecraft K3.ini", 1, 1}, {"FT-991.ini", 1, 1},
                              {"IC-910.ini", 0, 0},  {"IC- 821.ini", 0, 0},     {"IC-9100.ini", 0, 0},
                              {"FT-847.ini", 0, 0}};
    check_rows(folder, rows, (int)(sizeof rows / sizeof rows[0]));
}

TEST(RigSurvey, StatusBehindAGapIsNotCounted)
{
    test_reset_state();
    rig_load_path(rig_test_write("gap.ini", "[STATUS1]\nCommand=(FB;)\nReplyEnd=(;)\n"
                                            "[STATUS3]\nCommand=(FA;)\nReplyEnd=(;)\nValue1=2|11|vfText|1|0|pmFreqA\n")
                      .c_str(),
                  0);
    EXPECT_EQ(rig_survey_reads(pmFreqA), 0);
}

TEST(RigTool, FollowsAgainstTheSimulatorUntilTerminated)
{
    const char *bin = getenv("MORVANE_BIN");
    ASSERT_NE(bin, nullptr);
    RigsimPty sim;
    ASSERT_EQ(rigsim_start(&sim, RIGSIM_CIV), 0);
    rigsim_command(&sim, "freq a 1296000000");

    QProcess tool;
    tool.start(QString::fromUtf8(bin) + "/morvane-rig",
               {"--port", sim.path, "--rig", QString::fromStdString(rig_test_own_file("Simulator CI-V.ini")),
                "--vfo-mode", "1", "--correction", "500.5"});
    ASSERT_TRUE(tool.waitForStarted(5000));
    QElapsedTimer deadline;
    deadline.start();
    while (rigsim_vfo(&sim, 1) != 1295999499 && deadline.elapsed() < 10000)
    {
        QThread::msleep(20);
    }
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1295999499);
    tool.terminate();
    EXPECT_TRUE(tool.waitForFinished(5000));
    EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_NE(tool.readAllStandardOutput().indexOf("RX   1296.00000 TX   1295.99950"), -1);
    rigsim_stop(&sim);
}

TEST(RigTool, SurveyExitStatus)
{
    const char *bin = getenv("MORVANE_BIN");
    ASSERT_NE(bin, nullptr);
    QProcess tool;
    tool.start(QString::fromUtf8(bin) + "/morvane-rig",
               {"--survey", QString::fromStdString(rig_test_write("none.ini", "[INIT]\nCommand=(AI0;)\n"))});
    ASSERT_TRUE(tool.waitForFinished(5000));
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_NE(tool.readAllStandardOutput().indexOf("Doppler TX<-RX (VFO B follows A): no"), -1);
}
