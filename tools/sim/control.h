// The simulator's control lines: text in, one line of text out. Through them
// a test or a person sets and reads everything the devices see and say.
//
//   state                      one JSON object: mount, end-stop hits, stalls,
//                              outputs with each relay's on-time and number of
//                              switchings, sleeping encoders, switches, ...
//   set az|el DEG              put the mount there, at rest
//   set az_speed|el_speed DPS  top speeds
//   set az_accel|el_accel DPS2 the ramp up and down while a motor has power
//   set coast DEG              run-on after a stop from top speed (0: dead stop)
//   set min_duty PCT           below this PWM duty a motor does not turn
//   set az_pwm|el_pwm 0|1      1: the PWM duty sets the axis's speed (a relay
//                              with duty 0 moves nothing); 0: relays alone
//   set az_min|az_max|el_min|el_max DEG   the end stops
//   stall az|el on|off         the axis's encoders stick; the motor still runs
//   board ADDR on|off          a relay and PWM board at that address
//   silent ADDR on|off         the address answers nothing
//   short ADDR on|off          its replies lose their last byte
//   late ADDR MS               its replies come MS late
//   loss|corrupt|stray ADDR RATE  per reply byte (0 to 1): lost, one bit
//                              flipped, or followed by a stray byte
//   seed N                     restart the fault generator
//   drop [on|off]              the whole line goes dead, or comes back
//   disconnect ADDR on|off     a BRT-38 reports its encoder missing
//   mode ADDR M                an encoder's mode byte (16/32-bit, multi-turn)
//   display                    the display's text grid, rows as a JSON array
//   weather NAME VALUE         speed (km/h), direction (deg), temperature (C),
//                              pressure (mb), altitude (m)
//   adc CHANNEL VOLTS          an analogue input
//   switch N pressed|released  N is 0..3 or left, right, up, down
//   frames                     the last frames with their times, as JSON
//   help                       these lines, in one
//   quit
#pragma once

#include "sim/devices.h"

enum
{
    SIM_CONTROL_OK = 0,
    SIM_CONTROL_QUIT = 1
};

// Answers the line into reply (no newline). Returns SIM_CONTROL_QUIT for quit.
int sim_control(SimStation *s, const char *line, char *reply, int size);
// The state line alone.
void sim_state_json(const SimStation *s, char *reply, int size);
