// The stall and runaway watchdog of the drive. A motor can run while its
// axis does not move (a slipping clutch, a seized bearing, an encoder that
// sticks), or move the axis the wrong way (swapped motor wires): either way
// the drive would run it into the end stop. The watchdog follows how far the
// axis has got the way it is driven since its motor started, and calls the
// axis stalled when that has not grown for the set time, or when the axis has
// gone back more than a few degrees from the furthest point it reached.
#pragma once

#include <cstdint>

// What the watchdog knows of one axis since its motor last started.
struct AxisWatch
{
    int32_t sign;    // +1 driven up the scale, -1 down, 0 motor off
    double reading;  // the last position read
    double progress; // degrees moved the driven way since the start
    double furthest; // the most progress so far
    int32_t idle_ms; // motor time since progress last grew, in ticks, as the guard time counts
};

extern AxisWatch az_watch, el_watch;

// Further back than this from the furthest point is a runaway: more than any
// run-down from top speed after a reversal.
enum
{
    WATCH_RUNAWAY_DEGREES = 3
};

void watch_reset(AxisWatch *w);
// Time passes with the motor in the state of the last step.
void watch_tick(AxisWatch *w, int elapsed_ms);
// One position cycle: sign says how the motor is driven now, reading is the
// position just read. Returns 1 when the axis is stalled or running away.
int watch_step(AxisWatch *w, int sign, double reading, int limit_ms);
