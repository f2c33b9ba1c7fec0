#include "astro/sources_dialog.h"
#include "core/about_dialog.h"
#include "core/clock.h"
#include "remote/easycomm_dialog.h"
#include "rig/rig_dialog.h"
#include "widgets/touch_style.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_mainwindow.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QScroller>
#include <QApplication>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

class Window : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
    }
    void TearDown() override
    {
        test_reset_state();
    }
};

TEST_F(Window, FixedAt800By480WithTheInstanceInTheTitle)
{
    MainWindow w(3);
    EXPECT_STREQ("Morvane_3.ini", ini_file_name);
    EXPECT_EQ(QString("Morvane EME Tracking System v2.35 (3)"), w.windowTitle());
    EXPECT_EQ(QSize(800, 480), w.minimumSize());
    EXPECT_EQ(QSize(800, 480), w.maximumSize());
    w.show();
    w.resize(1024, 600);
    EXPECT_EQ(QSize(800, 480), w.size());
}

// Wiring only: the drive's own tests hold its rules.
TEST_F(Window, DriveButtonsReachTheDrive)
{
    MainWindow w(0);
    w.timer->stop();
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    emit w.ui->autoButton->pressed();
    EXPECT_EQ(1, auto_tracking);
    emit w.ui->AzManualButton->pressed();
    emit w.ui->leftButton->pressed();
    EXPECT_EQ(DIR_LEFT, az_direction);
}

// Every style the panel applies keeps the form's bold face, on buttons the
// drive restyles and on those it leaves alone.
TEST_F(Window, RestyledButtonsKeepTheFormsBoldWeight)
{
    MainWindow w(0);
    w.timer->stop();
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    w.show();
    emit w.ui->autoButton->pressed();
    emit w.ui->AzManualButton->pressed();
    emit w.ui->TxDopplerButton->pressed();
    emit w.ui->stopButton->pressed();
    QApplication::processEvents();
    const QList<QAbstractButton *> buttons = w.findChildren<QAbstractButton *>();
    ASSERT_GT(buttons.size(), 20);
    for (QAbstractButton *b : buttons)
    {
        b->ensurePolished();
        EXPECT_TRUE(b->font().bold()) << b->objectName().toStdString();
    }
}

// The dialogs laid out by us are made for a finger: OK and Cancel a finger
// high, check boxes a thumb wide, tables that follow a drag.
TEST_F(Window, FreeDialogsAreTouchSized)
{
    MainWindow w(0);
    w.timer->stop();
    SourcesDialog sources(&w);
    RigControlDialog rig(&w);
    EasyCommDialog easycomm_dialog(&w);
    AboutDialog about(&w);
    QDialog *const dialogs[] = {&sources, &rig, &easycomm_dialog, &about};
    for (QDialog *d : dialogs)
    {
        SCOPED_TRACE(d->metaObject()->className());
        d->show();
        QApplication::processEvents();
        const QList<QDialogButtonBox *> boxes = d->findChildren<QDialogButtonBox *>();
        ASSERT_FALSE(boxes.isEmpty());
        for (QAbstractButton *b : boxes.first()->buttons())
        {
            EXPECT_GE(b->height(), TOUCH_BUTTON_HEIGHT) << b->text().toStdString();
        }
        for (QCheckBox *c : d->findChildren<QCheckBox *>())
        {
            EXPECT_GE(c->sizeHint().height(), TOUCH_CHECK_SIZE);
        }
        for (QAbstractItemView *v : d->findChildren<QAbstractItemView *>())
        {
            EXPECT_TRUE(QScroller::hasScroller(v->viewport()));
        }
        d->hide();
    }
}

// Wiring only: the position group feeds the pass log, and the window's end
// closes the pass.
TEST_F(Window, PassLogFollowsAutoAndClosesWithTheWindow)
{
    const time_t start = 1795392000; // 2026-11-23 00:00:00 UTC
    {
        MainWindow w(0);
        w.timer->stop();
        text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
        emit w.ui->autoButton->pressed();
        for (int tick = 0; tick < 60; tick++)
        {
            clock_freeze(start + tick / 20);
            w.TimerEvent();
        }
    }
    char path[600];
    settings_path("tracking-2026-11-23.csv", path, sizeof path);
    std::string log = test_read_file(path);
    EXPECT_NE(log.find("\n2026-11-23T00:00:02Z,Moon,"), std::string::npos) << log;
    EXPECT_NE(log.find("\n# pass,2026-11-23T00:00:00Z,2026-11-23T00:00:02Z,Moon,"), std::string::npos) << log;
}

