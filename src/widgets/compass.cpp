#include "widgets/compass.h"

#include "core/state.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>
#include <cstdio>

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

// A label value as "%d" shows it: cut toward zero, and kept inside int so a
// wild scale cannot overflow the conversion.
static int compass_whole(double value)
{
    if (!(value > -2.0e9 && value < 2.0e9))
    {
        return 0;
    }
    return (int)value;
}

static int compass_clamp_count(int count, int capacity)
{
    if (count < 0)
    {
        return 0;
    }
    return count < capacity ? count : capacity;
}

int compass_outer_ticks(const CompassScale *scale, CompassTick *ticks, int capacity)
{
    if (scale->minor_step <= 0 || scale->major_step <= 0)
    {
        return 0;
    }
    double sweep = scale->end_angle - scale->start_angle;
    int count = compass_clamp_count(compass_tick_count(sweep, scale->minor_step), capacity);
    for (int i = 0; i < count; i++)
    {
        int offset = i * scale->minor_step;
        ticks[i].angle = scale->start_angle + offset;
        ticks[i].outer = COMPASS_SCALE_RING;
        ticks[i].major = offset % scale->major_step == 0;
        ticks[i].inner = ticks[i].major ? COMPASS_MAJOR_TICK_END : COMPASS_MINOR_TICK_END;
    }
    return count;
}

int compass_outer_labels(const CompassScale *scale, CompassLabel *labels, int capacity)
{
    double sweep = scale->end_angle - scale->start_angle;
    if (scale->major_step <= 0 || sweep == 0)
    {
        return 0;
    }
    int count = compass_clamp_count(compass_tick_count(sweep, scale->major_step), capacity);
    double units_per_degree = (scale->maximum - scale->minimum) / sweep;
    for (int i = 0; i < count; i++)
    {
        labels[i].angle = scale->start_angle + i * scale->major_step;
        double value = scale->maximum - i * units_per_degree * scale->major_step;
        snprintf(labels[i].text, sizeof labels[i].text, "%d", compass_whole(value));
    }
    return count;
}

// The inner scale counts its ticks in scale units, so its count comes from
// the range and not from the sweep.
static int compass_inner_count(const CompassScale *scale, int step, int capacity)
{
    double sweep = scale->end_angle - scale->start_angle;
    int count = compass_whole((scale->maximum - scale->minimum) / step) + (sweep < 360 ? 1 : 0);
    return compass_clamp_count(count, capacity);
}

int compass_inner_ticks(const CompassScale *scale, CompassTick *ticks, int capacity)
{
    double range = scale->maximum - scale->minimum;
    if (scale->minor_step <= 0 || scale->major_step <= 0 || range == 0)
    {
        return 0;
    }
    double degrees_per_unit = (scale->end_angle - scale->start_angle) / range;
    int count = compass_inner_count(scale, scale->minor_step, capacity);
    for (int i = 0; i < count; i++)
    {
        ticks[i].angle = scale->start_angle + i * degrees_per_unit * scale->minor_step;
        ticks[i].outer = COMPASS_INNER_RING;
        ticks[i].major = (i * scale->minor_step) % scale->major_step == 0;
        ticks[i].inner = ticks[i].major ? COMPASS_INNER_MAJOR_END : COMPASS_INNER_MINOR_END;
    }
    return count;
}

int compass_inner_labels(const CompassScale *scale, CompassLabel *labels, int capacity)
{
    double range = scale->maximum - scale->minimum;
    if (scale->major_step <= 0 || range == 0)
    {
        return 0;
    }
    double sweep = scale->end_angle - scale->start_angle;
    double degrees_per_unit = sweep / range;
    int count = compass_inner_count(scale, scale->major_step, capacity);
    for (int i = 0; i < count; i++)
    {
        labels[i].angle = scale->start_angle + i * degrees_per_unit * scale->major_step;
        double value = scale->maximum - i * scale->major_step;
        // On a full circle the first label stands where the minimum meets
        // the maximum, and the minimum is the figure an operator looks for.
        if (i == 0 && sweep >= 360)
        {
            value = scale->minimum;
        }
        snprintf(labels[i].text, sizeof labels[i].text, "%d", compass_whole(value));
    }
    return count;
}

