// The station's shared state: plain global records that every layer reads and
// writes directly, all on the GUI thread. state_reset() puts every record back
// to its start value, which the program's start and every test rely on.
#pragma once

#include "core/serial_port.h"

#include <cstdint>
#include <ctime>

enum DriveDirection
{
    DIR_STOPPED = 1,
    DIR_LEFT = 2, // or up
    DIR_RIGHT = 3 // or down
};
enum
{
    DIR_UP = DIR_LEFT,
    DIR_DOWN = DIR_RIGHT
};

enum SpeedMode
{
    SPEED_SLOW = 1,
    SPEED_FAST = 2,
    SPEED_MANUAL = 3,
    SPEED_JOG = 4
};

enum
{
    SOURCE_MOON = 0,
    SOURCE_SUN = 1,
    SOURCE_USER_AZEL = 2,
    SOURCE_USER_RADEC = 3,
    SOURCE_EASYCOMM = 24,
    SOURCE_GPREDICT = 25,
    SOURCE_PSTROTATOR = 26,
    SOURCE_COUNT = 27
};

// The memory image of the main INI file. Fields carry the names of their keys;
// where several sections share a key name (Active, Debug, Port) the section is
// put in front, and the numbered key groups (AZ_n, EL_n, ADC_n_*) are arrays.
struct SystemSettings
{
    int32_t TrackingSource;
    char Callsign[12];
    char Grid[9];
    char Location[64];
    double Latitude;
    double Longitude;
    double Frequency;
    double User_Azimuth;
    double User_Elevation;
    double User_RA;
    double User_Declination;
    int32_t PreciseMoon;  // the Moon from the full lunar theory
    double StationHeight; // metres above the ellipsoid, for the precise Moon
    int32_t Refraction;   // apparent elevations
    int32_t Precession;   // J2000 positions precessed to the date
    double Park_Azimuth;
    double Park_Elevation;
    double Service_Azimuth;
    double Service_Elevation;
    double Azimuth_Offset;
    double Elevation_Offset;
    double Azimuth_Start;
    double Azimuth_Stop;
    double Elevation_Start;
    double Elevation_Stop;
    double AzimuthLimitMin;
    double AzimuthLimitMax;
    double ElevationLimitMin;
    double ElevationLimitMax;
    int32_t AzimuthPwmActive;
    int32_t AzimuthPwmType;
    double AzimuthSlowDutyCycle;
    double AzimuthFastDutyCycle;
    double AzimuthManualDutyCycle;
    double AzimuthGuardTime;
    double AzimuthSlowDegrees;
    uint8_t AzimuthJogEnable;
    int32_t AzimuthJogTime;
    int32_t ElevationPwmActive;
    int32_t ElevationPwmType;
    double ElevationSlowDutyCycle;
    double ElevationFastDutyCycle;
    double ElevationManualDutyCycle;
    double ElevationGuardTime;
    double ElevationSlowDegrees;
    uint8_t ElevationJogEnable;
    int32_t ElevationJogTime;
    int32_t AZ_Addr;
    int32_t EL_Addr;
    uint8_t StallWatchdogEnable; // stop a motor whose axis does not follow it
    double StallWatchdogTime;    // seconds without progress before it does
    int32_t QuietMotion;         // AUTO starts motors only in the window before the minute
    int32_t QuietWindowStart;    // the window's first second of the minute

