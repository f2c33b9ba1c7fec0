// Maidenhead locators: a locator to a position and back, and the great-circle
// distance and bearing between two locators (the MaidenBearing figures that
// the panel shows when no Doppler mode is chosen).
#pragma once

// "JO62qm" or "JO62" to degrees, north and east positive. A four-character
// locator, or one whose fifth and sixth characters aren't both letters, gives
// a point 12.5 sub-squares into the square. Letters are taken in either case
// and aren't held to the system's ranges; a seventh character isn't read.
// Returns 0, or 1 (outputs untouched) when the text doesn't start with two
// letters and two digits.
int grid_to_position(const char *grid, double *latitude, double *longitude);

// A position to six characters and a terminator: the field in capitals, the
// sub-square in small letters. Returns 0, or 1 with an empty text when the
// longitude lies outside -180..180; the latitude isn't checked.
int position_to_grid(char grid[7], double latitude, double longitude);

// Kilometres along the great circle on a sphere of radius 6367 km, or 0.0 when
// either text isn't a locator.
double grid_distance(const char *from, const char *to);

// The initial bearing from the first locator towards the second, 0 to 360
// degrees from north through east, or 0.0 when either isn't a locator.
double grid_bearing(const char *from, const char *to);
