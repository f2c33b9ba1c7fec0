// The remote links in the station: the guard that holds the drive until a
// link has sent a position, and the window's opening, serving and closing of
// the links. Wiring and hand-over only; the protocols have their own tests.
#include "astro/source.h"
#include "core/clock.h"
#include "core/drive.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "pty_pair.h"
#include "remote/easycomm.h"
#include "remote/easycomm_dialog.h"
#include "remote/net.h"
#include "remote/pstrotator.h"
#include "remote/remote_services.h"
#include "remote/rotctl.h"
#include "remote_peer.h"
#include "support/test_env.h"
#include "ui_easycomm_dialog.h"
#include "ui_mainwindow.h"

#include <QApplication>
#include <QDialog>
#include <QMenuBar>
#include <QSerialPort>
#include <QTimer>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>

// Relay commands that switched a port on, by port number.
static int relay_on[8];

static int record_relay(int, uint8_t port, uint8_t state, uint8_t *status)
{
    if (state && port < 8)
    {
        relay_on[port]++;
    }
    *status = 0;
    return 0;
}

static int record_pwm(int, uint8_t, uint8_t, uint8_t *status)
{
    *status = 0;
    return 0;
}

// One link's way of sending a target, as its peer would put it.
struct GuardRow
{
    const char *link;
    int source;
    std::function<void(double az)> azimuth_only;
    std::function<void(double az, double el)> both;
};

static const GuardRow guard_rows[] = {
    {"rotctl", SOURCE_GPREDICT,
     [](double az)
     {
         char request[64], reply[96];
         snprintf(request, sizeof request, "P %.2f\n", az);
         rotctl_handle(request, (int)strlen(request), reply, sizeof reply);
     },
     [](double az, double el)
     {
         char request[64], reply[96];
         snprintf(request, sizeof request, "P %.2f %.2f\n", az, el);
         rotctl_handle(request, (int)strlen(request), reply, sizeof reply);
     }},
    {"PstRotator", SOURCE_PSTROTATOR,
     [](double az)
     {
         char datagram[81];
         PstAnswers answers;
         snprintf(datagram, sizeof datagram, "<PST><AZIMUTH>%.1f</AZIMUTH></PST>", az);
         pst_handle(datagram, (int)strlen(datagram), &answers);
     },
     [](double az, double el)
     {
         char datagram[81];
         PstAnswers answers;
         snprintf(datagram, sizeof datagram, "<PST><AZIMUTH>%.1f</AZIMUTH><ELEVATION>%.1f</ELEVATION></PST>", az, el);
         pst_handle(datagram, (int)strlen(datagram), &answers);
     }},
    {"EasyComm", SOURCE_EASYCOMM,
     [](double az)
     {
         char word[30];
         snprintf(word, sizeof word, "AZ%.1f", az);
         easycomm_parse(&easycomm, word);
     },
     [](double az, double el)
     {
         char word[30];
         snprintf(word, sizeof word, "AZ%.1f", az);
         easycomm_parse(&easycomm, word);
         snprintf(word, sizeof word, "EL%.1f", el);
         easycomm_parse(&easycomm, word);
     }},
};

class RemoteGuard : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        memset(relay_on, 0, sizeof relay_on);
        static const DriveBus recorder = {record_relay, record_pwm};
        drive_set_bus(&recorder);
        settings.AZ_Addr = 0;
        settings.EL_Addr = 1;
        settings.Azimuth_Start = settings.Elevation_Start = 1.0;
        settings.Azimuth_Stop = settings.Elevation_Stop = 0.2;
        settings.AzimuthLimitMax = 360.0;
        settings.ElevationLimitMax = 90.0;
        az_position = 100.0;
        el_position = 10.0;
        az_read_status = el_read_status = 0;
        auto_tracking = 1;
    }
    void TearDown() override
    {
        drive_set_bus(nullptr);
    }
    // What the display group and the position group do with the row.
    void tick(int source)
    {
        time_t now = 1700000000;
        struct tm utc;
        gmtime_r(&now, &utc);
        source_calculate(source, 1, &utc, 52.5, 13.4, 1296.0, source_table[source]);
        source_az = source_table[source].az;
        source_el = source_table[source].el;
        drive_step(source, 0, 0, 0);
    }
    int azimuth_moves(void)
    {
        return relay_on[DRIVE_PORT_LEFT] + relay_on[DRIVE_PORT_RIGHT];
    }
    int elevation_moves(void)
    {
        return relay_on[DRIVE_PORT_UP] + relay_on[DRIVE_PORT_DOWN];
    }
};

TEST_F(RemoteGuard, NothingMovesBeforeAPositionAndEachAxisWaitsForItsOwn)
{
    for (const GuardRow &row : guard_rows)
    {
        SetUp();
        tick(row.source);
        tick(row.source);
        EXPECT_EQ(azimuth_moves() + elevation_moves(), 0) << row.link << ": AUTO alone moves nothing";
        row.azimuth_only(150.0);
        tick(row.source);
        EXPECT_GT(azimuth_moves(), 0) << row.link;
        EXPECT_EQ(elevation_moves(), 0) << row.link << ": elevation waits for its own position";
        row.both(150.0, 30.0);
        tick(row.source);
        EXPECT_GT(elevation_moves(), 0) << row.link;
        TearDown();
    }
}

