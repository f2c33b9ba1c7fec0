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

TEST(RigPanel, ButtonsCycleAndMenuReachTheRig)
{
    test_reset_state();
    test_clear_settings();
    MainWindow window(0);
    window.timer->stop();
    emit window.ui->TxDopplerButton->pressed();
    EXPECT_EQ(vfo_doppler_mode, 1);
    EXPECT_EQ(window.ui->TxDopplerButton->styleSheet().toStdString(), panel_style_text(STYLE_DARKGREEN));
    emit window.ui->OmniRigButton->pressed();
    EXPECT_EQ(window.ui->statusBar->currentMessage(), "OmniRig is inactive");

    settings.Frequency = 432.065;
    window.TimerEvent();
    EXPECT_EQ(window.ui->rxFrequency->text(), "   432.06500");

    window.MenuButtonPressed();
    ASSERT_NE(window.menu_bar, nullptr);
    int found = 0;
    for (QAction *action : window.menu_bar->actions())
    {
        for (QAction *entry : action->text() == "Configure" ? action->menu()->actions() : QList<QAction *>())
        {
            found += entry->text() == "Rig Control";
        }
    }
    EXPECT_EQ(found, 1);
    window.MenuButtonPressed();
}
