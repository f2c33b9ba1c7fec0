// The sky map's costs on this machine. The day and night layer is built every
// two seconds: row by row it must stay far below the point-by-point way it
// replaces (the ratio is reported). A full picture with every layer on is
// drawn on each mouse move and Play step, so it should stay below 20 ms on a
// small board; opening the window to its first picture below 300 ms.
#include "core/clock.h"
#include "core/state.h"
#include "skymap/map_shade.h"
#include "skymap/overlays.h"
#include "skymap/skymap_dialog.h"

#include <QCoreApplication>
#include <QImage>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <ctime>

// Processor time of this thread: the ratio holds however busy the machine is.
static double bench_cpu_ms(void)
{
    struct timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

static double bench_ms(void (*shade)(QImage *, double, double, double), QImage *layer, double longitude)
{
    double start = bench_cpu_ms();
    shade(layer, 23.4, longitude, 10.0);
    return bench_cpu_ms() - start;
}

static void BM_CreateShadeOverlay(benchmark::State &state)
{
    QImage layer(800, 400, QImage::Format_Grayscale8);
    layer.fill(0);
    double by_points = 0, by_rows = 0, longitude = -180;
    for (auto _ : state)
    {
        longitude = longitude < 179 ? longitude + 1 : -180;
        by_points += bench_ms(map_shade_by_points, &layer, longitude);
        by_rows += bench_ms(map_shade, &layer, longitude);
    }
    state.counters["by_points_ms"] = by_points / state.iterations();
    state.counters["by_rows_ms"] = by_rows / state.iterations();
    state.counters["ratio"] = by_points / by_rows;
}
BENCHMARK(BM_CreateShadeOverlay)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// Every layer: objects to magnitude 20, outlines, both shades, sky noise,
// all bodies, two stations with their common window, and the tip.
static void skymap_bench_setup(void)
{
    state_reset();
    clock_freeze(1712600236); // 2024-04-08 18:17:16 UT
    skymap_set_folder(MORVANE_BIN_DIR);
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    settings.Latitude = 52.5;
    settings.Longitude = 13.5;
    settings.Frequency = 1296.0;
    text_copy(dx_grid, sizeof dx_grid, "FN31pr");
    dx_latitude = 41.7;
    dx_longitude = -72.7;
}

static void skymap_all_layers(void)
{
    overlays.SunShadingOverlay = overlays.MoonShadingOverlay = overlays.ConstellationsOverlay = 1;
    overlays.StarsMagnitude = 20;
}

static void BM_DrawMap(benchmark::State &state)
{
    skymap_bench_setup();
    SkyMapDialog map;
    map.timer->stop();
    skymap_all_layers();
    map.TimeAdjusted();
    map.tip.visible = 1;
    for (auto _ : state)
    {
        map.DrawMap();
    }
    if (map.map_layers != 0x3ff)
    {
        state.SkipWithError("not every layer was drawn");
    }
    state.counters["layers"] = map.map_layers;
    clock_freeze(0);
}
BENCHMARK(BM_DrawMap)->Unit(benchmark::kMillisecond);

// From building the window to its first composed picture, which the first
// tick of its 10 ms timer draws, all layers on.
static void BM_SkyMapOpenToFirstPicture(benchmark::State &state)
{
    skymap_bench_setup();
    OverlaySettings all;
    LoadOverlays(ini_file_name, all);
    overlays = all;
    skymap_all_layers();
    SaveOverlays(ini_file_name, overlays);
    for (auto _ : state)
    {
        map_first_tick = 1;
        SkyMapDialog map;
        map.show();
        while (map.map_draws == 0)
        {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    clock_freeze(0);
}
BENCHMARK(BM_SkyMapOpenToFirstPicture)->Unit(benchmark::kMillisecond)->Iterations(10);
