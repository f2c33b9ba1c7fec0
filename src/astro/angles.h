// Degrees in, degrees out: the closed-form Moon and Sun routines work in
// degrees and take their sines through these.
#pragma once

#include <cmath>

// Degrees per radian.
constexpr double RAD = 57.29577951307855;

inline double sind(double degrees)
{
    return sin(degrees / RAD);
}

inline double cosd(double degrees)
{
    return cos(degrees / RAD);
}