    double AZ[36]; // keys AZ_0 .. AZ_35, one per 10 degrees
    double EL[10]; // keys EL_0 .. EL_9
    char PortName[SERIAL_PORT_NAME_SIZE]; // the radio's port, by its full path
    int32_t Port;
    int32_t BaudRate;    // index 0..7
    int32_t DataBits;    // index: 0 is 7 bits, 1 is 8
    int32_t StopBits;    // index: 0 is 1, 1 is 1.5, 2 is 2
    int32_t Parity;      // index: None, Odd, Even, Mark, Space
    int32_t FlowControl; // index: None, Hardware, Software, Custom
    int32_t OmniRigActive;
    int32_t OmniRigDebug;
    char OmniRigFilename[32];
    int32_t GpredictActive; // GPREDICT Active
    int32_t GpredictDebug;  // GPREDICT Debug
    int32_t GpredictPort;   // GPREDICT Port
    int32_t PstActive;      // PSTROTATOR Active
    int32_t PstDebug;       // PSTROTATOR Debug
    char CmdPort[10];
    char RspPort[10];
    char Protocol[12];
    // GPREDICT HamlibCompatible: rotctl speaks to every Hamlib client
    int32_t HamlibCompatible;
    int32_t ReportActive; // REPORT Active
    char Collector[64];   // REPORT Collector, "host:port" of the PSK Reporter collector
    int32_t ads1115_present;
    int32_t AdcDebug;
    int32_t ADC_Active[4]; // keys ADC_n_Active, n = 0..3
    double ADC_Minimum[4];
    double ADC_Maximum[4];
    double ADC_Range[4];
    int32_t az_brake_enabled;
    int32_t el_brake_enabled;
    int32_t az_brake_delay;
    int32_t el_brake_delay;
    int32_t DisplayEnabled;
    int32_t DisplayType;
    int32_t DisplayRows;
    int32_t DisplayColumns;
    int32_t RemoteSwitches;
    int32_t RemoteAdcs;
};

// All figures of one source at one instant, as seen from one station.
struct SourceRecord
{
    uint32_t computed;
    uint32_t above_horizon;
    uint8_t az_tracking_enable;
    uint8_t el_tracking_enable;
    double az;
    double el;
    double doppler_hz;
    double sky_temp;
    double spatial_offset;
    double degradation;
    double path_loss;
    double hour_angle;
    double ra;
    double dec;
    double distance;
    double phase;
    double sub_lat;
    double sub_lng;
    double rise; // rise, set, transit are laid out as libnova's ln_rst_time
    double set;
    double transit;
    int32_t rst_status;
};

struct DateTimeFields
{
    int32_t Month;
    int32_t Day;
    int32_t Year;
    int32_t Hours;
    int32_t Minutes;
    int32_t Seconds;
};

extern SystemSettings settings;

extern const char *const window_title;
extern char ini_file_name[32];
extern const char *const version_text;

// Drive and tracking.
extern uint8_t auto_tracking;
extern uint8_t park_active;
extern uint8_t az_manual, el_manual;
extern int32_t az_drive_on, el_drive_on;
// Each motor relay as last commanded, by port (1 up, 2 down, 3 left, 4
// right); an axis's drive-on flag is 1 while either of its two is on.
extern int32_t drive_relay_on[5];
// What each motor relay went through since the start, by port: its closings,
// and its closings and openings together. The pass log counts from them.
extern int32_t drive_relay_closings[5];
extern int32_t drive_relay_switchings[5];
extern int32_t az_direction, el_direction;
extern int32_t az_speed_mode, el_speed_mode;
extern int32_t az_jog_shade, el_jog_shade;
extern double az_error, el_error;
extern double az_start_error, el_start_error;
extern int32_t az_guard_ms, el_guard_ms;
extern int32_t az_duty, el_duty;
extern int32_t az_pwm_active, el_pwm_active;
extern int32_t az_pwm_port_state, el_pwm_port_state;

// Sources.
extern SourceRecord source_table[SOURCE_COUNT];
extern SourceRecord dx_source_record;

// Positions.
extern double az_position, el_position;
extern double source_az, source_el;
extern int32_t az_read_status, el_read_status;
extern uint8_t source_changed, az_changed, el_changed;

// The main cycle.
extern uint8_t refresh_now;
extern int32_t last_tracking_source;
extern int32_t display_ms, position_ms, adc_ms, remote_switch_ms, easycomm_ms, frequency_ms;
extern int32_t wind_speed_ms, wind_direction_ms, thermometer_ms, altimeter_ms, barometer_ms;
extern int32_t remote_display_ms;
extern int32_t az_switch_state, el_switch_state;

