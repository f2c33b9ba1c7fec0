// Setting the system clock from the six date and time fields. The fields are
// UTC, and so is the command: `date -u MMDDhhmmYYYY.ss`, through `sudo -n`
// unless the program already runs as root. The command is made of the six
// numbers alone, never of text, and runs without a shell.
#pragma once

#include "core/state.h"

enum
{
    CLOCK_COMMAND_WORDS = 5,
    CLOCK_WORD_SIZE = 24
};

struct ClockCommand
{
    char words[CLOCK_COMMAND_WORDS][CLOCK_WORD_SIZE];
    int count;
};

// 0 and the command; -1 when a field is negative or wider than its digits.
// Fields are not checked against each other: 31 February goes as it is, and
// `date` judges it.
int clock_command_build(const DateTimeFields *fields, int as_root, ClockCommand *command);

// What runs a command: 0 when it ran and succeeded, else -1 with the reason
// (the command's own first line of complaint, or why it could not start).
typedef int (*ClockRunner)(const ClockCommand *command, char *why, int why_size);
// The real runner: the command without a shell, bounded in time.
int clock_run_command(const ClockCommand *command, char *why, int why_size);
// Tests put a recorder here, so no test ever sets the machine's clock; null
// restores the real runner.
void clock_set_runner(ClockRunner runner);

// Build the command for the fields and run it. 0, or -1 with the reason.
int clock_set_system(const DateTimeFields *fields, char *why, int why_size);

// 1 when a network time daemon (systemd-timesyncd, chrony or ntpd) is
// running, from the process names under proc_root ("/proc"), else 0.
int clock_network_time_active(const char *proc_root);
