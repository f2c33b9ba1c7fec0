#include "skymap/map_shade.h"

#include <QImage>
#include <QPainter>
#include <cmath>

// Single precision throughout, as the layer was first drawn: the greys are
// truncated, and a double here would move some by one step.
static const float shade_radians = 0.017453292519944444f;

struct ShadeSetup
{
    int width;
    int height;
    float vx, vy, vz; // the body's direction, scaled by the gain
    float sin_column[map_shade_max_width];
    float cos_column[map_shade_max_width];
};

// The trigonometry of the columns is done once per layer, that of a row once
// per row; a pixel is then three products and two sums. Returns 0, or -1 for
// an empty layer; a layer of another format becomes 8-bit grey first.
static int shade_setup(ShadeSetup *s, QImage *layer, double latitude, double longitude, double gain)
{
    if (layer->isNull())
    {
        return -1;
    }
    if (layer->format() != QImage::Format_Grayscale8)
    {
        *layer = layer->convertToFormat(QImage::Format_Grayscale8);
    }
    s->width = layer->width() < map_shade_max_width ? layer->width() : map_shade_max_width;
    s->height = layer->height();
    float lat = (float)latitude * shade_radians;
    float lng = (float)longitude * shade_radians;
    float g = (float)gain;
    s->vx = sinf(lng) * cosf(lat) * g;
    s->vy = sinf(lat) * g;
    s->vz = cosf(lng) * cosf(lat) * g;
    for (int c = 0; c < s->width; c++)
    {
        float lambda = ((float)c / (float)layer->width() - 0.5f) * 360.0f * shade_radians;
        s->sin_column[c] = sinf(lambda);
        s->cos_column[c] = cosf(lambda);
    }
    return 0;
}

struct ShadeRow
{
    float z, x, y; // vz cos(phi), vx cos(phi), vy sin(phi)
};

static ShadeRow shade_row(const ShadeSetup *s, int r)
{
    float phi = ((float)r / (float)s->height - 0.5f) * -180.0f * shade_radians;
    float cos_phi = cosf(phi);
    return {s->vz * cos_phi, s->vx * cos_phi, s->vy * sinf(phi)};
}

static inline int shade_grey(const ShadeSetup *s, const ShadeRow &row, int c)
{
    float v = row.z * s->cos_column[c] + row.x * s->sin_column[c] + row.y;
    v = v > 0.0f ? v : 0.0f;
    v = v < 1.0f ? v : 1.0f;
    return (int)(v * 255.0f);
}

// One row of greys, in a loop plain enough for the compiler to do several
// pixels at once. The grey is clamped after the truncation instead of
// before: the same number for every v, since |v| is at most the gain, but
// without a branch.
static void shade_line(const ShadeSetup *s, const ShadeRow &row, uchar *__restrict line)
{
    const float *__restrict cos_column = s->cos_column;
    const float *__restrict sin_column = s->sin_column;
    const float z = row.z, x = row.x, y = row.y;
    const int width = s->width;
    for (int c = 0; c < width; c++)
    {
        int grey = (int)((z * cos_column[c] + x * sin_column[c] + y) * 255.0f);
        grey = grey < 0 ? 0 : grey;
        grey = grey > 255 ? 255 : grey;
        line[c] = (uchar)grey;
    }
}

void map_shade(QImage *layer, double latitude, double longitude, double gain)
{
    ShadeSetup s;
    if (shade_setup(&s, layer, latitude, longitude, gain) != 0)
    {
        return;
    }
    // One detach for the whole image, not one per row.
    uchar *bits = layer->bits();
    for (int r = 0; r < s.height; r++)
    {
        shade_line(&s, shade_row(&s, r), bits + r * layer->bytesPerLine());
    }
}

void map_shade_by_points(QImage *layer, double latitude, double longitude, double gain)
{
    ShadeSetup s;
    if (shade_setup(&s, layer, latitude, longitude, gain) != 0)
    {
        return;
    }
    QPainter painter(layer);
    int last = -1;
    for (int r = 0; r < s.height; r++)
    {
        ShadeRow row = shade_row(&s, r);
        for (int c = 0; c < s.width; c++)
        {
            int grey = shade_grey(&s, row, c);
            if (grey != last)
            {
                painter.setPen(QColor(grey, grey, grey));
                last = grey;
            }
            painter.drawPoint(c, r);
        }
    }
}
