// The tests' recorder behind the panel seam: what the station's logic last
// asked of each control, read back by the tests whether or not a window has
// registered its widgets.
#pragma once

#include "core/panel_seam.h"

extern char panel_last_text[PANEL_COUNT][64];
extern int panel_last_style[PANEL_COUNT];
extern int panel_last_visible[PANEL_COUNT];
extern int panel_last_enabled[PANEL_COUNT];
extern char panel_last_status[128];
extern int panel_dial_repaints[DIAL_COUNT];
extern int panel_dial_states[DIAL_COUNT];

// Forget what was asked and put the recorder behind the seam.
void panel_record_start(void);
