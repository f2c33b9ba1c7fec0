#include "support/test_env.h"
#include "widgets/compass.h"

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

static const CompassScale azimuth_scale = {180, 540, 0, 360, 2, 10};
static const CompassScale elevation_scale = {90, 360, -90, 180, 2, 10};

// Where a needle of the given scale points, as a screen direction from the
// centre of a dial of radius 100 (y grows downward).
static void needle_direction(const CompassScale &scale, double value, double *dx, double *dy)
{
    double angle = compass_value_angle(value, scale.start_angle, scale.end_angle, scale.minimum, scale.maximum);
    double xy[6];
    compass_needle(0, 0, 100, angle, xy);
    *dx = xy[4];
    *dy = xy[5];
}

// Difference of two angles in degrees, folded into -180..180.
static double angle_difference(double a, double b)
{
    double d = fmod(a - b, 360.0);
    if (d > 180)
    {
        d -= 360;
    }
    if (d < -180)
    {
        d += 360;
    }
    return d;
}

TEST(CompassAngle, NeedlesPointWhereTheValueIs)
{
    struct Row
    {
        const CompassScale *scale;
        double value, dx, dy;
        const char *why;
    };
    const Row rows[] = {{&azimuth_scale, 0, 0, -86, "north is straight up"},
                        {&azimuth_scale, 90, 86, 0, "east is to the right"},
                        {&azimuth_scale, 180, 0, 86, "south is straight down"},
                        {&azimuth_scale, 360, 0, -86, "a full turn is up again"},
                        {&elevation_scale, 0, -86, 0, "the horizon is to the left"},
                        {&elevation_scale, 90, 0, -86, "the zenith is straight up"},
                        {&elevation_scale, 180, 86, 0, "over the zenith ends to the right"},
                        {&elevation_scale, -90, 0, 86, "the nadir is straight down"}};
    for (const Row &row : rows)
    {
        double dx, dy;
        needle_direction(*row.scale, row.value, &dx, &dy);
        EXPECT_NEAR(dx, row.dx, 0.05) << row.why;
        EXPECT_NEAR(dy, row.dy, 0.05) << row.why;
    }
}

TEST(CompassTouch, EdgesOfTheAzimuthAndElevationDials)
{
    const int c = 135;
    EXPECT_NEAR(compass_touch_azimuth(c + 120, c, c, c), 90, 0.001);
    EXPECT_NEAR(compass_touch_azimuth(c - 120, c, c, c), 270, 0.001);
    EXPECT_NEAR(compass_touch_azimuth(c, c + 120, c, c), 180, 0.001);
    // Straight up lands a hair below 360 rather than on 0 (the five-figure
    // pi does not cancel); either way north, and never negative.
    double north = compass_touch_azimuth(c, c - 120, c, c);
    EXPECT_NEAR(angle_difference(north, 0), 0, 0.001);
    EXPECT_GE(north, 0);

    double above = compass_touch_elevation(c - 120, c - 2, c, c);
    EXPECT_GT(above, 0);
    EXPECT_LT(above, 2);
    // Just under the horizon wraps round to nearly 360, for the limits to cut.
    double below = compass_touch_elevation(c - 120, c + 2, c, c);
    EXPECT_GT(below, 358);
    EXPECT_LT(below, 360);
}

TEST(CompassTouch, TouchingTheNeedleTipGivesItsValue)
{
    // A finger on the needle must give back the value the needle shows, or
    // the operator would chase the target round the dial.
    const int cx = 135, cy = 135;
    for (int value = 15; value < 360; value += 15)
    {
        double angle = compass_value_angle(value, 180, 540, 0, 360);
        double x, y;
        compass_point(cx, cy, 110, angle, &x, &y);
        double touched = compass_touch_azimuth((int)lround(x), (int)lround(y), cx, cy);
        EXPECT_NEAR(angle_difference(touched, value), 0, 0.6) << "azimuth " << value;
    }
    for (int value = 15; value <= 180; value += 15)
    {
        double angle = compass_value_angle(value, 90, 360, -90, 180);
        double x, y;
        compass_point(cx, cy, 110, angle, &x, &y);
        double touched = compass_touch_elevation((int)lround(x), (int)lround(y), cx, cy);
        EXPECT_NEAR(angle_difference(touched, value), 0, 0.6) << "elevation " << value;
    }
}

