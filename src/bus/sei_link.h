// The SEI bus: one serial line shared by every device of the station, with the
// program as its only master. This layer owns the line and moves bytes; what
// the bytes mean is sei_commands' business.
#pragma once

#include "core/serial_port.h"

#include <cstdint>

struct termios;

// The line settings of the SEI section. The numbers are indices, not values:
// the file holds the words and numbers an operator reads.
struct SeiSettings
{
    char PortName[SERIAL_PORT_NAME_SIZE];
    int32_t BaudRate;    // 0..7: 1200 .. 57600
    int32_t DataBits;    // 0 is 7 bits, 1 is 8
    int32_t StopBits;    // 0 is 1, 1 is 1.5, 2 is 2
    int32_t Parity;      // None, Odd, Even, Mark, Space
    int32_t FlowControl; // kept and written back; only hardware flow control is applied
};

extern SeiSettings sei_settings;

// Read the section of the named INI file of the writable folder; missing keys
// take their defaults. Also sets SeiDebug and SeiDebugVerbose. Returns 0.
int sei_load_settings(const char *ini_name, SeiSettings *record);
// Write the section back in its normal words, keeping every other section.
int sei_save_settings(const char *ini_name, const SeiSettings *record);

// 0 when the port is open and settled, -1 when not; a failure is final.
int sei_open(void);
// Why the last open failed, for the status bar ("" after a good open).
const char *sei_open_failure(void);
// Save the section, close the log and the port. Returns 0.
int sei_close(void);
int sei_is_open(void);
// Close port and log without saving and forget the settings (between tests).
void sei_link_reset(void);

// One request and its reply. Returns the bytes written plus the bytes read,
// or -1 when the port is closed, the request is empty or the write failed. The read gives up after
// read_attempts empty reads of about 2 ms each, counted over the whole reply.
int sei_transact(const uint8_t *request, int request_length, uint8_t *reply, int reply_length, int read_attempts);

// One line of the bus log, written only while both debug flags are on.
void sei_log(const char *format, ...) __attribute__((format(printf, 1, 2)));

// The line's speed in baud for a speed index as the port is set to it: index
// 4 (14400) and anything outside the table run at 9600.
int sei_port_baud(int index);
// The port's settings made this line, whatever they were: raw bytes at the
// speed, size, parity and stop bits of the record, RTS/CTS only when the
// record asks for hardware flow control, never XON/XOFF.
void sei_line_termios(const SeiSettings *record, struct termios *tio);
