// morvane-rigsim: a radio on a pseudo-terminal, for trying the station's rig
// control with no radio at hand. It plays an Icom CI-V radio (the default) or
// a Kenwood-style ASCII radio, prints the port to open, and takes control
// lines on its standard input ("freq a 1296000000", "rate a 20", "silent 1",
// "garble 1", "status"; "help" lists them). Frames go to the log file if one
// is named, else to standard error with --verbose.
//
//   morvane-rigsim [--cat] [--address HEX] [--no-echo] [--link PATH] [--log FILE] [--verbose]
#include "rigsim/rigsim_pty.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <unistd.h>

static volatile sig_atomic_t rigsim_quit;

static void rigsim_on_signal(int)
{
    rigsim_quit = 1;
}

static void rigsim_usage(void)
{
    fprintf(stderr, "usage: morvane-rigsim [--cat] [--address HEX] [--no-echo] [--link PATH] [--log FILE] "
                    "[--verbose]\n");
}

static void rigsim_help(void)
{
    printf("freq a|b HZ | turn a|b HZ | rate a|b HZ_PER_S | select a|b | silent 0|1 | off 0|1 | echo 0|1\n"
           "garble N | cut N | noise N | status | frames | quit\n");
}

static void rigsim_show_frames(RigsimPty *sim, int64_t *shown)
{
    std::lock_guard<std::mutex> guard(sim->lock);
    int64_t first = sim->frames_recorded - (int64_t)sim->frames.size();
    for (int64_t i = *shown > first ? *shown : first; i < sim->frames_recorded; i++)
    {
        printf("%s\n", sim->frames[(size_t)(i - first)].c_str());
    }
    *shown = sim->frames_recorded;
}

// One control line; 1 when it was "quit".
static int rigsim_line(RigsimPty *sim, char *line, int64_t *frames_shown)
{
    line[strcspn(line, "\r\n")] = 0;
    if (strcmp(line, "quit") == 0)
    {
        return 1;
    }
    if (strcmp(line, "help") == 0)
    {
        rigsim_help();
    }
    else if (strcmp(line, "frames") == 0)
    {
        rigsim_show_frames(sim, frames_shown);
    }
    else if (line[0])
    {
        printf("%s\n", rigsim_command(sim, line).c_str());
    }
    fflush(stdout);
    return 0;
}

// Control lines from standard input until it closes, a signal comes or
// "quit". The input is read as it comes, not through stdio: lines written
// together are all served at once, none left waiting in a buffer for more.
static void rigsim_serve(RigsimPty *sim)
{
    char input[512];
    int held = 0;
    int64_t frames_shown = 0;
    int input_open = 1;
    while (!rigsim_quit)
    {
        struct pollfd p = {STDIN_FILENO, POLLIN, 0};
        if (!input_open || poll(&p, 1, 200) <= 0)
        {
            if (!input_open)
            {
                usleep(200000);
            }
            continue;
        }
        ssize_t n = read(STDIN_FILENO, input + held, sizeof input - 1 - (size_t)held);
        if (n <= 0)
        {
            input_open = 0;
            continue;
        }
        held += (int)n;
        input[held] = 0;
        char *start = input;
        char *end;
        while ((end = strchr(start, '\n')) != nullptr)
        {
            *end = 0;
            if (rigsim_line(sim, start, &frames_shown))
            {
                return;
            }
            start = end + 1;
        }
        held -= (int)(start - input);
        memmove(input, start, (size_t)held);
        // A line longer than the buffer is no command: drop it.
        if (held >= (int)sizeof input - 1)
        {
            held = 0;
        }
    }
}

struct RigsimOptions
{
    int protocol;
    int echo;
    int address; // -1: the radio's own
    int verbose;
    const char *link;
    const char *log;
};

static int rigsim_parse(int argc, char **argv, RigsimOptions *options)
{
    *options = RigsimOptions{RIGSIM_CIV, 1, -1, 0, nullptr, nullptr};
    for (int i = 1; i < argc; i++)
    {
        const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (strcmp(argv[i], "--cat") == 0)
        {
            options->protocol = RIGSIM_CAT;
        }
        else if (strcmp(argv[i], "--no-echo") == 0)
        {
            options->echo = 0;
        }
        else if (strcmp(argv[i], "--verbose") == 0)
        {
            options->verbose = 1;
        }
        else if (value && strcmp(argv[i], "--address") == 0)
        {
            options->address = (int)strtol(argv[++i], nullptr, 16);
        }
        else if (value && strcmp(argv[i], "--link") == 0)
        {
            options->link = argv[++i];
        }
        else if (value && strcmp(argv[i], "--log") == 0)
        {
            options->log = argv[++i];
        }
        else
        {
            rigsim_usage();
            return 2;
        }
    }
    return 0;
}

int main(int argc, char **argv)
{
    RigsimOptions options;
    if (rigsim_parse(argc, argv, &options) != 0)
    {
        return 2;
    }
    static RigsimPty sim;
    if (options.log)
    {
        sim.log = fopen(options.log, "w");
    }
    else if (options.verbose)
    {
        sim.log = stderr;
    }
    if (rigsim_start(&sim, options.protocol) != 0)
    {
        perror("morvane-rigsim: no pseudo-terminal");
        return 1;
    }
    {
        std::lock_guard<std::mutex> guard(sim.lock);
        sim.radio.echo = options.protocol == RIGSIM_CIV && options.echo;
        if (options.address >= 0)
        {
            sim.radio.address = (uint8_t)options.address;
        }
    }
    if (options.link)
    {
        unlink(options.link);
        if (symlink(sim.path, options.link) != 0)
        {
            perror("morvane-rigsim: link");
        }
    }
    signal(SIGINT, rigsim_on_signal);
    signal(SIGTERM, rigsim_on_signal);
    printf("PTY %s\n", options.link ? options.link : sim.path);
    fflush(stdout);

    rigsim_serve(&sim);

    rigsim_stop(&sim);
    if (options.link)
    {
        unlink(options.link);
    }
    if (sim.log && sim.log != stderr)
    {
        fclose(sim.log);
    }
    return 0;
}
