// The panel's own logic, apart from the window: what UpdateDisplay shows and
// what a touch on the dials sets. It reaches the widgets only through the seam.
#pragma once

// Redraw what does not change with the cycle: names, station buttons, the
// Doppler and rig buttons' colours, the MAN/AUTO buttons.
void panel_update_display(void);

// A touched angle cut to the limits. Limits that run through north are not
// treated apart: the touch is for setting a fixed direction, not for driving.
double panel_touch_limit(double angle, double low, double high);
// Make the User Az/El source point where the operator touched or typed.
void panel_set_user_azimuth(double azimuth);
void panel_set_user_elevation(double elevation);
