#include "pty_peer.h"
#include "support/test_env.h"

#include "bus/brt.h"
#include "bus/sei_commands.h"
#include "bus/sei_link.h"

#include <cstring>
#include <gtest/gtest.h>

typedef std::vector<uint8_t> Bytes;

class SeiCommands : public ::testing::Test
{
  protected:
    PtyPeer peer = {-1, -1, ""};
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        ASSERT_EQ(0, pty_peer_open(&peer));
        ASSERT_EQ(0, bus_open_on(peer.device));
    }
    void TearDown() override
    {
        sei_link_reset();
        pty_peer_close(&peer);
    }
    // What the program put on the line since the last look.
    Bytes sent(void)
    {
        return pty_peer_read(&peer, 64, 20);
    }
};

TEST_F(SeiCommands, PositionReadsOneTwoOrFourBytes)
{
    uint32_t position = 5;
    pty_peer_write(&peer, {0x2A});
    EXPECT_EQ(0, sei_read_position(0, 0x00, &position));
    EXPECT_EQ(42u, position);
    EXPECT_EQ(Bytes{0x10}, sent());

    pty_peer_write(&peer, {0x00, 0x01, 0x86, 0xA0});
    EXPECT_EQ(0, sei_read_position(4, MODE_32BIT, &position));
    EXPECT_EQ(100000u, position);
    EXPECT_EQ(Bytes{0x14}, sent());

    pty_peer_write(&peer, {0x00, 0x01, 0x86});
    EXPECT_EQ(1, sei_read_position(4, MODE_32BIT, &position));
    EXPECT_EQ(100000u, position);

    EXPECT_EQ(1, sei_read_position(1, 0x00, &position));
    EXPECT_EQ(100000u, position);
}

TEST_F(SeiCommands, ReadsUnpackTheirReplies)
{
    uint16_t u16 = 0;
    int16_t i16 = 0;
    uint32_t u32 = 0;
    uint8_t status = 9, level = 0, byte = 0;

    pty_peer_write(&peer, {0x34, 0x12, 0x00});
    EXPECT_EQ(0, sei_read_adc(0, 2, &u16, &status));
    EXPECT_EQ(0x1234, u16);
    EXPECT_EQ((Bytes{0xF0, 0x34, 0x02}), sent());

    pty_peer_write(&peer, {0xFF, 0xF6, 0x00});
    EXPECT_EQ(0, sei_read_thermometer(5, &i16, &status));
    EXPECT_EQ(-10, i16);
    EXPECT_EQ((Bytes{0xF5, 0x19}), sent());

    pty_peer_write(&peer, {0x00, 0x0F, 0x74, 0x24, 0x03});
    EXPECT_EQ(0, sei_read_barometer(5, &u32, &status));
    EXPECT_EQ(1012772u, u32);
    EXPECT_EQ(3, status);
    EXPECT_EQ((Bytes{0xF5, 0x1A}), sent());

    pty_peer_write(&peer, {0x00, 0x00, 0x10, 0x00, 0x01, 0x00});
    EXPECT_EQ(0, sei_read_ppr(1, &u32, &level, &status));
    EXPECT_EQ(4096u, u32);
    EXPECT_EQ(1, level);
    EXPECT_EQ((Bytes{0xF1, 0x2A}), sent());

    pty_peer_write(&peer, {0xFB, 0x00});
    EXPECT_EQ(0, sei_read_gpio(0, &byte, &status));
    EXPECT_EQ(0xFB, byte);
    EXPECT_EQ((Bytes{0xF0, 0x36}), sent());

    pty_peer_write(&peer, {0x8C, 0xA0, 0x00});
    EXPECT_EQ(0, sei_read_resolution(1, &u16, &status));
    EXPECT_EQ(36000, u16);
}

TEST_F(SeiCommands, FailedReadLeavesResultsAlone)
{
    uint16_t resolution = 1234;
    uint8_t status = 77;
    pty_peer_write(&peer, {0x8C, 0xA0});
    EXPECT_EQ(1, sei_read_resolution(0, &resolution, &status));
    EXPECT_EQ(1234, resolution);
    EXPECT_EQ(77, status);
}

TEST_F(SeiCommands, FactoryRecordComesWhole)
{
    pty_peer_write(&peer, {0x00, 0x19, 0x01, 0x00, 0x02, 0x01, 0x00, 0x00, 0x07, 0xD0, 0x05, 0x1D, 0x07, 0xE9, 0x5A});
    EncoderFactoryInfo info = {};
    uint8_t crc = 0;
    EXPECT_EQ(0, sei_read_factory_info(7, &info, &crc));
    EXPECT_EQ(2000u, info.Serial);
    EXPECT_EQ(0x5A, crc);
    EXPECT_EQ((Bytes{0xF7, 0x08}), sent());
}

