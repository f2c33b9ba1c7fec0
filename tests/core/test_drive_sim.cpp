// The drive against the station simulator: its frames in the simulator's
// log, and the simulated mount driven in closed loop, in simulated time.
#include "core/clock.h"
#include "core/drive.h"
#include "core/panel_slots.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "remote/easycomm.h"
#include "remote/rotctl.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

class DriveSimTest : public ::testing::Test
{
  protected:
    DriveSim sim;

    void SetUp() override
    {
        test_reset_state();
        drive_test_settings();
        drive_sim_start(&sim);
        settings.TrackingSource = SOURCE_USER_AZEL;
        SourceRecord &row = source_table[SOURCE_USER_AZEL];
        row.above_horizon = 1;
        row.az_tracking_enable = row.el_tracking_enable = 1;
    }
    void TearDown() override
    {
        drive_sim_stop();
    }
    // The mount at az/el, the User Az/El target at source_az/el, AUTO on.
    void track(double az, double el, double to_az, double to_el)
    {
        sim.station.mount.az = az;
        sim.station.mount.el = el;
        source_az = to_az;
        source_el = to_el;
        drive_auto_pressed();
    }
    // Simulated seconds: the bus's wire time makes some ticks longer.
    void run_seconds(double seconds)
    {
        for (int64_t until = sim.ms + (int64_t)(seconds * 1000); sim.ms < until;)
        {
            drive_sim_tick(&sim);
        }
    }
    // A relay left on, a PWM port left at a duty, on either board.
    int outputs_on()
    {
        int on = 0;
        for (int a : {settings.AZ_Addr, settings.EL_Addr})
        {
            for (int p = 1; p <= 4; p++)
            {
                on += sim.station.outputs[a].relay[p] != 0;
            }
        }
        return on;
    }
};

TEST_F(DriveSimTest, SettlesInsideTheHysteresisFromThreeStartsWithoutHunting)
{
    // Far below and left, far above and right, and a few degrees off: with the
    // default parameters each axis gets there in one move, fast then slow.
    struct
    {
        double az, el;
    } starts[] = {{10, 5}, {350, 85}, {197.5, 31.5}};
    for (auto s : starts)
    {
        SCOPED_TRACE(testing::Message() << "from " << s.az << "/" << s.el);
        drive_sim_stop();
        SetUp();
        track(s.az, s.el, 200, 30);
        run_seconds(300);
        EXPECT_LE(std::fabs(sim.station.mount.az - 200), 0.3);
        EXPECT_LE(std::fabs(sim.station.mount.el - 30), 0.3);
        EXPECT_EQ(sim.az_starts, 1);
        EXPECT_EQ(sim.el_starts, 1);
        EXPECT_EQ(outputs_on(), 0);

        // A quarter of an hour more: settled means no further start.
        run_seconds(900);
        EXPECT_EQ(sim.az_starts + sim.el_starts, 2);
        EXPECT_EQ(auto_tracking, 1);
    }
}

TEST_F(DriveSimTest, FailedReadHoldsOneAxisWhileTheOtherTracks)
{
    track(100, 10, 200, 60);
    run_seconds(5);
    sim.az_read_fails = 1;
    double held = sim.station.mount.az;
    run_seconds(20);
    // One position cycle at top speed, then the mount's run-down.
    EXPECT_NEAR(sim.station.mount.az, held, 0.2 + 0.3 + 0.05) << "stopped at the first failed cycle";
    EXPECT_EQ(auto_tracking, 1);
    EXPECT_NEAR(sim.station.mount.el, 35, 1.0) << "elevation went on at full speed";
    sim.az_read_fails = 0;
    run_seconds(120);
    EXPECT_NEAR(sim.station.mount.az, 200, 0.3) << "azimuth resumes by itself";
    EXPECT_NEAR(sim.station.mount.el, 60, 0.3);
}