void compass_arc(double start_angle, double span, int *start16, int *span16)
{
    // The painter counts from three o'clock, the dial from six o'clock; both
    // turn counter-clockwise on the screen.
    *start16 = (int)lround((start_angle - 90.0) * 16.0);
    *span16 = (int)lround(span * 16.0);
}

int compass_limit_arc(const CompassScale *scale, double low, double high, int *start16, int *span16)
{
    if (low == high)
    {
        return -1;
    }
    double sweep = scale->end_angle - scale->start_angle;
    double k = sweep / (scale->maximum - scale->minimum);
    // The arc runs from the high limit counter-clockwise down to the low
    // one; a pair given the other way round gives a negative span, which the
    // painter sweeps clockwise from the same start.
    double start = (scale->start_angle - (high - scale->minimum) * k) + sweep;
    double span = ((high - scale->minimum) - (low - scale->minimum)) * k;
    // A scale without a range has no place for either limit.
    if (!std::isfinite(start) || !std::isfinite(span))
    {
        return -1;
    }
    compass_arc(start, span, start16, span16);
    return 0;
}

void compass_needle(double cx, double cy, double radius, double angle, double xy[6])
{
    compass_point(cx, cy, COMPASS_NEEDLE_BASE * radius, angle + 90.0, &xy[0], &xy[1]);
    compass_point(cx, cy, COMPASS_NEEDLE_BASE * radius, angle - 90.0, &xy[2], &xy[3]);
    compass_point(cx, cy, COMPASS_NEEDLE_TIP * radius, angle, &xy[4], &xy[5]);
}

static QPen compass_pen(const QColor &colour, int width)
{
    return QPen(QBrush(colour), width, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin);
}

static QFont compass_font(int points)
{
    return QFont(QStringLiteral("Sans"), points, 400);
}

// Three-digit labels at the sides of the dial stand only a few pixels from
// the rim; the Sans of a Linux panel (DejaVu) runs wider than the face the
// dial was drawn for, and its semi-condensed cut keeps the figures off the rim.
static QFont compass_label_font(void)
{
    QFont font = compass_font(7);
    font.setStretch(QFont::SemiCondensed);
    return font;
}

static void compass_text(QPainter &painter, const QRect &rect, const QColor &colour, const char *text)
{
    painter.setPen(compass_pen(colour, 3));
    painter.drawText(rect, Qt::AlignCenter, QString::fromUtf8(text));
}

static QRect compass_title_rect(int cx, int cy)
{
    return QRect(cx - 60, cy + 30, 120, 60);
}

static void compass_ring_arc(QPainter &painter, int cx, int cy, double ring, int start16, int span16)
{
    painter.drawArc(QRectF(cx - ring, cy - ring, 2.0 * ring, 2.0 * ring), start16, span16);
}

static void compass_draw_ticks(QPainter &painter, const Compass &dial, const CompassTick *ticks, int count,
                               const QPen &major_pen, const QPen &minor_pen)
{
    for (int i = 0; i < count; i++)
    {
        double x1, y1, x2, y2;
        compass_point(dial.center_x, dial.center_y, ticks[i].outer * dial.radius, ticks[i].angle, &x1, &y1);
        compass_point(dial.center_x, dial.center_y, ticks[i].inner * dial.radius, ticks[i].angle, &x2, &y2);
        painter.setPen(ticks[i].major ? major_pen : minor_pen);
        painter.drawLine(QPointF(x1, y1), QPointF(x2, y2));
    }
}

// Each label sits in a box whose corner is `left` pixels left of and 10
// above its point on the ring.
static void compass_draw_labels(QPainter &painter, const Compass &dial, const CompassLabel *labels, int count,
                                double ring, double left, double width)
{
    for (int i = 0; i < count; i++)
    {
        double x, y;
        compass_point(dial.center_x, dial.center_y, ring * dial.radius, labels[i].angle, &x, &y);
        painter.drawText(QRectF(x - left, y - 10.0, width, 20.0), Qt::AlignCenter, QString::fromUtf8(labels[i].text));
    }
}

