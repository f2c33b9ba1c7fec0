// A serial port as the radio and the EasyComm links use it: settings held as
// rows of the dialogs' lists, blocking reads that take a whole count or nothing.
#pragma once

#include <QStringList>
#include <cstdint>

class QSerialPort;

struct SerialLink
{
    QSerialPort *port; // null while closed
    char PortName[32];
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

// 0, or -1 when the port cannot be opened (the link is then closed).
int serial_open(SerialLink *link);
void serial_close(SerialLink *link);
// Drop whatever waits in either direction.
void serial_clear(SerialLink *link);
// Bytes accepted; 0 on a closed port. The bytes have left the port when it
// returns, so a radio that answers nothing has had them before the next
// command clears the buffers.
int serial_write(SerialLink *link, const uint8_t *data, int length);
// Exactly count bytes, or 0: waits up to periods of about 1 ms for the whole
// count to be there. What came short of it stays buffered.
int serial_read(SerialLink *link, uint8_t *buffer, int count, int periods);

// The ports a dialog offers: those the system has now, plus the stored one
// when it is not among them (a USB adapter unplugged today keeps its place),
// sorted. With log_details each system port's description goes to the debug log.
QStringList serial_port_names(const char *stored, int log_details);
