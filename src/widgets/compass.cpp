#include "widgets/compass.h"

#include "core/state.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>

double compass_value_angle(double value, double start_angle, double end_angle, double scale_min, double scale_max)
{
    double k = (end_angle - start_angle) / (scale_max - scale_min);
    return end_angle - (value - scale_min) * k;
}

void compass_point(double cx, double cy, double d, double angle, double *x, double *y)
{
    *x = cx + d * sin(angle * COMPASS_RADIANS);
    *y = cy + d * cos(angle * COMPASS_RADIANS);
}

double compass_touch_azimuth(int x, int y, int cx, int cy)
{
    double angle = atan2((double)(y - cy), (double)(x - cx)) * 180.0 / 3.14159 + 90.0;
    return angle < 0 ? angle + 360.0 : angle;
}

double compass_touch_elevation(int x, int y, int cx, int cy)
{
    double angle = atan2((double)(y - cy), (double)(x - cx)) * 180.0 / 3.14159 + 180.0;
    return angle < 0 ? angle + 360.0 : angle;
}

int compass_tick_count(double sweep, int step)
{
    return (int)sweep / step + (sweep < 360 ? 1 : 0);
}

Compass::Compass(const char *title_text, const char *value, const char *source, int needles, const QColor &color1,
                 const QColor &color2, QWidget *parent)
    : QWidget(parent), center_x(0), center_y(0), radius(0), mouse_x(0), mouse_y(0), limit_low(0), limit_high(0),
      background_ready(0), needle_count(needles), needle1_color(color1), needle2_color(color2), needle1_value(0),
      needle2_value(0), start_angle(0), end_angle(0), scale_min(0), scale_max(0), minor_step(2), major_step(10),
      inner_start_angle(0), inner_end_angle(0), inner_min(0), inner_max(0), inner_minor_step(5),
      inner_major_step(10)
{
    text_copy(title, sizeof title, title_text);
    text_copy(value_text, sizeof value_text, value);
    text_copy(source_text, sizeof source_text, source);
}

void Compass::setNeedle1(double value)
{
    needle1_value = value;
}

void Compass::setNeedle2(double value)
{
    needle2_value = value;
}

void Compass::setOuterScale(double start, double end, double minimum, double maximum, int minor, int major)
{
    start_angle = start;
    end_angle = end;
    scale_min = minimum;
    scale_max = maximum;
    minor_step = minor;
    major_step = major;
}

void Compass::setInnerScale(double start, double end, double minimum, double maximum, int minor, int major)
{
    inner_start_angle = start;
    inner_end_angle = end;
    inner_min = minimum;
    inner_max = maximum;
    inner_minor_step = minor;
    inner_major_step = major;
}

void Compass::setLimits(double low, double high)
{
    limit_low = low;
    limit_high = high;
    background_ready = 0;
}

void Compass::setValueText(const char *text)
{
    text_copy(value_text, sizeof value_text, text);
}

void Compass::setSourceText(const char *text)
{
    text_copy(source_text, sizeof source_text, text);
}

void Compass::paintEvent(QPaintEvent *)
{
}

void Compass::mousePressEvent(QMouseEvent *)
{
    emit MousePressed();
}

void Compass::mouseMoveEvent(QMouseEvent *event)
{
    mouse_x = (int)event->position().x();
    mouse_y = (int)event->position().y();
    emit MousePosition();
}

void Compass::drawBackground(void)
{
}

void Compass::drawNeedles(QPainter &)
{
}