TEST_F(DriveSimTest, SourceBelowTheHorizonHoldsTheMountUntilItRises)
{
    track(100, 10, 120, 30);
    run_seconds(3);
    source_table[SOURCE_USER_AZEL].above_horizon = 0;
    run_seconds(3); // the stop and the run-down
    double az = sim.station.mount.az, el = sim.station.mount.el;
    run_seconds(30);
    EXPECT_EQ(sim.station.mount.az, az);
    EXPECT_EQ(sim.station.mount.el, el);
    EXPECT_EQ(outputs_on(), 0);
    source_table[SOURCE_USER_AZEL].above_horizon = 1;
    run_seconds(60);
    EXPECT_NEAR(sim.station.mount.az, 120, 0.3);
    EXPECT_NEAR(sim.station.mount.el, 30, 0.3);
}

// The watchdog against the simulator's stuck encoders and a mirrored one: the
// axis stops after the watchdog time (or a few degrees of running away), the
// status bar says which, STOP turns red and AUTO stays off until pressed.
TEST_F(DriveSimTest, WatchdogStopsAStalledOrRunawayAxisAndEndsAuto)
{
    struct
    {
        int axis, manual, mirrored, enabled;
        double trip_after_s; // from the fault; 0: never
        const char *status;
        const char *why;
    } rows[] = {
        {SIM_AXIS_AZ, 0, 0, 1, 5.0, "Azimuth stalled", "azimuth encoder sticks in AUTO"},
        {SIM_AXIS_EL, 1, 0, 1, 5.0, "Elevation stalled", "elevation encoder sticks in a manual move"},
        {SIM_AXIS_AZ, 0, 1, 1, 2.0, "Azimuth stalled", "a mirrored encoder drives the mount away"},
        {SIM_AXIS_AZ, 0, 0, 0, 0, "", "switched off, a stuck encoder is not noticed"},
    };
    for (auto r : rows)
    {
        SCOPED_TRACE(r.why);
        drive_sim_stop();
        SetUp();
        settings.StallWatchdogEnable = (uint8_t)r.enabled;
        settings.StallWatchdogTime = 5.0;
        int board = r.axis == SIM_AXIS_AZ ? settings.AZ_Addr : settings.EL_Addr;
        int first = r.axis == SIM_AXIS_AZ ? 3 : 1;
        auto running = [&]
        { return sim.station.outputs[board].relay[first] + sim.station.outputs[board].relay[first + 1]; };
        sim.az_mirrored = r.mirrored;
        track(100, 10, 200, 60);
        if (r.manual)
        {
            drive_el_manual_pressed();
            drive_up_pressed();
        }
        run_seconds(0.1);
        if (!r.mirrored)
        {
            // The encoder sticks once the axis is well under way.
            run_seconds(2);
            sim_stall(&sim.station, r.axis, 1);
        }
        ASSERT_TRUE(running());
        double before = r.trip_after_s ? r.trip_after_s - 0.5 : 10.0;
        run_seconds(before);
        EXPECT_TRUE(running()) << "still running " << before << " s on";
        EXPECT_STREQ(panel_last_status, "");
        if (!r.trip_after_s)
        {
            continue;
        }
        // The watchdog counts ticks, which the bus's wire time stretches.
        run_seconds(1.5);
        EXPECT_FALSE(running());
        EXPECT_EQ(outputs_on(), 0) << "AUTO's other axis stops with it";
        EXPECT_STREQ(panel_last_status, r.status);
        EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_DARKRED);
        EXPECT_EQ(auto_tracking, 0);
        run_seconds(20);
        EXPECT_EQ(outputs_on(), 0) << "nothing starts by itself";
        drive_auto_pressed();
        EXPECT_EQ(panel_last_style[PANEL_STOP], STYLE_GRAY);
        run_seconds(0.2);
        EXPECT_GT(outputs_on(), 0) << "AUTO pressed again tracks again";
    }
}

// A station's worth of buttons and remote commands in random order, on axes
// that are relay-only, PWM or braked, checked after every action and every
// tick: an axis never has both directions closed, and an axis the program
// holds to be stopped has both relays open.
class DriveRelayProperty : public DriveSimTest
{
  protected:
    // The nine buttons first, in the order of act()'s table.
    static constexpr const char *action_names[] = {"AUTO", "PARK", "STOP", "AzMAN", "ElMAN",    "left",   "right", "up",
                                                   "down", "jog",  "SA",   "SE",    "rotctl-S", "source", "target"};
    static constexpr int action_count = (int)(sizeof action_names / sizeof action_names[0]);
    std::mt19937 random;

