// The tracking parameters dialog: values shown from settings, written back
// by each control, the keypad's rules, Cancel keeping the edits.
#include "core/antenna_dialog.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_antenna_dialog.h"
#include "widgets/enter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <gtest/gtest.h>

TEST(AntennaValues, ComboIndicesFromStoredValues)
{
    // A value off the lists shows the first item; duties round down to their 5 % step.
    const double duties[][2] = {{5, 0}, {25, 4}, {100, 19}, {3, 0}, {27.5, 4}, {50, 9}};
    for (auto &d : duties)
    {
        EXPECT_EQ(antenna_duty_index(d[0]), (int)d[1]) << d[0];
    }
    const double guards[][2] = {{0.5, 0}, {2.0, 3}, {9.0, 17}, {10.0, 19}, {0.25, 0}, {10.5, 0}, {60, 0}};
    for (auto &g : guards)
    {
        EXPECT_EQ(antenna_guard_index(g[0], 20), (int)g[1]) << g[0];
    }
}

class AntennaDialogTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        enter_reset();
        SystemSettings &s = settings;
        s.AzimuthSlowDutyCycle = 3;
        s.ElevationGuardTime = 0.5;
        s.AzimuthJogTime = 40;
        s.AzimuthLimitMin = 0;
        s.Azimuth_Stop = 0.25;
        s.ElevationJogEnable = 1;
    }
    void TearDown() override
    {
        enter_reset();
    }
    void answer(const char *text)
    {
        static const char *one[1];
        one[0] = text;
        enter_set_answers(one, 1);
    }
};

TEST_F(AntennaDialogTest, ShowsTheStoredValuesAndEachControlWritesItsOwn)
{
    AntennaDialog dialog;
    EXPECT_EQ(dialog.ui->AzSpeedSlowEdit->currentText(), "5%");
    EXPECT_EQ(dialog.ui->ElGuardTimeEdit->currentText(), "0.50");
    EXPECT_EQ(dialog.ui->AzLimitMinEdit->text(), "  0.0");
    EXPECT_TRUE(dialog.ui->ElJogEnable->isChecked());
    dialog.ui->AzSpeedSlowEdit->setCurrentIndex(0);
    EXPECT_EQ(settings.AzimuthSlowDutyCycle, 3) << "filling and picking the shown item fire nothing";
    dialog.ui->AzSpeedSlowEdit->setCurrentIndex(7);
    EXPECT_EQ(settings.AzimuthSlowDutyCycle, 40);
    dialog.ui->AzGuardTimeEdit->setCurrentIndex(17);
    EXPECT_EQ(settings.AzimuthGuardTime, 9.0);
    dialog.ui->ElJogEnable->click();
    EXPECT_EQ(settings.ElevationJogEnable, 0);
    settings.Refraction = 1;
    AntennaDialog sky;
    EXPECT_TRUE(!sky.ui->PreciseMoonEnable->isChecked() && sky.ui->RefractionEnable->isChecked());
    sky.ui->PreciseMoonEnable->click();
    sky.ui->RefractionEnable->click();
    sky.ui->PrecessionEnable->click();
    EXPECT_TRUE(settings.PreciseMoon == 1 && settings.Refraction == 0 && settings.Precession == 1);
}

TEST_F(AntennaDialogTest, ValueButtonsTakeWhatAtofMakesOfTheKeypad)
{
    struct
    {
        QPushButton *Ui::AntennaDialog::*button;
        double *field;
        const char *typed;
        double want;
    } rows[] = {
        {&Ui::AntennaDialog::AzLimitMinEdit, &settings.AzimuthLimitMin, "270", 270},
        {&Ui::AntennaDialog::ElLimitMinEdit, &settings.ElevationLimitMin, "-5", -5},
        {&Ui::AntennaDialog::AzStartEdit, &settings.Azimuth_Start, "abc", 0},
        {&Ui::AntennaDialog::ElServiceEdit, &settings.Service_Elevation, "12.345", 12.345},
        {&Ui::AntennaDialog::AzStopEdit, &settings.Azimuth_Stop, nullptr, 0.2}, // cancelled: the one-decimal text
        {&Ui::AntennaDialog::ElStopEdit, &settings.Elevation_Stop, "0.12345678", 0.12345678}, // at the limit of 10
    };
    AntennaDialog dialog;
    for (auto r : rows)
    {
        answer(r.typed);
        QPushButton *button = dialog.ui->*r.button;
        emit button->pressed();
        EXPECT_DOUBLE_EQ(*r.field, r.want) << r.typed;
        EXPECT_EQ(button->text(), r.typed ? r.typed : "0.2") << "the button shows what was typed";
    }
}

TEST_F(AntennaDialogTest, JogTimeTakesOnlyOneToOneHundred)
{
    struct
    {
        const char *typed;
        int want;
        const char *shown;
    } rows[] = {{"0", 40, "40"},     {"101", 40, "40"}, {"1", 1, "1"},
                {"100", 100, "100"}, {"x", 100, "100"}, {"0000000050", 50, "0000000050"}};
    AntennaDialog dialog;
    for (auto r : rows)
    {
        answer(r.typed);
        emit dialog.ui->AzJogTimeEdit->pressed();
        EXPECT_EQ(settings.AzimuthJogTime, r.want) << r.typed;
        EXPECT_EQ(dialog.ui->AzJogTimeEdit->text(), r.shown) << r.typed;
    }
}

TEST_F(AntennaDialogTest, CancelKeepsEveryEdit)
{
    AntennaDialog dialog;
    dialog.ui->AzSpeedFastEdit->setCurrentIndex(9);
    answer("270");
    emit dialog.ui->AzLimitMinEdit->pressed();
    dialog.reject();
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(settings.AzimuthFastDutyCycle, 50);
    EXPECT_EQ(settings.AzimuthLimitMin, 270);
}
