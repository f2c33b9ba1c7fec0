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

class ScanDialog : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        enter_reset();
    }
    void TearDown() override
    {
        enter_reset();
        SimBus::TearDown();
    }
    static std::string cell(EncoderDialog &d, int row, int column)
    {
        QTableWidgetItem *item = d.ui->tableWidget->item(row, column);
        return item ? item->text().toStdString() : "(none)";
    }
    static void press(EncoderDialog &d, int row, int column)
    {
        QTableWidgetItem *item = d.ui->tableWidget->item(row, column);
        if (!item)
        {
            item = new QTableWidgetItem("5");
            d.ui->tableWidget->setItem(row, column, item);
        }
        emit d.ui->tableWidget->itemPressed(item);
    }
    int frames(void)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.frame_count;
    }
    static void answer(const char *text)
    {
        static const char *kept[1];
        kept[0] = text;
        enter_set_answers(kept, 1);
    }
};

TEST_F(ScanDialog, PressesActOnlyAfterTheFirstPassAndTheNextPassShowsTheDevice)
{
    EncoderDialog d;
    EXPECT_TRUE(d.timer->isActive());
    EXPECT_EQ(d.timer->interval(), 1000);
    EXPECT_EQ(cell(d, 0, 0), "(none)") << "empty until the first pass";
    answer("255");
    press(d, 0, 9);
    EXPECT_EQ(enter_call_count, 0) << "a press before the first pass does nothing";

    d.EncoderScan();
    EXPECT_EQ(cell(d, 0, 5), "2000");
    EXPECT_EQ(cell(d, 4, 1), "");
    EXPECT_FALSE(d.ui->tableWidget->item(4, 9)->flags() & Qt::ItemIsEditable);
    EXPECT_TRUE(d.ui->tableWidget->item(0, 9)->flags() & Qt::ItemIsEditable);
    answer("255");
    press(d, 0, 9);
    EXPECT_EQ(enter_last_max_length, 8);
    EXPECT_TRUE(d.timer->isActive()) << "the scan goes on after a press";
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        EXPECT_EQ(sim->station.encoders[0].mode, 0x9D);
    }
    d.EncoderScan();
    EXPECT_EQ(cell(d, 0, 9), "157");

    // A blank cell of a silent address has nothing to change.
    int calls = enter_call_count;
    press(d, 4, 7);
    EXPECT_EQ(enter_call_count, calls);

    // A stopped timer breaks the pass off: the dialog is closing.
    d.EncoderClose();
    control("silent 1 on");
    d.EncoderScan();
    EXPECT_EQ(cell(d, 1, 5), "2001");
}

TEST_F(ScanDialog, AddressPressMovesTheEncoderAndCloses)
{
    EncoderDialog d;
    d.EncoderScan();
    answer("6");
    press(d, 1, 0);
    EXPECT_EQ(d.result(), QDialog::Accepted);
    EXPECT_FALSE(d.timer->isActive());
    std::lock_guard<std::mutex> hold(sim->lock);
    EXPECT_EQ(sim->station.encoders[6].serial, 2001u);
}

// The type is how the operator maps an address; Cancel keeps it too, and no
// frame goes out from the page.
TEST_F(ScanDialog, ConfigPageStoresTheTypeWhateverClosesIt)
{
    EncoderDialog d;
    d.EncoderScan();
    int before = frames();
    QTimer::singleShot(0,
                       []
                       {
                           auto *page = qobject_cast<ConfigDialog *>(QApplication::activeModalWidget());
                           ASSERT_NE(page, nullptr);
                           EXPECT_EQ(page->ui->TypeComboBox->currentIndex(), ENCODER_SEI);
                           page->ui->TypeComboBox->setCurrentIndex(2);
                           answer("77");
                           emit page->ui->ModeEdit->pressed();
                           page->reject();
                       });
    press(d, 1, 1);
    EXPECT_EQ(encoders[1].Type, ENCODER_NONE);
    EXPECT_EQ(encoders[1].Mode, 77);
    EXPECT_EQ(frames(), before);
    d.EncoderScan();
    EXPECT_EQ(cell(d, 1, 1), "");
    EXPECT_EQ(cell(d, 1, 5), "");
}

// Through the menu: the cycle stands still, and afterwards the axes fetch
// their set-up afresh and the table is in the settings file.
TEST_F(ScanDialog, MenuScanSavesTheTableAndRenewsTheAxes)
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
