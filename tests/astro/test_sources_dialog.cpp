#include "astro/sources_dialog.h"

#include "astro/rise_set.h"
#include "astro/source.h"
#include "astro_test_time.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/panel_record.h"
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

// The operator at the keypad: what the test types (null: leaves without
// Enter), and whether the refresh was held back meanwhile.
const char *typed;
SourcesDialog *open_dialog;
int timer_active_during_entry;

int keypad_operator(QDialog *dialog)
{
    timer_active_during_entry = open_dialog->timer->isActive();
    if (typed)
    {
        static_cast<KeypadDialog *>(dialog)->load(typed);
    }
    return typed ? QDialog::Accepted : QDialog::Rejected;
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
        enter_reset();
        enter_set_exec_hook(keypad_operator);
    }
    void TearDown() override
    {
        enter_reset();
    }
    SourcesDialog d;
    QTableWidget *t = d.findChild<QTableWidget *>("tableWidget");

    QString cell(int row, int column)
    {
        return t->item(row, column)->text();
    }
};

} // namespace

// The table keeps the Sun's, the Moon's and the planets' rise and set per
// station and day. Through events passing, a new UT day, a move of the
// station and back, a DX Moon in between, and each station choice, every row
// must equal what a computation with nothing kept gives from the same row.
TEST_F(SourcesTable, KeptRiseAndSetEqualAFreshComputationOfEveryRow)
{
    struct Step
    {
        time_t utc;
        double latitude, longitude;
        int32_t *choice;
        const char *what;
    };
    const Step steps[] = {
        {astro_test_time(2024, 4, 8, 18, 17, 16), 52.0, 5.0, nullptr, "first refresh"},
        {astro_test_time(2024, 4, 8, 18, 47, 16), 52.0, 5.0, nullptr, "the Sun and the Moon have set"},
        {astro_test_time(2024, 4, 8, 23, 59, 59), 52.0, 5.0, nullptr, "the day's last second"},
        {astro_test_time(2024, 4, 9, 0, 0, 1), 52.0, 5.0, nullptr, "a new UT day"},
        {astro_test_time(2024, 4, 9, 0, 0, 2), -33.9, 151.2, nullptr, "another station"},
        {astro_test_time(2024, 4, 9, 0, 0, 3), -33.9, 5.0, nullptr, "the home meridian, another latitude"},
        {astro_test_time(2024, 4, 9, 5, 0, 0), 52.0, 5.0, nullptr, "back home, the Sun rising"},
        {astro_test_time(2024, 4, 9, 5, 0, 0), 52.0, 5.0, &settings.Refraction, "refraction"},
        {astro_test_time(2024, 4, 9, 5, 0, 0), 52.0, 5.0, &settings.Precession, "precession"},
        {astro_test_time(2024, 4, 9, 5, 0, 0), 52.0, 5.0, &settings.PreciseMoon, "precise Moon"},
        {astro_test_time(2024, 6, 21, 12, 0, 0), 78.2, 15.6, nullptr, "midnight Sun at Svalbard"},
    };
    settings.User_RA = 5.5;
    settings.User_Declination = 20.0;
    for (const Step &step : steps)
    {
        SCOPED_TRACE(step.what);
        clock_freeze(step.utc);
        settings.Latitude = step.latitude;
        settings.Longitude = step.longitude;
        if (step.choice)
        {
            *step.choice = 1;
        }
        SourceRecord before[SOURCE_COUNT];
        memcpy(before, source_table, sizeof before);
        d.Recalculate();
        SourceRecord dx = {};
        struct tm tm;
        gmtime_r(&step.utc, &tm);
        source_calculate(SOURCE_MOON, SOURCE_MASK_ALL, &tm, 40.0, -105.0, 1296.0, dx);

        source_rst_forget();
        for (int row = 0; row < SOURCE_COUNT; row++)
        {
            SourceRecord fresh = before[row];
            source_calculate(row, SOURCE_MASK_ALL, &tm, step.latitude, step.longitude, 1296.0, fresh);
            const SourceRecord &shown = source_table[row];
            const double *a = &fresh.az, *b = &shown.az;
            EXPECT_EQ(memcmp(a, b, (&fresh.transit - &fresh.az + 1) * sizeof(double)), 0) << row;
            EXPECT_TRUE(fresh.rst_status == shown.rst_status && fresh.above_horizon == shown.above_horizon) << row;
        }
        EXPECT_EQ(cell(SOURCE_MOON, 7).size(), 11) << "the Moon has a rise";
    }
}

// Remote rows show zeros until a protocol writes them; a row exactly on the
// horizon is grey, one above it green. Every row is computed, at the time of
// the map's clock.
TEST_F(SourcesTable, RefreshShowsEveryRowWithItsColour)
{
    ASSERT_EQ(t->rowCount(), 27);
    source_table[SOURCE_GPREDICT].az = 123.456;
    source_table[SOURCE_GPREDICT].el = 10.0;
    source_table[SOURCE_EASYCOMM].el = 0.0;
    d.Recalculate();
    EXPECT_EQ(cell(SOURCE_PSTROTATOR, 1), "   0.00");
    EXPECT_EQ(cell(SOURCE_GPREDICT, 1), " 123.46");
    EXPECT_EQ(t->item(SOURCE_GPREDICT, 3)->background().color(), QColor(172, 255, 172));
    EXPECT_EQ(t->item(SOURCE_EASYCOMM, 3)->background().color(), QColor(190, 190, 190));
    EXPECT_EQ(cell(SOURCE_SUN, 5), " 1.001507");
    EXPECT_TRUE(cell(SOURCE_SUN, 7).startsWith("04-08 ")) << cell(SOURCE_SUN, 7).toStdString();
    for (int row = 0; row < 27; row++)
    {
        EXPECT_EQ(source_table[row].computed, 1u) << row;
    }
    // After the map was closed with its clock shifted, the table shows the
    // shifted instant: ten days on, the Sun's rise is ten days on.
    map_time_offset = 10 * 86400;
    d.Recalculate();
    EXPECT_TRUE(cell(SOURCE_SUN, 7).startsWith("04-18 ")) << cell(SOURCE_SUN, 7).toStdString();
}

