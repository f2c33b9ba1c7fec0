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

// Which files let VFO B follow A and A follow B. The ASCII radios work only
// because our reader keeps the ';' of "(FA;)".
TEST(RigSurvey, OwnAndPublishedFiles)
{
    struct Row
    {
        int own;
        const char *file;
        int tx_follows_rx, rx_follows_tx;
    };
    const Row rows[] = {{1, "Simulator CI-V.ini", 1, 1}, {1, "Simulator Kenwood.ini", 1, 1}, {0, "IC-9700.ini", 1, 1},
                        {0, "IC-7300.ini", 1, 1},        {0, "TS-2000.ini", 1, 1},           {0, "Elecraft K3.ini", 1, 1},
                        {0, "FT-991.ini", 1, 1},         {0, "IC-910.ini", 0, 0},            {0, "IC- 821.ini", 0, 0},
                        {0, "IC-9100.ini", 0, 0},        {0, "FT-847.ini", 0, 0}};
    for (const Row &row : rows)
    {
        std::string folder = row.own ? rig_test_own_folder() : rig_test_real_folder();
        if (folder.empty())
        {
            continue; // no published rig files beside the project
        }
        test_reset_state();
        rig_load_path((folder + "/" + row.file).c_str(), 0);
        EXPECT_EQ(rig_survey_reads(pmFreqA) && rig_survey_writes(pmFreqB), row.tx_follows_rx) << row.file;
        EXPECT_EQ(rig_survey_reads(pmFreqB) && rig_survey_writes(pmFreqA), row.rx_follows_tx) << row.file;
        char text[2048];
        EXPECT_EQ(rig_survey(text, sizeof text), row.tx_follows_rx && row.rx_follows_tx ? 0 : 1);
    }
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
