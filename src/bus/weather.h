// The weather station: five sensors at one bus address, each polled at its
// own interval, shown in the operator's units on the panel labels and the
// weather dials, and watched against the alarm limits, whose latches the
// alerts take. A sensor that does not answer changes nothing and says nothing.
#pragma once

#include "core/state.h"

#include <cstdint>

struct CycleConditions;

enum WeatherUnits
{
    WX_UNITS_FIRST = 0, // km/h, Deg C, mb, meters
    WX_UNITS_SECOND = 1 // mph, Deg F, inHg, feet
};

// The start values of every key, and the latches clear, the calibration due.
void weather_defaults(WeatherSettings *w);
// The WXSTATION section of the named INI file of the writable folder. Load
// takes the defaults for missing keys and clears the latches; save writes
// every key, defaults included, and keeps the other sections. Both return 0.
int weather_load(const char *ini_name, WeatherSettings *w);
int weather_save(const char *ini_name, const WeatherSettings *w);

// The readings in the units shown, from the device's raw words.
double weather_speed(uint16_t raw, int units);          // whole km/h first, then to mph
double weather_temperature(int16_t raw, int units);     // C or F
double weather_altitude(uint32_t raw, int units);       // metres or feet
const char *weather_compass_word(uint16_t raw);         // "N" .. "NW" of 0.1 degrees
// The pressure, reduced to sea level with the altimeter's height when it is
// polled and has answered; then only may it be shown in inHg. The text is the
// value with its unit word, or without one for the bare station pressure.
double weather_pressure(uint32_t raw, uint32_t altitude, int altimeter_on, int units, char *text, int size);

// Show one reading on the panel and the dials, and set its latch. slider is
// the dial page slider's position: a dial is repainted only on its page.
void weather_show_wind_speed(uint16_t raw, int slider);
void weather_show_wind_direction(uint16_t raw, int slider);
void weather_show_thermometer(int16_t raw, int slider);
void weather_show_altimeter(uint32_t raw, int slider);
void weather_show_barometer(uint32_t raw, int slider);

// The cycle's weather groups: read one sensor and show it. A failed read
// does nothing at all.
void weather_wind_speed_group(int slider);
void weather_wind_direction_group(int slider);
void weather_thermometer_group(int slider);
void weather_calibration_group(void);
void weather_altimeter_group(int slider);
void weather_barometer_group(int slider);

// What the cycle needs to know: which sensors are polled, their intervals,
// and whether the calibration word waits.
void weather_cycle_conditions(CycleConditions *c);

// New alarm limits into the weather dials, after the dialog.
void weather_dial_limits(void);
// Repaint the weather dials on show at this slider position.
void weather_dial_repaint_page(int slider);
// The last wind speed in the units shown, and whether one has come.
extern double weather_wind_speed_shown;
extern uint8_t weather_wind_speed_valid;
