// What the panel's buttons do, apart from the window: the window's slots call
// these, so a test presses a button without one.
#pragma once

// A dialog that stops the cycle first halts the drive: nothing may run while
// no position is read. Call begin after stopping the timer and end before
// starting it again; tracking stays off until the operator presses AUTO.
void panel_pause_begin(void);
void panel_pause_end(void);

// The tracking parameters were accepted: save, redraw, new limit arcs.
// slider is the dial page slider's position.
void panel_antenna_accepted(int slider);

// The source buttons edit the User Az/El target on the keypad.
void panel_az_source_pressed(void);
void panel_el_source_pressed(void);

// CAL: change the offset so the antenna reads what the source reads.
void panel_az_calibrate_pressed(void);
void panel_el_calibrate_pressed(void);

// The drive's part of a new tracking source: a remote source stops the
// antenna until AUTO is pressed and a valid report has come.
void panel_setup_tracking_source(void);
