// Rise, set and transit of a source, by libnova, written in place into a row
// of the source table. libnova leaves the times alone when the source does not
// rise or set that day, so a circumpolar source keeps its last times.
#pragma once

#include "core/state.h"

#include <libnova/ln_types.h>

typedef int (*BodyRstFunction)(double JD, struct ln_lnlat_posn *observer, struct ln_rst_time *rst);

// One libnova call on the day of jd into the row; its result into rst_status.
int source_rst_body(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record);
// The same for a fixed position (degrees).
int source_rst_star(double jd, struct ln_lnlat_posn *observer, struct ln_equ_posn *object, SourceRecord &record);

// The Moon at jd: a Moon that is up shows the rise it has had, not its next.
// above_horizon must already hold the Moon's state at jd.
void source_rst_moon(double jd, struct ln_lnlat_posn *observer, SourceRecord &record);
// The Sun at jd: the rise it has had while it is up, and after sunset the
// next day's set.
void source_rst_sun(double jd, struct ln_lnlat_posn *observer, SourceRecord &record);
