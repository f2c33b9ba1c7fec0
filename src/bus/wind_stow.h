// Wind stow: a windy site parks its antenna when the wind reaches the alarm
// level, holds the park while the wind stays at or above a lower calm level,
// and goes back to the source and to AUTO once the wind has stayed below it
// for the set minutes. It is off unless the operator switches it on, and the
// operator's own AUTO or MAN during a stow ends it.
#pragma once

#include <cstdint>
#include <ctime>

enum WindStowState
{
    STOW_IDLE,
    STOW_PARKED
};

struct WindStowRecord
{
    int state;
    uint8_t resume_auto; // AUTO was running when the wind parked the antenna
    uint8_t calm;        // the wind is below the calm level ...
    time_t calm_since;   // ... since then
};
extern WindStowRecord wind_stow;

void wind_stow_reset(void);
// One wind speed reading, in the units shown, at UTC second now.
void wind_stow_step(double speed, time_t now);
// The calm level in force: the resume key, kept at or below the alarm level.
double wind_stow_calm_level(void);
