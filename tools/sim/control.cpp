#include "sim/control.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Appending to a bounded buffer; the text is cut, never overrun.
static void sim_append(char *out, int size, int *used, const char *format, ...) __attribute__((format(printf, 4, 5)));
static void sim_append(char *out, int size, int *used, const char *format, ...)
{
    if (*used >= size - 1)
    {
        return;
    }
    va_list args;
    va_start(args, format);
    int n = vsnprintf(out + *used, (size_t)(size - *used), format, args);
    va_end(args);
    *used = n < 0 ? *used : (*used + n < size ? *used + n : size - 1);
}

// The list of a board's four ports, as one JSON array.
static void sim_ports_json(char *reply, int size, int *used, const char *name, const long long values[SIM_PORTS])
{
    sim_append(reply, size, used, ",\"%s\":[%lld,%lld,%lld,%lld]", name, values[1], values[2], values[3], values[4]);
}

static void sim_outputs_json(const SimStation *s, char *reply, int size, int *used)
{
    int first = 1;
    sim_append(reply, size, used, ",\"outputs\":[");
    for (int a = 0; a < SIM_ADDRESSES; a++)
    {
        const SimOutputs *o = &s->outputs[a];
        if (!o->present)
        {
            continue;
        }
        long long relay[SIM_PORTS], duty[SIM_PORTS], on_ms[SIM_PORTS], switches[SIM_PORTS];
        for (int p = 0; p < SIM_PORTS; p++)
        {
            relay[p] = o->relay[p];
            duty[p] = o->duty[p];
            on_ms[p] = o->relay_on_ms[p];
            switches[p] = o->relay_switches[p];
        }
        sim_append(reply, size, used, "%s{\"addr\":%d", first ? "" : ",", a);
        sim_ports_json(reply, size, used, "relay", relay);
        sim_ports_json(reply, size, used, "pwm", duty);
        sim_ports_json(reply, size, used, "on_ms", on_ms);
        sim_ports_json(reply, size, used, "switches", switches);
        sim_append(reply, size, used, "}");
        first = 0;
    }
    sim_append(reply, size, used, "],\"asleep\":[");
    first = 1;
    for (int a = 0; a < SIM_ADDRESSES; a++)
    {
        if (s->encoders[a].asleep)
        {
            sim_append(reply, size, used, "%s%d", first ? "" : ",", a);
            first = 0;
        }
    }
    sim_append(reply, size, used, "]");
}

void sim_state_json(const SimStation *s, char *reply, int size)
{
    const SimMount *m = &s->mount;
    int used = 0;
    sim_append(reply, size, &used,
               "{\"az\":%.3f,\"el\":%.3f,\"az_rate\":%.3f,\"el_rate\":%.3f,\"az_stop_hits\":%d,"
               "\"el_stop_hits\":%d,\"stalled\":{\"az\":%d,\"el\":%d},\"line\":\"%s\",\"sleeps\":%d",
               m->az, m->el, m->az_rate, m->el_rate, m->az_stop_hits, m->el_stop_hits, s->stalled[SIM_AXIS_AZ],
               s->stalled[SIM_AXIS_EL], s->line_dropped ? "dropped" : "up", s->sleep_frames);
    sim_outputs_json(s, reply, size, &used);
    sim_append(reply, size, &used, ",\"switches\":{\"left\":%d,\"right\":%d,\"up\":%d,\"down\":%d}",
               s->switch_pressed[0], s->switch_pressed[1], s->switch_pressed[2], s->switch_pressed[3]);
    sim_append(reply, size, &used, ",\"adc\":[%.3f,%.3f,%.3f,%.3f]", s->adc_volts[0], s->adc_volts[1], s->adc_volts[2],
               s->adc_volts[3]);
    const SimWeather *w = &s->weather;
    sim_append(reply, size, &used,
               ",\"weather\":{\"address\":%d,\"speed\":%.1f,\"direction\":%.1f,\"temperature\":%.1f,"
               "\"pressure\":%.2f,\"altitude\":%.1f,\"calibration\":%u}}",
               w->address, w->wind_speed_kmh, w->wind_direction_deg, w->temperature_c, w->pressure_mb, w->altitude_m,
               w->calibration);
}

static void sim_display_json(const SimStation *s, char *reply, int size)
{
    int used = 0;
    sim_append(reply, size, &used, "[");
    for (int row = 0; row < SIM_DISPLAY_ROWS; row++)
    {
        sim_append(reply, size, &used, "%s\"", row ? "," : "");
        for (int col = 0; col < SIM_DISPLAY_COLUMNS; col++)
        {
            char c = s->display[row][col];
            sim_append(reply, size, &used, c == '"' || c == '\\' ? "\\%c" : "%c", c >= 32 && c < 127 ? c : '?');
        }
        sim_append(reply, size, &used, "\"");
    }
    sim_append(reply, size, &used, "]");
}

