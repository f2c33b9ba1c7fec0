#include "skymap/map_layers.h"

#include "astro/source.h"
#include "core/state.h"
#include "skymap/common_window.h"
#include "skymap/map_projection.h"
#include "skymap/sky_catalogue.h"

#include <QColor>
#include <QDebug>
#include <QPainter>
#include <QPen>
#include <QString>
#include <cstdio>
#include <cstring>

const MapBody map_bodies[] = {
    {SOURCE_SUN, &OverlaySettings::SunOverlay, MAP_ICON_SUN},
    {SOURCE_MOON, &OverlaySettings::MoonOverlay, MAP_ICON_MOON},
    {4, &OverlaySettings::MercuryOverlay, MAP_ICON_MERCURY},
    {6, &OverlaySettings::MarsOverlay, MAP_ICON_MARS},
    {5, &OverlaySettings::VenusOverlay, MAP_ICON_VENUS},
    {7, &OverlaySettings::JupiterOverlay, MAP_ICON_JUPITER},
    {8, &OverlaySettings::SaturnOverlay, MAP_ICON_SATURN},
    {10, &OverlaySettings::NeptuneOverlay, MAP_ICON_NEPTUNE},
    {9, &OverlaySettings::UranusOverlay, MAP_ICON_URANUS},
    {11, &OverlaySettings::PlutoOverlay, MAP_ICON_PLUTO},
};
const int map_body_count = (int)(sizeof map_bodies / sizeof map_bodies[0]);

// The radio sources of rows 12 to 23, by the names the map writes beside them.
static const char *const radio_labels[] = {"Sagittarius", "Cassiopeia", "Cygnus",  "Taurus",   "Virgo", "Centaurus",
                                           "Orion",       "M17",        "Perseus", "Aquarius", "Leo",   "Pictor"};
static const int radio_first_row = 12;
static const int radio_taurus_row = 15;

int map_load_pictures(MapPictures *p, const QString &folder, int width, int height)
{
    static const char *const icon_files[MAP_ICON_COUNT] = {"menu-icon.png",    "dish-icon.png",    "moon-icon.png",
                                                           "sun-icon.png",     "mercury-icon.png", "mars-icon.png",
                                                           "venus-icon.png",   "saturn-icon.png",  "jupiter-icon.png",
                                                           "neptune-icon.png", "uranus-icon.png",  "pluto-icon.png"};
    p->width = width;
    p->height = height;
    for (int i = 0; i < MAP_ICON_COUNT; i++)
    {
        p->icons[i].load(folder + "/pixmaps/" + icon_files[i]);
    }
    if (!p->source.load(folder + "/pixmaps/nasa-topo_800.jpg"))
    {
        return -1;
    }
    QImage world = p->source.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    p->map = QPixmap::fromImage(world);
    p->sun_shade = world.convertToFormat(QImage::Format_Grayscale8);
    p->moon_shade = p->sun_shade;
    p->sky_noise.load(folder + "/pixmaps/skynoise_800.png");
    map_draw_base(p);
    return 0;
}

// Paint a picture turned round the map: its columns from cut on at x = 0,
// the columns before cut after them.
static void map_paint_wrapped(QPainter *painter, const QImage &picture, int cut, int width, int height)
{
    int at = width - cut;
    QRect source, target;
    source.setCoords(cut, 0, width, height);
    target.setCoords(0, 0, at, height);
    painter->drawImage(target, picture, source);
    if (trace_debug)
    {
        qDebug("Copying sky_overlay(%d,%d,%d,%d) to pixmap(%d,%d,%d,%d)", source.left(), source.top(), source.right(),
               source.bottom(), target.left(), target.top(), target.right(), target.bottom());
    }
    source.setCoords(0, 0, cut, height);
    target.setCoords(at, 0, width, height);
    painter->drawImage(target, picture, source);
    if (trace_debug)
    {
        qDebug("Copying sky_overlay(%d,%d,%d,%d) to pixmap(%d,%d,%d,%d)", source.left(), source.top(), source.right(),
               source.bottom(), target.left(), target.top(), target.right(), target.bottom());
    }
}

