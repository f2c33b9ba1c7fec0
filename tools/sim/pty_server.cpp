#include "sim/pty_server.h"

#include "core/clock.h"
#include "sim/control.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

// A frame whose rest has not come within this time was noise; its first byte
// is dropped so the stream can find the next frame.
static const int64_t sim_partial_us = 100000;

enum
{
    SIM_LINE_BYTES = 1024,
    SIM_LINE_REPLIES = 8
};

struct SimQueuedReply
{
    uint8_t bytes[SIM_REPLY_MAX];
    int count;
    int64_t due_us; // when its first byte may go
};

// The wire between the program and the devices. The program's bytes carry
// the time their last bit is on the wire, so a device acts on a frame only
// once it is wholly in, and a flush of the program's output loses what had
// not gone yet, as on a real adapter. Replies go out one after another, a
// byte at a time.
struct SimLine
{
    uint8_t in[SIM_LINE_BYTES];
    int64_t in_done_us[SIM_LINE_BYTES];
    int in_count;
    int64_t in_free_us; // when the program's next byte can start
    int64_t partial_since_us;
    SimQueuedReply replies[SIM_LINE_REPLIES];
    int reply_count;
    int reply_started;   // the first reply is on its way
    int reply_sent;      // bytes of it already written
    int64_t out_next_us; // when its next byte goes
    int64_t out_byte_us;
};

// Microseconds of the monotonic clock: the wire's bytes are about a
// millisecond apart, finer than the program's own clock.
static int64_t sim_now_us(void)
{
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (int64_t)t.tv_sec * 1000000 + t.tv_nsec / 1000;
}

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

static const struct
{
    speed_t code;
    int baud;
} sim_speeds[] = {
    {B1200, 1200},   {B2400, 2400},   {B4800, 4800},   {B9600, 9600},
    {B19200, 19200}, {B38400, 38400}, {B57600, 57600}, {B115200, 115200},
};

// Whether the program's end runs at the devices' speed, and the time one
// byte takes on the wire: start, data, parity and stop bits.
static int sim_line_speed(SimServer *server, int64_t *byte_us)
{
    struct termios tio;
    *byte_us = 0;
    if (tcgetattr(server->slave_keep, &tio) != 0)
    {
        return 0;
    }
    tcflag_t size = tio.c_cflag & CSIZE;
    int bits = 1 + (size == CS5 ? 5 : size == CS6 ? 6 : size == CS7 ? 7 : 8);
    bits += ((tio.c_cflag & PARENB) ? 1 : 0) + ((tio.c_cflag & CSTOPB) ? 2 : 1);
    if (!server->instant && server->baud > 0)
    {
        *byte_us = (int64_t)bits * 1000000 / server->baud;
    }
    speed_t speed = cfgetospeed(&tio);
    for (const auto &s : sim_speeds)
    {
        if (s.code == speed)
        {
            return s.baud == server->baud;
        }
    }
    return 0;
}

// The master end works in packet mode: each read starts with a byte that is
// 0 for data, or tells that the program flushed its end.
static void sim_line_read(SimServer *server, SimLine *line, int64_t now)
{
    uint8_t packet[SIM_LINE_BYTES + 1];
    ssize_t n = read(server->master, packet, sizeof packet - (size_t)line->in_count);
    if (n < 1)
    {
        return;
    }
    if (packet[0] != TIOCPKT_DATA)
    {
        if (packet[0] & TIOCPKT_FLUSHWRITE)
        {
            while (line->in_count > 0 && line->in_done_us[line->in_count - 1] > now)
            {
                line->in_count--;
            }
            line->in_free_us = line->in_count > 0 ? line->in_done_us[line->in_count - 1] : now;
        }
        return;
    }
    int64_t byte_us;
    sim_line_speed(server, &byte_us);
    for (ssize_t i = 1; i < n; i++)
    {
        line->in_free_us = (line->in_free_us > now ? line->in_free_us : now) + byte_us;
        line->in[line->in_count] = packet[i];
        line->in_done_us[line->in_count++] = line->in_free_us;
    }
}

static void sim_line_drop(SimLine *line, int count)
{
    line->in_count -= count;
    memmove(line->in, line->in + count, (size_t)line->in_count);
    memmove(line->in_done_us, line->in_done_us + count, sizeof line->in_done_us[0] * (size_t)line->in_count);
}

