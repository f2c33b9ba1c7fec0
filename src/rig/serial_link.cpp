#include "rig/serial_link.h"

#include "core/clock.h"

#include <QDebug>
#include <QDir>
#include <QSerialPortInfo>
#include <QSocketNotifier>
#include <QStringList>
#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

static char serial_last_failure[SERIAL_PORT_NAME_SIZE + 128];
static char serial_by_id_folder[SERIAL_PORT_NAME_SIZE];
// The one link watched for readable bytes (the radio's).
static QSocketNotifier *serial_notifier;
static const SerialLink *serial_watched;

int serial_baud_rate(int row)
{
    static const int rates[8] = {1200, 2400, 4800, 9600, 9600, 19200, 38400, 57600};
    return row >= 0 && row < 8 ? rates[row] : 9600;
}

const char *serial_failure(void)
{
    return serial_last_failure;
}

int serial_open(SerialLink *link)
{
    serial_close(link);
    int fd = serial_port_open(link->PortName, serial_last_failure, sizeof serial_last_failure);
    if (fd < 0)
    {
        qDebug("Serial port %s could not be opened: %s", link->PortName, serial_last_failure);
        return -1;
    }
    struct termios tio;
    if (tcgetattr(fd, &tio) == 0)
    {
        serial_port_raw_termios(&tio, serial_baud_rate(link->BaudRate), link->DataBits == 0, link->Parity,
                                link->StopBits == 1 || link->StopBits == 2, link->FlowControl == 1,
                                link->FlowControl == 2);
        tcsetattr(fd, TCSANOW, &tio);
    }
    // A radio's interface may take its power from DTR and RTS.
    int lines = TIOCM_DTR | TIOCM_RTS;
    ioctl(fd, TIOCMBIS, &lines);
    link->fd = fd;
    link->is_open = 1;
    qDebug("Serial port %s opened successfully", link->PortName);
    return 0;
}

void serial_close(SerialLink *link)
{
    if (!link->is_open)
    {
        return;
    }
    if (serial_watched == link)
    {
        serial_watch(link, nullptr);
    }
    // What has not left by now never will: the close must not wait for a
    // line held back by flow control.
    tcflush(link->fd, TCIOFLUSH);
    int lines = TIOCM_DTR | TIOCM_RTS;
    ioctl(link->fd, TIOCMBIC, &lines);
    serial_port_close(link->fd);
    link->is_open = 0;
    link->fd = -1;
    qDebug("Serial port %s closed", link->PortName);
}

void serial_clear(SerialLink *link)
{
    // Only input is dropped. Flushing output too would throw away a command
    // the radio has not had yet (on a pty, what the far end has not read).
    if (link->is_open)
    {
        tcflush(link->fd, TCIFLUSH);
    }
}

int serial_write(SerialLink *link, const uint8_t *data, int length)
{
    if (!link->is_open || length < 1)
    {
        return 0;
    }
    ssize_t n;
    do
    {
        n = write(link->fd, data, (size_t)length);
    } while (n < 0 && errno == EINTR);
    if (n < 0)
    {
        return errno == EAGAIN || errno == EWOULDBLOCK ? 0 : -1;
    }
    return (int)n;
}

int serial_output_pending(SerialLink *link)
{
    int queued = 0;
    if (!link->is_open || ioctl(link->fd, TIOCOUTQ, &queued) != 0)
    {
        return 0;
    }
    return queued;
}

void serial_discard_output(SerialLink *link)
{
    if (link->is_open)
    {
        tcflush(link->fd, TCOFLUSH);
    }
}

int serial_read_some(SerialLink *link, uint8_t *buffer, int size)
{
    if (!link->is_open || size < 1)
    {
        return 0;
    }
    ssize_t n;
    do
    {
        n = read(link->fd, buffer, (size_t)size);
    } while (n < 0 && errno == EINTR);
    return n > 0 ? (int)n : 0;
}

static int serial_available(SerialLink *link)
{
    int available = 0;
    return ioctl(link->fd, FIONREAD, &available) == 0 ? available : 0;
}

int serial_input_pending(SerialLink *link)
{
    return link->is_open ? serial_available(link) : 0;
}

int serial_skip(SerialLink *link, int count)
{
    uint8_t scratch[256];
    int skipped = 0;
    while (skipped < count)
    {
        int want = count - skipped < (int)sizeof scratch ? count - skipped : (int)sizeof scratch;
        int n = serial_read_some(link, scratch, want);
        if (n <= 0)
        {
            break;
        }
        skipped += n;
    }
    return skipped;
}

int serial_read(SerialLink *link, uint8_t *buffer, int count, int periods)
{
    if (!link->is_open || periods < 1 || count < 1)
    {
        return 0;
    }
    int64_t end = clock_monotonic_ms() + periods;
    for (;;)
    {
        if (serial_available(link) >= count)
        {
            return serial_read_some(link, buffer, count) == count ? count : 0;
        }
        if (clock_monotonic_ms() >= end)
        {
            return 0;
        }
        // Part of the count is there: poll would say so at once, so sleep.
        if (serial_available(link) > 0)
        {
            poll(nullptr, 0, 1);
        }
        else
        {
            serial_wait_readable(link, 1);
        }
    }
}

int serial_wait_readable(SerialLink *link, int ms)
{
    if (!link->is_open)
    {
        return 0;
    }
    struct pollfd p = {link->fd, POLLIN, 0};
    return poll(&p, 1, ms) == 1 && (p.revents & POLLIN) ? 1 : 0;
}

void serial_watch(SerialLink *link, void (*on_readable)(void))
{
    delete serial_notifier;
    serial_notifier = nullptr;
    serial_watched = nullptr;
    if (!on_readable || !link->is_open)
    {
        return;
    }
    serial_notifier = new QSocketNotifier(link->fd, QSocketNotifier::Read);
    QObject::connect(serial_notifier, &QSocketNotifier::activated, [on_readable]() { on_readable(); });
    serial_watched = link;
}

void serial_set_by_id_folder(const char *folder)
{
    snprintf(serial_by_id_folder, sizeof serial_by_id_folder, "%s", folder ? folder : "");
}

// The stable names of the adapters plugged in now: a name under by-id stays
// the same whichever ttyUSB number the adapter gets today.
static void serial_add_by_id(QStringList *names)
{
    QDir folder(QString::fromUtf8(serial_by_id_folder[0] ? serial_by_id_folder : "/dev/serial/by-id"));
    const QFileInfoList entries = folder.entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &entry : entries)
    {
        names->append(entry.absoluteFilePath());
    }
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
    serial_add_by_id(&names);
    QString kept = QString::fromUtf8(stored ? stored : "");
    if (!kept.isEmpty() && !names.contains(kept))
    {
        names << kept;
    }
    names.sort();
    return names;
}
