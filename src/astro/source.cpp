#include "astro/source.h"

#include "astro/day_number.h"
#include "astro/moon.h"
#include "astro/path.h"
#include "astro/planets.h"
#include "astro/precession.h"
#include "astro/precise_moon.h"
#include "astro/radio_sources.h"
#include "astro/refraction.h"
#include "astro/rise_set.h"
#include "astro/sky_temperature.h"
#include "astro/sun.h"

#include <cmath>
#include <libnova/earth.h>
#include <libnova/julian_day.h>
#include <libnova/lunar.h>
#include <libnova/nutation.h>
#include <libnova/solar.h>
#include <libnova/transform.h>

// Everything a branch needs about the call.
struct SourceCall
{
    const struct tm *utc;
    double jd;
    int mask;
    double frequency;
    struct ln_lnlat_posn observer; // libnova's order: longitude first, east positive
};

double source_julian_day(const struct tm *utc)
{
    struct tm fields = *utc;
    struct ln_date date;
    ln_get_date_from_tm(&fields, &date);
    return ln_get_julian_day(&date);
}

// libnova keeps its last nutation and reuses it for any date within 0.1 day,
// so its transforms would depend on what was asked before. Moving the cache
// far away and back to this instant makes each call a function of its
// arguments alone, which the table, the map and our own checks rely on.
static void source_pin_nutation(double jd)
{
    struct ln_nutation nutation;
    ln_get_nutation(jd + 1000.0, &nutation);
    ln_get_nutation(jd, &nutation);
}

void sub_point(const struct tm *utc, double ra_hours, double dec, double *lat, double *lng)
{
    double ut = utc->tm_hour + utc->tm_min / 60.0 + utc->tm_sec / 3600.0;
    double d = day_number(utc->tm_year + 1900, utc->tm_mon + 1, utc->tm_mday, ut);
    // 4.894961213 rad is the sidereal angle at the noon of day 1.5, and the
    // rate is the sidereal day in radians per day. fmod keeps the sign, so L
    // is in -360..0 for every date from 2000; before 2000 the longitude would
    // come out above 180, which no clock of the station ever shows.
    double G = (4.894961213 + 6.300388099 * d) * 57.29577951307855;
    double L = fmod(15.0 * ra_hours - G, 360.0);
    *lng = L + 180.0;
    *lat = dec;
}

// A fixed position (degrees) to azimuth from north and elevation. libnova
// counts azimuth from the south.
static void source_star_horizontal(double ra_degrees, double dec, SourceCall *c, SourceRecord &record)
{
    struct ln_equ_posn equ = {ra_degrees, dec};
    struct ln_hrz_posn hrz;
    ln_get_hrz_from_equ(&equ, &c->observer, c->jd, &hrz);
    record.az = fmod(hrz.az + 180.0, 360.0);
    record.el = refraction_apparent_elevation(hrz.alt);
}

// Radio sources and the user's RA/Dec are given at J2000. With precession on,
// the antenna looks where the source stands on the sky of the date; the row
// still shows the position as given, which the operator types and checks.
static struct ln_equ_posn source_of_date(double ra_degrees, double dec, const SourceCall *c)
{
    struct ln_equ_posn equ = {ra_degrees, dec};
    if (settings.Precession)
    {
        precession_equ_of_date(ra_degrees, dec, c->jd, &equ.ra, &equ.dec);
    }
    return equ;
}

// Sky temperature behind a position of date, by its ecliptic longitude.
static double source_sky_temperature(struct ln_equ_posn equ, SourceCall *c)
{
    struct ln_lnlat_posn ecl;
    ln_get_ecl_from_equ(&equ, c->jd, &ecl);
    return sky_temperature(c->frequency, ecl.lng);
}

// The star rule with the sub-point: planets, radio sources, User RA/Dec. The
// row shows (ra_hours, dec); the horizon sees the position of date.
static void source_fixed_position(double ra_hours, double dec, struct ln_equ_posn of_date, SourceCall *c,
                                  SourceRecord &record)
{
    record.ra = ra_hours;
    record.dec = dec;
    source_star_horizontal(of_date.ra, of_date.dec, c, record);
    sub_point(c->utc, ra_hours, dec, &record.sub_lat, &record.sub_lng);
}

// The home station stands at its own height; any other place (the DX
// station) at the 200 m that the series Moon assumes.
static double source_station_height(const SourceCall *c)
{
    int home = c->observer.lat == settings.Latitude && c->observer.lng == settings.Longitude;
    return home ? settings.StationHeight : 200.0;
}

static void source_moon(SourceCall *c, SourceRecord &record)
{
    if (c->mask & SOURCE_MASK_POSITION)
    {
        if (settings.PreciseMoon)
        {
            precise_moon_calculate(c->utc, c->observer.lat, c->observer.lng, source_station_height(c), c->frequency,
                                   &record);
        }
        else
        {
            moon_calculate(c->utc, c->observer.lat, c->observer.lng, c->frequency, &record);
        }
        struct ln_equ_posn equ = {record.ra, record.dec};
        record.ra /= 15.0;
        sub_point(c->utc, record.ra, record.dec, &record.sub_lat, &record.sub_lng);
        record.sky_temp = source_sky_temperature(equ, c);
        record.path_loss = path_loss_db(record.distance);
        record.degradation = path_degradation_db(record.path_loss, record.sky_temp, c->frequency);
    }
    if (c->mask & SOURCE_MASK_PHASE)
    {
        record.phase = ln_get_lunar_disk(c->jd);
    }
    if (c->mask & SOURCE_MASK_RISE_SET)
    {
        source_rst_pass(ln_get_lunar_rst, c->jd, &c->observer, record);
    }
}

