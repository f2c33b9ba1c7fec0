// The cost of the 50 ms cycle when the station is idle: one tick with no bus,
// and the CPU the whole program takes over 20 s of running, without a bus
// and with a weather station polled.
#include "core/clock.h"
#include "core/ini_file.h"
#include "core/mainwindow.h"
#include "core/state.h"

#include "sim/pty_server.h"

#include <QCoreApplication>
#include <QDir>
#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// One idle tick: a tenth of the ticks carry the display group, the rest only
// the panel page and the counters. Target: median below 0.5 ms.
static void BM_IdleTimerTick(benchmark::State &state)
{
    state_reset();
    MainWindow window(0);
    window.timer->stop();
    window.show();
    QCoreApplication::processEvents();
    for (auto _ : state)
    {
        window.TimerEvent();
    }
    state.SetLabel("target < 0.5 ms (1% of 50 ms)");
}
BENCHMARK(BM_IdleTimerTick)->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);

static long process_cpu_ticks(pid_t pid)
{
    char path[64];
    snprintf(path, sizeof path, "/proc/%d/stat", (int)pid);
    FILE *f = fopen(path, "r");
    if (!f)
    {
        return -1;
    }
    char line[1024];
    long utime = -1, stime = -1;
    if (fgets(line, sizeof line, f))
    {
        // Fields after the command's closing parenthesis: state is field 3,
        // utime field 14, stime field 15.
        const char *p = strrchr(line, ')');
        if (p && sscanf(p + 2, "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &utime, &stime) == 2)
        {
            utime += stime;
        }
    }
    fclose(f);
    return utime;
}

// The idle program over 20 s, measured from outside, with the files of the
// home written first by prepare (null: a fresh home). Target: below 2% of one core.
static void idle_program_cpu(benchmark::State &state, void (*prepare)(const char *home))
{
    std::string program = QCoreApplication::applicationDirPath().toStdString() + "/../bin/morvane";
    for (auto _ : state)
    {
        char home[] = "/tmp/morvane-idle-XXXXXX";
        if (!mkdtemp(home))
        {
            state.SkipWithError("mkdtemp failed");
            return;
        }
        if (prepare)
        {
            prepare(home);
        }
        pid_t pid = fork();
        if (pid == 0)
        {
            setenv("HOME", home, 1);
            setenv("QT_QPA_PLATFORM", "offscreen", 1);
            int null = open("/dev/null", O_WRONLY);
            dup2(null, 2);
            execl(program.c_str(), program.c_str(), (char *)nullptr);
            _exit(127);
        }
        sleep(2); // start-up is not idle time
        long before = process_cpu_ticks(pid);
        int64_t t0 = clock_monotonic_ms();
        sleep(20);
        long after = process_cpu_ticks(pid);
        int64_t t1 = clock_monotonic_ms();
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
        std::string cmd = std::string("rm -rf ") + home;
        if (system(cmd.c_str()) != 0 || before < 0 || after < 0)
        {
            state.SkipWithError("the program did not run");
            return;
        }
        double cpu_ms = (after - before) * 1000.0 / sysconf(_SC_CLK_TCK);
        state.counters["cpu_%"] = 100.0 * cpu_ms / (double)(t1 - t0);
    }
    state.SetLabel("target < 2% of one core");
}

static void BM_IdleProgramCpu(benchmark::State &state)
{
    idle_program_cpu(state, nullptr);
}
BENCHMARK(BM_IdleProgramCpu)->Iterations(1)->Unit(benchmark::kSecond);

// The same with the simulated weather station on the bus, all five sensors
// polled at their default intervals, and nothing else.
static SimServer weather_station;

static void weather_home(const char *home)
{
    sim_station_init(&weather_station.station);
    if (sim_server_start(&weather_station, nullptr) != 0)
    {
        return;
    }
    std::string folder = std::string(home) + "/.config/Morvane";
    QDir().mkpath(QString::fromStdString(folder));
    IniFile ini;
    ini_set(&ini, "SEI", "PortName", weather_station.device);
    ini_set(&ini, "REPORT", "Active", "0");
    ini_set_int(&ini, "WXSTATION", "WxStationAddr", weather_station.station.weather.address);
    for (const char *sensor : {"WindSpeed", "WindDirection", "Thermometer", "Barometer", "Altimeter"})
    {
        ini_set_bool(&ini, "WXSTATION", sensor, 1);
    }
    ini_write((folder + "/Morvane.ini").c_str(), &ini);
}

static void BM_IdleProgramCpuWithWeather(benchmark::State &state)
{
    idle_program_cpu(state, weather_home);
    int frames;
    {
        std::lock_guard<std::mutex> hold(weather_station.lock);
        frames = weather_station.station.frame_count;
    }
    sim_server_stop(&weather_station);
    state.counters["bus_frames"] = frames;
}
BENCHMARK(BM_IdleProgramCpuWithWeather)->Iterations(1)->Unit(benchmark::kSecond);
