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
    printf("freq a|b HZ | turn a|b HZ | rate a|b HZ_PER_S | select a|b | silent 0|1 | echo 0|1\n"
           "garble N | cut N | noise N | status | frames | quit\n");
}

// Control lines from standard input until it closes, a signal comes or "quit".
static void rigsim_serve(RigsimPty *sim)
{
    char line[256];
    size_t frames_shown = 0;
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
        if (!fgets(line, sizeof line, stdin))
        {
            input_open = 0;
            continue;
        }
        line[strcspn(line, "\r\n")] = 0;
        if (strcmp(line, "quit") == 0)
        {
            break;
        }
        if (strcmp(line, "help") == 0)
        {
            rigsim_help();
        }
        else if (strcmp(line, "frames") == 0)
        {
            std::vector<std::string> frames = rigsim_frames(sim);
            for (; frames_shown < frames.size(); frames_shown++)
            {
                printf("%s\n", frames[frames_shown].c_str());
            }
        }
        else if (line[0])
        {
            printf("%s\n", rigsim_command(sim, line).c_str());
        }
        fflush(stdout);
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
