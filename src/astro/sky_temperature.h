// The sky temperature behind a source, from its ecliptic longitude.
#pragma once

// Kelvin at frequency_mhz for an ecliptic longitude in degrees (0 to 360).
// Each table step holds for its whole 2 degrees; there is no interpolation.
double sky_temperature(double frequency_mhz, double ecliptic_longitude);
