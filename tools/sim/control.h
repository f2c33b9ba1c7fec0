// The simulator's control lines: text in, one line of text out. Through them
// a test or a person sets and reads everything the devices see and say.
//
//   state                      one JSON object: mount, outputs, switches, ...
//   set az|el DEG              put the mount there
//   set az_speed|el_speed DPS  top speeds; set coast MS  run-down time
//   silent ADDR on|off         the address answers nothing
//   short ADDR on|off          its replies lose their last byte
//   late ADDR MS               its replies come MS late
//   drop [on|off]              the whole line goes dead, or comes back
//   disconnect ADDR on|off     a BRT-38 reports its encoder missing
//   mode ADDR M                an encoder's mode byte (16/32-bit, multi-turn)
//   display                    the display's text grid, rows as a JSON array
//   weather NAME VALUE         speed (km/h), direction (deg), temperature (C),
//                              pressure (mb), altitude (m)
//   adc CHANNEL VOLTS          an analogue input
//   switch N pressed|released  N is 0..3 or left, right, up, down
//   frames                     the last frames with their times, as JSON
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
