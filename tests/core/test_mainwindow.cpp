#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_mainwindow.h"
#include "widgets/compass.h"

#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolButton>
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

TEST_F(Window, FixedAt800By480)
{
    MainWindow w(0);
    EXPECT_EQ(QSize(800, 480), w.size());
    EXPECT_EQ(QSize(800, 480), w.minimumSize());
    EXPECT_EQ(QSize(800, 480), w.maximumSize());
    w.show();
    w.resize(1024, 600);
    EXPECT_EQ(QSize(800, 480), w.size());
}

TEST_F(Window, InstanceNumberNamesFileAndTitle)
{
    {
        MainWindow w(3);
        EXPECT_STREQ("Morvane_3.ini", ini_file_name);
        EXPECT_EQ(QString("Morvane EME Tracking System v2.35 (3)"), w.windowTitle());
    }
    {
        MainWindow w(0);
        EXPECT_STREQ("Morvane.ini", ini_file_name);
        EXPECT_EQ(QString("Morvane EME Tracking System v2.35"), w.windowTitle());
    }
}

TEST_F(Window, EveryControlOfTheFormByName)
{
    MainWindow w(0);
    const char *buttons[] = {"MenuButton",        "SourceButton",        "SourceAzimuth",     "SourceElevation",
                             "antennaAzimuth",    "antennaElevation",    "HomeStationButton", "DxStationButton",
                             "AzCalibrateButton", "ElCalibrateButton",   "autoButton",        "parkButton",
                             "stopButton",        "AzManualButton",      "ElManualButton",    "TxDopplerButton",
                             "RxDopplerButton",   "MutualDopplerButton", "OmniRigButton"};
    const char *labels[] = {"CallSign",    "Location",  "DateTime",      "RiseTime",    "SetTime",       "AU",
                            "LHA_Label",   "LHA",       "DEC_Label",     "Declination", "txFrequency",   "rxFrequency",
                            "HomeDoppler", "DxDoppler", "MutualDoppler", "WindSpeed",   "WindDirection", "Thermometer"};
    const char *arrows[] = {"leftButton", "rightButton", "upButton", "downButton"};
    for (const char *name : buttons)
    {
        EXPECT_NE(nullptr, w.findChild<QPushButton *>(name)) << name;
    }
    for (const char *name : labels)
    {
        EXPECT_NE(nullptr, w.findChild<QLabel *>(name)) << name;
    }
    for (const char *name : arrows)
    {
        EXPECT_NE(nullptr, w.findChild<QToolButton *>(name)) << name;
    }
    EXPECT_NE(nullptr, w.findChild<QSlider *>("panelSlider"));
    EXPECT_NE(nullptr, w.findChild<QStatusBar *>("statusBar"));
    EXPECT_NE(nullptr, w.findChild<QLayout *>("MenuLayout"));
    EXPECT_EQ(3, w.ui->panelSlider->maximum());
    EXPECT_EQ(1, w.ui->panelSlider->pageStep());
    EXPECT_EQ(Qt::Horizontal, w.ui->panelSlider->orientation());
}

TEST_F(Window, StartingStylesAndHiddenControls)
{
    MainWindow w(0);
    const QString gray = panel_style_text(STYLE_GRAY);
    EXPECT_EQ(gray, w.ui->autoButton->styleSheet());
    EXPECT_EQ(gray, w.ui->stopButton->styleSheet());
    EXPECT_EQ(gray, w.ui->leftButton->styleSheet());
    EXPECT_EQ(QString(panel_style_text(STYLE_RED_TEXT)), w.ui->antennaAzimuth->styleSheet());
    EXPECT_EQ(QString(panel_style_text(STYLE_GREEN_TEXT)), w.ui->SourceButton->styleSheet());
    EXPECT_EQ(QString(panel_style_text(STYLE_GREEN_TEXT)), w.ui->LHA->styleSheet());
    // Both axes start in AUTO, so UpdateDisplay has painted them green.
    EXPECT_EQ(QString(panel_style_text(STYLE_DARKGREEN)), w.ui->AzManualButton->styleSheet());
    w.show();
    EXPECT_FALSE(w.ui->MutualDopplerButton->isVisible());
    EXPECT_FALSE(w.ui->MutualDoppler->isVisible());
    EXPECT_FALSE(w.ui->AzCalibrateButton->isVisible());
    EXPECT_FALSE(w.ui->ElCalibrateButton->isEnabled());
    EXPECT_TRUE(w.ui->LHA->isVisible());
    EXPECT_EQ(QString("OmniRig is inactive"), w.ui->OmniRigButton->text());
}

