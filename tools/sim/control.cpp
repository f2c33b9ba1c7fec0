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

void sim_state_json(const SimStation *s, char *reply, int size)
{
    int used = 0;
    sim_append(reply, size, &used,
               "{\"az\":%.3f,\"el\":%.3f,\"az_rate\":%.3f,\"el_rate\":%.3f,\"line\":\"%s\",\"outputs\":[", s->mount.az,
               s->mount.el, s->mount.az_rate, s->mount.el_rate, s->line_dropped ? "dropped" : "up");
    int first = 1;
    for (int a = 0; a < SIM_ADDRESSES; a++)
    {
        const SimOutputs *o = &s->outputs[a];
        if (s->encoders[a].kind == SIM_DEVICE_NONE)
        {
            continue;
        }
        sim_append(reply, size, &used, "%s{\"addr\":%d,\"relay\":[%d,%d,%d,%d],\"pwm\":[%d,%d,%d,%d],\"asleep\":%d}",
                   first ? "" : ",", a, o->relay[1], o->relay[2], o->relay[3], o->relay[4], o->duty[1], o->duty[2],
                   o->duty[3], o->duty[4], s->encoders[a].asleep);
        first = 0;
    }
    sim_append(reply, size, &used, "],\"switches\":{\"left\":%d,\"right\":%d,\"up\":%d,\"down\":%d}",
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

static int sim_set(SimStation *s, const char *name, double value)
{
    SimMount *m = &s->mount;
    if (strcmp(name, "az") == 0)
    {
        m->az = value;
        m->az_rate = 0;
    }
    else if (strcmp(name, "el") == 0)
    {
        m->el = value;
        m->el_rate = 0;
    }
    else if (strcmp(name, "az_speed") == 0)
    {
        m->az_top_speed = value;
    }
    else if (strcmp(name, "el_speed") == 0)
    {
        m->el_top_speed = value;
    }
    else if (strcmp(name, "coast") == 0)
    {
        m->coast_ms = (int)value;
    }
    else
    {
        return -1;
    }
    return 0;
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

// Per-address switches: silent, short, late, disconnect, mode.
static int sim_address_command(SimStation *s, const char *verb, int a, const char *arg)
{
    if (a < 0 || !arg)
    {
        return -1;
    }
    if (strcmp(verb, "silent") == 0)
    {
        s->faults[a].silent = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "short") == 0)
    {
        s->faults[a].short_reply = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "late") == 0)
    {
        s->faults[a].late_ms = atoi(arg) > 0 ? atoi(arg) : 0;
    }
    else if (strcmp(verb, "disconnect") == 0)
    {
        s->encoders[a].disconnected = (uint8_t)sim_on_off(arg);
    }
    else if (strcmp(verb, "mode") == 0)
    {
        s->encoders[a].mode = (uint8_t)strtol(arg, nullptr, 0);
    }
    else
    {
        return -1;
    }
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
