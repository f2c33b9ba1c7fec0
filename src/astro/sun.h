// The Sun's tracking position, from its mean orbit (P. Schlyter). Accurate to
// about an arc minute, plenty for a dish pointed at the Sun for noise checks.
#pragma once

#include "core/state.h"

#include <ctime>

struct SunPosition
{
    double ra;  // degrees, -180..180 (not brought to 0..360)
    double dec; // degrees
    double az;  // degrees from north through east, 0..360
    double el;  // degrees, geometric
};

// The Sun at day number d (see day_number) and ut_hours, for a station at
// (latitude, longitude), degrees north and east.
void sun_position(double d, double ut_hours, double latitude, double longitude, SunPosition *position);

// Fill az, el, ra (degrees), dec and above_horizon; zero doppler_hz and sky_temp.
void sun_calculate(const struct tm *utc, double latitude, double longitude, SourceRecord *record);
