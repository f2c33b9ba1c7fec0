// The built-in radio sources of rows 12 to 23: fixed catalogue positions,
// used unchanged at every date (no precession).
#pragma once

#include <libnova/ln_types.h>

// The position of source row index in degrees (right ascension and
// declination). Returns 0, or -1 for a row that is no radio source.
int radio_source_position(int index, struct ln_equ_posn *position);
