#include "sim_fixture.h"
#include "support/test_env.h"

#include "bus/brt.h"
#include "bus/sei_commands.h"
#include "bus/sei_link.h"

#include <cstring>
#include <functional>
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
};

// Each command against a peer that plays the device: the frame it puts on the
// line, what it returns for the reply given, and (below) what it unpacked.
TEST_F(SeiCommands, FramesRepliesAndResultsOnlyOnSuccess)
{
    uint8_t status = 0, set_status = 0, level = 0, crc = 0;
    EncoderFactoryInfo info = {};
    uint16_t adc = 0, resolution = 1234, reg = 0;
    int16_t temperature = 0;
    uint32_t ppr = 0;
    char twenty[21];
    memset(twenty, 'A', 20);
    twenty[20] = 0;
    Bytes display20 = {0xF0, 0x35, 0x01, 0x02, 20};
    display20.insert(display20.end(), 20, 'A');
    struct Row
    {
        Bytes reply;
        std::function<int()> call;
        int want;
        Bytes frame;
    };
    const Row rows[] = {
        {{0x34, 0x12, 0x00}, [&] { return sei_read_adc(0, 2, &adc, &status); }, 0, {0xF0, 0x34, 0x02}},
        {{0xFF, 0xF6, 0x00}, [&] { return sei_read_thermometer(5, &temperature, &status); }, 0, {0xF5, 0x19}},
        {{0x00, 0x00, 0x10, 0x00, 0x01, 0x00}, [&] { return sei_read_ppr(1, &ppr, &level, &status); }, 0, {0xF1, 0x2A}},
        {{0x8C, 0xA0}, [&] { return sei_read_resolution(0, &resolution, &status); }, 1, {0xF0, 0x09}},
        {{0x00, 0x19, 0x01, 0x00, 0x02, 0x01, 0x00, 0x00, 0x07, 0xD0, 0x05, 0x1D, 0x07, 0xE9, 0x5A},
         [&] { return sei_read_factory_info(7, &info, &crc); },
         0,
         {0xF7, 0x08}},
        {{0x00}, [&] { return sei_assign_address(3, 1001, 5, &status); }, 0, {0xF3, 0x07, 0x00, 0x00, 0x03, 0xE9, 0x05}},
        {{0x04}, [&] { return sei_set_position(0, 0x00, 0x12345678u, &set_status); }, 0, {0xF0, 0x02, 0x56, 0x78}},
        {{0x00},
         [&] { return sei_set_position(0, MODE_32BIT, 0x12345678u, &status); },
         0,
         {0xF0, 0x02, 0x12, 0x34, 0x56, 0x78}},
        {{0x00}, [&] { return sei_pwm_control(0, 3, 60, &status); }, 0, {0xF0, 0x33, 0x03, 0x3C}},
        {{}, [&] { return sei_relay_control(1, 2, 1, &status); }, 1, {0xF1, 0x32, 0x02, 0x01}},
        {{0x00}, [&] { return sei_display_msg(0, 1, 2, 20, twenty, &status); }, 0, display20},
        {{}, [&] { return sei_display_msg(0, 1, 2, 21, "AAAAAAAAAAAAAAAAAAAAA", &status); }, 21, {}},
        {{0x00},
         [&] { return sei_display_msg(1, 0, 1, 4, "AZ ", &status); },
         0,
         {0xF1, 0x35, 0x00, 0x01, 0x04, 'A', 'Z', ' ', 0x00}},
        {{0x12, 0x34, 0x05}, [&] { return brt_read_register(2, 0, &reg); }, 5, {0x72, 0x00, 0x00}},
        {{0x00}, [&] { return brt_write_register(3, 11, 0xABCD); }, 0, {0x83, 0x00, 0x0B, 0xAB, 0xCD}},
        {{0x00}, [&] { return brt_set_mode(2, MODE_DIRECTION); }, 0, {0x82, 0x00, 0x09, 0x00, 0x00}},
        {{0x00}, [&] { return brt_set_mode(2, 0); }, 0, {0x82, 0x00, 0x09, 0x00, 0x01}},
        // Sleep and wake-up wait for nothing, so a byte on the line stays there.
        {{0x99}, [&] { return sei_sleep(15); }, 0, {0x5F}},
        {{}, [&] { return sei_wakeup(); }, 0, {0x6F}},
    };
    int n = 0;
    for (const Row &row : rows)
    {
        pty_peer_write(&peer, row.reply);
        EXPECT_EQ(row.want, row.call()) << "row " << n;
        EXPECT_EQ(row.frame, pty_peer_read(&peer, 64, 20)) << "row " << n;
        n++;
    }
    EXPECT_EQ(0x1234, adc);   // least significant byte first
    EXPECT_EQ(-10, temperature);
    EXPECT_EQ(4096u, ppr);
    EXPECT_EQ(1, level);
    EXPECT_EQ(1234, resolution);
    EXPECT_EQ(4, set_status);
    EXPECT_EQ(0x1234, reg);
    EXPECT_EQ(2000u, info.Serial);
    EXPECT_EQ(29 * 10000 + 2025, info.Day * 10000 + info.Year);
    EXPECT_EQ(0x5A, crc);
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
    EXPECT_EQ(0, sei_read_position(0, MODE_32BIT, 36000, &position));
    EXPECT_EQ(sei_get_u32(&noise[3]), position);
}

