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
    s->outputs[s->mount.az_address].present = 1;
    s->outputs[s->mount.el_address].present = 1;
    sim_seed(s, 1);
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

static double sim_mount_angle(const SimStation *s, int axis)
{
    return axis == SIM_AXIS_EL ? s->mount.el : axis == SIM_AXIS_AZ ? s->mount.az : 0.0;
}

double sim_axis_reading(const SimStation *s, int axis)
{
    if (axis > SIM_AXIS_NONE && axis <= SIM_AXIS_EL && s->stalled[axis])
    {
        return s->stall_angle[axis];
    }
    return sim_mount_angle(s, axis);
}

void sim_stall(SimStation *s, int axis, int on)
{
    if (axis <= SIM_AXIS_NONE || axis > SIM_AXIS_EL)
    {
        return;
    }
    if (on && !s->stalled[axis])
    {
        s->stall_angle[axis] = sim_mount_angle(s, axis);
    }
    s->stalled[axis] = (uint8_t)(on ? 1 : 0);
}

void sim_station_advance(SimStation *s, int elapsed_ms)
{
    if (elapsed_ms <= 0)
    {
        return;
    }
    mount_advance(&s->mount, s->outputs, elapsed_ms);
    for (SimOutputs &board : s->outputs)
    {
        for (int port = 1; port < SIM_PORTS; port++)
        {
            board.relay_on_ms[port] += board.relay[port] ? elapsed_ms : 0;
        }
    }
}

void sim_seed(SimStation *s, uint64_t seed)
{
    // xorshift needs a state other than zero.
    s->random_state = seed ? seed : 0x9E3779B97F4A7C15ull;
}

// Uniform in [0, 1).
static double sim_random(SimStation *s)
{
    uint64_t x = s->random_state;
    x ^= x >> 12;
    x ^= x << 25;
    x ^= x >> 27;
    s->random_state = x;
    return (double)((x * 0x2545F4914F6CDD1Dull) >> 11) / 9007199254740992.0;
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
    int64_t counts = sim_wrap(sim_encoder_raw(e, sim_axis_reading(s, e->axis)) + e->preset, span);
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
    int64_t pulses = sim_brt_raw(e, sim_axis_reading(s, e->axis)) + e->preset;
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

// A relay or PWM frame, answered only by a fitted board.
static int sim_output_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    SimOutputs *out = &s->outputs[a];
    if (!out->present)
    {
        return 0;
    }
    int port = frame[2];
    if (port < 1 || port >= SIM_PORTS)
    {
        reply[0] = 1;
        return 1;
    }
    if (frame[1] == 0x32)
    {
        uint8_t closed = frame[3] ? 1 : 0;
        out->relay_switches[port] += out->relay[port] != closed;
        out->relay[port] = closed;
    }
    else
    {
        out->duty[port] = frame[3];
    }
    reply[0] = 0;
    return 1;
}

// The display and the switches sit beside each encoder.
static int sim_panel_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    if (s->encoders[a].kind == SIM_DEVICE_NONE)
    {
        return -1;
    }
    if (frame[1] == 0x35)
    {
        sim_display_write(s, frame[2], frame[3], frame + 5, frame[4]);
        reply[0] = 0;
        return 1;
    }
    if (frame[1] != 0x36)
    {
        return -1;
    }
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

