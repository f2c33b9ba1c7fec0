// The remote display and switches on the simulated station: both layouts
// cell by cell from the simulator's grid, what is sent when, and a held
// switch jogging its axis like the panel's arrow.
#include "sim_fixture.h"

#include "bus/remote_display.h"
#include "core/drive.h"
#include "core/settings.h"
#include "support/panel_record.h"

#include <string>
#include <vector>

// The grid's rows out of the simulator's JSON array.
static std::vector<std::string> rows_of(const std::string &json)
{
    std::vector<std::string> rows;
    for (size_t at = json.find('"'); at != std::string::npos; at = json.find('"', at + 1))
    {
        size_t end = json.find('"', at + 1);
        rows.push_back(json.substr(at + 1, end - at - 1));
        at = end;
    }
    return rows;
}

class RemoteDisplay : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        settings.TrackingSource = SOURCE_MOON;
        settings.Frequency = 1296.75;
        settings.DisplayEnabled = 1;
        source_az = 123.456;
        source_el = 7.5;
        az_position = 359.994;
        el_position = -1.25;
    }
    std::vector<std::string> grid(void)
    {
        return rows_of(control("display"));
    }
    // Display lines sent so far: nothing else talks on the bus here, and each
    // line is a request and its status byte.
    int display_frames(void)
    {
        return frames() / 2;
    }
};

TEST_F(RemoteDisplay, TypeZeroLaysOutTheAntennaAboveTheSource)
{
    remote_display_update();
    std::vector<std::string> g = grid();
    ASSERT_EQ(8u, g.size());
    const char *expected[8] = {"ANTENNA     1296", "AZ 359.99", "EL  -1.25", "", "", "MOON", "AZ 123.46",
                               "EL   7.50"};
    for (int y = 0; y < 8; y++)
    {
        EXPECT_EQ(expected[y], g[y].substr(0, strlen(expected[y]))) << "row " << y;
    }
    // "ANTENNA" goes as its seven letters and the zero; the name as twelve
    // columns and the zero.
    EXPECT_EQ(1, frames_seen("> F0 35 00 00 08 41 4E 54 45 4E 4E 41 00"));
    EXPECT_EQ(1, frames_seen("> F0 35 00 05 0D 4D 4F 4F 4E 20 20 20 20 20 20 20 20 00"));
    EXPECT_EQ(11, display_frames());

    // Unchanged lines stay unsent, but for the two source positions.
    remote_display_update();
    EXPECT_EQ(13, display_frames());
    az_changed = 1;
    source_changed = 1;
    remote_display_update();
    EXPECT_EQ(13 + 10, display_frames());
}

TEST_F(RemoteDisplay, TypeOneShowsTheSourceAloneAndOtherTypesSendNothing)
{
    settings.DisplayType = 1;
    settings.TrackingSource = SOURCE_SUN;
    remote_display_update();
    std::vector<std::string> g = grid();
    EXPECT_EQ("SUN         ", g[2].substr(0, 12));
    EXPECT_EQ("AZ 123.46 EL   7.50", g[3].substr(0, 19));
    EXPECT_EQ(3, display_frames());
    remote_display_update();
    EXPECT_EQ(5, display_frames());

    settings.DisplayType = 2;
    remote_display_update();
    settings.DisplayType = 0;
    settings.DisplayEnabled = 0;
    remote_display_update();
    EXPECT_EQ(5, display_frames());
}

TEST_F(RemoteDisplay, TheWholeScreenGoesAgainEveryThousandCallsEvenWhileDisabled)
{
    sim->instant = 1; // a thousand calls: the wire's time proves nothing here
    remote_display_update(); // the first call writes all
    settings.DisplayEnabled = 0;
    for (int i = 1; i < 500; i++)
    {
        remote_display_update();
    }
    EXPECT_EQ(11, display_frames());
    settings.DisplayEnabled = 1;
    for (int i = 500; i < 999; i++)
    {
        remote_display_update();
    }
    EXPECT_EQ(11 + 499 * 2, display_frames());
    EXPECT_EQ(999, display_pass_count);
    remote_display_update();
    EXPECT_EQ(0, display_pass_count);
    EXPECT_EQ(11 + 499 * 2 + 11, display_frames());
}

class RemoteSwitches : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        settings.RemoteSwitches = 1;
        settings.AzimuthGuardTime = 0;
        settings.ElevationGuardTime = 0;
        az_manual = el_manual = 1;
    }
    int relay(int address, int port)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.outputs[address].relay[port];
    }
    // One look at the switches; the relay writes wait for their replies, so
    // the simulator's boards are set when it returns.
    void scan(void)
    {
        remote_switch_group();
    }
};

TEST_F(RemoteSwitches, AHeldSwitchJogsItsAxisAndItsReleaseStopsIt)
{
    control("switch left pressed");
    scan();
    EXPECT_EQ(DIR_LEFT, az_direction);
    EXPECT_EQ(1, relay(0, DRIVE_PORT_LEFT));
    scan(); // still held: nothing new
    EXPECT_EQ(DIR_LEFT, az_direction);
    control("switch left released");
    scan();
    EXPECT_EQ(DIR_STOPPED, az_direction);
    EXPECT_EQ(0, relay(0, DRIVE_PORT_LEFT));
    EXPECT_EQ(DIR_STOPPED, remote_az_direction);

    control("switch down pressed");
    scan();
    EXPECT_EQ(DIR_DOWN, el_direction);
    EXPECT_EQ(1, relay(1, DRIVE_PORT_DOWN));
    control("switch down released");
    scan();
    EXPECT_EQ(DIR_STOPPED, el_direction);
    EXPECT_EQ(0, relay(1, DRIVE_PORT_DOWN));
}

TEST_F(RemoteSwitches, OppositeSwitchesNeverCloseBothRelaysAndLeftWins)
{
    control("switch right pressed");
    scan();
    EXPECT_EQ(DIR_RIGHT, az_direction);
    control("switch left pressed");
    scan(); // both held: left reverses the axis
    EXPECT_EQ(DIR_LEFT, az_direction);
    EXPECT_EQ(1, relay(0, DRIVE_PORT_LEFT));
    EXPECT_EQ(0, relay(0, DRIVE_PORT_RIGHT));
    for (int i = 0; i < 3; i++)
    {
        scan();
        EXPECT_EQ(1, relay(0, DRIVE_PORT_LEFT) + relay(0, DRIVE_PORT_RIGHT));
    }
    control("switch left released");
    control("switch right released");
    scan();
    EXPECT_EQ(0, relay(0, DRIVE_PORT_LEFT) + relay(0, DRIVE_PORT_RIGHT));

    control("switch up pressed");
    control("switch down pressed");
    scan();
    EXPECT_EQ(DIR_UP, el_direction);
    EXPECT_EQ(0, relay(1, DRIVE_PORT_DOWN));
}

TEST_F(RemoteSwitches, WithoutManualTheSwitchesDoNothingAndASilentDeviceIsSkipped)
{
    az_manual = 0;
    control("switch left pressed");
    scan();
    control("switch left released");
    scan();
    EXPECT_EQ(DIR_STOPPED, az_direction);
    EXPECT_EQ(0, frames_seen("> F0 32 03 01"));

    az_manual = 1;
    control("silent 0 on");
    control("switch left pressed");
    scan();
    EXPECT_EQ(DIR_STOPPED, az_direction);
}
