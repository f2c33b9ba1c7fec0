#include "support/test_env.h"

#include "bus/brt.h"
#include "bus/sei_commands.h"

#include <gtest/gtest.h>

TEST(SeiFrames, PositionWidthFollowsModeBitTwoAndTheResolution)
{
    struct Row
    {
        uint8_t mode;
        uint16_t resolution;
        uint8_t bytes[4];
        int count;
        int want_status;
        uint32_t want;
        const char *why;
    };
    const Row rows[] = {
        {0x00, 256, {0x2A}, 1, 0, 42, "one byte is the whole answer of a 256-count encoder"},
        {0x00, 36000, {0x46}, 1, 1, 7, "from any larger encoder one byte is a reply cut short"},
        {0x00, 0, {0x2A}, 1, 1, 7, "an unknown resolution takes no short answer either"},
        {0x00, 36000, {0x46, 0x50}, 2, 0, 18000, "two bytes make a 16-bit position"},
        {0x00, 256, {}, 0, 1, 7, "no byte is a failure"},
        {0x04, 36000, {0x00, 0x01, 0x86, 0xA0}, 4, 0, 100000, "mode bit 2 reads 32 bits"},
        {0x04, 36000, {0x00, 0x01, 0x86}, 3, 1, 7, "three of four bytes is a failure"},
        {0x04, 256, {0x2A}, 1, 1, 7, "32-bit mode takes no short answer"},
        {0x10, 36000, {0x12, 0x34}, 2, 0, 0x1234, "other mode bits do not change the width"},
    };
    for (const Row &row : rows)
    {
        uint32_t position = 7;
        EXPECT_EQ(row.want_status, sei_decode_position(row.mode, row.resolution, row.bytes, row.count, &position))
            << row.why;
        EXPECT_EQ(row.want, position) << row.why;
    }
}

TEST(BrtScaling, PulsesBecomeResolutionCounts)
{
    struct Row
    {
        uint32_t pulses, ppr;
        uint16_t resolution;
        uint32_t want;
        const char *why;
    };
    const Row rows[] = {
        {1024, 4096, 36000, 9000, "a quarter turn of a 4096-pulse encoder"},
        {512, 0, 0, 18000, "PPR 0 and Resolution 0 fall back to 1024 and 36000"},
        {1, 1024, 36000, 35, "35.15625 counts are cut toward zero"},
        {1023, 1024, 3600, 3596, "3596.48 cut to 3596"},
        {0, 1024, 36000, 0, "zero pulses"},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(row.want, brt_scale(row.pulses, row.ppr, row.resolution)) << row.why;
    }
}

TEST(BrtTable, AddressesAreCheckedAndSetModeKeepsTheModeWhenTheWriteFails)
{
    test_reset_state();
    uint8_t mode = 0;
    EXPECT_EQ(1, brt_get_mode(15, &mode));
    EXPECT_EQ(1, brt_get_mode(-1, &mode));
    EXPECT_EQ(1, brt_set_ppr(15, 1));
    // The bus is closed, so the register write fails.
    EXPECT_EQ(1, brt_set_mode(3, 0x05));
    EXPECT_EQ(0x05, encoders[3].Mode);
}
