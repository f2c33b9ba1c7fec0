#include "astro/path.h"

#include <cmath>

// The record keeps the Moon's distance as km / 1.5e8 (not the true AU), so the
// same factor brings it back to kilometres.
static const double moon_km_factor = 1.5e8;
static const double perigee_km = 356903.0;

// Radar equation for a sphere: the echo falls with the fourth power of range.
double path_loss_db(double distance)
{
    double km = distance * moon_km_factor;
    return -40.0 * log10(km / perigee_km);
}

// 80 K is the receiver's noise temperature and 13 K at 408 MHz the coldest
// sky, which scales with frequency by the spectral index 2.6.
double path_degradation_db(double path_loss, double sky_temp, double frequency_mhz)
{
    double cold_sky = 13.0 * pow(408.0 / frequency_mhz, 2.6);
    return path_loss - 10.0 * log10((sky_temp + 80.0) / (cold_sky + 80.0));
}
