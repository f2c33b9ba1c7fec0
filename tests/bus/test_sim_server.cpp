// The simulator's line as the program meets it: bytes at the pace of the
// devices' speed, and nothing understood at any other.
#include "sim_fixture.h"

#include "bus/sei_commands.h"
#include "core/clock.h"

// A lower bound only: the devices can be late, never early.
TEST_F(SimBus, RepliesTakeTheWireTimeBothWaysAndTheTurnaround)
{
    uint32_t position = 0;
    int64_t start = clock_monotonic_ms();
    ASSERT_EQ(0, sei_read_position(0, 0, 36000, &position));
    // One byte out and two back at 1.04 ms each, and 3 ms to turn round.
    EXPECT_GE(clock_monotonic_ms() - start, 6);
}

TEST_F(SimBus, AtAnotherSpeedTheDevicesHearOnlyNoise)
{
    sei_link_reset();
    bus_set_key("BaudRate", "19200");
    ASSERT_EQ(0, bus_open_on(sim->device));
    uint32_t position = 7;
    EXPECT_EQ(1, sei_read_position(0, 0, 36000, &position));
    EXPECT_EQ(7u, position);
    EXPECT_EQ(1, frames_seen("! 10"));
}
