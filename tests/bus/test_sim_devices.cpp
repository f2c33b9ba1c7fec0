// The simulator against the devices' frame tables, byte by byte; none of the
// program's command code takes part.
#include "sim/control.h"
#include "sim/devices.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

typedef std::vector<uint8_t> Bytes;

class SimDevices : public ::testing::Test
{
  protected:
    SimStation s;
    int delay = -1;
    void SetUp() override
    {
        sim_station_init(&s);
    }
    Bytes ask(const Bytes &frame)
    {
        EXPECT_EQ((int)frame.size(), sim_frame_length(&s, frame.data(), (int)frame.size()));
        uint8_t reply[64];
        int n = sim_reply(&s, frame.data(), (int)frame.size(), reply, sizeof reply, &delay);
        return Bytes(reply, reply + n);
    }
    std::string control(const char *line)
    {
        char reply[8192];
        sim_control(&s, line, reply, sizeof reply);
        return reply;
    }
};

TEST_F(SimDevices, FrameLengthsFollowTheClassAndTheCommand)
{
    struct Row
    {
        Bytes bytes;
        int want;
    };
    const Row rows[] = {
        {{0x10}, 1},
        {{0x5F}, 1},
        {{0x6F}, 1},
        {{0x72, 0, 0}, 3},
        {{0x83, 0, 0, 0, 0}, 5},
        {{0xF0}, 0},
        {{0xF0, 0x07}, 7},
        {{0xF0, 0x2B}, 7},
        {{0xF0, 0x34}, 3},
        {{0xF0, 0x35, 0, 0}, 0},
        {{0xF0, 0x35, 0, 0, 9}, 14},
        {{0xF0, 0x02}, 4},
        {{0x00}, -1},
        {{0xA5}, -1},
        {{0xF0, 0x99}, 2},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(row.want, sim_frame_length(&s, row.bytes.data(), (int)row.bytes.size())) << (int)row.bytes[0];
    }
    s.encoders[0].mode = 0x04;
    const uint8_t wide[2] = {0xF0, 0x02};
    EXPECT_EQ(6, sim_frame_length(&s, wide, 2));
}

TEST_F(SimDevices, SeiEncoderReportsTheMountIn16Or32Bits)
{
    control("set az 180");
    EXPECT_EQ((Bytes{0x46, 0x50}), ask({0x10}));
    control("set el 90");
    EXPECT_EQ((Bytes{0x23, 0x28}), ask({0x11}));
    control("mode 0 4");
    EXPECT_EQ((Bytes{0x00, 0x00, 0x46, 0x50}), ask({0x10}));
    // Below the horizon the single-turn count wraps to the top of the turn.
    control("set el -5");
    EXPECT_EQ((Bytes{0x8A, 0xAC}), ask({0x11}));
}

TEST_F(SimDevices, MultiTurnCountsPastOneTurnAndDirectionBitCountsDown)
{
    s.encoders[0].mode = 0x14;
    s.encoders[0].resolution = 3600;
    s.encoders[0].range = 16;
    control("set az 365");
    EXPECT_EQ(3650u, sim_encoder_counts(&s, 0));
    s.encoders[0].mode = 0x05;
    control("set az 90");
    EXPECT_EQ(2700u, sim_encoder_counts(&s, 0));
}

TEST_F(SimDevices, SettingsReadsAndWritesAnswerWithStatus)
{
    EXPECT_EQ((Bytes{0x8C, 0xA0, 0x00}), ask({0xF0, 0x09}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x0A, 0x0E, 0x10}));
    EXPECT_EQ((Bytes{0x0E, 0x10, 0x00}), ask({0xF0, 0x09}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF1, 0x0C, 0x14}));
    EXPECT_EQ((Bytes{0x14, 0x00}), ask({0xF1, 0x0B}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF1, 0x29, 0x00, 0x00, 0x00, 0x10}));
    EXPECT_EQ((Bytes{0x00, 0x00, 0x00, 0x10, 0x00}), ask({0xF1, 0x28}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF1, 0x2B, 0x00, 0x00, 0x10, 0x00, 0x01}));
    EXPECT_EQ((Bytes{0x00, 0x00, 0x10, 0x00, 0x01, 0x00}), ask({0xF1, 0x2A}));
}

TEST_F(SimDevices, SetPositionPresetsTheCount)
{
    control("set az 10");
    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x02, 0x00, 0x64}));
    EXPECT_EQ((Bytes{0x00, 0x64}), ask({0x10}));
}

TEST_F(SimDevices, FactoryRecordIsFifteenBytesEndingInItsCheck)
{
    Bytes record = ask({0xF0, 0x08});
    ASSERT_EQ(15u, record.size());
    EXPECT_EQ((Bytes{0x00, 0x00, 0x07, 0xD0}), Bytes(record.begin() + 6, record.begin() + 10));
    uint8_t check = 0;
    for (int i = 0; i < 14; i++)
    {
        check ^= record[i];
    }
    EXPECT_EQ(check, record[14]);
}

TEST_F(SimDevices, AssignAddressMovesTheDeviceWithTheRightSerialOnly)
{
    EXPECT_TRUE(ask({0xF0, 0x07, 0x00, 0x00, 0x07, 0xD1, 0x05}).empty());
    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x07, 0x00, 0x00, 0x07, 0xD0, 0x05}));
    EXPECT_TRUE(ask({0x10}).empty());
    EXPECT_EQ(2u, ask({0x15}).size());
}

