// The simulator on a pseudo-terminal: a thread reads frames from the master
// end, advances the mount by monotonic time and writes the replies back, at
// the pace of a serial line. The program's end is left as the kernel sets up
// a new terminal (echo, line editing, XON/XOFF, newline mapping), as a freshly
// plugged adapter is: making it a raw line is the program's job.
// Tests run it in-process; morvane-sim runs it beside its control loop.
#pragma once

#include "sim/devices.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <thread>

struct SimServer
{
    SimStation station;
    std::mutex lock; // the station is shared by the pty thread and the controller
    std::thread thread;
    std::atomic<int> running{0};
    int master = -1;
    int slave_keep = -1; // keeps the line up while the program's end is closed
    char device[64] = "";
    char link[512] = "";
    // The devices' speed: a frame the program sends at another speed is noise
    // to them. Each byte takes its bits' time on the wire both ways. These may
    // change while the thread runs.
    std::atomic<int> baud{9600};
    std::atomic<int> turnaround_ms{3}; // from a request's last byte to the reply's first
    std::atomic<int> instant{0};       // 1: no wire time and no turnaround, for benchmarks
    FILE *log = nullptr;   // every frame with its time, when asked for
    int64_t start_ms = 0;
};

// Open the pseudo-terminal, make the link when a path is given, start the
// thread on the station as the caller set it up (sim_station_init and any
// changes). 0, or -1 with nothing left open.
int sim_server_start(SimServer *server, const char *link_path);
void sim_server_stop(SimServer *server);
// A control line against the running station.
int sim_server_control(SimServer *server, const char *line, char *reply, int size);
// Start writing the frame log to a file (null stops it). 0, or -1.
int sim_server_log(SimServer *server, const char *path);
