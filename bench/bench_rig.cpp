// One pass of the rig group against a simulated radio that answers at once:
// the status walk and the write of the following VFO, waited out. And the
// whole window's tick with a radio that is off: the cycle must keep its pace.
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/cycle.h"
#include "core/state.h"
#include "rig/doppler.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rigsim/rigsim_pty.h"

#include <QThread>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <vector>
#include <cstdio>
#include <string>

static void bench_rig_group(benchmark::State &state, int protocol, const char *file)
{
    RigsimPty sim;
    if (rigsim_start(&sim, protocol) != 0)
    {
        state.SkipWithError("no pseudo-terminal");
        return;
    }
    rig_reset();
    snprintf(rig_link.PortName, sizeof rig_link.PortName, "%s", sim.path);
    rig_link.BaudRate = 7;
    rig_link.DataBits = 1;
    if (serial_open(&rig_link) != 0)
    {
        state.SkipWithError("cannot open the simulator's port");
        rigsim_stop(&sim);
        return;
    }
    rig_load_path((std::string(MORVANE_OWN_RIG_DIR) + "/" + file).c_str(), 0);
    rig_send_init();
    settings.OmniRigActive = 1;
    vfo_doppler_mode = 1;
    doppler_mode = 1;
    settings.TrackingSource = SOURCE_MOON;
    source_table[SOURCE_MOON].doppler_hz = 2345.5;
    for (auto _ : state)
    {
        rig_poll_status();
        doppler_follow(vfo_doppler_mode, doppler_correction());
        rig_run_until_idle();
    }
    state.SetLabel("target < 10 ms");
    rig_reset();
    rigsim_stop(&sim);
    state_reset();
}

static void BM_RigGroupCiv(benchmark::State &state)
{
    bench_rig_group(state, RIGSIM_CIV, "Simulator CI-V.ini");
}

static void BM_RigGroupKenwood(benchmark::State &state)
{
    bench_rig_group(state, RIGSIM_CAT, "Simulator Kenwood.ini");
}

BENCHMARK(BM_RigGroupCiv)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_RigGroupKenwood)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

// The window's 50 ms cycle from the press of the rig button with the radio
// switched off until rig control gives up on it: the longest tick and the
// median one, and the seconds it took to give up. Target: longest < 10 ms.
static void BM_RigSilentLongestTick(benchmark::State &state)
{
    for (auto _ : state)
    {
        RigsimPty sim;
        if (rigsim_start(&sim, RIGSIM_CIV) != 0)
        {
            state.SkipWithError("no pseudo-terminal");
            return;
        }
        rigsim_command(&sim, "silent 1");
        state_reset();
        rig_reset();
        MainWindow window(0);
        window.timer->stop();
        rig_files_set_folder(MORVANE_OWN_RIG_DIR);
        text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "Simulator CI-V.ini");
        text_copy(settings.PortName, sizeof settings.PortName, sim.path);
        settings.BaudRate = 7;
        settings.DataBits = 1;
        vfo_doppler_mode = 1;
        // The window's first ticks work out the day's rise and set times and
        // draw the panel; they are the same with or without a radio.
        for (int i = 0; i < 12; i++)
        {
            window.TimerEvent();
        }
        doppler_omnirig_pressed();
        std::vector<double> ticks;
        int64_t start = clock_monotonic_ms();
        // Bounded: three budgets and a little over.
        while (settings.OmniRigActive && clock_monotonic_ms() - start < (RIG_SILENT_LIMIT + 1) * RIG_BUDGET_MS)
        {
            int64_t t0 = clock_monotonic_ms();
            auto begin = std::chrono::steady_clock::now();
            window.TimerEvent();
            ticks.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
            int64_t rest = CYCLE_TICK_MS - (clock_monotonic_ms() - t0);
            QThread::msleep(rest > 0 ? (unsigned long)rest : 0);
        }
        state.counters["give_up_s"] = (clock_monotonic_ms() - start) / 1000.0;
        state.counters["ticks"] = (double)ticks.size();
        std::sort(ticks.begin(), ticks.end());
        state.counters["longest_tick_ms"] = ticks.empty() ? 0.0 : ticks.back();
        state.counters["median_tick_ms"] = ticks.empty() ? 0.0 : ticks[ticks.size() / 2];
        state.counters["rig_off"] = settings.OmniRigActive ? 0.0 : 1.0;
        rig_files_set_folder(nullptr);
        rig_reset();
        rigsim_stop(&sim);
    }
    state.SetLabel("target: longest tick < 10 ms");
}
BENCHMARK(BM_RigSilentLongestTick)->Iterations(1)->Unit(benchmark::kSecond);
