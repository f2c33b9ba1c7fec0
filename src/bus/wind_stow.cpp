#include "bus/wind_stow.h"

#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <cstdio>

WindStowRecord wind_stow;

void wind_stow_reset(void)
{
    wind_stow = WindStowRecord();
}

// A calm level at or above the alarm, or none at all, would let one gust
// park and the next reading release: the alarm level itself is used then.
double wind_stow_calm_level(void)
{
    double resume = weather.WindStowResume;
    return resume > 0 && resume < weather.WindSpeedAlarmHigh ? resume : weather.WindSpeedAlarmHigh;
}

static void wind_stow_begin(double speed)
{
    char text[96];
    wind_stow.resume_auto = auto_tracking;
    wind_stow.calm = 0;
    wind_stow.state = STOW_PARKED;
    park_control(1);
    snprintf(text, sizeof text, "Wind stow: parked at wind %.0f, alarm level %.0f", speed, weather.WindSpeedAlarmHigh);
    panel_status(text, 0);
}

static void wind_stow_end(void)
{
    char text[96];
    wind_stow.state = STOW_IDLE;
    if (wind_stow.resume_auto && !auto_tracking)
    {
        // The panel's AUTO: PARK ends, and the drive goes back to the source.
        drive_auto_pressed();
        snprintf(text, sizeof text, "Wind stow: calm for %d min, tracking again", weather.WindStowResumeMinutes);
    }
    else
    {
        // Nothing was tracking before the wind came, so the antenna stays parked.
        snprintf(text, sizeof text, "Wind stow: calm for %d min, antenna stays parked", weather.WindStowResumeMinutes);
    }
    panel_status(text, 0);
}

void wind_stow_step(double speed, time_t now)
{
    // An alarm level of 0 alarms at every reading; no stow hangs on it.
    if (!weather.WindStow || weather.WindSpeedAlarmHigh <= 0)
    {
        wind_stow.state = STOW_IDLE;
        return;
    }
    if (wind_stow.state == STOW_IDLE)
    {
        if (speed >= weather.WindSpeedAlarmHigh)
        {
            wind_stow_begin(speed);
        }
        return;
    }
    // The park ends by itself once the antenna is there; the operator takes
    // the antenna back with AUTO or MAN.
    if (auto_tracking || az_manual || el_manual)
    {
        wind_stow.state = STOW_IDLE;
        panel_status("Wind stow ended by the operator", 5000);
        return;
    }
    if (speed >= wind_stow_calm_level())
    {
        wind_stow.calm = 0;
        return;
    }
    if (!wind_stow.calm)
    {
        wind_stow.calm = 1;
        wind_stow.calm_since = now;
        return;
    }
    if (now - wind_stow.calm_since >= (time_t)weather.WindStowResumeMinutes * 60)
    {
        wind_stow_end();
    }
}
