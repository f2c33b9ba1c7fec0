// The bus against the in-process simulator: one position exchange and a whole
// read pass with the wire taking no time (the program's own cost), a read
// pass at 9600 baud against the time its bytes need on the wire, and what a
// silent device costs for each read budget.
#include "bus/encoders.h"
#include "bus/position.h"
#include "bus/sei_commands.h"
#include "bus/sei_link.h"
#include "bus/weather.h"
#include "core/cycle.h"
#include "core/sensor_groups.h"
#include "core/clock.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"
#include "sim/control.h"
#include "sim/pty_server.h"

#include <QDir>
#include <benchmark/benchmark.h>
#include <cstdio>

static void bench_no_sleep(int) {}

// One simulator and one open bus for the whole run.
static SimServer *bench_bus(void)
{
    static SimServer *server;
    if (server)
    {
        return server;
    }
    server = new SimServer;
    sim_station_init(&server->station);
    if (sim_server_start(server, nullptr) != 0)
    {
        return server;
    }
    char path[600];
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    settings_path(ini_file_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);
    ini_set(&ini, "SEI", "PortName", server->device);
    ini_write(path, &ini);
    clock_set_sleep_hook(bench_no_sleep);
    sei_open();
    return server;
}

static void bench_control(const char *line)
{
    char reply[256];
    sim_server_control(bench_bus(), line, reply, sizeof reply);
}

static void BM_PositionRoundTrip(benchmark::State &state)
{
    bench_bus()->instant = 1;
    bench_control("silent 0 off");
    uint32_t position = 0;
    for (auto _ : state)
    {
        if (sei_read_position(0, 0, 36000, &position) != 0)
        {
            state.SkipWithError("no reply");
            break;
        }
    }
    benchmark::DoNotOptimize(position);
}
BENCHMARK(BM_PositionRoundTrip)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// The station's encoders at 0 and 1 in the given mode, fetched afresh.
static void bench_encoders(int mode)
{
    char line[32];
    for (int a = 0; a < 2; a++)
    {
        snprintf(line, sizeof line, "mode %d %d", a, mode);
        bench_control(line);
    }
    bench_control("silent 0 off");
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        encoders[n].Type = encoder_default_type(n);
    }
    settings.AZ_Addr = 0;
    settings.EL_Addr = 1;
    position_reset();
    ReadPosition();
}

static void bench_read_passes(benchmark::State &state)
{
    for (auto _ : state)
    {
        if (ReadPosition() != 0)
        {
            state.SkipWithError("read error");
            break;
        }
    }
}

static void BM_ReadPassBothAxes(benchmark::State &state)
{
    bench_bus()->instant = 1;
    bench_encoders(0);
    bench_read_passes(state);
}
BENCHMARK(BM_ReadPassBothAxes)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// A pass at 9600 baud, 8N1: per axis one byte out and two (16-bit) or four
// (32-bit) back, 1.04 ms each. The floor is that wire time; the simulated
// devices add 3 ms of turnaround per exchange on top.
static void BM_ReadPassAt9600(benchmark::State &state)
{
    SimServer *server = bench_bus();
    server->instant = 0;
    int mode = (int)state.range(0);
    bench_encoders(mode);
    bench_read_passes(state);
    int width = (mode & MODE_32BIT) ? 4 : 2;
    double byte_ms = 10.0 * 1000.0 / 9600.0;
    double wire_ms = 2 * (1 + width) * byte_ms;
    state.counters["wire_floor_ms"] = wire_ms;
    state.counters["floor_turnaround_ms"] = wire_ms + 2 * server->turnaround_ms;
    bench_encoders(0);
}
BENCHMARK(BM_ReadPassAt9600)
    ->Arg(0)
    ->Arg(MODE_32BIT)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

// A silent device costs its whole budget of empty 2 ms reads; the nominal
// cost is twice the budget in milliseconds.
static void BM_SilentDeviceBudget(benchmark::State &state)
{
    bench_bus()->instant = 1;
    bench_control("silent 0 on");
    int budget = (int)state.range(0);
    const uint8_t request[2] = {0xF0, SEI_READ_RESOLUTION};
    uint8_t reply[3];
    for (auto _ : state)
    {
        sei_transact(request, 2, reply, 3, budget);
    }
    state.counters["nominal_ms"] = 2.0 * budget;
    bench_control("silent 0 off");
}
BENCHMARK(BM_SilentDeviceBudget)
    ->Arg(SEI_BUDGET_SHORT)
    ->Arg(SEI_BUDGET_NORMAL)
    ->Iterations(5)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// The weather groups' cost per 50 ms tick, all five sensors on at their
// default intervals, averaged over whole altimeter periods: with the wire at
// 9600 baud (arg 0) and with the wire taking no time (arg 1, the program's
// own cost).
static void BM_WeatherGroupPerTick(benchmark::State &state)
{
    bench_bus()->instant = (int)state.range(0);
    settings.DisplayEnabled = 0;
    weather_defaults(&weather);
    weather.WxStationAddr = bench_bus()->station.weather.address;
    weather.WindSpeed = weather.WindDirection = weather.Thermometer = weather.Barometer = weather.Altimeter = true;
    int polls = 0;
    for (auto _ : state)
    {
        CycleActions actions = {};
        sensor_groups_wire(&actions, 0);
        CycleConditions c = cycle_conditions_now();
        uint32_t due = cycle_tick(&actions, &c);
        polls += __builtin_popcount(due & (0x3Fu << CYCLE_WIND_SPEED));
    }
    state.counters["polls_per_tick"] = benchmark::Counter(polls, benchmark::Counter::kAvgIterations);
    weather.WxStationAddr = -1;
    bench_bus()->instant = 0;
}
BENCHMARK(BM_WeatherGroupPerTick)->Arg(0)->Arg(1)->Iterations(2010)->Unit(benchmark::kMicrosecond);
