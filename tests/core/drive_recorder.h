// The drive's bus calls and sleeps, recorded instead of sent, so a test reads
// what a step commanded and in what order, and a brake delay costs nothing.
#pragma once

#include <string>
#include <vector>

struct BusCall
{
    char kind; // 'R' relay, 'P' PWM
    int address;
    int port;
    int value;
    bool operator==(const BusCall &o) const
    {
        return kind == o.kind && address == o.address && port == o.port && value == o.value;
    }
};

struct DriveRecord
{
    std::vector<BusCall> calls;
    std::vector<int> sleeps;
    long slept_ms;
    // STOP's style at each sleep, to see the red flash that only lasts a sleep.
    std::vector<int> stop_style_at_sleep;
};

extern DriveRecord drive_record;

// Route the drive's commands and sleeps into drive_record, cleared.
void drive_record_start(void);
void drive_record_clear(void);
// The settings of a fresh file, with the azimuth board at 1 and elevation at 2
// and both axes read without error at 0.
void drive_test_settings(void);

std::string bus_call_text(const BusCall &c);
std::string bus_calls_text(const std::vector<BusCall> &calls);
