// The sky map window driven as an operator would: step buttons and Play on
// its own clock, back to real time, clicks and the tip, the configuration
// and frequency dialogs, the layers that are off, the menu entry of the
// panel; and the common window with a DX station. The window's timer is
// stopped and its ticks called one by one on a frozen clock.
#include "astro/source.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/state.h"
#include "skymap/common_window.h"
#include "skymap/frequency_dialog.h"
#include "skymap/overlays.h"
#include "skymap/overlays_dialog.h"
#include "skymap/skymap_dialog.h"
#include "support/test_env.h"
#include "widgets/enter.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

namespace
{

// 2024-04-08 18:17:16 UTC: the Moon has just set at the home station (Berlin)
// and stands high over the DX station (Connecticut).
const time_t frozen = 1712600236;

// Act on the dialog of class D as soon as its own event loop runs.
template <class D> void when_open(std::function<void(D *)> act)
{
    QTimer::singleShot(0,
                       [act]()
                       {
                           for (QWidget *w : QApplication::topLevelWidgets())
                           {
                               D *d = qobject_cast<D *>(w);
                               if (d && d->isVisible())
                               {
                                   act(d);
                                   return;
                               }
                           }
                       });
}

class SkyMap : public testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        enter_reset();
        skymap_reset_counters();
        const char *bin = getenv("MORVANE_BIN");
        skymap_set_folder(bin ? bin : ".");
        clock_freeze(frozen);
        text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
        settings.Latitude = 52.5;
        settings.Longitude = 13.5;
        settings.Frequency = 1296.0;
        map = new SkyMapDialog();
        map->timer->stop();
    }
    void TearDown() override
    {
        delete map;
        enter_reset();
        skymap_set_folder(nullptr);
        test_reset_state();
    }
    SkyMapDialog *map;

    void ticks(int n)
    {
        for (int i = 0; i < n; i++)
        {
            map->TimerEvent();
        }
    }
    void press(int control)
    {
        emit static_cast<QAbstractButton *>(map->controls[control])->pressed();
    }
    QString text(int control)
    {
        return static_cast<QAbstractButton *>(map->controls[control])->text();
    }
    bool styled(int control, const char *colour)
    {
        return map->controls[control]->styleSheet().contains(QString::fromLatin1(colour));
    }
    void mouse(QEvent::Type type, int x, int y, Qt::MouseButton button)
    {
        QMouseEvent event(type, QPointF(x, y), map->mapToGlobal(QPointF(x, y)), button,
                          type == QEvent::MouseMove ? Qt::NoButton : button, Qt::NoModifier);
        QApplication::sendEvent(map, &event);
    }
};

} // namespace

TEST_F(SkyMap, StepButtonsAndPlayRunTheMapsOwnClock)
{
    press(MAP_STEP_HOUR_PLUS);
    press(MAP_STEP_HOUR_PLUS);
    EXPECT_EQ(map_time_offset, 7200);
    EXPECT_TRUE(styled(MAP_STEP_HOUR_PLUS, "DarkBlue"));
    EXPECT_TRUE(styled(MAP_STEP_HOUR_MINUS, "Gray"));
    press(MAP_STEP_WEEK_MINUS);
    EXPECT_EQ(map_time_offset, 7200 - 604800);
    EXPECT_TRUE(styled(MAP_STEP_HOUR_PLUS, "Gray"));
    press(MAP_STEP_MIN_PLUS);
    EXPECT_EQ(map_time_offset, 7200 - 604800 + 600);

    // Play runs the last step once a second of ticks.
    press(MAP_PLAY);
    EXPECT_TRUE(styled(MAP_PLAY, "DarkBlue"));
    int before = map_time_offset;
    ticks(101);
    EXPECT_EQ(map_time_offset, before + 600);
    ticks(101);
    EXPECT_EQ(map_time_offset, before + 1200);

    // Back to real time: Play off, no step, the lit step button stays lit.
    press(MAP_SET_DATE_TIME);
    EXPECT_EQ(map_time_offset, 0);
    EXPECT_FALSE(map->map_playing);
    EXPECT_EQ(map->map_adjust_step, 0);
    EXPECT_TRUE(styled(MAP_PLAY, "Gray"));
    EXPECT_TRUE(styled(MAP_STEP_MIN_PLUS, "DarkBlue"));
    press(MAP_PLAY);
    ticks(202);
    EXPECT_EQ(map_time_offset, 0) << "Play with no step leaves the time";
}

