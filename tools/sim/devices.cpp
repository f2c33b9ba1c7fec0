#include "sim/devices.h"

#include <cmath>
#include <cstdio>
#include <cstring>

static void sim_encoder_init(SimEncoder *e, int kind, int axis, uint32_t serial)
{
    memset(e, 0, sizeof *e);
    e->kind = kind;
    e->axis = axis;
    e->resolution = 36000;
    e->range = 1024;
    e->ppr = 1024;
    e->serial = serial;
    e->brt_direction = 1;
}

void sim_station_init(SimStation *s)
{
    memset(s, 0, sizeof *s);
    mount_init(&s->mount);
    sim_encoder_init(&s->encoders[0], SIM_DEVICE_SEI, SIM_AXIS_AZ, 2000);
    sim_encoder_init(&s->encoders[1], SIM_DEVICE_SEI, SIM_AXIS_EL, 2001);
    sim_encoder_init(&s->encoders[2], SIM_DEVICE_BRT, SIM_AXIS_AZ, 1003);
    sim_encoder_init(&s->encoders[3], SIM_DEVICE_BRT, SIM_AXIS_EL, 1004);
    s->adc_address = 0;
    s->weather.address = 4;
    s->weather.wind_speed_kmh = 12.0;
    s->weather.wind_direction_deg = 225.0;
    s->weather.temperature_c = 8.5;
    s->weather.pressure_mb = 1013.25;
    s->weather.altitude_m = 120.0;
    for (int row = 0; row < SIM_DISPLAY_ROWS; row++)
    {
        memset(s->display[row], ' ', SIM_DISPLAY_COLUMNS);
    }
}

static double sim_axis_angle(const SimStation *s, int axis)
{
    return axis == SIM_AXIS_EL ? s->mount.el : axis == SIM_AXIS_AZ ? s->mount.az : 0.0;
}

static int64_t sim_wrap(int64_t value, int64_t span)
{
    if (span <= 0)
    {
        return value;
    }
    value %= span;
    return value < 0 ? value + span : value;
}

// Counts before the preset: the angle in resolution steps, the other way
// round with mode bit 0.
static int64_t sim_encoder_raw(const SimEncoder *e, double angle)
{
    int resolution = e->resolution ? e->resolution : 36000;
    int64_t counts = (int64_t)std::floor(angle / 360.0 * resolution + 1e-9);
    return (e->mode & 0x01) ? -counts : counts;
}

uint32_t sim_encoder_counts(const SimStation *s, int address)
{
    const SimEncoder *e = &s->encoders[address];
    int64_t span = e->resolution ? e->resolution : 36000;
    if (e->mode & 0x10)
    {
        span *= e->range ? e->range : 1;
    }
    int64_t counts = sim_wrap(sim_encoder_raw(e, sim_axis_angle(s, e->axis)) + e->preset, span);
    return (e->mode & 0x04) ? (uint32_t)counts : (uint32_t)(counts & 0xFFFF);
}

static int64_t sim_brt_raw(const SimEncoder *e, double angle)
{
    int64_t pulses = (int64_t)std::floor(angle / 360.0 * (e->ppr ? e->ppr : 1024) + 1e-9);
    return e->brt_direction ? pulses : -pulses;
}

uint16_t sim_brt_pulses(const SimStation *s, int address)
{
    const SimEncoder *e = &s->encoders[address];
    int64_t pulses = sim_brt_raw(e, sim_axis_angle(s, e->axis)) + e->preset;
    return (uint16_t)sim_wrap(pulses, e->ppr ? e->ppr : 1024);
}

uint16_t sim_adc_word(double volts)
{
    double steps = std::floor(volts * 1024.0 / 5.0 + 0.5);
    return (uint16_t)(steps < 0 ? 0 : steps > 65535 ? 65535 : steps);
}

