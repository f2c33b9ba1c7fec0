#include "core/serial_port.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

void serial_port_open_failure(const char *name, int error, char *why, int why_size)
{
    if (!why || why_size < 1)
    {
        return;
    }
    switch (error)
    {
    case EACCES:
    case EPERM:
        snprintf(why, (size_t)why_size, "No permission for %s: add the user to the dialout group and log in again",
                 name);
        break;
    case ENOENT:
    case ENODEV:
    case ENXIO:
        snprintf(why, (size_t)why_size, "No such port %s", name);
        break;
    case EBUSY:
    case EWOULDBLOCK:
        snprintf(why, (size_t)why_size, "Port %s is in use by another program", name);
        break;
    case ENOTTY:
        snprintf(why, (size_t)why_size, "%s is not a serial port", name);
        break;
    default:
        snprintf(why, (size_t)why_size, "Port %s could not be opened: %s", name, strerror(error));
        break;
    }
}

static speed_t serial_port_speed(int baud)
{
    switch (baud)
    {
    case 1200:
        return B1200;
    case 2400:
        return B2400;
    case 4800:
        return B4800;
    case 19200:
        return B19200;
    case 38400:
        return B38400;
    case 57600:
        return B57600;
    default:
        return B9600;
    }
}

void serial_port_raw_termios(struct termios *tio, int baud, int seven_bits, int parity, int two_stop_bits, int rtscts,
                             int xonxoff)
{
    // Every byte is data, whatever the port was left with: no echo, no
    // newline mapping, no signals, parity unchecked.
    tio->c_iflag = xonxoff ? IXON | IXOFF : 0;
    tio->c_oflag = 0;
    tio->c_lflag = 0;
    tio->c_cflag = CREAD | CLOCAL | (seven_bits ? CS7 : CS8);
    switch (parity)
    {
    case 1:
        tio->c_cflag |= PARENB | PARODD;
        break;
    case 2:
        tio->c_cflag |= PARENB;
        break;
    case 3:
        tio->c_cflag |= PARENB | CMSPAR | PARODD;
        break;
    case 4:
        tio->c_cflag |= PARENB | CMSPAR;
        break;
    default:
        break;
    }
    // Linux has no 1.5 stop bits; it sends two, as most drivers do.
    if (two_stop_bits)
    {
        tio->c_cflag |= CSTOPB;
    }
    if (rtscts)
    {
        tio->c_cflag |= CRTSCTS;
    }
    tio->c_cc[VMIN] = 0;
    tio->c_cc[VTIME] = 0;
    speed_t speed = serial_port_speed(baud);
    cfsetispeed(tio, speed);
    cfsetospeed(tio, speed);
}

int serial_port_open(const char *name, char *why, int why_size)
{
    if (why && why_size > 0)
    {
        why[0] = 0;
    }
    int fd = open(name, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
    {
        serial_port_open_failure(name, errno, why, why_size);
        return -1;
    }
    // The lock keeps out a second instance of this program (root included);
    // TIOCEXCL keeps out any other program that opens the port after us.
    struct termios tio;
    int error = 0;
    if (tcgetattr(fd, &tio) != 0)
    {
        error = ENOTTY;
    }
    else if (flock(fd, LOCK_EX | LOCK_NB) != 0 || ioctl(fd, TIOCEXCL) != 0)
    {
        error = EBUSY;
    }
    if (error)
    {
        close(fd);
        serial_port_open_failure(name, error, why, why_size);
        return -1;
    }
    serial_port_raw_termios(&tio, 9600, 0, 0, 0, 0, 0);
    tcsetattr(fd, TCSANOW, &tio);
    return fd;
}

void serial_port_close(int fd)
{
    if (fd < 0)
    {
        return;
    }
    ioctl(fd, TIOCNXCL);
    flock(fd, LOCK_UN);
    close(fd);
}