// The first tick fills the figures; afterwards only the Moon follows the
// clock each second, and the other bodies stand where they were put.
TEST_F(SkyMap, FiguresFollowTheClockOnceASecond)
{
    ticks(1);
    EXPECT_EQ(text(MAP_SET_DATE_TIME), "Mon Apr  8 18:17:16 2024");
    EXPECT_TRUE(styled(MAP_HOME_AZIMUTH, "DarkRed")) << "the Moon has set at home";
    EXPECT_TRUE(styled(MAP_PATH_LOSS, "DarkGreen"));
    EXPECT_NE(text(MAP_HOME_AZIMUTH), "");
    EXPECT_TRUE(text(MAP_DISTANCE).endsWith(" km"));
    EXPECT_EQ(text(MAP_DX_AZIMUTH), "") << "no DX station, no DX figures";
    EXPECT_EQ(map->map_draws, 1);

    double moon = source_table[SOURCE_MOON].sub_lng, sun = source_table[SOURCE_SUN].sub_lng;
    clock_freeze(frozen + 600);
    ticks(100);
    EXPECT_EQ(source_table[SOURCE_MOON].sub_lng, moon);
    ticks(1);
    EXPECT_NE(source_table[SOURCE_MOON].sub_lng, moon);
    EXPECT_EQ(source_table[SOURCE_SUN].sub_lng, sun);
}

TEST_F(SkyMap, ClicksMakeADxStationAndTheTipFollowsThePointer)
{
    // A left click takes the place itself, not its locator's centre.
    mouse(QEvent::MouseButtonPress, 410, 150, Qt::LeftButton);
    EXPECT_STREQ(dx_grid, "JL22gm");
    EXPECT_DOUBLE_EQ(dx_latitude, 22.5);
    EXPECT_DOUBLE_EQ(dx_longitude, 4.5);
    EXPECT_EQ(dx_station_valid, 1);
    ticks(1);
    EXPECT_NE(text(MAP_DX_AZIMUTH), "") << "the DX figures come with the next refresh";
    EXPECT_TRUE(map->map_layers & MAP_LAYER_COMMON_WINDOW);

    // A right click changes no station; it only refreshes the display.
    settings.Frequency = 144.0;
    mouse(QEvent::MouseButtonPress, 100, 100, Qt::RightButton);
    EXPECT_STREQ(dx_grid, "JL22gm");
    EXPECT_EQ(text(MAP_SET_FREQUENCY), " 144.00 MHz");

    // Turned by six hours, the pixel where Greenwich is drawn reads as 0.
    overlays.MapOffset = 6;
    mouse(QEvent::MouseButtonPress, 598, 200, Qt::LeftButton);
    EXPECT_DOUBLE_EQ(dx_longitude, 0.0);
    EXPECT_DOUBLE_EQ(dx_latitude, 0.0);

    mouse(QEvent::MouseMove, 750, 300, Qt::NoButton);
    EXPECT_EQ(map->tip.visible, 1);
    EXPECT_EQ(map->tip.rect, QRect(654, 280, 130, 20)) << "near the right edge the tip stands left of the pointer";
    mouse(QEvent::MouseMove, 300, 10, Qt::NoButton);
    EXPECT_EQ(map->tip.rect, QRect(300, -10, 130, 20));
    ticks(1);
    EXPECT_TRUE(map->map_layers & MAP_LAYER_TIP);
    mouse(QEvent::MouseMove, 300, 450, Qt::NoButton);
    EXPECT_EQ(map->tip.visible, 0) << "off the map";

    // Left alone, the tip goes at the next five-second mark.
    skymap_reset_counters();
    mouse(QEvent::MouseMove, 300, 100, Qt::NoButton);
    ticks(500);
    EXPECT_EQ(map->tip.visible, 1);
    ticks(1);
    EXPECT_EQ(map->tip.visible, 0);
    EXPECT_FALSE(map->map_layers & MAP_LAYER_TIP);
}

