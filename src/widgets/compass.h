// Compass: the round instrument of the panel. A dial with up to two needles,
// an outer and an optional inner scale, a limit arc and three lines of text.
// Everything that does not move is drawn once into a pixmap.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QRect>
#include <QWidget>
#include <cstdint>

// Dial degrees: angle a names the point (cx + d sin a, cy + d cos a), so 180
// is the top, 270 the left, 360 the bottom and 90 the right.
#define COMPASS_RADIANS 0.017453277777777776

// Room for the ticks and labels of one scale; a finer scale is cut short
// rather than written past the end.
#define COMPASS_MAX_TICKS 400
#define COMPASS_MAX_LABELS 100

// Radii of the dial's rings, as fractions of the dial radius.
#define COMPASS_SCALE_RING 0.86
#define COMPASS_MAJOR_TICK_END 0.81
#define COMPASS_MINOR_TICK_END 0.83
#define COMPASS_LABEL_RING 0.93
#define COMPASS_LIMIT_RING 0.78
#define COMPASS_INNER_RING 0.61
#define COMPASS_INNER_MAJOR_END 0.56
#define COMPASS_INNER_MINOR_END 0.58
#define COMPASS_INNER_LABEL_RING 0.68
#define COMPASS_NEEDLE_BASE 0.05
#define COMPASS_NEEDLE_TIP 0.86

// One scale: its ends in dial degrees, the values at those ends (maximum at
// start_angle), the tick spacing and the label spacing. The outer scale
// spaces in dial degrees, the inner one in scale units.
struct CompassScale
{
    double start_angle, end_angle;
    double minimum, maximum;
    int minor_step, major_step;
};

// A tick from the ring at `outer` in to `inner` (fractions of the radius).
struct CompassTick
{
    double angle;
    double outer, inner;
    int major;
};

struct CompassLabel
{
    double angle;
    char text[12];
};

// Dial angle of a value on a scale whose maximum stands at start_angle and
// whose minimum at end_angle (values grow clockwise).
double compass_value_angle(double value, double start_angle, double end_angle, double scale_min, double scale_max);
// The point at distance d from the centre at dial angle a.
void compass_point(double cx, double cy, double d, double angle, double *x, double *y);
// Touch arithmetic of the azimuth and elevation dials: the dial angle under
// (x, y) turned into a source angle, before limits are applied.
double compass_touch_azimuth(int x, int y, int cx, int cy);
double compass_touch_elevation(int x, int y, int cx, int cy);
// Tick and label counts of a scale with the given sweep and spacing.
int compass_tick_count(double sweep, int step);

// The ticks and labels of the outer and the inner scale, at most `capacity`
// of them; each returns how many it wrote.
int compass_outer_ticks(const CompassScale *scale, CompassTick *ticks, int capacity);
int compass_outer_labels(const CompassScale *scale, CompassLabel *labels, int capacity);
int compass_inner_ticks(const CompassScale *scale, CompassTick *ticks, int capacity);
int compass_inner_labels(const CompassScale *scale, CompassLabel *labels, int capacity);
// A dial-degree arc in the painter's 1/16 degree units.
void compass_arc(double start_angle, double span, int *start16, int *span16);
// The limit arc over the outer scale: 0 and its start and span, or -1 when
// the limits are equal and no arc is drawn.
int compass_limit_arc(const CompassScale *scale, double low, double high, int *start16, int *span16);
// The needle's triangle: two base points beside the centre, then the tip.
void compass_needle(double cx, double cy, double radius, double angle, double xy[6]);

// What a dial's reading is worth. A stale reading keeps its place but turns
// gray; a dial with no data draws no needle at all, only the words.
enum CompassState
{
    COMPASS_LIVE,
    COMPASS_STALE,
    COMPASS_NO_DATA
};

class Compass : public QWidget
{
    Q_OBJECT

  public:
    Compass(const char *title, const char *value_text, const char *source_text, int needle_count,
            const QColor &needle1_color, const QColor &needle2_color, QWidget *parent = nullptr);

    void setNeedle1(double value);
    void setNeedle2(double value);
    void setOuterScale(double start, double end, double minimum, double maximum, int minor, int major);
    void setInnerScale(double start, double end, double minimum, double maximum, int minor, int major);
    void setLimits(double low, double high);
    void setValueText(const char *text);
    void setSourceText(const char *text);
    void setState(int state);

    int center_x, center_y;
    int radius;
    int mouse_x, mouse_y;
    double limit_low, limit_high;
    uint8_t background_ready;
    QPixmap background;
    char title[20];
    char value_text[20];
    char source_text[20];
    int needle_count;
    QColor needle1_color, needle2_color;
    double needle1_value, needle2_value;
    double start_angle, end_angle;
    double scale_min, scale_max;
    int minor_step, major_step;
    double inner_start_angle, inner_end_angle;
    double inner_min, inner_max;
    int inner_minor_step, inner_major_step;
    QRect paint_rect;
    int state;

  signals:
    void MousePressed();
    void MousePosition();

  protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

  private:
    void drawBackground(void);
    void drawScales(QPainter &painter);
    void drawNeedles(QPainter &painter);
    void drawTexts(QPainter &painter);
};
