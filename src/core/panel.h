// The panel's own logic, apart from the window: what UpdateDisplay shows and
// what a touch on the dials sets. It reaches the widgets only through the seam.
#pragma once

// Redraw what does not change with the cycle: names, station buttons, the
// Doppler and rig buttons' colours, the MAN/AUTO buttons.
void panel_update_display(void);
// The weather dials' state: "no data" while no weather station is set up.
void panel_weather_dials(void);

// A touched angle cut to the limits. Limits that run through north are not
// treated apart: the touch is for setting a fixed direction, not for driving.
double panel_touch_limit(double angle, double low, double high);
// A target angle as the source buttons show it, "%7.2f", in a static buffer
// that the next call overwrites.
const char *panel_source_angle_text(double angle);
// Put a target angle on a source button; returns the text shown.
const char *panel_show_source_angle(int control, double angle);
// Make the User Az/El source point where the operator touched or typed.
void panel_set_user_azimuth(double azimuth);
void panel_set_user_elevation(double elevation);