TEST_F(RemoteGuard, TargetBelowTheHorizonMovesNeitherAxis)
{
    for (const GuardRow &row : guard_rows)
    {
        SetUp();
        row.both(150.0, -5.0);
        tick(row.source);
        EXPECT_EQ(azimuth_moves() + elevation_moves(), 0) << row.link;
        TearDown();
    }
}

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
    // Run a dialog slot with the operator's answer given as soon as the
    // dialog's own loop runs.
    static void answer_next_dialog(bool accept)
    {
        QTimer::singleShot(0,
                           [accept]()
                           {
                               QDialog *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                               if (dialog)
                               {
                                   accept ? dialog->accept() : dialog->reject();
                               }
                           });
    }
    // Until the request is at the server's end of the session.
    static void wait_request(void)
    {
        uint32_t ready = 0;
        net_select(&remote_client[0], 1, 2000000, &ready);
    }
    static void ticks(MainWindow &w, int count, std::function<bool()> done)
    {
        for (int i = 0; i < count && !done(); i++)
        {
            w.TimerEvent();
        }
    }
};

TEST_F(RemoteWindow, GPredictServiceRunsWithTheWindowAndEndsWithIt)
{
    store_source(SOURCE_GPREDICT);
    int client = -1;
    {
        MainWindow w(0);
        w.timer->stop();
        EXPECT_EQ(gpredict_running, 1);
        EXPECT_STREQ(panel_last_status, "GPredict is active");
        EXPECT_GE(remote_socket[0], 0);
        EXPECT_EQ(remote_socket[1], -1) << "tests name no wired adapter";

        client = peer_connect(test_port(0));
        ticks(w, 200, [] { return remote_client[0] >= 0; });
        ASSERT_GE(remote_client[0], 0);
        peer_send(client, "P 222.5 33.25\n");
        wait_request();
        w.TimerEvent();
        EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
        EXPECT_DOUBLE_EQ(source_az, 222.5);
        EXPECT_EQ(w.ui->SourceAzimuth->text(), QString(" 222.50"));
        EXPECT_EQ(w.ui->SourceElevation->text(), QString("  33.25"));
    }
    bool closed = false;
    peer_receive(client, 2000, &closed);
    EXPECT_TRUE(closed) << "the window's end closes the session";
    peer_close(client);
    EXPECT_EQ(gpredict_running, 0);
    int again = net_init_client("127.0.0.1", test_port_text(0).c_str(), "tcp");
    EXPECT_GE(again, 0) << "and frees the port at once";
    net_close(again);
}

TEST_F(RemoteWindow, SourcesDialogDropsTheClientAndOpensTheServiceAnew)
{
    store_source(SOURCE_GPREDICT);
    MainWindow w(0);
    w.timer->stop();
    int client = peer_connect(test_port(0));
    ticks(w, 200, [] { return remote_client[0] >= 0; });
    ASSERT_GE(remote_client[0], 0);

    answer_next_dialog(false);
    w.SourceButtonPressed();
    bool closed = false;
    peer_receive(client, 2000, &closed);
    EXPECT_TRUE(closed) << "a cancelled table still closes the links";
    EXPECT_EQ(remote_client[0], -1);
    EXPECT_EQ(gpredict_running, 1);
    EXPECT_STREQ(panel_last_status, "GPredict is active");
    peer_close(client);

    int second = peer_connect(test_port(0));
    ASSERT_GE(second, 0) << "the listener is back on its port";
    ticks(w, 200, [] { return remote_client[0] >= 0; });
    peer_send(second, "p\n");
    wait_request();
    w.TimerEvent();
    EXPECT_NE(peer_receive(second, 2000).find("RPRT 0"), std::string::npos);
    peer_close(second);
}

TEST_F(RemoteWindow, LeavingGPredictForAnotherSourceSaysItIsInactive)
{
    store_source(SOURCE_GPREDICT);
    MainWindow w(0);
    w.timer->stop();
    settings.TrackingSource = SOURCE_MOON;
    answer_next_dialog(false);
    w.SourceButtonPressed();
    EXPECT_EQ(gpredict_running, 0);
    EXPECT_STREQ(panel_last_status, "GPredict is inactive");
    EXPECT_EQ(remote_socket[0], -1);
}

