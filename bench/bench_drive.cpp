// The drive's cost and quality: one drive step with the station idle and
// with both axes running (the bus left out: its waits belong to the link),
// an hour of tracking the Moon with the simulated mount, in simulated time,
// with the default parameters and with quiet motion, and the pass log's cost.
#include "astro/source.h"
#include "core/clock.h"
#include "core/drive.h"
#include "core/pass_log.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>

static int bench_no_relay(int, uint8_t, uint8_t, uint8_t *status)
{
    *status = 0;
    return 0;
}

static int bench_no_pwm(int, uint8_t, uint8_t, uint8_t *status)
{
    *status = 0;
    return 0;
}

static void bench_no_sleep(int) {}

static void bench_drive_setup(void)
{
    static const DriveBus bus = {bench_no_relay, bench_no_pwm};
    state_reset();
    drive_test_settings();
    drive_set_bus(&bus);
    clock_set_sleep_hook(bench_no_sleep);
    settings.TrackingSource = SOURCE_USER_AZEL;
    SourceRecord &row = source_table[SOURCE_USER_AZEL];
    row.above_horizon = 1;
    row.az_tracking_enable = row.el_tracking_enable = 1;
    auto_tracking = 1;
}

// Target: below 50 microseconds.
static void BM_DriveStepIdle(benchmark::State &state)
{
    bench_drive_setup();
    az_position = source_az = 180;
    el_position = source_el = 45;
    for (auto _ : state)
    {
        drive_step(SOURCE_USER_AZEL, 0, 0, 0);
        benchmark::DoNotOptimize(az_error);
    }
    state.SetLabel("target < 50 us");
    drive_set_bus(nullptr);
    clock_reset();
}
BENCHMARK(BM_DriveStepIdle)->Unit(benchmark::kMicrosecond);

// Both motors on at fast speed far from the target: the step checks the stop
// rules and the speed and sends nothing.
static void BM_DriveStepRunning(benchmark::State &state)
{
    bench_drive_setup();
    az_position = 100;
    source_az = 200;
    el_position = 10;
    source_el = 60;
    drive_step(SOURCE_USER_AZEL, 0, 0, 0);
    for (auto _ : state)
    {
        drive_step(SOURCE_USER_AZEL, 0, 0, 0);
        benchmark::DoNotOptimize(az_drive_on);
    }
    state.SetLabel(az_drive_on && el_drive_on ? "target < 50 us" : "motors not running");
    drive_set_bus(nullptr);
    clock_reset();
}
BENCHMARK(BM_DriveStepRunning)->Unit(benchmark::kMicrosecond);

static double bench_wrap180(double angle)
{
    return angle - 360 * std::floor((angle + 180) / 360);
}

// A UTC of the reference day at which the Moon stands between 25 and 55
// degrees at the station, rising or setting, so the hour is spent tracking.
static time_t bench_moon_start(double latitude, double longitude)
{
    struct tm day = {};
    day.tm_year = 2024 - 1900;
    day.tm_mon = 3;
    day.tm_mday = 15;
    time_t start = timegm(&day);
    for (int minute = 0; minute < 2 * 24 * 60; minute += 10)
    {
        time_t t = start + minute * 60;
        struct tm tm;
        gmtime_r(&t, &tm);
        SourceRecord row = {};
        source_calculate(SOURCE_MOON, SOURCE_MASK_ALL, &tm, latitude, longitude, 1296.0, row);
        if (row.el > 25 && row.el < 55)
        {
            return t;
        }
    }
    return start;
}

static void bench_moon_target(double latitude, double longitude)
{
    time_t now = clock_utc();
    struct tm tm;
    gmtime_r(&now, &tm);
    source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, latitude, longitude, 1296.0, source_table[SOURCE_MOON]);
    source_az = source_table[SOURCE_MOON].az;
    source_el = source_table[SOURCE_MOON].el;
}

static int bench_switchings(const SimStation *s, int address, int port_a, int port_b)
{
    return s->outputs[address].relay_switches[port_a] + s->outputs[address].relay_switches[port_b];
}

