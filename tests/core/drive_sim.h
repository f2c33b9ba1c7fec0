// The drive in closed loop with the simulated mount, in simulated time: the
// drive's frames go to the simulator's devices (and its frame log), the
// mount moves by the ticks and sleeps it is given, and the position read is
// the mount's angle to the encoders' 0.01 degree. Each exchange on the bus
// costs its wire time, as on the simulator's line, and stretches the tick.
// Nothing waits on a clock.
#pragma once

#include "sim/devices.h"

#include <cstdint>
#include <ctime>

struct DriveSim
{
    SimStation station;
    int64_t ms;    // simulated time since the start
    int tick;      // 50 ms ticks so far
    int az_starts; // relay-on frames per axis: starts and jog pulses
    int el_starts;
    int az_read_fails; // the azimuth position reads fail while set
    int az_mirrored;   // the azimuth encoder counts the other way, so the drive runs away from its target
    int instant;       // 1: the bus costs no time
    int64_t wire_us;   // wire time not yet passed on to the mount
    time_t utc_start;  // when set, the program's clock shows this plus the simulated time
    // What the position group runs between the read and the drive step.
    void (*after_read)(void);
};

// The station as the simulator sets it up (boards at 0 for azimuth and 1 for
// elevation), the drive's bus and sleeps routed into it. Settings are the
// caller's; the axis addresses are set here.
void drive_sim_start(DriveSim *sim);
// One 50 ms tick of the cycle's drive part: the mount moves, the guard timers
// count down, and every second tick the position is read and the drive steps.
void drive_sim_tick(DriveSim *sim);
// Hand the bus and sleeps back.
void drive_sim_stop(void);
