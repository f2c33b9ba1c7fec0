#include "core/mainwindow.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_dx_station_dialog.h"
#include "ui_home_station_dialog.h"
#include "widgets/dx_station_dialog.h"
#include "widgets/dx_stations.h"
#include "widgets/enter.h"
#include "widgets/home_station_dialog.h"
#include "widgets/locator.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>

class Stations : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        enter_reset();
    }
    void TearDown() override
    {
        enter_reset();
        test_reset_state();
    }
};

static void touch(QPushButton *button)
{
    emit button->pressed();
}

static std::string text_of(QPushButton *button)
{
    return button->text().toStdString();
}

// Close the next modal dialog of type D once it runs, after a look inside it.
// Whatever else is modal then is closed too, so a wrong dialog fails the test
// instead of hanging it.
template <class D> static void close_next(bool accept, std::function<void(D *)> inside = nullptr)
{
    QTimer::singleShot(0,
                       [accept, inside]()
                       {
                           QWidget *modal = QApplication::activeModalWidget();
                           D *dialog = qobject_cast<D *>(modal);
                           if (!dialog)
                           {
                               ADD_FAILURE() << "expected dialog did not open";
                               if (modal)
                               {
                                   modal->close();
                               }
                               return;
                           }
                           if (inside)
                           {
                               inside(dialog);
                           }
                           if (accept)
                           {
                               dialog->accept();
                           }
                           else
                           {
                               dialog->reject();
                           }
                       });
}

TEST(HomeStationDms, SplitsTheAngleForTheThreeButtons)
{
    struct Row
    {
        double value;
        int degrees, minutes;
        double seconds;
        int negative;
    };
    const Row rows[] = {
        {52.5, 52, 30, 0.0, 0},      {-0.5, 0, 30, 0.0, 1}, {13.4125, 13, 24, 45.0, 0},
        {-122.88, 122, 52, 48.0, 1}, {0.0, 0, 0, 0.0, 0},
    };
    for (const Row &row : rows)
    {
        int d = -1, m = -1, negative = -1;
        double s = -1;
        home_station_dms(row.value, &d, &m, &s, &negative);
        EXPECT_EQ(row.degrees, d) << row.value;
        EXPECT_EQ(row.minutes, m) << row.value;
        EXPECT_NEAR(row.seconds, s, 1e-6) << row.value;
        EXPECT_EQ(row.negative, negative) << row.value;
    }
}

TEST_F(Stations, HomeDialogOpensWithTheRecord)
{
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    text_copy(settings.Location, sizeof settings.Location, "Berlin");
    settings.Frequency = 144.1;
    settings.Latitude = -0.5;
    settings.Longitude = 13.5;
    HomeStationDialog dialog;
    EXPECT_EQ(QString("Home Station"), dialog.windowTitle());
    EXPECT_EQ("DL7APV", text_of(dialog.ui->CallsignEdit));
    EXPECT_EQ("JO62sm", text_of(dialog.ui->GridEdit));
    EXPECT_EQ("Berlin", text_of(dialog.ui->LocationEdit));
    EXPECT_EQ(" 144.10", text_of(dialog.ui->FrequencyEdit));
    EXPECT_EQ("-0.500000", text_of(dialog.ui->LatitudeEdit));
    EXPECT_EQ("0", text_of(dialog.ui->LatitudeDegEdit));
    EXPECT_EQ("30", text_of(dialog.ui->LatitudeMinEdit));
    EXPECT_EQ(1, dialog.ui->LatitudeNS->currentIndex());
    EXPECT_EQ(0, dialog.ui->LongitudeEW->currentIndex());
    // Showing the position left it alone.
    EXPECT_EQ(-0.5, settings.Latitude);
    const QString gray = panel_style_text(STYLE_GRAY);
    EXPECT_EQ(gray, dialog.ui->gridConvertButton->styleSheet());
    EXPECT_EQ(gray, dialog.ui->LatitudeSecEdit->styleSheet());
    EXPECT_EQ(gray, dialog.ui->LongitudeEW->styleSheet());
}

