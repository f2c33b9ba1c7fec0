#include "bus/weather.h"

#include "bus/sei_commands.h"
#include "bus/wind_stow.h"
#include "core/clock.h"
#include "core/cycle.h"
#include "core/ini_file.h"
#include "core/panel_seam.h"
#include "core/settings.h"

#include <cmath>
#include <cstdio>
#include <cstring>

double weather_wind_speed_shown;
uint8_t weather_wind_speed_valid;

static const char *const section = "WXSTATION";

void weather_defaults(WeatherSettings *w)
{
    memset(w, 0, sizeof *w);
    w->WxStationAddr = -1;
    w->WindSpeedInterval = 100;
    w->WindDirectionInterval = 100;
    w->ThermometerInterval = 1000;
    w->BarometerInterval = 1000;
    w->AltimeterInterval = 10000;
    w->calibration_pending = 1;
    w->Calibration = 50663;
    w->WindStowResume = 0;
    w->WindStowResumeMinutes = 10;
    weather_wind_speed_shown = 0;
    weather_wind_speed_valid = 0;
}

// Units are stored as words: the first word of a row is index 0, anything
// else 1.
struct UnitWords
{
    const char *key;
    const char *first;
    const char *second;
};
static const UnitWords unit_words[4] = {{"WindSpeedUnits", "km/h", "mph"},
                                        {"ThermometerUnits", "Deg C", "Deg F"},
                                        {"BarometerUnits", "mb", "inHg"},
                                        {"AltimeterUnits", "meters", "feet"}};

static int32_t *unit_field(WeatherSettings *w, int i)
{
    int32_t *const fields[4] = {&w->WindSpeedUnits, &w->ThermometerUnits, &w->BarometerUnits, &w->AltimeterUnits};
    return fields[i];
}

struct SensorKeys
{
    const char *flag;
    const char *interval;
    const char *interval_default;
};
static const SensorKeys sensor_keys[5] = {{"WindSpeed", "WindSpeedInterval", "100"},
                                          {"WindDirection", "WindDirectionInterval", "100"},
                                          {"Thermometer", "ThermometerInterval", "1000"},
                                          {"Barometer", "BarometerInterval", "1000"},
                                          {"Altimeter", "AltimeterInterval", "10000"}};

static bool *sensor_flag(WeatherSettings *w, int i)
{
    bool *const flags[5] = {&w->WindSpeed, &w->WindDirection, &w->Thermometer, &w->Barometer, &w->Altimeter};
    return flags[i];
}

static int32_t *sensor_interval(WeatherSettings *w, int i)
{
    int32_t *const intervals[5] = {&w->WindSpeedInterval, &w->WindDirectionInterval, &w->ThermometerInterval,
                                   &w->BarometerInterval, &w->AltimeterInterval};
    return intervals[i];
}

struct LimitKey
{
    const char *key;
    double WeatherSettings::*field;
};
static const LimitKey limit_keys[] = {{"WindSpeedAlarmHigh", &WeatherSettings::WindSpeedAlarmHigh},
                                      {"WindDirectionAlarmLow", &WeatherSettings::WindDirectionAlarmLow},
                                      {"WindDirectionAlarmHigh", &WeatherSettings::WindDirectionAlarmHigh},
                                      {"ThermometerAlarmLow", &WeatherSettings::ThermometerAlarmLow},
                                      {"ThermometerAlarmHigh", &WeatherSettings::ThermometerAlarmHigh},
                                      {"WindStowResume", &WeatherSettings::WindStowResume}};

int weather_load(const char *ini_name, WeatherSettings *w)
{
    char path[1024];
    IniFile ini;
    settings_path(ini_name, path, sizeof path);
    ini_read(path, &ini);
    w->WxStationAddr = ini_int(&ini, section, "WxStationAddr", "-1");
    for (int i = 0; i < 5; i++)
    {
        *sensor_flag(w, i) = ini_bool(&ini, section, sensor_keys[i].flag, "false");
        *sensor_interval(w, i) = ini_int(&ini, section, sensor_keys[i].interval, sensor_keys[i].interval_default);
    }
    for (int i = 0; i < 4; i++)
    {
        const char *word = ini_value(&ini, section, unit_words[i].key, unit_words[i].first);
        *unit_field(w, i) = strcmp(word, unit_words[i].first) == 0 ? 0 : 1;
    }
    w->Calibration = (uint16_t)ini_int(&ini, section, "Calibration", "50663");
    for (const LimitKey &k : limit_keys)
    {
        w->*k.field = ini_double(&ini, section, k.key, "");
    }
    w->WindStow = ini_int(&ini, section, "WindStow", "0");
    w->WindStowResumeMinutes = ini_int(&ini, section, "WindStowResumeMinutes", "10");
    w->wind_speed_alarm = 0;
    w->wind_direction_alarm = 0;
    w->thermometer_alarm = 0;
    return 0;
}

