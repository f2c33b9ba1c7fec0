#include "astro/rise_set.h"

#include <cmath>
#include <libnova/nutation.h>
#include <libnova/rise_set.h>

enum
{
    RST_DAY_SLOTS = 32 // ten bodies at the home and the DX station, with room for the map's clock
};

// libnova's answers for one body and station, asked at 0h UT of a day and at
// the same time a day before and a day after. A body that does not rise or
// set in an answer's day leaves that answer's status non-zero.
struct RstDay
{
    BodyRstFunction function;
    double latitude, longitude;
    double day;
    int status[3];
    struct ln_rst_time times[3];
};

static RstDay rst_days[RST_DAY_SLOTS];
static int rst_next_slot;

void source_rst_forget(void)
{
    for (RstDay &d : rst_days)
    {
        d.function = nullptr;
    }
    rst_next_slot = 0;
}

static const RstDay *rst_day(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer)
{
    double day = floor(jd - 0.5) + 0.5;
    for (const RstDay &d : rst_days)
    {
        if (d.function == function && d.day == day && d.latitude == observer->lat && d.longitude == observer->lng)
        {
            return &d;
        }
    }
    RstDay *d = &rst_days[rst_next_slot];
    rst_next_slot = (rst_next_slot + 1) % RST_DAY_SLOTS;
    d->function = function;
    d->latitude = observer->lat;
    d->longitude = observer->lng;
    d->day = day;
    for (int k = 0; k < 3; k++)
    {
        // libnova reuses a nutation within 0.1 day; one far away makes its
        // search start afresh, so an answer never depends on what came before.
        struct ln_nutation nutation;
        ln_get_nutation(day + 1000.0, &nutation);
        d->times[k] = {NAN, NAN, NAN};
        d->status[k] = function(day + k - 1, observer, &d->times[k]);
    }
    return d;
}

// The latest event of one kind at or before jd, or the earliest after it,
// among the answers that found any; NAN when there is none.
static double rst_pick(const RstDay *d, double ln_rst_time::*event, double jd, bool after)
{
    double best = NAN;
    for (int k = 0; k < 3; k++)
    {
        double t = d->times[k].*event;
        if (d->status[k] != 0 || std::isnan(t) || (after ? t <= jd : t > jd))
        {
            continue;
        }
        if (std::isnan(best) || (after ? t < best : t > best))
        {
            best = t;
        }
    }
    return best;
}

// Like libnova, an event that was not found leaves the row's time as it was.
static void rst_store(double *field, double t)
{
    if (!std::isnan(t))
    {
        *field = t;
    }
}

int source_rst_star(double jd, struct ln_lnlat_posn *observer, struct ln_equ_posn *object, SourceRecord &record)
{
    struct ln_rst_time rst = {record.rise, record.set, record.transit};
    record.rst_status = ln_get_object_rst(jd, observer, object, &rst);
    record.rise = rst.rise;
    record.set = rst.set;
    record.transit = rst.transit;
    return record.rst_status;
}

void source_rst_recent(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record)
{
    const RstDay *d = rst_day(function, jd, observer);
    record.rst_status = d->status[1];
    if (record.rst_status == 0)
    {
        rst_store(&record.rise, rst_pick(d, &ln_rst_time::rise, jd, false));
        rst_store(&record.set, rst_pick(d, &ln_rst_time::set, jd, false));
        rst_store(&record.transit, rst_pick(d, &ln_rst_time::transit, jd, false));
    }
}

void source_rst_pass(BodyRstFunction function, double jd, struct ln_lnlat_posn *observer, SourceRecord &record)
{
    const RstDay *d = rst_day(function, jd, observer);
    record.rst_status = d->status[1];
    if (record.rst_status == 0)
    {
        bool coming = !record.above_horizon;
        rst_store(&record.rise, rst_pick(d, &ln_rst_time::rise, jd, coming));
        rst_store(&record.transit, rst_pick(d, &ln_rst_time::transit, jd, coming));
        rst_store(&record.set, rst_pick(d, &ln_rst_time::set, jd, true));
    }
}