TEST_F(Stations, TextFieldsGoThroughTheKeyboardIntoTheRecord)
{
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    HomeStationDialog dialog;
    const char *const answers[] = {"W1AW", "Newington CT", "FN31pr"};
    enter_set_answers(answers, 3);
    touch(dialog.ui->CallsignEdit);
    EXPECT_STREQ("Callsign", enter_last_title);
    EXPECT_STREQ("DL7APV", enter_last_text);
    EXPECT_EQ(12, enter_last_max_length);
    touch(dialog.ui->LocationEdit);
    EXPECT_EQ(64, enter_last_max_length);
    touch(dialog.ui->GridEdit);
    EXPECT_STREQ("Grid", enter_last_title);
    EXPECT_EQ(9, enter_last_max_length);
    EXPECT_STREQ("W1AW", settings.Callsign);
    EXPECT_STREQ("Newington CT", settings.Location);
    EXPECT_STREQ("FN31pr", settings.Grid);
    EXPECT_EQ("W1AW", text_of(dialog.ui->CallsignEdit));
    EXPECT_EQ("FN31pr", text_of(dialog.ui->GridEdit));
    // The locator alone doesn't move the station.
    EXPECT_EQ(0.0, settings.Latitude);
    EXPECT_EQ(0.0, settings.Longitude);
}

TEST_F(Stations, OverlongAnswersStayInsideTheirFields)
{
    HomeStationDialog dialog;
    const char *const answers[] = {"ABCDEFGHIJKLMNOP", "JO62qm12345"};
    enter_set_answers(answers, 2);
    touch(dialog.ui->CallsignEdit);
    touch(dialog.ui->GridEdit);
    EXPECT_LT(strnlen(settings.Callsign, sizeof settings.Callsign), sizeof settings.Callsign);
    EXPECT_LT(strnlen(settings.Grid, sizeof settings.Grid), sizeof settings.Grid);
    EXPECT_EQ(0, strncmp("ABCDEFGHIJK", settings.Callsign, 11));
}

TEST_F(Stations, DeclinedEditorsChangeNothing)
{
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    settings.Frequency = 1296.123;
    HomeStationDialog dialog;
    const char *const answers[] = {nullptr, nullptr, nullptr};
    enter_set_answers(answers, 3);
    touch(dialog.ui->CallsignEdit);
    touch(dialog.ui->FrequencyEdit);
    touch(dialog.ui->LatitudeDegEdit);
    EXPECT_STREQ("DL7APV", settings.Callsign);
    EXPECT_EQ(1296.123, settings.Frequency);
    EXPECT_EQ(0.0, settings.Latitude);
}

TEST_F(Stations, NumbersGoThroughTheKeypad)
{
    settings.Frequency = 1296.0;
    HomeStationDialog dialog;
    const char *const answers[] = {"432.066", "-33.5", "151.25"};
    enter_set_answers(answers, 3);
    touch(dialog.ui->FrequencyEdit);
    EXPECT_STREQ("1296.00", enter_last_text);
    EXPECT_EQ(16, enter_last_max_length);
    EXPECT_DOUBLE_EQ(432.066, settings.Frequency);
    EXPECT_EQ(" 432.07", text_of(dialog.ui->FrequencyEdit));
    touch(dialog.ui->LatitudeEdit);
    EXPECT_EQ(20, enter_last_max_length);
    EXPECT_DOUBLE_EQ(-33.5, settings.Latitude);
    EXPECT_EQ("33", text_of(dialog.ui->LatitudeDegEdit));
    EXPECT_EQ("30", text_of(dialog.ui->LatitudeMinEdit));
    EXPECT_EQ(1, dialog.ui->LatitudeNS->currentIndex());
    touch(dialog.ui->LongitudeEdit);
    EXPECT_DOUBLE_EQ(151.25, settings.Longitude);
    EXPECT_EQ("151", text_of(dialog.ui->LongitudeDegEdit));
    EXPECT_EQ("15", text_of(dialog.ui->LongitudeMinEdit));
    EXPECT_EQ(0, dialog.ui->LongitudeEW->currentIndex());
}

