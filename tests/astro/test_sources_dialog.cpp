#include "astro/sources_dialog.h"

#include "astro/source.h"
#include "astro_test_time.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/test_env.h"
#include "widgets/enter.h"
#include "widgets/keypad_dialog.h"

#include <QApplication>
#include <QTableWidget>
#include <QTimer>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

// The operator at the keypad: what the test types, and what it saw.
const char *typed;
int accept_entry;
SourcesDialog *open_dialog;
int timer_active_during_entry;

int keypad_operator(QDialog *dialog)
{
    timer_active_during_entry = open_dialog ? open_dialog->timer->isActive() : -1;
    if (!accept_entry)
    {
        return QDialog::Rejected;
    }
    KeypadDialog *keypad = static_cast<KeypadDialog *>(dialog);
    keypad->load(typed);
    return QDialog::Accepted;
}

class SourcesTable : public testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        settings.Latitude = 52.0;
        settings.Longitude = 5.0;
        settings.Frequency = 1296.0;
        clock_freeze(astro_test_time(2024, 4, 8, 18, 17, 16));
        typed = "";
        accept_entry = 1;
        enter_reset();
        enter_set_exec_hook(keypad_operator);
    }

    void TearDown() override
    {
        enter_reset();
        open_dialog = nullptr;
    }

    static QTableWidget *table(SourcesDialog &d)
    {
        return d.findChild<QTableWidget *>("tableWidget");
    }

    static QString cell(SourcesDialog &d, int row, int column)
    {
        return table(d)->item(row, column)->text();
    }
};

} // namespace

TEST_F(SourcesTable, FormHasTheRowsColumnsAndClassColours)
{
    SourcesDialog d;
    QTableWidget *t = table(d);
    EXPECT_EQ(d.windowTitle(), "Sources Configuration");
    EXPECT_EQ(d.minimumSize(), QSize(761, 398));
    EXPECT_EQ(d.maximumSize(), QSize(761, 398));
    ASSERT_EQ(t->rowCount(), 27);
    ASSERT_EQ(t->columnCount(), 9);
    EXPECT_EQ(t->selectionBehavior(), QAbstractItemView::SelectRows);
    EXPECT_EQ(t->horizontalHeaderItem(0)->text(), "Source");
    EXPECT_EQ(t->horizontalHeaderItem(4)->text(), "Declination");
    EXPECT_EQ(t->horizontalHeaderItem(8)->text(), "Set Time");
    EXPECT_EQ(t->verticalHeaderItem(0)->text(), "0");
    EXPECT_EQ(t->verticalHeaderItem(26)->text(), "26");
    EXPECT_EQ(cell(d, 13, 0), "Cassiopeia A");
    EXPECT_EQ(cell(d, 26, 0), "PstRotator");
    EXPECT_EQ(t->item(0, 0)->background().color(), QColor(0, 170, 255));
    EXPECT_EQ(t->item(1, 0)->background().color(), QColor(255, 85, 127));
    EXPECT_EQ(t->item(3, 0)->background().color(), QColor(0, 219, 197));
    EXPECT_EQ(t->item(11, 0)->background().color(), QColor(190, 190, 190));
    EXPECT_EQ(t->item(20, 0)->background().color(), QColor(255, 85, 127));
    EXPECT_EQ(t->item(21, 0)->background().color(), QColor(85, 255, 255));
    EXPECT_EQ(t->item(24, 0)->background().style(), Qt::NoBrush);
    EXPECT_TRUE(d.timer->isActive());
    EXPECT_EQ(d.timer->interval(), 1000);
}

TEST_F(SourcesTable, OnlyTheFourUserCellsAreEditable)
{
    SourcesDialog d;
    int editable = 0;
    for (int row = 0; row < 27; row++)
    {
        for (int column = 1; column < 9; column++)
        {
            if (table(d)->item(row, column)->flags() & Qt::ItemIsEditable)
            {
                editable++;
                EXPECT_TRUE(sources_cell_editable(row, column)) << row << "," << column;
            }
        }
    }
    EXPECT_EQ(editable, 4);
}

