#include "remote/easycomm.h"

#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "pty_pair.h"
#include "support/test_env.h"

#include <QSerialPort>
#include <cstring>
#include <gtest/gtest.h>

static const SourceRecord &row24 = source_table[SOURCE_EASYCOMM];

class EasyCommParse : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }
    int parse(const char *word)
    {
        memset(easycomm.reply, 0, sizeof easycomm.reply);
        return easycomm_parse(&easycomm, word);
    }
};

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
    {"EL", EASYCOMM_EL, 0.0, 0.0, 0, 0, "", "the same for elevation"},
    {"AZ180.0", EASYCOMM_AZ, 180.0, 0.0, 1, 0, "", "a position sets its axis alone and is not answered"},
    {"EL45.5", EASYCOMM_EL, 0.0, 45.5, 0, 1, "", "the same for elevation"},
    {"VE", EASYCOMM_VE, 0.0, 0.0, 0, 0, "002\r", "the version is answered at once"},
    {"AZIMUTH10", EASYCOMM_AZ, 0.0, 0.0, 1, 0, "", "two letters match: the number text IMUTH10 reads as 0"},
    {"MLx", 8, 0.0, 0.0, 0, 0, "", "a word of the table that does nothing here"},
    {"az120", EASYCOMM_NONE, 0.0, 0.0, 0, 0, "", "lower case matches nothing"},
    {"A", EASYCOMM_NONE, 0.0, 0.0, 0, 0, "", "one letter matches nothing"},
    {"", EASYCOMM_NONE, 0.0, 0.0, 0, 0, "", "nothing matches nothing"},
};

TEST_F(EasyCommParse, Rows)
{
    for (const EasyCommRow &row : easycomm_rows)
    {
        SetUp();
        EXPECT_EQ(parse(row.word), row.code) << row.why;
        EXPECT_DOUBLE_EQ(row24.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row24.el, row.el) << row.why;
        EXPECT_EQ(row24.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row24.el_tracking_enable, row.el_enable) << row.why;
        EXPECT_STREQ(easycomm.reply, row.reply) << row.why;
    }
}

TEST_F(EasyCommParse, StopWordsDropOneAxisEach)
{
    parse("AZ10");
    parse("EL20");
    EXPECT_EQ(parse("SA"), EASYCOMM_SA);
    EXPECT_EQ(row24.az_tracking_enable, 0);
    EXPECT_EQ(row24.el_tracking_enable, 1);
    EXPECT_EQ(parse("SE"), EASYCOMM_SE);
    EXPECT_EQ(row24.el_tracking_enable, 0);
    parse("AZ");
    EXPECT_EQ(row24.az_tracking_enable, 0) << "a query does not bring the axis back";
    parse("AZ11");
    EXPECT_EQ(row24.az_tracking_enable, 1);
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
        easycomm.link.port->waitForReadyRead(2000);
        easycomm_cycle_step();
    }
    PtyPair pty;
};

TEST_F(EasyCommLine, QueryAnswersTheAntennaWithOneDecimalAndABlank)
{
    say("AZ ");
    EXPECT_EQ(pty.receive(2000), "AZ123.4 ");
    say("EL\r");
    EXPECT_EQ(pty.receive(2000), "EL10.0 ");
}

TEST_F(EasyCommLine, PositionIsShownAndNotAnswered)
{
    say("AZ180.0 ");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 180.00");
    say("EL45\n");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_ELEVATION], "  45.00");
    // The first bytes back belong to this query: the two sets had none.
    say("AZ ");
    EXPECT_EQ(pty.receive(2000), "AZ123.4 ");
}

TEST_F(EasyCommLine, OneWordPerPoll)
{
    pty.send("AZ120 EL45\n");
    easycomm.link.port->waitForReadyRead(2000);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_AZ);
    EXPECT_EQ(row24.el_tracking_enable, 0);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_EL);
    EXPECT_DOUBLE_EQ(row24.el, 45.0);
}

TEST_F(EasyCommLine, VersionGetsItsAnswerAndTheStatusBar)
{
    say("VE\r");
    EXPECT_EQ(pty.receive(2000), "002\r");
    EXPECT_STREQ(panel_last_status, "VE");
}

TEST_F(EasyCommLine, LowerCaseReachesOnlyTheStatusBar)
{
    say("az120 ");
    EXPECT_STREQ(panel_last_status, "az120");
    EXPECT_EQ(row24.az_tracking_enable, 0);
}

TEST_F(EasyCommLine, StopAzimuthHaltsItsMotorAndLeavesElevation)
{
    say("AZ10 ");
    say("EL20 ");
    az_direction = DIR_RIGHT;
    el_direction = DIR_UP;
    say("SA ");
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(el_direction, DIR_UP);
    EXPECT_EQ(row24.az_tracking_enable, 0);
    EXPECT_EQ(row24.el_tracking_enable, 1);
    say("SE ");
    EXPECT_EQ(el_direction, DIR_STOPPED);
}

