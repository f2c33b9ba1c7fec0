// morvane-sim: the station's bus devices on a pseudo-terminal, for trying
// Morvane without hardware and for the demo.
//
//   morvane-sim [--link PATH] [--az DEG] [--el DEG] [--control SOCKET] [--baud N] [--instant] [--log FILE]
//   morvane-sim --ask SOCKET LINE...
//
// It prints the device path of its end of the line and then takes control
// lines (see sim/control.h, or "help") on standard input, or on the Unix
// socket of --control, answering each with one line. --ask sends one line to
// a running simulator's socket and prints the answer. The devices talk at
// --baud (9600), with each byte's wire time and a few milliseconds of
// turnaround; --instant answers at once, for measuring the program alone.
#include "sim/control.h"
#include "sim/pty_server.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

static volatile sig_atomic_t sim_stop_requested;

static void sim_on_signal(int)
{
    sim_stop_requested = 1;
}

static void sim_usage(void)
{
    fprintf(stderr, "usage: morvane-sim [--link PATH] [--az DEG] [--el DEG] [--control SOCKET] [--baud N] "
                    "[--instant] [--log FILE]\n       morvane-sim --ask SOCKET LINE...\n");
}

static int sim_socket_address(const char *path, struct sockaddr_un *address)
{
    memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    if (strlen(path) >= sizeof address->sun_path)
    {
        fprintf(stderr, "morvane-sim: socket path too long: %s\n", path);
        return -1;
    }
    snprintf(address->sun_path, sizeof address->sun_path, "%s", path);
    return 0;
}

static int sim_ask(const char *path, int argc, char **argv)
{
    struct sockaddr_un address;
    char line[512] = "";
    int used = 0;
    for (int i = 0; i < argc && used < (int)sizeof line - 2; i++)
    {
        used += snprintf(line + used, sizeof line - (size_t)used, "%s%s", i ? " " : "", argv[i]);
    }
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0 || sim_socket_address(path, &address) != 0 ||
        connect(fd, (struct sockaddr *)&address, sizeof address) != 0)
    {
        perror("morvane-sim: connect");
        return 1;
    }
    snprintf(line + strlen(line), sizeof line - strlen(line), "\n");
    if (write(fd, line, strlen(line)) < 0)
    {
        return 1;
    }
    char reply[8192];
    int got = 0;
    ssize_t n;
    while (got < (int)sizeof reply - 1 && (n = read(fd, reply + got, sizeof reply - 1 - (size_t)got)) > 0)
    {
        got += (int)n;
        if (reply[got - 1] == '\n')
        {
            break;
        }
    }
    reply[got] = 0;
    fputs(reply, stdout);
    close(fd);
    return 0;
}

// One control line from a stream; 1 when it asked to quit.
static int sim_handle_line(SimServer *server, char *line, FILE *out)
{
    line[strcspn(line, "\r\n")] = 0;
    static char reply[16384];
    int quit = sim_server_control(server, line, reply, sizeof reply) == SIM_CONTROL_QUIT;
    fprintf(out, "%s\n", reply);
    fflush(out);
    return quit;
}

static void sim_serve_stdin(SimServer *server)
{
    char line[512];
    while (!sim_stop_requested && fgets(line, sizeof line, stdin))
    {
        if (sim_handle_line(server, line, stdout))
        {
            return;
        }
    }
}

static void sim_serve_socket(SimServer *server, const char *path)
{
    struct sockaddr_un address;
    int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    if (listener < 0 || sim_socket_address(path, &address) != 0)
    {
        return;
    }
    unlink(path);
    if (bind(listener, (struct sockaddr *)&address, sizeof address) != 0 || listen(listener, 4) != 0)
    {
        perror("morvane-sim: control socket");
        close(listener);
        return;
    }
    int quit = 0;
    while (!quit && !sim_stop_requested)
    {
        struct pollfd p = {listener, POLLIN, 0};
        if (poll(&p, 1, 200) < 1)
        {
            continue;
        }
        int client = accept(listener, nullptr, nullptr);
        FILE *stream = client >= 0 ? fdopen(client, "r+") : nullptr;
        if (!stream)
        {
            continue;
        }
        char line[512];
        while (!quit && fgets(line, sizeof line, stream))
        {
            quit = sim_handle_line(server, line, stream);
        }
        fclose(stream);
    }
    close(listener);
    unlink(path);
}

int main(int argc, char **argv)
{
    static SimServer server;
    const char *link = nullptr;
    const char *control = nullptr;
    const char *log = nullptr;
    sim_station_init(&server.station);
    for (int i = 1; i < argc; i++)
    {
        const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (strcmp(argv[i], "--ask") == 0 && value)
        {
            return sim_ask(value, argc - i - 2, argv + i + 2);
        }
        if (strcmp(argv[i], "--instant") == 0)
        {
            server.instant = 1;
            continue;
        }
        if (!value)
        {
            sim_usage();
            return 2;
        }
        if (strcmp(argv[i], "--link") == 0)
        {
            link = value;
        }
        else if (strcmp(argv[i], "--az") == 0)
        {
            server.station.mount.az = atof(value);
        }
        else if (strcmp(argv[i], "--el") == 0)
        {
            server.station.mount.el = atof(value);
        }
        else if (strcmp(argv[i], "--control") == 0)
        {
            control = value;
        }
        else if (strcmp(argv[i], "--baud") == 0)
        {
            server.baud = atoi(value);
        }
        else if (strcmp(argv[i], "--log") == 0)
        {
            log = value;
        }
        else
        {
            sim_usage();
            return 2;
        }
        i++;
    }
    // Without SA_RESTART a signal also ends a read of standard input.
    struct sigaction on_stop = {};
    on_stop.sa_handler = sim_on_signal;
    sigaction(SIGINT, &on_stop, nullptr);
    sigaction(SIGTERM, &on_stop, nullptr);
    signal(SIGPIPE, SIG_IGN);
    if (sim_server_start(&server, link) != 0)
    {
        fprintf(stderr, "morvane-sim: no pseudo-terminal\n");
        return 1;
    }
    if (log && sim_server_log(&server, log) != 0)
    {
        fprintf(stderr, "morvane-sim: cannot write %s\n", log);
    }
    printf("%s\n", server.device);
    fflush(stdout);
    if (control)
    {
        sim_serve_socket(&server, control);
    }
    else
    {
        sim_serve_stdin(&server);
    }
    sim_server_stop(&server);
    return 0;
}
