// Six alerts, each watching one condition of the tracked source or of the
// weather station. When its condition comes true an alert shows its message
// and takes its action: nothing more, park, track, or set an output line.
// Alarm, Park and Track alerts fire once and wait to be re-armed; an output
// line alert is evaluated afresh at every pass.
#pragma once

#include <cstdint>

enum
{
    ALERT_COUNT = 6,
    ALERT_NAME_SIZE = 32
};

enum AlertTrigger
{
    TRIGGER_ABOVE_HORIZON,
    TRIGGER_BELOW_HORIZON,
    TRIGGER_ABOVE_THRESHOLD,
    TRIGGER_BELOW_THRESHOLD,
    TRIGGER_WIND_SPEED,
    TRIGGER_WIND_DIRECTION,
    TRIGGER_THERMOMETER,
    TRIGGER_COUNT
};

enum AlertAction
{
    ACTION_ALARM,
    ACTION_PARK,
    ACTION_TRACK,
    ACTION_ALRT_0,
    ACTION_ALRT_1,
    ACTION_ADDR_0,
    ACTION_ADDR_1,
    ACTION_COUNT
};

// The two output lines the alerts may set.
enum AlertLine
{
    LINE_ALRT,
    LINE_ADDR
};

struct AlertEntry
{
    uint8_t Active;
    uint8_t Triggered; // fired, waiting to be re-armed; never saved
    char Name[ALERT_NAME_SIZE];
    int32_t Action;
    int32_t Trigger;
    double Threshold; // degrees of elevation, for the threshold triggers
};

extern AlertEntry alerts[ALERT_COUNT];
// The output lines are ports 1 (ALRT) and 2 (ADDR) of a relay board at this
// bus address; -1, the default, is a station without them.
extern int32_t alert_output_address;

// The texts of the dialog and the words of the message; "" out of range.
const char *alert_trigger_text(int trigger);
const char *alert_trigger_word(int trigger);
const char *alert_action_text(int action);
const char *alert_action_word(int action);

// The start values: names "Alert-1" to "Alert-6", all off and armed.
void alerts_reset(void);
// The ALERTS section. Load clears Active of every Park or Track alert, which
// the operator must switch on by hand after each start, and arms all six.
int alerts_load(const char *ini_name, AlertEntry *table);
int alerts_save(const char *ini_name, const AlertEntry *table);

// One pass over the table, in the display group.
void alerts_evaluate(AlertEntry *table);
// Set an output line; a station without output lines does nothing.
void alert_output_line(int line, int level);