static void compass_draw_needle(QPainter &painter, const Compass &dial, double value, const QColor &colour)
{
    double angle = compass_value_angle(value, dial.start_angle, dial.end_angle, dial.scale_min, dial.scale_max);
    // A dial without a scale has no angle for any value.
    if (!std::isfinite(angle))
    {
        return;
    }
    double xy[6];
    compass_needle(dial.center_x, dial.center_y, dial.radius, angle, xy);
    const QPointF points[3] = {QPointF(xy[0], xy[1]), QPointF(xy[2], xy[3]), QPointF(xy[4], xy[5])};
    painter.setBrush(QBrush(colour, Qt::SolidPattern));
    painter.drawPolygon(points, 3);
}

Compass::Compass(const char *title_text, const char *value, const char *source, int needles, const QColor &color1,
                 const QColor &color2, QWidget *parent)
    : QWidget(parent), center_x(0), center_y(0), radius(0), mouse_x(0), mouse_y(0), limit_low(0), limit_high(0),
      background_ready(0), needle_count(needles), needle1_color(color1), needle2_color(color2), needle1_value(0),
      needle2_value(0), start_angle(0), end_angle(0), scale_min(0), scale_max(0), minor_step(2), major_step(10),
      inner_start_angle(0), inner_end_angle(0), inner_min(0), inner_max(0), inner_minor_step(5),
      inner_major_step(10), state(COMPASS_LIVE)
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

void Compass::setState(int new_state)
{
    state = new_state;
}

void Compass::paintEvent(QPaintEvent *event)
{
    paint_rect = event->rect();
    center_x = paint_rect.width() / 2;
    center_y = paint_rect.height() / 2;
    radius = paint_rect.height() / 2 - 2;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    // New limits or a new size need new rings; anything else is drawn over
    // the same picture.
    if (!background_ready || background.deviceIndependentSize().toSize() != size())
    {
        drawBackground();
        background_ready = 1;
    }
    painter.drawPixmap(0, 0, background);
    drawNeedles(painter);
    drawTexts(painter);
}

void Compass::mousePressEvent(QMouseEvent *)
{
    emit MousePressed();
}

void Compass::mouseMoveEvent(QMouseEvent *event)
{
    // Only a drag carries a position: a finger on the panel always holds a
    // button, and a hovering pointer must not steer the antenna.
    if (event->buttons() == Qt::NoButton)
    {
        return;
    }
    mouse_x = (int)event->position().x();
    mouse_y = (int)event->position().y();
    emit MousePosition();
}

void Compass::drawBackground(void)
{
    qreal ratio = devicePixelRatioF();
    background = QPixmap(paint_rect.size() * ratio);
    background.setDevicePixelRatio(ratio);

    QPainter painter(&background);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(compass_pen(Qt::darkBlue, 1));
    painter.setBrush(QColor(0, 0, 127, 255));
    painter.drawRect(QRect(QPoint(0, 0), paint_rect.size()));

    QLinearGradient disc(0, 0, 0, paint_rect.height());
    disc.setColorAt(0, QColor(5, 5, 5));
    disc.setColorAt(1, QColor(40, 40, 40));
    painter.setPen(compass_pen(Qt::white, 1));
    painter.setBrush(disc);
    painter.drawEllipse(QPointF(center_x, center_y), radius, radius);

    painter.setBrush(Qt::NoBrush);
    drawScales(painter);

    painter.setFont(compass_font(12));
    compass_text(painter, compass_title_rect(center_x, center_y), Qt::yellow, title);
}

