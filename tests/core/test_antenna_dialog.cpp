// The tracking parameters dialog: values shown from settings, written back
// by each control, the keypad's rules, Cancel keeping the edits.
#include "core/antenna_dialog.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_antenna_dialog.h"
#include "widgets/enter.h"

#include <QComboBox>
#include <QPushButton>
#include <gtest/gtest.h>

TEST(AntennaValues, ComboIndicesFromStoredValues)
{
    struct
    {
        double duty;
        int index;
    } duties[] = {{5, 0}, {25, 4}, {100, 19}, {3, 0}, {27.5, 4}, {50, 9}};
    for (auto d : duties)
    {
        EXPECT_EQ(antenna_duty_index(d.duty), d.index) << d.duty;
    }
    struct
    {
        double guard;
        int index;
    } guards[] = {{0.5, 0}, {2.0, 3}, {9.0, 17}, {10.0, 19}, {0.25, 0}, {10.5, 0}, {60, 0}};
    for (auto g : guards)
    {
        EXPECT_EQ(antenna_guard_index(g.guard, 20), g.index) << g.guard;
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
        s.AzimuthFastDutyCycle = 100;
        s.AzimuthManualDutyCycle = 50;
        s.AzimuthGuardTime = 2.0;
        s.ElevationSlowDutyCycle = 25;
        s.ElevationGuardTime = 0.5;
        s.AzimuthJogTime = 40;
        s.AzimuthLimitMin = 0;
        s.AzimuthLimitMax = 360;
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

TEST_F(AntennaDialogTest, ShowsTheStoredValuesWithoutWritingThemBack)
{
    AntennaDialog dialog;
    EXPECT_EQ(dialog.size(), QSize(740, 435));
    EXPECT_EQ(dialog.windowTitle(), "Tracking Parameters");
    EXPECT_EQ(dialog.ui->AzSpeedSlowEdit->count(), 20);
    EXPECT_EQ(dialog.ui->AzSpeedSlowEdit->itemText(0), "5%");
    EXPECT_EQ(dialog.ui->AzSpeedSlowEdit->itemText(19), "100%");
    EXPECT_EQ(dialog.ui->AzSpeedSlowEdit->currentText(), "5%");
    EXPECT_EQ(settings.AzimuthSlowDutyCycle, 3) << "filling the controls fires no slot";
    EXPECT_EQ(dialog.ui->AzSpeedFastEdit->currentText(), "100%");
    EXPECT_EQ(dialog.ui->AzGuardTimeEdit->currentText(), "2.00");
    EXPECT_EQ(dialog.ui->ElGuardTimeEdit->currentText(), "0.50");
    EXPECT_EQ(dialog.ui->AzGuardTimeEdit->itemText(17), "9.0");
    EXPECT_EQ(dialog.ui->AzJogTimeEdit->text(), "40");
    EXPECT_EQ(dialog.ui->AzLimitMaxEdit->text(), "360.0");
    EXPECT_EQ(dialog.ui->AzLimitMinEdit->text(), "  0.0");
    EXPECT_EQ(dialog.ui->AzStopEdit->text(), "0.2");
    EXPECT_TRUE(dialog.ui->ElJogEnable->isChecked());
    EXPECT_FALSE(dialog.ui->AzJogEnable->isChecked());
}

TEST_F(AntennaDialogTest, CombosAndChecksWriteStraightIntoSettings)
{
    AntennaDialog dialog;
    dialog.ui->AzSpeedSlowEdit->setCurrentIndex(0);
    EXPECT_EQ(settings.AzimuthSlowDutyCycle, 3) << "picking the shown item fires nothing";
    dialog.ui->AzSpeedSlowEdit->setCurrentIndex(7);
    EXPECT_EQ(settings.AzimuthSlowDutyCycle, 40);
    dialog.ui->ElSpeedManualEdit->setCurrentIndex(19);
    EXPECT_EQ(settings.ElevationManualDutyCycle, 100);
    dialog.ui->AzGuardTimeEdit->setCurrentIndex(17);
    EXPECT_EQ(settings.AzimuthGuardTime, 9.0);
    dialog.ui->ElGuardTimeEdit->setCurrentIndex(19);
    EXPECT_EQ(settings.ElevationGuardTime, 10.0);
    dialog.ui->AzJogEnable->click();
    EXPECT_EQ(settings.AzimuthJogEnable, 1);
    dialog.ui->ElJogEnable->click();
    EXPECT_EQ(settings.ElevationJogEnable, 0);
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
        {&Ui::AntennaDialog::AzLimitMaxEdit, &settings.AzimuthLimitMax, "90", 90},
        {&Ui::AntennaDialog::ElLimitMinEdit, &settings.ElevationLimitMin, "-5", -5},
        {&Ui::AntennaDialog::ElParkEdit, &settings.Park_Elevation, "95.5", 95.5},
        {&Ui::AntennaDialog::AzStartEdit, &settings.Azimuth_Start, "abc", 0},
        {&Ui::AntennaDialog::ElServiceEdit, &settings.Service_Elevation, "12.345", 12.345},
        {&Ui::AntennaDialog::AzSlowDegreesEdit, &settings.AzimuthSlowDegrees, "7.", 7},
    };
    AntennaDialog dialog;
    for (auto r : rows)
    {
        answer(r.typed);
        QPushButton *button = dialog.ui->*r.button;
        emit button->pressed();
        EXPECT_EQ(enter_last_max_length, 10) << r.typed;
        EXPECT_DOUBLE_EQ(*r.field, r.want) << r.typed;
        EXPECT_EQ(button->text(), r.typed) << "the button shows what was typed";
    }
}

TEST_F(AntennaDialogTest, CancelledKeypadLeavesTheOneDecimalText)
{
    AntennaDialog dialog;
    answer(nullptr);
    emit dialog.ui->AzStopEdit->pressed();
    EXPECT_STREQ(enter_last_text, "0.2");
    EXPECT_DOUBLE_EQ(settings.Azimuth_Stop, 0.2);
    EXPECT_EQ(dialog.ui->AzStopEdit->text(), "0.2");
}

TEST_F(AntennaDialogTest, JogTimeTakesOnlyOneToOneHundred)
{
    struct
    {
        const char *typed;
        int want;
        const char *shown;
    } rows[] = {{"0", 40, "40"}, {"101", 40, "40"}, {"1", 1, "1"}, {"100", 100, "100"}, {"x", 100, "100"}};
    AntennaDialog dialog;
    for (auto r : rows)
    {
        answer(r.typed);
        emit dialog.ui->AzJogTimeEdit->pressed();
        EXPECT_EQ(settings.AzimuthJogTime, r.want) << r.typed;
        EXPECT_EQ(dialog.ui->AzJogTimeEdit->text(), r.shown) << r.typed;
    }
    answer("55");
    emit dialog.ui->ElJogTimeEdit->pressed();
    EXPECT_EQ(settings.ElevationJogTime, 55);
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

TEST_F(AntennaDialogTest, EveryTouchTargetIsAtLeastFortyPixelsHigh)
{
    AntennaDialog dialog;
    dialog.show();
    for (QPushButton *b : dialog.findChildren<QPushButton *>())
    {
        EXPECT_GE(b->height(), 40) << b->objectName().toStdString();
    }
    for (QComboBox *c : dialog.findChildren<QComboBox *>())
    {
        EXPECT_GE(c->height(), 40) << c->objectName().toStdString();
    }
}
