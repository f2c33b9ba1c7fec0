// The bus in the window: opened at start, read by the cycle, put to sleep and
// closed at exit. Wiring only; the arithmetic has its own tests.
#include "sim_fixture.h"

#include "core/clock.h"
#include "core/drive.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "support/panel_record.h"

#include <cstring>
#include <sys/stat.h>

static void no_sleep(int) {}

TEST(BusWindow, NoPortStillOpensTheWindowWithTheFailureMessage)
{
    test_reset_state();
    test_clear_settings();
    struct stat st;
    if (stat("/dev/ttyUSB0", &st) == 0)
    {
        GTEST_SKIP() << "a real adapter is plugged in here";
    }
    {
        MainWindow window(0);
        // The operator is told what to do about the port, not only that it failed.
        EXPECT_STREQ("Morvane communication failure: No such port /dev/ttyUSB0", panel_last_status);
    }
}

TEST_F(SimBus, WindowWakesReadsAndPutsTheBusToSleep)
{
    sei_link_reset();
    clock_set_sleep_hook(no_sleep);
    control("set az 211.5");
    // The window loads its settings: give it the fixture's axis addresses.
    SaveSettings(ini_file_name, &settings);
    {
        MainWindow window(0);
        EXPECT_EQ(1, frames_arrived("> 6F", 1));
        window.TimerEvent();
        EXPECT_EQ(0, strncmp(" 211.50", panel_last_text[PANEL_ANTENNA_AZIMUTH], 7));
        // The window goes while a motor runs: it must not be left running.
        az_right(1);
    }
    EXPECT_EQ(1, frames_arrived("> 5F", 1));
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        EXPECT_EQ(0, sim->station.outputs[0].relay[4]) << "relay left on at exit";
        EXPECT_EQ(0, sim->station.outputs[0].duty[4]) << "PWM left on at exit";
    }
    EXPECT_FALSE(sei_is_open());
}

TEST_F(SimBus, RelayOnlyStationSendsNoPwmFrameAtExit)
{
    sei_link_reset();
    clock_set_sleep_hook(no_sleep);
    // No slow duty: both axes switch their motors by relay alone.
    settings.AzimuthSlowDutyCycle = settings.ElevationSlowDutyCycle = 0;
    SaveSettings(ini_file_name, &settings);
    {
        MainWindow window(0);
        window.TimerEvent();
        ASSERT_EQ(0, settings.AzimuthPwmActive + settings.ElevationPwmActive);
        az_right(1);
        el_down(1);
    }
    EXPECT_EQ(1, frames_arrived("> 5F", 1));
    std::lock_guard<std::mutex> hold(sim->lock);
    int count = sim->station.frame_count < SIM_FRAME_LOG ? sim->station.frame_count : SIM_FRAME_LOG;
    for (int i = 0; i < count; i++)
    {
        EXPECT_NE(0, strncmp(sim->station.frames[i].text + 5, "33", 2)) << sim->station.frames[i].text;
    }
    EXPECT_EQ(0, sim->station.outputs[0].relay[4] + sim->station.outputs[1].relay[2]) << "relay left on at exit";
}