static QFont map_font(int points)
{
    QFont font("Arial");
    font.setPointSize(points);
    font.setWeight(QFont::Weight(600));
    return font;
}

static void grid_pen(QPainter *painter, Qt::GlobalColor colour)
{
    painter->setPen(QPen(QColor(colour), 1, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin));
}

static void map_draw_grid(QPainter *painter, const QRect &r)
{
    char text[8];
    int w = r.width(), h = r.height();
    if (overlays.LatitudeGridlines)
    {
        for (int i = 1; i <= 17; i++)
        {
            int y = r.top() + (int)(i * h / 18.0);
            grid_pen(painter, i == 9 ? Qt::lightGray : Qt::darkGray);
            painter->drawLine(r.left() + 1, y, r.right() - 1, y);
        }
        grid_pen(painter, Qt::white);
        for (int i = 1; i <= 17; i++)
        {
            int latitude = 90 - 10 * i;
            snprintf(text, sizeof text, latitude > 0 ? "+%-2d" : "%-2d", latitude);
            painter->drawText(r.left(), r.top() + 4 + (int)(i * h / 18.0), text);
        }
    }
    if (overlays.LongitudeGridlines)
    {
        for (int i = 1; i <= 23; i++)
        {
            int x = r.left() + (int)(i * w / 24.0);
            grid_pen(painter, i == 12 ? Qt::lightGray : Qt::darkGray);
            painter->drawLine(x, r.top() + 1, x, r.bottom() - 1);
        }
        grid_pen(painter, Qt::black);
        for (int i = 1; i <= 23; i++)
        {
            int length = snprintf(text, sizeof text, "%02dh", ((overlays.MapOffset - i + 12) % 24 + 24) % 24);
            painter->drawText(r.left() + (int)(i * w / 24.0) - 3 * length, r.bottom() - 1, text);
        }
    }
}

