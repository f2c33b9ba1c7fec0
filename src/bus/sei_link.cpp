#include "bus/sei_link.h"

#include "core/clock.h"
#include "core/serial_port.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"

#include <QDebug>
#include <QDir>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

static const char *const sei_section = "SEI";
static const char *const sei_default_port = "/dev/ttyUSB0";

// The section's defaults, so that a close without an open still writes sense.
static SeiSettings sei_defaults(void)
{
    SeiSettings s = {};
    snprintf(s.PortName, sizeof s.PortName, "%s", sei_default_port);
    s.BaudRate = 3;
    s.DataBits = 1;
    return s;
}

SeiSettings sei_settings = sei_defaults();

static int sei_fd = -1;
static FILE *sei_log_file;
static std::mutex sei_mutex;

int sei_load_settings(const char *ini_name, SeiSettings *record)
{
    char path[600];
    settings_path(ini_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);

    SeiDebug = ini_int(&ini, sei_section, "SeiDebug", "0");
    SeiDebugVerbose = ini_int(&ini, sei_section, "SeiDebugVerbose", "0");
    ini_text(&ini, sei_section, "PortName", sei_default_port, record->PortName, sizeof record->PortName);
    record->BaudRate = settings_baud_index(ini_int(&ini, sei_section, "BaudRate", "9600"));
    record->DataBits = settings_data_bits_index(ini_int(&ini, sei_section, "DataBits", "8"));
    record->StopBits = settings_stop_bits_index(ini_double(&ini, sei_section, "StopBits", "1"));
    record->Parity = settings_parity_index(ini_value(&ini, sei_section, "Parity", "None"));
    record->FlowControl = settings_flow_index(ini_value(&ini, sei_section, "FlowControl", "None"));
    return 0;
}

int sei_save_settings(const char *ini_name, const SeiSettings *record)
{
    char path[600];
    settings_path(ini_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);

    ini_set_int(&ini, sei_section, "SeiDebug", SeiDebug);
    ini_set_int(&ini, sei_section, "SeiDebugVerbose", SeiDebugVerbose);
    ini_set(&ini, sei_section, "PortName", record->PortName);
    ini_set_int(&ini, sei_section, "BaudRate", settings_baud_rate(record->BaudRate));
    ini_set_int(&ini, sei_section, "DataBits", settings_data_bits(record->DataBits));
    ini_set(&ini, sei_section, "StopBits", settings_stop_bits_text(record->StopBits));
    ini_set(&ini, sei_section, "Parity", settings_parity_text(record->Parity));
    ini_set(&ini, sei_section, "FlowControl", settings_flow_text(record->FlowControl));
    return ini_write(path, &ini) == 0 ? 0 : -1;
}

int sei_port_baud(int index)
{
    // 14400 is not a speed the serial drivers offer; such a setting is kept in
    // the file but the line runs at 9600.
    if (index == 4)
    {
        return 9600;
    }
    return settings_baud_rate(index);
}

void sei_log(const char *format, ...)
{
    if (!sei_log_file || !SeiDebug || !SeiDebugVerbose)
    {
        return;
    }
    va_list args;
    va_start(args, format);
    vfprintf(sei_log_file, format, args);
    va_end(args);
    fflush(sei_log_file);
}

// A log that cannot be created is simply not written; the bus works without it.
static void sei_log_create(void)
{
    char path[600];
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    settings_path("sei_debug.log", path, sizeof path);
    sei_log_file = fopen(path, "w");
    if (!sei_log_file)
    {
        return;
    }
    time_t now = clock_utc();
    struct tm fields;
    gmtime_r(&now, &fields);
    fprintf(sei_log_file, "Log created: %s\n", TimeText(&fields));
    fprintf(sei_log_file, "=============================================\n");
    fflush(sei_log_file);
}

static void sei_log_close(void)
{
    if (sei_log_file)
    {
        fclose(sei_log_file);
        sei_log_file = nullptr;
    }
}

void sei_line_termios(const SeiSettings *s, struct termios *tio)
{
    // Every byte of the bus is data, whatever the port was left with: an XON
    // or XOFF in a reply must not be taken as flow control (an XOFF would hold
    // back the next stop frame for good), nor a carriage return as a newline.
    // Our station's rule: an RS485 adapter that wants RTS/CTS gets it when
    // the section asks for "Hardware". Software flow control cannot work on
    // a binary bus, so "Software" and "Custom" stay kept-only.
    // Reads never block here: sei_transact waits for each byte with poll.
    serial_port_raw_termios(tio, sei_port_baud(s->BaudRate), s->DataBits == 0, s->Parity, s->StopBits != 0,
                            s->FlowControl == 1, 0);
}

