#include "sim/pty_server.h"

#include "core/clock.h"
#include "sim/control.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

// A frame whose rest has not come within this time was noise; its first byte
// is dropped so the stream can find the next frame.
static const int sim_partial_ms = 100;

static void sim_server_note(SimServer *server, char direction, const uint8_t *bytes, int length)
{
    int64_t ms = clock_monotonic_ms() - server->start_ms;
    sim_frame_note(&server->station, ms, direction, bytes, length);
    if (server->log)
    {
        const SimFrameEntry *e = &server->station.frames[(server->station.frame_count - 1) % SIM_FRAME_LOG];
        fprintf(server->log, "%lld.%03lld %s\n", (long long)(ms / 1000), (long long)(ms % 1000), e->text);
        fflush(server->log);
    }
}

// The wait that stands for a late device or the wire; it runs on the
// simulator's thread, whatever the program under test does with its sleeps.
// Bytes a millisecond apart need a finer clock than the program's own.
static void sim_wait_until(const struct timespec *start, int64_t ns)
{
    struct timespec at = *start;
    at.tv_sec += (time_t)(ns / 1000000000);
    at.tv_nsec += (long)(ns % 1000000000);
    if (at.tv_nsec >= 1000000000)
    {
        at.tv_sec++;
        at.tv_nsec -= 1000000000;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR)
    {
    }
}

static const struct
{
    speed_t code;
    int baud;
} sim_speeds[] = {
    {B1200, 1200},   {B2400, 2400},   {B4800, 4800},   {B9600, 9600},
    {B19200, 19200}, {B38400, 38400}, {B57600, 57600}, {B115200, 115200},
};

// The speed the program has set on its end of the line, and the bits one
// byte takes: start, data, parity and stop.
static int sim_line_baud(int fd, int *bits)
{
    struct termios tio;
    *bits = 10;
    if (tcgetattr(fd, &tio) != 0)
    {
        return 0;
    }
    tcflag_t size = tio.c_cflag & CSIZE;
    int data = size == CS5 ? 5 : size == CS6 ? 6 : size == CS7 ? 7 : 8;
    *bits = 1 + data + ((tio.c_cflag & PARENB) ? 1 : 0) + ((tio.c_cflag & CSTOPB) ? 2 : 1);
    speed_t speed = cfgetospeed(&tio);
    for (const auto &s : sim_speeds)
    {
        if (s.code == speed)
        {
            return s.baud;
        }
    }
    return 0;
}

static void sim_answer(SimServer *server, const uint8_t *frame, int length)
{
    uint8_t reply[SIM_REPLY_MAX];
    int delay_ms = 0;
    int bits;
    int n = 0;
    int understood = sim_line_baud(server->slave_keep, &bits) == server->baud;
    {
        std::lock_guard<std::mutex> hold(server->lock);
        // "!" marks a frame the devices heard only as noise.
        sim_server_note(server, understood ? '>' : '!', frame, length);
        if (understood)
        {
            n = sim_reply(&server->station, frame, length, reply, sizeof reply, &delay_ms);
        }
    }
    if (n <= 0)
    {
        return;
    }
    struct timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    int64_t byte_ns = server->instant || server->baud <= 0 ? 0 : (int64_t)bits * 1000000000 / server->baud;
    int64_t at_ns = (int64_t)delay_ms * 1000000;
    if (!server->instant)
    {
        // The device has the request only when its last byte is in.
        at_ns += length * byte_ns + (int64_t)server->turnaround_ms * 1000000;
    }
    sim_wait_until(&start, at_ns);
    {
        std::lock_guard<std::mutex> hold(server->lock);
        sim_server_note(server, '<', reply, n);
    }
    // Byte by byte at the line's pace, so the program sees a reply trickle in
    // as it does from a real device; at once when instant.
    for (int sent = 0; sent < n;)
    {
        int chunk = byte_ns > 0 ? 1 : n - sent;
        if (write(server->master, reply + sent, (size_t)chunk) < 0)
        {
            perror("morvane-sim: write");
            return;
        }
        sent += chunk;
        at_ns += byte_ns;
        sim_wait_until(&start, at_ns);
    }
}

static void sim_server_loop(SimServer *server)
{
    uint8_t pending[1024];
    int count = 0;
    int64_t last_ms = clock_monotonic_ms();
    int64_t partial_since = 0;
    while (server->running)
    {
        struct pollfd p = {server->master, POLLIN, 0};
        int ready = poll(&p, 1, 10);
        int64_t now = clock_monotonic_ms();
        {
            std::lock_guard<std::mutex> hold(server->lock);
            sim_station_advance(&server->station, (int)(now - last_ms));
        }
        last_ms = now;
        if (ready > 0 && (p.revents & POLLIN))
        {
            ssize_t n = read(server->master, pending + count, sizeof pending - (size_t)count);
            count += n > 0 ? (int)n : 0;
        }
        while (count > 0)
        {
            int length;
            {
                std::lock_guard<std::mutex> hold(server->lock);
                length = sim_frame_length(&server->station, pending, count);
            }
            int stale = partial_since && now - partial_since > sim_partial_ms;
            if (length < 0 || ((length == 0 || length > count) && (stale || count == (int)sizeof pending)))
            {
                memmove(pending, pending + 1, (size_t)--count);
                partial_since = 0;
                continue;
            }
            if (length == 0 || length > count)
            {
                partial_since = partial_since ? partial_since : now;
                break;
            }
            partial_since = 0;
            sim_answer(server, pending, length);
            count -= length;
            memmove(pending, pending + length, (size_t)count);
        }
    }
}

int sim_server_start(SimServer *server, const char *link_path)
{
    server->master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (server->master < 0 || grantpt(server->master) != 0 || unlockpt(server->master) != 0)
    {
        sim_server_stop(server);
        return -1;
    }
    snprintf(server->device, sizeof server->device, "%s", ptsname(server->master));
    server->slave_keep = open(server->device, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (server->slave_keep < 0)
    {
        sim_server_stop(server);
        return -1;
    }
    if (link_path && link_path[0])
    {
        snprintf(server->link, sizeof server->link, "%s", link_path);
        unlink(server->link);
        if (symlink(server->device, server->link) != 0)
        {
            perror("morvane-sim: link");
        }
    }
    server->start_ms = clock_monotonic_ms();
    server->running = 1;
    server->thread = std::thread(sim_server_loop, server);
    return 0;
}

void sim_server_stop(SimServer *server)
{
    server->running = 0;
    if (server->thread.joinable())
    {
        server->thread.join();
    }
    if (server->link[0])
    {
        unlink(server->link);
        server->link[0] = 0;
    }
    if (server->slave_keep >= 0)
    {
        close(server->slave_keep);
    }
    if (server->master >= 0)
    {
        close(server->master);
    }
    server->slave_keep = server->master = -1;
    sim_server_log(server, nullptr);
}

int sim_server_control(SimServer *server, const char *line, char *reply, int size)
{
    std::lock_guard<std::mutex> hold(server->lock);
    return sim_control(&server->station, line, reply, size);
}

int sim_server_log(SimServer *server, const char *path)
{
    std::lock_guard<std::mutex> hold(server->lock);
    if (server->log)
    {
        fclose(server->log);
        server->log = nullptr;
    }
    if (!path)
    {
        return 0;
    }
    server->log = fopen(path, "w");
    return server->log ? 0 : -1;
}