TEST_F(Window, SevenDialsOnTwoStacks)
{
    MainWindow w(0);
    const char *first[] = {"Azimuth", "Wind Speed", "Temperature", "Altimeter"};
    const char *second[] = {"Elevation", "Wind Direction", "Barometer"};
    ASSERT_EQ(4, w.ui->stackedWidget1->count());
    ASSERT_EQ(3, w.ui->stackedWidget2->count());
    for (int i = 0; i < 4; i++)
    {
        Compass *c = qobject_cast<Compass *>(w.ui->stackedWidget1->widget(i));
        ASSERT_NE(nullptr, c);
        EXPECT_STREQ(first[i], c->title);
    }
    for (int i = 0; i < 3; i++)
    {
        Compass *c = qobject_cast<Compass *>(w.ui->stackedWidget2->widget(i));
        ASSERT_NE(nullptr, c);
        EXPECT_STREQ(second[i], c->title);
    }
    EXPECT_STREQ("x 1000", w.altimeter_dial->value_text);
    EXPECT_EQ(2, w.azimuth_dial->needle_count);
    EXPECT_EQ(1, w.barometer_dial->needle_count);
}

TEST_F(Window, TickFollowsTheSliderAndShowsTheClock)
{
    MainWindow w(0);
    w.timer->stop();
    clock_freeze(1795392000); // 2026-11-23 00:00:00 UTC, a Monday
    w.TimerEvent();
    EXPECT_EQ(QString("Mon Nov 23 00:00:00 2026"), w.ui->DateTime->text());
    const int expected[4][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 2}};
    for (int pos = 3; pos >= 0; pos--)
    {
        w.ui->panelSlider->setValue(pos);
        w.TimerEvent();
        EXPECT_EQ(expected[pos][0], w.ui->stackedWidget1->currentIndex());
        EXPECT_EQ(expected[pos][1], w.ui->stackedWidget2->currentIndex());
    }
}

TEST_F(Window, MenuButtonShowsAndRemovesTheBar)
{
    MainWindow w(0);
    w.show();
    w.MenuButtonPressed();
    ASSERT_NE(nullptr, w.menu_bar);
    EXPECT_TRUE(w.menu_bar->isVisible());
    EXPECT_EQ(QString(panel_style_text(STYLE_MENU_BAR)), w.menu_bar->styleSheet());
    w.MenuButtonPressed();
    EXPECT_EQ(nullptr, w.menu_bar);
    EXPECT_EQ(0, w.menu_shown);
}

TEST_F(Window, RigControlIsOffAfterEveryStart)
{
    {
        MainWindow w(0);
        settings.OmniRigActive = 1;
    }
    MainWindow w(0);
    EXPECT_EQ(0, settings.OmniRigActive);
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
    w.TimerEvent();
    EXPECT_EQ(QString(" 120.50"), w.ui->SourceAzimuth->text());
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
            if (argument)
            {
                execl(program.c_str(), program.c_str(), argument, (char *)nullptr);
            }
            else
            {
                execl(program.c_str(), program.c_str(), (char *)nullptr);
            }
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
    struct Case
    {
        const char *argument;
        int sig;
        const char *file;
    };
    const Case cases[] = {
        {"3", SIGTERM, "Morvane_3.ini"},
        {nullptr, SIGINT, "Morvane.ini"},
        {"abc", SIGHUP, "Morvane.ini"},
        {"0", SIGTERM, "Morvane.ini"},
    };
    for (const Case &c : cases)
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