void Compass::drawScales(QPainter &painter)
{
    const CompassScale outer = {start_angle, end_angle, scale_min, scale_max, minor_step, major_step};
    int start16, span16;
    compass_arc(start_angle, end_angle - start_angle, &start16, &span16);
    painter.setPen(compass_pen(Qt::yellow, 2));
    compass_ring_arc(painter, center_x, center_y, COMPASS_SCALE_RING * radius, start16, span16);

    if (compass_limit_arc(&outer, limit_low, limit_high, &start16, &span16) == 0)
    {
        painter.setPen(compass_pen(Qt::green, 5));
        compass_ring_arc(painter, center_x, center_y, COMPASS_LIMIT_RING * radius, start16, span16);
    }

    CompassTick ticks[COMPASS_MAX_TICKS];
    CompassLabel labels[COMPASS_MAX_LABELS];
    int count = compass_outer_ticks(&outer, ticks, COMPASS_MAX_TICKS);
    compass_draw_ticks(painter, *this, ticks, count, compass_pen(Qt::white, 3), compass_pen(Qt::yellow, 1));
    count = compass_outer_labels(&outer, labels, COMPASS_MAX_LABELS);
    painter.setFont(compass_label_font());
    painter.setPen(compass_pen(Qt::white, 1));
    compass_draw_labels(painter, *this, labels, count, COMPASS_LABEL_RING, 10.0, 20.0);

    if (inner_min == inner_max)
    {
        return;
    }
    const CompassScale inner = {inner_start_angle, inner_end_angle,  inner_min,
                                inner_max,         inner_minor_step, inner_major_step};
    compass_arc(inner_start_angle, inner_end_angle - inner_start_angle, &start16, &span16);
    painter.setPen(compass_pen(Qt::blue, 2));
    compass_ring_arc(painter, center_x, center_y, COMPASS_INNER_RING * radius, start16, span16);
    count = compass_inner_ticks(&inner, ticks, COMPASS_MAX_TICKS);
    compass_draw_ticks(painter, *this, ticks, count, compass_pen(Qt::blue, 3), compass_pen(Qt::blue, 1));
    count = compass_inner_labels(&inner, labels, COMPASS_MAX_LABELS);
    painter.setPen(compass_pen(Qt::blue, 1));
    compass_draw_labels(painter, *this, labels, count, COMPASS_INNER_LABEL_RING, 15.0, 25.0);
}

void Compass::drawNeedles(QPainter &painter)
{
    painter.setPen(compass_pen(Qt::black, 1));
    // A needle at 0 on a dial that has heard nothing reads as a calm or a
    // limit; better no needle than a false one.
    if (needle_count >= 1 && state != COMPASS_NO_DATA)
    {
        // A one-needle dial shows its reading on needle 1, so that is the
        // needle that turns gray when the reading goes stale.
        const QColor &colour = needle_count == 1 && state == COMPASS_STALE ? QColor(Qt::gray) : needle1_color;
        compass_draw_needle(painter, *this, needle1_value, colour);
    }
    // Needle 2 comes last so the antenna stays visible over the target; a
    // stale antenna needle is gray, so it is never taken for a live one.
    if (needle_count >= 2 && state != COMPASS_NO_DATA)
    {
        compass_draw_needle(painter, *this, needle2_value, state == COMPASS_STALE ? QColor(Qt::gray) : needle2_color);
    }
    painter.setBrush(QBrush(Qt::white, Qt::SolidPattern));
    painter.drawEllipse(QPointF(center_x, center_y), 10, 10);
}

// The title is in the picture too, but a needle pointing down crosses it,
// so all three lines are written again over the needles.
void Compass::drawTexts(QPainter &painter)
{
    painter.setFont(compass_font(12));
    compass_text(painter, compass_title_rect(center_x, center_y), Qt::yellow, title);
    const QRect value_rect(center_x - 50, center_y + 50, 100, 60);
    if (state == COMPASS_NO_DATA)
    {
        compass_text(painter, value_rect, Qt::gray, "no data");
    }
    else if (value_text[0])
    {
        compass_text(painter, value_rect, state == COMPASS_STALE ? Qt::gray : Qt::red, value_text);
    }
    if (source_text[0])
    {
        compass_text(painter, QRect(center_x - 50, center_y + 70, 100, 60), Qt::green, source_text);
    }
}
