// The pass log: how well the antenna actually followed. While AUTO runs, one
// CSV line a second goes to "tracking-YYYY-MM-DD.csv" in the settings folder
// (UTC day): the time, the source, target and antenna azimuth and elevation,
// the pointing error, the motors, the Doppler correction and both VFOs. When
// AUTO ends, a summary line closes the pass: RMS and largest pointing error
// per axis, motor starts and relay switchings.
//
// The lines gather in a bounded buffer that goes to the file every few
// seconds, so the cycle pays for one short append now and then. A file that
// cannot be written is reported once in the debug log, never on the panel;
// the lines wait in the buffer, and those that no longer fit are counted
// and the count written once the file takes lines again.
#pragma once

#include <ctime>

struct PassSummary
{
    time_t start, end; // the first and the last second of the pass
    char source[24];   // the source when AUTO came on
    // Seconds in the error figures: the source up and enabled, and the
    // antenna on it once (the first slew is no pointing error).
    int tracked;
    double az_rms, az_max, el_rms, el_max; // degrees
    int az_starts, el_starts;              // motor relay closings
    int az_switchings, el_switchings;      // closings and openings
    int quiet;                             // quiet motion was on
};

enum
{
    PASS_LINE_MAX = 256,
    PASS_BUFFER_SIZE = 8192, // some sixty lines
    PASS_FLUSH_SECONDS = 10  // the longest a line waits for the file
};

// From the position group, after the drive step: a pass starts when AUTO is
// on, each new second adds its line, and the pass ends when AUTO is off.
void pass_log_step(void);
// At exit: a running pass ends with its summary and the buffer is written.
void pass_log_close(void);
// Forget the pass and the buffer, unwritten lines included.
void pass_log_reset(void);

// "tracking-YYYY-MM-DD.csv" for the UTC day of t.
void pass_log_file_name(time_t t, char *name, int size);
// The summary line, without its newline; its length.
int pass_summary_format(const PassSummary *s, char *line, int size);
// 0 with the fields for a summary line, -1 for every other line.
int pass_summary_parse(const char *line, PassSummary *s);