// Doppler and stations.
extern int32_t doppler_mode;     // 0 off, 1 home, 2 DX, 3 mutual
extern int32_t vfo_doppler_mode; // 0 none, 1 TX from RX, 2 RX from TX
extern double tx_frequency_hz, rx_frequency_hz;
extern int32_t home_station_valid;
extern int32_t home_doppler_on;
extern int32_t dx_station_valid;
extern int32_t dx_doppler_on;
extern char dx_call[12];
extern char dx_grid[9];
extern double dx_latitude, dx_longitude;

// Time of the sky map and the time dialog.
extern int32_t map_time_offset;
extern DateTimeFields map_date_time;
// 1 until the first timer tick of the first sky map window of the run.
extern uint8_t map_first_tick;

// Remote links.
extern uint8_t gpredict_running;
extern uint8_t pstrotator_running;
extern int32_t remote_socket[2];
extern int32_t remote_client[2];

// Debug switches. SeiDebug and SeiDebugVerbose are the bus log's flags; the
// DEBUG section sets them first and the SEI section later overrides them.
extern int32_t trace_debug;
extern int32_t SeiDebug, SeiDebugVerbose;

// Analogue samples of the four ADC channels, cleared at start.
extern uint16_t adc_samples[4][5];

// The weather station at one bus address (-1 turns all polling off): which
// sensors are polled and how often, the units shown, the alarm limits and the
// latches the alerts take. Units are indices: 0 km/h, Deg C, mb, meters; 1 mph,
// Deg F, inHg, feet. The wind stow keys are this station's own.
struct WeatherSettings
{
    int32_t WxStationAddr;
    bool WindSpeed;
    bool WindDirection;
    bool Thermometer;
    bool Barometer;
    bool Altimeter;
    int32_t WindSpeedUnits;
    int32_t ThermometerUnits;
    int32_t BarometerUnits;
    int32_t AltimeterUnits;
    int32_t WindSpeedInterval; // ms
    int32_t WindDirectionInterval;
    int32_t ThermometerInterval;
    int32_t BarometerInterval;
    int32_t AltimeterInterval;
    uint8_t calibration_pending; // the calibration word is still to be sent
    uint16_t Calibration;        // passed to the barometer unchanged
    uint8_t wind_speed_alarm;    // latches, set by the readings, taken by the alerts
    double WindSpeedAlarmHigh;   // in the units shown
    uint8_t wind_direction_alarm;
    double WindDirectionAlarmLow; // degrees
    double WindDirectionAlarmHigh;
    uint8_t thermometer_alarm;
    double ThermometerAlarmLow; // in the units shown
    double ThermometerAlarmHigh;
    int32_t WindStow;              // 1: park at the wind alarm level and come back when it calms
    double WindStowResume;         // the calm level, in the units shown
    int32_t WindStowResumeMinutes; // how long it must stay calm
};
extern WeatherSettings weather;
extern uint16_t wind_speed_raw;     // 0.1 km/h
extern uint16_t wind_direction_raw; // 0.1 degree
extern int16_t temperature_raw;     // 0.1 degree C
extern uint32_t pressure_raw;       // 0.001 mb at the station; 0 until the barometer answers
extern uint32_t altitude_raw;       // 0.1 m; 0 until the altimeter answers

// The row of a source. A TrackingSource from a hand-edited file may name no
// row: it gets a scratch row of zeros, cleared at each call, which is below
// the horizon and enables nothing, so nothing tracks it and the panel shows
// its zeros.
SourceRecord *source_row(int source);

// Put every record above back to its start value.
void state_reset(void);

// The 24-character UTC time text, asctime's form without its newline, in a
// static buffer that the next call overwrites. Names come from our own tables,
// so the locale never changes it.
const char *TimeText(const struct tm *fields);

// Bounded copy of a text into a fixed field: always terminated, cut to fit.
void text_copy(char *field, int size, const char *text);