TEST(CompassScales, AzimuthDialTicksAndLabels)
{
    CompassTick ticks[COMPASS_MAX_TICKS];
    CompassLabel labels[COMPASS_MAX_LABELS];
    ASSERT_EQ(compass_outer_ticks(&azimuth_scale, ticks, COMPASS_MAX_TICKS), 180);
    int majors = 0;
    for (int i = 0; i < 180; i++)
    {
        majors += ticks[i].major;
    }
    EXPECT_EQ(majors, 36);
    EXPECT_TRUE(ticks[5].major);
    EXPECT_EQ(ticks[5].inner, COMPASS_MAJOR_TICK_END);
    EXPECT_EQ(ticks[6].inner, COMPASS_MINOR_TICK_END);

    ASSERT_EQ(compass_outer_labels(&azimuth_scale, labels, COMPASS_MAX_LABELS), 36);
    double x, y;
    compass_point(0, 0, 100, labels[0].angle, &x, &y);
    EXPECT_NEAR(x, 0, 1e-3);
    EXPECT_LT(y, 0);
    EXPECT_STREQ(labels[0].text, "360");
    // The next label counter-clockwise sits left of the top and reads 350.
    compass_point(0, 0, 100, labels[1].angle, &x, &y);
    EXPECT_LT(x, 0);
    EXPECT_STREQ(labels[1].text, "350");
    for (int i = 0; i < 36; i++)
    {
        EXPECT_STRNE(labels[i].text, "0") << "north is labelled 360 only";
    }
}

TEST(CompassScales, APartialSweepGetsItsClosingTickAndLabel)
{
    CompassTick ticks[COMPASS_MAX_TICKS];
    CompassLabel labels[COMPASS_MAX_LABELS];
    const CompassScale full = {180, 540, 0, 180, 2, 10};
    const CompassScale half = {90, 270, 0, 180, 2, 10};
    EXPECT_EQ(compass_outer_labels(&full, labels, COMPASS_MAX_LABELS), 36);
    EXPECT_EQ(compass_outer_ticks(&full, ticks, COMPASS_MAX_TICKS), 180);
    EXPECT_EQ(compass_outer_ticks(&half, ticks, COMPASS_MAX_TICKS), 91);
    ASSERT_EQ(compass_outer_labels(&half, labels, COMPASS_MAX_LABELS), 19);
    EXPECT_DOUBLE_EQ(labels[18].angle, 270);
    EXPECT_STREQ(labels[18].text, "0");
}

TEST(CompassScales, PanelDialLabelsStepEvenly)
{
    // A label value cut toward zero after a rounding error would read one
    // less (33 between 34 and 32); every step must be the same.
    struct Row
    {
        CompassScale scale;
        int count;
        const char *first, *last;
        int step;
    };
    const Row rows[] = {{azimuth_scale, 36, "360", "10", 10},
                        {elevation_scale, 28, "180", "-90", 10},
                        {{40, 320, 0, 140, 2, 10}, 29, "140", "0", 5},
                        {{90, 270, -30, 150, 2, 10}, 19, "150", "-30", 10},
                        {{90, 270, 25, 35, 3, 18}, 11, "35", "25", 1},
                        {{180, 540, 0, 10, 4, 36}, 10, "10", "1", 1}};
    for (const Row &row : rows)
    {
        CompassLabel labels[COMPASS_MAX_LABELS];
        int count = compass_outer_labels(&row.scale, labels, COMPASS_MAX_LABELS);
        ASSERT_EQ(count, row.count) << row.first;
        EXPECT_STREQ(labels[0].text, row.first);
        EXPECT_STREQ(labels[count - 1].text, row.last);
        for (int i = 1; i < count; i++)
        {
            EXPECT_EQ(atoi(labels[i - 1].text) - atoi(labels[i].text), row.step) << row.first << " label " << i;
        }
    }
}

TEST(CompassScales, InnerScalesCountInScaleUnits)
{
    CompassTick ticks[COMPASS_MAX_TICKS];
    CompassLabel labels[COMPASS_MAX_LABELS];
    const CompassScale barometer = {90, 270, 847, 1185, 6, 36};
    ASSERT_EQ(compass_inner_ticks(&barometer, ticks, COMPASS_MAX_TICKS), 57);
    EXPECT_EQ(ticks[6].inner, COMPASS_INNER_MAJOR_END);
    EXPECT_EQ(ticks[1].inner, COMPASS_INNER_MINOR_END);
    ASSERT_EQ(compass_inner_labels(&barometer, labels, COMPASS_MAX_LABELS), 10);
    EXPECT_STREQ(labels[0].text, "1185");
    EXPECT_STREQ(labels[9].text, "861");

    // A figure between two whole units is cut toward zero, below zero too.
    const CompassScale celsius = {90, 270, -34.4, 65.6, 5, 10};
    ASSERT_EQ(compass_inner_labels(&celsius, labels, COMPASS_MAX_LABELS), 11);
    EXPECT_STREQ(labels[0].text, "65");
    EXPECT_STREQ(labels[10].text, "-34");
    const CompassScale kmh = {40, 320, 0, 225.308, 5, 25};
    EXPECT_EQ(compass_inner_ticks(&kmh, ticks, COMPASS_MAX_TICKS), 46);
    ASSERT_EQ(compass_inner_labels(&kmh, labels, COMPASS_MAX_LABELS), 10);
    EXPECT_STREQ(labels[9].text, "0");

    // On a full circle the first label names the minimum, where both ends meet.
    const CompassScale round_scale = {180, 540, 0, 100, 5, 10};
    ASSERT_EQ(compass_inner_labels(&round_scale, labels, COMPASS_MAX_LABELS), 10);
    EXPECT_STREQ(labels[0].text, "0");
    EXPECT_STREQ(labels[1].text, "90");
}

