// The SEI command set: one thin function per command, each laying out its
// frame, exchanging it through sei_transact and unpacking the reply. Results
// reach the caller's variables only when the whole reply came in; the device's
// status byte is passed out unjudged. Every function returns 0 for success and
// 1 for failure unless its comment says otherwise.
#pragma once

#include "bus/encoders.h"

#include <cstdint>

enum SeiFrameClass
{
    SEI_CLASS_POSITION = 0x10,
    SEI_CLASS_SLEEP = 0x50,
    SEI_CLASS_WAKEUP = 0x60,
    SEI_CLASS_REGISTER_READ = 0x70,
    SEI_CLASS_REGISTER_WRITE = 0x80,
    SEI_CLASS_COMMAND = 0xF0
};

enum SeiCommandNumber
{
    SEI_SET_POSITION = 0x02,
    SEI_ASSIGN_ADDRESS = 0x07,
    SEI_READ_FACTORY_INFO = 0x08,
    SEI_READ_RESOLUTION = 0x09,
    SEI_CHANGE_RESOLUTION = 0x0A,
    SEI_READ_MODE = 0x0B,
    SEI_CHANGE_MODE_TEMPORARY = 0x0C,
    SEI_CHANGE_MODE_POWER_UP = 0x0D,
    SEI_READ_WIND_SPEED = 0x17,
    SEI_READ_WIND_DIRECTION = 0x18,
    SEI_READ_THERMOMETER = 0x19,
    SEI_READ_BAROMETER = 0x1A,
    SEI_READ_ALTIMETER = 0x1B,
    SEI_WRITE_BAROMETER_CALIBRATION = 0x1D,
    SEI_READ_RANGE = 0x28,
    SEI_WRITE_RANGE = 0x29,
    SEI_READ_PPR = 0x2A,
    SEI_WRITE_PPR = 0x2B,
    SEI_RELAY_CONTROL = 0x32,
    SEI_PWM_CONTROL = 0x33,
    SEI_READ_ADC = 0x34,
    SEI_DISPLAY_MSG = 0x35,
    SEI_READ_GPIO = 0x36
};

// Read budgets, in empty reads of about 2 ms.
enum SeiBudget
{
    SEI_BUDGET_SHORT = 50,
    SEI_BUDGET_NORMAL = 100,
    SEI_BUDGET_LONG = 1500
};

enum
{
    SEI_BROADCAST = 15,
    SEI_DISPLAY_MAX_TEXT = 20,
    SEI_FRAME_MAX = 5 + SEI_DISPLAY_MAX_TEXT, // the display text frame is the longest
    SEI_FACTORY_REPLY = 15
};

// Frames and replies as bytes, apart from any port. Every frame is laid out
// here: the first byte of the class and address, then the body. Returns the
// frame's length, or 0 for an address no device can have (outside 0 to 14,
// where sleep and wake-up may also use the broadcast 15); sei_transact sends
// no frame of length 0.
int sei_frame(int frame_class, int address, const uint8_t *body, int body_length, uint8_t *frame);
void sei_put_u16(uint8_t *at, uint16_t value);
void sei_put_u32(uint8_t *at, uint32_t value);
uint16_t sei_get_u16(const uint8_t *at);
uint32_t sei_get_u32(const uint8_t *at);
// A multi-byte frame: first byte, command number, arguments. Returns its
// length, 0 as sei_frame does.
int sei_command_frame(int address, int command, const uint8_t *args, int arg_count, uint8_t *frame);
// The position in a reply of `count` bytes: 0 and the position, or 1. A
// single byte counts only from an encoder of at most 256 counts a turn.
int sei_decode_position(uint8_t mode, uint16_t resolution, const uint8_t *reply, int count, uint32_t *position);
void sei_decode_factory_info(const uint8_t *reply, EncoderFactoryInfo *info, uint8_t *crc);

// Reads. The position read takes the encoder's resolution in force, which
// tells whether a one-byte answer is whole.
int sei_read_position(int a, uint8_t mode, uint16_t resolution, uint32_t *position);
int sei_read_factory_info(int a, EncoderFactoryInfo *info, uint8_t *crc);
int sei_read_resolution(int a, uint16_t *resolution, uint8_t *status);
int sei_read_mode(int a, uint8_t *mode, uint8_t *status);
int sei_read_wind_speed(int a, uint16_t *speed, uint8_t *status);
int sei_read_wind_direction(int a, uint16_t *direction, uint8_t *status);
int sei_read_thermometer(int a, int16_t *temperature, uint8_t *status);
int sei_read_barometer(int a, uint32_t *pressure, uint8_t *status);
int sei_read_altimeter(int a, uint32_t *altitude, uint8_t *status);
int sei_read_range(int a, uint32_t *range, uint8_t *status);
int sei_read_ppr(int a, uint32_t *ppr, uint8_t *level, uint8_t *status);
int sei_read_adc(int a, uint8_t channel, uint16_t *value, uint8_t *status);
int sei_read_gpio(int a, uint8_t *gpio, uint8_t *status);

// Writes; each takes the device's status byte as its reply.
int sei_set_position(int a, uint8_t mode, uint32_t position, uint8_t *status);
int sei_assign_address(int a, uint32_t serial, uint8_t new_address, uint8_t *status);
int sei_change_resolution(int a, uint16_t resolution, uint8_t *status);
int sei_change_mode_temporary(int a, uint8_t mode, uint8_t *status);
int sei_change_mode_power_up(int a, uint8_t mode, uint8_t *status);
int sei_write_barometer_calibration(int a, uint16_t value, uint8_t *status);
int sei_write_range(int a, uint32_t range, uint8_t *status);
int sei_write_ppr(int a, uint32_t ppr, uint8_t level, uint8_t *status);
int sei_relay_control(int a, uint8_t port, uint8_t state, uint8_t *status);
int sei_pwm_control(int a, uint8_t port, uint8_t duty, uint8_t *status);
// A text of more than 20 bytes is refused: nothing is sent and the length
// itself is returned. Callers count the terminating zero in `length`.
int sei_display_msg(int a, uint8_t x, uint8_t y, uint8_t length, const char *text, uint8_t *status);

// Without a reply: 0 when the byte went out.
int sei_sleep(int a);
// Always to the broadcast address; waits 5 ms for the devices to come up.
int sei_wakeup(void);
