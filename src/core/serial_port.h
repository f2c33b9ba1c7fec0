// Opening a serial port the way every link of the station wants it: raw, not
// the controlling terminal, not waiting for a carrier, and held for this
// program alone, so two instances can never share a line (and tear each
// other's frames apart). A port that cannot be opened says why in words the
// operator can act on.
#pragma once

#include <climits>

struct termios;

enum
{
    // Linux names ports by path, and the stable names under /dev/serial/by-id
    // run well past 31 characters.
    SERIAL_PORT_NAME_SIZE = PATH_MAX
};

// The port's descriptor, non-blocking, raw at 9600 8N1 until the caller sets
// its own line, or -1. On failure why (when given) holds the operator's text:
// permission denied names the dialout group, a missing device says there is no
// such port, a port held elsewhere says it is in use.
int serial_port_open(const char *name, char *why, int why_size);
// Release the lock and close.
void serial_port_close(int fd);
// The operator's text for the errno of a failed open.
void serial_port_open_failure(const char *name, int error, char *why, int why_size);

// A raw line in tio: speed, seven or eight bits, parity (0 none, 1 odd,
// 2 even, 3 mark, 4 space), one or two stop bits, RTS/CTS and XON/XOFF as
// asked; reads never block.
void serial_port_raw_termios(struct termios *tio, int baud, int seven_bits, int parity, int two_stop_bits,
                             int rtscts, int xonxoff);
