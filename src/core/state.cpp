#include "core/state.h"

#include "bus/alerts.h"
#include "bus/remote_display.h"
#include "bus/weather.h"
#include "bus/wind_stow.h"
#include "core/watchdog.h"

#include <cstdio>
#include <cstring>

SystemSettings settings;

const char *const window_title = "Morvane EME Tracking System v2.35";
char ini_file_name[32] = "Morvane.ini";
const char *const version_text = "Morvane v2.35";

uint8_t auto_tracking;
uint8_t park_active;
uint8_t az_manual, el_manual;
int32_t az_drive_on, el_drive_on;
int32_t drive_relay_on[5];
int32_t drive_relay_closings[5];
int32_t drive_relay_switchings[5];
int32_t az_direction = DIR_STOPPED, el_direction = DIR_STOPPED;
int32_t az_speed_mode = SPEED_SLOW, el_speed_mode = SPEED_SLOW;
int32_t az_jog_shade = 1, el_jog_shade = 1;
double az_error, el_error;
double az_start_error, el_start_error;
int32_t az_guard_ms, el_guard_ms;
int32_t az_duty, el_duty;
int32_t az_pwm_active, el_pwm_active;
int32_t az_pwm_port_state = 1, el_pwm_port_state = 1;

SourceRecord source_table[SOURCE_COUNT];
SourceRecord dx_source_record;

double az_position, el_position;
double source_az, source_el;
int32_t az_read_status = -1, el_read_status = -1;
uint8_t source_changed = 1, az_changed = 1, el_changed = 1;

uint8_t refresh_now = 1;
int32_t last_tracking_source = -1;
int32_t display_ms, position_ms, adc_ms, remote_switch_ms, easycomm_ms, frequency_ms;
int32_t wind_speed_ms, wind_direction_ms, thermometer_ms, altimeter_ms, barometer_ms;
int32_t remote_display_ms;
int32_t az_switch_state = 1, el_switch_state = 1;

int32_t doppler_mode;
int32_t vfo_doppler_mode;
double tx_frequency_hz, rx_frequency_hz;
int32_t home_station_valid;
int32_t home_doppler_on;
int32_t dx_station_valid;
int32_t dx_doppler_on;
char dx_call[12];
char dx_grid[9];
double dx_latitude, dx_longitude;

int32_t map_time_offset;
DateTimeFields map_date_time;
uint8_t map_first_tick = 1;

uint8_t gpredict_running;
uint8_t pstrotator_running;
int32_t remote_socket[2] = {-1, -1};
int32_t remote_client[2] = {-1, -1};

int32_t trace_debug;
int32_t SeiDebug, SeiDebugVerbose;

uint16_t adc_samples[4][5];

static WeatherSettings weather_start(void)
{
    WeatherSettings w;
    weather_defaults(&w);
    return w;
}
WeatherSettings weather = weather_start();
uint16_t wind_speed_raw, wind_direction_raw;
int16_t temperature_raw;
uint32_t pressure_raw, altitude_raw;

SourceRecord *source_row(int source)
{
    static SourceRecord scratch;
    if (source >= 0 && source < SOURCE_COUNT)
    {
        return &source_table[source];
    }
    memset(&scratch, 0, sizeof scratch);
    return &scratch;
}

void state_reset(void)
{
    memset(&settings, 0, sizeof settings);
    snprintf(ini_file_name, sizeof ini_file_name, "%s", "Morvane.ini");

    auto_tracking = park_active = 0;
    az_manual = el_manual = 0;
    az_drive_on = el_drive_on = 0;
    memset(drive_relay_on, 0, sizeof drive_relay_on);
    memset(drive_relay_closings, 0, sizeof drive_relay_closings);
    memset(drive_relay_switchings, 0, sizeof drive_relay_switchings);
    watch_reset(&az_watch);
    watch_reset(&el_watch);
    az_direction = el_direction = DIR_STOPPED;
    az_speed_mode = el_speed_mode = SPEED_SLOW;
    az_jog_shade = el_jog_shade = 1;
    az_error = el_error = 0;
    az_start_error = el_start_error = 0;
    az_guard_ms = el_guard_ms = 0;
    az_duty = el_duty = 0;
    az_pwm_active = el_pwm_active = 0;
    az_pwm_port_state = el_pwm_port_state = 1;

    memset(source_table, 0, sizeof source_table);
    memset(&dx_source_record, 0, sizeof dx_source_record);

    az_position = el_position = 0;
    source_az = source_el = 0;
    az_read_status = el_read_status = -1;
    source_changed = az_changed = el_changed = 1;

    refresh_now = 1;
    last_tracking_source = -1;
    display_ms = position_ms = adc_ms = remote_switch_ms = easycomm_ms = frequency_ms = 0;
    wind_speed_ms = wind_direction_ms = thermometer_ms = altimeter_ms = barometer_ms = 0;
    remote_display_ms = 0;
    az_switch_state = el_switch_state = 1;

    doppler_mode = vfo_doppler_mode = 0;
    tx_frequency_hz = rx_frequency_hz = 0;
    home_station_valid = home_doppler_on = 0;
    dx_station_valid = dx_doppler_on = 0;
    dx_call[0] = 0;
    dx_grid[0] = 0;
    dx_latitude = dx_longitude = 0;

    map_time_offset = 0;
    memset(&map_date_time, 0, sizeof map_date_time);
    map_first_tick = 1;

    gpredict_running = pstrotator_running = 0;
    remote_socket[0] = remote_socket[1] = -1;
    remote_client[0] = remote_client[1] = -1;

    trace_debug = 0;
    SeiDebug = SeiDebugVerbose = 0;
    memset(adc_samples, 0, sizeof adc_samples);
    weather_defaults(&weather);
    wind_speed_raw = wind_direction_raw = 0;
    temperature_raw = 0;
    pressure_raw = altitude_raw = 0;
    alerts_reset();
    remote_display_reset();
    wind_stow_reset();
}

const char *TimeText(const struct tm *fields)
{
    static const char weekdays[7][4] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char months[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    static char text[64];
    // A broken-down time from elsewhere may carry any numbers; an index out of
    // the tables must not read past them.
    int wday = fields->tm_wday >= 0 && fields->tm_wday < 7 ? fields->tm_wday : 0;
    int mon = fields->tm_mon >= 0 && fields->tm_mon < 12 ? fields->tm_mon : 0;
    snprintf(text, sizeof text, "%.3s %.3s%3d %.2d:%.2d:%.2d %d", weekdays[wday], months[mon], fields->tm_mday,
             fields->tm_hour, fields->tm_min, fields->tm_sec, fields->tm_year + 1900);
    return text;
}

void text_copy(char *field, int size, const char *text)
{
    if (size < 1)
    {
        return;
    }
    snprintf(field, (size_t)size, "%s", text ? text : "");
}
