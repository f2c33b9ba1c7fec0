// The remote links in the station: the window's opening, serving and closing
// of each link. Wiring and hand-over only; the protocols have their own tests,
// and the drive's hold on a remote row without a report has its own rows.
#include "astro/source.h"
#include "core/clock.h"
#include "core/drive.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "pty_pair.h"
#include "remote/easycomm.h"
#include "remote/net.h"
#include "remote/pstrotator.h"
#include "remote/remote_services.h"
#include "remote/rotctl.h"
#include "remote_peer.h"
#include "support/panel_record.h"
#include "support/test_env.h"
#include "ui_mainwindow.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

// The window with a remote source stored in its settings file.
class RemoteWindow : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        // The defaults of a first run: both services active, PstRotator on UDP.
        LoadSettings(ini_file_name, &settings);
        text_copy(rotctl_service, sizeof rotctl_service, test_port_text(0).c_str());
        // Leaving PARK flashes STOP for half a second; a test need not watch it.
        clock_set_sleep_hook([](int) {});
    }
    void store_source(int source)
    {
        settings.TrackingSource = source;
        SaveSettings(ini_file_name, &settings);
    }
    // Tick until the condition holds, a bounded number of times.
    template <typename F> static void ticks(MainWindow &w, F done)
    {
        for (int i = 0; i < 200 && !done(); i++)
        {
            w.TimerEvent();
        }
    }
};

TEST_F(RemoteWindow, GPredictSessionSurvivesTheSourcesDialogAndEndsWithTheWindow)
{
    store_source(SOURCE_GPREDICT);
    int client = -1;
    {
        MainWindow w(0);
        w.timer->stop();
        EXPECT_STREQ(panel_last_status, "GPredict is active");
        // The sources dialog drops the session and opens the service anew,
        // on the same port at once.
        int first = peer_connect(test_port(0));
        ticks(w, [] { return remote_client[0] >= 0; });
        QTimer::singleShot(0, [] { qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject(); });
        w.SourceButtonPressed();
        bool closed = false;
        peer_receive(first, 2000, &closed);
        EXPECT_TRUE(closed) << "a cancelled table still closes the links";
        close(first);

        client = peer_connect(test_port(0));
        ASSERT_GE(client, 0) << "the listener is back on its port";
        ticks(w, [] { return remote_client[0] >= 0; });
        peer_send(client, "P 222.5 33.25\n");
        uint32_t ready = 0;
        net_select(&remote_client[0], 1, 2000000, &ready);
        w.TimerEvent();
        EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
        EXPECT_EQ(w.ui->SourceAzimuth->text(), QString(" 222.50"));
        EXPECT_EQ(w.ui->SourceElevation->text(), QString("  33.25"));

        // The Sun chosen from the menu leaves the session open: GPredict's
        // next position fills its row and does not fight the Sun's target.
        settings.TrackingSource = SOURCE_SUN;
        peer_send(client, "P 100.5 10.25\n");
        net_select(&remote_client[0], 1, 2000000, &ready);
        w.TimerEvent();
        EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
        EXPECT_DOUBLE_EQ(source_table[SOURCE_GPREDICT].az, 100.5);
        EXPECT_NE(source_az, 100.5);
        EXPECT_NE(w.ui->SourceAzimuth->text(), QString(" 100.50"));
    }
    bool closed = false;
    peer_receive(client, 2000, &closed);
    EXPECT_TRUE(closed) << "the window's end closes the session";
    close(client);
    EXPECT_EQ(gpredict_running, 0);
}

TEST_F(RemoteWindow, PstRotatorDatagramsAreServedByTheCycle)
{
    int rotator = peer_udp(test_port(2));
    text_copy(settings.CmdPort, sizeof settings.CmdPort, test_port_text(1).c_str());
    text_copy(settings.RspPort, sizeof settings.RspPort, test_port_text(2).c_str());
    store_source(SOURCE_PSTROTATOR);
    {
        MainWindow w(0);
        w.timer->stop();
        EXPECT_STREQ(panel_last_status, "PstRotator is active");
        peer_sendto(rotator, test_port(1), "<PST><AZIMUTH>77.5</AZIMUTH><AZ?></PST>");
        ticks(w, [] { return source_table[SOURCE_PSTROTATOR].az_tracking_enable != 0; });
        EXPECT_DOUBLE_EQ(source_az, 77.5);
        EXPECT_EQ(peer_receive(rotator, 2000).substr(0, 3), "AZ:");
    }
    EXPECT_EQ(pstrotator_running, 0);
    close(rotator);
}

TEST_F(RemoteWindow, EasyCommLineIsServedByTheCycle)
{
    PtyPair pty;
    if (!pty.ok())
    {
        GTEST_SKIP() << "socat is not installed";
    }
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, pty.near_name.c_str());
    easycomm.active = 1;
    easycomm_save_settings(ini_file_name, &easycomm);
    memset(&easycomm, 0, sizeof easycomm);
    store_source(SOURCE_EASYCOMM);
    {
        MainWindow w(0);
        w.timer->stop();
        EXPECT_STREQ(panel_last_status, "EasyComm is active");
        pty.send("AZ ");
        serial_wait_readable(&easycomm.link, 2000);
        // The first tick runs every group, the EasyComm group among them;
        // the answer is the antenna's position as that tick's read left it.
        w.TimerEvent();
        char expected[32];
        snprintf(expected, sizeof expected, "AZ%0.1f ", az_position);
        EXPECT_EQ(pty.receive(2000), expected);
    }
    EXPECT_EQ(easycomm.active, 0) << "the window's end closes the line";
}
