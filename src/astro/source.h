// The source engine: where a source of the table stands, seen from a station
// at a UTC instant. The main cycle, the sky map and the sources table call it,
// each with a mask of what to recompute; all others read source_table.
#pragma once

#include "core/state.h"

#include <ctime>

// What a call recomputes. Figures outside the mask keep their last values.
enum SourceMask
{
    SOURCE_MASK_POSITION = 1, // az, el, ra, dec, sub-point; the Moon's EME figures
    SOURCE_MASK_DISTANCE = 2, // distance of the Sun and the planets
    SOURCE_MASK_PHASE = 4,    // illuminated fraction
    SOURCE_MASK_RISE_SET = 8, // rise, set, transit, rst_status; implies position
    SOURCE_MASK_ALL = 15
};

// Fill record for source index (0..26) at utc (UTC, broken down) for a station
// at latitude, longitude (degrees, north and east), frequency in MHz. An index
// outside 0..26 only marks the record computed. Only the fields the mask and
// the source's class name are touched.
//
// The station's choices in settings apply: PreciseMoon (the Moon from the full
// lunar theory, for a station at the home station's latitude and longitude at
// StationHeight, for any other at 200 m), Refraction (the elevation of every
// sky source is the apparent one; the user's and the remote programs'
// directions are taken as given) and Precession (radio sources and User RA/Dec
// are precessed from J2000 to the date before they meet the horizon).
void source_calculate(int index, int mask, const struct tm *utc, double latitude, double longitude, double frequency,
                      SourceRecord &record);

// The place on Earth that has (ra_hours, dec in degrees) at its zenith at utc.
// This is the map's one rule: it lies 1.48 degrees west of the geometric
// sub-point, the same for everything drawn, so the picture stays consistent.
void sub_point(const struct tm *utc, double ra_hours, double dec, double *lat, double *lng);

// The Julian date of a broken-down UTC time: plain UTC, no leap seconds or
// delta-T.
double source_julian_day(const struct tm *utc);
