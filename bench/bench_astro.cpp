// The engine's cost where the station pays it: the display group's Moon
// refresh every 550 ms, and the sources table's full refresh every second.
#include "astro/rise_set.h"
#include "astro/source.h"
#include "astro/sources_dialog.h"
#include "core/clock.h"
#include "core/state.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>

static struct tm bench_utc(void)
{
    struct tm tm;
    memset(&tm, 0, sizeof tm);
    tm.tm_year = 2024 - 1900;
    tm.tm_mon = 3;
    tm.tm_mday = 8;
    tm.tm_hour = 18;
    tm.tm_min = 17;
    tm.tm_sec = 16;
    return tm;
}

// Target: below 20 microseconds for the series Moon; the precise one (range
// 1) is reported beside it, for the display group's budget.
static void BM_MoonPosition(benchmark::State &state)
{
    struct tm tm = bench_utc();
    SourceRecord record = {};
    settings.PreciseMoon = (int32_t)state.range(0);
    for (auto _ : state)
    {
        source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, 52.0, 5.0, 1296.0, record);
        benchmark::DoNotOptimize(record.doppler_hz);
    }
    settings.PreciseMoon = 0;
}
BENCHMARK(BM_MoonPosition)
    ->ArgName("precise")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->DisplayAggregatesOnly(true);

// Target: below 10 ms, 1% of the table's period, with every station choice
// on. The clock moves a second per refresh, as the table's does; rise and set
// come from the day kept by the first refresh.
static void BM_AllRowsFullMask(benchmark::State &state)
{
    struct tm tm = bench_utc();
    settings.PreciseMoon = settings.Refraction = settings.Precession = 1;
    source_rst_forget();
    for (auto _ : state)
    {
        tm.tm_sec = (tm.tm_sec + 1) % 60;
        for (int row = 0; row < SOURCE_COUNT; row++)
        {
            source_calculate(row, SOURCE_MASK_ALL, &tm, 52.0, 5.0, 1296.0, source_table[row]);
        }
        benchmark::DoNotOptimize(source_table[SOURCE_COUNT - 1].computed);
    }
    settings.PreciseMoon = settings.Refraction = settings.Precession = 0;
}
BENCHMARK(BM_AllRowsFullMask)->Unit(benchmark::kMillisecond)->Repetitions(3)->DisplayAggregatesOnly(true);

// The first refresh of a UT day (or of a new station), which asks libnova
// for the day's rise and set of the Sun, the Moon and the planets.
static void BM_AllRowsNewDay(benchmark::State &state)
{
    struct tm tm = bench_utc();
    for (auto _ : state)
    {
        source_rst_forget();
        for (int row = 0; row < SOURCE_COUNT; row++)
        {
            source_calculate(row, SOURCE_MASK_ALL, &tm, 52.0, 5.0, 1296.0, source_table[row]);
        }
        benchmark::DoNotOptimize(source_table[SOURCE_COUNT - 1].computed);
    }
}
BENCHMARK(BM_AllRowsNewDay)->Unit(benchmark::kMillisecond);

// The same with the table's cells rebuilt, as the dialog's timer does it.
static void BM_SourcesDialogRecalculate(benchmark::State &state)
{
    clock_freeze(1712600236); // 2024-04-08 18:17:16 UT
    settings.Latitude = 52.0;
    settings.Longitude = 5.0;
    settings.Frequency = 1296.0;
    SourcesDialog dialog;
    dialog.timer->stop();
    for (auto _ : state)
    {
        dialog.Recalculate();
    }
    clock_freeze(0);
}
BENCHMARK(BM_SourcesDialogRecalculate)->Unit(benchmark::kMillisecond);
