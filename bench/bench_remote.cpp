// The rotctl server's share of the 50 ms cycle, and how long a client waits
// for its answer. All on the loopback; the ports come from the pid so that a
// test run beside the benchmarks does not meet them.
#include "core/clock.h"
#include "core/state.h"
#include "remote/net.h"
#include "remote/rotctl.h"

#include <QtGlobal>
#include <algorithm>
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

// The server logs every p and P; a benchmark measures the work, not stderr.
static void bench_quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

static int bench_port(void)
{
    return 30000 + (int)(getpid() % 2000);
}

static int bench_connect(int port)
{
    int s = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in a;
    memset(&a, 0, sizeof a);
    a.sin_family = AF_INET;
    a.sin_port = htons((uint16_t)port);
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(s, (struct sockaddr *)&a, sizeof a) != 0)
    {
        close(s);
        return -1;
    }
    return s;
}

// Everything the client has been sent so far, without waiting.
static int bench_drain(int s)
{
    char buffer[256];
    ssize_t n = recv(s, buffer, sizeof buffer, MSG_DONTWAIT);
    return n > 0 ? (int)n : 0;
}

// A server with one listener on the loopback, and optionally one client that
// it has already accepted.
struct BenchServer
{
    int listener = -1;
    int32_t slot[2] = {-1, -1};
    int client = -1;
    QtMessageHandler previous = nullptr;

    explicit BenchServer(bool with_client)
    {
        state_reset();
        rotctl_reset();
        previous = qInstallMessageHandler(bench_quiet);
        rotctl_debug = 0;
        listener = rotctl_start("127.0.0.1", std::to_string(bench_port()).c_str(), "tcp");
        if (with_client && listener >= 0)
        {
            client = bench_connect(bench_port());
            for (int i = 0; i < 1000 && slot[0] < 0; i++)
            {
                rotctl_poll(listener, -1, &slot[0], &slot[1]);
            }
        }
    }
    ~BenchServer()
    {
        rotctl_stop(listener, slot[0]);
        if (client >= 0)
        {
            close(client);
        }
        qInstallMessageHandler(previous);
    }
    int tick(void)
    {
        return rotctl_poll(listener, -1, &slot[0], &slot[1]);
    }
};

// A tick with the service running and nobody talking: the 1 ms select is all.
// Target: median below 1.5 ms.
static void BM_RotctlPollIdle(benchmark::State &state)
{
    BenchServer server(false);
    if (server.listener < 0)
    {
        state.SkipWithError("no listener");
        return;
    }
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(server.tick());
    }
    state.SetLabel("target < 1.5 ms");
}
BENCHMARK(BM_RotctlPollIdle)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

// A tick while GPredict sends at 20 Hz, one request a tick, P and p in turn:
// the request is there when the tick starts, as it is at the 50 ms cadence.
// Target: median below 1.5 ms.
static void BM_RotctlPollClient20Hz(benchmark::State &state)
{
    BenchServer server(true);
    if (server.slot[0] < 0)
    {
        state.SkipWithError("client not accepted");
        return;
    }
    static const char *const requests[2] = {"P 123.45 67.89\n", "p\n"};
    int n = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        send(server.client, requests[n & 1], strlen(requests[n & 1]), MSG_NOSIGNAL);
        n++;
        state.ResumeTiming();
        benchmark::DoNotOptimize(server.tick());
        state.PauseTiming();
        bench_drain(server.client);
        state.ResumeTiming();
    }
    state.SetLabel("target < 1.5 ms");
}
BENCHMARK(BM_RotctlPollClient20Hz)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

// Serve the ticks of a cycle that runs every 50 ms until the clock reaches
// until, or until fd has bytes when fd is given; those go to seen.
static void bench_ticks_until(BenchServer &server, int64_t *next_tick, int64_t until, int fd, std::string *seen)
{
    for (int64_t now = clock_monotonic_ms(); now < until; now = clock_monotonic_ms())
    {
        if (now >= *next_tick)
        {
            server.tick();
            *next_tick += 50;
            continue;
        }
        struct pollfd p = {fd, POLLIN, 0};
        int wait = (int)(std::min(*next_tick, until) - now);
        if (fd >= 0 && poll(&p, 1, wait) > 0)
        {
            char buffer[512];
            ssize_t n = read(fd, buffer, sizeof buffer);
            if (n > 0)
            {
                seen->append(buffer, (size_t)n);
                return;
            }
        }
        else if (fd < 0)
        {
            usleep(200);
        }
    }
}