int weather_save(const char *ini_name, const WeatherSettings *record)
{
    char path[1024];
    IniFile ini;
    WeatherSettings copy = *record;
    WeatherSettings *w = &copy;
    settings_path(ini_name, path, sizeof path);
    ini_read(path, &ini);
    ini_set_int(&ini, section, "WxStationAddr", w->WxStationAddr);
    for (int i = 0; i < 5; i++)
    {
        ini_set_bool(&ini, section, sensor_keys[i].flag, *sensor_flag(w, i));
    }
    for (int i = 0; i < 4; i++)
    {
        ini_set(&ini, section, unit_words[i].key, *unit_field(w, i) == 0 ? unit_words[i].first : unit_words[i].second);
    }
    for (int i = 0; i < 5; i++)
    {
        ini_set_int(&ini, section, sensor_keys[i].interval, *sensor_interval(w, i));
    }
    ini_set_int(&ini, section, "Calibration", w->Calibration);
    for (const LimitKey &k : limit_keys)
    {
        ini_set_double(&ini, section, k.key, w->*k.field);
    }
    ini_set_int(&ini, section, "WindStow", w->WindStow);
    ini_set_int(&ini, section, "WindStowResumeMinutes", w->WindStowResumeMinutes);
    ini_write(path, &ini);
    return 0;
}

double weather_speed(uint16_t raw, int units)
{
    double speed = raw / 10; // whole km/h, by integer division
    return units == WX_UNITS_SECOND ? speed * 0.621371 : speed;
}

double weather_temperature(int16_t raw, int units)
{
    double t = raw / 10.0;
    return units == WX_UNITS_SECOND ? t * 9 / 5 + 32 : t;
}

double weather_altitude(uint32_t raw, int units)
{
    double metres = raw / 10.0;
    return units == WX_UNITS_SECOND ? metres * 3.28084 : metres;
}

// The bounds past east are not evenly spaced: 122.5 degrees ends "E", and the
// bounds after it keep that offset up to 302.5.
const char *weather_compass_word(uint16_t raw)
{
    static const uint16_t bounds[8] = {225, 675, 1225, 1675, 2125, 2575, 3025, 3375};
    static const char *const words[9] = {"N", "NE", "E", "SE", "S", "SW", "W", "NW", "N"};
    int i = 0;
    while (i < 8 && raw >= bounds[i])
    {
        i++;
    }
    return words[i];
}

double weather_pressure(uint32_t raw, uint32_t altitude, int altimeter_on, int units, char *text, int size)
{
    double p = raw / 1000; // whole mb, by integer division
    if (!altimeter_on || altitude == 0)
    {
        // The bare station pressure has no unit word and stays in mb.
        snprintf(text, (size_t)size, "%4.0f", p);
        return p;
    }
    double a = p - 0.3;
    float h = (float)(altitude / 10);
    p = a * pow(1 + 8.42288e-5 * h / pow(a, 0.190284), 5.255302600323726);
    if (units == WX_UNITS_SECOND)
    {
        p *= 0.0295299830714;
        snprintf(text, (size_t)size, "%4.2f in", p);
        return p;
    }
    snprintf(text, (size_t)size, "%4.0f mb", p);
    return p;
}

static void weather_dial(int dial, double value, const char *text, int repaint)
{
    panel_dial_value_text(dial, text);
    panel_dial_needle(dial, 1, value);
    if (repaint)
    {
        panel_dial_repaint(dial);
    }
}

void weather_show_wind_speed(uint16_t raw, int slider)
{
    char text[32];
    wind_speed_raw = raw;
    double speed = weather_speed(raw, weather.WindSpeedUnits);
    snprintf(text, sizeof text, weather.WindSpeedUnits == WX_UNITS_SECOND ? "%3d mph" : "%3d km/h", (int)speed);
    panel_text(PANEL_WIND_SPEED, text);
    weather_dial(DIAL_WIND_SPEED, speed, text, slider == 1);
    if (speed >= weather.WindSpeedAlarmHigh)
    {
        weather.wind_speed_alarm = 1;
    }
    weather_wind_speed_shown = speed;
    weather_wind_speed_valid = 1;
}

void weather_show_wind_direction(uint16_t raw, int slider)
{
    char text[32];
    wind_direction_raw = raw;
    double degrees = raw / 10.0;
    snprintf(text, sizeof text, "%3.0f %-2s", degrees, weather_compass_word(raw));
    panel_text(PANEL_WIND_DIRECTION, text);
    weather_dial(DIAL_WIND_DIRECTION, degrees, text, slider == 1);
    // A band of directions: with both limits at 0 it covers north itself.
    int d = raw / 10;
    if (d >= weather.WindDirectionAlarmLow && d <= weather.WindDirectionAlarmHigh)
    {
        weather.wind_direction_alarm = 1;
    }
}