TEST_F(SeiCommands, WritesSendTheirArgumentsAndPassTheStatusOut)
{
    uint8_t status = 0;
    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_assign_address(3, 1001, 5, &status));
    EXPECT_EQ((Bytes{0xF3, 0x07, 0x00, 0x00, 0x03, 0xE9, 0x05}), sent());

    pty_peer_write(&peer, {0x04});
    EXPECT_EQ(0, sei_set_position(0, 0x00, 0x12345678u, &status));
    EXPECT_EQ(4, status);
    EXPECT_EQ((Bytes{0xF0, 0x02, 0x56, 0x78}), sent());

    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_set_position(0, MODE_32BIT, 0x12345678u, &status));
    EXPECT_EQ((Bytes{0xF0, 0x02, 0x12, 0x34, 0x56, 0x78}), sent());

    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_write_ppr(1, 4096, 1, &status));
    EXPECT_EQ((Bytes{0xF1, 0x2B, 0x00, 0x00, 0x10, 0x00, 0x01}), sent());

    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_pwm_control(0, 3, 60, &status));
    EXPECT_EQ((Bytes{0xF0, 0x33, 0x03, 0x3C}), sent());

    EXPECT_EQ(1, sei_relay_control(1, 2, 1, &status));
    EXPECT_EQ((Bytes{0xF1, 0x32, 0x02, 0x01}), sent());
}

TEST_F(SeiCommands, DisplayTextOfTwentyGoesOutAndTwentyOneIsRefused)
{
    char text[32];
    memset(text, 'A', sizeof text);
    uint8_t status = 0;
    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_display_msg(0, 1, 2, 20, text, &status));
    Bytes frame = sent();
    ASSERT_EQ(25u, frame.size());
    EXPECT_EQ(0xF0, frame[0]);
    EXPECT_EQ(0x35, frame[1]);
    EXPECT_EQ(20, frame[4]);

    EXPECT_EQ(21, sei_display_msg(0, 1, 2, 21, text, &status));
    EXPECT_TRUE(sent().empty());

    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, sei_display_msg(1, 0, 1, 4, "AZ ", &status));
    EXPECT_EQ((Bytes{0xF1, 0x35, 0x00, 0x01, 0x04, 'A', 'Z', ' ', 0x00}), sent());
}

TEST_F(SeiCommands, SleepAndWakeUpWaitForNothing)
{
    pty_peer_write(&peer, {0x99});
    EXPECT_EQ(0, sei_sleep(15));
    EXPECT_EQ(0, sei_wakeup());
    EXPECT_EQ((Bytes{0x5F, 0x6F}), sent());
}

TEST_F(SeiCommands, RegisterFramesJudgeTheStatusByte)
{
    uint16_t value = 0;
    pty_peer_write(&peer, {0x12, 0x34, 0x05});
    EXPECT_EQ(5, brt_read_register(2, 0, &value));
    EXPECT_EQ(0x1234, value);
    EXPECT_EQ((Bytes{0x72, 0x00, 0x00}), sent());

    value = 9;
    pty_peer_write(&peer, {0x12, 0x34});
    EXPECT_EQ(1, brt_read_register(2, 0, &value));
    EXPECT_EQ(9, value);
    sent();

    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, brt_write_register(3, 11, 0xABCD));
    EXPECT_EQ((Bytes{0x83, 0x00, 0x0B, 0xAB, 0xCD}), sent());
}

TEST_F(SeiCommands, BrtPositionIsScaledAndZeroedOnAFault)
{
    encoders[2].PPR = 4096;
    encoders[2].Resolution = 36000;
    uint32_t position = 1;
    pty_peer_write(&peer, {0x04, 0x00, 0x00});
    EXPECT_EQ(0, brt_read_position(2, 0, &position));
    EXPECT_EQ(9000u, position);

    pty_peer_write(&peer, {0x00, 0x00, 0x02});
    EXPECT_EQ(2, brt_read_position(2, 0, &position));
    EXPECT_EQ(0u, position);
}

TEST_F(SeiCommands, BrtModeWritesTheInverseDirection)
{
    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, brt_set_mode(2, MODE_DIRECTION));
    EXPECT_EQ((Bytes{0x82, 0x00, 0x09, 0x00, 0x00}), sent());
    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, brt_set_mode(2, 0));
    EXPECT_EQ((Bytes{0x82, 0x00, 0x09, 0x00, 0x01}), sent());
    pty_peer_write(&peer, {0x00});
    EXPECT_EQ(0, brt_set_address(2, 6));
    EXPECT_EQ((Bytes{0x82, 0x00, 0x04, 0x00, 0x06}), sent());
}

TEST_F(SeiCommands, NoiseIsTakenAsItComesAndTheRestWaits)
{
    // Three hundred bytes of noise: each command takes what its reply length
    // asks for and leaves the rest for the next, as the bus gives no framing.
    Bytes noise(300);
    for (int i = 0; i < 300; i++)
    {
        noise[i] = (uint8_t)(i * 37 + 11);
    }
    pty_peer_write(&peer, noise);
    uint16_t resolution = 0;
    uint8_t status = 0;
    EXPECT_EQ(0, sei_read_resolution(0, &resolution, &status));
    EXPECT_EQ((uint16_t)(noise[0] << 8 | noise[1]), resolution);
    uint32_t position = 0;
    EXPECT_EQ(0, sei_read_position(0, MODE_32BIT, &position));
    EXPECT_EQ(sei_get_u32(&noise[3]), position);
}
