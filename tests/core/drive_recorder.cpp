#include "drive_recorder.h"

#include "core/clock.h"
#include "core/drive.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <cstdio>

DriveRecord drive_record;

static int record_relay(int address, uint8_t port, uint8_t state, uint8_t *status)
{
    drive_record.calls.push_back({'R', address, port, state});
    *status = 0;
    return 0;
}

static int record_pwm(int address, uint8_t port, uint8_t duty, uint8_t *status)
{
    drive_record.calls.push_back({'P', address, port, duty});
    *status = 0;
    return 0;
}

static void record_sleep(int ms)
{
    drive_record.sleeps.push_back(ms);
    drive_record.slept_ms += ms;
    drive_record.stop_style_at_sleep.push_back(panel_last_style[PANEL_STOP]);
}

void drive_record_clear(void)
{
    drive_record = DriveRecord();
}

void drive_record_start(void)
{
    static const DriveBus recorder = {record_relay, record_pwm};
    drive_record_clear();
    drive_set_bus(&recorder);
    clock_set_sleep_hook(record_sleep);
}

void drive_test_settings(void)
{
    SystemSettings &s = settings;
    s.AZ_Addr = 1;
    s.EL_Addr = 2;
    s.Park_Azimuth = 180;
    s.Park_Elevation = 90;
    s.Azimuth_Start = s.Elevation_Start = 1.0;
    s.Azimuth_Stop = s.Elevation_Stop = 0.2;
    s.AzimuthLimitMin = 0;
    s.AzimuthLimitMax = 360;
    s.ElevationLimitMin = 0;
    s.ElevationLimitMax = 90;
    s.AzimuthPwmActive = s.ElevationPwmActive = 1;
    s.AzimuthSlowDutyCycle = s.ElevationSlowDutyCycle = 25;
    s.AzimuthFastDutyCycle = s.ElevationFastDutyCycle = 100;
    s.AzimuthManualDutyCycle = s.ElevationManualDutyCycle = 50;
    s.AzimuthGuardTime = s.ElevationGuardTime = 2.0;
    s.AzimuthSlowDegrees = s.ElevationSlowDegrees = 10;
    s.AzimuthJogEnable = s.ElevationJogEnable = 0;
    s.AzimuthJogTime = s.ElevationJogTime = 1;
    s.az_brake_delay = s.el_brake_delay = 1000;
    az_read_status = el_read_status = 0;
}

std::string bus_call_text(const BusCall &c)
{
    char text[48];
    snprintf(text, sizeof text, "%s(%d,%d,%d)", c.kind == 'R' ? "relay" : "pwm", c.address, c.port, c.value);
    return text;
}

std::string bus_calls_text(const std::vector<BusCall> &calls)
{
    std::string text;
    for (const BusCall &c : calls)
    {
        text += (text.empty() ? "" : " ") + bus_call_text(c);
    }
    return text;
}