TEST_F(Stations, DegreesMinutesSecondsMakeThePosition)
{
    HomeStationDialog dialog;
    const char *const answers[] = {"45", "30", "36", "122", "15", "0"};
    enter_set_answers(answers, 6);
    touch(dialog.ui->LatitudeDegEdit);
    EXPECT_EQ(20, enter_last_max_length);
    touch(dialog.ui->LatitudeMinEdit);
    EXPECT_EQ(10, enter_last_max_length);
    touch(dialog.ui->LatitudeSecEdit);
    EXPECT_NEAR(45.51, settings.Latitude, 1e-12);
    EXPECT_EQ("45.510000", text_of(dialog.ui->LatitudeEdit));
    dialog.ui->LatitudeNS->setCurrentIndex(1);
    EXPECT_NEAR(-45.51, settings.Latitude, 1e-12);

    touch(dialog.ui->LongitudeDegEdit);
    EXPECT_EQ(10, enter_last_max_length);
    touch(dialog.ui->LongitudeMinEdit);
    touch(dialog.ui->LongitudeSecEdit);
    dialog.ui->LongitudeEW->setCurrentIndex(1);
    EXPECT_NEAR(-122.25, settings.Longitude, 1e-12);
    EXPECT_EQ("-122.250000", text_of(dialog.ui->LongitudeEdit));
}

TEST_F(Stations, GridConvertTakesAGoodLocatorOnly)
{
    settings.Latitude = 10.0;
    settings.Longitude = 20.0;
    text_copy(settings.Grid, sizeof settings.Grid, "XX");
    HomeStationDialog dialog;
    touch(dialog.ui->gridConvertButton);
    EXPECT_EQ(10.0, settings.Latitude);
    EXPECT_EQ(20.0, settings.Longitude);

    text_copy(settings.Grid, sizeof settings.Grid, "QE37pb");
    touch(dialog.ui->gridConvertButton);
    double lat, lon;
    ASSERT_EQ(0, grid_to_position("QE37pb", &lat, &lon));
    EXPECT_EQ(lat, settings.Latitude);
    EXPECT_EQ(lon, settings.Longitude);
    EXPECT_EQ(1, dialog.ui->LatitudeNS->currentIndex());
    char shown[32];
    snprintf(shown, sizeof shown, "%7.6f", lon);
    EXPECT_EQ(shown, text_of(dialog.ui->LongitudeEdit));
}

static std::string write_list(const char *text)
{
    std::string path = std::string(test_home()) + "/stations.txt";
    FILE *f = fopen(path.c_str(), "w");
    fputs(text, f);
    fclose(f);
    return path;
}

TEST_F(Stations, DxTableShowsTheListInColouredGroups)
{
    std::string path = write_list("W5UN,EM13qc,,,,,Dallas,\n"
                                  ",,,,,,Europe,\n"
                                  "G3SEK,IO91in,,,,,Reading,\n"
                                  "NOGRID,??,,,,,Nowhere,\n"
                                  ",,,,,,Asia,\n"
                                  ",,,,,,Pacific,\n"
                                  ",,,,,,Africa,\n");
    DxStationDialog dialog(nullptr, path.c_str());
    QTableWidget *table = dialog.ui->tableWidget;
    EXPECT_EQ(QString("DX Station Selections"), dialog.windowTitle());
    ASSERT_EQ(7, table->rowCount());
    ASSERT_EQ(5, table->columnCount());
    const char *headers[] = {"Location", "Prefix / Call", "Grid", "Latitude", "Longitude"};
    for (int c = 0; c < 5; c++)
    {
        EXPECT_EQ(QString(headers[c]), table->horizontalHeaderItem(c)->text());
    }
    EXPECT_EQ(200, table->columnWidth(0));
    EXPECT_FALSE(table->isSortingEnabled());
    EXPECT_EQ(QString("Reading"), table->item(2, 0)->text());
    EXPECT_EQ(QString("G3SEK"), table->item(2, 1)->text());
    EXPECT_EQ(QString("IO91in"), table->item(2, 2)->text());
    EXPECT_EQ(QString(""), table->item(3, 3)->text());
    EXPECT_EQ(QString(""), table->item(3, 4)->text());
    char latitude[16];
    snprintf(latitude, sizeof latitude, "%5.2f", dx_station_table[2].latitude);
    EXPECT_EQ(QString(latitude), table->item(2, 3)->text());
    EXPECT_NE(0.0, dx_station_table[2].latitude);

    // Colours 0, then each heading moves on: 1 for Europe, 2, 3, and back to 0.
    const int expected[] = {0, 1, 1, 1, 2, 3, 0};
    for (int row = 0; row < 7; row++)
    {
        int r, g, b;
        dx_station_colour(expected[row], &r, &g, &b);
        EXPECT_EQ(QColor(r, g, b), table->item(row, 4)->background().color()) << row;
    }
    int r, g, b;
    dx_station_colour(1, &r, &g, &b);
    EXPECT_EQ(QColor(239, 255, 85), QColor(r, g, b));
}

