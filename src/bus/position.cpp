#include "bus/position.h"

#include "bus/brt.h"
#include "bus/encoders.h"
#include "bus/sei_commands.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

uint8_t az_encoder_ready, el_encoder_ready;
uint8_t az_mode, el_mode;
uint16_t az_resolution, el_resolution;
uint32_t az_range, el_range;
uint32_t az_ppr, el_ppr;
uint8_t az_index_level, el_index_level;
uint32_t az_raw, el_raw;
uint32_t az_last_raw, el_last_raw;
double az_adc_position, el_adc_position;
uint8_t az_position_seen, el_position_seen;
double adc_volts[4] = {1000.0, 1000.0, 0.0, 0.0};

// The variables of one axis, so that both axes share one pass.
struct AxisState
{
    uint8_t *ready;
    uint8_t *mode;
    uint16_t *resolution;
    uint32_t *range;
    uint32_t *raw;
    uint32_t *last_raw;
    double *adc_position;
    double *position;
    int32_t *read_status;
    uint8_t *changed;
    int32_t address;
    int channel;
    uint8_t *seen;
};

// The status bar's read error: which axes failed by themselves in the last
// pass (bit 0 azimuth, bit 1 elevation), and the text now shown for it.
static int position_failed_axes;
static int position_error_shown;
static const char *const position_error_texts[4] = {"", "Azimuth read error", "Elevation read error",
                                                    "Azimuth and elevation read error"};

void position_reset(void)
{
    az_encoder_ready = el_encoder_ready = 0;
    az_mode = el_mode = 0;
    az_resolution = el_resolution = 0;
    az_range = el_range = 0;
    az_ppr = el_ppr = 0;
    az_index_level = el_index_level = 0;
    az_raw = el_raw = 0;
    az_last_raw = el_last_raw = 0;
    az_adc_position = el_adc_position = 0.0;
    az_position_seen = el_position_seen = 0;
    position_failed_axes = position_error_shown = 0;
    adc_volts[0] = adc_volts[1] = 1000.0;
    adc_volts[2] = adc_volts[3] = 0.0;
}

double position_counts_to_degrees(uint32_t raw, uint16_t resolution)
{
    // A resolution of 0 can only come from a hand-edited file or a device
    // that answered nonsense; reading it as the usual 36000 keeps the pass
    // alive and the number plausible, the same fall-back the BRT-38 scaling uses.
    double counts = resolution != 0 ? resolution : 36000;
    return raw / (counts / 360.0);
}

// The offset, one wrap into the turn, and the 10-degree step of the table.
static double position_offset_and_table(double degrees, double offset, const double *table, int last_row)
{
    double value = degrees + offset;
    if (value < 0.0)
    {
        value += 360.0;
    }
    else if (value > 360.0)
    {
        value -= 360.0;
    }
    // Clamped before it becomes a row number: a 32-bit count of noise lies
    // millions of turns out, far beyond what an int holds.
    double step = std::floor(value / 10.0);
    int row = !(step >= 0.0) ? 0 : step > last_row ? last_row : (int)step;
    return value + table[row];
}

double position_correct_azimuth(double degrees)
{
    double value = position_offset_and_table(degrees, settings.Azimuth_Offset, settings.AZ, 35);
    if (value < 0.0)
    {
        return 0.0;
    }
    return value >= 360.0 ? 360.0 : value;
}

double position_correct_elevation(double degrees)
{
    double value = position_offset_and_table(degrees, settings.Elevation_Offset, settings.EL, 9);
    // A dish pointed below the horizon reads negative, not near 360.
    return value >= 270.0 ? value - 360.0 : value;
}

double adc_median_volts(uint16_t samples[5])
{
    std::sort(samples, samples + 5);
    return samples[2] * 0.0048828125;
}

double adc_smooth(double previous, double volts)
{
    if (previous > 450.0)
    {
        previous = volts;
    }
    return 0.4 * volts + 0.6 * previous;
}