// Lengths of the multi-byte commands, counting the first byte and the
// command number. Set-position and display text have lengths of their own.
static const struct
{
    uint8_t command;
    uint8_t length;
} sim_command_lengths[] = {
    {0x07, 7}, {0x08, 2}, {0x09, 2}, {0x0A, 4}, {0x0B, 2}, {0x0C, 3}, {0x0D, 3}, {0x17, 2},
    {0x18, 2}, {0x19, 2}, {0x1A, 2}, {0x1B, 2}, {0x1D, 4}, {0x28, 2}, {0x29, 6}, {0x2A, 2},
    {0x2B, 7}, {0x32, 4}, {0x33, 4}, {0x34, 3}, {0x36, 2},
};

// 0 for a command no device here knows.
static int sim_command_length(int command)
{
    for (const auto &entry : sim_command_lengths)
    {
        if (entry.command == command)
        {
            return entry.length;
        }
    }
    return 0;
}

int sim_frame_length(const SimStation *s, const uint8_t *bytes, int count)
{
    if (count < 1)
    {
        return 0;
    }
    int address = bytes[0] & 0x0F;
    switch (bytes[0] & 0xF0)
    {
    case 0x10:
    case 0x50:
    case 0x60:
        return 1;
    case 0x70:
        return 3;
    case 0x80:
        return 5;
    case 0xF0:
        break;
    default:
        return -1;
    }
    if (count < 2)
    {
        return 0;
    }
    if (bytes[1] == 0x02)
    {
        // The preset is as wide as the encoder's positions.
        int wide = address < SIM_ADDRESSES && (s->encoders[address].mode & 0x04);
        return wide ? 6 : 4;
    }
    if (bytes[1] == 0x35)
    {
        return count < 5 ? 0 : 5 + bytes[4];
    }
    int length = sim_command_length(bytes[1]);
    // An unknown command is taken as its two bytes and goes unanswered.
    return length ? length : 2;
}

static int sim_u16(uint8_t *at, unsigned value)
{
    at[0] = (uint8_t)(value >> 8);
    at[1] = (uint8_t)value;
    return 2;
}

static int sim_u32(uint8_t *at, uint32_t value)
{
    sim_u16(at, value >> 16);
    sim_u16(at + 2, value & 0xFFFF);
    return 4;
}

static uint32_t sim_get_u32(const uint8_t *at)
{
    return (uint32_t)at[0] << 24 | (uint32_t)at[1] << 16 | (uint32_t)at[2] << 8 | at[3];
}

static unsigned sim_get_u16(const uint8_t *at)
{
    return (unsigned)(at[0] << 8 | at[1]);
}

static int sim_factory_record(const SimEncoder *e, uint8_t *reply)
{
    int n = sim_u16(reply, 25);
    n += sim_u16(reply + n, 0x0102);
    n += sim_u16(reply + n, 0x0100);
    n += sim_u32(reply + n, e->serial);
    reply[n++] = 3;
    reply[n++] = 14;
    n += sim_u16(reply + n, 2024);
    uint8_t crc = 0;
    for (int i = 0; i < n; i++)
    {
        crc ^= reply[i];
    }
    reply[n++] = crc;
    return n;
}

static void sim_display_write(SimStation *s, int x, int y, const uint8_t *text, int length)
{
    for (int i = 0; i < length && text[i] != 0; i++)
    {
        if (y >= 0 && y < SIM_DISPLAY_ROWS && x + i >= 0 && x + i < SIM_DISPLAY_COLUMNS)
        {
            s->display[y][x + i] = (char)text[i];
        }
    }
}

static void sim_move_device(SimStation *s, int from, int to)
{
    if (to < 0 || to >= SIM_ADDRESSES || to == from)
    {
        return;
    }
    s->encoders[to] = s->encoders[from];
    memset(&s->encoders[from], 0, sizeof s->encoders[from]);
}

