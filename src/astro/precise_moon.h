// The Moon for the microwave bands: libnova's full lunar theory (ELP 2000-82B)
// in terrestrial time, brought to the true equator of date and the turning
// Earth, seen from a station on the WGS84 ellipsoid. Its Doppler comes from
// the rate of change of the topocentric range, so pointing and Doppler follow
// from the same position.
#pragma once

#include "core/state.h"

#include <ctime>

struct PreciseMoon
{
    double az, el;     // degrees from north through east; geometric elevation
    double ra, dec;    // geocentric, true equator and equinox of date, degrees
    double distance;   // geocentric, km
    double range;      // from the station, km
    double range_rate; // from the station, km/s, positive when receding
    double hour_angle; // local, of the topocentric position, degrees -180..180
};

// TT - UTC in seconds at a UTC Julian date: the leap seconds since 1972 and
// the 32.184 s between TAI and TT.
double precise_tt_minus_utc(double jd_utc);

// The Moon at jd_utc, taking UT1 = UTC, from latitude and longitude (degrees,
// north and east) and height (metres above the ellipsoid).
void precise_moon_position(double jd_utc, double latitude, double longitude, double height, PreciseMoon *moon);

// The record as moon_calculate fills it, from the precise position: az, el
// (apparent when refraction is on), ra and dec (degrees), doppler_hz (two-way
// at frequency MHz), spatial_offset, hour_angle, distance (km / 1.5e8),
// above_horizon; sky_temp cleared.
void precise_moon_calculate(const struct tm *utc, double latitude, double longitude, double height, double frequency,
                            SourceRecord *record);