double adc_position(double volts, double minimum, double maximum, double range)
{
    // Equal ends give no scale at all; the axis then reads 0 rather than a
    // division by zero, as an unconnected potentiometer would.
    if (maximum == minimum)
    {
        return 0.0;
    }
    return (volts - minimum) / (maximum - minimum) * range;
}

void adc_sample_channels(void)
{
    for (int n = 0; n < 4; n++)
    {
        if (!settings.ADC_Active[n])
        {
            continue;
        }
        for (int k = 0; k < 5; k++)
        {
            uint16_t value = 0;
            uint8_t status = 0;
            // A failed sample counts as 0; the median keeps one such from moving the result.
            sei_read_adc(0, (uint8_t)n, &value, &status);
            adc_samples[n][k] = value;
        }
        adc_volts[n] = adc_smooth(adc_volts[n], adc_median_volts(adc_samples[n]));
    }
}

static AxisState position_axis(int elevation)
{
    if (!elevation)
    {
        return {.ready = &az_encoder_ready,
                .mode = &az_mode,
                .resolution = &az_resolution,
                .range = &az_range,
                .raw = &az_raw,
                .last_raw = &az_last_raw,
                .adc_position = &az_adc_position,
                .position = &az_position,
                .read_status = &az_read_status,
                .changed = &az_changed,
                .address = settings.AZ_Addr,
                .channel = 0,
                .seen = &az_position_seen};
    }
    return {.ready = &el_encoder_ready,
            .mode = &el_mode,
            .resolution = &el_resolution,
            .range = &el_range,
            .raw = &el_raw,
            .last_raw = &el_last_raw,
            .adc_position = &el_adc_position,
            .position = &el_position,
            .read_status = &el_read_status,
            .changed = &el_changed,
            .address = settings.EL_Addr,
            .channel = 1,
            .seen = &el_position_seen};
}

// The analogue reading of the axis's channel, or 0.0 without one. The second
// result says whether a channel was read at all.
static double position_analogue(AxisState *axis, int *active)
{
    int n = axis->channel;
    *active = settings.ads1115_present && settings.ADC_Active[n];
    if (!*active)
    {
        return 0.0;
    }
    double position =
        adc_position(adc_volts[n], settings.ADC_Minimum[n], settings.ADC_Maximum[n], settings.ADC_Range[n]);
    if (position != *axis->adc_position)
    {
        *axis->changed = 1;
    }
    *axis->adc_position = position;
    if (settings.AdcDebug)
    {
        char text[128];
        snprintf(text, sizeof text,
                 n == 0 ? "ADC-0:%5d Signed:%5.3f Min:%6.2fv Max:%6.2fv Range:%6.2f Pos:%6.2f"
                        : "ADC-1:%5d Signed:%5.2f Min:%6.2fv Max:%6.2fv Range:%6.2f Pos:%6.2f",
                 adc_samples[n][0], adc_volts[n], settings.ADC_Minimum[n], settings.ADC_Maximum[n],
                 settings.ADC_Range[n], position);
        panel_status(text, 0);
    }
    return position;
}

static int position_type(int address)
{
    return address >= 0 && address < ENCODER_COUNT ? encoders[address].Type : ENCODER_SEI;
}

// The one-time set-up of an encoder axis: 0, or the failing command's status.
static int position_setup(AxisState *axis)
{
    uint8_t status = 0;
    int result;
    if (position_type(axis->address) == ENCODER_BRT)
    {
        result = brt_get_resolution(axis->address, axis->resolution);
        result = result ? result : brt_get_mode(axis->address, axis->mode);
    }
    else
    {
        result = sei_read_resolution(axis->address, axis->resolution, &status);
        result = result ? result : sei_read_mode(axis->address, axis->mode, &status);
        if (result == 0 && (*axis->mode & MODE_MULTI_TURN) && sei_read_range(axis->address, axis->range, &status) != 0)
        {
            *axis->range = *axis->resolution;
        }
    }
    if (result == 0)
    {
        *axis->ready = 1;
    }
    return result;
}

