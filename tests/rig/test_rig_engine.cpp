#include "rig/rig_engine.h"

#include "core/settings.h"
#include "rig/rig_log.h"
#include "rig_sim_fixture.h"
#include "rig_test_files.h"

#include <QElapsedTimer>
#include <string>

static RigValue value(int start, int length, int format, int param)
{
    RigValue v = {};
    v.start = start;
    v.length = length;
    v.format = format;
    v.param = param;
    return v;
}

static std::string text_of(RigValue v, std::vector<uint8_t> reply)
{
    char text[RIG_TEXT_SIZE];
    rig_value_text(&v, reply.data(), (int)reply.size(), text, sizeof text);
    return text;
}

TEST(RigDecode, BcdTextsInReplyOrderAndReversed)
{
    std::vector<uint8_t> reply = {0xFE, 0x00, 0x00, 0x00, 0x96, 0x12, 0xFD};
    EXPECT_EQ(text_of(value(1, 5, vfBcdLU, pmFreqA), reply), "1296000000");
    EXPECT_EQ(text_of(value(1, 5, vfBcdBU, pmFreqA), reply), "0000009612");
    EXPECT_EQ(text_of(value(4, 1, vfBcdLU, pmFreqA), reply), "96"); // one byte: nothing to reverse
    EXPECT_EQ(text_of(value(3, 5, vfBcdLU, pmFreqA), reply), "");   // runs past the end
    EXPECT_EQ(text_of(value(1, 0, vfText, pmFreqA), reply), "");
    EXPECT_EQ(text_of(value(2, 3, vfText, pmFreqA), {'F', 'A', '1', '4', '4', ';'}), "144");
}

TEST(RigDecode, FormatsWithoutTextLeaveTheParameterAlone)
{
    test_reset_state();
    RigCommand record = {};
    record.values[0] = value(0, 2, vfBinL, pmFreqA);
    record.values[1] = value(0, 2, vfYaesu, pmFreqB);
    record.values[2] = value(0, 2, vfText, pmTx); // a row with no text of its own
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "144000000");
    uint8_t reply[] = {'1', '2'};
    EXPECT_EQ(rig_decode_reply(&record, reply, 2, nullptr), 0);
    EXPECT_STREQ(rig_param_text[pmFreqA], "144000000");
    EXPECT_STREQ(rig_param_text[pmFreqB], "");
}

TEST(RigDecode, ValidateWildcards)
{
    RigCommand hex = {};
    hex.is_hex = 1;
    hex.validate_length = 4;
    memcpy(hex.validate, "\xFE\x00\xE0\xFD", 4);
    EXPECT_EQ(rig_validate_reply(&hex, (const uint8_t *)"\xFE\x77\xE0\xFD", 4), 1);
    EXPECT_EQ(rig_validate_reply(&hex, (const uint8_t *)"\xFE\x77\xE1\xFD", 4), 0);

    RigCommand ascii = {};
    ascii.validate_length = 5;
    memcpy(ascii.validate, "FA..;", 5);
    EXPECT_EQ(rig_validate_reply(&ascii, (const uint8_t *)"FA12;", 5), 1);
    EXPECT_EQ(rig_validate_reply(&ascii, (const uint8_t *)"FB12;", 5), 0);
    // In a hex pattern a '.' byte is just 2E, not a wildcard.
    hex.validate[1] = '.';
    EXPECT_EQ(rig_validate_reply(&hex, (const uint8_t *)"\xFE\x77\xE0\xFD", 4), 0);
}

TEST(RigDecode, Flags)
{
    test_reset_state();
    RigCommand ascii = {};
    RigFlag *f = &ascii.flags[0];
    f->bits_length = f->mask_length = 4;
    memcpy(f->bits, "..1.", 4);
    memcpy(f->mask, "..1.", 4);
    f->param = pmTx;
    ascii.flags[1] = *f;
    ascii.flags[1].param = pmSplitOn;
    ascii.flags[1].bits_length = 9; // longer than the reply: not tested
    rig_flag_state[pmSplitOn] = 7;
    rig_decode_reply(&ascii, (const uint8_t *)"IF1;", 4, nullptr);
    EXPECT_EQ(rig_flag_state[pmTx], 1);
    EXPECT_EQ(rig_flag_state[pmSplitOn], 7);
    rig_decode_reply(&ascii, (const uint8_t *)"IF0;", 4, nullptr);
    EXPECT_EQ(rig_flag_state[pmTx], 0);

    RigCommand hex = {};
    hex.is_hex = 1;
    hex.flags[0].bits_length = hex.flags[0].mask_length = 2;
    memcpy(hex.flags[0].mask, "\x00\x0F", 2);
    memcpy(hex.flags[0].bits, "\x00\x01", 2);
    hex.flags[0].param = pmSplitOn;
    rig_decode_reply(&hex, (const uint8_t *)"\x99\xF1", 2, nullptr);
    EXPECT_EQ(rig_flag_state[pmSplitOn], 1);
}

