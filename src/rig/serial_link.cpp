#include "rig/serial_link.h"

#include <QDebug>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QStringList>
#include <termios.h>

int serial_baud_rate(int row)
{
    static const int rates[8] = {1200, 2400, 4800, 9600, 9600, 19200, 38400, 57600};
    return row >= 0 && row < 8 ? rates[row] : 9600;
}

static QSerialPort::StopBits serial_stop_bits(int row)
{
    switch (row)
    {
    case 1:
        return QSerialPort::OneAndHalfStop;
    case 2:
        return QSerialPort::TwoStop;
    default:
        return QSerialPort::OneStop;
    }
}

static QSerialPort::Parity serial_parity(int row)
{
    static const QSerialPort::Parity parities[5] = {QSerialPort::NoParity, QSerialPort::OddParity,
                                                    QSerialPort::EvenParity, QSerialPort::MarkParity,
                                                    QSerialPort::SpaceParity};
    return row >= 0 && row < 5 ? parities[row] : QSerialPort::NoParity;
}

static QSerialPort::FlowControl serial_flow_control(int row)
{
    switch (row)
    {
    case 1:
        return QSerialPort::HardwareControl;
    case 2:
        return QSerialPort::SoftwareControl;
    default:
        return QSerialPort::NoFlowControl;
    }
}

int serial_open(SerialLink *link)
{
    serial_close(link);
    QSerialPort *port = new QSerialPort(QString::fromUtf8(link->PortName));
    port->setBaudRate(serial_baud_rate(link->BaudRate), QSerialPort::AllDirections);
    port->setDataBits(link->DataBits == 0 ? QSerialPort::Data7 : QSerialPort::Data8);
    port->setParity(serial_parity(link->Parity));
    port->setStopBits(serial_stop_bits(link->StopBits));
    port->setFlowControl(serial_flow_control(link->FlowControl));
    link->port = port;
    if (port->open(QIODevice::ReadWrite))
    {
        qDebug("Serial port %s opened successfully", link->PortName);
        return 0;
    }
    qDebug("Serial port %s could not be opened", link->PortName);
    serial_close(link);
    return -1;
}

void serial_close(SerialLink *link)
{
    if (!link->port)
    {
        return;
    }
    if (link->port->isOpen())
    {
        link->port->setRequestToSend(false);
        link->port->setDataTerminalReady(false);
        link->port->close();
    }
    delete link->port;
    link->port = nullptr;
    qDebug("Serial port %s closed", link->PortName);
}

void serial_clear(SerialLink *link)
{
    if (link->port && link->port->isOpen())
    {
        // serial_write leaves nothing unsent, so only input is left to drop.
        // Flushing output too would be worse than useless: on a pty it throws
        // away what the far end has not read yet, and a radio that answers a
        // setting with nothing would never see it.
        link->port->clear(QSerialPort::Input);
        // Bytes the driver has passed up but nobody has read yet sit in the
        // port's own buffer, which clear() leaves alone on some versions.
        link->port->readAll();
    }
}

int serial_write(SerialLink *link, const uint8_t *data, int length)
{
    if (!link->port || !link->port->isOpen() || length < 1)
    {
        return 0;
    }
    qint64 accepted = link->port->write((const char *)data, length);
    // The port writes from its own buffer as the event loop turns; nothing
    // turns it while the engine blocks, so push the bytes out here. A second
    // is far beyond what 88 bytes take at the slowest speed we offer.
    for (int i = 0; i < 100 && link->port->bytesToWrite() > 0; i++)
    {
        link->port->waitForBytesWritten(10);
    }
    tcdrain((int)link->port->handle());
    return accepted < 0 ? 0 : (int)accepted;
}

int serial_read(SerialLink *link, uint8_t *buffer, int count, int periods)
{
    if (!link->port || !link->port->isOpen() || periods < 1 || count < 1)
    {
        return 0;
    }
    for (int i = 0; i <= periods; i++)
    {
        if (link->port->bytesAvailable() >= count)
        {
            qint64 n = link->port->read((char *)buffer, count);
            return n < 0 ? 0 : (int)n;
        }
        if (i < periods)
        {
            link->port->waitForReadyRead(1);
        }
    }
    return 0;
}

QStringList serial_port_names(const char *stored, int log_details)
{
    QStringList names;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports)
    {
        if (log_details)
        {
            qDebug("PortName:     %s", port.portName().toUtf8().constData());
            qDebug("Description:  %s", port.description().toUtf8().constData());
            qDebug("Manufacturer: %s", port.manufacturer().toUtf8().constData());
            qDebug("Location:     %s", port.systemLocation().toUtf8().constData());
            qDebug("Vendor:       %d", port.hasVendorIdentifier() ? port.vendorIdentifier() : 0);
            qDebug("Product:      %d", port.hasProductIdentifier() ? port.productIdentifier() : 0);
        }
        names << port.systemLocation();
    }
    QString kept = QString::fromUtf8(stored ? stored : "");
    if (!kept.isEmpty() && !names.contains(kept))
    {
        names << kept;
    }
    names.sort();
    return names;
}
