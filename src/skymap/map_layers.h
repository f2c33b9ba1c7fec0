// The sky map's picture, built from layers: the world picture turned by the
// map offset with its grid, then the sky noise, the catalogue objects, the
// constellation outlines, the radio sources, the day and night shades, the
// bodies, the stations, the common window strip and the tip. Everything is
// drawn at its sub-point at the map's time; a redraw copies the base picture
// and paints the layers on the copy. The switches are those of `overlays`.
#pragma once

#include "skymap/overlays.h"

#include <QImage>
#include <QPixmap>
#include <QRect>
#include <ctime>

class QColor;
class QPainter;
class QString;
struct CommonWindow;

enum MapIcon
{
    MAP_ICON_MENU,
    MAP_ICON_DISH,
    MAP_ICON_MOON,
    MAP_ICON_SUN,
    MAP_ICON_MERCURY,
    MAP_ICON_MARS,
    MAP_ICON_VENUS,
    MAP_ICON_SATURN,
    MAP_ICON_JUPITER,
    MAP_ICON_NEPTUNE,
    MAP_ICON_URANUS,
    MAP_ICON_PLUTO,
    MAP_ICON_COUNT
};

struct MapPictures
{
    int width; // of the map on screen: every layer is this size
    int height;
    QImage source;    // the world picture as loaded
    QPixmap map;      // the base: the world turned by the map offset, with the grid
    QImage sun_shade; // the day and night layers, in plain map geometry
    QImage moon_shade;
    QImage sky_noise;
    QPixmap icons[MAP_ICON_COUNT];
};

// What `map_compose` painted, one bit per layer, so that a layer that is off
// can be seen to cost nothing.
enum MapLayer
{
    MAP_LAYER_SKY_NOISE = 1 << 0,
    MAP_LAYER_STARS = 1 << 1,
    MAP_LAYER_CONSTELLATIONS = 1 << 2,
    MAP_LAYER_RADIO_SOURCES = 1 << 3,
    MAP_LAYER_SUN_SHADE = 1 << 4,
    MAP_LAYER_MOON_SHADE = 1 << 5,
    MAP_LAYER_BODIES = 1 << 6,
    MAP_LAYER_STATIONS = 1 << 7,
    MAP_LAYER_COMMON_WINDOW = 1 << 8,
    MAP_LAYER_TIP = 1 << 9
};

// The pointer's tip: its locator and place, in a black box.
struct MapTip
{
    int visible;
    QRect rect;
    char grid[7];
    double latitude;
    double longitude;
};

// A body drawn by its icon when its row is computed and its switch is on, in
// drawing order; the map also computes a planet's row only when it is on.
struct MapBody
{
    int row;
    uint8_t OverlaySettings::*overlay;
    int icon;
};
extern const MapBody map_bodies[];
extern const int map_body_count;

// Read the pictures of the folder's "pixmaps" (icons, world, sky noise) for
// a map of width by height. Returns 0, or -1 when the world picture cannot be
// read: the base and the shades stay null then, and nothing is drawn on them.
int map_load_pictures(MapPictures *p, const QString &folder, int width, int height);

// Rebuild the base picture from the world picture, the offset and the grid.
void map_draw_base(MapPictures *p);

// Paint a layer of plain map geometry turned by the map offset, with the
// painter's opacity.
void map_draw_overlay(QPainter *painter, const QImage &overlay, int width, int height);

// Whether a catalogue object is drawn at the magnitude limit: a drawable
// class, and not fainter than the limit (an unknown magnitude, 0, never is).
struct DeepSkyObject;
int map_star_drawn(const DeepSkyObject *object, int magnitude_limit);

// A catalogue object's colour (by its size) and radius (by its magnitude).
void map_star_attributes(double magnitude, double dimension, QColor *color, int *radius);

// One constellation's catalogue objects within the magnitude limit, and its
// open outline; nothing for a group of 88 or more.
void map_draw_stars(QPainter *painter, int group, const struct tm *utc, int width, int height);
void map_draw_constellation(QPainter *painter, int group, const struct tm *utc, int width, int height);

// Compose the whole picture at utc into out; common may be null. Returns the
// MapLayer bits of what was painted.
int map_compose(QPixmap *out, const MapPictures *p, const struct tm *utc, const MapTip *tip,
                const CommonWindow *common);
