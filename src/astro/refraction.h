// Atmospheric refraction: the elevation at which a source is seen, and at
// which the antenna must point, lies above its geometric elevation by up to
// about half a degree at the horizon.
#pragma once

// Refraction in degrees for a geometric elevation (degrees) at a pressure in
// millibars and a temperature in degrees C. Saemundsson's formula (Meeus,
// Astronomical Algorithms, eq. 16.4, with its zenith term), scaled by
// (P / 1010) (283 / (273 + T)).
double refraction_degrees(double elevation, double millibar, double celsius);

// The station's air: the weather station's thermometer and barometer where
// they are polled and give a believable value, else the standard atmosphere
// at height metres (1013.25 mb and 15 C at sea level).
void refraction_station_air(double height, double *millibar, double *celsius);

// The elevation the operator sees: raised by refraction for the station's
// air when settings.Refraction is on, unchanged when it is off.
double refraction_apparent_elevation(double elevation);
