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
    // A control line (when there is one) ahead of each frame, and the reply wanted.
    struct Step
    {
        const char *control;
        Bytes frame, want;
    };
    void play(const std::vector<Step> &steps)
    {
        for (size_t i = 0; i < steps.size(); i++)
        {
            if (steps[i].control)
            {
                control(steps[i].control);
            }
            EXPECT_EQ(steps[i].want, ask(steps[i].frame)) << "step " << i;
        }
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
        {{0x10}, 1},           {{0x5F}, 1},          {{0x72, 0, 0}, 3},          {{0x83, 0, 0, 0, 0}, 5},
        {{0xF0}, 0},           {{0xF0, 0x07}, 7},    {{0xF0, 0x2B}, 7},          {{0xF0, 0x34}, 3},
        {{0xF0, 0x35, 0, 0}, 0}, {{0xF0, 0x35, 0, 0, 9}, 14}, {{0xF0, 0x02}, 4}, {{0x00}, -1},
        {{0xA5}, -1},          {{0xF0, 0x99}, 2},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(row.want, sim_frame_length(&s, row.bytes.data(), (int)row.bytes.size())) << (int)row.bytes[0];
    }
    s.encoders[0].mode = 0x04;
    const uint8_t wide[2] = {0xF0, 0x02};
    EXPECT_EQ(6, sim_frame_length(&s, wide, 2));
}

TEST_F(SimDevices, EncodersReadTheMountIn16Or32BitsAndKeepTheirSettings)
{
    play({
        {"set az 180", {0x10}, {0x46, 0x50}},
        {"set el 90", {0x11}, {0x23, 0x28}},
        {"set el -5", {0x11}, {0x8A, 0xAC}}, // below the horizon the count wraps to the top of the turn
        {"mode 0 4", {0x10}, {0x00, 0x00, 0x46, 0x50}},
        {nullptr, {0xF0, 0x02, 0x00, 0x00, 0x00, 0x64}, {0x00}}, // a 32-bit preset
        {nullptr, {0x10}, {0x00, 0x00, 0x00, 0x64}},
        {nullptr, {0xF1, 0x09}, {0x8C, 0xA0, 0x00}},
        {nullptr, {0xF1, 0x0A, 0x0E, 0x10}, {0x00}},
        {nullptr, {0xF1, 0x09}, {0x0E, 0x10, 0x00}},
    });
}

TEST_F(SimDevices, AssignAddressNeedsTheSerialAndSleepSilencesEncodersOnly)
{
    play({
        {"set az 180", {0xF0, 0x07, 0x00, 0x00, 0x07, 0xD1, 0x05}, {}}, // another serial
        {nullptr, {0xF0, 0x07, 0x00, 0x00, 0x07, 0xD0, 0x05}, {0x00}},
        {nullptr, {0x10}, {}},
        {nullptr, {0x15}, {0x46, 0x50}},
        {nullptr, {0x5F}, {}},
        {nullptr, {0x15}, {}},
        {nullptr, {0xF1, 0x09}, {}},
        {nullptr, {0xF1, 0x32, 0x03, 0x01}, {0x00}}, // the boards on the same addresses stay awake
        {nullptr, {0x6F}, {}},
        {"set el 90", {0x51}, {}}, // sleep by address leaves the others awake
        {nullptr, {0x11}, {}},
        {nullptr, {0x15}, {0x46, 0x50}},
    });
}

TEST_F(SimDevices, OutputsAnalogueWeatherSwitchesAndDisplay)
{
    play({
        {nullptr, {0xF0, 0x32, 0x04, 0x01}, {0x00}},
        {nullptr, {0xF1, 0x33, 0x02, 0x3C}, {0x00}},
        {"adc 1 1.65", {0xF0, 0x34, 0x01}, {0x52, 0x01, 0x00}},
        {"weather temperature -1.0", {0xF4, 0x19}, {0xFF, 0xF6, 0x00}},
        {"weather pressure 1013.25", {0xF4, 0x1A}, {0x00, 0x0F, 0x76, 0x02, 0x00}},
        {nullptr, {0xF0, 0x36}, {0xFF, 0x00}},
        {"switch right pressed", {0xF0, 0x36}, {0xFD, 0x00}},
        {"switch 3 pressed", {0xF0, 0x36}, {0xF5, 0x00}},
        {nullptr, {0xF0, 0x35, 18, 0, 4, 'A', 'Z', ' ', 0}, {0x00}},
    });
    EXPECT_EQ(1, s.outputs[0].relay[4]);
    EXPECT_EQ(60, s.outputs[1].duty[2]);
    EXPECT_EQ(std::string("AZ"), std::string(s.display[0] + 18, 2));
    EXPECT_NE(std::string::npos, control("display").find("AZ\""));
}

