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

static void position_show(int control, int dial, double position, int limit_hit, int slider)
{
    char text[32];
    snprintf(text, sizeof text, limit_hit ? "%7.2f *" : "%7.2f", position);
    panel_text(control, text);
    panel_dial_value_text(dial, text);
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
    position_show(PANEL_ANTENNA_AZIMUTH, DIAL_AZIMUTH, az_position, limits.az_limit_hit, slider);
    limits.el_limit_hit = position_el_limit_hit(el_position, settings.ElevationLimitMin, settings.ElevationLimitMax);
    position_show(PANEL_ANTENNA_ELEVATION, DIAL_ELEVATION, el_position, limits.el_limit_hit, slider);
    return limits;
}

void adc_group(void)
{
    if (settings.ads1115_present)
    {
        adc_sample_channels();
    }
}
