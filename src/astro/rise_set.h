// Rise, set and transit of a source, by libnova, written in place into a row
// of the source table. libnova leaves the times alone when the source does not
// rise or set that day, so a circumpolar source keeps its last times.
//
// libnova's searches for the Sun, the Moon and the planets start from the
// instant they are given, so their answers drift by seconds to minutes within
// a day and cost up to 8 ms each (the Moon). Here they are asked at fixed
// instants of each UT day (its 0h, and a day before and after) and kept per
// body, station and day; each call then picks from those answers the events
// that the instant needs. A row is thus a function of the instant, the
// station and the position alone, whether or not its day was kept.
#pragma once

#include "core/state.h"

#include <libnova/ln_types.h>

typedef int (*BodyRstFunction)(double JD, struct ln_lnlat_posn *observer, struct ln_rst_time *rst);

// A fixed position (degrees) on the day of jd, into the row; libnova's
// result into rst_status.
int source_rst_star(double jd, struct ln_lnlat_posn *observer, struct ln_equ_posn *object, SourceRecord &record);

// A planet at jd: the last rise, set and transit within the day before, which
// may all lie in the past; there is no search for the next event.
void source_rst_recent(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record);

// The Moon or the Sun at jd: one that is up shows the rise (and transit) it
// has had, one that is down the coming ones; the set is the coming one.
// above_horizon must already hold the body's state at jd.
void source_rst_pass(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record);

// Forget every kept day, so that the next calls ask libnova again.
void source_rst_forget(void);