TEST_F(SimDevices, HostileSwitchesShapeTheReplies)
{
    play({
        {"set el 90", {0x11}, {0x23, 0x28}},
        {"set az 180", {0x10}, {0x46, 0x50}},
        {"short 0 on", {0x10}, {0x46}},
        {nullptr, {0xF0, 0x09}, {0x8C, 0xA0}},
        {"short 0 off", {0x10}, {0x46, 0x50}},
        {"silent 1 on", {0x11}, {}},
        {"silent 1 off", {0x11}, {0x23, 0x28}},
        {"drop", {0x10}, {}},
        {"drop off", {0x10}, {0x46, 0x50}},
    });
    control("late 0 250");
    EXPECT_EQ(2u, ask({0x10}).size());
    EXPECT_EQ(250, delay);
}

TEST_F(SimDevices, OnlyFittedBoardsSwitchAndTheyCountOnTimeAndSwitchings)
{
    play({
        {nullptr, {0xF2, 0x32, 0x04, 0x01}, {}}, // an encoder but no board at 2
        {"board 2 on", {0xF2, 0x32, 0x04, 0x01}, {0x00}},
        {nullptr, {0xF0, 0x32, 0x03, 0x01}, {0x00}},
        {nullptr, {0xF0, 0x32, 0x03, 0x01}, {0x00}}, // closed again: no switching
    });
    sim_station_advance(&s, 1500);
    play({{nullptr, {0xF0, 0x32, 0x03, 0x00}, {0x00}}});
    sim_station_advance(&s, 500);
    EXPECT_EQ(1500, s.outputs[0].relay_on_ms[3]);
    EXPECT_EQ(2, s.outputs[0].relay_switches[3]);
    EXPECT_EQ(2000, s.outputs[2].relay_on_ms[4]);
    EXPECT_NE(std::string::npos, control("state").find("\"on_ms\":[0,0,1500,0],\"switches\":[0,0,2,0]"));
}

TEST_F(SimDevices, BroadcastFramesAreObeyedAndAnsweredByEveryDeviceAtOnce)
{
    control("set az 180"); // 0x4650
    control("set el 30");  // 0x0BB8
    play({
        {nullptr, {0x1F}, {0x02, 0x10}},            // the two encoders' bits run together
        {nullptr, {0xFF, 0x32, 0x04, 0x01}, {0x00}}, // both boards answer alike
        {nullptr, {0x5F}, {}},
        {nullptr, {0x10}, {}},
    });
    EXPECT_EQ(1, s.outputs[0].relay[4]);
    EXPECT_EQ(1, s.outputs[1].relay[4]);
    EXPECT_EQ(1, s.sleep_frames);
}

TEST_F(SimDevices, SeededLineFaultsAndAStuckEncoder)
{
    control("set az 180");
    control("loss 0 1");
    EXPECT_EQ(Bytes(), ask({0x10}));
    control("loss 0 0");
    control("corrupt 0 1");
    Bytes bent = ask({0x10});
    ASSERT_EQ(2u, bent.size());
    EXPECT_EQ(1, __builtin_popcount(bent[0] ^ 0x46));
    EXPECT_EQ(1, __builtin_popcount(bent[1] ^ 0x50));
    control("corrupt 0 0");
    control("stray 0 1");
    Bytes stray = ask({0x10});
    ASSERT_EQ(4u, stray.size());
    EXPECT_EQ(0x46, stray[0]);
    EXPECT_EQ(0x50, stray[2]);
    // The same seed gives the same faults.
    control("stray 0 0.5");
    control("seed 7");
    Bytes first = ask({0x10});
    control("seed 7");
    EXPECT_EQ(first, ask({0x10}));
    EXPECT_EQ(0u, control("loss 0 1.5").find("error"));
    control("stray 0 0");

    control("stall az on");
    control("set az 200");
    EXPECT_EQ(Bytes({0x46, 0x50}), ask({0x10})) << "the count stays where it stuck";
    EXPECT_NE(std::string::npos, control("state").find("\"stalled\":{\"az\":1,\"el\":0}"));
    control("stall az off");
    EXPECT_EQ(Bytes({0x4E, 0x20}), ask({0x10}));
}
