#include "support/test_env.h"
#include "widgets/compass.h"

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

static const CompassScale azimuth_scale = {180, 540, 0, 360, 2, 10};
static const CompassScale elevation_scale = {90, 360, -90, 180, 2, 10};

// Difference of two angles in degrees, folded into -180..180.
static double angle_difference(double a, double b)
{
    return remainder(a - b, 360.0);
}

static double scale_angle(const CompassScale &scale, double value)
{
    return compass_value_angle(value, scale.start_angle, scale.end_angle, scale.minimum, scale.maximum);
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
        double xy[6];
        compass_needle(0, 0, 100, scale_angle(*row.scale, row.value), xy);
        EXPECT_NEAR(xy[4], row.dx, 0.05) << row.why;
        EXPECT_NEAR(xy[5], row.dy, 0.05) << row.why;
    }
}

// A finger on the needle must give back the value the needle shows, or the
// operator would chase the target round the dial.
TEST(CompassTouch, TouchingTheNeedleTipGivesItsValue)
{
    const int c = 135;
    for (int value = 15; value < 360; value += 15)
    {
        double x, y;
        compass_point(c, c, 110, scale_angle(azimuth_scale, value), &x, &y);
        double touched = compass_touch_azimuth((int)lround(x), (int)lround(y), c, c);
        EXPECT_NEAR(angle_difference(touched, value), 0, 0.6) << "azimuth " << value;
        if (value <= 180)
        {
            compass_point(c, c, 110, scale_angle(elevation_scale, value), &x, &y);
            touched = compass_touch_elevation((int)lround(x), (int)lround(y), c, c);
            EXPECT_NEAR(angle_difference(touched, value), 0, 0.6) << "elevation " << value;
        }
    }
    // Straight up lands a hair below 360 rather than on 0 (the five-figure pi
    // does not cancel); either way north, and never negative.
    double north = compass_touch_azimuth(c, c - 120, c, c);
    EXPECT_NEAR(angle_difference(north, 0), 0, 0.001);
    EXPECT_GE(north, 0);
    // Just under the horizon wraps round to nearly 360, for the limits to cut.
    double below = compass_touch_elevation(c - 120, c + 2, c, c);
    EXPECT_GT(below, 358);
    EXPECT_LT(below, 360);
}

// Label values step evenly (one cut toward zero after a rounding error would
// read 33 between 34 and 32); a partial sweep gets its closing label; a
// degenerate or too fine scale draws nothing or stops at the room given.
TEST(CompassScales, LabelsAndTicksOfEachScale)
{
    struct Row
    {
        CompassScale scale;
        bool inner;
        int ticks, labels;
        const char *first, *last;
        int step;
    };
    const Row rows[] = {
        {azimuth_scale, false, 180, 36, "360", "10", 10},
        {elevation_scale, false, -1, 28, "180", "-90", 10},
        {{40, 320, 0, 140, 2, 10}, false, -1, 29, "140", "0", 5},
        {{90, 270, -30, 150, 2, 10}, false, -1, 19, "150", "-30", 10},
        {{90, 270, 25, 35, 3, 18}, false, -1, 11, "35", "25", 1},
        {{180, 540, 0, 10, 4, 36}, false, -1, 10, "10", "1", 1},
        {{180, 540, 0, 180, 2, 10}, false, 180, 36, nullptr, nullptr, 0},
        {{90, 270, 0, 180, 2, 10}, false, 91, 19, "180", "0", 10},
        {{90, 270, 847, 1185, 6, 36}, true, 57, 10, "1185", "861", 36},
        {{90, 270, -34.4, 65.6, 5, 10}, true, -1, 11, "65", "-34", 0},
        {{40, 320, 0, 225.308, 5, 25}, true, 46, 10, nullptr, "0", 0},
        {{180, 540, 0, 100, 5, 10}, true, -1, 10, "0", nullptr, 0},
        {{0, 0, 0, 0, 2, 10}, false, -1, 0, nullptr, nullptr, 0},
        {{0, 0, 0, 0, 2, 10}, true, -1, 0, nullptr, nullptr, 0},
        {{180, 540, 0, 360, 0, 0}, false, 0, -1, nullptr, nullptr, 0},
        {{360, 90, 0, 100, 2, 10}, false, 0, -1, nullptr, nullptr, 0},
    };
    for (const Row &row : rows)
    {
        CompassTick ticks[COMPASS_MAX_TICKS];
        CompassLabel labels[COMPASS_MAX_LABELS];
        auto tick_fn = row.inner ? compass_inner_ticks : compass_outer_ticks;
        auto label_fn = row.inner ? compass_inner_labels : compass_outer_labels;
        SCOPED_TRACE(testing::Message() << row.scale.minimum << ".." << row.scale.maximum << (row.inner ? " in" : ""));
        int count = tick_fn(&row.scale, ticks, COMPASS_MAX_TICKS);
        EXPECT_TRUE(row.ticks < 0 || count == row.ticks) << count << " ticks";
        count = label_fn(&row.scale, labels, COMPASS_MAX_LABELS);
        ASSERT_TRUE(row.labels < 0 || count == row.labels) << count << " labels";
        EXPECT_TRUE(!row.first || strcmp(labels[0].text, row.first) == 0) << labels[0].text;
        EXPECT_TRUE(!row.last || strcmp(labels[count - 1].text, row.last) == 0) << labels[count - 1].text;
        for (int i = 1; row.step && i < count; i++)
        {
            EXPECT_EQ(atoi(labels[i - 1].text) - atoi(labels[i].text), row.step) << "label " << i;
        }
    }
    // On a full circle the first label names the minimum, where both ends meet.
    CompassLabel labels[COMPASS_MAX_LABELS];
    const CompassScale round_scale = {180, 540, 0, 100, 5, 10};
    compass_inner_labels(&round_scale, labels, COMPASS_MAX_LABELS);
    EXPECT_STREQ(labels[1].text, "90");
    // A half sweep closes on its minimum, at the end angle.
    const CompassScale half = {90, 270, 0, 180, 2, 10};
    compass_outer_labels(&half, labels, COMPASS_MAX_LABELS);
    EXPECT_DOUBLE_EQ(labels[18].angle, 270);
    // North reads 360 at the top, 350 counter-clockwise left of it.
    compass_outer_labels(&azimuth_scale, labels, COMPASS_MAX_LABELS);
    double x, y;
    compass_point(0, 0, 100, labels[0].angle, &x, &y);
    EXPECT_TRUE(fabs(x) < 1e-3 && y < 0) << x << " " << y;
    compass_point(0, 0, 100, labels[1].angle, &x, &y);
    EXPECT_LT(x, 0);
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
    // The painter counts from three o'clock; turned back into dial degrees the
    // arc must start on the high limit and end on the low one.
    ASSERT_EQ(compass_limit_arc(&azimuth_scale, 10, 350, &start16, &span16), 0);
    EXPECT_NEAR(angle_difference(start16 / 16.0 + 90, scale_angle(azimuth_scale, 350)), 0, 0.1);
    EXPECT_NEAR(angle_difference((start16 + span16) / 16.0 + 90, scale_angle(azimuth_scale, 10)), 0, 0.1);
    EXPECT_EQ(span16, 340 * 16);
    // Limits through north (low above high) sweep the other way.
    ASSERT_EQ(compass_limit_arc(&azimuth_scale, 270, 90, &start16, &span16), 0);
    EXPECT_EQ(span16, -180 * 16);
    EXPECT_NEAR(angle_difference(start16 / 16.0 + 90, scale_angle(azimuth_scale, 90)), 0, 0.1);
}

