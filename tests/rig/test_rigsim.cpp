// The simulator answers by the published CI-V and Kenwood layouts; these
// cases pin it to those layouts, apart from the engine it is used to test.
#include "rigsim/rigsim_cat.h"
#include "rigsim/rigsim_civ.h"
#include "rigsim/rigsim_radio.h"

#include "rigsim/rigsim_pty.h"

#include <QElapsedTimer>
#include <fcntl.h>
#include <QProcess>
#include <QThread>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>
#include <string>
#include <vector>

typedef std::vector<uint8_t> Bytes;

static Bytes civ(RigsimRadio *radio, Bytes frame)
{
    uint8_t reply[64];
    int n = rigsim_civ_reply(radio, frame.data(), (int)frame.size(), reply, sizeof reply);
    return Bytes(reply, reply + n);
}

static std::string cat(RigsimRadio *radio, const char *command)
{
    char reply[64];
    int n = rigsim_cat_reply(radio, command, reply, sizeof reply);
    return std::string(reply, (size_t)n);
}

class RigsimCiv : public ::testing::Test
{
  protected:
    RigsimRadio radio;
    void SetUp() override
    {
        rigsim_radio_init(&radio, RIGSIM_CIV);
    }
};

TEST_F(RigsimCiv, FiveBcdBytesLowestFirstForSelectedAndUnselectedVfo)
{
    uint8_t bcd[5];
    rigsim_civ_put_frequency(144123456, bcd);
    EXPECT_EQ(Bytes(bcd, bcd + 5), (Bytes{0x56, 0x34, 0x12, 0x44, 0x01}));
    EXPECT_EQ(rigsim_civ_get_frequency(bcd), 144123456);
    radio.vfo[0] = 1296000000;
    radio.vfo[1] = 144000000;
    EXPECT_EQ(civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x25, 0x00, 0xFD}),
              (Bytes{0xFE, 0xFE, 0xE0, 0xA2, 0x25, 0x00, 0x00, 0x00, 0x00, 0x96, 0x12, 0xFD}));
    EXPECT_EQ(civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x25, 0x01, 0x01, 0x00, 0x00, 0x44, 0x01, 0xFD}),
              (Bytes{0xFE, 0xFE, 0xE0, 0xA2, 0xFB, 0xFD}));
    EXPECT_EQ(radio.vfo[1], 144000001);
    // With B in use, "selected" is B.
    civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x07, 0x01, 0xFD});
    EXPECT_EQ(civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x03, 0xFD})[5], 0x01);
    // Only its own address is answered; what it does not know is refused.
    EXPECT_TRUE(civ(&radio, {0xFE, 0xFE, 0x94, 0xE0, 0x03, 0xFD}).empty());
    EXPECT_EQ(civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x7F, 0xFD}), (Bytes{0xFE, 0xFE, 0xE0, 0xA2, 0xFA, 0xFD}));
    // A transceive announcement sets, and is not answered.
    EXPECT_TRUE(civ(&radio, {0xFE, 0xFE, 0x00, 0xE0, 0x00, 0x00, 0x00, 0x00, 0x32, 0x04, 0xFD}).empty());
    EXPECT_EQ(radio.vfo[1], 432000000); // into the VFO in use
}

TEST(RigsimCat, FrequencyReadSetAndStatus)
{
    RigsimRadio radio;
    rigsim_radio_init(&radio, RIGSIM_CAT);
    radio.vfo[1] = 432065000;
    EXPECT_EQ(cat(&radio, "FB;"), "FB00432065000;");
    EXPECT_EQ(cat(&radio, "FA00144100000;"), "");
    EXPECT_EQ(radio.vfo[0], 144100000);
    EXPECT_EQ(cat(&radio, "FA1441;"), "?;");
    EXPECT_EQ(cat(&radio, "ZZ;"), "?;");

    radio.transmit = 1;
    radio.split = 1;
    std::string status = cat(&radio, "IF;");
    ASSERT_EQ(status.size(), 38u);
    EXPECT_EQ(status.substr(0, 13), "IF00144100000");
    // Transmitting, CW, VFO A, split, by the published field positions.
    EXPECT_EQ((std::string{status[28], status[29], status[30], status[32], status[37]}), "1301;");
}

TEST(RigsimRadio, DialAndStatus)
{
    RigsimRadio radio;
    rigsim_radio_init(&radio, RIGSIM_CAT);
    char reply[64];
    EXPECT_EQ(rigsim_control(&radio, "rate a 20", reply, sizeof reply), 0);
    rigsim_advance(&radio, 150);
    rigsim_advance(&radio, 150);
    rigsim_advance(&radio, 50);
    EXPECT_NE(rigsim_control(&radio, "freq c 1", reply, sizeof reply), 0);

    // The faults themselves show in the engine's tests, which fail if a reply comes through whole.
    rigsim_control(&radio, "silent 1", reply, sizeof reply);
    rigsim_control(&radio, "status", reply, sizeof reply);
    EXPECT_EQ(std::string(reply).rfind("OK A=144000007 B=144000000 SEL=a SILENT=1", 0), 0u) << reply;
}

// Control lines written together are all served at once, not the last one
// held back until more input comes.
TEST(RigsimProgram, ControlLinesWrittenTogetherAreAllApplied)
{
    const char *bin = getenv("MORVANE_BIN");
    ASSERT_NE(bin, nullptr);
    QProcess sim;
    sim.start(QString::fromUtf8(bin) + "/morvane-rigsim", {});
    ASSERT_TRUE(sim.waitForStarted(5000));
    ASSERT_TRUE(sim.waitForReadyRead(5000)); // its PTY line
    sim.write("freq a 5760100000\nstatus\n");
    QByteArray out;
    QElapsedTimer deadline;
    deadline.start();
    while (out.indexOf("A=5760100000") < 0 && deadline.elapsed() < 5000)
    {
        sim.waitForReadyRead(100);
        out += sim.readAllStandardOutput();
    }
    EXPECT_GE(out.indexOf("OK A=5760100000"), 0) << out.toStdString();
    sim.write("quit\n");
    EXPECT_TRUE(sim.waitForFinished(5000));
}

// A simulator left running keeps only the newest frames.
TEST(RigsimProgram, FrameRecordIsBounded)
{
    RigsimPty sim;
    ASSERT_EQ(rigsim_start(&sim, RIGSIM_CAT), 0);
    int line = open(sim.path, O_RDWR | O_NOCTTY);
    ASSERT_GE(line, 0);
    std::string commands;
    for (int i = 0; i < RIGSIM_FRAME_RECORD; i++)
    {
        commands += "ID;";
    }
    ASSERT_EQ(write(line, commands.data(), commands.size()), (ssize_t)commands.size());
    char reply[4096];
    QElapsedTimer deadline;
    deadline.start();
    while (rigsim_command(&sim, "status").find("IN=1024 ") == std::string::npos && deadline.elapsed() < 10000)
    {
        ssize_t n = read(line, reply, sizeof reply);
        (void)n;
    }
    std::vector<std::string> frames = rigsim_frames(&sim);
    EXPECT_LE(frames.size(), (size_t)RIGSIM_FRAME_RECORD);
    EXPECT_EQ(sim.frames_recorded, 2 * RIGSIM_FRAME_RECORD);
    EXPECT_EQ(frames.back(), "< ID019;");
    close(line);
    rigsim_stop(&sim);
}
