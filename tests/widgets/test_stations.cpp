#include "core/mainwindow.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/panel_record.h"
#include "support/test_env.h"
#include "ui_dx_station_dialog.h"
#include "ui_home_station_dialog.h"
#include "widgets/dx_station_dialog.h"
#include "widgets/dx_stations.h"
#include "widgets/enter.h"
#include "widgets/home_station_dialog.h"
#include "widgets/locator.h"

#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <algorithm>
#include <cmath>
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
};

static void touch(QPushButton *button)
{
    emit button->pressed();
}

static std::string text_of(QPushButton *button)
{
    return button->text().toStdString();
}

static void answer(std::initializer_list<const char *> answers)
{
    static const char *kept[8];
    std::copy(answers.begin(), answers.end(), kept);
    enter_set_answers(kept, (int)answers.size());
}

// Close the next modal dialog of type D once it runs, after a look inside it.
// Whatever else is modal then is closed too, so a wrong dialog fails the test
// instead of hanging it.
template <class D>
static void close_next(
    bool accept, std::function<void(D *)> inside = [](D *) {})
{
    QTimer::singleShot(0,
                       [accept, inside]()
                       {
                           QWidget *modal = QApplication::activeModalWidget();
                           D *dialog = qobject_cast<D *>(modal);
                           if (!dialog)
                           {
                               ADD_FAILURE() << "expected dialog did not open";
                               return modal ? (void)modal->close() : (void)0;
                           }
                           inside(dialog);
                           accept ? dialog->accept() : dialog->reject();
                       });
}

// The Configure menu's entry of that name, as the operator reaches it.
static QAction *configure_entry(MainWindow &w, const char *name)
{
    w.MenuButtonPressed();
    for (QAction *top : w.menu_bar->actions())
    {
        for (QAction *action : top->text() == "Configure" ? top->menu()->actions() : QList<QAction *>())
        {
            if (action->text() == name)
            {
                return action;
            }
        }
    }
    ADD_FAILURE() << name << " is not in the Configure menu";
    return new QAction(&w);
}

static bool grid_position(const char *grid, double lat, double lon)
{
    double want_lat, want_lon;
    return grid_to_position(grid, &want_lat, &want_lon) == 0 && want_lat == lat && want_lon == lon;
}

// Every field reaches its editor with its title and limit, and only an answer
// changes the record; the locator alone doesn't move the station.
TEST_F(Stations, HomeFieldsGoThroughTheirEditorsIntoTheRecord)
{
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    settings.Latitude = -0.5;
    HomeStationDialog dialog;

    answer({nullptr, nullptr, "ABCDEFGHIJKLMNOP", "Newington CT", "JO62qm12345", "432.066", "-33.5", "151.25"});
    touch(dialog.ui->CallsignEdit);
    touch(dialog.ui->LatitudeDegEdit);
    EXPECT_TRUE(strcmp("DL7APV", settings.Callsign) == 0 && settings.Latitude == -0.5) << "declined";
    struct Field
    {
        QPushButton *button;
        int limit;
    };
    const Field fields[] = {{dialog.ui->CallsignEdit, 12}, {dialog.ui->LocationEdit, 64},
                            {dialog.ui->GridEdit, 9},      {dialog.ui->FrequencyEdit, 16},
                            {dialog.ui->LatitudeEdit, 20}, {dialog.ui->LongitudeEdit, 20}};
    for (const Field &f : fields)
    {
        touch(f.button);
        EXPECT_EQ(f.limit, enter_last_max_length) << f.button->objectName().toStdString();
    }
    EXPECT_LT(strnlen(settings.Callsign, sizeof settings.Callsign), sizeof settings.Callsign);
    EXPECT_EQ(0, strncmp("ABCDEFGHIJK", settings.Callsign, 11));
    EXPECT_STREQ("Newington CT", settings.Location);
    EXPECT_LT(strnlen(settings.Grid, sizeof settings.Grid), sizeof settings.Grid);
    EXPECT_DOUBLE_EQ(432.066, settings.Frequency);
    EXPECT_EQ(" 432.07", text_of(dialog.ui->FrequencyEdit));
    EXPECT_DOUBLE_EQ(-33.5, settings.Latitude);
    EXPECT_TRUE(text_of(dialog.ui->LatitudeDegEdit) == "33" && dialog.ui->LatitudeNS->currentIndex() == 1);
}

TEST_F(Stations, DegreesMinutesSecondsMakeThePosition)
{
    HomeStationDialog dialog;
    answer({"45", "0000000030", "36", "122", "15", "0"});
    touch(dialog.ui->LatitudeDegEdit);
    touch(dialog.ui->LatitudeMinEdit);
    EXPECT_EQ(10, enter_last_max_length);
    touch(dialog.ui->LatitudeSecEdit);
    EXPECT_NEAR(45.51, settings.Latitude, 1e-12);
    dialog.ui->LatitudeNS->setCurrentIndex(1);
    EXPECT_NEAR(-45.51, settings.Latitude, 1e-12);
    touch(dialog.ui->LongitudeDegEdit);
    touch(dialog.ui->LongitudeMinEdit);
    touch(dialog.ui->LongitudeSecEdit);
    dialog.ui->LongitudeEW->setCurrentIndex(1);
    EXPECT_NEAR(-122.25, settings.Longitude, 1e-12);
}

TEST_F(Stations, GridConvertTakesAGoodLocatorOnly)
{
    settings.Latitude = 10.0;
    text_copy(settings.Grid, sizeof settings.Grid, "XX");
    HomeStationDialog dialog;
    touch(dialog.ui->gridConvertButton);
    EXPECT_EQ(10.0, settings.Latitude);
    text_copy(settings.Grid, sizeof settings.Grid, "QE37pb");
    touch(dialog.ui->gridConvertButton);
    EXPECT_TRUE(grid_position("QE37pb", settings.Latitude, settings.Longitude));
    EXPECT_EQ(1, dialog.ui->LatitudeNS->currentIndex());
}