TEST_F(RemoteWindow, PstRotatorDatagramsAreServedByTheCycle)
{
    int rotator = peer_udp(0);
    text_copy(settings.CmdPort, sizeof settings.CmdPort, test_port_text(1).c_str());
    text_copy(settings.RspPort, sizeof settings.RspPort, std::to_string(peer_local_port(rotator)).c_str());
    store_source(SOURCE_PSTROTATOR);
    {
        MainWindow w(0);
        w.timer->stop();
        EXPECT_EQ(pstrotator_running, 1);
        EXPECT_STREQ(panel_last_status, "PstRotator is active");
        peer_sendto(rotator, test_port(1), "<PST><AZIMUTH>77.5</AZIMUTH></PST>");
        ticks(w, 200, [] { return source_table[SOURCE_PSTROTATOR].az_tracking_enable != 0; });
        EXPECT_DOUBLE_EQ(source_az, 77.5);
        az_position = 76.04;
        peer_sendto(rotator, test_port(1), "<PST><AZ?></PST>");
        uint32_t ready = 0;
        net_select(&remote_socket[0], 1, 2000000, &ready);
        w.TimerEvent();
        EXPECT_EQ(peer_receive(rotator, 2000), "AZ:76.0\r");
    }
    EXPECT_EQ(pstrotator_running, 0);
    peer_close(rotator);
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
        EXPECT_EQ(easycomm.active, 1);
        EXPECT_STREQ(panel_last_status, "EasyComm is active");
        pty.send("AZ ");
        easycomm.link.port->waitForReadyRead(2000);
        // The first tick runs every group, the EasyComm group among them;
        // the answer is the antenna's position as that tick's read left it.
        w.TimerEvent();
        char expected[32];
        snprintf(expected, sizeof expected, "AZ%0.1f ", az_position);
        EXPECT_EQ(pty.receive(2000), expected);
    }
    EXPECT_EQ(easycomm.active, 0) << "the window's end closes the line";
}

TEST_F(RemoteWindow, EasyCommMenuEntrySavesTheSectionAndStopsTracking)
{
    MainWindow w(0);
    w.timer->stop();
    w.MenuButtonPressed();
    QAction *entry = nullptr;
    for (QAction *menu : w.menu_bar->actions())
    {
        if (menu->menu())
        {
            for (QAction *a : menu->menu()->actions())
            {
                entry = a->text() == "EasyComm" ? a : entry;
            }
        }
    }
    ASSERT_NE(entry, nullptr);
    auto_tracking = 1;
    easycomm.link.BaudRate = 6;
    answer_next_dialog(true);
    entry->trigger();
    EXPECT_EQ(auto_tracking, 0);
    EXPECT_EQ(panel_last_style[PANEL_AUTO], STYLE_GRAY);
    char path[1024];
    settings_path(ini_file_name, path, sizeof path);
    EXPECT_NE(test_read_file(path).find("BaudRate=38400"), std::string::npos);
}

TEST(EasyCommPortDialog, OpensWithTheRecordAndEveryControlWritesIt)
{
    test_reset_state();
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, "/dev/ttyUSB9");
    easycomm.link.BaudRate = 5;
    easycomm.link.DataBits = 0;
    easycomm.link.StopBits = 2;
    easycomm.link.Parity = 1;
    easycomm.link.FlowControl = 3;
    easycomm.debug = 1;
    EasyCommDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), "Rig Control Configuration");
    EXPECT_EQ(dialog.ui->HeadingLabel->text(), "Easycomm Settings");
    // An adapter that is not plugged in now keeps its place in the list.
    EXPECT_EQ(dialog.ui->PortComboBox->currentText(), "/dev/ttyUSB9");
    EXPECT_EQ(easycomm.link.Port, dialog.ui->PortComboBox->currentIndex());
    EXPECT_EQ(dialog.ui->BaudComboBox->currentText(), "19200");
    EXPECT_EQ(dialog.ui->DataBitsComboBox->currentText(), "7");
    EXPECT_EQ(dialog.ui->StopBitsComboBox->currentText(), "2");
    EXPECT_EQ(dialog.ui->ParityComboBox->currentText(), "Odd");
    EXPECT_EQ(dialog.ui->FlowComboBox->currentText(), "Custom");
    EXPECT_TRUE(dialog.ui->DebugButton->isChecked());

    dialog.ui->BaudComboBox->setCurrentIndex(7);
    dialog.ui->DataBitsComboBox->setCurrentIndex(1);
    dialog.ui->StopBitsComboBox->setCurrentIndex(1);
    dialog.ui->ParityComboBox->setCurrentIndex(4);
    dialog.ui->FlowComboBox->setCurrentIndex(1);
    dialog.ui->DebugButton->click();
    EXPECT_EQ(easycomm.link.BaudRate, 7);
    EXPECT_EQ(easycomm.link.DataBits, 1);
    EXPECT_EQ(easycomm.link.StopBits, 1);
    EXPECT_EQ(easycomm.link.Parity, 4);
    EXPECT_EQ(easycomm.link.FlowControl, 1);
    EXPECT_EQ(easycomm.debug, 0);
    if (dialog.ui->PortComboBox->count() > 1)
    {
        int other = dialog.ui->PortComboBox->currentIndex() == 0 ? 1 : 0;
        dialog.ui->PortComboBox->setCurrentIndex(other);
        EXPECT_STREQ(easycomm.link.PortName, dialog.ui->PortComboBox->itemText(other).toUtf8().constData());
    }
}
