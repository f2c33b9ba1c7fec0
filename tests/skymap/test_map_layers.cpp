// The picture's layers: the shade drawn both ways gives the same pixels, the
// world picture turns with the map offset, outlines are cut at the map edge
// instead of crossing the world, and a layer that is off is not painted.
#include "astro/source.h"
#include "core/state.h"
#include "skymap/common_window.h"
#include "skymap/map_layers.h"
#include "skymap/map_shade.h"
#include "skymap/overlays.h"
#include "skymap/sky_catalogue.h"
#include "support/test_env.h"

#include <QImage>
#include <QPainter>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

QString bin_folder(void)
{
    const char *bin = getenv("MORVANE_BIN");
    return QString::fromUtf8(bin ? bin : ".");
}

void all_overlays(uint8_t on)
{
    memset(&overlays, 0, sizeof overlays);
    uint8_t *flags[] = {&overlays.SunOverlay,        &overlays.MoonOverlay,       &overlays.MercuryOverlay,
                        &overlays.VenusOverlay,      &overlays.MarsOverlay,       &overlays.SaturnOverlay,
                        &overlays.JupiterOverlay,    &overlays.NeptuneOverlay,    &overlays.UranusOverlay,
                        &overlays.PlutoOverlay,      &overlays.SunShadingOverlay, &overlays.MoonShadingOverlay,
                        &overlays.SkyNoiseOverlay,   &overlays.StarsOverlay,      &overlays.ConstellationsOverlay,
                        &overlays.LatitudeGridlines, &overlays.LongitudeGridlines};
    for (uint8_t *flag : flags)
    {
        *flag = on;
    }
    overlays.StarsMagnitude = 20;
}

struct tm utc_of(time_t t)
{
    struct tm utc;
    gmtime_r(&t, &utc);
    return utc;
}

} // namespace

// Poles, equator, both sides of the date line, and an ordinary place: the
// pixels of the row-by-row layer are those of the point-by-point one.
TEST(MapLayers, ShadeIsTheSameEitherWay)
{
    struct Row
    {
        double latitude, longitude, gain;
    };
    static const Row rows[] = {{90, 0, 10},  {-90, 45, 10},      {0, 0, 8},         {0, 180, 10},
                               {0, -180, 8}, {23.44, 179.9, 10}, {-12.3, -77.7, 8}, {51.5, 13.4, 10}};
    QImage world(800, 400, QImage::Format_Grayscale8);
    world.fill(77);
    for (const Row &r : rows)
    {
        QImage fast = world, slow = world;
        map_shade(&fast, r.latitude, r.longitude, r.gain);
        map_shade_by_points(&slow, r.latitude, r.longitude, r.gain);
        EXPECT_TRUE(fast == slow) << r.latitude << " " << r.longitude;
    }
    // Under the body the layer is white, opposite it black.
    QImage image = world;
    map_shade(&image, 0, -90, 10);
    EXPECT_EQ(image.pixelColor(200, 200), QColor(255, 255, 255));
    EXPECT_EQ(image.pixelColor(600, 200), QColor(0, 0, 0));
}

// Up to 12 hours the world stands 8 pixels further right than the turn of
// the overlays; beyond that exactly at it.
TEST(MapLayers, BasePictureTurnsWithTheMapOffset)
{
    MapPictures p;
    all_overlays(0);
    ASSERT_EQ(map_load_pictures(&p, bin_folder(), 800, 400), 0);
    QImage world = p.source;
    for (int offset : {6, 12, 13, 23})
    {
        overlays.MapOffset = offset;
        map_draw_base(&p);
        QImage turned = p.map.toImage();
        int shift = 33 * offset + (offset <= 12 ? 8 : 0);
        for (int x : {5, 150, 420, 790})
        {
            EXPECT_EQ(turned.pixel((x + shift) % 800, 150), world.pixel(x, 150)) << offset << " " << x;
        }
    }
}