TEST_F(Stations, DxClickTakesTheStationAtOnceEvenIfCancelled)
{
    std::string path = write_list("W5UN,EM13qc,,,,,Dallas,\n"
                                  "NOGRID,??,,,,,Nowhere,\n");
    DxStationDialog dialog(nullptr, path.c_str());
    QTableWidget *table = dialog.ui->tableWidget;
    emit table->itemClicked(table->item(0, 3));
    EXPECT_STREQ("W5UN", dx_call);
    EXPECT_STREQ("EM13qc", dx_grid);
    double lat, lon;
    ASSERT_EQ(0, grid_to_position("EM13qc", &lat, &lon));
    EXPECT_EQ(lat, dx_latitude);
    EXPECT_EQ(lon, dx_longitude);
    // A row whose locator doesn't convert still selects, with zeros.
    emit table->itemClicked(table->item(1, 0));
    EXPECT_STREQ("NOGRID", dx_call);
    EXPECT_STREQ("??", dx_grid);
    EXPECT_EQ(0.0, dx_latitude);
    dialog.reject();
    EXPECT_STREQ("NOGRID", dx_call);
}

TEST_F(Stations, FiguresShowOnlyWithoutDopplerAndWithBothStations)
{
    text_copy(settings.Grid, sizeof settings.Grid, "JJ00");
    text_copy(dx_grid, sizeof dx_grid, "JJ01");
    doppler_mode = 1;
    panel_update_display();
    EXPECT_STREQ("", panel_last_text[PANEL_HOME_DOPPLER]);
    EXPECT_STREQ("", panel_last_text[PANEL_DX_DOPPLER]);

    // One degree of a meridian, 111.125 km; due north.
    doppler_mode = 0;
    panel_update_display();
    EXPECT_STREQ(" 111.13 km", panel_last_text[PANEL_HOME_DOPPLER]);
    EXPECT_STREQ(" 0.00", panel_last_text[PANEL_DX_DOPPLER]);

    text_copy(dx_grid, sizeof dx_grid, "JI09");
    panel_update_display();
    EXPECT_STREQ("180.00", panel_last_text[PANEL_DX_DOPPLER]);
}

TEST_F(Stations, NoFiguresWithoutADxStation)
{
    text_copy(settings.Grid, sizeof settings.Grid, "JJ00");
    doppler_mode = 0;
    panel_update_display();
    EXPECT_EQ(1, home_station_valid);
    EXPECT_EQ(0, dx_station_valid);
    EXPECT_STREQ("", panel_last_text[PANEL_HOME_DOPPLER]);
}

TEST_F(Stations, ConfigureMenuOpensBothDialogs)
{
    MainWindow w(0);
    w.MenuButtonPressed();
    ASSERT_NE(nullptr, w.menu_bar);
    QMenu *configure = nullptr;
    for (QAction *action : w.menu_bar->actions())
    {
        if (action->text() == "Configure")
        {
            configure = action->menu();
        }
    }
    ASSERT_NE(nullptr, configure);
    EXPECT_EQ(QString(panel_style_text(STYLE_MENU)), configure->styleSheet());
    QAction *home = nullptr, *dx = nullptr;
    for (QAction *action : configure->actions())
    {
        home = action->text() == "HomeStation" ? action : home;
        dx = action->text() == "Dx Station" ? action : dx;
    }
    ASSERT_NE(nullptr, home);
    ASSERT_NE(nullptr, dx);
    int opened = 0;
    close_next<HomeStationDialog>(false, [&](HomeStationDialog *) { opened++; });
    home->trigger();
    close_next<DxStationDialog>(false, [&](DxStationDialog *) { opened++; });
    dx->trigger();
    EXPECT_EQ(2, opened);
}