// A shade that is off is neither built nor painted; switched on, it shows
// within two seconds.
TEST_F(SkyMap, ShadeThatIsOffCostsNothing)
{
    ticks(201);
    EXPECT_EQ(map->sun_shade_builds + map->moon_shade_builds, 0);
    EXPECT_FALSE(map->map_layers & (MAP_LAYER_SUN_SHADE | MAP_LAYER_MOON_SHADE));
    overlays.SunShadingOverlay = 1;
    ticks(201);
    EXPECT_EQ(map->sun_shade_builds, 1);
    EXPECT_EQ(map->moon_shade_builds, 0);
    EXPECT_TRUE(map->map_layers & MAP_LAYER_SUN_SHADE);
}

// OK moves the map to the date shown, read as UTC: unchanged, that is the
// instant the dialog opened, so the clock now runs behind by the time the
// dialog was open. A day past the month's end runs into the next month.
TEST_F(SkyMap, ConfigurationOkMovesTheClockToTheDateShown)
{
    struct Row
    {
        int month_index, day_index; // -1: as shown
        time_t want;                // the map's time after OK
    };
    static const Row rows[] = {{-1, -1, frozen + 5000}, {3, 30, 1714592436}};
    for (const Row &r : rows)
    {
        clock_freeze(frozen);
        map_time_offset = 5000;
        when_open<OverlaysDialog>(
            [&r](OverlaysDialog *d)
            {
                if (r.month_index >= 0)
                {
                    d->findChild<QComboBox *>("MonthComboBox")->setCurrentIndex(r.month_index);
                    d->findChild<QComboBox *>("DayComboBox")->setCurrentIndex(r.day_index);
                }
                clock_freeze(frozen + 30);
                d->accept();
            });
        press(MAP_SET_CONFIGURATION);
        EXPECT_EQ(frozen + 30 + map_time_offset, r.want);
    }
    OverlaySettings saved;
    LoadOverlays(ini_file_name, saved);
    EXPECT_EQ(saved.StarsMagnitude, 6) << "OK saves the section";
}

// Cancel keeps what the boxes changed but neither saves nor moves the clock;
// closing the window saves.
TEST_F(SkyMap, ConfigurationCancelKeepsTheSwitchesAndClosingSavesThem)
{
    when_open<OverlaysDialog>(
        [](OverlaysDialog *d)
        {
            d->findChild<QCheckBox *>("ConstellationsCheckbox")->click();
            d->findChild<QComboBox *>("MapOffsetComboBox")->setCurrentIndex(23);
            d->findChild<QComboBox *>("StarsMagnitudeComboBox")->setCurrentIndex(0);
            d->reject();
        });
    press(MAP_SET_CONFIGURATION);
    EXPECT_EQ(overlays.ConstellationsOverlay, 1);
    EXPECT_EQ(overlays.MapOffset, 23);
    EXPECT_EQ(overlays.StarsMagnitude, 0);
    EXPECT_EQ(map_time_offset, 0);
    EXPECT_EQ(test_read_file(std::string(test_home()) + "/.config/Morvane/Morvane.ini"), "");
    delete map;
    map = nullptr;
    OverlaySettings saved;
    LoadOverlays(ini_file_name, saved);
    EXPECT_EQ(saved.MapOffset, 23);
    EXPECT_EQ(saved.ConstellationsOverlay, 1);
    map = new SkyMapDialog();
    map->timer->stop();
}

