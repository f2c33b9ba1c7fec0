#include "support/test_env.h"

#include "bus/brt.h"
#include "bus/sei_commands.h"

#include <gtest/gtest.h>

TEST(SeiFrames, AddressGoesInTheLowBitsAndUnsetIsBroadcast)
{
    EXPECT_EQ(0x13, sei_first_byte(SEI_CLASS_POSITION, 3));
    EXPECT_EQ(0x5F, sei_first_byte(SEI_CLASS_SLEEP, 15));
    EXPECT_EQ(0x6F, sei_first_byte(SEI_CLASS_WAKEUP, 15));
    EXPECT_EQ(0x7E, sei_first_byte(SEI_CLASS_REGISTER_READ, 14));
    EXPECT_EQ(0xFF, sei_first_byte(SEI_CLASS_COMMAND, -1));
}

TEST(SeiFrames, MultiByteFieldsGoMostSignificantFirst)
{
    uint8_t bytes[4];
    sei_put_u32(bytes, 0x12345678u);
    EXPECT_EQ(0x12, bytes[0]);
    EXPECT_EQ(0x78, bytes[3]);
    EXPECT_EQ(0x12345678u, sei_get_u32(bytes));
    sei_put_u16(bytes, 0xBEEF);
    EXPECT_EQ(0xBE, bytes[0]);
    EXPECT_EQ(0xBEEF, sei_get_u16(bytes));
}

TEST(SeiFrames, CommandFrameHasNoLengthAndNoTrailer)
{
    uint8_t args[2] = {3, 1};
    uint8_t frame[8];
    ASSERT_EQ(4, sei_command_frame(2, SEI_RELAY_CONTROL, args, 2, frame));
    EXPECT_EQ(0xF2, frame[0]);
    EXPECT_EQ(0x32, frame[1]);
    EXPECT_EQ(3, frame[2]);
    EXPECT_EQ(1, frame[3]);
    EXPECT_EQ(2, sei_command_frame(0, SEI_READ_MODE, nullptr, 0, frame));
}

TEST(SeiFrames, PositionWidthFollowsModeBitTwo)
{
    struct Row
    {
        uint8_t mode;
        uint8_t bytes[4];
        int count;
        int want_status;
        uint32_t want;
        const char *why;
    };
    const Row rows[] = {
        {0x00, {0x2A}, 1, 0, 42, "one byte alone is a small 16-bit position"},
        {0x00, {0x46, 0x50}, 2, 0, 18000, "two bytes make a 16-bit position"},
        {0x00, {}, 0, 1, 7, "no byte is a failure"},
        {0x04, {0x00, 0x01, 0x86, 0xA0}, 4, 0, 100000, "mode bit 2 reads 32 bits"},
        {0x04, {0x00, 0x01, 0x86}, 3, 1, 7, "three of four bytes is a failure"},
        {0x04, {0x2A}, 1, 1, 7, "32-bit mode takes no short answer"},
        {0x10, {0x12, 0x34}, 2, 0, 0x1234, "other mode bits do not change the width"},
    };
    for (const Row &row : rows)
    {
        uint32_t position = 7;
        EXPECT_EQ(row.want_status, sei_decode_position(row.mode, row.bytes, row.count, &position)) << row.why;
        EXPECT_EQ(row.want, position) << row.why;
    }
}

TEST(SeiFrames, FactoryRecordFields)
{
    const uint8_t reply[15] = {0x00, 0x19, 0x02, 0x03, 0x01, 0x05, 0x00, 0x00,
                               0x03, 0xE9, 0x05, 0x1D, 0x07, 0xE9, 0xA5};
    EncoderFactoryInfo info = {};
    uint8_t crc = 0;
    sei_decode_factory_info(reply, &info, &crc);
    EXPECT_EQ(25, info.Model);
    EXPECT_EQ(0x0203, info.Version);
    EXPECT_EQ(0x0105, info.Config);
    EXPECT_EQ(1001u, info.Serial);
    EXPECT_EQ(5, info.Month);
    EXPECT_EQ(29, info.Day);
    EXPECT_EQ(2025, info.Year);
    EXPECT_EQ(0xA5, crc);
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

class BrtTable : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }
};

TEST_F(BrtTable, GettersAndSettersUseTheTableAndCheckTheAddress)
{
    encoders[2].Mode = 0x11;
    encoders[2].Resolution = 3600;
    encoders[2].PPR = 4096;
    encoders[2].Range = 16;
    uint8_t mode = 0;
    uint16_t resolution = 0;
    uint32_t ppr = 0, range = 0;
    EXPECT_EQ(0, brt_get_mode(2, &mode));
    EXPECT_EQ(0, brt_get_resolution(2, &resolution));
    EXPECT_EQ(0, brt_get_ppr(2, &ppr));
    EXPECT_EQ(0, brt_get_range(2, &range));
    EXPECT_EQ(0x11, mode);
    EXPECT_EQ(3600, resolution);
    EXPECT_EQ(4096u, ppr);
    EXPECT_EQ(16u, range);
    EXPECT_EQ(0, brt_set_resolution(2, 7200));
    EXPECT_EQ(7200, encoders[2].Resolution);
    EXPECT_EQ(1, brt_get_mode(15, &mode));
    EXPECT_EQ(1, brt_get_mode(-1, &mode));
    EXPECT_EQ(1, brt_set_ppr(15, 1));
    EncoderFactoryInfo info = {};
    EXPECT_EQ(0, brt_get_factory_info(3, &info));
    EXPECT_EQ(38, info.Model);
    EXPECT_EQ(1004u, info.Serial);
}

TEST_F(BrtTable, SetModeKeepsTheModeEvenWhenTheWriteFails)
{
    // The bus is closed, so the register write fails.
    EXPECT_EQ(1, brt_set_mode(3, 0x05));
    EXPECT_EQ(0x05, encoders[3].Mode);
}