    int pick(int n)
    {
        return std::uniform_int_distribution<int>(0, n - 1)(random);
    }
    double angle(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    void station(unsigned seed)
    {
        random.seed(seed);
        rotctl_debug = 0;
        settings.AzimuthPwmActive = pick(2);
        settings.ElevationPwmActive = pick(2);
        settings.az_brake_enabled = pick(3) == 0;
        settings.el_brake_enabled = pick(3) == 0;
        settings.AzimuthPwmActive &= !settings.az_brake_enabled;
        settings.ElevationPwmActive &= !settings.el_brake_enabled;
        settings.az_brake_delay = settings.el_brake_delay = 300;
        settings.AzimuthGuardTime = settings.ElevationGuardTime = 0.5 * (1 + pick(4));
        sim.station.mount.az_pwm = (uint8_t)settings.AzimuthPwmActive;
        sim.station.mount.el_pwm = (uint8_t)settings.ElevationPwmActive;
        sim.station.mount.az = angle(20, 340);
        sim.station.mount.el = angle(5, 85);
    }
    // A new target through the selected source, as its own link brings it.
    void new_target()
    {
        char text[48];
        double az = angle(5, 355), el = angle(2, 88);
        switch (settings.TrackingSource)
        {
        case SOURCE_GPREDICT:
            snprintf(text, sizeof text, "P %.2f %.2f\n", az, el);
            rotctl_command_text(text);
            break;
        case SOURCE_EASYCOMM:
            snprintf(text, sizeof text, "AZ%.1f", az);
            easycomm_word(text);
            snprintf(text, sizeof text, "EL%.1f", el);
            easycomm_word(text);
            break;
        default:
            source_table[SOURCE_USER_AZEL].az = az;
            source_table[SOURCE_USER_AZEL].el = el;
            break;
        }
    }
    static void rotctl_command_text(const char *request)
    {
        char reply[64];
        rotctl_handle(request, (int)strlen(request), reply, sizeof reply);
    }
    static void easycomm_word(const char *word)
    {
        text_copy(easycomm.command, sizeof easycomm.command, word);
        easycomm_apply(easycomm_parse(&easycomm, easycomm.command));
    }
    void act(int action)
    {
        static const int sources[3] = {SOURCE_USER_AZEL, SOURCE_GPREDICT, SOURCE_EASYCOMM};
        static void (*const buttons[])(void) = {
            drive_auto_pressed,      drive_park_pressed,      drive_stop_pressed,
            drive_az_manual_pressed, drive_el_manual_pressed, drive_left_pressed,
            drive_right_pressed,     drive_up_pressed,        drive_down_pressed,
        };
        const int button_count = (int)(sizeof buttons / sizeof buttons[0]);
        if (action < button_count)
        {
            buttons[action]();
            return;
        }
        switch (action - button_count)
        {
        case 0:
            settings.AzimuthJogEnable = !settings.AzimuthJogEnable;
            settings.ElevationJogEnable = (uint8_t)pick(2);
            break;
        case 1:
            easycomm_word("SA");
            break;
        case 2:
            easycomm_word("SE");
            break;
        case 3:
            rotctl_command_text("S\n");
            break;
        case 4:
            settings.TrackingSource = sources[pick(3)];
            panel_setup_tracking_source();
            break;
        default:
            new_target();
            break;
        }
    }
    // The row of the selected source reaches the drive's target, as the
    // display group hands it over.
    void hand_over()
    {
        source_az = source_table[settings.TrackingSource].az;
        source_el = source_table[settings.TrackingSource].el;
        source_table[SOURCE_USER_AZEL].above_horizon = 1;
        source_table[SOURCE_USER_AZEL].az_tracking_enable = source_table[SOURCE_USER_AZEL].el_tracking_enable = 1;
        source_table[SOURCE_GPREDICT].above_horizon = source_table[SOURCE_EASYCOMM].above_horizon = 1;
    }
    void check_axis(const char *name, int address, int low_port, int high_port, int direction, int drive_on,
                    const std::string &trail)
    {
        const uint8_t *relay = sim.station.outputs[address].relay;
        ASSERT_FALSE(relay[low_port] && relay[high_port]) << name << ": both directions closed after " << trail;
        if (direction == DIR_STOPPED || !drive_on)
        {
            ASSERT_FALSE(relay[low_port] || relay[high_port])
                << name << " held stopped with a relay closed after " << trail;
        }
        else
        {
            ASSERT_TRUE(relay[direction == DIR_LEFT ? low_port : high_port])
                << name << " held running with its relay open after " << trail;
        }
    }
    void check(const std::string &trail)
    {
        check_axis("azimuth", settings.AZ_Addr, 3, 4, az_direction, az_drive_on, trail);
        check_axis("elevation", settings.EL_Addr, 1, 2, el_direction, el_drive_on, trail);
    }
};

TEST_F(DriveRelayProperty, NoRelayLeftClosedWhateverTheOrderOfCommands)
{
    const int actions = action_count;
    for (unsigned seed = 1; seed <= 40; seed++)
    {
        drive_sim_stop();
        SetUp();
        station(seed);
        std::string trail = "seed " + std::to_string(seed) + ":";
        for (int n = 0; n < 120 && !HasFatalFailure(); n++)
        {
            int action = pick(actions + 3);
            if (action >= actions)
            {
                // Time passes: a few drive steps, or long enough to arrive.
                int ticks = action == actions ? 2 : pick(2) ? 1 + pick(20) : 200;
                trail += " run" + std::to_string(ticks);
                for (int t = 0; t < ticks && !HasFatalFailure(); t++)
                {
                    hand_over();
                    drive_sim_tick(&sim);
                    check(trail);
                }
                continue;
            }
            trail += std::string(" ") + action_names[action];
            act(action);
            hand_over();
            check(trail);
        }
    }
}

// Quiet motion on the hardware-like mount: a 30 degree slew, then the
// target's drift at the Moon's pace. A motor starts only in the window before
// the minute, a move still running when the minute turns stops there, and
// through the period every relay stays open.
TEST_F(DriveSimTest, QuietMotionStartsOnlyInTheWindowAndStopsAtTheMinute)
{
    settings.QuietMotion = 1;
    settings.QuietWindowStart = 50;
    sim.utc_start = 1710000000 - 1710000000 % 60 + 7;
    track(170, 30, 200, 40);
    int starts = 0, starts_outside = 0, on_in_period = 0, cut_at_minute = 0, running_at_59 = 0;
    double az_short_after_first_window = 0;
    while (sim.ms < 12 * 60 * 1000)
    {
        // A quarter of a degree a minute on both axes.
        source_az = 200 + sim.ms / 240000.0;
        source_el = 40 + sim.ms / 240000.0;
        drive_sim_tick(&sim);
        int second = (int)(clock_utc() % 60);
        int now = sim.az_starts + sim.el_starts;
        starts_outside += now > starts && second < 50;
        starts = now;
        on_in_period += second >= 1 && second < 50 && outputs_on() > 0;
        if (second == 59)
        {
            running_at_59 = outputs_on() > 0;
        }
        if (second == 1 && running_at_59)
        {
            cut_at_minute++;
            running_at_59 = 0;
            if (az_short_after_first_window == 0)
            {
                az_short_after_first_window = source_az - sim.station.mount.az;
            }
        }
    }
    EXPECT_EQ(starts_outside, 0);
    EXPECT_EQ(on_in_period, 0) << "ticks with a relay closed between second 1 and 49";
    EXPECT_GE(cut_at_minute, 1) << "the slew outlasts one window";
    EXPECT_GT(az_short_after_first_window, 5) << "the first window's move was cut short";
    EXPECT_GE(sim.az_starts, 3) << "the slew in two windows, then the drift";
    EXPECT_LE(std::fabs(source_az - sim.station.mount.az), 1.3);
    EXPECT_LE(std::fabs(source_el - sim.station.mount.el), 1.3);
    EXPECT_EQ(auto_tracking, 1);
}