// An hour of the Moon on the simulator's mount, which ramps up and down,
// coasts after a stop and ignores too low a duty, with every bus exchange
// taking its wire time: the display group's 550 ms refresh moves the target,
// the clock seam follows the simulated time, the mount follows the drive.
// Pointing errors are sampled every position cycle, from the mount's true
// angles. The arguments: quiet motion (window from second 50) off or on, and
// the start threshold of both axes in hundredths of a degree (the default
// 1.0, or 0.3 for a narrow beam). A start outside the window is counted by
// the clock the drive saw.
static void BM_TrackingHourMoon(benchmark::State &state)
{
    const double latitude = 52.0, longitude = 5.0;
    double az_sum = 0, el_sum = 0, az_max = 0, el_max = 0;
    long samples = 0;
    int tracking_to_the_end = 0, starts_outside_window = 0;
    DriveSim sim;
    for (auto _ : state)
    {
        state_reset();
        drive_test_settings();
        drive_sim_start(&sim);
        settings.Latitude = latitude;
        settings.Longitude = longitude;
        settings.TrackingSource = SOURCE_MOON;
        settings.QuietMotion = (int32_t)state.range(0);
        settings.QuietWindowStart = 50;
        settings.Azimuth_Start = settings.Elevation_Start = state.range(1) / 100.0;
        sim.utc_start = bench_moon_start(latitude, longitude);
        clock_freeze(sim.utc_start);
        bench_moon_target(latitude, longitude);
        sim.station.mount.az = source_az;
        sim.station.mount.el = source_el;
        drive_auto_pressed();
        int starts = 0;
        for (int tick = 0; sim.ms < 3600 * 1000; tick++)
        {
            if (tick % 11 == 0)
            {
                bench_moon_target(latitude, longitude);
            }
            drive_sim_tick(&sim);
            starts_outside_window += sim.az_starts + sim.el_starts > starts && clock_utc() % 60 < 50;
            starts = sim.az_starts + sim.el_starts;
            if (tick % 2 == 1)
            {
                double az_error = std::fabs(bench_wrap180(source_az - sim.station.mount.az));
                double el_error = std::fabs(source_el - sim.station.mount.el);
                az_sum += az_error * az_error;
                el_sum += el_error * el_error;
                az_max = std::max(az_max, az_error);
                el_max = std::max(el_max, el_error);
                samples++;
            }
        }
        tracking_to_the_end = auto_tracking;
        drive_sim_stop();
        clock_reset();
    }
    state.counters["az_rms_deg"] = std::sqrt(az_sum / samples);
    state.counters["az_max_deg"] = az_max;
    state.counters["el_rms_deg"] = std::sqrt(el_sum / samples);
    state.counters["el_max_deg"] = el_max;
    state.counters["az_starts"] = sim.az_starts;
    state.counters["el_starts"] = sim.el_starts;
    state.counters["az_switchings"] = bench_switchings(&sim.station, sim.station.mount.az_address, 3, 4);
    state.counters["el_switchings"] = bench_switchings(&sim.station, sim.station.mount.el_address, 1, 2);
    state.counters["starts_off_window"] = starts_outside_window;
    if (!tracking_to_the_end)
    {
        state.SetLabel("tracking ended before the hour (watchdog?)");
    }
    else
    {
        state.SetLabel(state.range(0) ? "quiet motion, window from second 50" : "quiet motion off");
    }
}
BENCHMARK(BM_TrackingHourMoon)
    ->ArgNames({"quiet", "start_hundredths"})
    ->Args({0, 100})
    ->Args({1, 100})
    ->Args({0, 30})
    ->Args({1, 30})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

// What the pass log costs the position group: one call per position cycle,
// a line at each new second, the buffer going to the file every ten.
// Target: below 20 microseconds a call.
static void BM_PassLogStep(benchmark::State &state)
{
    state_reset();
    time_t start = 1710028800;
    clock_freeze(start);
    settings.TrackingSource = SOURCE_MOON;
    source_az = 123.456;
    source_el = 34.567;
    az_position = 123.4;
    el_position = 34.6;
    auto_tracking = 1;
    long calls = 0;
    for (auto _ : state)
    {
        clock_freeze(start + calls++ / 10);
        pass_log_step();
    }
    auto_tracking = 0;
    pass_log_step();
    pass_log_reset();
    clock_reset();
    state.SetLabel("target < 20 us");
}
BENCHMARK(BM_PassLogStep)->Unit(benchmark::kMicrosecond);
