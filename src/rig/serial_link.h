// A serial port as the radio and the EasyComm links use it: settings held as
// rows of the dialogs' lists, and a line that never holds the cycle up. Reads
// take what is there, writes hand the kernel what it accepts now; waiting for
// a radio is the caller's business, across ticks.
#pragma once

#include "core/serial_port.h"

#include <QStringList>
#include <cstdint>

struct SerialLink
{
    int32_t is_open; // the fields below mean something only while set
    int32_t fd;
    char PortName[SERIAL_PORT_NAME_SIZE];
    int32_t Port;        // row of the dialog's port list
    int32_t BaudRate;    // row: 1200 2400 4800 9600 14400 19200 38400 57600
    int32_t DataBits;    // 0 seven bits, else eight
    int32_t StopBits;    // 0 one, 1 one and a half, 2 two
    int32_t Parity;      // 0 none, 1 odd, 2 even, 3 mark, 4 space
    int32_t FlowControl; // 0 none, 1 hardware, 2 software
};

// The line speed of a BaudRate row. Row 4 is the 14400 of the list, which
// the port opens at 9600; rows outside the list are 9600 too.
int serial_baud_rate(int row);

// 0, or -1 when the port cannot be opened (the link is then closed and
// serial_failure says why, for the status bar).
int serial_open(SerialLink *link);
const char *serial_failure(void);
void serial_close(SerialLink *link);
// Drop what has come in and not been read.
void serial_clear(SerialLink *link);
// Bytes the kernel took now, 0 to length, without waiting: a line held back
// by flow control (a radio that is off, a cable without RTS/CTS) takes
// nothing more once its buffer is full. 0 on a closed port, -1 on a failed one.
int serial_write(SerialLink *link, const uint8_t *data, int length);
// Bytes written but not yet on the wire.
int serial_output_pending(SerialLink *link);
// Throw away what has not left: a command that timed out must not reach the
// radio late.
void serial_discard_output(SerialLink *link);
// What has come in, up to size bytes, without waiting.
int serial_read_some(SerialLink *link, uint8_t *buffer, int size);
// Exactly count bytes, or 0: waits up to periods of about 1 ms for the whole
// count to be there. What came short of it stays buffered.
int serial_read(SerialLink *link, uint8_t *buffer, int count, int periods);
// Bytes waiting in the input queue (0 when the port is closed).
int serial_input_pending(SerialLink *link);
// Throw away up to count waiting bytes without waiting: how many went.
int serial_skip(SerialLink *link, int count);
// 1 when bytes wait to be read within ms milliseconds, else 0.
int serial_wait_readable(SerialLink *link, int ms);
// Call back whenever the port has bytes to read, from the event loop (null
// stops it). Only the GUI thread's loop turns it; code without one polls.
void serial_watch(SerialLink *link, void (*on_readable)(void));

// The ports a dialog offers: those the system has now with their stable
// /dev/serial/by-id names, plus the stored one when it is not among them (a
// USB adapter unplugged today keeps its place), sorted. With log_details each
// system port's description goes to the debug log.
QStringList serial_port_names(const char *stored, int log_details);
// Where the stable names are looked for; tests name their own folder (null
// or "" restores /dev/serial/by-id).
void serial_set_by_id_folder(const char *folder);