TEST(CompassScales, DegenerateScalesDrawNothingAndStayInBounds)
{
    CompassTick ticks[COMPASS_MAX_TICKS];
    CompassLabel labels[COMPASS_MAX_LABELS];
    const CompassScale unset = {0, 0, 0, 0, 2, 10};
    const CompassScale no_step = {180, 540, 0, 360, 0, 0};
    const CompassScale backwards = {360, 90, 0, 100, 2, 10};
    EXPECT_EQ(compass_outer_labels(&unset, labels, COMPASS_MAX_LABELS), 0);
    EXPECT_EQ(compass_inner_labels(&unset, labels, COMPASS_MAX_LABELS), 0);
    EXPECT_EQ(compass_outer_ticks(&no_step, ticks, COMPASS_MAX_TICKS), 0);
    EXPECT_EQ(compass_outer_ticks(&backwards, ticks, COMPASS_MAX_TICKS), 0);

    // A scale finer than the room given is cut short, not written past it.
    const CompassScale fine = {180, 540, 0, 360, 1, 1};
    CompassTick few[11];
    few[10].angle = -1;
    EXPECT_EQ(compass_outer_ticks(&fine, few, 10), 10);
    EXPECT_EQ(few[10].angle, -1);
    EXPECT_EQ(compass_outer_labels(&fine, labels, COMPASS_MAX_LABELS), COMPASS_MAX_LABELS);
}

TEST(CompassLimitArc, RunsFromTheHighLimitDownToTheLowOne)
{
    int start16 = 0, span16 = 0;
    EXPECT_EQ(compass_limit_arc(&azimuth_scale, 100, 100, &start16, &span16), -1);

    ASSERT_EQ(compass_limit_arc(&azimuth_scale, 10, 350, &start16, &span16), 0);
    // The painter counts from three o'clock; turned back into dial degrees
    // the arc must start on the high limit and end on the low one.
    EXPECT_NEAR(angle_difference(start16 / 16.0 + 90, compass_value_angle(350, 180, 540, 0, 360)), 0, 0.1);
    double end = (start16 + span16) / 16.0 + 90;
    EXPECT_NEAR(angle_difference(end, compass_value_angle(10, 180, 540, 0, 360)), 0, 0.1);
    EXPECT_EQ(span16, 340 * 16);

    // Limits through north (low above high) sweep the other way.
    ASSERT_EQ(compass_limit_arc(&azimuth_scale, 270, 90, &start16, &span16), 0);
    EXPECT_EQ(span16, -180 * 16);
    EXPECT_NEAR(angle_difference(start16 / 16.0 + 90, compass_value_angle(90, 180, 540, 0, 360)), 0, 0.1);
}

class CompassWidget : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }

    static QImage render(Compass &dial)
    {
        QImage image(dial.size(), QImage::Format_ARGB32);
        image.fill(Qt::magenta);
        dial.render(&image);
        return image;
    }

    static bool is_red(QRgb pixel)
    {
        return qRed(pixel) > 200 && qGreen(pixel) < 60 && qBlue(pixel) < 60;
    }

    static bool is_green(QRgb pixel)
    {
        return qGreen(pixel) > 200 && qRed(pixel) < 60 && qBlue(pixel) < 60;
    }

    static void send_mouse(Compass &dial, QEvent::Type type, int x, int y, Qt::MouseButton button,
                           Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, QPointF(x, y), dial.mapToGlobal(QPointF(x, y)), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&dial, &event);
    }
};

static void make_azimuth(Compass &dial)
{
    dial.resize(270, 270);
    dial.setOuterScale(180, 540, 0, 360, 2, 10);
}

