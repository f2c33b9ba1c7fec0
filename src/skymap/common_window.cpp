#include "skymap/common_window.h"

#include "astro/source.h"
#include "core/state.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <cstdio>
#include <cstring>

// The Moon takes hours to cross the sky, so a look every few minutes finds
// every rise and set; only around a change is each minute looked at. A Moon
// that grazes the horizon for less than the step may be missed, and such a
// pass is no use for a contact anyway.
static const int common_window_step = 5;

static int moon_up(time_t from, int minute, double latitude, double longitude)
{
    time_t t = from + 60 * (time_t)minute;
    struct tm utc;
    gmtime_r(&t, &utc);
    SourceRecord moon;
    memset(&moon, 0, sizeof moon);
    source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &utc, latitude, longitude, settings.Frequency, moon);
    return moon.above_horizon != 0;
}

// up[m] for every minute 0..COMMON_WINDOW_MINUTES at one station.
static void station_minutes(time_t from, double latitude, double longitude, unsigned char *up)
{
    up[0] = (unsigned char)moon_up(from, 0, latitude, longitude);
    for (int m = 0; m < COMMON_WINDOW_MINUTES; m += common_window_step)
    {
        int next = m + common_window_step;
        up[next] = (unsigned char)moon_up(from, next, latitude, longitude);
        for (int i = m + 1; i < next; i++)
        {
            up[i] = up[m] == up[next] ? up[m] : (unsigned char)moon_up(from, i, latitude, longitude);
        }
    }
}

void common_window_find(CommonWindow *w, time_t utc, double home_latitude, double home_longitude, double dx_latitude,
                        double dx_longitude)
{
    static_assert(COMMON_WINDOW_MINUTES % common_window_step == 0, "the last minute must be a step");
    unsigned char home[COMMON_WINDOW_MINUTES + 1];
    unsigned char dx[COMMON_WINDOW_MINUTES + 1];
    w->from = utc - ((utc % 60) + 60) % 60;
    w->home_latitude = home_latitude;
    w->home_longitude = home_longitude;
    w->dx_latitude = dx_latitude;
    w->dx_longitude = dx_longitude;
    station_minutes(w->from, home_latitude, home_longitude, home);
    station_minutes(w->from, dx_latitude, dx_longitude, dx);
    w->count = 0;
    int open = -1;
    for (int m = 0; m <= COMMON_WINDOW_MINUTES && w->count < COMMON_WINDOW_SPANS; m++)
    {
        int both = home[m] && dx[m];
        if (both && open < 0)
        {
            open = m;
        }
        if (open >= 0 && (!both || m == COMMON_WINDOW_MINUTES))
        {
            w->first[w->count] = open;
            w->last[w->count] = both ? m : m - 1;
            w->count++;
            open = -1;
        }
    }
}

int common_window_update(CommonWindow *w, time_t utc, double home_latitude, double home_longitude, double dx_latitude,
                         double dx_longitude)
{
    time_t minute = utc - ((utc % 60) + 60) % 60;
    if (minute == w->from && home_latitude == w->home_latitude && home_longitude == w->home_longitude &&
        dx_latitude == w->dx_latitude && dx_longitude == w->dx_longitude)
    {
        return 0;
    }
    common_window_find(w, utc, home_latitude, home_longitude, dx_latitude, dx_longitude);
    return 1;
}

static int strip_x(int minute, int width)
{
    return minute * width / COMMON_WINDOW_MINUTES;
}

static void minute_text(const CommonWindow *w, int minute, char *text, int size)
{
    time_t t = w->from + 60 * (time_t)minute;
    struct tm utc;
    gmtime_r(&t, &utc);
    snprintf(text, (size_t)size, "%02d:%02d", utc.tm_hour, utc.tm_min);
}

// Hour marks at each whole UTC hour, a number every third hour.
static void strip_hours(QPainter *painter, const CommonWindow *w, int width, int height)
{
    painter->setPen(Qt::lightGray);
    int first_hour_minute = (int)((3600 - w->from % 3600) % 3600) / 60;
    for (int m = first_hour_minute; m <= COMMON_WINDOW_MINUTES; m += 60)
    {
        int x = strip_x(m, width);
        time_t t = w->from + 60 * (time_t)m;
        int hour = (int)(t / 3600 % 24);
        painter->drawLine(x, height - 3, x, height - 1);
        if (hour % 3 == 0 && x > 8 && x < width - 8)
        {
            char text[4];
            snprintf(text, sizeof text, "%02d", hour);
            painter->drawText(x - 5, height - 4, text);
        }
    }
}

// What the first span says: its first and last minute, or that it is open
// now or runs past the 24 hours looked at.
static void window_caption(const CommonWindow *w, char *text, int size)
{
    char start[8], end[8];
    if (w->count == 0)
    {
        snprintf(text, (size_t)size, "%s", "No common Moon window in the next 24 h");
        return;
    }
    minute_text(w, w->first[0], start, sizeof start);
    minute_text(w, w->last[0], end, sizeof end);
    int open_now = w->first[0] == 0, open_on = w->last[0] == COMMON_WINDOW_MINUTES;
    if (open_now && open_on)
    {
        snprintf(text, (size_t)size, "%s", "Common Moon for the next 24 h");
    }
    else if (open_now)
    {
        snprintf(text, (size_t)size, "Common Moon now - %s UTC", end);
    }
    else if (open_on)
    {
        snprintf(text, (size_t)size, "Common Moon from %s UTC", start);
    }
    else
    {
        snprintf(text, (size_t)size, "Common Moon %s - %s UTC", start, end);
    }
}

void common_window_draw(QPainter *painter, const CommonWindow *w, int width)
{
    const int height = 14;
    painter->save();
    QFont font("Arial");
    font.setPointSize(7);
    font.setWeight(QFont::Weight(600));
    painter->setFont(font);
    painter->setOpacity(0.6);
    painter->fillRect(0, 0, width, height, Qt::black);
    painter->setOpacity(1.0);
    for (int i = 0; i < w->count; i++)
    {
        int x0 = strip_x(w->first[i], width);
        int x1 = strip_x(w->last[i] + 1, width);
        painter->fillRect(x0, 1, x1 - x0 > 1 ? x1 - x0 : 1, height - 2, QColor(0, 150, 0));
    }
    strip_hours(painter, w, width, height);
    // The caption stands at the start of the first span, or ends at its end
    // when the span lies too far right; its own box keeps the hours off it.
    char text[64];
    window_caption(w, text, sizeof text);
    int text_width = QFontMetrics(font).horizontalAdvance(QString::fromLatin1(text)) + 6;
    int x = w->count ? strip_x(w->first[0], width) : 0;
    if (x + text_width > width)
    {
        x = (w->count ? strip_x(w->last[0] + 1, width) : width) - text_width;
    }
    x = x < 0 ? 0 : x;
    painter->fillRect(x, 1, text_width, height - 2, w->count ? QColor(0, 110, 0) : QColor(Qt::black));
    painter->setPen(Qt::white);
    painter->drawText(x + 3, height - 3, QString::fromLatin1(text));
    painter->restore();
}
