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

// The relay and PWM board at one bus address, and what its relays went
// through: how long each was closed and how often it changed state.
struct SimOutputs
{
    uint8_t present; // only a fitted board answers relay and PWM frames
    uint8_t relay[SIM_PORTS];
    uint8_t duty[SIM_PORTS];
    int64_t relay_on_ms[SIM_PORTS];
    int relay_switches[SIM_PORTS]; // each closing and each opening counts
};

struct SimMount
{
    double az, el;                         // degrees
    double az_top_speed, el_top_speed;     // degrees per second at full drive
    double az_accel, el_accel;             // degrees per second squared, up or down, while the motor has power
    double az_rate, el_rate;               // present speed, signed, degrees per second
    double az_min, az_max, el_min, el_max; // mechanical end stops
    double coast_deg;                      // run-on after the motor stops at top speed; 0 stops dead
    double min_duty;                       // percent; below it a PWM motor only hums
    uint8_t az_pwm, el_pwm;                // 1: the PWM duty sets the speed; 0: a relay alone runs at full speed
    uint8_t az_on_stop, el_on_stop;        // resting against an end stop now
    int az_stop_hits, el_stop_hits;        // arrivals at an end stop
    int az_address, el_address;            // the boards whose outputs move each axis
};

void mount_init(SimMount *m);
// Move both axes through elapsed_ms: azimuth by ports 3 (left, down the
// scale) and 4 (right), elevation by ports 1 (up) and 2 (down). On a PWM axis
// a closed relay runs at the share of the top speed its port's duty gives,
// and not at all below the minimum duty; on a relay axis it runs at full
// speed. Both relays closed cancel out, as in a reversing contactor.
void mount_advance(SimMount *m, const SimOutputs outputs[SIM_ADDRESSES], int elapsed_ms);
