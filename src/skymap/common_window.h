// The common window with a DX station: when the Moon stands above the
// horizon at both stations in the next 24 hours, found with the station's
// own source engine to the minute, and the strip across the top of the map
// that shows it.
#pragma once

#include <ctime>

class QPainter;

enum
{
    COMMON_WINDOW_MINUTES = 24 * 60,
    COMMON_WINDOW_SPANS = 4
};

struct CommonWindow
{
    time_t from;                    // the first minute looked at, a whole UTC minute
    int count;                      // spans found, at most COMMON_WINDOW_SPANS
    int first[COMMON_WINDOW_SPANS]; // the first and last minute of each, counted from `from`, both inclusive
    int last[COMMON_WINDOW_SPANS];
    double home_latitude, home_longitude, dx_latitude, dx_longitude; // what it was found for
};

// Look through the 24 hours from utc (taken down to its minute). A span open
// at the first or the last minute is cut there.
void common_window_find(CommonWindow *w, time_t utc, double home_latitude, double home_longitude, double dx_latitude,
                        double dx_longitude);

// The same, but only when the minute or a station differs from the last
// look, as a redraw needs it: returns 1 when it looked again.
int common_window_update(CommonWindow *w, time_t utc, double home_latitude, double home_longitude, double dx_latitude,
                         double dx_longitude);

// The strip: 24 hours across the map's width from the first minute, the spans
// in green, hour marks, and the first and last minute of the first span.
void common_window_draw(QPainter *painter, const CommonWindow *w, int width);