TEST_F(CompassWidget, GeometryAndPictureFollowThePaintedSize)
{
    Compass dial("Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red);
    make_azimuth(dial);
    render(dial);
    EXPECT_EQ(dial.center_x, 135);
    EXPECT_EQ(dial.center_y, 135);
    EXPECT_EQ(dial.radius, 133);
    EXPECT_EQ(dial.paint_rect, QRect(0, 0, 270, 270));
    EXPECT_EQ(dial.background_ready, 1);
    EXPECT_EQ(dial.background.deviceIndependentSize().toSize(), QSize(270, 270));

    // A resized dial gets new rings even though nothing cleared the flag.
    dial.resize(201, 180);
    render(dial);
    EXPECT_EQ(dial.center_x, 100);
    EXPECT_EQ(dial.radius, 88);
    EXPECT_EQ(dial.background.deviceIndependentSize().toSize(), QSize(201, 180));
}

TEST_F(CompassWidget, OnlyNewLimitsRebuildThePicture)
{
    Compass dial("Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red);
    make_azimuth(dial);
    dial.setNeedle1(0);
    render(dial);
    ASSERT_EQ(dial.background_ready, 1);
    dial.setNeedle1(45);
    dial.setNeedle2(50);
    dial.setValueText("  45.00");
    EXPECT_EQ(dial.background_ready, 1);

    // West on the limit ring, clear of needles, ticks and texts.
    const int x = 135 - (int)lround(COMPASS_LIMIT_RING * 133), y = 135;
    dial.setLimits(0, 0);
    EXPECT_EQ(dial.background_ready, 0);
    EXPECT_FALSE(is_green(render(dial).pixel(x, y))) << "equal limits draw no arc";
    dial.setLimits(10, 350);
    EXPECT_EQ(dial.background_ready, 0);
    EXPECT_TRUE(is_green(render(dial).pixel(x, y)));
    EXPECT_EQ(dial.background_ready, 1);
    // Limits on the east side leave the west bare.
    dial.setLimits(30, 200);
    EXPECT_FALSE(is_green(render(dial).pixel(x, y)));
}

TEST_F(CompassWidget, SecondNeedleOnlyOnATwoNeedleDial)
{
    // Halfway out along east, where only a needle at 90 can be.
    const int x = 135 + 66, y = 135;
    Compass one("Wind Direction", nullptr, nullptr, 1, Qt::green, Qt::red);
    make_azimuth(one);
    one.setNeedle1(270);
    one.setNeedle2(90);
    EXPECT_FALSE(is_red(render(one).pixel(x, y)));

    Compass two("Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red);
    make_azimuth(two);
    two.setNeedle1(270);
    two.setNeedle2(90);
    QImage image = render(two);
    EXPECT_TRUE(is_red(image.pixel(x, y)));
    EXPECT_TRUE(is_green(image.pixel(135 - 66, y)));

    // On the same bearing the antenna's needle lies over the target's.
    two.setNeedle1(90);
    EXPECT_TRUE(is_red(render(two).pixel(x, y)));
}

TEST_F(CompassWidget, ADialWithoutScalesStillPaints)
{
    Compass dial(nullptr, nullptr, nullptr, 2, Qt::green, Qt::red);
    dial.resize(120, 120);
    dial.setNeedle1(10);
    QImage image = render(dial);
    EXPECT_EQ(dial.background_ready, 1);
    // The centre cap is white whatever became of the needles.
    EXPECT_EQ(image.pixel(60, 60), qRgb(255, 255, 255));
}

TEST_F(CompassWidget, OnlyADragReportsAPosition)
{
    Compass dial("Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red);
    make_azimuth(dial);
    int presses = 0, positions = 0;
    int seen_x = -1, seen_y = -1;
    QObject::connect(&dial, &Compass::MousePressed, [&] { presses++; });
    QObject::connect(&dial, &Compass::MousePosition, [&] {
        positions++;
        seen_x = dial.mouse_x;
        seen_y = dial.mouse_y;
    });

    send_mouse(dial, QEvent::MouseButtonPress, 200, 40, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(positions, 0);
    EXPECT_EQ(dial.mouse_x, 0);
    EXPECT_EQ(dial.mouse_y, 0);

    send_mouse(dial, QEvent::MouseMove, 210, 50, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(positions, 1);
    EXPECT_EQ(seen_x, 210) << "the position is stored before the signal";
    EXPECT_EQ(seen_y, 50);
    send_mouse(dial, QEvent::MouseButtonRelease, 210, 50, Qt::LeftButton, Qt::NoButton);

    // The application drops a hover before the dial sees it unless tracking
    // is on; with it on, the dial itself must ignore the hover.
    dial.setMouseTracking(true);
    send_mouse(dial, QEvent::MouseMove, 20, 30, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(positions, 1) << "a hover is not a touch";
    EXPECT_EQ(dial.mouse_x, 210);
    EXPECT_EQ(presses, 1);
}
