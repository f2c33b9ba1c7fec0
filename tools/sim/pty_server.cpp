#include "sim/pty_server.h"

#include "core/clock.h"
#include "sim/control.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
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
static void sim_wait_ms(int ms)
{
    if (ms > 0)
    {
        poll(nullptr, 0, ms);
    }
}

static void sim_answer(SimServer *server, const uint8_t *frame, int length)
{
    uint8_t reply[64];
    int delay_ms = 0;
    int n;
    {
        std::lock_guard<std::mutex> hold(server->lock);
        sim_server_note(server, '>', frame, length);
        n = sim_reply(&server->station, frame, length, reply, sizeof reply, &delay_ms);
    }
    if (n <= 0)
    {
        return;
    }
    if (server->baud > 0)
    {
        // Ten bits a byte: start, eight data, stop.
        delay_ms += (length + n) * 10 * 1000 / server->baud;
    }
    sim_wait_ms(delay_ms);
    {
        std::lock_guard<std::mutex> hold(server->lock);
        sim_server_note(server, '<', reply, n);
    }
    if (write(server->master, reply, (size_t)n) < 0)
    {
        perror("morvane-sim: write");
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
            mount_advance(&server->station.mount, server->station.outputs, (int)(now - last_ms));
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
    struct termios tio;
    if (tcgetattr(server->slave_keep, &tio) == 0)
    {
        cfmakeraw(&tio);
        tcsetattr(server->slave_keep, TCSANOW, &tio);
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
