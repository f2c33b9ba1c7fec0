#include "core/display.h"

#include "core/clock.h"
#include "core/cycle.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"

#include <cstdio>
#include <ctime>

static void display_source_position(const SourceRecord *row)
{
    char text[32];
    source_az = row->az;
    panel_dial_needle(DIAL_AZIMUTH, 1, source_az);
    snprintf(text, sizeof text, "%7.2f", source_az);
    panel_text(PANEL_SOURCE_AZIMUTH, text);
    panel_dial_source_text(DIAL_AZIMUTH, text);

    snprintf(text, sizeof text, "%5.2f", row->hour_angle);
    panel_text(PANEL_LHA, text);
    snprintf(text, sizeof text, "%5.2f", row->dec);
    panel_text(PANEL_DECLINATION, text);

    source_el = row->el;
    panel_dial_needle(DIAL_ELEVATION, 1, source_el);
    snprintf(text, sizeof text, "%7.2f", source_el);
    panel_text(PANEL_SOURCE_ELEVATION, text);
    panel_dial_source_text(DIAL_ELEVATION, text);
}

void display_group(int source, int slider)
{
    time_t now = clock_utc();
    struct tm tm;
    gmtime_r(&now, &tm);

    int mask = cycle_display_mask(refresh_now, source, last_tracking_source, tm.tm_sec);
    last_tracking_source = source;
    panel_text(PANEL_DATE_TIME, TimeText(&tm));

    // A TrackingSource from a hand-edited file may name no row; show nothing then.
    static const SourceRecord no_row = {};
    const SourceRecord *row = source >= 0 && source < SOURCE_COUNT ? &source_table[source] : &no_row;
    display_source_position(row);
    if (mask == 15)
    {
        panel_update_display();
    }
    if (slider == 0)
    {
        panel_dial_repaint(DIAL_AZIMUTH);
        panel_dial_repaint(DIAL_ELEVATION);
    }
}
