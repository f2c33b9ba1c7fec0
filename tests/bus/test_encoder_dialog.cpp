// The scan dialog's wiring on the simulated station: when the table fills,
// what a press reaches, what closing leaves behind. The rows themselves are
// the scan's own tests.
#include "sim_fixture.h"

#include "bus/encoder_config_dialog.h"
#include "bus/encoder_dialog.h"
#include "bus/position.h"
#include "core/ini_file.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "ui_encoder_config_dialog.h"
#include "ui_encoder_dialog.h"
#include "widgets/enter.h"

#include <QApplication>
#include <QTableWidget>
#include <QTimer>

static std::string cell(EncoderDialog &d, int row, int column)
{
    QTableWidgetItem *item = d.ui->tableWidget->item(row, column);
    return item ? item->text().toStdString() : "(none)";
}

// A press on a cell, with the keypad's answer ready.
static void press(EncoderDialog &d, int row, int column, const char *answer)
{
    static const char *kept[1];
    kept[0] = answer;
    enter_set_answers(kept, 1);
    QTableWidgetItem *item = d.ui->tableWidget->item(row, column);
    if (!item)
    {
        d.ui->tableWidget->setItem(row, column, item = new QTableWidgetItem("5"));
    }
    emit d.ui->tableWidget->itemPressed(item);
}

TEST_F(SimBus, ScanDialogActsAfterTheFirstPassAndShowsTheDeviceAtTheNext)
{
    enter_reset();
    EncoderDialog d;
    EXPECT_TRUE(d.timer->isActive() && d.timer->interval() == 1000);
    press(d, 0, 9, "255");
    EXPECT_EQ(enter_call_count, 0) << "a press before the first pass does nothing";

    d.EncoderScan();
    EXPECT_EQ(cell(d, 0, 5), "2000");
    EXPECT_FALSE(d.ui->tableWidget->item(4, 9)->flags() & Qt::ItemIsEditable);
    press(d, 0, 9, "255");
    EXPECT_EQ(enter_last_max_length, 8);
    EXPECT_TRUE(d.timer->isActive()) << "the scan goes on after a press";
    d.EncoderScan();
    EXPECT_EQ(cell(d, 0, 9), "157");
    press(d, 4, 7, "1");
    EXPECT_EQ(enter_call_count, 1) << "a blank cell of a silent address has nothing to change";

    // The type page keeps what it shows whichever button closes it, and
    // sends nothing; the next pass asks the address by its new type.
    QTimer::singleShot(0,
                       []
                       {
                           auto *page = qobject_cast<ConfigDialog *>(QApplication::activeModalWidget());
                           ASSERT_NE(page, nullptr);
                           page->ui->TypeComboBox->setCurrentIndex(2);
                           page->reject();
                       });
    press(d, 1, 1, nullptr);
    EXPECT_EQ(encoders[1].Type, ENCODER_NONE);
    d.EncoderScan();
    EXPECT_EQ(cell(d, 1, 5), "");

    // A native encoder that takes a new address closes the dialog.
    press(d, 0, 0, "6");
    EXPECT_EQ(d.result(), QDialog::Accepted);
    EXPECT_FALSE(d.timer->isActive());
    std::lock_guard<std::mutex> hold(sim->lock);
    EXPECT_EQ(sim->station.encoders[6].serial, 2000u);
    enter_reset();
}

// Through the menu: the cycle stands still, and afterwards the axes fetch
// their set-up afresh and the table is in the settings file.
TEST_F(SimBus, MenuScanSavesTheTableAndRenewsTheAxes)
{
    SaveSettings(ini_file_name, &settings);
    sei_link_reset();
    MainWindow w(0);
    w.timer->stop();
    az_encoder_ready = el_encoder_ready = 1;
    QTimer::singleShot(0,
                       []
                       {
                           auto *d = qobject_cast<EncoderDialog *>(QApplication::activeModalWidget());
                           ASSERT_NE(d, nullptr);
                           encoders[9].Type = ENCODER_BRT;
                           emit d->ui->buttonBox->rejected();
                       });
    w.EncoderScan();
    EXPECT_TRUE(w.timer->isActive());
    EXPECT_EQ(az_encoder_ready + el_encoder_ready, 0);
    char path[600];
    settings_path(ini_file_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);
    EXPECT_EQ(ini_int(&ini, "ENCODER_9", "Type", "-1"), ENCODER_BRT);
}