TEST_F(EasyCommLine, LongWordIsCutAndItsRestBeginsTheNext)
{
    pty.send("AZ" + std::string(28, '9') + "1 ");
    easycomm.link.port->waitForReadyRead(2000);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_NONE);
    EXPECT_EQ(strlen(easycomm.command), 29u);
    EXPECT_EQ(row24.az_tracking_enable, 0);
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_NONE);
    EXPECT_STREQ(easycomm.command, "91");
}

TEST_F(EasyCommLine, SilentLineEndsTheWordUnfinished)
{
    // A controller that stops in mid word costs this poll its thousand empty
    // reads, about a second, and the fragment reaches the status bar.
    say("AZ12");
    EXPECT_STREQ(easycomm.command, "AZ12");
    EXPECT_STREQ(panel_last_status, "AZ12");
    EXPECT_EQ(row24.az_tracking_enable, 0);
}

TEST(EasyCommLink, StartAndStopDropTheEnables)
{
    test_reset_state();
    source_table[SOURCE_EASYCOMM].az_tracking_enable = 1;
    source_table[SOURCE_EASYCOMM].el_tracking_enable = 1;
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, "/dev/no-such-port");
    easycomm_start(&easycomm);
    EXPECT_EQ(easycomm.active, 0) << "a port that does not open leaves the link inactive";
    EXPECT_EQ(row24.az_tracking_enable, 0);
    EXPECT_EQ(row24.el_tracking_enable, 0);
    source_table[SOURCE_EASYCOMM].az_tracking_enable = 1;
    easycomm.active = 1;
    EXPECT_EQ(easycomm_poll(&easycomm), EASYCOMM_NONE) << "active with the port closed polls nothing";
    easycomm_stop(&easycomm);
    EXPECT_EQ(easycomm.active, 0);
    EXPECT_EQ(row24.az_tracking_enable, 0);
}

class EasyCommSettings : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
    }
    std::string file(void)
    {
        char path[1024];
        settings_path("Morvane.ini", path, sizeof path);
        return test_read_file(path);
    }
};

TEST_F(EasyCommSettings, MissingSectionGivesTheDefaults)
{
    easycomm_load_settings("Morvane.ini", &easycomm);
    EXPECT_EQ(easycomm.active, 1);
    EXPECT_EQ(easycomm.debug, 1);
    EXPECT_EQ(easycomm.link.Port, 1);
    EXPECT_STREQ(easycomm.link.PortName, "/dev/ttyS0");
    EXPECT_EQ(easycomm.link.BaudRate, 3);
    EXPECT_EQ(easycomm.link.DataBits, 1);
    EXPECT_EQ(easycomm.link.StopBits, 0);
    EXPECT_EQ(easycomm.link.Parity, 0);
    EXPECT_EQ(easycomm.link.FlowControl, 0);
}

TEST_F(EasyCommSettings, SaveWritesTheWordsAndKeepsTheOtherSections)
{
    SaveSettings("Morvane.ini", &settings);
    easycomm.active = 0;
    easycomm.debug = 0;
    easycomm.link.Port = 2;
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, "/dev/ttyUSB1");
    easycomm.link.BaudRate = 4;
    easycomm.link.DataBits = 0;
    easycomm.link.StopBits = 1;
    easycomm.link.Parity = 3;
    easycomm.link.FlowControl = 3;
    easycomm_save_settings("Morvane.ini", &easycomm);
    std::string text = file();
    EXPECT_NE(text.find("[HOME_DATA]"), std::string::npos);
    EXPECT_NE(text.find("[EASYCOMM]\nEasyCommActive=0\nEasyCommDebug=0\nPort=2\nPortName=/dev/ttyUSB1\n"
                        "BaudRate=14400\nDataBits=7\nStopBits=1.5\nParity=Mark\nFlowControl=Custom\n"),
              std::string::npos)
        << text;

    memset(&easycomm, 0, sizeof easycomm);
    easycomm_load_settings("Morvane.ini", &easycomm);
    EXPECT_EQ(easycomm.active, 0);
    EXPECT_EQ(easycomm.link.BaudRate, 4);
    EXPECT_EQ(easycomm.link.DataBits, 0);
    EXPECT_EQ(easycomm.link.StopBits, 1);
    EXPECT_EQ(easycomm.link.Parity, 3);
    EXPECT_EQ(easycomm.link.FlowControl, 3);
    // A full save of the main settings leaves the section alone.
    SaveSettings("Morvane.ini", &settings);
    EXPECT_NE(file().find("FlowControl=Custom"), std::string::npos);
}