static std::string write_list(const char *text)
{
    std::string path = std::string(test_home()) + "/stations.txt";
    FILE *f = fopen(path.c_str(), "w");
    fputs(text, f);
    fclose(f);
    return path;
}

// Each heading moves the colour on, 0 1 2 3 and round to 0; a click takes
// the station at once, even if the dialog is then cancelled.
TEST_F(Stations, DxTableColoursGroupsAndAClickTakesTheStation)
{
    std::string path = write_list("W5UN,EM13qc,,,,,Dallas,\n,,,,,,Europe,\nNOGRID,??,,,,,Nowhere,\n"
                                  ",,,,,,Asia,\n,,,,,,Pacific,\n,,,,,,Africa,\n");
    DxStationDialog dialog(nullptr, path.c_str());
    QTableWidget *table = dialog.ui->tableWidget;
    ASSERT_EQ(6, table->rowCount());
    const int expected[] = {0, 1, 1, 2, 3, 0};
    for (int row = 0; row < 6; row++)
    {
        int r, g, b;
        dx_station_colour(expected[row], &r, &g, &b);
        EXPECT_EQ(QColor(r, g, b), table->item(row, 4)->background().color()) << row;
    }
    emit table->itemClicked(table->item(0, 3));
    EXPECT_STREQ("W5UN", dx_call);
    EXPECT_TRUE(grid_position("EM13qc", dx_latitude, dx_longitude));
    // A row whose locator doesn't convert still selects, with zeros.
    emit table->itemClicked(table->item(2, 0));
    EXPECT_TRUE(strcmp("??", dx_grid) == 0 && dx_latitude == 0.0);
    dialog.reject();
    EXPECT_STREQ("NOGRID", dx_call);
}

// Distance and bearing take the Doppler labels' place only with Doppler off
// and both stations known. JJ00 to JJ01 is one degree of a meridian, due north.
TEST_F(Stations, FiguresShowOnlyWithoutDopplerAndWithBothStations)
{
    struct Row
    {
        int doppler;
        const char *dx, *distance, *bearing;
    };
    const Row rows[] = {
        {1, "JJ01", "", ""}, {0, "", "", ""}, {0, "JJ01", " 111.13 km", " 0.00"}, {0, "JI09", " 111.13 km", "180.00"}};
    for (const Row &row : rows)
    {
        text_copy(settings.Grid, sizeof settings.Grid, "JJ00");
        text_copy(dx_grid, sizeof dx_grid, row.dx);
        doppler_mode = row.doppler;
        panel_update_display();
        EXPECT_STREQ(row.distance, panel_last_text[PANEL_HOME_DOPPLER]) << row.dx;
        EXPECT_STREQ(row.bearing, panel_last_text[PANEL_DX_DOPPLER]) << row.dx;
    }
}

// The cycle pauses while the home dialog is open; Enter selects home Doppler
// (even with an empty grid), Cancel keeps the edits but not the mode.
TEST_F(Stations, HomeStationDialogPausesTheCycleAndChoosesTheMode)
{
    MainWindow w(0);
    doppler_mode = 0;
    source_changed = 0;
    bool timer_ran = true;
    close_next<HomeStationDialog>(true,
                                  [&](HomeStationDialog *dialog)
                                  {
                                      timer_ran = w.timer->isActive();
                                      answer({"FN31pr"});
                                      touch(dialog->ui->GridEdit);
                                  });
    configure_entry(w, "HomeStation")->trigger();
    EXPECT_TRUE(!timer_ran && w.timer->isActive() && w.timer->interval() == 50) << "paused, then back at 50 ms";
    EXPECT_TRUE(doppler_mode == 1 && home_station_valid == 1 && source_changed == 1);
    EXPECT_EQ(QString("FN31pr"), w.findChild<QPushButton *>("HomeStationButton")->text());

    doppler_mode = 2;
    close_next<HomeStationDialog>(false,
                                  [&](HomeStationDialog *dialog)
                                  {
                                      answer({"G3SEK", ""});
                                      touch(dialog->ui->CallsignEdit);
                                      touch(dialog->ui->GridEdit);
                                  });
    w.HomeStation();
    EXPECT_EQ(2, doppler_mode);
    EXPECT_STREQ("G3SEK", settings.Callsign);

    close_next<HomeStationDialog>(true);
    w.HomeStation();
    EXPECT_TRUE(home_station_valid == 0 && doppler_mode == 1);
}

// The DX dialog runs with the cycle going; only an accepted one converts.
TEST_F(Stations, DxStationDialogConvertsTheLocatorWhenAccepted)
{
    MainWindow w(0);
    bool timer_ran = false;
    auto pick = [&](DxStationDialog *)
    {
        timer_ran = w.timer->isActive();
        text_copy(dx_grid, sizeof dx_grid, "PM53fo");
    };
    close_next<DxStationDialog>(false, pick);
    configure_entry(w, "Dx Station")->trigger();
    EXPECT_TRUE(dx_station_valid == 0 && dx_latitude == 0.0);
    close_next<DxStationDialog>(true, pick);
    w.DxStation();
    EXPECT_TRUE(timer_ran && dx_station_valid == 1 && grid_position("PM53fo", dx_latitude, dx_longitude));
    EXPECT_EQ(QString("PM53fo"), w.findChild<QPushButton *>("DxStationButton")->text());
    close_next<DxStationDialog>(true, [&](DxStationDialog *) { dx_grid[0] = 0; });
    w.DxStation();
    EXPECT_EQ(0, dx_station_valid);
}
