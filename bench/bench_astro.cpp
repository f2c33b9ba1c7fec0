// The engine's cost where the station pays it: the display group's Moon
// refresh every 550 ms, and the sources table's full refresh every second.
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

// Target: below 20 microseconds.
static void BM_MoonPosition(benchmark::State &state)
{
    struct tm tm = bench_utc();
    SourceRecord record = {};
    for (auto _ : state)
    {
        source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &tm, 52.0, 5.0, 1296.0, record);
        benchmark::DoNotOptimize(record.doppler_hz);
    }
}
BENCHMARK(BM_MoonPosition)->Unit(benchmark::kMicrosecond)->Repetitions(5)->DisplayAggregatesOnly(true);

// Target: below 10 ms, 1% of the table's period.
static void BM_AllRowsFullMask(benchmark::State &state)
{
    struct tm tm = bench_utc();
    for (auto _ : state)
    {
        for (int row = 0; row < SOURCE_COUNT; row++)
        {
            source_calculate(row, SOURCE_MASK_ALL, &tm, 52.0, 5.0, 1296.0, source_table[row]);
        }
        benchmark::DoNotOptimize(source_table[SOURCE_COUNT - 1].computed);
    }
}
BENCHMARK(BM_AllRowsFullMask)->Unit(benchmark::kMillisecond)->Repetitions(3)->DisplayAggregatesOnly(true);

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
