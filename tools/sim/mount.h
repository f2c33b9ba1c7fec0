// The simulated two-axis mount: it turns at the speed its motor outputs ask
// for, for the time it is told has passed. Nothing here reads a clock, so a
// test moves it by ticks and the pty loop by monotonic time.
#pragma once

#include <cstdint>

enum
{
    SIM_ADDRESSES = 15,
    SIM_PORTS = 5 // ports 1..4; index 0 unused
};

// The relay and PWM outputs of the board at one bus address.
struct SimOutputs
{
    uint8_t relay[SIM_PORTS];
    uint8_t duty[SIM_PORTS];
};

struct SimMount
{
    double az, el;                         // degrees
    double az_top_speed, el_top_speed;     // degrees per second at full drive
    double az_rate, el_rate;               // present speed, signed, degrees per second
    double az_min, az_max, el_min, el_max; // mechanical end stops
    int coast_ms;                          // run-down time after the motor stops; 0 stops dead
    int az_address, el_address;            // the boards whose outputs move each axis
};

void mount_init(SimMount *m);
// The speed an axis is driven at: ports `minus` and `plus` of the board turn
// it down and up. A port with a duty above 0 runs at that share of the top
// speed; a relay with no duty (a relay-only axis) runs at full speed. Both
// relays on cancel out, as they would in a reversing contactor.
double mount_drive_rate(const SimOutputs *board, int minus, int plus, double top_speed);
// Move both axes through elapsed_ms: azimuth by ports 3 (left, down the
// scale) and 4 (right), elevation by ports 1 (up) and 2 (down).
void mount_advance(SimMount *m, const SimOutputs outputs[SIM_ADDRESSES], int elapsed_ms);