// Only 0 to 14 are device addresses, and 15 only for sleep and wake-up: an
// unset address (-1) would go out as a broadcast that every board obeys, and
// 20 would reach the weather station at 4. Every command is refused before
// its frame is laid out, and costs no time.
TEST_F(SimBus, AddressesOutsideTheBusNeverReachTheWire)
{
    uint8_t u8 = 0;
    uint16_t u16 = 0;
    int16_t i16 = 0;
    uint32_t u32 = 0;
    EncoderFactoryInfo info = {};
    const std::function<int(int)> commands[] = {
        [&](int a) { return sei_read_position(a, 0, 36000, &u32); },
        [&](int a) { return sei_read_factory_info(a, &info, &u8); },
        [&](int a) { return sei_read_resolution(a, &u16, &u8); },
        [&](int a) { return sei_read_mode(a, &u8, &u8); },
        [&](int a) { return sei_read_wind_speed(a, &u16, &u8); },
        [&](int a) { return sei_read_wind_direction(a, &u16, &u8); },
        [&](int a) { return sei_read_thermometer(a, &i16, &u8); },
        [&](int a) { return sei_read_barometer(a, &u32, &u8); },
        [&](int a) { return sei_read_altimeter(a, &u32, &u8); },
        [&](int a) { return sei_read_range(a, &u32, &u8); },
        [&](int a) { return sei_read_ppr(a, &u32, &u8, &u8); },
        [&](int a) { return sei_read_adc(a, 0, &u16, &u8); },
        [&](int a) { return sei_read_gpio(a, &u8, &u8); },
        [&](int a) { return sei_set_position(a, 0, 0, &u8); },
        [&](int a) { return sei_assign_address(a, 2000, 5, &u8); },
        [&](int a) { return sei_change_resolution(a, 3600, &u8); },
        [&](int a) { return sei_change_mode_temporary(a, 0, &u8); },
        [&](int a) { return sei_change_mode_power_up(a, 0, &u8); },
        [&](int a) { return sei_write_barometer_calibration(a, 1, &u8); },
        [&](int a) { return sei_write_range(a, 1, &u8); },
        [&](int a) { return sei_write_ppr(a, 1, 0, &u8); },
        [&](int a) { return sei_relay_control(a, 4, 1, &u8); },
        [&](int a) { return sei_pwm_control(a, 4, 100, &u8); },
        [&](int a) { return sei_display_msg(a, 0, 0, 3, "AZ", &u8); },
        [&](int a) { return brt_read_register(a, 0, &u16); },
        [&](int a) { return brt_write_register(a, 11, 0); },
    };
    for (int a : {-1, 15, 16, 20, 255})
    {
        for (size_t i = 0; i < sizeof commands / sizeof commands[0]; i++)
        {
            EXPECT_EQ(1, commands[i](a)) << "command " << i << " to " << a;
        }
        EXPECT_EQ(1, sei_sleep(a == 15 ? -1 : a)) << a;
    }
    EXPECT_EQ(0, sei_sleep(SEI_BROADCAST));
    EXPECT_EQ(1, frames_arrived("> 5F", 1));
    std::lock_guard<std::mutex> hold(sim->lock);
    EXPECT_EQ(1, sim->station.frame_count) << "only the broadcast sleep went out";
    EXPECT_EQ(0, sim->station.outputs[0].relay[4] | sim->station.outputs[1].relay[4]);
}
