#include "core/sensor_groups.h"

#include "bus/remote_display.h"
#include "bus/weather.h"
#include "core/cycle.h"

static int tick_slider;

static void run_wind_speed(void *, int)
{
    weather_wind_speed_group(tick_slider);
}

static void run_wind_direction(void *, int)
{
    weather_wind_direction_group(tick_slider);
}

static void run_thermometer(void *, int)
{
    weather_thermometer_group(tick_slider);
}

static void run_calibration(void *, int)
{
    weather_calibration_group();
}

static void run_altimeter(void *, int)
{
    weather_altimeter_group(tick_slider);
}

static void run_barometer(void *, int)
{
    weather_barometer_group(tick_slider);
}

static void run_remote_switch(void *, int)
{
    remote_switch_group();
}

static void run_remote_display(void *, int)
{
    remote_display_update();
}

void sensor_groups_wire(CycleActions *actions, int slider)
{
    tick_slider = slider;
    actions->run[CYCLE_WIND_SPEED] = run_wind_speed;
    actions->run[CYCLE_WIND_DIRECTION] = run_wind_direction;
    actions->run[CYCLE_THERMOMETER] = run_thermometer;
    actions->run[CYCLE_BARO_CALIBRATION] = run_calibration;
    actions->run[CYCLE_ALTIMETER] = run_altimeter;
    actions->run[CYCLE_BAROMETER] = run_barometer;
    actions->run[CYCLE_REMOTE_SWITCH] = run_remote_switch;
    actions->run[CYCLE_REMOTE_DISPLAY] = run_remote_display;
}