TEST_F(SourcesTable, AClickAnywhereOnARowSelectsIt)
{
    settings.TrackingSource = 4;
    SourcesDialog d4;
    QTableWidget *t4 = d4.findChild<QTableWidget *>("tableWidget");
    d4.Recalculate();
    EXPECT_TRUE(t4->item(4, 6)->isSelected()); // the refresh keeps the selection
    d4.SourceChanged(t4->item(13, 6));
    EXPECT_EQ(settings.TrackingSource, 13);
    emit t4->itemClicked(t4->item(7, 2));
    EXPECT_EQ(settings.TrackingSource, 7);
    QTableWidget bigger(40, 1);
    bigger.setItem(30, 0, new QTableWidgetItem("x"));
    d4.SourceChanged(bigger.item(30, 0));
    EXPECT_EQ(settings.TrackingSource, 7);
}

// Only the four user cells are editable, through the keypad, with the refresh
// stopped meanwhile (any other press only holds it back for a second). A typed value becomes the setting the engine
// copies from, so it survives the next refresh; text that is no number gives 0, a keypad left without Enter keeps what
// the cell showed, and any other cell opens no keypad.
TEST_F(SourcesTable, UserCellsAreEditedThroughTheKeypad)
{
    int editable = 0;
    for (int row = 0; row < 27; row++)
    {
        for (int column = 1; column < 9; column++)
        {
            bool flagged = t->item(row, column)->flags() & Qt::ItemIsEditable;
            EXPECT_EQ(flagged, (bool)sources_cell_editable(row, column)) << row << "," << column;
            editable += flagged;
        }
    }
    EXPECT_EQ(editable, 4);
    struct Edit
    {
        int row, column;
        const char *typed;
        double *setting, expect;
        int calls;
    };
    settings.User_Elevation = 10.126;
    const Edit edits[] = {
        {SOURCE_USER_AZEL, 1, "123.5", &settings.User_Azimuth, 123.5, 1},
        {SOURCE_USER_AZEL, 2, nullptr, &settings.User_Elevation, 10.13, 1},
        {SOURCE_USER_RADEC, 3, "17.5", &settings.User_RA, 17.5, 1},
        {SOURCE_USER_RADEC, 4, "-29.25", &settings.User_Declination, -29.25, 1},
        {SOURCE_USER_RADEC, 4, "abc", &settings.User_Declination, 0.0, 1},
        {SOURCE_USER_RADEC, 3, "12.5.7", &settings.User_RA, 12.5, 1},
        {SOURCE_MOON, 1, "99", &settings.User_RA, 12.5, 0},
        {SOURCE_USER_AZEL, 3, "99", &settings.User_RA, 12.5, 0},
        {SOURCE_USER_RADEC, 4, "-12.345678901234", &settings.User_Declination, -12.345678901234, 1},
        {SOURCE_USER_RADEC, 4, "12.3456789012345678", &settings.User_Declination, 12.3456789012345, 1},
    };
    open_dialog = &d;
    d.Recalculate();
    for (const Edit &e : edits)
    {
        SCOPED_TRACE(testing::Message() << e.row << "," << e.column);
        typed = e.typed;
        enter_call_count = 0;
        timer_active_during_entry = -1;
        e.calls ? d.timer->start() : d.timer->stop();
        emit t->itemPressed(t->item(e.row, e.column));
        EXPECT_EQ(enter_call_count, e.calls);
        EXPECT_EQ(timer_active_during_entry, e.calls ? 0 : -1);
        EXPECT_EQ(*e.setting, e.expect);
        EXPECT_TRUE(d.timer->isActive());
    }
    d.Recalculate();
    EXPECT_EQ(cell(SOURCE_USER_AZEL, 1), " 123.50");
    EXPECT_EQ(source_table[SOURCE_USER_RADEC].ra, 12.5);
}

// The panel's source button runs the table; whatever its end, the remote
// display is told the source changed and the panel shows the selection.
TEST(SourcesButton, RunsTheTableAndShowsTheSelection)
{
    test_reset_state();
    MainWindow window(0);
    window.timer->stop();
    for (int row : {5, 7})
    {
        source_changed = 0;
        QTimer::singleShot(0,
                           [row]()
                           {
                               QWidget *modal = QApplication::activeModalWidget();
                               auto *dialog = qobject_cast<SourcesDialog *>(modal);
                               if (!dialog)
                               {
                                   ADD_FAILURE() << "the sources table did not open";
                                   return modal ? (void)modal->close() : (void)0;
                               }
                               dialog->SourceChanged(dialog->findChild<QTableWidget *>("tableWidget")->item(row, 0));
                               row == 5 ? dialog->accept() : dialog->reject();
                           });
        window.SourceButtonPressed();
        EXPECT_EQ(settings.TrackingSource, row);
        EXPECT_EQ(source_changed, 1);
        EXPECT_EQ(std::string(panel_last_text[PANEL_SOURCE]), row == 5 ? "VENUS" : "JUPITER");
    }
}
