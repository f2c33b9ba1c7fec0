#include "rigsim_pty.h"

#include "core/clock.h"
#include "rigsim_cat.h"
#include "rigsim_civ.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

static void rigsim_log_frame(RigsimPty *sim, char direction, const uint8_t *bytes, int length)
{
    std::string line(1, direction);
    line += ' ';
    char part[4];
    for (int i = 0; i < length; i++)
    {
        if (sim->protocol == RIGSIM_CAT)
        {
            line += (char)bytes[i];
            continue;
        }
        snprintf(part, sizeof part, i ? " %02X" : "%02X", bytes[i]);
        line += part;
    }
    if (sim->frames.size() >= RIGSIM_FRAME_RECORD)
    {
        sim->frames.erase(sim->frames.begin(), sim->frames.begin() + RIGSIM_FRAME_RECORD / 2);
    }
    sim->frames.push_back(line);
    sim->frames_recorded++;
    if (sim->log)
    {
        fprintf(sim->log, "%s\n", line.c_str());
        fflush(sim->log);
    }
}

static void rigsim_send(RigsimPty *sim, const uint8_t *bytes, int length)
{
    int done = 0;
    while (done < length)
    {
        ssize_t n = write(sim->master, bytes + done, (size_t)(length - done));
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            return;
        }
        done += (int)n;
    }
}

// One byte from the line: echo it as the bus does, and answer a whole frame.
static void rigsim_take(RigsimPty *sim, uint8_t byte, RigsimCivStream *civ, RigsimCatStream *cat)
{
    uint8_t reply[128];
    int length = 0;
    std::lock_guard<std::mutex> guard(sim->lock);
    RigsimRadio *radio = &sim->radio;
    if (sim->protocol == RIGSIM_CIV)
    {
        if (radio->echo && !radio->silent)
        {
            rigsim_send(sim, &byte, 1);
        }
        int frame = rigsim_civ_feed(civ, byte);
        if (frame == 0)
        {
            return;
        }
        rigsim_log_frame(sim, '>', civ->frame, frame);
        length = rigsim_civ_reply(radio, civ->frame, frame, reply, sizeof reply);
    }
    else
    {
        int command = rigsim_cat_feed(cat, (char)byte);
        if (command == 0)
        {
            return;
        }
        rigsim_log_frame(sim, '>', (const uint8_t *)cat->command, command);
        length = rigsim_cat_reply(radio, cat->command, (char *)reply, sizeof reply);
    }
    radio->frames_in++;
    if (length > 0)
    {
        length = rigsim_apply_faults(radio, sim->protocol, reply, length, sizeof reply);
    }
    if (length > 0)
    {
        rigsim_log_frame(sim, '<', reply, length);
        rigsim_send(sim, reply, length);
        radio->frames_out++;
    }
}

static void rigsim_loop(RigsimPty *sim)
{
    RigsimCivStream civ = {};
    RigsimCatStream cat = {};
    int64_t last = clock_monotonic_ms();
    while (!sim->stop.load())
    {
        struct pollfd p = {sim->master, POLLIN, 0};
        int ready = poll(&p, 1, 5);
        int64_t now = clock_monotonic_ms();
        uint8_t bytes[256];
        ssize_t n = 0;
        int off;
        {
            std::lock_guard<std::mutex> guard(sim->lock);
            off = sim->radio.off;
            rigsim_advance(&sim->radio, (int)(now - last));
            // A radio that is off takes nothing from the line: what is sent
            // piles up as it does behind a cable whose CTS stays low. Checked
            // and read under the lock, so that once "off" is answered not
            // another byte is taken.
            if (ready > 0 && (p.revents & POLLIN) && !off)
            {
                n = read(sim->master, bytes, sizeof bytes);
            }
        }
        last = now;
        if (off)
        {
            poll(nullptr, 0, 5); // the bytes wait; do not spin on them
        }
        for (ssize_t i = 0; i < n; i++)
        {
            rigsim_take(sim, bytes[i], &civ, &cat);
        }
    }
}

int rigsim_start(RigsimPty *sim, int protocol)
{
    sim->protocol = protocol;
    rigsim_radio_init(&sim->radio, protocol);
    sim->stop = 0;
    sim->master = posix_openpt(O_RDWR | O_NOCTTY);
    if (sim->master < 0 || grantpt(sim->master) != 0 || unlockpt(sim->master) != 0)
    {
        return -1;
    }
    const char *name = ptsname(sim->master);
    if (!name)
    {
        return -1;
    }
    snprintf(sim->path, sizeof sim->path, "%s", name);
    // Raw from the start: a line discipline that echoes or cooks would put
    // bytes on the line that no radio sends.
    sim->slave = open(sim->path, O_RDWR | O_NOCTTY);
    struct termios raw;
    if (sim->slave >= 0 && tcgetattr(sim->slave, &raw) == 0)
    {
        cfmakeraw(&raw);
        tcsetattr(sim->slave, TCSANOW, &raw);
    }
    sim->thread = std::thread(rigsim_loop, sim);
    return 0;
}

void rigsim_stop(RigsimPty *sim)
{
    sim->stop = 1;
    if (sim->thread.joinable())
    {
        sim->thread.join();
    }
    if (sim->slave >= 0)
    {
        close(sim->slave);
    }
    if (sim->master >= 0)
    {
        close(sim->master);
    }
    sim->slave = sim->master = -1;
}

std::string rigsim_command(RigsimPty *sim, const char *line)
{
    char reply[160];
    std::lock_guard<std::mutex> guard(sim->lock);
    rigsim_control(&sim->radio, line, reply, sizeof reply);
    return reply;
}

long long rigsim_vfo(RigsimPty *sim, int vfo)
{
    std::lock_guard<std::mutex> guard(sim->lock);
    return (long long)sim->radio.vfo[vfo & 1];
}

std::vector<std::string> rigsim_frames(RigsimPty *sim)
{
    std::lock_guard<std::mutex> guard(sim->lock);
    return sim->frames;
}