// The frequency counts at once, from the map's button or the dialog's.
TEST_F(SkyMap, FrequencyIsTypedOnTheKeypad)
{
    static const char *const answers[] = {"144.1", "432abc", "10368.1000000001"};
    enter_set_answers(answers, 3);
    when_open<FrequencyDialog>(
        [](FrequencyDialog *d)
        {
            emit d->FrequencyEdit->pressed();
            EXPECT_EQ(d->FrequencyEdit->text(), "144.1");
            d->accept();
        });
    press(MAP_SET_FREQUENCY);
    EXPECT_EQ(settings.Frequency, 144.1);
    EXPECT_EQ(text(MAP_SET_FREQUENCY), " 144.10 MHz");
    OverlaysDialog configuration;
    emit configuration.FrequencyEdit->pressed();
    EXPECT_EQ(settings.Frequency, 432.0);
    EXPECT_STREQ(enter_last_text, " 144.10");
    emit configuration.FrequencyEdit->pressed();
    EXPECT_EQ(settings.Frequency, 10368.1000000001) << "sixteen characters, the limit, end there";
}

// The panel's menu bar opens the map with the cycle stopped, and starts the
// cycle again with the remote display asked to redraw everything.
TEST_F(SkyMap, PanelMenuOpensTheMapWithTheCycleStopped)
{
    MainWindow window(0);
    window.MenuButtonPressed();
    QAction *entry = nullptr;
    for (QAction *a : window.menu_bar->actions())
    {
        entry = a->text() == "SkyMap" ? a : entry;
    }
    ASSERT_NE(entry, nullptr);
    bool cycle_ran = true;
    source_changed = az_changed = el_changed = 0;
    when_open<SkyMapDialog>(
        [&](SkyMapDialog *d)
        {
            cycle_ran = window.timer->isActive();
            d->reject();
        });
    entry->trigger();
    EXPECT_FALSE(cycle_ran);
    EXPECT_TRUE(window.timer->isActive());
    EXPECT_EQ(source_changed + az_changed + el_changed, 3);
}

// The window with a DX station, looked at minute by minute against the
// engine, and none at all with the station on the other side of the Earth.
TEST(CommonWindow, MatchesTheEngineMinuteByMinute)
{
    struct Row
    {
        double dx_latitude, dx_longitude;
        int spans;
    };
    static const Row rows[] = {{41.7, -72.7, 1}, {-52.5, -166.5, 0}, {52.5, 13.5, 1}};
    for (const Row &r : rows)
    {
        CommonWindow w;
        common_window_find(&w, frozen + 17, 52.5, 13.5, r.dx_latitude, r.dx_longitude);
        EXPECT_EQ(w.from, frozen - 16);
        EXPECT_EQ(w.count, r.spans) << r.dx_longitude;
        int span = 0;
        for (int m = 0; m <= COMMON_WINDOW_MINUTES; m++)
        {
            struct tm utc;
            time_t t = w.from + 60 * m;
            gmtime_r(&t, &utc);
            SourceRecord home = {}, dx = {};
            source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &utc, 52.5, 13.5, 1296, home);
            source_calculate(SOURCE_MOON, SOURCE_MASK_POSITION, &utc, r.dx_latitude, r.dx_longitude, 1296, dx);
            while (span < w.count && m > w.last[span])
            {
                span++;
            }
            bool inside = span < w.count && m >= w.first[span];
            ASSERT_EQ(inside, home.above_horizon && dx.above_horizon) << "minute " << m;
        }
    }
    CommonWindow w = {};
    EXPECT_EQ(common_window_update(&w, frozen, 52.5, 13.5, 41.7, -72.7), 1);
    EXPECT_EQ(common_window_update(&w, frozen + 40, 52.5, 13.5, 41.7, -72.7), 0) << "the same minute";
    EXPECT_EQ(common_window_update(&w, frozen + 44, 52.5, 13.5, 41.7, -72.7), 1);
    EXPECT_EQ(common_window_update(&w, frozen + 44, 52.5, 13.5, 41.7, -72.8), 1);
}
