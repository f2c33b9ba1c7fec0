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

class Calibration : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        enter_reset();
        for (int n = 0; n < ENCODER_COUNT; n++)
        {
            encoders[n].Info = brt_factory_record(n);
        }
    }
    void TearDown() override
    {
        enter_reset();
        SimBus::TearDown();
    }
    static void answer(std::initializer_list<const char *> answers)
    {
        static const char *kept[8];
        std::copy(answers.begin(), answers.end(), kept);
        enter_set_answers(kept, (int)answers.size());
    }
    int frames(void)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.frame_count;
    }
    SimEncoder device(int a)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.encoders[a];
    }
};

static std::string text(QAbstractButton *button)
{
    return button->text().toStdString();
}

// A multi-turn native encoder keeps its pulses, level and range itself; a
// BRT-38's live in its table entry; a plain encoder's only in the axis state.
TEST_F(Calibration, EachKindOfEncoderGetsItsOwnWrites)
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
    EXPECT_EQ(ui->AzIndexPulseLevel->currentIndex(), 1);
    EXPECT_TRUE(ui->AzIndexPulseLevel->isEnabled());
    EXPECT_EQ(text(ui->ElRangeEdit), "1024") << "from the BRT-38's entry";
    EXPECT_EQ(ui->ElIndexPulseLevel->currentText().toStdString(), "Disabled");
    EXPECT_FALSE(ui->ElIndexPulseLevel->isEnabled());

    answer({"4096", "64"});
    emit ui->AzPulsesRevEdit->pressed();
    emit ui->AzRangeEdit->pressed();
    ui->AzIndexPulseLevel->setCurrentIndex(0);
    EXPECT_EQ(device(0).ppr, 4096u);
    EXPECT_EQ(device(0).range, 64u);
    EXPECT_EQ(device(0).index_level, 0) << "pulses and level go together";

    int before = frames();
    answer({"4096", "360"});
    emit ui->ElPulsesRevEdit->pressed();
    emit ui->ElRangeEdit->pressed();
    EXPECT_EQ(frames(), before) << "a BRT-38 gets no frame";
    EXPECT_EQ(encoders[2].PPR, 4096u);
    EXPECT_EQ(encoders[2].Range, 360u);
    EXPECT_EQ(el_index_level, 2);

    // A plain encoder: the value is kept, the device is not asked.
    az_mode = 0;
    answer({"99"});
    emit ui->AzRangeEdit->pressed();
    EXPECT_EQ(az_range, 99u);
    EXPECT_EQ(device(0).range, 64u);
    EXPECT_EQ(frames(), before);
}

TEST_F(Calibration, WithoutEncodersNothingIsSentAndTheAxisTurnsAnalogue)
{
    settings.AZ_Addr = -1;
    settings.EL_Addr = -1;
    int before = frames();
    {
        CalibrationDialog d;
        EXPECT_FALSE(d.ui->AzRangeEdit->isEnabled());
        EXPECT_EQ(text(d.ui->AzPulsesRevEdit), "");
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
}

// The offset and a bin go into the settings at once, the next read is
// corrected by them, and OK puts them in the file.
TEST_F(Calibration, CorrectionsReachTheReadingAndTheFile)
{
    control("set az 123.4");
    SaveSettings(ini_file_name, &settings);
    sei_link_reset();
    MainWindow w(0);
    w.timer->stop();
    ReadPosition();
    EXPECT_NEAR(az_position, 123.4, 1e-9);

    QTimer::singleShot(0,
                       []
                       {
                           auto *d = qobject_cast<CalibrationDialog *>(QApplication::activeModalWidget());
                           ASSERT_NE(d, nullptr);
                           answer({"2.5", "0.5", nullptr});
                           emit d->ui->AzOffsetEdit->pressed();
                           emit d->ui->AzTableWidget->itemPressed(d->ui->AzTableWidget->item(12, 0));
                           EXPECT_EQ(d->ui->AzTableWidget->item(12, 0)->text().toStdString(), "0.5");
                           // A cancelled keypad writes the shown text back: the elevation
                           // offset is rounded to its one decimal.
                           emit d->ui->ElOffsetEdit->pressed();
                           d->accept();
                       });
    settings.Elevation_Offset = 1.25;
    w.Calibration();
    EXPECT_TRUE(w.timer->isActive());
    ReadPosition();
    EXPECT_NEAR(az_position, 123.4 + 2.5 + 0.5, 1e-9) << "offset, then the bin of 125.9";
    EXPECT_DOUBLE_EQ(settings.Elevation_Offset, 1.2);

    SystemSettings saved;
    LoadSettings(ini_file_name, &saved);
    EXPECT_DOUBLE_EQ(saved.Azimuth_Offset, 2.5);
    EXPECT_DOUBLE_EQ(saved.AZ[12], 0.5);
}