// Remote rows show zeros until a protocol writes them; a row exactly on the
// horizon is grey, one above it green.
TEST_F(SourcesTable, RefreshShowsEveryRowWithItsColour)
{
    source_table[SOURCE_GPREDICT].az = 123.456;
    source_table[SOURCE_GPREDICT].el = 10.0;
    source_table[SOURCE_EASYCOMM].el = 0.0;
    SourcesDialog d;
    QTableWidget *t = table(d);
    EXPECT_EQ(cell(d, SOURCE_PSTROTATOR, 1), "   0.00");
    EXPECT_EQ(cell(d, SOURCE_GPREDICT, 1), " 123.46");
    EXPECT_EQ(t->item(SOURCE_GPREDICT, 3)->background().color(), QColor(172, 255, 172));
    EXPECT_EQ(t->item(SOURCE_EASYCOMM, 3)->background().color(), QColor(190, 190, 190));
    EXPECT_EQ(cell(d, SOURCE_SUN, 6), "1.00");
    EXPECT_EQ(cell(d, SOURCE_SUN, 5), " 1.001507");
    for (int row = 0; row < 27; row++)
    {
        EXPECT_EQ(source_table[row].computed, 1u);
    }
    QString rise = cell(d, SOURCE_SUN, 7);
    EXPECT_TRUE(rise.startsWith("04-08 ")) << rise.toStdString();
}

// After the map was closed with its clock shifted, the table shows the
// shifted instant: ten days on, the Sun's rise is ten days on.
TEST_F(SourcesTable, RunsOnTheMapsShiftedClock)
{
    struct tm tm = astro_test_utc(2024, 4, 8, 18, 17, 16);
    double now = source_julian_day(&tm);
    map_time_offset = 10 * 86400;
    SourcesDialog d;
    EXPECT_GT(source_table[SOURCE_SUN].rise, now + 9.0);
    EXPECT_LT(source_table[SOURCE_SUN].rise, now + 10.5);
    EXPECT_TRUE(cell(d, SOURCE_SUN, 7).startsWith("04-18 "));
}

TEST_F(SourcesTable, AClickAnywhereOnARowSelectsIt)
{
    settings.TrackingSource = 4;
    SourcesDialog d;
    EXPECT_TRUE(table(d)->item(4, 0)->isSelected());
    d.Recalculate();
    EXPECT_TRUE(table(d)->item(4, 6)->isSelected()); // the refresh keeps the selection
    d.SourceChanged(table(d)->item(5, 0));
    EXPECT_EQ(settings.TrackingSource, 5);
    d.SourceChanged(table(d)->item(13, 6));
    EXPECT_EQ(settings.TrackingSource, 13);
    emit table(d)->itemClicked(table(d)->item(7, 2));
    EXPECT_EQ(settings.TrackingSource, 7);

    QTableWidget bigger(40, 1);
    auto *stray = new QTableWidgetItem("x");
    bigger.setItem(30, 0, stray);
    d.SourceChanged(stray);
    EXPECT_EQ(settings.TrackingSource, 7);
}

// Typing a user azimuth makes it the user azimuth: the engine copies it from
// the settings, so it survives the next refresh.
TEST_F(SourcesTable, TypedUserAzimuthSurvivesTheRefresh)
{
    SourcesDialog d;
    open_dialog = &d;
    typed = "123.5";
    emit table(d)->itemPressed(table(d)->item(SOURCE_USER_AZEL, 1));
    EXPECT_EQ(enter_call_count, 1);
    EXPECT_STREQ(enter_last_text, "   0.00");
    EXPECT_EQ(timer_active_during_entry, 0);
    EXPECT_EQ(settings.User_Azimuth, 123.5);
    EXPECT_EQ(source_table[SOURCE_USER_AZEL].az, 123.5);
    EXPECT_EQ(cell(d, SOURCE_USER_AZEL, 1), "123.5");
    EXPECT_TRUE(d.timer->isActive());
    EXPECT_EQ(d.timer->interval(), 1000);
    d.Recalculate();
    EXPECT_EQ(cell(d, SOURCE_USER_AZEL, 1), " 123.50");
}