TEST(RigEncode, FrequencyIntoTheCode)
{
    RigCommand bcd = {};
    bcd.is_hex = 1;
    bcd.code_length = 12;
    bcd.values[0] = value(6, 5, vfBcdLU, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&bcd, 1296000000), 0);
    EXPECT_EQ(std::vector<uint8_t>(bcd.code + 6, bcd.code + 11), (std::vector<uint8_t>{0x00, 0x00, 0x00, 0x96, 0x12}));

    RigCommand text = {};
    text.code_length = 14;
    memcpy(text.code, "FA...........;", 14);
    text.values[0] = value(2, 11, vfText, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&text, 144000123), 0);
    EXPECT_EQ(std::string((const char *)text.code, 14), "FA00144000123;");
    text.values[0].length = 4; // too short a field keeps the low digits
    rig_encode_frequency(&text, 144000123);
    EXPECT_EQ(std::string((const char *)text.code, 14), "FA01234000123;");

    text.values[0].format = vfBcdBU;
    EXPECT_EQ(rig_encode_frequency(&text, 1), -1);
    text.values[0].length = 0;
    EXPECT_EQ(rig_encode_frequency(&text, 1), 1);
    RigCommand empty = {};
    empty.values[0] = value(2, 11, vfText, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&empty, 1), 1);
}

TEST(RigGetters, TextToHertz)
{
    test_reset_state();
    int32_t hz = 5;
    EXPECT_EQ(rig_get_freq_a(&hz), 1);
    EXPECT_EQ(hz, 5);
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "00144000000");
    EXPECT_EQ(rig_get_freq_a(&hz), 0);
    EXPECT_EQ(hz, 144000000);
    // Bytes that are not decimal BCD give a text that starts with a letter.
    RigCommand record = {};
    record.is_hex = 1;
    record.values[0] = value(0, 5, vfBcdLU, pmFreqB);
    const uint8_t reply[5] = {0x00, 0x00, 0x00, 0x96, 0xA2};
    rig_decode_reply(&record, reply, 5, nullptr);
    EXPECT_STREQ(rig_param_text[pmFreqB], "A296000000");
    EXPECT_EQ(rig_get_freq_b(&hz), 0);
    EXPECT_EQ(hz, 0);
}

class RigEngineCiv : public RigSimTest
{
  protected:
    void SetUp() override
    {
        start(RIGSIM_CIV);
        rig_load_path(rig_test_own_file("Simulator CI-V.ini").c_str(), 0);
        rigsim_command(&sim, "freq a 1296000000");
        rigsim_command(&sim, "freq b 1296000500");
    }
};

TEST_F(RigEngineCiv, InitThenPollReadsBothVfos)
{
    EXPECT_EQ(rig_send_init(), 0);
    rig_poll_status();
    int32_t a = 0, b = 0;
    ASSERT_EQ(rig_get_freq_a(&a), 0);
    ASSERT_EQ(rig_get_freq_b(&b), 0);
    EXPECT_EQ(a, 1296000000);
    EXPECT_EQ(b, 1296000500);
    EXPECT_EQ(rig_flag_state[pmCW_L], 1);
    EXPECT_EQ(rig_flag_state[pmSplitOff], 1);
}

TEST_F(RigEngineCiv, WriteReachesTheRadio)
{
    EXPECT_EQ(rig_set_freq_b(1295999000), 0);
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1295999000);
    EXPECT_EQ(rig_set_freq_a(432100000), 0);
    EXPECT_EQ(rigsim_vfo(&sim, 0), 432100000);
}

TEST_F(RigEngineCiv, ReplyOneByteShortIsNotTaken)
{
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "1");
    rigsim_command(&sim, "cut 1");
    uint8_t reply[RIG_REPLY_SIZE];
    EXPECT_EQ(rig_issue_command(&rig_status[1], reply), 0);
    EXPECT_STREQ(rig_param_text[pmFreqA], "1");
    // Its bytes are dropped before the next command, which reads cleanly.
    rig_issue_command(&rig_status[1], reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "1296000000");
}

TEST_F(RigEngineCiv, GarbledReplyFailsValidation)
{
    snprintf(rig_param_text[pmFreqB], RIG_TEXT_SIZE, "7");
    rigsim_command(&sim, "garble 1");
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[2], reply);
    EXPECT_STREQ(rig_param_text[pmFreqB], "7");
}

TEST_F(RigEngineCiv, SilentRadioKeepsTheLastReading)
{
    rig_poll_status();
    rigsim_command(&sim, "silent 1");
    rigsim_command(&sim, "freq a 1");
    QElapsedTimer timer;
    timer.start();
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[1], reply);
    EXPECT_GE(timer.elapsed(), 1500); // the engine waited its periods out
    int32_t a = 0;
    EXPECT_EQ(rig_get_freq_a(&a), 0);
    EXPECT_EQ(a, 1296000000);
}