// The encoder's own commands; -1 when the command is not one of them.
static int sim_encoder_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    SimEncoder *e = &s->encoders[a];
    switch (frame[1])
    {
    case 0x02:
    {
        uint32_t wanted = (e->mode & 0x04) ? sim_get_u32(frame + 2) : sim_get_u16(frame + 2);
        e->preset = 0;
        e->preset = (int64_t)wanted - (int64_t)sim_encoder_counts(s, a);
        reply[0] = 0;
        return 1;
    }
    case 0x07:
        if (sim_get_u32(frame + 2) != e->serial)
        {
            return 0;
        }
        sim_move_device(s, a, frame[6]);
        reply[0] = 0;
        return 1;
    case 0x08:
        return sim_factory_record(e, reply);
    case 0x09:
        reply[2] = 0;
        return sim_u16(reply, e->resolution) + 1;
    case 0x0A:
        e->resolution = (uint16_t)sim_get_u16(frame + 2);
        reply[0] = 0;
        return 1;
    case 0x0B:
        reply[0] = e->mode;
        reply[1] = 0;
        return 2;
    case 0x0C:
        e->mode = frame[2];
        reply[0] = 0;
        return 1;
    case 0x0D:
        // The power-up mode also takes effect at once.
        e->power_up_mode = frame[2];
        e->mode = frame[2];
        reply[0] = 0;
        return 1;
    case 0x28:
        reply[4] = 0;
        return sim_u32(reply, e->range) + 1;
    case 0x29:
        e->range = sim_get_u32(frame + 2);
        reply[0] = 0;
        return 1;
    case 0x2A:
        sim_u32(reply, e->ppr);
        reply[4] = e->index_level;
        reply[5] = 0;
        return 6;
    case 0x2B:
        e->ppr = sim_get_u32(frame + 2);
        e->index_level = frame[6];
        reply[0] = 0;
        return 1;
    default:
        return -1;
    }
}

static int sim_weather_command(SimStation *s, const uint8_t *frame, uint8_t *reply)
{
    const SimWeather *w = &s->weather;
    switch (frame[1])
    {
    case 0x17:
        reply[2] = 0;
        return sim_u16(reply, (unsigned)std::lround(w->wind_speed_kmh * 10)) + 1;
    case 0x18:
        reply[2] = 0;
        return sim_u16(reply, (unsigned)std::lround(w->wind_direction_deg * 10)) + 1;
    case 0x19:
        reply[2] = 0;
        return sim_u16(reply, (unsigned)(uint16_t)(int16_t)std::lround(w->temperature_c * 10)) + 1;
    case 0x1A:
        reply[4] = 0;
        return sim_u32(reply, (uint32_t)std::lround(w->pressure_mb * 1000)) + 1;
    case 0x1B:
        reply[4] = 0;
        return sim_u32(reply, (uint32_t)std::lround(w->altitude_m * 10)) + 1;
    case 0x1D:
        s->weather.calibration = (uint16_t)sim_get_u16(frame + 2);
        reply[0] = 0;
        return 1;
    default:
        return -1;
    }
}

// Relay, PWM, display and switches live on the board at each encoder address.
static int sim_board_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    SimOutputs *out = &s->outputs[a];
    switch (frame[1])
    {
    case 0x32:
    case 0x33:
        if (frame[2] < 1 || frame[2] > 4)
        {
            reply[0] = 1;
            return 1;
        }
        if (frame[1] == 0x32)
        {
            out->relay[frame[2]] = frame[3] ? 1 : 0;
        }
        else
        {
            out->duty[frame[2]] = frame[3];
        }
        reply[0] = 0;
        return 1;
    case 0x35:
        sim_display_write(s, frame[2], frame[3], frame + 5, frame[4]);
        reply[0] = 0;
        return 1;
    case 0x36:
    {
        uint8_t gpio = 0xFF;
        for (int i = 0; i < 4; i++)
        {
            if (s->switch_pressed[i])
            {
                gpio &= (uint8_t) ~(1u << i);
            }
        }
        reply[0] = gpio;
        reply[1] = 0;
        return 2;
    }
    default:
        return -1;
    }
}

