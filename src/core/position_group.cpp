#include "core/position_group.h"

#include "bus/position.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <cstdio>

int position_az_limit_hit(double position, double minimum, double maximum)
{
    if (minimum > maximum)
    {
        // Limits through north: the forbidden sector is the one between them.
        return minimum >= position && position >= maximum;
    }
    return position <= minimum || position >= maximum;
}

int position_el_limit_hit(double position, double minimum, double maximum)
{
    return position <= minimum || position >= maximum;
}

static const char *position_text(char *text, int size, double position, int limit_hit, int read_status, int seen)
{
    if (read_status == 0)
    {
        snprintf(text, size, limit_hit ? "%7.2f *" : "%7.2f", position);
    }
    else if (seen)
    {
        // The last good reading, marked as one the antenna may have left.
        snprintf(text, size, "%7.2f ?", position);
    }
    else
    {
        snprintf(text, size, "---");
    }
    return text;
}

// A reading the bus did not confirm in this pass is shown in gray, on the
// box and on the dial alike, so a dead line never passes for a still dish.
static void position_show(int control, int dial, double position, int limit_hit, int read_status, int seen,
                          int slider)
{
    char text[32];
    position_text(text, sizeof text, position, limit_hit, read_status, seen);
    panel_text(control, text);
    panel_style(control, read_status == 0 ? STYLE_RED_TEXT : STYLE_GRAY_TEXT);
    panel_dial_value_text(dial, text);
    panel_dial_state(dial, read_status == 0 ? DIAL_LIVE : DIAL_STALE);
    if (slider == 0)
    {
        panel_dial_repaint(dial);
    }
}

PositionLimits position_group(int slider)
{
    PositionLimits limits = {};
    ReadPosition();
    limits.through_north = settings.AzimuthLimitMin > settings.AzimuthLimitMax;
    limits.az_limit_hit = position_az_limit_hit(az_position, settings.AzimuthLimitMin, settings.AzimuthLimitMax);
    position_show(PANEL_ANTENNA_AZIMUTH, DIAL_AZIMUTH, az_position, limits.az_limit_hit, az_read_status,
                  az_position_seen, slider);
    limits.el_limit_hit = position_el_limit_hit(el_position, settings.ElevationLimitMin, settings.ElevationLimitMax);
    position_show(PANEL_ANTENNA_ELEVATION, DIAL_ELEVATION, el_position, limits.el_limit_hit, el_read_status,
                  el_position_seen, slider);
    return limits;
}

void adc_group(void)
{
    if (settings.ads1115_present)
    {
        adc_sample_channels();
    }
}
