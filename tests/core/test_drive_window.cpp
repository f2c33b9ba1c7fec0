// The drive's wiring in the window: buttons reach their slots, the position
// group steps the drive, the parameters dialog pauses it, and closing the
// window switches every output off.
#include "core/antenna_dialog.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "support/test_env.h"
#include "ui_mainwindow.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

class DriveWindow : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        drive_record_start();
    }
    void TearDown() override
    {
        test_reset_state();
    }
};

TEST_F(DriveWindow, ModeButtonsAndArrowsReachTheDrive)
{
    MainWindow window(0);
    window.timer->stop();
    emit window.ui->autoButton->pressed();
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_EQ(window.ui->autoButton->styleSheet().toStdString(), panel_style_text(STYLE_DARKGREEN));
    emit window.ui->parkButton->pressed();
    EXPECT_EQ(park_active, 1);
    emit window.ui->stopButton->pressed();
    EXPECT_EQ(park_active, 0);
    emit window.ui->AzManualButton->pressed();
    EXPECT_EQ(az_manual, 1);
    EXPECT_EQ(window.ui->AzManualButton->text(), "MAN");
    emit window.ui->rightButton->pressed();
    EXPECT_EQ(az_direction, DIR_RIGHT);
    EXPECT_EQ(window.ui->rightButton->styleSheet().toStdString(), panel_style_text(STYLE_DARKRED));
    emit window.ui->leftButton->pressed();
    EXPECT_EQ(az_direction, DIR_LEFT);
    emit window.ui->ElManualButton->pressed();
    emit window.ui->upButton->pressed();
    EXPECT_EQ(el_direction, DIR_UP);
    emit window.ui->downButton->pressed();
    EXPECT_EQ(el_direction, DIR_DOWN);
}

static QAction *menu_entry(QMenuBar *bar, const char *menu_name, const char *entry_name)
{
    for (QAction *menu : bar->actions())
    {
        if (menu->text() == menu_name && menu->menu())
        {
            for (QAction *entry : menu->menu()->actions())
            {
                if (entry->text() == entry_name)
                {
                    return entry;
                }
            }
        }
    }
    return nullptr;
}

TEST_F(DriveWindow, TrackingMenuOpensTheParameters)
{
    MainWindow window(0);
    window.timer->stop();
    window.MenuButtonPressed();
    ASSERT_NE(window.menu_bar, nullptr);
    EXPECT_NE(menu_entry(window.menu_bar, "Configure", "Sources"), nullptr);
    QAction *parameters = menu_entry(window.menu_bar, "Tracking", "Parameters");
    ASSERT_NE(parameters, nullptr);
    int opened = 0;
    QTimer::singleShot(0,
                       [&opened]()
                       {
                           if (AntennaDialog *d = qobject_cast<AntennaDialog *>(QApplication::activeModalWidget()))
                           {
                               opened = 1;
                               d->reject();
                           }
                       });
    parameters->trigger();
    EXPECT_EQ(opened, 1);
}

TEST_F(DriveWindow, ParametersDialogPausesTheCycleAndLeavesAutoOff)
{
    MainWindow window(0);
    emit window.ui->autoButton->pressed();
    int timer_ran = -1;
    int auto_inside = -1;
    QTimer::singleShot(0,
                       [&]()
                       {
                           timer_ran = window.timer->isActive();
                           auto_inside = auto_tracking;
                           if (QWidget *d = QApplication::activeModalWidget())
                           {
                               static_cast<QDialog *>(d)->accept();
                           }
                       });
    source_changed = az_changed = el_changed = 0;
    window.Antenna();
    EXPECT_EQ(timer_ran, 0);
    EXPECT_EQ(auto_inside, 0);
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_TRUE(window.timer->isActive());
    EXPECT_EQ(window.timer->interval(), 50);
    EXPECT_EQ(source_changed + az_changed + el_changed, 3);
}

TEST_F(DriveWindow, PositionGroupStepsTheDrive)
{
    MainWindow window(0);
    window.timer->stop();
    settings.AzimuthLimitMin = -1;
    emit window.ui->AzManualButton->pressed();
    emit window.ui->leftButton->pressed();
    ASSERT_EQ(az_direction, DIR_LEFT);
    // Without an encoder the axis reads 0: inside a low limit of -1, and on
    // a limit of 0, where the next position cycle cuts the move.
    window.PositionGroup(settings.TrackingSource);
    EXPECT_EQ(az_direction, DIR_LEFT);
    settings.AzimuthLimitMin = 0;
    window.PositionGroup(settings.TrackingSource);
    EXPECT_EQ(az_direction, DIR_STOPPED);
}

TEST_F(DriveWindow, ClosingTheWindowSwitchesEveryOutputOff)
{
    {
        MainWindow window(0);
        window.timer->stop();
        settings.AZ_Addr = 1;
        settings.EL_Addr = 2;
        emit window.ui->AzManualButton->pressed();
        emit window.ui->rightButton->pressed();
        drive_record_clear();
    }
    EXPECT_EQ(bus_calls_text(drive_record.calls), "relay(2,1,0) relay(2,2,0) relay(1,3,0) relay(1,4,0) "
                                                  "pwm(2,1,0) pwm(2,2,0) pwm(1,3,0) pwm(1,4,0)");
}