// At an instant when the date line runs through an outline, the edge across
// it is drawn from each end to its own side of the map: the row has ink at
// both map edges and is far from crossed.
TEST(MapLayers, OutlinesAreCutAtTheMapEdge)
{
    struct Row
    {
        const char *abbreviation;
        int group;
        double ra, dec; // a point of a constant-declination edge
    };
    static const Row rows[] = {{"OCT", 57, 22.0, -75.0}, {"UMI", 83, 22.0, 86.1666667}, {"AND", 0, 23.1, 52.5}};
    all_overlays(0);
    for (const Row &r : rows)
    {
        ASSERT_STREQ(boundary_table[r.group]->abbreviation, r.abbreviation);
        time_t t = 1712600000;
        struct tm utc;
        double latitude, longitude = 0;
        for (int minute = 0; minute < 1440 && std::abs(std::abs(longitude) - 180.0) > 0.5; minute++)
        {
            utc = utc_of(t + 60 * minute);
            sub_point(&utc, r.ra, r.dec, &latitude, &longitude);
        }
        QImage image(800, 400, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setPen(Qt::black);
        map_draw_constellation(&painter, r.group, &utc, 800, 400);
        painter.end();
        int y = (int)((90.0 - r.dec) / 0.45), ink = 0;
        for (int x = 0; x < 800; x++)
        {
            ink += image.pixel(x, y) == qRgb(0, 0, 0);
        }
        EXPECT_EQ(image.pixel(1, y), qRgb(0, 0, 0)) << r.abbreviation;
        EXPECT_EQ(image.pixel(799, y), qRgb(0, 0, 0)) << r.abbreviation;
        EXPECT_LT(ink, 400) << r.abbreviation;
    }
}

// Each switch paints its own layer and nothing else: with all off, nothing
// is painted but the base picture.
TEST(MapLayers, LayerThatIsOffIsNotPainted)
{
    state_reset();
    MapPictures p;
    all_overlays(0);
    ASSERT_EQ(map_load_pictures(&p, bin_folder(), 800, 400), 0);
    struct tm utc = utc_of(1712600000);
    for (int row : {(int)SOURCE_MOON, (int)SOURCE_SUN, 4, 12})
    {
        source_calculate(row, SOURCE_MASK_POSITION, &utc, 52, 13, 1296, source_table[row]);
    }
    MapTip tip = {};
    CommonWindow common = {};
    struct Row
    {
        uint8_t OverlaySettings::*overlay;
        int layers;
    };
    static const Row rows[] = {
        {nullptr, 0},
        {&OverlaySettings::SkyNoiseOverlay, MAP_LAYER_SKY_NOISE | MAP_LAYER_RADIO_SOURCES},
        {&OverlaySettings::StarsOverlay, MAP_LAYER_STARS},
        {&OverlaySettings::ConstellationsOverlay, MAP_LAYER_CONSTELLATIONS},
        {&OverlaySettings::SunShadingOverlay, MAP_LAYER_SUN_SHADE},
        {&OverlaySettings::MoonShadingOverlay, MAP_LAYER_MOON_SHADE},
        {&OverlaySettings::MercuryOverlay, MAP_LAYER_BODIES},
        {&OverlaySettings::VenusOverlay, 0}, // its row was never computed
    };
    for (const Row &r : rows)
    {
        all_overlays(0);
        if (r.overlay)
        {
            overlays.*r.overlay = 1;
        }
        QPixmap out;
        EXPECT_EQ(map_compose(&out, &p, &utc, &tip, &common), r.layers);
    }
    all_overlays(0);
    home_station_valid = 1;
    tip.visible = 1;
    QPixmap out;
    EXPECT_EQ(map_compose(&out, &p, &utc, &tip, &common), MAP_LAYER_STATIONS | MAP_LAYER_TIP)
        << "the common window needs a DX station too";
    dx_station_valid = 1;
    EXPECT_EQ(map_compose(&out, &p, &utc, &tip, nullptr), MAP_LAYER_STATIONS | MAP_LAYER_TIP);
    EXPECT_EQ(map_compose(&out, &p, &utc, &tip, &common), MAP_LAYER_STATIONS | MAP_LAYER_TIP | MAP_LAYER_COMMON_WINDOW);
    state_reset();
}
