// One pass of the rig group against a simulated radio that answers at once:
// the status walk and the write of the following VFO. The group runs every
// 150 ms inside the 50 ms tick, so a pass must stay well below 10 ms.
#include "core/state.h"
#include "rig/doppler.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rigsim/rigsim_pty.h"

#include <benchmark/benchmark.h>
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
