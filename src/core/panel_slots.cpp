#include "core/panel_slots.h"

#include "core/drive.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "widgets/enter.h"

#include <cstdio>
#include <cstdlib>

void panel_pause_begin(void)
{
    stop_all(1);
    panel_style(PANEL_STOP, STYLE_GRAY);
}

void panel_pause_end(void)
{
    // The remote display writes everything afresh at its next turn.
    source_changed = 1;
    az_changed = 1;
    el_changed = 1;
}

void panel_antenna_accepted(int slider)
{
    SaveSettings(ini_file_name, &settings);
    panel_update_display();
    panel_dial_limits(DIAL_AZIMUTH, settings.AzimuthLimitMin, settings.AzimuthLimitMax);
    panel_dial_limits(DIAL_ELEVATION, settings.ElevationLimitMin, settings.ElevationLimitMax);
    if (slider == 0)
    {
        panel_dial_repaint(DIAL_AZIMUTH);
        panel_dial_repaint(DIAL_ELEVATION);
    }
}

// A cancelled keypad leaves the shown value in the buffer, which then goes
// back unchanged but for the rounding of its two decimals.
static double panel_enter_value(double value)
{
    char text[32];
    text_copy(text, sizeof text, panel_source_angle_text(value));
    enter_number_field(text, sizeof text, 10);
    return atof(text);
}

void panel_az_source_pressed(void)
{
    if (settings.TrackingSource == SOURCE_USER_AZEL)
    {
        panel_set_user_azimuth(panel_enter_value(settings.User_Azimuth));
    }
}

void panel_el_source_pressed(void)
{
    if (settings.TrackingSource == SOURCE_USER_AZEL)
    {
        panel_set_user_elevation(panel_enter_value(settings.User_Elevation));
    }
}

// The read position already carries the old offset: take it out, and put in
// what makes the reading equal the source's last computed value.
void panel_az_calibrate_pressed(void)
{
    az_changed = 1;
    settings.Azimuth_Offset = source_row(settings.TrackingSource)->az - (az_position - settings.Azimuth_Offset);
    SaveSettings(ini_file_name, &settings);
    panel_update_display();
}

void panel_el_calibrate_pressed(void)
{
    el_changed = 1;
    settings.Elevation_Offset = source_row(settings.TrackingSource)->el - (el_position - settings.Elevation_Offset);
    SaveSettings(ini_file_name, &settings);
    panel_update_display();
}

void panel_setup_tracking_source(void)
{
    int source = settings.TrackingSource;
    if (source == SOURCE_EASYCOMM || source == SOURCE_GPREDICT || source == SOURCE_PSTROTATOR)
    {
        auto_tracking = 0;
        panel_style(PANEL_AUTO, STYLE_GRAY);
        park_control(0);
    }
    panel_update_display();
}
