#include "core/panel.h"

#include "astro/source_names.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "widgets/locator.h"

#include <cctype>
#include <cstdio>

static void panel_source_name(void)
{
    char name[32];
    text_copy(name, sizeof name, source_name(settings.TrackingSource));
    for (char *p = name; *p; p++)
    {
        *p = (char)toupper((unsigned char)*p);
    }
    panel_text(PANEL_SOURCE, name);
}

static void panel_stations(void)
{
    panel_text(PANEL_CALLSIGN, settings.Callsign);
    panel_text(PANEL_LOCATION, settings.Location);
    // An empty button says what it is for; pressed, it opens the dialog.
    panel_text(PANEL_HOME_STATION, settings.Grid[0] ? settings.Grid : "Set home");
    if (settings.Grid[0])
    {
        home_station_valid = 1;
    }
    panel_text(PANEL_DX_STATION, dx_grid);
    dx_station_valid = dx_grid[0] != 0;
}

static void panel_doppler_buttons(void)
{
    switch (doppler_mode)
    {
    case 0:
        panel_style(PANEL_HOME_STATION, STYLE_GRAY);
        panel_style(PANEL_DX_STATION, STYLE_GRAY);
        break;
    case 1:
        panel_style(PANEL_HOME_STATION, STYLE_DARKGREEN);
        panel_style(PANEL_DX_STATION, STYLE_GRAY);
        panel_style(PANEL_MUTUAL_DOPPLER_BUTTON, STYLE_GRAY);
        break;
    case 2:
        panel_style(PANEL_HOME_STATION, STYLE_GRAY);
        panel_style(PANEL_DX_STATION, STYLE_DARKGREEN);
        panel_style(PANEL_MUTUAL_DOPPLER_BUTTON, STYLE_GRAY);
        break;
    case 3:
        panel_style(PANEL_HOME_STATION, STYLE_DARKGREEN);
        panel_style(PANEL_DX_STATION, STYLE_DARKGREEN);
        panel_style(PANEL_MUTUAL_DOPPLER_BUTTON, STYLE_DARKGREEN);
        panel_visible(PANEL_MUTUAL_DOPPLER, 1);
        panel_visible(PANEL_MUTUAL_DOPPLER_BUTTON, 1);
        break;
    default:
        break;
    }
}

// With no Doppler chosen the two Doppler labels are free, and tell how far
// away the DX station is and where to point for it.
static void panel_station_figures(void)
{
    if (doppler_mode != 0 || !home_station_valid || !dx_station_valid)
    {
        return;
    }
    char text[32];
    snprintf(text, sizeof text, "%7.2f km", grid_distance(settings.Grid, dx_grid));
    panel_text(PANEL_HOME_DOPPLER, text);
    snprintf(text, sizeof text, "%5.2f", grid_bearing(settings.Grid, dx_grid));
    panel_text(PANEL_DX_DOPPLER, text);
}

static void panel_rig_button(void)
{
    if (doppler_mode == 3)
    {
        return;
    }
    panel_visible(PANEL_MUTUAL_DOPPLER, 0);
    panel_visible(PANEL_MUTUAL_DOPPLER_BUTTON, 0);
    if (settings.OmniRigFilename[0])
    {
        panel_text(PANEL_OMNIRIG, settings.OmniRigFilename);
        panel_style(PANEL_OMNIRIG, settings.OmniRigActive ? STYLE_DARKGREEN : STYLE_GRAY);
    }
    else
    {
        panel_style(PANEL_OMNIRIG, STYLE_GRAY);
        panel_text(PANEL_OMNIRIG, "OmniRig is inactive");
    }
}

static void panel_manual_buttons(void)
{
    int show_figures = !az_manual && !el_manual;
    panel_visible(PANEL_LHA_LABEL, show_figures);
    panel_visible(PANEL_LHA, show_figures);
    panel_visible(PANEL_DEC_LABEL, show_figures);
    panel_visible(PANEL_DECLINATION, show_figures);

    const int manual[2] = {az_manual, el_manual};
    const int button[2] = {PANEL_AZ_MANUAL, PANEL_EL_MANUAL};
    const int calibrate[2] = {PANEL_AZ_CALIBRATE, PANEL_EL_CALIBRATE};
    for (int axis = 0; axis < 2; axis++)
    {
        panel_style(button[axis], manual[axis] ? STYLE_DARKRED : STYLE_DARKGREEN);
        panel_text(button[axis], manual[axis] ? "MAN" : "AUTO");
        panel_enabled(calibrate[axis], manual[axis]);
        panel_visible(calibrate[axis], manual[axis]);
    }
}

void panel_update_display(void)
{
    panel_source_name();
    panel_stations();
    panel_doppler_buttons();
    panel_station_figures();
    panel_rig_button();
    panel_manual_buttons();
}

double panel_touch_limit(double angle, double low, double high)
{
    if (angle < low)
    {
        return low;
    }
    if (angle > high)
    {
        return high;
    }
    return angle;
}

const char *panel_source_angle_text(double angle)
{
    static char text[32];
    snprintf(text, sizeof text, "%7.2f", angle);
    return text;
}

const char *panel_show_source_angle(int control, double angle)
{
    const char *text = panel_source_angle_text(angle);
    panel_text(control, text);
    return text;
}

void panel_set_user_azimuth(double azimuth)
{
    source_az = azimuth;
    panel_show_source_angle(PANEL_SOURCE_AZIMUTH, azimuth);
    source_table[SOURCE_USER_AZEL].az = azimuth;
    settings.User_Azimuth = azimuth;
}

void panel_set_user_elevation(double elevation)
{
    source_el = elevation;
    panel_show_source_angle(PANEL_SOURCE_ELEVATION, elevation);
    source_table[SOURCE_USER_AZEL].el = elevation;
    settings.User_Elevation = elevation;
}

void panel_weather_dials(void)
{
    // Needles at 0 on a station without weather read as a calm at 0 degrees;
    // the words say there is nothing to read.
    int state = weather.WxStationAddr < 0 ? DIAL_NO_DATA : DIAL_LIVE;
    for (int dial = DIAL_WIND_SPEED; dial <= DIAL_ALTIMETER; dial++)
    {
        panel_dial_state(dial, state);
    }
}
