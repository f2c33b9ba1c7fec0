// The simulator's line as the program meets it: bytes at the pace of the
// devices' speed, and nothing understood at any other.
#include "sim_fixture.h"

#include "bus/sei_commands.h"

// The time of the last log entry that starts with the text.
static int64_t frame_ms(SimServer *sim, const char *text)
{
    std::lock_guard<std::mutex> hold(sim->lock);
    int64_t ms = -1;
    int count = sim->station.frame_count < SIM_FRAME_LOG ? sim->station.frame_count : SIM_FRAME_LOG;
    for (int i = 0; i < count; i++)
    {
        const SimFrameEntry *e = &sim->station.frames[(sim->station.frame_count - count + i) % SIM_FRAME_LOG];
        ms = std::string(e->text).rfind(text, 0) == 0 ? e->ms : ms;
    }
    return ms;
}

TEST_F(SimBus, RepliesWaitForTheRequestsWireTimeAndTheTurnaround)
{
    uint32_t position = 0;
    ASSERT_EQ(0, sei_read_position(0, 0, &position));
    // One byte at 9600 baud is 1.04 ms, and the device turns round in 3.
    EXPECT_GE(frame_ms(sim, "<") - frame_ms(sim, "> 10"), 4);
}

TEST_F(SimBus, AtAnotherSpeedTheDevicesHearOnlyNoise)
{
    sei_link_reset();
    bus_set_key("BaudRate", "19200");
    ASSERT_EQ(0, bus_open_on(sim->device));
    uint32_t position = 7;
    EXPECT_EQ(1, sei_read_position(0, 0, &position));
    EXPECT_EQ(7u, position);
    EXPECT_EQ(1, frames_seen("! 10"));
}