TEST_F(RigEngineCiv, DebugLogOfOneExchange)
{
    rig_debug = 1;
    rig_log_close(rig_log_open("w"));
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[1], reply);
    char path[600];
    settings_path("OmniRigDebug.log", path, sizeof path);
    std::string log = test_read_file(path);
    EXPECT_NE(log.find("Command( 7)  :FEFEA2E02500FD\n"
                       "Reply(19)    :FEFEA2E02500FDFEFEE0A225000000009612FD\n"
                       "Validate(19) :FEFEA2E02500FDFEFEE0A225000000000000FD\n"
                       "pmFreqA: 1296000000\n\n"),
              std::string::npos)
        << log;
}

class RigEngineCat : public RigSimTest
{
  protected:
    void SetUp() override
    {
        start(RIGSIM_CAT);
        rig_load_path(rig_test_own_file("Simulator Kenwood.ini").c_str(), 0);
        rigsim_command(&sim, "freq a 144100000");
        rigsim_command(&sim, "freq b 144100200");
    }
};

TEST_F(RigEngineCat, TerminatedRepliesAndWritesWithoutReply)
{
    rig_send_init();
    rig_poll_status();
    int32_t a = 0, b = 0;
    ASSERT_EQ(rig_get_freq_a(&a), 0);
    ASSERT_EQ(rig_get_freq_b(&b), 0);
    EXPECT_EQ(a, 144100000);
    EXPECT_EQ(b, 144100200);
    EXPECT_EQ(rig_flag_state[pmRx], 1);
    EXPECT_EQ(rig_flag_state[pmCW_L], 1);

    // A write awaits nothing; it must still have reached the radio before the
    // next command clears the line.
    EXPECT_EQ(rig_set_freq_b(144099000), 0);
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[2], reply);
    EXPECT_STREQ(rig_param_text[pmFreqB], "00144099000");
}

TEST_F(RigEngineCat, WalksFromRecordZeroOrOneAndStopsAtAGap)
{
    rig_load_path(rig_test_write("gap.ini", "[INIT1]\nCommand=(ID;)\nReplyEnd=(;)\n"
                                            "[STATUS1]\nCommand=(FB;)\nReplyEnd=(;)\n"
                                            "[STATUS3]\nCommand=(FA;)\nReplyEnd=(;)\n")
                      .c_str(),
                  0);
    rig_send_init();
    rig_poll_status();
    std::vector<std::string> frames = rigsim_frames(&sim);
    std::vector<std::string> sent;
    for (const std::string &frame : frames)
    {
        if (frame[0] == '>')
        {
            sent.push_back(frame);
        }
    }
    EXPECT_EQ(sent, (std::vector<std::string>{"> ID;", "> FB;"}));
}

TEST_F(RigEngineCat, NoTerminatorWithin64BytesIsIncomplete)
{
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "9");
    rigsim_command(&sim, "noise 100");
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[1], reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "9");
    EXPECT_EQ(reply[63], 'a' + 63 % 26);
}

TEST_F(RigEngineCat, FixedLengthWinsOverTerminator)
{
    RigCommand record = rig_status[1];
    record.ReplyLength = 5; // "FA001": stops before the ';'
    record.validate_length = 0;
    record.values[1] = value(2, 3, vfText, pmFreqA);
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&record, reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "001");
}

class RigEngineRealFiles : public RigSimTest
{
};

TEST_F(RigEngineRealFiles, PublishedFilesDriveTheSimulator)
{
    std::string folder = rig_test_real_folder();
    if (folder.empty())
    {
        GTEST_SKIP() << "no published rig files beside the project";
    }
    start(RIGSIM_CIV);
    rig_load_path((folder + "/IC-9700.ini").c_str(), 0);
    rigsim_command(&sim, "freq a 1296050000");
    rig_send_init();
    rig_poll_status();
    int32_t a = 0;
    ASSERT_EQ(rig_get_freq_a(&a), 0);
    EXPECT_EQ(a, 1296050000);
    EXPECT_EQ(rig_set_freq_b(1296049000), 0);
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1296049000);
}

TEST_F(RigEngineRealFiles, KenwoodFileDrivesTheSimulator)
{
    std::string folder = rig_test_real_folder();
    if (folder.empty())
    {
        GTEST_SKIP() << "no published rig files beside the project";
    }
    start(RIGSIM_CAT);
    rig_load_path((folder + "/TS-2000.ini").c_str(), 0);
    rigsim_command(&sim, "freq b 50200000");
    rig_send_init();
    rig_poll_status();
    int32_t b = 0;
    ASSERT_EQ(rig_get_freq_b(&b), 0);
    EXPECT_EQ(b, 50200000);
    EXPECT_EQ(rig_set_freq_a(50201000), 0);
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[2], reply);
    EXPECT_EQ(rigsim_vfo(&sim, 0), 50201000);
}