static void sim_line_answer(SimServer *server, SimLine *line, int length)
{
    int64_t byte_us;
    int understood = sim_line_speed(server, &byte_us);
    SimQueuedReply reply;
    int delay_ms = 0;
    {
        std::lock_guard<std::mutex> hold(server->lock);
        // "!" marks a frame the devices heard only as noise.
        sim_server_note(server, understood ? '>' : '!', line->in, length);
        reply.count =
            understood ? sim_reply(&server->station, line->in, length, reply.bytes, sizeof reply.bytes, &delay_ms) : 0;
    }
    if (reply.count <= 0)
    {
        return;
    }
    if (line->reply_count == SIM_LINE_REPLIES)
    {
        fprintf(stderr, "morvane-sim: replies piling up; one dropped\n");
        return;
    }
    reply.due_us = line->in_done_us[length - 1] + (int64_t)delay_ms * 1000;
    reply.due_us += server->instant ? 0 : (int64_t)server->turnaround_ms * 1000;
    line->replies[line->reply_count++] = reply;
}

// Answer the frames that are wholly in. Returns when the next one will be.
static int64_t sim_line_frames(SimServer *server, SimLine *line, int64_t now)
{
    while (line->in_count > 0)
    {
        int length;
        {
            std::lock_guard<std::mutex> hold(server->lock);
            length = sim_frame_length(&server->station, line->in, line->in_count);
        }
        int incomplete = length == 0 || length > line->in_count;
        int stale = line->partial_since_us && now - line->partial_since_us > sim_partial_us;
        if (length < 0 || (incomplete && (stale || line->in_count == SIM_LINE_BYTES)))
        {
            sim_line_drop(line, 1);
            line->partial_since_us = 0;
            continue;
        }
        if (incomplete)
        {
            line->partial_since_us = line->partial_since_us ? line->partial_since_us : now;
            return line->partial_since_us + sim_partial_us;
        }
        if (line->in_done_us[length - 1] > now)
        {
            return line->in_done_us[length - 1];
        }
        line->partial_since_us = 0;
        sim_line_answer(server, line, length);
        sim_line_drop(line, length);
    }
    return INT64_MAX;
}

// Write the reply bytes that are due. Returns when the next one will be.
static int64_t sim_line_send(SimServer *server, SimLine *line, int64_t now)
{
    while (line->reply_count > 0)
    {
        SimQueuedReply *reply = &line->replies[0];
        if (!line->reply_started)
        {
            if (now < reply->due_us)
            {
                return reply->due_us;
            }
            line->reply_started = 1;
            std::lock_guard<std::mutex> hold(server->lock);
            sim_server_note(server, '<', reply->bytes, reply->count);
            // A byte reaches the program when its last bit is in.
            sim_line_speed(server, &line->out_byte_us);
            line->out_next_us = now + line->out_byte_us;
        }
        while (line->reply_sent < reply->count && now >= line->out_next_us)
        {
            // At once when there is no wire time, else byte by byte.
            int chunk = line->out_byte_us > 0 ? 1 : reply->count - line->reply_sent;
            if (write(server->master, reply->bytes + line->reply_sent, (size_t)chunk) < 0)
            {
                perror("morvane-sim: write");
            }
            line->reply_sent += chunk;
            line->out_next_us += line->out_byte_us * chunk;
        }
        if (line->reply_sent < reply->count)
        {
            return line->out_next_us;
        }
        // The next reply cannot start before this one has left the wire.
        line->reply_count--;
        memmove(line->replies, line->replies + 1, sizeof line->replies[0] * (size_t)line->reply_count);
        line->reply_sent = line->reply_started = 0;
        if (line->reply_count > 0 && line->replies[0].due_us < line->out_next_us)
        {
            line->replies[0].due_us = line->out_next_us;
        }
    }
    return INT64_MAX;
}

static void sim_server_loop(SimServer *server)
{
    std::unique_ptr<SimLine> owned(new SimLine());
    SimLine *line = owned.get();
    int64_t last_ms = clock_monotonic_ms();
    int64_t next_us = sim_now_us();
    while (server->running)
    {
        int64_t wait_us = next_us - sim_now_us();
        wait_us = wait_us < 0 ? 0 : wait_us > 10000 ? 10000 : wait_us;
        struct timespec timeout = {0, (long)wait_us * 1000};
        struct pollfd p = {server->master, POLLIN, 0};
        int ready = ppoll(&p, 1, &timeout, nullptr);
        int64_t now_ms = clock_monotonic_ms();
        {
            std::lock_guard<std::mutex> hold(server->lock);
            sim_station_advance(&server->station, (int)(now_ms - last_ms));
        }
        last_ms = now_ms;
        int64_t now = sim_now_us();
        if (ready > 0 && (p.revents & POLLIN) && line->in_count < SIM_LINE_BYTES)
        {
            sim_line_read(server, line, now);
        }
        int64_t frames_at = sim_line_frames(server, line, now);
        int64_t send_at = sim_line_send(server, line, now);
        next_us = frames_at < send_at ? frames_at : send_at;
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
    int packet_mode = 1;
    if (ioctl(server->master, TIOCPKT, &packet_mode) != 0)
    {
        sim_server_stop(server);
        return -1;
    }
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
