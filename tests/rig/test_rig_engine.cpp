#include "rig/rig_engine.h"

#include "core/settings.h"
#include "rig_sim_fixture.h"
#include "rig_test_files.h"

#include <poll.h>
#include <string>

static RigValue value(int start, int length, int format, int param)
{
    return RigValue{start, length, format, 1.0f, 0.0f, param};
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
    EXPECT_EQ(text_of(value(2, 3, vfText, pmFreqA), {'F', 'A', '1', '4', '4', ';'}), "144");
}

// Records read from rig file text, so the cases read as a rig file writes them.
static const RigCommand *records(const char *text)
{
    test_reset_state();
    rig_load_path(rig_test_write("records.ini", text).c_str(), 0);
    return rig_status;
}

static int valid(const RigCommand *record, const char *reply, int length)
{
    return rig_validate_reply(record, (const uint8_t *)reply, length);
}

TEST(RigDecode, ValidateWildcardsAndFlags)
{
    const RigCommand *r = records("[STATUS]\nCommand=FE\nValidate=FE00E0FD\n[STATUS1]\nCommand=(IF;)\nValidate=(FA..;)\n"
                                  "[STATUS2]\nCommand=FE\nValidate=FE2EE0FD\n[STATUS3]\nCommand=FE\nFlag1=000F|0001|pmSplitOn\n"
                                  "[STATUS4]\nCommand=(IF;)\nFlag1=(..1.)|pmTx\n");
    EXPECT_EQ(valid(&r[0], "\xFE\x77\xE0\xFD", 4), 1); // 00 matches any byte
    EXPECT_EQ(valid(&r[0], "\xFE\x77\xE1\xFD", 4), 0);
    EXPECT_EQ(valid(&r[1], "FA12;", 5), 1);
    EXPECT_EQ(valid(&r[1], "FB12;", 5), 0);
    EXPECT_EQ(valid(&r[2], "\xFE\x77\xE0\xFD", 4), 0); // in a hex pattern '.' is just 2E
    rig_decode_reply(&r[4], (const uint8_t *)"IF1;", 4, nullptr);
    EXPECT_EQ(rig_flag_state[pmTx], 1);
    rig_decode_reply(&r[4], (const uint8_t *)"IF0;", 4, nullptr);
    EXPECT_EQ(rig_flag_state[pmTx], 0);
    rig_decode_reply(&r[3], (const uint8_t *)"\x99\xF1", 2, nullptr);
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
    text.values[0].length = 4; // too many digits: a short field keeps the low ones
    rig_encode_frequency(&text, 144000123);
    EXPECT_EQ(std::string((const char *)text.code, 14), "FA01234000123;");
    text.values[0].format = vfBcdBU;
    EXPECT_EQ(rig_encode_frequency(&text, 1), -1);

    // The 10 GHz band, past what 32 bits hold, in eleven digits and in six BCD bytes.
    text.values[0] = value(2, 11, vfText, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&text, 10368100000LL), 0);
    EXPECT_EQ(std::string((const char *)text.code, 14), "FA10368100000;");
    bcd.values[0] = value(6, 6, vfBcdLU, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&bcd, 10368100000LL), 0);
    EXPECT_EQ(std::vector<uint8_t>(bcd.code + 6, bcd.code + 12),
              (std::vector<uint8_t>{0x00, 0x00, 0x10, 0x68, 0x03, 0x01}));
    // A place beyond the command's bytes is never written, nor sent.
    bcd.values[0] = value(10, 100, vfBcdLU, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&bcd, 1), 1);
    bcd.values[0] = value(2147483647, 5, vfBcdLU, pmFreq);
    EXPECT_EQ(rig_encode_frequency(&bcd, 1), 1);
}

