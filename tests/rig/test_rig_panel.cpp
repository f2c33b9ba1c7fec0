// The rig's wiring into the window: presses reach the rig functions, the
// cycle runs the rig group, the menu offers the dialog.
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_mainwindow.h"

#include <QMenu>
#include <QMenuBar>
#include <gtest/gtest.h>

class RigPanel : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
    }
};

TEST_F(RigPanel, ButtonsReachTheirSlots)
{
    MainWindow window(0);
    window.timer->stop();
    emit window.ui->TxDopplerButton->pressed();
    EXPECT_EQ(vfo_doppler_mode, 1);
    EXPECT_EQ(window.ui->TxDopplerButton->styleSheet().toStdString(), panel_style_text(STYLE_DARKGREEN));
    emit window.ui->RxDopplerButton->pressed();
    EXPECT_EQ(vfo_doppler_mode, 2);
    emit window.ui->OmniRigButton->pressed();
    EXPECT_EQ(window.ui->statusBar->currentMessage(), "OmniRig is inactive");
    emit window.ui->HomeStationButton->pressed();
    EXPECT_EQ(window.ui->statusBar->currentMessage(), "Doppler Control is OFF");
    emit window.ui->DxStationButton->pressed();
    EXPECT_EQ(window.ui->statusBar->currentMessage(), "Doppler Control is OFF");
}

TEST_F(RigPanel, CycleShowsTheFrequencies)
{
    MainWindow window(0);
    window.timer->stop();
    settings.Frequency = 432.065;
    window.TimerEvent();
    EXPECT_EQ(window.ui->txFrequency->text(), "   432.06500");
    EXPECT_EQ(window.ui->rxFrequency->text(), "   432.06500");
}

TEST_F(RigPanel, ConfigureMenuOffersRigControl)
{
    MainWindow window(0);
    window.timer->stop();
    window.MenuButtonPressed();
    ASSERT_NE(window.menu_bar, nullptr);
    QMenu *configure = nullptr;
    for (QAction *action : window.menu_bar->actions())
    {
        if (action->text() == "Configure")
        {
            configure = action->menu();
        }
    }
    ASSERT_NE(configure, nullptr);
    EXPECT_EQ(configure->styleSheet().toStdString(), panel_style_text(STYLE_MENU));
    int found = 0;
    for (QAction *action : configure->actions())
    {
        found += action->text() == "Rig Control";
    }
    EXPECT_EQ(found, 1);
    window.MenuButtonPressed();
}
