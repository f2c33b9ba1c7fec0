#include "astro/refraction.h"

#include "astro/angles.h"
#include "core/state.h"

#include <cmath>

double refraction_degrees(double elevation, double millibar, double celsius)
{
    // Below about a degree under the horizon the formula loses its meaning;
    // holding its value there keeps the elevation continuous and rising.
    double h = elevation < -1.0 ? -1.0 : elevation;
    double arcmin = 1.02 / tan((h + 10.3 / (h + 5.11)) / RAD) + 0.0019279;
    return arcmin / 60.0 * (millibar / 1010.0) * (283.0 / (273.0 + celsius));
}

void refraction_station_air(double height, double *millibar, double *celsius)
{
    // The standard atmosphere's pressure and lapse rate at the station's
    // height, kept to heights where stations stand.
    double h = height < -500.0 ? -500.0 : height > 9000.0 ? 9000.0 : height;
    *millibar = 1013.25 * pow(1.0 - 2.25577e-5 * h, 5.25588);
    *celsius = 15.0 - 0.0065 * h;
    if (weather.WxStationAddr < 0)
    {
        return;
    }
    // A sensor gone wrong must not tilt the dish: values no station sees are
    // left for the standard ones. A thermometer not yet read counts as 0 C,
    // which moves a horizon Moon by a hundredth of a degree for a second.
    double t = temperature_raw / 10.0;
    double p = pressure_raw / 1000.0;
    if (weather.Thermometer && t > -60.0 && t < 60.0)
    {
        *celsius = t;
    }
    if (weather.Barometer && p > 300.0 && p < 1100.0)
    {
        *millibar = p;
    }
}

double refraction_apparent_elevation(double elevation)
{
    if (!settings.Refraction)
    {
        return elevation;
    }
    double millibar, celsius;
    refraction_station_air(settings.StationHeight, &millibar, &celsius);
    return elevation + refraction_degrees(elevation, millibar, celsius);
}