TEST(RigGetters, DecimalTextsToHertzAndNonBcdRepliesRefused)
{
    test_reset_state();
    int64_t hz = 5;
    EXPECT_EQ(rig_get_freq_a(&hz), 1);
    EXPECT_EQ(hz, 5);
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "00144000000");
    EXPECT_EQ(rig_get_freq_a(&hz), 0);
    EXPECT_EQ(hz, 144000000);
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "10368100000");
    EXPECT_EQ(rig_get_freq_a(&hz), 0);
    EXPECT_EQ(hz, 10368100000LL);
    // A byte that is not two decimal digits refuses the whole reply: the
    // last good reading stays, and no 4294 MHz is made of it.
    RigCommand record = {};
    record.is_hex = 1;
    record.values[0] = value(0, 5, vfBcdLU, pmFreqB);
    snprintf(rig_param_text[pmFreqB], RIG_TEXT_SIZE, "1296000000");
    const uint8_t reply[5] = {0x00, 0x00, 0x00, 0x96, 0xA2};
    EXPECT_EQ(rig_decode_reply(&record, reply, 5, nullptr), 1);
    EXPECT_STREQ(rig_param_text[pmFreqB], "1296000000");
    snprintf(rig_param_text[pmFreqB], RIG_TEXT_SIZE, "A296000000");
    EXPECT_EQ(rig_get_freq_b(&hz), 1);
    // A start near the largest int must not wrap past the bounds check.
    EXPECT_EQ(text_of(value(2147483647, 5, vfText, pmFreqA), {'F', 'A', '1'}), "");
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

TEST_F(RigEngineCiv, ReplyOneByteShortOrGarbledIsNotTaken)
{
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "1");
    rigsim_command(&sim, "cut 1");
    uint8_t reply[RIG_REPLY_SIZE];
    EXPECT_EQ(rig_issue_command(&rig_status[1], reply), 0);
    EXPECT_STREQ(rig_param_text[pmFreqA], "1");
    // Its bytes are dropped before the next command, which reads cleanly.
    rig_issue_command(&rig_status[1], reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "1296000000");
    // A garbled reply fails validation.
    snprintf(rig_param_text[pmFreqB], RIG_TEXT_SIZE, "7");
    rigsim_command(&sim, "garble 1");
    rig_issue_command(&rig_status[2], reply);
    EXPECT_STREQ(rig_param_text[pmFreqB], "7");
}

// The walk on the clock: a silent radio is waited for only across calls,
// each command for its budget, and after three in a row the radio is gone.
TEST_F(RigEngineCiv, SilentRadioIsWaitedForAcrossCallsAndGivenUpAfterThreeCommands)
{
    rig_poll_status();
    int64_t a = 0;
    ASSERT_EQ(rig_get_freq_a(&a), 0);
    rigsim_command(&sim, "silent 1");
    rigsim_command(&sim, "freq a 1");
    int64_t t = 1000000;
    rig_start_status();
    rig_service(t);
    const RigCommand *first = rig_engine.record;
    ASSERT_NE(first, nullptr);
    rig_service(t + RIG_BUDGET_MS - 1);
    EXPECT_EQ(rig_engine.record, first); // still its reply's turn
    EXPECT_EQ(rig_engine.silent_run, 0);
    for (int n = 1; n <= RIG_SILENT_LIMIT; n++)
    {
        t += RIG_BUDGET_MS;
        EXPECT_EQ(rig_not_answering(), 0);
        rig_service(t);
        EXPECT_EQ(rig_engine.last_outcome, RIG_OUTCOME_NO_REPLY);
        EXPECT_EQ(rig_engine.silent_run, n);
    }
    EXPECT_EQ(rig_not_answering(), 1);
    ASSERT_EQ(rig_get_freq_a(&a), 0);
    EXPECT_EQ(a, 1296000000); // the last reading stays
    // An answer ends the run: the radio is back. The budgets above ran out
    // on the test's clock, not the radio's: let the last command reach the
    // radio first, or it would answer it late, into the next command's turn.
    for (int i = 0; i < 100 && serial_output_pending(&rig_link) > 0; i++)
    {
        serial_wait_readable(&rig_link, 5);
    }
    serial_wait_readable(&rig_link, 50);
    rigsim_command(&sim, "silent 0");
    rig_start_init();
    rig_run_until_idle();
    rig_poll_status();
    EXPECT_EQ(rig_engine.silent_run, 0);
    EXPECT_EQ(rig_get_freq_a(&a), 0);
    EXPECT_EQ(a, 1);
}

