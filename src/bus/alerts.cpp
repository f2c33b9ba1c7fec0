#include "bus/alerts.h"

#include "bus/sei_commands.h"
#include "core/drive.h"
#include "core/ini_file.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"

#include <cstdio>

AlertEntry alerts[ALERT_COUNT];
int32_t alert_output_address = -1;

static const char *const section = "ALERTS";

static const char *const trigger_texts[TRIGGER_COUNT] = {
    "Source Above Horizon",   "Source Below Horizon", "Source Above Threshold", "Source Below Threshold",
    "Wind Speed Alarm",       "Wind Direction Alarm", "Thermometer Alarm"};
// The underscore of the second word is the message's own, kept so a log
// watcher that matches it still does.
static const char *const trigger_words[TRIGGER_COUNT] = {
    "SOURCE ABOVE HORIZON", "SOURCE_BELOW HORIZON", "SOURCE ABOVE THRESHOLD", "SOURCE BELOW THRESHOLD",
    "WIND SPEED ALARM",     "WIND DIRECTION ALARM", "THERMOMETER ALARM"};
static const char *const action_texts[ACTION_COUNT] = {"Alarm", "Park", "Track", "ALRT-0", "ALRT-1", "ADDR-0",
                                                       "ADDR-1"};
static const char *const action_words[ACTION_COUNT] = {"ALARM", "PARK", "TRACK", "ALRT-0", "ALRT-1", "ADDR-0",
                                                       "ADDR-1"};

const char *alert_trigger_text(int trigger)
{
    return trigger >= 0 && trigger < TRIGGER_COUNT ? trigger_texts[trigger] : "";
}

const char *alert_trigger_word(int trigger)
{
    return trigger >= 0 && trigger < TRIGGER_COUNT ? trigger_words[trigger] : "";
}

const char *alert_action_text(int action)
{
    return action >= 0 && action < ACTION_COUNT ? action_texts[action] : "";
}

const char *alert_action_word(int action)
{
    return action >= 0 && action < ACTION_COUNT ? action_words[action] : "";
}

static void alert_default_name(int i, char *name, int size)
{
    snprintf(name, (size_t)size, "Alert-%d", i + 1);
}

void alerts_reset(void)
{
    for (int i = 0; i < ALERT_COUNT; i++)
    {
        alerts[i] = AlertEntry();
        alert_default_name(i, alerts[i].Name, sizeof alerts[i].Name);
    }
    alert_output_address = -1;
}

int alerts_load(const char *ini_name, AlertEntry *table)
{
    char path[1024], key[32], fallback[16];
    IniFile ini;
    settings_path(ini_name, path, sizeof path);
    ini_read(path, &ini);
    for (int i = 0; i < ALERT_COUNT; i++)
    {
        AlertEntry *a = &table[i];
        snprintf(key, sizeof key, "Alert%dActive", i + 1);
        a->Active = (uint8_t)ini_bool(&ini, section, key, "false");
        snprintf(key, sizeof key, "Alert%dName", i + 1);
        alert_default_name(i, fallback, sizeof fallback);
        ini_text(&ini, section, key, fallback, a->Name, sizeof a->Name);
        snprintf(key, sizeof key, "Alert%dAction", i + 1);
        a->Action = ini_int(&ini, section, key, "0");
        snprintf(key, sizeof key, "Alert%dTrigger", i + 1);
        a->Trigger = ini_int(&ini, section, key, "0");
        snprintf(key, sizeof key, "Alert%dThreshold", i + 1);
        a->Threshold = ini_double(&ini, section, key, "0");
        // An alert that moves the antenna is never armed by a start alone.
        if (a->Action == ACTION_PARK || a->Action == ACTION_TRACK)
        {
            a->Active = 0;
        }
        a->Triggered = 0;
    }
    alert_output_address = ini_int(&ini, section, "OutputAddr", "-1");
    return 0;
}

