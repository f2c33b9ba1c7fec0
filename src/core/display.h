// The source and display group of the cycle: recompute the selected source
// and show it, with the clock, on the panel and the dials.
#pragma once

// One display tick for the selected source; slider is the panel page slider's
// position (the position dials are repainted only while they are on show).
void display_group(int source, int slider);
