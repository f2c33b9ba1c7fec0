// The simulator answers by the published CI-V and Kenwood layouts; these
// cases pin it to those layouts, apart from the engine it is used to test.
#include "rigsim/rigsim_cat.h"
#include "rigsim/rigsim_civ.h"
#include "rigsim/rigsim_radio.h"

#include <cstring>
#include <gtest/gtest.h>
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

TEST_F(RigsimCiv, FrequencyIsFiveBcdBytesLowestFirst)
{
    uint8_t bcd[5];
    rigsim_civ_put_frequency(1296000000, bcd);
    EXPECT_EQ(Bytes(bcd, bcd + 5), (Bytes{0x00, 0x00, 0x00, 0x96, 0x12}));
    EXPECT_EQ(rigsim_civ_get_frequency(bcd), 1296000000);
    rigsim_civ_put_frequency(144123456, bcd);
    EXPECT_EQ(Bytes(bcd, bcd + 5), (Bytes{0x56, 0x34, 0x12, 0x44, 0x01}));
}

TEST_F(RigsimCiv, ReadsAndSetsSelectedAndUnselectedVfo)
{
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
}

TEST_F(RigsimCiv, AnswersOnlyItsOwnAddressAndRefusesWhatItDoesNotKnow)
{
    EXPECT_TRUE(civ(&radio, {0xFE, 0xFE, 0x94, 0xE0, 0x03, 0xFD}).empty());
    EXPECT_EQ(civ(&radio, {0xFE, 0xFE, 0xA2, 0xE0, 0x7F, 0xFD}), (Bytes{0xFE, 0xFE, 0xE0, 0xA2, 0xFA, 0xFD}));
    // A transceive announcement sets, and is not answered.
    EXPECT_TRUE(civ(&radio, {0xFE, 0xFE, 0x00, 0xE0, 0x00, 0x00, 0x00, 0x00, 0x32, 0x04, 0xFD}).empty());
    EXPECT_EQ(radio.vfo[0], 432000000);
}

TEST_F(RigsimCiv, StreamFindsFramesInNoise)
{
    RigsimCivStream stream = {};
    Bytes line = {0x11, 0xFE, 0x22, 0xFE, 0xFE, 0xA2, 0xE0, 0xFE, 0xFE, 0xA2, 0xE0, 0x03, 0xFD};
    std::vector<int> done;
    for (uint8_t b : line)
    {
        done.push_back(rigsim_civ_feed(&stream, b));
    }
    EXPECT_EQ(done.back(), 6);
    EXPECT_EQ(Bytes(stream.frame, stream.frame + 6), (Bytes{0xFE, 0xFE, 0xA2, 0xE0, 0x03, 0xFD}));
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
    EXPECT_EQ(status[28], '1'); // transmitting
    EXPECT_EQ(status[29], '3'); // CW
    EXPECT_EQ(status[30], '0'); // VFO A
    EXPECT_EQ(status[32], '1'); // split
    EXPECT_EQ(status[37], ';');
}

TEST(RigsimCat, StreamSplitsAtSemicolons)
{
    RigsimCatStream stream = {};
    std::vector<std::string> commands;
    for (char c : std::string("FR0;\r\nFT1;"))
    {
        if (rigsim_cat_feed(&stream, c))
        {
            commands.push_back(stream.command);
        }
    }
    EXPECT_EQ(commands, (std::vector<std::string>{"FR0;", "FT1;"}));
}

TEST(RigsimRadio, FaultsAndTheDial)
{
    RigsimRadio radio;
    rigsim_radio_init(&radio, RIGSIM_CAT);
    char reply[64];
    EXPECT_EQ(rigsim_control(&radio, "rate a 20", reply, sizeof reply), 0);
    rigsim_advance(&radio, 150);
    rigsim_advance(&radio, 150);
    rigsim_advance(&radio, 50);
    EXPECT_EQ(radio.vfo[0], 144000007);
    EXPECT_EQ(radio.vfo[1], 144000000);
    EXPECT_NE(rigsim_control(&radio, "freq c 1", reply, sizeof reply), 0);

    uint8_t bytes[64];
    memcpy(bytes, "FA00144000000;", 14);
    rigsim_control(&radio, "garble 1", reply, sizeof reply);
    EXPECT_EQ(rigsim_apply_faults(&radio, RIGSIM_CAT, bytes, 14, sizeof bytes), 14);
    EXPECT_NE(bytes[1], 'A');
    rigsim_control(&radio, "cut 1", reply, sizeof reply);
    EXPECT_EQ(rigsim_apply_faults(&radio, RIGSIM_CAT, bytes, 14, sizeof bytes), 13);
    EXPECT_EQ(rigsim_apply_faults(&radio, RIGSIM_CAT, bytes, 14, sizeof bytes), 14);
    rigsim_control(&radio, "noise 80", reply, sizeof reply);
    EXPECT_EQ(rigsim_apply_faults(&radio, RIGSIM_CAT, bytes, 14, sizeof bytes), 64);
    EXPECT_EQ(memchr(bytes, ';', 64), nullptr);
    rigsim_control(&radio, "silent 1", reply, sizeof reply);
    EXPECT_EQ(rigsim_apply_faults(&radio, RIGSIM_CAT, bytes, 14, sizeof bytes), 0);
    rigsim_control(&radio, "status", reply, sizeof reply);
    EXPECT_EQ(std::string(reply).rfind("OK A=144000007 B=144000000 SEL=a SILENT=1", 0), 0u) << reply;
}