static char sei_failure[SERIAL_PORT_NAME_SIZE + 96];

const char *sei_open_failure(void)
{
    return sei_failure;
}

int sei_open(void)
{
    sei_load_settings(ini_file_name, &sei_settings);
    if (SeiDebug)
    {
        sei_log_create();
    }
    int fd = serial_port_open(sei_settings.PortName, sei_failure, sizeof sei_failure);
    if (fd < 0)
    {
        qDebug("SEI port %s could not be opened: %s", sei_settings.PortName, sei_failure);
        sei_save_settings(ini_file_name, &sei_settings);
        sei_log_close();
        return -1;
    }
    // Opened without waiting for a carrier; from here on the port blocks.
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    struct termios tio;
    if (tcgetattr(fd, &tio) == 0)
    {
        sei_line_termios(&sei_settings, &tio);
        tcsetattr(fd, TCSANOW, &tio);
    }
    tcflush(fd, TCIOFLUSH);
    // DTR and RTS powered the line drivers of the RS485 adapters; a
    // pseudo-terminal has no modem lines and refuses, which is harmless.
    int lines = TIOCM_DTR | TIOCM_RTS;
    ioctl(fd, TIOCMBIS, &lines);
    {
        std::lock_guard<std::mutex> hold(sei_mutex);
        serial_port_close(sei_fd);
        sei_fd = fd;
    }
    qDebug("SEI port %s opened successfully", sei_settings.PortName);
    // The adapters and the encoders behind them need time after DTR rises
    // before they answer a frame.
    sys_sleep_ms(2000);
    return 0;
}

// What was written must leave before the port goes: the sleep frame sent
// just before the close would otherwise be thrown away unsent. A line held
// back by flow control must not hold up the exit, so the wait is bounded by
// the longest frame's time at the slowest speed.
static void sei_drain(int fd)
{
    for (int waited = 0; waited < 300; waited++)
    {
        int queued = 0;
        if (ioctl(fd, TIOCOUTQ, &queued) != 0 || queued <= 0)
        {
            return;
        }
        poll(nullptr, 0, 1);
    }
}

int sei_close(void)
{
    sei_save_settings(ini_file_name, &sei_settings);
    // Closed whatever SeiDebug says now: a dialog may have changed it while
    // the log was open.
    sei_log_close();
    std::lock_guard<std::mutex> hold(sei_mutex);
    if (sei_fd >= 0)
    {
        sei_drain(sei_fd);
        int lines = TIOCM_DTR;
        ioctl(sei_fd, TIOCMBIC, &lines);
        // Only what came in is dropped; the output has gone.
        tcflush(sei_fd, TCIFLUSH);
        serial_port_close(sei_fd);
        sei_fd = -1;
    }
    return 0;
}

void sei_link_reset(void)
{
    sei_log_close();
    std::lock_guard<std::mutex> hold(sei_mutex);
    serial_port_close(sei_fd);
    sei_fd = -1;
    sei_settings = sei_defaults();
}

int sei_is_open(void)
{
    std::lock_guard<std::mutex> hold(sei_mutex);
    return sei_fd >= 0;
}

// One byte, or nothing after about 2 ms.
static int sei_read_byte(int fd, uint8_t *byte)
{
    struct pollfd p = {fd, POLLIN, 0};
    int ready = poll(&p, 1, 2);
    if (ready < 1 || !(p.revents & POLLIN))
    {
        if (ready == 1)
        {
            // A hung-up peer reports at once; wait out the read time so a
            // budget still means time on a dead line.
            poll(nullptr, 0, 2);
        }
        return 0;
    }
    return read(fd, byte, 1) == 1 ? 1 : 0;
}

int sei_transact(const uint8_t *request, int request_length, uint8_t *reply, int reply_length, int read_attempts)
{
    std::lock_guard<std::mutex> hold(sei_mutex);
    if (reply && reply_length >= 1)
    {
        memset(reply, 0, (size_t)reply_length);
    }
    // A frame refused for its address has no bytes and never reaches the line.
    if (sei_fd < 0 || request_length < 1)
    {
        return -1;
    }
    ssize_t written;
    do
    {
        written = write(sei_fd, request, (size_t)request_length);
    } while (written < 0 && errno == EINTR);
    if (written != request_length)
    {
        return -1;
    }
    if (!reply || reply_length < 1)
    {
        return (int)written;
    }
    int got = 0;
    int empty = 0;
    while (got < reply_length && empty < read_attempts)
    {
        if (sei_read_byte(sei_fd, &reply[got]) == 1)
        {
            got++;
        }
        else
        {
            empty++;
        }
    }
    return (int)written + got;
}