TEST_F(SourcesTable, EachUserCellStoresItsOwnSetting)
{
    SourcesDialog d;
    struct Edit
    {
        int row, column;
        const char *typed;
        double *setting;
        double expect;
    } edits[] = {
        {SOURCE_USER_AZEL, 2, "45", &settings.User_Elevation, 45.0},
        {SOURCE_USER_RADEC, 3, "17.5", &settings.User_RA, 17.5},
        {SOURCE_USER_RADEC, 4, "-29.25", &settings.User_Declination, -29.25},
        {SOURCE_USER_RADEC, 4, "abc", &settings.User_Declination, 0.0}, // no number gives 0
        {SOURCE_USER_RADEC, 3, "12.5.7", &settings.User_RA, 12.5},      // its leading number
    };
    for (const Edit &e : edits)
    {
        typed = e.typed;
        d.ItemPressed(table(d)->item(e.row, e.column));
        EXPECT_EQ(*e.setting, e.expect) << e.typed;
    }
    EXPECT_EQ(source_table[SOURCE_USER_RADEC].ra, 12.5);
    EXPECT_EQ(settings.User_Azimuth, 0.0);
}

// Any other cell only holds the refresh back for a second.
TEST_F(SourcesTable, PressOnAnOrdinaryCellOpensNoKeypad)
{
    SourcesDialog d;
    d.timer->stop();
    d.ItemPressed(table(d)->item(SOURCE_MOON, 1));
    d.ItemPressed(table(d)->item(SOURCE_USER_AZEL, 3));
    EXPECT_EQ(enter_call_count, 0);
    EXPECT_TRUE(d.timer->isActive());
}

// A keypad left without Enter gives the cell's own text back; the value is
// then what the cell showed.
TEST_F(SourcesTable, CancelledEntryKeepsTheShownValue)
{
    settings.User_Azimuth = 10.126;
    SourcesDialog d;
    accept_entry = 0;
    d.ItemPressed(table(d)->item(SOURCE_USER_AZEL, 1));
    EXPECT_EQ(cell(d, SOURCE_USER_AZEL, 1), "  10.13");
    EXPECT_EQ(settings.User_Azimuth, 10.13);
}

// The panel's source button runs the table; whatever its end, the remote
// display is told the source changed and the panel shows the selection.
TEST_F(SourcesTable, SourceButtonRunsTheTableAndShowsTheSelection)
{
    MainWindow window(0);
    window.timer->stop();
    for (int accept : {1, 0})
    {
        source_changed = 0;
        int row = accept ? 5 : 7;
        QTimer::singleShot(0,
                           [row, accept]()
                           {
                               auto *dialog = qobject_cast<SourcesDialog *>(QApplication::activeModalWidget());
                               if (!dialog)
                               {
                                   return;
                               }
                               dialog->SourceChanged(dialog->findChild<QTableWidget *>("tableWidget")->item(row, 0));
                               accept ? dialog->accept() : dialog->reject();
                           });
        // Should the dialog never show, nothing may hang.
        QTimer guard;
        guard.setSingleShot(true);
        QObject::connect(&guard, &QTimer::timeout,
                         []()
                         {
                             if (QApplication::activeModalWidget())
                             {
                                 QApplication::activeModalWidget()->close();
                             }
                         });
        guard.start(5000);
        window.SourceButtonPressed();
        EXPECT_EQ(settings.TrackingSource, row);
        EXPECT_EQ(source_changed, 1);
        EXPECT_EQ(std::string(panel_last_text[PANEL_SOURCE]), accept ? "VENUS" : "JUPITER");
    }
}
