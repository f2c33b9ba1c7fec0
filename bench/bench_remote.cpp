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
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

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

// A p sent at a random moment between two ticks, served by the next tick of a
// cycle that runs every 50 ms: the time from the send until the whole reply
// is in the client's hands. Target: below 60 ms, one tick of waiting at most.
static void BM_RotctlRoundTripAtTheTick(benchmark::State &state)
{
    BenchServer server(true);
    if (server.slot[0] < 0)
    {
        state.SkipWithError("client not accepted");
        return;
    }
    unsigned seed = 7;
    double worst = 0.0;
    std::vector<double> trips;
    int64_t next_tick = clock_monotonic_ms() + 50;
    for (auto _ : state)
    {
        seed = seed * 1103515245u + 12345u;
        int64_t send_at = next_tick - 50 + (int64_t)((seed >> 16) % 50);
        while (clock_monotonic_ms() < send_at)
        {
            usleep(200);
        }
        int64_t sent = clock_monotonic_ms();
        send(server.client, "p\n", 2, MSG_NOSIGNAL);
        while (clock_monotonic_ms() < next_tick)
        {
            usleep(200);
        }
        server.tick();
        next_tick += 50;
        struct pollfd p = {server.client, POLLIN, 0};
        poll(&p, 1, 1000);
        bench_drain(server.client);
        double trip = (double)(clock_monotonic_ms() - sent);
        trips.push_back(trip);
        worst = std::max(worst, trip);
        state.SetIterationTime(trip / 1000.0);
    }
    std::sort(trips.begin(), trips.end());
    state.counters["median_ms"] = trips.empty() ? 0.0 : trips[trips.size() / 2];
    state.counters["worst_ms"] = worst;
    state.SetLabel("target < 60 ms");
}
BENCHMARK(BM_RotctlRoundTripAtTheTick)->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);