TEST_F(Window, NumbersUseTheCFormOnAGermanDesktop)
{
    // ctest runs this program with LC_ALL=de_DE.UTF-8; Qt took that locale
    // when the application object was made.
    const char *ctype = setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(nullptr, strstr(ctype, "de_DE")) << "the test must run under de_DE.UTF-8, got " << ctype;
    char text[32];
    snprintf(text, sizeof text, "%.1f", 120.5);
    EXPECT_STREQ("120.5", text);
    EXPECT_EQ(120.5, atof("120.5"));
    MainWindow w(0);
    w.timer->stop();
    settings.TrackingSource = SOURCE_USER_AZEL;
    settings.User_Azimuth = 120.5;
    // The tick also shows the clock and the dial pages of the slider.
    clock_freeze(1795392000); // 2026-11-23 00:00:00 UTC, a Monday
    w.ui->panelSlider->setValue(3);
    w.TimerEvent();
    EXPECT_EQ(QString(" 120.50"), w.ui->SourceAzimuth->text());
    EXPECT_EQ(QString("Mon Nov 23 00:00:00 2026"), w.ui->DateTime->text());
    EXPECT_EQ(3, w.ui->stackedWidget1->currentIndex());
    EXPECT_EQ(2, w.ui->stackedWidget2->currentIndex());
}

// The shipped program, run as an operator runs it, closed by a signal.
class Program : public ::testing::Test
{
  protected:
    std::string home;

    void SetUp() override
    {
        char dir[] = "/tmp/morvane-program-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(dir));
        home = dir;
    }
    void TearDown() override
    {
        std::string cmd = "rm -rf '" + home + "'";
        ASSERT_EQ(0, system(cmd.c_str()));
    }

    pid_t start(const char *argument)
    {
        const char *bin = getenv("MORVANE_BIN");
        std::string program = std::string(bin ? bin : ".") + "/morvane";
        pid_t pid = fork();
        if (pid == 0)
        {
            setenv("HOME", home.c_str(), 1);
            setenv("QT_QPA_PLATFORM", "offscreen", 1);
            int null = open("/dev/null", O_WRONLY);
            dup2(null, 2);
            // Without an argument the list simply ends one place earlier.
            execl(program.c_str(), program.c_str(), argument, (char *)nullptr);
            _exit(127);
        }
        return pid;
    }

    // The program has taken the signal over once /proc says it catches it.
    static bool catches(pid_t pid, int sig)
    {
        for (int i = 0; i < 1000; i++)
        {
            std::string status = test_read_file("/proc/" + std::to_string(pid) + "/status");
            size_t at = status.find("SigCgt:");
            if (at != std::string::npos)
            {
                unsigned long long mask = strtoull(status.c_str() + at + 7, nullptr, 16);
                if (mask & (1ull << (sig - 1)))
                {
                    return true;
                }
            }
            usleep(10000);
        }
        return false;
    }

    static int finish(pid_t pid)
    {
        for (int i = 0; i < 1500; i++)
        {
            int status = 0;
            if (waitpid(pid, &status, WNOHANG) == pid)
            {
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            usleep(10000);
        }
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        return -1;
    }

    std::string ini(const char *name)
    {
        return test_read_file(home + "/.config/Morvane/" + name);
    }
};

TEST_F(Program, SignalsCloseTheWindowAndSaveTheInstanceFile)
{
    const struct
    {
        const char *argument;
        int sig;
        const char *file;
    } cases[] = {
        {"3", SIGTERM, "Morvane_3.ini"},
        {nullptr, SIGINT, "Morvane.ini"},
        {"abc", SIGHUP, "Morvane.ini"},
        {"0", SIGTERM, "Morvane.ini"},
    };
    for (const auto &c : cases)
    {
        std::string cmd = "rm -rf '" + home + "/.config'";
        ASSERT_EQ(0, system(cmd.c_str()));
        pid_t pid = start(c.argument);
        ASSERT_GT(pid, 0);
        ASSERT_TRUE(catches(pid, c.sig)) << "the program never took the signal over";
        kill(pid, c.sig);
        EXPECT_EQ(0, finish(pid)) << "signal " << c.sig;
        std::string text = ini(c.file);
        EXPECT_NE(std::string::npos, text.find("[HOME_DATA]")) << c.file << " after signal " << c.sig;
        EXPECT_NE(std::string::npos, text.find("[REPORT]")) << c.file;
    }
    EXPECT_TRUE(ini("Morvane_0.ini").empty()) << "instance 0 is the default file";
}