TEST_F(Stations, AcceptedHomeStationStopsTheCycleAndSelectsHomeDoppler)
{
    MainWindow w(0);
    doppler_mode = 0;
    source_changed = az_changed = el_changed = 0;
    bool timer_ran = true;
    close_next<HomeStationDialog>(true,
                                  [&](HomeStationDialog *dialog)
                                  {
                                      timer_ran = w.timer->isActive();
                                      static const char *const answers[] = {"FN31pr"};
                                      enter_set_answers(answers, 1);
                                      touch(dialog->ui->GridEdit);
                                  });
    w.HomeStation();
    EXPECT_FALSE(timer_ran);
    EXPECT_TRUE(w.timer->isActive());
    EXPECT_EQ(50, w.timer->interval());
    EXPECT_EQ(1, doppler_mode);
    EXPECT_EQ(1, home_station_valid);
    EXPECT_EQ(QString("FN31pr"), w.findChild<QPushButton *>("HomeStationButton")->text());
    EXPECT_EQ(QString(panel_style_text(STYLE_DARKGREEN)),
              w.findChild<QPushButton *>("HomeStationButton")->styleSheet());
    EXPECT_EQ(STYLE_GRAY, panel_last_style[PANEL_STOP]);
    EXPECT_EQ(1, source_changed);
    EXPECT_EQ(1, az_changed);
    EXPECT_EQ(1, el_changed);
}

TEST_F(Stations, AcceptedWithAnEmptyGridStillChoosesHomeDoppler)
{
    MainWindow w(0);
    home_station_valid = 1;
    close_next<HomeStationDialog>(true);
    w.HomeStation();
    EXPECT_EQ(0, home_station_valid);
    EXPECT_EQ(1, doppler_mode);
}

TEST_F(Stations, CancelledHomeStationKeepsEditsButNotTheMode)
{
    MainWindow w(0);
    doppler_mode = 2;
    source_changed = 0;
    close_next<HomeStationDialog>(false,
                                  [&](HomeStationDialog *dialog)
                                  {
                                      static const char *const answers[] = {"G3SEK"};
                                      enter_set_answers(answers, 1);
                                      touch(dialog->ui->CallsignEdit);
                                  });
    w.HomeStation();
    EXPECT_EQ(2, doppler_mode);
    EXPECT_STREQ("G3SEK", settings.Callsign);
    EXPECT_TRUE(w.timer->isActive());
    EXPECT_EQ(1, source_changed);
}

TEST_F(Stations, AcceptedDxStationConvertsTheLocator)
{
    MainWindow w(0);
    EXPECT_TRUE(w.timer->isActive());
    bool timer_ran = false;
    close_next<DxStationDialog>(true,
                                [&](DxStationDialog *)
                                {
                                    timer_ran = w.timer->isActive();
                                    text_copy(dx_grid, sizeof dx_grid, "PM53fo");
                                });
    w.DxStation();
    EXPECT_TRUE(timer_ran);
    double lat, lon;
    ASSERT_EQ(0, grid_to_position("PM53fo", &lat, &lon));
    EXPECT_EQ(lat, dx_latitude);
    EXPECT_EQ(lon, dx_longitude);
    EXPECT_EQ(1, dx_station_valid);
    EXPECT_EQ(QString("PM53fo"), w.findChild<QPushButton *>("DxStationButton")->text());

    close_next<DxStationDialog>(true, [&](DxStationDialog *) { dx_grid[0] = 0; });
    w.DxStation();
    EXPECT_EQ(0, dx_station_valid);
}

TEST_F(Stations, CancelledDxStationLeavesValidityAlone)
{
    MainWindow w(0);
    dx_station_valid = 0;
    close_next<DxStationDialog>(false, [&](DxStationDialog *) { text_copy(dx_grid, sizeof dx_grid, "PM53fo"); });
    w.DxStation();
    EXPECT_EQ(0, dx_station_valid);
    EXPECT_EQ(0.0, dx_latitude);
}
