// The Moon as an EME station needs it: topocentric direction, two-way Doppler,
// polarisation offset and hour angle, from a closed-form low-precision theory
// (P. Schlyter's orbital elements with the main perturbations). It is not the
// theory libnova uses for the Moon's rise, set and phase.
#pragma once

#include "core/state.h"

#include <ctime>

struct MoonPosition
{
    double ra;         // geocentric right ascension, degrees 0..360
    double dec;        // geocentric declination, degrees
    double top_ra;     // topocentric right ascension, degrees
    double top_dec;    // topocentric declination, degrees
    double sidereal;   // local sidereal time, hours 0..24
    double hour_angle; // local hour angle of the topocentric position, degrees -180..180
    double az;         // degrees from north through east, 0..360
    double el;         // degrees, geometric (no refraction)
    double distance;   // geocentric, km
};

// The Moon seen from a station at (latitude, longitude), degrees north and
// east, at ut_hours of the day year-month(1..12)-day. ut_hours may be negative.
// At a latitude of exactly 0 the parallax in declination is 0/0; the station
// then gets the formula's limit, top_dec = dec + p cos(H0) sin(dec), so an
// equatorial station has a Moon like its neighbours' and never a NaN.
void moon_position(int year, int month, int day, double ut_hours, double longitude, double latitude,
                   MoonPosition *position);

// Fill az, el, ra and dec (degrees), doppler_hz, spatial_offset, hour_angle,
// distance (km / 1.5e8), above_horizon, and clear sky_temp, for a station 200 m
// above the ellipsoid. frequency in MHz. el is apparent when the station
// applies refraction; a Moon that is up by it has its Doppler.
void moon_calculate(const struct tm *utc, double latitude, double longitude, double frequency, SourceRecord *record);

// The record's Moon figures from one position: az, el (geometric, degrees;
// raised by refraction when that is on), ra, dec (degrees), distance (km),
// hour_angle (degrees), the two-way doppler (Hz) that holds while the Moon is
// up, and the station's latitude for the spatial offset.
void moon_fill_record(double az, double el, double ra, double dec, double distance, double hour_angle, double doppler,
                      double latitude, SourceRecord *record);