TEST_F(SimDevices, SleepSilencesEncodersUntilTheWakeUp)
{
    EXPECT_TRUE(ask({0x5F}).empty());
    EXPECT_TRUE(ask({0x10}).empty());
    EXPECT_TRUE(ask({0xF1, 0x09}).empty());
    // The boards on the same addresses stay awake.
    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x32, 0x03, 0x01}));
    EXPECT_TRUE(ask({0x6F}).empty());
    EXPECT_EQ(2u, ask({0x10}).size());
    EXPECT_TRUE(ask({0x51}).empty());
    EXPECT_EQ(2u, ask({0x10}).size());
    EXPECT_TRUE(ask({0x11}).empty());
}

TEST_F(SimDevices, BrtRegistersGivePulsesDirectionPresetAndFaultStatus)
{
    control("set az 90");
    EXPECT_EQ((Bytes{0x01, 0x00, 0x00}), ask({0x72, 0x00, 0x00}));
    EXPECT_EQ((Bytes{0x00}), ask({0x82, 0x00, 0x09, 0x00, 0x00}));
    EXPECT_EQ((Bytes{0x03, 0x00, 0x00}), ask({0x72, 0x00, 0x00}));
    EXPECT_EQ((Bytes{0x00}), ask({0x82, 0x00, 0x0B, 0x00, 0x10}));
    EXPECT_EQ((Bytes{0x00, 0x10, 0x00}), ask({0x72, 0x00, 0x00}));
    control("disconnect 2 on");
    Bytes fault = ask({0x72, 0x00, 0x00});
    ASSERT_EQ(3u, fault.size());
    EXPECT_NE(0, fault[2]);
    // SEI encoders do not speak the register frames.
    EXPECT_TRUE(ask({0x70, 0x00, 0x00}).empty());
}

TEST_F(SimDevices, OutputsAnalogueWeatherSwitchesAndDisplay)
{
    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x32, 0x04, 0x01}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF1, 0x33, 0x02, 0x3C}));
    EXPECT_EQ(1, s.outputs[0].relay[4]);
    EXPECT_EQ(60, s.outputs[1].duty[2]);

    control("adc 1 1.65");
    EXPECT_EQ((Bytes{0x52, 0x01, 0x00}), ask({0xF0, 0x34, 0x01}));

    control("weather temperature -1.0");
    EXPECT_EQ((Bytes{0xFF, 0xF6, 0x00}), ask({0xF4, 0x19}));
    control("weather pressure 1013.25");
    EXPECT_EQ((Bytes{0x00, 0x0F, 0x76, 0x02, 0x00}), ask({0xF4, 0x1A}));
    EXPECT_EQ((Bytes{0x00}), ask({0xF4, 0x1D, 0x01, 0x02}));
    EXPECT_EQ(0x0102, s.weather.calibration);

    EXPECT_EQ((Bytes{0xFF, 0x00}), ask({0xF0, 0x36}));
    control("switch right pressed");
    control("switch 3 pressed");
    EXPECT_EQ((Bytes{0xF5, 0x00}), ask({0xF0, 0x36}));

    EXPECT_EQ((Bytes{0x00}), ask({0xF0, 0x35, 18, 0, 4, 'A', 'Z', ' ', 0}));
    EXPECT_EQ(std::string("AZ"), std::string(s.display[0] + 18, 2));
    EXPECT_EQ(std::string::npos, control("display").find("AZ "));
    EXPECT_NE(std::string::npos, control("display").find("AZ\""));
}

TEST_F(SimDevices, HostileSwitchesShapeTheReplies)
{
    control("short 0 on");
    EXPECT_EQ(1u, ask({0x10}).size());
    EXPECT_EQ(2u, ask({0xF0, 0x09}).size());
    control("short 0 off");
    control("late 0 250");
    EXPECT_EQ(2u, ask({0x10}).size());
    EXPECT_EQ(250, delay);
    control("silent 1 on");
    EXPECT_TRUE(ask({0x11}).empty());
    control("silent 1 off");
    control("drop");
    EXPECT_TRUE(ask({0x11}).empty());
    control("drop off");
    EXPECT_EQ(2u, ask({0x11}).size());
}

TEST_F(SimDevices, ControlLinesAnswerOneLineAndRefuseNonsense)
{
    EXPECT_EQ("ok", control("set az 12.5"));
    EXPECT_NE(std::string::npos, control("state").find("\"az\":12.500"));
    EXPECT_EQ(0u, control("state").find('{'));
    EXPECT_EQ(std::string::npos, control("state").find('\n'));
    EXPECT_EQ(0u, control("set nothing 1").find("error"));
    EXPECT_EQ(0u, control("silent 15 on").find("error"));
    EXPECT_EQ(0u, control("switch 4 pressed").find("error"));
    EXPECT_EQ(0u, control("").find("error"));
    char reply[32];
    EXPECT_EQ(SIM_CONTROL_QUIT, sim_control(&s, "quit", reply, sizeof reply));
    // A small buffer cuts the state short instead of overrunning it.
    char tiny[16];
    sim_control(&s, "state", tiny, sizeof tiny);
    EXPECT_EQ(15u, strlen(tiny));
}
