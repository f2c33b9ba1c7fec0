// The simulated radio on a pseudo-terminal, served by a thread of its own so
// that a test or the engine in the same process can talk to it like to a
// serial port. The thread passes monotonic time to the radio's dial.
#pragma once

#include "rigsim_radio.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

enum
{
    // A simulator left running for days must not grow: the record keeps the newest lines.
    RIGSIM_FRAME_RECORD = 1024
};

struct RigsimPty
{
    RigsimRadio radio = {}; // guarded by lock
    int protocol = RIGSIM_CIV;
    int master = -1;
    int slave = -1; // held open so the line stays up between clients
    char path[64] = "";
    std::mutex lock;
    std::thread thread;
    std::atomic<int> stop;
    std::vector<std::string> frames; // "> " received, "< " sent, the newest RIGSIM_FRAME_RECORD; guarded by lock
    int64_t frames_recorded = 0;     // every frame line ever recorded, the dropped ones too
    FILE *log = nullptr;             // a copy of each frame line, when set
};

// Open the pty and start serving. 0, or -1 when no pty could be made.
int rigsim_start(RigsimPty *sim, int protocol);
void rigsim_stop(RigsimPty *sim);
// One control line (see rigsim_control), under the lock.
std::string rigsim_command(RigsimPty *sim, const char *line);
// A VFO's frequency now, under the lock.
long long rigsim_vfo(RigsimPty *sim, int vfo);
// The frame log so far.
std::vector<std::string> rigsim_frames(RigsimPty *sim);