void map_draw_base(MapPictures *p)
{
    if (p->map.isNull())
    {
        return;
    }
    QImage world = p->source.scaled(p->width, p->height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    p->map = QPixmap::fromImage(world);
    QPainter painter(&p->map);
    if (overlays.MapOffset > 0)
    {
        map_paint_wrapped(&painter, world, map_world_cut(p->width, overlays.MapOffset), p->width, p->height);
    }
    painter.setFont(map_font(6));
    painter.setOpacity(1.0);
    map_draw_grid(&painter, p->map.rect());
}

void map_draw_overlay(QPainter *painter, const QImage &overlay, int width, int height)
{
    if (overlays.MapOffset == 0)
    {
        painter->drawImage(0, 0, overlay);
        return;
    }
    map_paint_wrapped(painter, overlay, map_overlay_cut(width, overlays.MapOffset), width, height);
}

void map_star_attributes(double magnitude, double dimension, QColor *color, int *radius)
{
    static const double limits[] = {-0.16, 0.15, 0.45, 0.68, 1.15, 1.6};
    static const QRgb colours[] = {0xa09eff, 0xa0d7ff, 0xd7e8ff, 0xffffff, 0xffffdc, 0xffe6aa, 0xffd7b1};
    int i = 0;
    while (i < (int)(sizeof limits / sizeof limits[0]) && dimension >= limits[i])
    {
        i++;
    }
    *color = QColor(colours[i]);
    *radius = magnitude < 0 ? 2 : 1;
}

static void sky_point(const struct tm *utc, double ra, double dec, int width, int height, QPoint *at)
{
    double latitude, longitude;
    int x, y;
    sub_point(utc, ra, dec, &latitude, &longitude);
    map_point(latitude, longitude, width, height, overlays.MapOffset, &x, &y);
    *at = QPoint(x, y);
}

int map_star_drawn(const DeepSkyObject *o, int magnitude_limit)
{
    return o->type >= 0 && o->type < 12 && (drawable_object_types & (1 << o->type)) && o->magnitude <= magnitude_limit;
}

void map_draw_stars(QPainter *painter, int group, const struct tm *utc, int width, int height)
{
    if (group < 0 || group >= CONSTELLATION_COUNT)
    {
        return;
    }
    const DeepSkyGroup *g = deep_sky_table[group];
    QColor color;
    QRgb pen_rgb = 0;
    int radius;
    for (int i = 0; i < g->count; i++)
    {
        const DeepSkyObject *o = &g->objects[i];
        if (!map_star_drawn(o, overlays.StarsMagnitude))
        {
            continue;
        }
        QPoint at;
        sky_point(utc, o->ra, o->dec, width, height, &at);
        map_star_attributes(o->magnitude, o->dimension, &color, &radius);
        // Only a new colour costs a pen and a brush.
        if (color.rgb() != pen_rgb)
        {
            painter->setPen(color);
            painter->setBrush(color);
            pen_rgb = color.rgb();
        }
        painter->drawEllipse(at, radius, radius);
    }
}

void map_draw_constellation(QPainter *painter, int group, const struct tm *utc, int width, int height)
{
    if (group < 0 || group >= CONSTELLATION_COUNT || boundary_table[group]->count < 1)
    {
        return;
    }
    const BoundaryGroup *g = boundary_table[group];
    QPoint before;
    double before_longitude = 0;
    for (int i = 0; i < g->count; i++)
    {
        double latitude, longitude;
        int x, y;
        sub_point(utc, g->points[i].ra, g->points[i].dec, &latitude, &longitude);
        map_point(latitude, longitude, width, height, overlays.MapOffset, &x, &y);
        QPoint at(x, y);
        if (i > 0)
        {
            int edge = map_edge(before_longitude, longitude);
            if (edge == MAP_EDGE_LINE)
            {
                painter->drawLine(at, before);
            }
            else if (edge == MAP_EDGE_EAST_SPLIT)
            {
                painter->drawLine(at, QPoint(width - 1, at.y()));
                painter->drawLine(before, QPoint(1, before.y()));
            }
            else
            {
                painter->drawLine(before, QPoint(width - 1, before.y()));
                painter->drawLine(at, QPoint(1, at.y()));
            }
        }
        before = at;
        before_longitude = longitude;
    }
}

// A text whose centre lies about above the point: three pixels a character.
static void label_at(QPainter *painter, int x, int y, const char *text)
{
    painter->drawText(x - 3 * (int)strlen(text), y - 8, QString::fromLatin1(text));
}

static void map_draw_sky_noise(QPainter *painter, const MapPictures *p)
{
    painter->setOpacity(0.3);
    QPoint at;
    const SourceRecord &sgr = source_table[radio_first_row];
    map_point(sgr.sub_lat, sgr.sub_lng, p->width, p->height, overlays.MapOffset, &at.rx(), &at.ry());
    int cut = map_sky_noise_cut(p->width, at.x());
    if (trace_debug)
    {
        qDebug(at.x() > sky_noise_anchor_x ? "Shifting sky_overlay to the RIGHT by %d pixels"
                                           : "Shifting sky_overlay to the LEFT by %d pixels",
               cut);
    }
    map_paint_wrapped(painter, p->sky_noise, cut, p->width, p->height);
}

static void map_draw_radio_sources(QPainter *painter, const MapPictures *p)
{
    painter->setPen(Qt::yellow);
    painter->setBrush(Qt::yellow);
    painter->setOpacity(1.0);
    for (int row = radio_first_row; row < radio_first_row + 12; row++)
    {
        const SourceRecord &r = source_table[row];
        if (!r.computed)
        {
            continue;
        }
        int x, y;
        map_point(r.sub_lat, r.sub_lng, p->width, p->height, overlays.MapOffset, &x, &y);
        painter->drawEllipse(QPoint(row == radio_taurus_row ? x : x + 6, y), 2, 2);
        label_at(painter, x + 6, y, radio_labels[row - radio_first_row]);
    }
}

static void icon_at(QPainter *painter, const QPixmap &icon, double latitude, double longitude, const MapPictures *p)
{
    int x, y;
    map_point(latitude, longitude, p->width, p->height, overlays.MapOffset, &x, &y);
    painter->drawPixmap(x - icon.width() / 2, y - icon.height() / 2, icon);
}

static int map_draw_catalogue(QPainter *painter, const MapPictures *p, const struct tm *utc)
{
    int painted = 0;
    if (overlays.StarsOverlay)
    {
        painter->setPen(Qt::darkGray);
        painter->setBrush(Qt::lightGray);
        painter->setOpacity(0.3);
        for (int g = 0; g < CONSTELLATION_COUNT; g++)
        {
            map_draw_stars(painter, g, utc, p->width, p->height);
        }
        painted |= MAP_LAYER_STARS;
    }
    painter->setOpacity(1.0);
    if (overlays.ConstellationsOverlay)
    {
        painter->setPen(Qt::black);
        for (int g = 0; g < CONSTELLATION_COUNT; g++)
        {
            map_draw_constellation(painter, g, utc, p->width, p->height);
            QPoint at;
            sky_point(utc, constellation_table[g].ra, constellation_table[g].dec, p->width, p->height, &at);
            label_at(painter, at.x(), at.y(), constellation_table[g].abbreviation);
        }
        painted |= MAP_LAYER_CONSTELLATIONS;
    }
    return painted;
}

static int map_draw_bodies(QPainter *painter, const MapPictures *p)
{
    int painted = 0;
    painter->setOpacity(0.2);
    if (source_table[SOURCE_SUN].computed && overlays.SunShadingOverlay)
    {
        map_draw_overlay(painter, p->sun_shade, p->width, p->height);
        painted |= MAP_LAYER_SUN_SHADE;
    }
    if (source_table[SOURCE_MOON].computed && overlays.MoonShadingOverlay)
    {
        map_draw_overlay(painter, p->moon_shade, p->width, p->height);
        painted |= MAP_LAYER_MOON_SHADE;
    }
    painter->setOpacity(1.0);
    for (int i = 0; i < map_body_count; i++)
    {
        const SourceRecord &r = source_table[map_bodies[i].row];
        if (r.computed && overlays.*map_bodies[i].overlay)
        {
            icon_at(painter, p->icons[map_bodies[i].icon], r.sub_lat, r.sub_lng, p);
            painted |= MAP_LAYER_BODIES;
        }
    }
    if (home_station_valid)
    {
        icon_at(painter, p->icons[MAP_ICON_DISH], settings.Latitude, settings.Longitude, p);
        painted |= MAP_LAYER_STATIONS;
    }
    if (dx_station_valid)
    {
        icon_at(painter, p->icons[MAP_ICON_DISH], dx_latitude, dx_longitude, p);
        painted |= MAP_LAYER_STATIONS;
    }
    return painted;
}

static void map_draw_tip(QPainter *painter, const MapTip *tip)
{
    char text[48];
    painter->setPen(Qt::black);
    painter->setBrush(Qt::black);
    painter->drawRect(tip->rect);
    painter->setPen(Qt::cyan);
    snprintf(text, sizeof text, "%s %0.2f, %0.2f", tip->grid, tip->latitude, tip->longitude);
    painter->drawText(tip->rect.x() + 5, tip->rect.y() + tip->rect.height() / 2 + 5, QString::fromLatin1(text));
}

int map_compose(QPixmap *out, const MapPictures *p, const struct tm *utc, const MapTip *tip, const CommonWindow *common)
{
    *out = p->map;
    if (out->isNull())
    {
        return 0;
    }
    int painted = 0;
    QPainter painter(out);
    painter.setFont(map_font(7));
    if (overlays.SkyNoiseOverlay && source_table[radio_first_row].computed)
    {
        map_draw_sky_noise(&painter, p);
        painted |= MAP_LAYER_SKY_NOISE;
    }
    painted |= map_draw_catalogue(&painter, p, utc);
    if (overlays.SkyNoiseOverlay)
    {
        map_draw_radio_sources(&painter, p);
        painted |= MAP_LAYER_RADIO_SOURCES;
    }
    painted |= map_draw_bodies(&painter, p);
    if (common && home_station_valid && dx_station_valid)
    {
        common_window_draw(&painter, common, p->width);
        painted |= MAP_LAYER_COMMON_WINDOW;
    }
    if (tip && tip->visible)
    {
        map_draw_tip(&painter, tip);
        painted |= MAP_LAYER_TIP;
    }
    return painted;
}