// A line that takes nothing more (a radio that is off behind hardware flow
// control) ends a write within its budget as that command's failure.
TEST_F(RigEngineCiv, WriteThatCannotLeaveTimesOut)
{
    rigsim_command(&sim, "off 1");
    // Fill the line until it takes nothing more, also once the kernel has
    // moved what it could into the far end's buffer.
    uint8_t junk[4096] = {};
    for (int settled = 0, i = 0; settled < 2 && i < 1000; i++)
    {
        settled = serial_write(&rig_link, junk, sizeof junk) > 0 ? 0 : settled + 1;
        if (settled)
        {
            poll(nullptr, 0, 20);
        }
    }
    ASSERT_EQ(rig_set_freq_b(1296000000), 0);
    int64_t t = 5000;
    rig_service(t);
    EXPECT_EQ(rig_engine.record, &rig_write[pmFreqB]);
    rig_service(t + RIG_BUDGET_MS);
    EXPECT_EQ(rig_engine.last_outcome, RIG_OUTCOME_WRITE_TIMEOUT);
    EXPECT_EQ(rig_engine.silent_run, 1);
    EXPECT_EQ(rig_busy(), 0);
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
    int64_t b = 0;
    ASSERT_EQ(rig_get_freq_b(&b), 0);
    EXPECT_EQ(b, 144100200);
    EXPECT_EQ(rig_flag_state[pmRx], 1);

    // A write awaits nothing; it must still have reached the radio before the
    // next command clears the line.
    EXPECT_EQ(rig_set_freq_b(144099000), 0);
    rig_run_until_idle();
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
    std::string sent;
    for (const std::string &frame : rigsim_frames(&sim))
    {
        sent += frame[0] == '>' ? frame : "";
    }
    EXPECT_EQ(sent, "> ID;> FB;");
}

TEST_F(RigEngineCat, NoTerminatorWithin64BytesIsIncompleteAndAFixedLengthWinsOverTheTerminator)
{
    snprintf(rig_param_text[pmFreqA], RIG_TEXT_SIZE, "9");
    rigsim_command(&sim, "noise 100");
    uint8_t reply[RIG_REPLY_SIZE];
    rig_issue_command(&rig_status[1], reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "9");
    EXPECT_EQ(reply[63], 'a' + 63 % 26);
    rigsim_command(&sim, "noise 0");
    RigCommand record = rig_status[1];
    record.ReplyLength = 5; // "FA001": stops before the ';'
    record.validate_length = 0;
    record.values[1] = value(2, 3, vfText, pmFreqA);
    rig_issue_command(&record, reply);
    EXPECT_STREQ(rig_param_text[pmFreqA], "001");
}

// Published files against the simulator: each reads one VFO and writes the other.
TEST_F(RigSimTest, PublishedFilesDriveTheSimulator)
{
    std::string folder = rig_test_real_folder();
    if (folder.empty())
    {
        GTEST_SKIP() << "no published rig files beside the project";
    }
    struct Row
    {
        const char *file;
        int protocol, read_vfo;
        int64_t hz;
    };
    const Row rows[] = {{"IC-9700.ini", RIGSIM_CIV, 0, 1296050000}, {"TS-2000.ini", RIGSIM_CAT, 1, 50200000}};
    for (const Row &row : rows)
    {
        start(row.protocol);
        rig_load_path((folder + "/" + row.file).c_str(), 0);
        rigsim_command(&sim, row.read_vfo ? "freq b 50200000" : "freq a 1296050000");
        rig_send_init();
        rig_poll_status();
        int64_t hz = 0;
        EXPECT_EQ(row.read_vfo ? rig_get_freq_b(&hz) : rig_get_freq_a(&hz), 0) << row.file;
        EXPECT_EQ(hz, row.hz) << row.file;
        EXPECT_EQ(row.read_vfo ? rig_set_freq_a(row.hz + 1000) : rig_set_freq_b(row.hz + 1000), 0);
        rig_run_until_idle();
        // A write awaits no reply; the next command makes sure it left the port.
        rig_poll_status();
        EXPECT_EQ(rigsim_vfo(&sim, 1 - row.read_vfo), row.hz + 1000) << row.file;
        TearDown();
    }
}
