#include "core/display.h"

#include "astro/source.h"
#include "core/clock.h"
#include "core/cycle.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <cstdio>
#include <ctime>
#include <libnova/julian_day.h>

static void display_source_position(const SourceRecord *row)
{
    char text[32];
    source_az = row->az;
    panel_dial_needle(DIAL_AZIMUTH, 1, source_az);
    panel_dial_source_text(DIAL_AZIMUTH, panel_show_source_angle(PANEL_SOURCE_AZIMUTH, source_az));

    snprintf(text, sizeof text, "%5.2f", row->hour_angle);
    panel_text(PANEL_LHA, text);
    snprintf(text, sizeof text, "%5.2f", row->dec);
    panel_text(PANEL_DECLINATION, text);

    source_el = row->el;
    panel_dial_needle(DIAL_ELEVATION, 1, source_el);
    panel_dial_source_text(DIAL_ELEVATION, panel_show_source_angle(PANEL_SOURCE_ELEVATION, source_el));
}

// format takes month, day, hour and minute.
static void display_date_text(int control, const char *format, double jd)
{
    struct ln_date date;
    ln_get_date(jd, &date);
    char text[48];
    snprintf(text, sizeof text, format, date.months, date.days, date.hours, date.minutes);
    panel_text(control, text);
}

// The Moon's distance reads better in kilometres; the record keeps it as
// km / 1.5e8, so that factor brings it back.
static void display_distance(int source, const SourceRecord *row)
{
    char text[32];
    if (source == SOURCE_MOON)
    {
        snprintf(text, sizeof text, "%6.0f km", row->distance * 1.5e8);
    }
    else
    {
        snprintf(text, sizeof text, "%9.6f AU", row->distance);
    }
    panel_text(PANEL_AU, text);
}

static void display_hertz(int control, double hertz)
{
    char text[32];
    snprintf(text, sizeof text, "%7.0f Hz", hertz);
    panel_text(control, text);
}

// The DX station's own echo needs only the position bit; its row is the
// selected source seen from the DX station.
static void display_doppler(int source, const struct tm *tm, const SourceRecord *row)
{
    if (home_station_valid)
    {
        display_hertz(PANEL_HOME_DOPPLER, row->doppler_hz);
    }
    else
    {
        panel_text(PANEL_HOME_DOPPLER, " ");
    }
    if (dx_station_valid)
    {
        source_calculate(source, SOURCE_MASK_POSITION, tm, dx_latitude, dx_longitude, settings.Frequency,
                         dx_source_record);
        display_hertz(PANEL_DX_DOPPLER, dx_source_record.doppler_hz);
    }
    else
    {
        panel_text(PANEL_DX_DOPPLER, " ");
    }
    if (doppler_mode == 3)
    {
        display_hertz(PANEL_MUTUAL_DOPPLER, (dx_source_record.doppler_hz + row->doppler_hz) / 2.0);
    }
}

void display_group(int source, int slider)
{
    time_t now = clock_utc();
    struct tm tm;
    gmtime_r(&now, &tm);

    int mask = cycle_display_mask(refresh_now, source, last_tracking_source, tm.tm_sec);
    SourceRecord *row = source_row(source);
    source_calculate(source, mask, &tm, settings.Latitude, settings.Longitude, settings.Frequency, *row);
    last_tracking_source = source;
    panel_text(PANEL_DATE_TIME, TimeText(&tm));

    display_source_position(row);
    if (mask == 15)
    {
        panel_update_display();
    }
    if (mask & SOURCE_MASK_RISE_SET)
    {
        display_date_text(PANEL_RISE_TIME, "Rise: %02d-%02d %02d:%02d", row->rise);
        display_date_text(PANEL_SET_TIME, "Set: %02d-%02d %02d:%02d", row->set);
    }
    if (mask & SOURCE_MASK_DISTANCE)
    {
        display_distance(source, row);
    }
    if (doppler_mode != 0)
    {
        display_doppler(source, &tm, row);
    }
    if (slider == 0)
    {
        panel_dial_repaint(DIAL_AZIMUTH);
        panel_dial_repaint(DIAL_ELEVATION);
    }
}
