#include "drive_recorder.h"

#include "core/clock.h"
#include "core/drive.h"
#include "core/settings.h"
#include "core/state.h"
#include "support/panel_record.h"

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
    // The documented defaults, read as a first run reads them: from no file.
    LoadSettings("drive-test-defaults.ini", &settings);
    settings.AZ_Addr = 1;
    settings.EL_Addr = 2;
    // A station with a home, so AUTO may start on the Moon.
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    az_read_status = el_read_status = 0;
}

std::string bus_calls_text(const std::vector<BusCall> &calls)
{
    std::string text;
    for (const BusCall &c : calls)
    {
        char call[48];
        snprintf(call, sizeof call, "%s(%d,%d,%d)", c.kind == 'R' ? "relay" : "pwm", c.address, c.port, c.value);
        text += (text.empty() ? "" : " ") + std::string(call);
    }
    return text;
}