class CompassWidget : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        dial.resize(270, 270);
        dial.setOuterScale(180, 540, 0, 360, 2, 10);
    }
    Compass dial{"Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red};

    QRgb pixel(int x, int y)
    {
        QImage image(dial.size(), QImage::Format_ARGB32);
        image.fill(Qt::magenta);
        dial.render(&image);
        return image.pixel(x, y);
    }
    static bool is_green(QRgb p)
    {
        return qGreen(p) > 200 && qRed(p) < 60 && qBlue(p) < 60;
    }
    void mouse(QEvent::Type type, int x, int y, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, QPointF(x, y), dial.mapToGlobal(QPointF(x, y)), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&dial, &event);
    }
};

// Needles and texts reuse the cached rings; only new limits (or a new size)
// rebuild them. West on the limit ring is clear of needles, ticks and texts.
TEST_F(CompassWidget, OnlyNewLimitsOrSizeRebuildThePicture)
{
    const int x = 135 - (int)lround(COMPASS_LIMIT_RING * 133), y = 135;
    pixel(0, 0);
    dial.setNeedle1(45);
    dial.setValueText("  45.00");
    EXPECT_EQ(dial.background_ready, 1);
    dial.setLimits(0, 0);
    EXPECT_EQ(dial.background_ready, 0);
    EXPECT_FALSE(is_green(pixel(x, y))) << "equal limits draw no arc";
    dial.setLimits(10, 350);
    EXPECT_TRUE(is_green(pixel(x, y)));
    dial.setLimits(30, 200);
    EXPECT_FALSE(is_green(pixel(x, y))) << "limits on the east side leave the west bare";
    dial.resize(201, 180);
    pixel(0, 0);
    EXPECT_EQ(dial.radius, 88);
    EXPECT_EQ(dial.background.deviceIndependentSize().toSize(), QSize(201, 180));
}

// The application drops a hover before the dial sees it unless tracking is
// on; with it on, the dial itself must ignore the hover.
TEST_F(CompassWidget, OnlyADragReportsAPosition)
{
    int presses = 0, positions = 0, seen_x = -1;
    QObject::connect(&dial, &Compass::MousePressed, [&] { presses++; });
    QObject::connect(&dial, &Compass::MousePosition, [&] { positions++, seen_x = dial.mouse_x; });
    mouse(QEvent::MouseButtonPress, 200, 40, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(positions, 0);
    mouse(QEvent::MouseMove, 210, 50, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(positions, 1);
    EXPECT_EQ(seen_x, 210) << "the position is stored before the signal";
    mouse(QEvent::MouseButtonRelease, 210, 50, Qt::LeftButton, Qt::NoButton);
    dial.setMouseTracking(true);
    mouse(QEvent::MouseMove, 20, 30, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(positions, 1) << "a hover is not a touch";
}