static void source_sun(SourceCall *c, SourceRecord &record)
{
    if (c->mask & SOURCE_MASK_POSITION)
    {
        sun_calculate(c->utc, c->observer.lat, c->observer.lng, &record);
        record.el = refraction_apparent_elevation(record.el);
        record.above_horizon = record.el >= 0.0;
        record.ra /= 15.0;
        sub_point(c->utc, record.ra, record.dec, &record.sub_lat, &record.sub_lng);
    }
    if (c->mask & SOURCE_MASK_DISTANCE)
    {
        record.distance = ln_get_earth_solar_dist(c->jd);
    }
    if (c->mask & SOURCE_MASK_PHASE)
    {
        record.phase = 1.0;
    }
    if (c->mask & SOURCE_MASK_RISE_SET)
    {
        source_rst_pass(ln_get_solar_rst, c->jd, &c->observer, record);
    }
}

// Rise and set of the fixed and slow sources are asked for the day before:
// their times may lie in the past, and nothing looks for the next event.
static void source_user_radec(SourceCall *c, SourceRecord &record)
{
    if (c->mask & SOURCE_MASK_POSITION)
    {
        struct ln_equ_posn equ = source_of_date(settings.User_RA * 15.0, settings.User_Declination, c);
        source_fixed_position(settings.User_RA, settings.User_Declination, equ, c, record);
        record.sky_temp = source_sky_temperature(equ, c);
    }
    if (c->mask & SOURCE_MASK_RISE_SET)
    {
        struct ln_equ_posn equ = source_of_date(record.ra * 15.0, record.dec, c);
        source_rst_star(c->jd - 1.0, &c->observer, &equ, record);
    }
    record.distance = 0.0;
    record.doppler_hz = 0.0;
    record.phase = 0.0;
}

static void source_planet(const PlanetFunctions *planet, SourceCall *c, SourceRecord &record)
{
    if (c->mask & SOURCE_MASK_POSITION)
    {
        struct ln_equ_posn equ;
        planet->equ_coords(c->jd, &equ);
        source_fixed_position(equ.ra / 15.0, equ.dec, equ, c, record);
    }
    if (c->mask & SOURCE_MASK_DISTANCE)
    {
        record.distance = planet->earth_dist(c->jd);
    }
    if (c->mask & SOURCE_MASK_PHASE)
    {
        record.phase = planet->disk(c->jd);
    }
    if (c->mask & SOURCE_MASK_RISE_SET)
    {
        source_rst_recent(planet->rst, c->jd, &c->observer, record);
    }
}

static void source_radio(struct ln_equ_posn *equ, SourceCall *c, SourceRecord &record)
{
    struct ln_equ_posn of_date = source_of_date(equ->ra, equ->dec, c);
    if (c->mask & SOURCE_MASK_POSITION)
    {
        source_fixed_position(equ->ra / 15.0, equ->dec, of_date, c, record);
    }
    if (c->mask & SOURCE_MASK_RISE_SET)
    {
        source_rst_star(c->jd - 1.0, &c->observer, &of_date, record);
    }
}

// A direction given from outside (the user's, or a remote program's) has no
// sky figures: they are cleared, and az, el stay as they were written.
static void source_clear_sky_figures(SourceRecord &record)
{
    record.rst_status = 0;
    record.ra = 0.0;
    record.dec = 0.0;
    record.distance = 0.0;
    record.doppler_hz = 0.0;
    record.phase = 0.0;
    record.rise = 0.0;
    record.set = 0.0;
    record.transit = 0.0;
}

static void source_branch(int index, SourceCall *c, SourceRecord &record)
{
    struct ln_equ_posn radio;
    if (index == SOURCE_MOON)
    {
        source_moon(c, record);
    }
    else if (index == SOURCE_SUN)
    {
        source_sun(c, record);
    }
    else if (index == SOURCE_USER_AZEL)
    {
        record.az = settings.User_Azimuth;
        record.el = settings.User_Elevation;
        source_clear_sky_figures(record);
    }
    else if (index == SOURCE_USER_RADEC)
    {
        source_user_radec(c, record);
    }
    else if (const PlanetFunctions *planet = planet_functions(index))
    {
        source_planet(planet, c, record);
    }
    else if (index >= SOURCE_EASYCOMM && index <= SOURCE_PSTROTATOR)
    {
        source_clear_sky_figures(record);
    }
    else if (radio_source_position(index, &radio) == 0)
    {
        source_radio(&radio, c, record);
    }
}

void source_calculate(int index, int mask, const struct tm *utc, double latitude, double longitude, double frequency,
                      SourceRecord &record)
{
    SourceCall c;
    c.utc = utc;
    c.jd = source_julian_day(utc);
    // Rise and set rules read the position of this instant, so they bring it.
    c.mask = mask & SOURCE_MASK_RISE_SET ? mask | SOURCE_MASK_POSITION : mask;
    c.frequency = frequency;
    c.observer.lng = longitude;
    c.observer.lat = latitude;
    source_pin_nutation(c.jd);

    source_branch(index, &c, record);

    record.computed = 1;
    if (record.el >= 0.0)
    {
        record.above_horizon = 1;
    }
    else
    {
        record.above_horizon = 0;
        record.doppler_hz = 0.0;
    }
    // The remote rows' enables belong to their protocols, which hold the drive
    // back until a valid report has come.
    if (index < SOURCE_EASYCOMM || index > SOURCE_PSTROTATOR)
    {
        record.az_tracking_enable = 1;
        record.el_tracking_enable = 1;
    }
}