// An encoder axis: set-up when needed, then the position. Returns 0 with the
// uncorrected degrees, or the failing status.
static int position_encoder(AxisState *axis, double *degrees)
{
    if (!*axis->ready)
    {
        int status = position_setup(axis);
        if (status != 0)
        {
            return status;
        }
    }
    int status;
    if (position_type(axis->address) == ENCODER_BRT)
    {
        status = brt_read_position(axis->address, *axis->mode, axis->raw);
    }
    else
    {
        status = sei_read_position(axis->address, *axis->mode, *axis->resolution, axis->raw);
    }
    if (status != 0)
    {
        return status;
    }
    if (*axis->raw != *axis->last_raw)
    {
        *axis->changed = 1;
    }
    *axis->last_raw = *axis->raw;
    *degrees = position_counts_to_degrees(*axis->raw, *axis->resolution);
    return 0;
}

// An axis that failed by itself; one that only shares the azimuth's failure
// sets its status but names nothing in the status bar.
static void position_fail(AxisState *axis, int status)
{
    position_failed_axes |= axis->channel == 0 ? 1 : 2;
    *axis->read_status = status;
}

static void position_store(AxisState *axis, int elevation, double degrees)
{
    *axis->position = elevation ? position_correct_elevation(degrees) : position_correct_azimuth(degrees);
    *axis->read_status = 0;
    *axis->seen = 1;
}

// This station's own rule: the status bar names the axis that failed, not
// the one that only shared its fate (an elevation skipped after a failed
// azimuth says "Azimuth read error"), names both when both failed, and
// clears its message once both axes read again.
static void position_show_errors(void)
{
    if (position_failed_axes != 0)
    {
        panel_status(position_error_texts[position_failed_axes], 0);
        position_error_shown = position_failed_axes;
    }
    else if (position_error_shown != 0)
    {
        panel_status_clear(position_error_texts[position_error_shown]);
        position_error_shown = 0;
    }
}

static void position_read_azimuth(void)
{
    AxisState axis = position_axis(0);
    double degrees = 0.0;
    int active = 0;
    if (axis.address == -1)
    {
        // Without a sensor the axis still counts as read: it shows its
        // offset and table entry, so a fixed antenna can be given a bearing.
        degrees = position_analogue(&axis, &active);
        position_store(&axis, 0, degrees);
        return;
    }
    int status = position_encoder(&axis, &degrees);
    if (status != 0)
    {
        position_fail(&axis, status);
        return;
    }
    position_store(&axis, 0, degrees);
}

static void position_read_elevation(void)
{
    AxisState axis = position_axis(1);
    double degrees = 0.0;
    int active = 0;
    if (axis.address == -1)
    {
        degrees = position_analogue(&axis, &active);
        if (!active)
        {
            // An elevation without a sensor shares the azimuth's fate.
            el_position = 0.0;
            el_read_status = az_read_status;
            if (az_read_status != 0)
            {
                return;
            }
        }
        position_store(&axis, 1, degrees);
        return;
    }
    if (*axis.ready && az_read_status != 0)
    {
        // One bus carries both encoders: when azimuth just failed, elevation
        // would only spend another budget on the same dead line.
        el_read_status = az_read_status;
        return;
    }
    int status = position_encoder(&axis, &degrees);
    if (status != 0)
    {
        position_fail(&axis, status);
        return;
    }
    position_store(&axis, 1, degrees);
}

int ReadPosition(void)
{
    az_read_status = -1;
    el_read_status = -1;
    position_failed_axes = 0;
    position_read_azimuth();
    position_read_elevation();
    position_show_errors();
    panel_dial_needle(DIAL_AZIMUTH, 2, az_position);
    panel_dial_needle(DIAL_ELEVATION, 2, el_position);
    return az_read_status != 0 || el_read_status != 0 ? 1 : 0;
}
