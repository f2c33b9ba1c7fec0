#include "astro/rise_set.h"

#include <libnova/lunar.h>
#include <libnova/rise_set.h>
#include <libnova/solar.h>

// The record lays rise, set and transit out as libnova's ln_rst_time; going
// through a copy keeps the aliasing rules and the in-place meaning both.
static void rst_load(const SourceRecord &record, struct ln_rst_time *rst)
{
    rst->rise = record.rise;
    rst->set = record.set;
    rst->transit = record.transit;
}

static void rst_store(const struct ln_rst_time *rst, SourceRecord &record)
{
    record.rise = rst->rise;
    record.set = rst->set;
    record.transit = rst->transit;
}

int source_rst_body(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record)
{
    struct ln_rst_time rst;
    rst_load(record, &rst);
    record.rst_status = function(jd, observer, &rst);
    rst_store(&rst, record);
    return record.rst_status;
}

int source_rst_star(double jd, struct ln_lnlat_posn *observer, struct ln_equ_posn *object, SourceRecord &record)
{
    struct ln_rst_time rst;
    rst_load(record, &rst);
    record.rst_status = ln_get_object_rst(jd, observer, object, &rst);
    rst_store(&rst, record);
    return record.rst_status;
}

// libnova answers for the day of jd, so a Moon that rose before 00:00 UT
// gets today's later rise. Then yesterday's answer gives the rise it had, and
// its set too if that is still to come.
void source_rst_moon(double jd, struct ln_lnlat_posn *observer, SourceRecord &record)
{
    source_rst_body(ln_get_lunar_rst, jd, observer, record);
    double kept_set = record.set;
    if (record.above_horizon && record.rise > jd)
    {
        source_rst_body(ln_get_lunar_rst, jd - 1.0, observer, record);
        if (!(record.set > jd))
        {
            record.set = kept_set;
        }
    }
}

// As for the Moon, and once the day's set has passed (or the answer's set
// comes before its rise) the operator wants the coming set, from the next day.
void source_rst_sun(double jd, struct ln_lnlat_posn *observer, SourceRecord &record)
{
    source_rst_body(ln_get_solar_rst, jd, observer, record);
    double rise = record.rise;
    double set = record.set;
    if (record.above_horizon && rise > jd)
    {
        source_rst_body(ln_get_solar_rst, jd - 1.0, observer, record);
        rise = record.rise;
        if (record.set > jd)
        {
            set = record.set;
        }
    }
    if (jd > set || rise > set)
    {
        source_rst_body(ln_get_solar_rst, jd + 1.0, observer, record);
        set = record.set;
    }
    record.rise = rise;
    record.set = set;
}