int alerts_save(const char *ini_name, const AlertEntry *table)
{
    char path[1024], key[32];
    IniFile ini;
    settings_path(ini_name, path, sizeof path);
    ini_read(path, &ini);
    for (int i = 0; i < ALERT_COUNT; i++)
    {
        const AlertEntry *a = &table[i];
        snprintf(key, sizeof key, "Alert%dActive", i + 1);
        ini_set_bool(&ini, section, key, a->Active);
        snprintf(key, sizeof key, "Alert%dName", i + 1);
        ini_set(&ini, section, key, a->Name);
        snprintf(key, sizeof key, "Alert%dAction", i + 1);
        ini_set_int(&ini, section, key, a->Action);
        snprintf(key, sizeof key, "Alert%dTrigger", i + 1);
        ini_set_int(&ini, section, key, a->Trigger);
        snprintf(key, sizeof key, "Alert%dThreshold", i + 1);
        ini_set_double(&ini, section, key, a->Threshold);
    }
    ini_set_int(&ini, section, "OutputAddr", alert_output_address);
    ini_write(path, &ini);
    return 0;
}

// A latch fires the first armed alert that asks for it and is taken by it,
// so a second alert on the same latch waits for the next setting.
static int alert_take_latch(uint8_t *latch)
{
    if (!*latch)
    {
        return 0;
    }
    *latch = 0;
    return 1;
}

static int alert_fires(const AlertEntry *a)
{
    const SourceRecord *row = source_row(settings.TrackingSource);
    switch (a->Trigger)
    {
    case TRIGGER_ABOVE_HORIZON:
        return row->above_horizon != 0;
    case TRIGGER_BELOW_HORIZON:
        return row->above_horizon == 0;
    case TRIGGER_ABOVE_THRESHOLD: // an equal elevation fires neither
        return row->el > a->Threshold;
    case TRIGGER_BELOW_THRESHOLD:
        return a->Threshold > row->el;
    case TRIGGER_WIND_SPEED:
        return alert_take_latch(&weather.wind_speed_alarm);
    case TRIGGER_WIND_DIRECTION:
        return alert_take_latch(&weather.wind_direction_alarm);
    case TRIGGER_THERMOMETER:
        return alert_take_latch(&weather.thermometer_alarm);
    default:
        return 0;
    }
}

// The output board must not be one of the motor boards: its ports 1 and 2
// are the elevation relays there.
void alert_output_line(int line, int level)
{
    int a = alert_output_address;
    if (a < 0 || a == settings.AZ_Addr || a == settings.EL_Addr)
    {
        return;
    }
    uint8_t status;
    sei_relay_control(a, (uint8_t)(line == LINE_ALRT ? 1 : 2), (uint8_t)(level ? 1 : 0), &status);
}

static void alert_act(AlertEntry *a)
{
    switch (a->Action)
    {
    case ACTION_PARK:
        park_control(1);
        break;
    case ACTION_TRACK:
        // The panel's AUTO: PARK ends and the drive goes to the source. An
        // AUTO that already runs is left running, not toggled off.
        if (!auto_tracking)
        {
            drive_auto_pressed();
        }
        break;
    case ACTION_ALRT_0:
    case ACTION_ALRT_1:
    case ACTION_ADDR_0:
    case ACTION_ADDR_1:
        alert_output_line(a->Action <= ACTION_ALRT_1 ? LINE_ALRT : LINE_ADDR, (a->Action - ACTION_ALRT_0) % 2);
        a->Triggered = 0;
        break;
    default:
        break;
    }
}

void alerts_evaluate(AlertEntry *table)
{
    char text[160];
    for (int i = 0; i < ALERT_COUNT; i++)
    {
        AlertEntry *a = &table[i];
        if (!a->Active || a->Triggered || !alert_fires(a))
        {
            continue;
        }
        a->Triggered = 1;
        snprintf(text, sizeof text, "%s (Trigger: %s, Action: %s)", a->Name, alert_trigger_word(a->Trigger),
                 alert_action_word(a->Action));
        panel_status(text, 5000);
        alert_act(a);
    }
}