static int sim_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    const SimEncoder *e = &s->encoders[a];
    if (frame[1] == 0x34 && a == s->adc_address)
    {
        uint16_t word = frame[2] < 4 ? sim_adc_word(s->adc_volts[frame[2]]) : 0;
        reply[0] = (uint8_t)word; // this module alone sends the low byte first
        reply[1] = (uint8_t)(word >> 8);
        reply[2] = frame[2] < 4 ? 0 : 1;
        return 3;
    }
    if (a == s->weather.address)
    {
        int n = sim_weather_command(s, frame, reply);
        if (n >= 0)
        {
            return n;
        }
    }
    if (e->kind != SIM_DEVICE_NONE)
    {
        int n = sim_board_command(s, a, frame, reply);
        if (n >= 0)
        {
            return n;
        }
    }
    if (e->kind == SIM_DEVICE_SEI && !e->asleep)
    {
        int n = sim_encoder_command(s, a, frame, reply);
        return n > 0 ? n : 0;
    }
    return 0;
}

static int sim_register(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    SimEncoder *e = &s->encoders[a];
    if (e->kind != SIM_DEVICE_BRT)
    {
        return 0;
    }
    unsigned reg = sim_get_u16(frame + 1);
    if ((frame[0] & 0xF0) == 0x70)
    {
        unsigned value = reg == 0 && !e->disconnected ? sim_brt_pulses(s, a) : 0;
        sim_u16(reply, value);
        reply[2] = e->disconnected ? SIM_BRT_DISCONNECTED : 0;
        return 3;
    }
    unsigned value = sim_get_u16(frame + 3);
    reply[0] = e->disconnected ? SIM_BRT_DISCONNECTED : 0;
    if (reg == 9)
    {
        e->brt_direction = (uint16_t)value;
    }
    else if (reg == 11)
    {
        e->preset = 0;
        e->preset = (int64_t)value - sim_brt_pulses(s, a);
    }
    else if (reg == 4)
    {
        sim_move_device(s, a, (int)value);
    }
    return 1;
}

static void sim_sleep(SimStation *s, int a, int asleep)
{
    for (int i = 0; i < SIM_ADDRESSES; i++)
    {
        if ((a == 15 || i == a) && s->encoders[i].kind == SIM_DEVICE_SEI)
        {
            s->encoders[i].asleep = (uint8_t)asleep;
        }
    }
}

int sim_reply(SimStation *s, const uint8_t *frame, int length, uint8_t *reply, int size, int *delay_ms)
{
    uint8_t answer[64];
    int a = frame[0] & 0x0F;
    int n = 0;
    *delay_ms = 0;
    if (length < 1 || s->line_dropped || size < 1)
    {
        return 0;
    }
    switch (frame[0] & 0xF0)
    {
    case 0x10:
    {
        const SimEncoder *e = a < SIM_ADDRESSES ? &s->encoders[a] : nullptr;
        if (e && e->kind == SIM_DEVICE_SEI && !e->asleep)
        {
            uint32_t counts = sim_encoder_counts(s, a);
            n = (e->mode & 0x04) ? sim_u32(answer, counts) : sim_u16(answer, counts);
        }
        break;
    }
    case 0x50:
        sim_sleep(s, a, 1);
        return 0;
    case 0x60:
        sim_sleep(s, 15, 0);
        return 0;
    case 0x70:
    case 0x80:
        n = a < SIM_ADDRESSES ? sim_register(s, a, frame, answer) : 0;
        break;
    case 0xF0:
        n = a < SIM_ADDRESSES ? sim_command(s, a, frame, answer) : 0;
        break;
    default:
        return 0;
    }
    if (a >= SIM_ADDRESSES || n <= 0 || s->faults[a].silent)
    {
        return 0;
    }
    if (s->faults[a].short_reply)
    {
        n--;
    }
    *delay_ms = s->faults[a].late_ms;
    n = n < size ? n : size;
    memcpy(reply, answer, (size_t)n);
    return n;
}

void sim_frame_note(SimStation *s, int64_t ms, char direction, const uint8_t *bytes, int length)
{
    SimFrameEntry *entry = &s->frames[s->frame_count % SIM_FRAME_LOG];
    entry->ms = ms;
    int used = snprintf(entry->text, sizeof entry->text, "%c", direction);
    for (int i = 0; i < length && used < (int)sizeof entry->text - 4; i++)
    {
        used += snprintf(entry->text + used, sizeof entry->text - (size_t)used, " %02X", bytes[i]);
    }
    s->frame_count++;
}
