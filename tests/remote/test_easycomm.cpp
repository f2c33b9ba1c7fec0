#include "remote/easycomm.h"

#include "core/clock.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "pty_pair.h"
#include "remote_peer.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sys/wait.h>

static const SourceRecord &row24 = source_table[SOURCE_EASYCOMM];

struct EasyCommRow
{
    const char *word;
    int code;
    double az, el;
    int az_enable, el_enable;
    const char *reply;
    const char *why;
};

static const EasyCommRow easycomm_rows[] = {
    {"AZ", EASYCOMM_AZ, 0.0, 0.0, 0, 0, "", "the bare letters are a query and set nothing"},
    {"AZ180.0", EASYCOMM_AZ, 180.0, 0.0, 1, 0, "", "a position sets its axis alone and is not answered"},
    {"EL45.5", EASYCOMM_EL, 0.0, 45.5, 0, 1, "", "the same for elevation"},
    {"VE", EASYCOMM_VE, 0.0, 0.0, 0, 0, "002\r", "the version is answered at once"},
    {"AZIMUTH10", EASYCOMM_AZ, 0.0, 0.0, 1, 0, "", "two letters match: the number text IMUTH10 reads as 0"},
    {"az120", EASYCOMM_NONE, 0.0, 0.0, 0, 0, "", "lower case matches nothing"},
    {"A", EASYCOMM_NONE, 0.0, 0.0, 0, 0, "", "one letter matches nothing"},
};

TEST(EasyComm, Rows)
{
    for (const EasyCommRow &row : easycomm_rows)
    {
        test_reset_state();
        EXPECT_EQ(easycomm_parse(&easycomm, row.word), row.code) << row.why;
        EXPECT_DOUBLE_EQ(row24.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row24.el, row.el) << row.why;
        EXPECT_EQ(row24.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row24.el_tracking_enable, row.el_enable) << row.why;
        EXPECT_STREQ(easycomm.reply, row.reply) << row.why;
    }
}

// The words of each value are the shared serial ones, checked with the main
// settings; here only that the section goes out under its own name and back.
TEST(EasyComm, SectionIsSavedAndReadBack)
{
    test_reset_state();
    test_clear_settings();
    // A USB adapter's stable name, kept whole.
    const char *name = "/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0";
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, name);
    easycomm.link.Parity = 3;
    easycomm_save_settings("Morvane.ini", &easycomm);
    char path[1024];
    settings_path("Morvane.ini", path, sizeof path);
    EXPECT_NE(test_read_file(path).find("[EASYCOMM]\nEasyCommActive=0\n"), std::string::npos);
    memset(&easycomm, 0, sizeof easycomm);
    easycomm_load_settings("Morvane.ini", &easycomm);
    EXPECT_STREQ(easycomm.link.PortName, name);
    EXPECT_EQ(easycomm.link.Parity, 3);
    // Not plugged in here: starting the link says so.
    easycomm_start(&easycomm);
    EXPECT_EQ(easycomm.active, 0);
    EXPECT_EQ(std::string(panel_last_status), std::string("EasyComm: No such port ") + name);
}

// The link on one end of a socat pair; the test plays the controller on the
// other.
class EasyCommLine : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        if (!pty.ok())
        {
            GTEST_SKIP() << "socat is not installed";
        }
        text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, pty.near_name.c_str());
        easycomm.link.BaudRate = 3;
        easycomm.link.DataBits = 1;
        easycomm_start(&easycomm);
        ASSERT_EQ(easycomm.active, 1);
        az_position = 123.44;
        el_position = 9.96;
        settings.TrackingSource = SOURCE_EASYCOMM;
    }
    void TearDown() override
    {
        easycomm_stop(&easycomm);
    }
    // Send from the controller, then run the cycle's step once the bytes are
    // at our end.
    void say(const std::string &text)
    {
        pty.send(text);
        serial_wait_readable(&easycomm.link, 2000);
        easycomm_cycle_step();
    }
    PtyPair pty;
};

TEST_F(EasyCommLine, QueriesAreAnsweredAndPositionsAreNot)
{
    say("AZ180.0 ");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 180.00");
    settings.TrackingSource = SOURCE_MOON;
    say("AZ190.0 ");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 180.00") << "another source keeps the buttons";
    EXPECT_DOUBLE_EQ(row24.az, 190.0);
    say("VE\r");
    // The first bytes back belong to VE: the set had none.
    EXPECT_EQ(pty.receive(2000), "002\r");
    EXPECT_STREQ(panel_last_status, "VE");
    say("AZ ");
    EXPECT_EQ(pty.receive(2000), "AZ123.4 ");
    say("EL\r");
    EXPECT_EQ(pty.receive(2000), "EL10.0 ");
}

TEST_F(EasyCommLine, StopAzimuthHoldsItUntilTheNextAzimuthWithANumber)
{
    say("AZ10 ");
    say("EL20 ");
    az_direction = DIR_RIGHT;
    el_direction = DIR_UP;
    say("SA ");
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(el_direction, DIR_UP);
    EXPECT_EQ(row24.el_tracking_enable, 1);
    say("AZ ");
    EXPECT_EQ(row24.az_tracking_enable, 0) << "a query does not bring the axis back";
    pty.receive(2000);
    say("AZ11 ");
    EXPECT_EQ(row24.az_tracking_enable, 1);
}

