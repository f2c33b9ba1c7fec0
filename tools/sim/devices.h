// The devices of the simulated station on one bus: native SEI encoders, BRT-38
// encoders, relay and PWM boards, the analogue input module, the weather
// station, the character display and the switches. sim_reply answers a frame
// the way the hardware's frame tables say; it shares no code with the
// program's own command layer, so each can check the other. Like a real bus
// it answers a broadcast frame from every device at once, and its faults are
// switched on per address.
#pragma once

#include "sim/mount.h"

#include <cstdint>

enum SimDeviceKind
{
    SIM_DEVICE_NONE,
    SIM_DEVICE_SEI,
    SIM_DEVICE_BRT
};

enum SimAxis
{
    SIM_AXIS_NONE,
    SIM_AXIS_AZ,
    SIM_AXIS_EL
};

enum
{
    SIM_DISPLAY_ROWS = 8,
    SIM_DISPLAY_COLUMNS = 20,
    SIM_BRT_DISCONNECTED = 0x04, // the status a BRT-38 gives without its shaft encoder
    SIM_FRAME_LOG = 64,
    SIM_REPLY_MAX = 64 // the longest reply, stray bytes included
};

struct SimEncoder
{
    int kind;
    int axis;
    uint8_t mode; // bit 0 direction, bit 2 32-bit positions, bit 4 multi-turn
    uint8_t power_up_mode;
    uint16_t resolution; // counts per revolution
    uint32_t range;      // turns of a multi-turn device
    uint32_t ppr;        // pulses per revolution (the BRT-38 counts these)
    uint8_t index_level;
    uint32_t serial;
    int64_t preset; // counts added by a set-position
    uint8_t asleep;
    uint16_t brt_direction; // register 9: 1 counts up with the angle
    uint8_t disconnected;
};

struct SimFaults
{
    uint8_t silent;      // answers nothing
    uint8_t short_reply; // its replies lose their last byte
    int late_ms;         // its replies come this late
    // Per reply byte, 0 to 1: the byte is lost, has one bit flipped, or is
    // followed by a stray byte. Drawn from the station's seeded generator.
    double loss, corrupt, stray;
};

struct SimWeather
{
    int address;
    double wind_speed_kmh;
    double wind_direction_deg;
    double temperature_c;
    double pressure_mb;
    double altitude_m;
    uint16_t calibration; // the last calibration word written
};

struct SimFrameEntry
{
    int64_t ms;
    char text[200]; // "> F0 09" for a request, "< 8C A0 00" for a reply
};

struct SimStation
{
    SimMount mount;
    SimEncoder encoders[SIM_ADDRESSES];
    SimOutputs outputs[SIM_ADDRESSES];
    SimFaults faults[SIM_ADDRESSES];
    uint8_t stalled[3];    // by SimAxis: the axis's encoders stick
    double stall_angle[3]; // where they stuck
    uint64_t random_state; // the fault generator; the same seed gives the same faults
    int sleep_frames;      // sleep frames heard, broadcast or addressed
    uint8_t line_dropped;
    int adc_address;
    double adc_volts[4];
    SimWeather weather;
    uint8_t switch_pressed[4]; // left, right, up, down
    char display[SIM_DISPLAY_ROWS][SIM_DISPLAY_COLUMNS + 1];
    SimFrameEntry frames[SIM_FRAME_LOG];
    int frame_count;
};

// SEI encoders at 0 (azimuth) and 1 (elevation), BRT-38s at 2 and 3 on the
// same axes, the relay and PWM boards of the two axes at 0 and 1, the display
// and switches at each encoder address, the analogue module at 0, the weather
// station at 4.
void sim_station_init(SimStation *s);
// Time passes: the mount moves and the closed relays add to their on-time.
void sim_station_advance(SimStation *s, int elapsed_ms);
// The angle the encoders of an axis see: the mount's, or where they stuck.
double sim_axis_reading(const SimStation *s, int axis);
// Stick an axis's encoders where the mount is now, or free them.
void sim_stall(SimStation *s, int axis, int on);
void sim_seed(SimStation *s, uint64_t seed);

// The length of the frame that starts the bytes: more than count means wait
// for the rest, 0 means too few bytes to tell, -1 means the first byte starts
// no frame and is to be dropped.
int sim_frame_length(const SimStation *s, const uint8_t *bytes, int count);
// Answer one whole frame. Returns the reply's length (0: no reply) and the
// time the reply is to be held back.
int sim_reply(SimStation *s, const uint8_t *frame, int length, uint8_t *reply, int size, int *delay_ms);

// The position an SEI encoder reports now, and the pulses of a BRT-38.
uint32_t sim_encoder_counts(const SimStation *s, int address);
uint16_t sim_brt_pulses(const SimStation *s, int address);
// The analogue module's word for a voltage: 5 V spans 1024 steps.
uint16_t sim_adc_word(double volts);

void sim_frame_note(SimStation *s, int64_t ms, char direction, const uint8_t *bytes, int length);
