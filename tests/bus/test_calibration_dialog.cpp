// The calibration dialog on the simulated station: what it shows of each
// axis, what each edit reaches (settings, axis state, device), and the round
// trip of a correction through the settings file to the corrected reading.
#include "sim_fixture.h"

#include "bus/calibration_dialog.h"
#include "bus/position.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "ui_calibration_dialog.h"
#include "widgets/enter.h"

#include <QApplication>
#include <QTableWidget>
#include <QTimer>

static void answer(std::initializer_list<const char *> answers)
{
    static const char *kept[8];
    std::copy(answers.begin(), answers.end(), kept);
    enter_set_answers(kept, (int)answers.size());
}

static std::string text(QAbstractButton *button)
{
    return button->text().toStdString();
}

// A multi-turn native encoder keeps its pulses, level and range itself; a
// BRT-38's live in its table entry; a plain encoder's only in the axis state.
TEST_F(SimBus, CalibrationWritesEachKindOfEncoderItsOwnWay)
{
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        sim->station.encoders[0].mode = MODE_MULTI_TURN;
        sim->station.encoders[0].ppr = 2000;
        sim->station.encoders[0].index_level = 1;
    }
    az_mode = MODE_MULTI_TURN;
    settings.EL_Addr = 2;
    CalibrationDialog d;
    Ui::CalibrationDialog *ui = d.ui;
    EXPECT_EQ(text(ui->AzPulsesRevEdit), "2000") << "read from the device";
    EXPECT_TRUE(ui->AzIndexPulseLevel->isEnabled() && ui->AzIndexPulseLevel->currentIndex() == 1);
    EXPECT_EQ(text(ui->ElRangeEdit), "1024") << "from the BRT-38's entry";
    EXPECT_FALSE(ui->ElIndexPulseLevel->isEnabled() || ui->ElIndexPulseLevel->currentText() != "Disabled");

    answer({"4096", "64"});
    emit ui->AzPulsesRevEdit->pressed();
    emit ui->AzRangeEdit->pressed();
    ui->AzIndexPulseLevel->setCurrentIndex(0);
    SimEncoder az = device(0);
    EXPECT_TRUE(az.ppr == 4096 && az.range == 64 && az.index_level == 0) << "pulses and level go together";

    int before = frames();
    answer({"4096", "360"});
    emit ui->ElPulsesRevEdit->pressed();
    emit ui->ElRangeEdit->pressed();
    EXPECT_TRUE(encoders[2].PPR == 4096 && encoders[2].Range == 360 && el_index_level == 2);

    az_mode = 0;
    answer({"99"});
    emit ui->AzRangeEdit->pressed();
    EXPECT_EQ(az_range, 99u);
    EXPECT_EQ(frames(), before) << "neither a BRT-38 nor a plain encoder is sent these";
    enter_reset();
}

TEST_F(SimBus, CalibrationWithoutEncodersSendsNothingAndTheAxisTurnsAnalogue)
{
    settings.AZ_Addr = settings.EL_Addr = -1;
    int before = frames();
    {
        CalibrationDialog d;
        EXPECT_FALSE(d.ui->AzRangeEdit->isEnabled() || text(d.ui->AzPulsesRevEdit) != "");
        answer({"5", "3"});
        emit d.ui->AzPulsesRevEdit->pressed();
        emit d.ui->ElRangeEdit->pressed();
        d.ui->AzAddrEdit->setCurrentIndex(1);
        EXPECT_EQ(settings.AZ_Addr, 0);
        d.ui->AzAddrEdit->setCurrentIndex(0);
        EXPECT_EQ(settings.AZ_Addr, -1);
    }
    EXPECT_EQ(frames(), before);
    ReadPosition();
    EXPECT_EQ(frames_seen("> 10"), 0) << "the azimuth reads its analogue channel";
    enter_reset();
}

// The offset and a bin go into the settings at once, the next read is
// corrected by them, and OK puts them in the file.
TEST_F(SimBus, CalibrationReachesTheReadingAndTheFile)
{
    control("set az 123.4");
    SaveSettings(ini_file_name, &settings);
    sei_link_reset();
    MainWindow w(0);
    w.timer->stop();
    ReadPosition();
    EXPECT_NEAR(az_position, 123.4, 1e-9);
    settings.Elevation_Offset = 1.25;
    QTimer::singleShot(0,
                       []
                       {
                           auto *d = qobject_cast<CalibrationDialog *>(QApplication::activeModalWidget());
                           ASSERT_NE(d, nullptr);
                           answer({"2.5", "0.5", nullptr});
                           emit d->ui->AzOffsetEdit->pressed();
                           emit d->ui->AzTableWidget->itemPressed(d->ui->AzTableWidget->item(12, 0));
                           // A cancelled keypad writes the shown text back, one decimal.
                           emit d->ui->ElOffsetEdit->pressed();
                           d->accept();
                       });
    w.Calibration();
    EXPECT_TRUE(w.timer->isActive());
    ReadPosition();
    EXPECT_NEAR(az_position, 123.4 + 2.5 + 0.5, 1e-9) << "offset, then the bin of 125.9";
    EXPECT_DOUBLE_EQ(settings.Elevation_Offset, 1.2);
    SystemSettings saved;
    LoadSettings(ini_file_name, &saved);
    EXPECT_TRUE(saved.Azimuth_Offset == 2.5 && saved.AZ[12] == 0.5);
    enter_reset();
}