static void sim_frames_json(const SimStation *s, char *reply, int size)
{
    int used = 0;
    int count = s->frame_count < SIM_FRAME_LOG ? s->frame_count : SIM_FRAME_LOG;
    sim_append(reply, size, &used, "[");
    for (int i = 0; i < count; i++)
    {
        const SimFrameEntry *e = &s->frames[(s->frame_count - count + i) % SIM_FRAME_LOG];
        sim_append(reply, size, &used, "%s{\"ms\":%lld,\"frame\":\"%s\"}", i ? "," : "", (long long)e->ms, e->text);
    }
    sim_append(reply, size, &used, "]");
}

static const char *const sim_help_text =
    "state | frames | display | help | quit | set az|el DEG | set az_speed|el_speed DPS | set az_accel|el_accel DPS2 "
    "| set coast DEG | set min_duty PCT | set az_pwm|el_pwm 0|1 | set az_min|az_max|el_min|el_max DEG "
    "| stall az|el on|off | board ADDR on|off | silent ADDR on|off | short ADDR on|off | late ADDR MS "
    "| loss|corrupt|stray ADDR RATE | seed N | drop [on|off] | disconnect ADDR on|off | mode ADDR M "
    "| weather NAME VALUE | adc CHANNEL VOLTS | switch N pressed|released";

static int sim_on_off(const char *word)
{
    return word && (strcmp(word, "on") == 0 || strcmp(word, "1") == 0) ? 1 : 0;
}

static int sim_address(const char *word)
{
    if (!word)
    {
        return -1;
    }
    char *end = nullptr;
    long a = strtol(word, &end, 10);
    return end != word && *end == 0 && a >= 0 && a < SIM_ADDRESSES ? (int)a : -1;
}

static int sim_switch_index(const char *word)
{
    static const char *const names[4] = {"left", "right", "up", "down"};
    for (int i = 0; word && i < 4; i++)
    {
        if (strcmp(word, names[i]) == 0 || (word[0] == '0' + i && word[1] == 0))
        {
            return i;
        }
    }
    return -1;
}

// The mount's settings by name, for "set NAME VALUE".
static const struct
{
    const char *name;
    double SimMount::*field;
} sim_mount_settings[] = {
    {"az", &SimMount::az},
    {"el", &SimMount::el},
    {"az_speed", &SimMount::az_top_speed},
    {"el_speed", &SimMount::el_top_speed},
    {"az_accel", &SimMount::az_accel},
    {"el_accel", &SimMount::el_accel},
    {"coast", &SimMount::coast_deg},
    {"min_duty", &SimMount::min_duty},
    {"az_min", &SimMount::az_min},
    {"az_max", &SimMount::az_max},
    {"el_min", &SimMount::el_min},
    {"el_max", &SimMount::el_max},
};

static int sim_set(SimStation *s, const char *name, double value)
{
    SimMount *m = &s->mount;
    if (strcmp(name, "az_pwm") == 0 || strcmp(name, "el_pwm") == 0)
    {
        (name[0] == 'a' ? m->az_pwm : m->el_pwm) = value != 0.0;
        return 0;
    }
    for (const auto &setting : sim_mount_settings)
    {
        if (strcmp(name, setting.name) == 0)
        {
            m->*setting.field = value;
            // Putting the mount somewhere puts it there at rest.
            if (setting.field == &SimMount::az)
            {
                m->az_rate = 0.0;
            }
            if (setting.field == &SimMount::el)
            {
                m->el_rate = 0.0;
            }
            return 0;
        }
    }
    return -1;
}

static int sim_weather_set(SimWeather *w, const char *name, double value)
{
    if (strcmp(name, "speed") == 0)
    {
        w->wind_speed_kmh = value;
    }
    else if (strcmp(name, "direction") == 0)
    {
        w->wind_direction_deg = value;
    }
    else if (strcmp(name, "temperature") == 0)
    {
        w->temperature_c = value;
    }
    else if (strcmp(name, "pressure") == 0)
    {
        w->pressure_mb = value;
    }
    else if (strcmp(name, "altitude") == 0)
    {
        w->altitude_m = value;
    }
    else
    {
        return -1;
    }
    return 0;
}

// A rate between 0 and 1, or -1.
static double sim_rate(const char *word)
{
    char *end = nullptr;
    double rate = strtod(word, &end);
    return end != word && *end == 0 && rate >= 0.0 && rate <= 1.0 ? rate : -1.0;
}