void weather_show_thermometer(int16_t raw, int slider)
{
    char text[32];
    temperature_raw = raw;
    double t = weather_temperature(raw, weather.ThermometerUnits);
    snprintf(text, sizeof text, weather.ThermometerUnits == WX_UNITS_SECOND ? "%4.1f F" : "%4.1f C", t);
    panel_text(PANEL_THERMOMETER, text);
    weather_dial(DIAL_TEMPERATURE, t, text, slider == 2);
    // Outside the band, the reverse of the direction alarm.
    if (t <= weather.ThermometerAlarmLow || t >= weather.ThermometerAlarmHigh)
    {
        weather.thermometer_alarm = 1;
    }
}

void weather_show_altimeter(uint32_t raw, int slider)
{
    char text[32];
    altitude_raw = raw;
    double value = weather_altitude(raw, weather.AltimeterUnits);
    snprintf(text, sizeof text, weather.AltimeterUnits == WX_UNITS_SECOND ? "%4.0f ft" : "%4.0f m", value);
    weather_dial(DIAL_ALTIMETER, value / 1000, text, slider == 3);
}

void weather_show_barometer(uint32_t raw, int slider)
{
    char text[32];
    pressure_raw = raw;
    double p = weather_pressure(raw, altitude_raw, weather.Altimeter, weather.BarometerUnits, text, sizeof text);
    weather_dial(DIAL_BAROMETER, p, text, slider == 2 || slider == 3);
}

void weather_wind_speed_group(int slider)
{
    uint16_t raw;
    uint8_t status;
    if (sei_read_wind_speed(weather.WxStationAddr, &raw, &status) == 0)
    {
        weather_show_wind_speed(raw, slider);
        wind_stow_step(weather_wind_speed_shown, clock_utc());
    }
}

void weather_wind_direction_group(int slider)
{
    uint16_t raw;
    uint8_t status;
    if (sei_read_wind_direction(weather.WxStationAddr, &raw, &status) == 0)
    {
        weather_show_wind_direction(raw, slider);
    }
}

void weather_thermometer_group(int slider)
{
    int16_t raw;
    uint8_t status;
    if (sei_read_thermometer(weather.WxStationAddr, &raw, &status) == 0)
    {
        weather_show_thermometer(raw, slider);
    }
}

// Sent once per start and after each visit of the dialog, whatever the
// result: a station that missed it gets it at the next.
void weather_calibration_group(void)
{
    if (!weather.calibration_pending || weather.WxStationAddr == -1)
    {
        return;
    }
    uint8_t status;
    sei_write_barometer_calibration(weather.WxStationAddr, weather.Calibration, &status);
    weather.calibration_pending = 0;
}

void weather_altimeter_group(int slider)
{
    uint32_t raw;
    uint8_t status;
    if (sei_read_altimeter(weather.WxStationAddr, &raw, &status) == 0)
    {
        weather_show_altimeter(raw, slider);
    }
}

void weather_barometer_group(int slider)
{
    uint32_t raw;
    uint8_t status;
    if (sei_read_barometer(weather.WxStationAddr, &raw, &status) == 0)
    {
        weather_show_barometer(raw, slider);
    }
}

void weather_cycle_conditions(CycleConditions *c)
{
    // The cycle's order: wind speed, wind direction, thermometer, altimeter, barometer.
    int station = weather.WxStationAddr != -1;
    const bool on[5] = {weather.WindSpeed, weather.WindDirection, weather.Thermometer, weather.Altimeter,
                        weather.Barometer};
    const int32_t interval[5] = {weather.WindSpeedInterval, weather.WindDirectionInterval,
                                 weather.ThermometerInterval, weather.AltimeterInterval, weather.BarometerInterval};
    for (int i = 0; i < 5; i++)
    {
        c->weather_enabled[i] = station && on[i];
        c->weather_interval_ms[i] = interval[i];
    }
    c->calibration_pending = station && weather.calibration_pending;
}

void weather_dial_limits(void)
{
    panel_dial_limits(DIAL_WIND_SPEED, 0, weather.WindSpeedAlarmHigh);
    panel_dial_limits(DIAL_WIND_DIRECTION, weather.WindDirectionAlarmLow, weather.WindDirectionAlarmHigh);
    panel_dial_limits(DIAL_TEMPERATURE, weather.ThermometerAlarmLow, weather.ThermometerAlarmHigh);
}

void weather_dial_repaint_page(int slider)
{
    static const int pages[4][2] = {{-1, -1},
                                    {DIAL_WIND_SPEED, DIAL_WIND_DIRECTION},
                                    {DIAL_TEMPERATURE, DIAL_BAROMETER},
                                    {DIAL_ALTIMETER, DIAL_BAROMETER}};
    if (slider < 1 || slider > 3)
    {
        return;
    }
    panel_dial_repaint(pages[slider][0]);
    panel_dial_repaint(pages[slider][1]);
}