// A p sent at a random moment between two ticks, served by the next tick:
// the time from the send until the client has the whole reply (marker and
// the line feed behind it), median and worst over the iterations.
static void bench_round_trips(benchmark::State &state, BenchServer &server, int request_fd, int reply_fd,
                              const char *marker)
{
    unsigned seed = 7;
    std::vector<double> trips;
    int64_t next_tick = clock_monotonic_ms() + 50;
    for (auto _ : state)
    {
        seed = seed * 1103515245u + 12345u;
        bench_ticks_until(server, &next_tick, next_tick - 50 + (int64_t)((seed >> 16) % 50), -1, nullptr);
        int64_t sent = clock_monotonic_ms();
        if (write(request_fd, "p\n", 2) != 2)
        {
            state.SkipWithError("request not sent");
            return;
        }
        std::string seen;
        size_t at = std::string::npos;
        while ((at = seen.find(marker)) == std::string::npos || seen.find('\n', at) == std::string::npos)
        {
            if (clock_monotonic_ms() - sent > 2000)
            {
                state.SkipWithError("no reply");
                return;
            }
            bench_ticks_until(server, &next_tick, sent + 2000, reply_fd, &seen);
        }
        double trip = (double)(clock_monotonic_ms() - sent);
        trips.push_back(trip);
        state.SetIterationTime(trip / 1000.0);
    }
    std::sort(trips.begin(), trips.end());
    state.counters["median_ms"] = trips.empty() ? 0.0 : trips[trips.size() / 2];
    state.counters["worst_ms"] = trips.empty() ? 0.0 : trips.back();
    state.SetLabel("target < 60 ms");
}

// A one-letter client such as GPredict. Target: below 60 ms, one tick of
// waiting at most.
static void BM_RotctlRoundTripAtTheTick(benchmark::State &state)
{
    BenchServer server(true);
    if (server.slot[0] < 0)
    {
        state.SkipWithError("client not accepted");
        return;
    }
    bench_round_trips(state, server, server.client, server.client, "RPRT 0");
}
BENCHMARK(BM_RotctlRoundTripAtTheTick)->UseManualTime()->Iterations(200)->Unit(benchmark::kMillisecond);

// Hamlib's rotctl -m 2 reading its commands from a pipe: the same p, from
// the write to its stdin until it has printed the elevation.
static void BM_RotctlHamlibRoundTripAtTheTick(benchmark::State &state)
{
    if (access("/usr/bin/rotctl", X_OK) != 0)
    {
        state.SkipWithError("rotctl is not installed");
        return;
    }
    BenchServer server(false);
    settings.HamlibCompatible = 1;
    settings.AzimuthLimitMax = 450;
    settings.ElevationLimitMax = 90;
    int to_child[2], from_child[2];
    if (server.listener < 0 || pipe(to_child) != 0 || pipe(from_child) != 0)
    {
        state.SkipWithError("no listener or pipe");
        return;
    }
    std::string address = "127.0.0.1:" + std::to_string(bench_port());
    const char *argv[] = {"rotctl", "-m", "2", "-r", address.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, to_child[0], 0);
    posix_spawn_file_actions_adddup2(&actions, from_child[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    int spawned = posix_spawn(&pid, "/usr/bin/rotctl", &actions, nullptr, const_cast<char **>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(to_child[0]);
    close(from_child[1]);
    // Its open (the dump_state) is served on the ticks until its first prompt.
    std::string seen;
    int64_t next_tick = clock_monotonic_ms() + 50;
    for (int64_t end = clock_monotonic_ms() + 5000;
         spawned == 0 && seen.find("command:") == std::string::npos && clock_monotonic_ms() < end;)
    {
        bench_ticks_until(server, &next_tick, end, from_child[0], &seen);
    }
    if (seen.find("command:") == std::string::npos)
    {
        state.SkipWithError("rotctl did not open");
    }
    else
    {
        bench_round_trips(state, server, to_child[1], from_child[0], "Elevation:");
    }
    close(to_child[1]);
    if (spawned == 0)
    {
        for (int i = 0; i < 100 && waitpid(pid, nullptr, WNOHANG) != pid; i++)
        {
            server.tick();
        }
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
    close(from_child[0]);
}
BENCHMARK(BM_RotctlHamlibRoundTripAtTheTick)->UseManualTime()->Iterations(200)->Unit(benchmark::kMillisecond);