static int sim_command(SimStation *s, int a, const uint8_t *frame, uint8_t *reply)
{
    const SimEncoder *e = &s->encoders[a];
    if (frame[1] == 0x32 || frame[1] == 0x33)
    {
        return sim_output_command(s, a, frame, reply);
    }
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
    int n = sim_panel_command(s, a, frame, reply);
    if (n >= 0)
    {
        return n;
    }
    if (e->kind == SIM_DEVICE_SEI && !e->asleep)
    {
        n = sim_encoder_command(s, a, frame, reply);
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

// An SEI encoder's position: 16 or 32 bits by its mode, and a single byte
// from an encoder whose whole turn fits in one.
static int sim_position(const SimStation *s, int a, uint8_t *reply)
{
    const SimEncoder *e = &s->encoders[a];
    if (e->kind != SIM_DEVICE_SEI || e->asleep)
    {
        return 0;
    }
    uint32_t counts = sim_encoder_counts(s, a);
    if (e->mode & 0x04)
    {
        return sim_u32(reply, counts);
    }
    if (e->resolution >= 1 && e->resolution <= 256 && !(e->mode & 0x10))
    {
        reply[0] = (uint8_t)counts;
        return 1;
    }
    return sim_u16(reply, counts);
}

// The reply bytes as the line delivers them from a device with random faults.
static int sim_line_faults(SimStation *s, const SimFaults *f, uint8_t *bytes, int n, int size)
{
    if (f->loss <= 0.0 && f->corrupt <= 0.0 && f->stray <= 0.0)
    {
        return n;
    }
    uint8_t sent[SIM_REPLY_MAX];
    int m = n < (int)sizeof sent ? n : (int)sizeof sent;
    memcpy(sent, bytes, (size_t)m);
    int out = 0;
    for (int i = 0; i < m && out < size; i++)
    {
        if (f->loss > 0.0 && sim_random(s) < f->loss)
        {
            continue;
        }
        uint8_t byte = sent[i];
        if (f->corrupt > 0.0 && sim_random(s) < f->corrupt)
        {
            byte ^= (uint8_t)(1u << (int)(sim_random(s) * 8));
        }
        bytes[out++] = byte;
        if (f->stray > 0.0 && out < size && sim_random(s) < f->stray)
        {
            bytes[out++] = (uint8_t)(sim_random(s) * 256);
        }
    }
    return out;
}

// One device's answer to a frame, with that address's faults.
static int sim_device_reply(SimStation *s, int a, const uint8_t *frame, uint8_t *reply, int *delay_ms)
{
    int n = 0;
    switch (frame[0] & 0xF0)
    {
    case 0x10:
        n = sim_position(s, a, reply);
        break;
    case 0x70:
    case 0x80:
        n = sim_register(s, a, frame, reply);
        break;
    case 0xF0:
        n = sim_command(s, a, frame, reply);
        break;
    default:
        break;
    }
    const SimFaults *f = &s->faults[a];
    if (n <= 0 || f->silent)
    {
        return 0;
    }
    n -= f->short_reply ? 1 : 0;
    *delay_ms = f->late_ms > *delay_ms ? f->late_ms : *delay_ms;
    return sim_line_faults(s, f, reply, n, SIM_REPLY_MAX);
}

int sim_reply(SimStation *s, const uint8_t *frame, int length, uint8_t *reply, int size, int *delay_ms)
{
    int a = frame[0] & 0x0F;
    *delay_ms = 0;
    if (length < 1 || s->line_dropped || size < 1)
    {
        return 0;
    }
    switch (frame[0] & 0xF0)
    {
    case 0x50:
        s->sleep_frames++;
        sim_sleep(s, a, 1);
        return 0;
    case 0x60:
        sim_sleep(s, 15, 0);
        return 0;
    default:
        break;
    }
    // A broadcast is heard and obeyed by every device, and all that answer
    // drive the line together: where their bits differ a low one wins.
    uint8_t merged[SIM_REPLY_MAX];
    int n = 0;
    for (int i = a == 15 ? 0 : a; i < (a == 15 ? SIM_ADDRESSES : a + 1); i++)
    {
        uint8_t answer[SIM_REPLY_MAX];
        int got = sim_device_reply(s, i, frame, answer, delay_ms);
        for (int k = 0; k < got; k++)
        {
            merged[k] = k < n ? (uint8_t)(merged[k] & answer[k]) : answer[k];
        }
        n = got > n ? got : n;
    }
    n = n < size ? n : size;
    memcpy(reply, merged, (size_t)n);
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