TEST_F(EasyCommLine, OneWordPerPollAndALongWordIsCut)
{
    pty.send("AZ120 EL45\nAZ" + std::string(28, '9') + "1 EL" + std::string(26, '4') + "1\r");
    serial_wait_readable(&easycomm.link, 2000);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_AZ);
    EXPECT_EQ(row24.el_tracking_enable, 0);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_EL);
    EXPECT_DOUBLE_EQ(row24.el, 45.0);
    // Thirty characters: the first 29 make a word that matches nothing, the
    // rest begins the next.
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_NONE);
    EXPECT_EQ(strlen(easycomm.command), 29u);
    EXPECT_DOUBLE_EQ(row24.az, 120.0);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_NONE);
    EXPECT_STREQ(easycomm.command, "91");
    // Twenty-nine characters and the terminator: a whole word.
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_EL);
    EXPECT_EQ(strlen(easycomm.command), 29u);
    EXPECT_EQ(row24.el_tracking_enable, 1);
}

// A line that sends far faster than a word per poll is cut to its newest
// bytes, with a log line, so memory stays bounded and the last word is served
// within a few polls instead of hours late.
TEST_F(EasyCommLine, ChatteringLineKeepsOnlyItsNewestWords)
{
    // The kernel's own line buffer holds a few kilobytes: three of chatter
    // and the word behind them is a backlog far beyond a word per poll.
    std::string chatter;
    for (int i = 0; i < 1000; i++)
    {
        chatter += "XY ";
    }
    pty.send(chatter + "AZ77 ");
    for (int64_t end = clock_monotonic_ms() + 2000;
         clock_monotonic_ms() < end && serial_input_pending(&easycomm.link) < (int)chatter.size() + 5;)
    {
        serial_wait_readable(&easycomm.link, 5);
    }
    ASSERT_GT(serial_input_pending(&easycomm.link), EASYCOMM_BACKLOG);
    LogCapture log;
    int polls = 0;
    for (; polls < 400 && row24.az_tracking_enable == 0; polls++)
    {
        easycomm_poll(&easycomm);
        EXPECT_LE(serial_input_pending(&easycomm.link), EASYCOMM_BACKLOG);
    }
    EXPECT_DOUBLE_EQ(row24.az, 77.0);
    EXPECT_LT(polls, EASYCOMM_BACKLOG / 3) << "no more words than the kept bytes hold";
    EXPECT_TRUE(log.contains("backlog dropped"));
}

// A query ended with a line feed is answered with one; the words of a line
// answer together, and the line's feed ends them. Hamlib's EasyComm backend
// reads so.
TEST_F(EasyCommLine, LineFeedQueriesAreAnsweredWithALineFeed)
{
    say("AZ\n");
    EXPECT_EQ(pty.receive(2000), "AZ123.4 \n");
    say("VE\n");
    EXPECT_EQ(pty.receive(2000), "002\r\n");
    say("VE\r");
    EXPECT_EQ(pty.receive(2000), "002\r") << "the protocol's bytes for any other end";
    pty.send("AZ EL \n");
    for (int i = 0; i < 3; i++)
    {
        serial_wait_readable(&easycomm.link, 200);
        easycomm_cycle_step();
    }
    std::string reply = pty.receive(2000);
    reply += reply.size() < 16 ? pty.receive(500) : "";
    EXPECT_EQ(reply, "AZ123.4 EL10.0 \n");
}

// Hamlib's own client with its EasyComm II backend on the far end of the
// null modem, against the simulated mount.
TEST_F(EasyCommLine, HamlibEasyCommClientReadsThePosition)
{
    if (!peer_rotctl_installed())
    {
        GTEST_SKIP() << "Hamlib's rotctl is not installed (package libhamlib-utils)";
    }
    DriveSim sim;
    drive_test_settings();
    drive_sim_start(&sim);
    sim.station.mount.az = 181.5;
    sim.station.mount.el = 22.7;
    std::string out = std::string(test_home()) + "/rotctl202.out";
    int pid = peer_spawn_rotctl({"-m", "202", "-r", pty.far_name, "-s", "9600", "P", "120.0", "30.0", "p", "S"}, out);
    int status = -1;
    for (int64_t end = clock_monotonic_ms() + 20000;
         clock_monotonic_ms() < end && waitpid(pid, &status, WNOHANG) != pid;)
    {
        serial_wait_readable(&easycomm.link, 5);
        easycomm_cycle_step();
        drive_sim_tick(&sim);
    }
    drive_sim_stop();
    std::string output = test_read_file(out);
    ASSERT_TRUE(WIFEXITED(status)) << output;
    EXPECT_EQ(WEXITSTATUS(status), 0) << output;
    EXPECT_NE(output.find("181.50\n22.70"), std::string::npos) << output;
    EXPECT_DOUBLE_EQ(row24.az, 120.0);
    EXPECT_EQ(row24.az_tracking_enable, 0) << "S stopped the azimuth";
}