// Per-address switches: silent, short, late, the random line faults,
// disconnect, mode and the relay and PWM board.
static int sim_address_command(SimStation *s, const char *verb, int a, const char *arg)
{
    if (a < 0 || !arg)
    {
        return -1;
    }
    SimFaults *f = &s->faults[a];
    double *rate = strcmp(verb, "loss") == 0      ? &f->loss
                   : strcmp(verb, "corrupt") == 0 ? &f->corrupt
                   : strcmp(verb, "stray") == 0   ? &f->stray
                                                  : nullptr;
    if (rate)
    {
        double value = sim_rate(arg);
        if (value < 0.0)
        {
            return -1;
        }
        *rate = value;
        return 0;
    }
    if (strcmp(verb, "silent") == 0)
    {
        f->silent = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "short") == 0)
    {
        f->short_reply = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "late") == 0)
    {
        f->late_ms = atoi(arg) > 0 ? atoi(arg) : 0;
    }
    else if (strcmp(verb, "disconnect") == 0)
    {
        s->encoders[a].disconnected = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "mode") == 0)
    {
        s->encoders[a].mode = (uint8_t)strtol(arg, nullptr, 0);
    }
    else if (strcmp(verb, "board") == 0)
    {
        s->outputs[a].present = (uint8_t)sim_on_off(arg);
    }
    else
    {
        return -1;
    }
    return 0;
}

static int sim_stall_command(SimStation *s, const char *axis, const char *arg)
{
    int which = SIM_AXIS_NONE;
    if (axis && strcmp(axis, "az") == 0)
    {
        which = SIM_AXIS_AZ;
    }
    else if (axis && strcmp(axis, "el") == 0)
    {
        which = SIM_AXIS_EL;
    }
    if (which == SIM_AXIS_NONE || !arg)
    {
        return -1;
    }
    sim_stall(s, which, sim_on_off(arg));
    return 0;
}

int sim_control(SimStation *s, const char *line, char *reply, int size)
{
    char words[4][64] = {};
    int count = sscanf(line, "%63s %63s %63s %63s", words[0], words[1], words[2], words[3]);
    const char *verb = words[0];
    const char *arg1 = count > 1 ? words[1] : nullptr;
    const char *arg2 = count > 2 ? words[2] : nullptr;
    int bad = 0;
    snprintf(reply, (size_t)size, "ok");
    if (count < 1)
    {
        bad = 1;
    }
    else if (strcmp(verb, "quit") == 0)
    {
        snprintf(reply, (size_t)size, "bye");
        return SIM_CONTROL_QUIT;
    }
    else if (strcmp(verb, "state") == 0)
    {
        sim_state_json(s, reply, size);
    }
    else if (strcmp(verb, "display") == 0)
    {
        sim_display_json(s, reply, size);
    }
    else if (strcmp(verb, "frames") == 0)
    {
        sim_frames_json(s, reply, size);
    }
    else if (strcmp(verb, "set") == 0)
    {
        bad = !arg1 || !arg2 || sim_set(s, arg1, atof(arg2)) != 0;
    }
    else if (strcmp(verb, "help") == 0)
    {
        snprintf(reply, (size_t)size, "%s", sim_help_text);
    }
    else if (strcmp(verb, "stall") == 0)
    {
        bad = sim_stall_command(s, arg1, arg2) != 0;
    }
    else if (strcmp(verb, "seed") == 0)
    {
        bad = !arg1;
        sim_seed(s, arg1 ? strtoull(arg1, nullptr, 0) : 0);
    }
    else if (strcmp(verb, "drop") == 0)
    {
        s->line_dropped = (uint8_t)(arg1 ? sim_on_off(arg1) : 1);
    }
    else if (strcmp(verb, "weather") == 0)
    {
        bad = !arg1 || !arg2 || sim_weather_set(&s->weather, arg1, atof(arg2)) != 0;
    }
    else if (strcmp(verb, "adc") == 0)
    {
        int channel = arg1 ? atoi(arg1) : -1;
        bad = !arg2 || channel < 0 || channel > 3;
        if (!bad)
        {
            s->adc_volts[channel] = atof(arg2);
        }
    }
    else if (strcmp(verb, "switch") == 0)
    {
        int i = sim_switch_index(arg1);
        bad = i < 0 || !arg2 || (strcmp(arg2, "pressed") != 0 && strcmp(arg2, "released") != 0);
        if (!bad)
        {
            s->switch_pressed[i] = strcmp(arg2, "pressed") == 0;
        }
    }
    else
    {
        bad = sim_address_command(s, verb, sim_address(arg1), arg2) != 0;
    }
    if (bad)
    {
        snprintf(reply, (size_t)size, "error: %s", line);
    }
    return SIM_CONTROL_OK;
}
