#include "core/drive.h"

#include "bus/sei_commands.h"
#include "core/clock.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/quiet_motion.h"
#include "core/state.h"
#include "core/watchdog.h"

#include <cmath>

static DriveBus drive_bus = {sei_relay_control, sei_pwm_control};

void drive_set_bus(const DriveBus *bus)
{
    drive_bus.relay = bus && bus->relay ? bus->relay : sei_relay_control;
    drive_bus.pwm = bus && bus->pwm ? bus->pwm : sei_pwm_control;
}

// An axis without a device has address -1. Its frames are not sent at all:
// the low byte 255 would reach the bus as address 15, the broadcast.
static int drive_address_valid(int address)
{
    return address >= 0 && address < SEI_BROADCAST;
}

static void drive_relay(int address, int port, int state)
{
    uint8_t status;
    if (drive_address_valid(address))
    {
        drive_bus.relay(address, (uint8_t)port, (uint8_t)state, &status);
    }
}

static void drive_pwm(int address, int port, int duty)
{
    uint8_t status;
    if (drive_address_valid(address))
    {
        drive_bus.pwm(address, (uint8_t)port, (uint8_t)duty, &status);
    }
}

// One way an axis turns: the direction value it sets, the relay and PWM
// port that drive it, and its arrow on the panel.
struct DriveMotion
{
    int direction;
    int port;
    int arrow;
};

// One axis as the drive sees it. Azimuth and elevation run the same code;
// they differ only in what is filled in here. The one asymmetry worth a look:
// a positive error increases the angle, which is azimuth right (direction
// value 3) but elevation up (direction value 2).
struct DriveAxis
{
    const char *stalled_text;
    DriveMotion increasing; // what a positive error asks for
    DriveMotion decreasing;
    const int32_t *address;

    int32_t *direction;
    int32_t *drive_on;
    int32_t *speed_mode;
    int32_t *jog_shade;
    int32_t *guard_ms;
    int32_t *duty;
    int32_t *pwm_port_state;
    int32_t *pwm_active;
    double *error;
    double *start_error;
    const uint8_t *manual;
    const double *position;
    const int32_t *read_status;
    AxisWatch *watch;

    const int32_t *pwm_enabled;
    const int32_t *brake_enabled;
    const int32_t *brake_delay_ms;
    const double *start_threshold;
    const double *stop_threshold;
    const double *slow_degrees;
    const double *slow_duty;
    const double *fast_duty;
    const double *manual_duty;
    const double *guard_time_s;
    const uint8_t *jog_enable;
    const int32_t *jog_time_ms;
};

static const DriveAxis azimuth = {
    .stalled_text = "Azimuth stalled",
    .increasing = {.direction = DIR_RIGHT, .port = DRIVE_PORT_RIGHT, .arrow = PANEL_RIGHT},
    .decreasing = {.direction = DIR_LEFT, .port = DRIVE_PORT_LEFT, .arrow = PANEL_LEFT},
    .address = &settings.AZ_Addr,
    .direction = &az_direction,
    .drive_on = &az_drive_on,
    .speed_mode = &az_speed_mode,
    .jog_shade = &az_jog_shade,
    .guard_ms = &az_guard_ms,
    .duty = &az_duty,
    .pwm_port_state = &az_pwm_port_state,
    .pwm_active = &az_pwm_active,
    .error = &az_error,
    .start_error = &az_start_error,
    .manual = &az_manual,
    .position = &az_position,
    .read_status = &az_read_status,
    .watch = &az_watch,
    .pwm_enabled = &settings.AzimuthPwmActive,
    .brake_enabled = &settings.az_brake_enabled,
    .brake_delay_ms = &settings.az_brake_delay,
    .start_threshold = &settings.Azimuth_Start,
    .stop_threshold = &settings.Azimuth_Stop,
    .slow_degrees = &settings.AzimuthSlowDegrees,
    .slow_duty = &settings.AzimuthSlowDutyCycle,
    .fast_duty = &settings.AzimuthFastDutyCycle,
    .manual_duty = &settings.AzimuthManualDutyCycle,
    .guard_time_s = &settings.AzimuthGuardTime,
    .jog_enable = &settings.AzimuthJogEnable,
    .jog_time_ms = &settings.AzimuthJogTime,
};

static const DriveAxis elevation = {
    .stalled_text = "Elevation stalled",
    .increasing = {.direction = DIR_UP, .port = DRIVE_PORT_UP, .arrow = PANEL_UP},
    .decreasing = {.direction = DIR_DOWN, .port = DRIVE_PORT_DOWN, .arrow = PANEL_DOWN},
    .address = &settings.EL_Addr,
    .direction = &el_direction,
    .drive_on = &el_drive_on,
    .speed_mode = &el_speed_mode,
    .jog_shade = &el_jog_shade,
    .guard_ms = &el_guard_ms,
    .duty = &el_duty,
    .pwm_port_state = &el_pwm_port_state,
    .pwm_active = &el_pwm_active,
    .error = &el_error,
    .start_error = &el_start_error,
    .manual = &el_manual,
    .position = &el_position,
    .read_status = &el_read_status,
    .watch = &el_watch,
    .pwm_enabled = &settings.ElevationPwmActive,
    .brake_enabled = &settings.el_brake_enabled,
    .brake_delay_ms = &settings.el_brake_delay,
    .start_threshold = &settings.Elevation_Start,
    .stop_threshold = &settings.Elevation_Stop,
    .slow_degrees = &settings.ElevationSlowDegrees,
    .slow_duty = &settings.ElevationSlowDutyCycle,
    .fast_duty = &settings.ElevationFastDutyCycle,
    .manual_duty = &settings.ElevationManualDutyCycle,
    .guard_time_s = &settings.ElevationGuardTime,
    .jog_enable = &settings.ElevationJogEnable,
    .jog_time_ms = &settings.ElevationJogTime,
};

static const DriveMotion *motion_with_direction(const DriveAxis *a, int direction)
{
    return a->increasing.direction == direction ? &a->increasing : &a->decreasing;
}

static const DriveMotion *motion_opposite(const DriveAxis *a, const DriveMotion *m)
{
    return m == &a->increasing ? &a->decreasing : &a->increasing;
}

// Each relay port keeps its own state, and off goes to the port that is on:
// with one flag for the axis, the off of the direction that was not running
// used to clear it and leave the running relay closed.
static void relay_switch(const DriveAxis *a, const DriveMotion *m, int on)
{
    if (on)
    {
        drive_relay(*a->address, m->port, 1);
        drive_relay_closings[m->port] += !drive_relay_on[m->port];
        drive_relay_switchings[m->port] += !drive_relay_on[m->port];
        drive_relay_on[m->port] = 1;
    }
    else if (drive_relay_on[m->port])
    {
        drive_relay(*a->address, m->port, 0);
        drive_relay_switchings[m->port]++;
        drive_relay_on[m->port] = 0;
    }
    *a->drive_on = drive_relay_on[a->increasing.port] || drive_relay_on[a->decreasing.port];
}

void relay_az_left(int on)
{
    relay_switch(&azimuth, &azimuth.decreasing, on);
}

void relay_az_right(int on)
{
    relay_switch(&azimuth, &azimuth.increasing, on);
}

void relay_el_up(int on)
{
    relay_switch(&elevation, &elevation.increasing, on);
}

void relay_el_down(int on)
{
    relay_switch(&elevation, &elevation.decreasing, on);
}

static void pwm_switch(const DriveAxis *a, const DriveMotion *m, int on)
{
    drive_pwm(*a->address, m->port, on ? *a->duty : 0);
    *a->pwm_port_state = on ? m->direction : 1;
    *a->pwm_active = on ? 1 : 0;
}

void pwm_az_left(int on)
{
    pwm_switch(&azimuth, &azimuth.decreasing, on);
}

void pwm_az_right(int on)
{
    pwm_switch(&azimuth, &azimuth.increasing, on);
}

void pwm_el_up(int on)
{
    pwm_switch(&elevation, &elevation.increasing, on);
}

void pwm_el_down(int on)
{
    pwm_switch(&elevation, &elevation.decreasing, on);
}

// Whatever the flags say: this is the switch-off of last resort, at STOP and
// at shutdown, when a flag may no longer match the device.
void all_relays_off(void)
{
    az_drive_on = 0;
    el_drive_on = 0;
    for (int port = DRIVE_PORT_UP; port <= DRIVE_PORT_RIGHT; port++)
    {
        drive_relay_switchings[port] += drive_relay_on[port];
        drive_relay_on[port] = 0;
    }
    drive_relay(settings.EL_Addr, DRIVE_PORT_UP, 0);
    drive_relay(settings.EL_Addr, DRIVE_PORT_DOWN, 0);
    drive_relay(settings.AZ_Addr, DRIVE_PORT_LEFT, 0);
    drive_relay(settings.AZ_Addr, DRIVE_PORT_RIGHT, 0);
}

void all_pwm_off(void)
{
    drive_pwm(settings.EL_Addr, DRIVE_PORT_UP, 0);
    drive_pwm(settings.EL_Addr, DRIVE_PORT_DOWN, 0);
    drive_pwm(settings.AZ_Addr, DRIVE_PORT_LEFT, 0);
    drive_pwm(settings.AZ_Addr, DRIVE_PORT_RIGHT, 0);
    az_pwm_port_state = el_pwm_port_state = 1;
    az_pwm_active = el_pwm_active = 0;
}

static void axis_set_duty(const DriveAxis *a, double percent)
{
    // Cut toward zero, so 24.9 and 24.0 are one duty and a steady move costs
    // no traffic.
    int whole = (int)percent;
    if (whole == *a->duty)
    {
        return;
    }
    *a->duty = whole;
    if (*a->pwm_port_state != 1)
    {
        drive_pwm(*a->address, motion_with_direction(a, *a->pwm_port_state)->port, whole);
        return;
    }
    drive_pwm(*a->address, motion_with_direction(a, DIR_LEFT)->port, 0);
    drive_pwm(*a->address, motion_with_direction(a, DIR_RIGHT)->port, 0);
}

void set_az_duty_cycle(double percent)
{
    axis_set_duty(&azimuth, percent);
}

void set_el_duty_cycle(double percent)
{
    axis_set_duty(&elevation, percent);
}

void brake_output(int) {}

static void motion_off(const DriveAxis *a, const DriveMotion *m)
{
    relay_switch(a, m, 0);
    if (*a->direction != DIR_STOPPED && *a->direction != m->direction)
    {
        // The other way runs: its own off stops it, brake and all. This
        // port's zero duty still goes out, but the axis's PWM state is the
        // running port's.
        if (*a->pwm_enabled)
        {
            drive_pwm(*a->address, m->port, 0);
        }
        return;
    }
    if (*a->brake_enabled && *a->direction != DIR_STOPPED)
    {
        sys_sleep_ms(*a->brake_delay_ms);
        brake_output(0);
        brake_output(0);
    }
    if (*a->pwm_enabled)
    {
        pwm_switch(a, m, 0);
    }
    *a->direction = DIR_STOPPED;
    panel_style(m->arrow, STYLE_GRAY);
}

// A start releases the brake before the motor runs, and with PWM sets the
// duty before the relay closes; a stop opens the relay first, lets the motor
// run down for the brake delay, and only then engages the brake. Like a
// reversing contactor, a start first stops the other way.
static void motion(const DriveAxis *a, const DriveMotion *m, int on)
{
    if (!on)
    {
        motion_off(a, m);
        return;
    }
    if (*a->direction == m->direction)
    {
        return;
    }
    if (*a->direction != DIR_STOPPED)
    {
        motion_off(a, motion_opposite(a, m));
    }
    *a->direction = m->direction;
    panel_style(m->arrow, STYLE_DARKRED);
    if (*a->brake_enabled)
    {
        brake_output(1);
        brake_output(1);
        sys_sleep_ms(100);
    }
    if (*a->pwm_enabled)
    {
        pwm_switch(a, m, 1);
    }
    relay_switch(a, m, 1);
}

void az_left(int on)
{
    motion(&azimuth, &azimuth.decreasing, on);
}

void az_right(int on)
{
    motion(&azimuth, &azimuth.increasing, on);
}

void el_up(int on)
{
    motion(&elevation, &elevation.increasing, on);
}

void el_down(int on)
{
    motion(&elevation, &elevation.decreasing, on);
}

static void all_motions_off(void)
{
    el_up(0);
    el_down(0);
    az_left(0);
    az_right(0);
}

void stop_all(int on)
{
    if (!on)
    {
        panel_style(PANEL_STOP, STYLE_GRAY);
        return;
    }
    all_relays_off();
    if (settings.AzimuthPwmActive || settings.ElevationPwmActive)
    {
        all_pwm_off();
    }
    panel_style(PANEL_STOP, STYLE_DARKRED);
    all_motions_off();
    panel_style(PANEL_AUTO, STYLE_GRAY);
    panel_style(PANEL_PARK, STYLE_GRAY);
    auto_tracking = 0;
    park_active = 0;
}

void park_control(int on)
{
    if (on)
    {
        auto_tracking = 0;
        panel_style(PANEL_AUTO, STYLE_GRAY);
        all_motions_off();
        park_active = 1;
        panel_style(PANEL_PARK, STYLE_DARKRED);
        return;
    }
    park_active = 0;
    panel_style(PANEL_PARK, STYLE_GRAY);
    stop_all(1);
    panel_style(PANEL_AUTO, STYLE_GRAY);
    auto_tracking = 0;
    // Half a second of red STOP tells the operator that PARK ended by itself.
    sys_sleep_ms(500);
    panel_style(PANEL_STOP, STYLE_GRAY);
}

static double axis_travel_sign(const DriveAxis *a)
{
    if (*a->drive_on != 1)
    {
        return 0;
    }
    return *a->direction == a->increasing.direction ? 1 : -1;
}

int drive_source_needs_home(int source)
{
    return source != SOURCE_USER_AZEL && source != SOURCE_EASYCOMM && source != SOURCE_GPREDICT &&
           source != SOURCE_PSTROTATOR;
}

void drive_auto_pressed(void)
{
    if (auto_tracking)
    {
        stop_all(1);
        panel_style(PANEL_STOP, STYLE_GRAY);
        panel_style(PANEL_AUTO, STYLE_GRAY);
        auto_tracking = 0;
        return;
    }
    // This station's own rule: a computed source without a home station is
    // worked out for 0 N 0 E, and AUTO would drive the dish there.
    if (drive_source_needs_home(settings.TrackingSource) && !settings.Grid[0])
    {
        panel_status("Set the home station first", 0);
        return;
    }
    park_active = 0;
    panel_style(PANEL_STOP, STYLE_GRAY);
    panel_style(PANEL_PARK, STYLE_GRAY);
    auto_tracking = 1;
    panel_style(PANEL_AUTO, STYLE_DARKGREEN);
    // A fresh start has no direction of travel yet, so no overshoot to judge.
    // An axis still running PARK's move has one: a target the other way
    // stops it at the next step, instead of letting it run on to its limit.
    az_start_error = axis_travel_sign(&azimuth);
    el_start_error = axis_travel_sign(&elevation);
}

void drive_park_pressed(void)
{
    park_control(!park_active);
}

void drive_stop_pressed(void)
{
    stop_all(1);
    panel_style(PANEL_AUTO, STYLE_GRAY);
    panel_style(PANEL_PARK, STYLE_GRAY);
    sys_sleep_ms(500);
    panel_style(PANEL_STOP, STYLE_GRAY);
}

void drive_az_manual_pressed(void)
{
    az_manual = !az_manual;
    az_left(0);
    az_right(0);
    panel_update_display();
}

void drive_el_manual_pressed(void)
{
    el_manual = !el_manual;
    el_up(0);
    el_down(0);
    panel_update_display();
}

// One arrow of one axis in MAN: a press starts, a second press stops, and the
// other arrow's press reverses.
static void arrow_press(const DriveAxis *a, const DriveMotion *m, int manual)
{
    if (!manual)
    {
        return;
    }
    *a->speed_mode = SPEED_MANUAL;
    axis_set_duty(a, *a->manual_duty);
    if (*a->direction == DIR_STOPPED)
    {
        motion(a, m, 1);
    }
    else if (*a->direction == m->direction)
    {
        motion(a, m, 0);
    }
    else
    {
        // A reversal waits the whole seconds of the guard time, so the
        // gearbox is not thrown from one direction into the other.
        motion(a, motion_opposite(a, m), 0);
        sys_sleep_ms((int)*a->guard_time_s * 1000);
        motion(a, m, 1);
    }
}

void drive_left_pressed(void)
{
    arrow_press(&azimuth, &azimuth.decreasing, az_manual);
}

void drive_right_pressed(void)
{
    arrow_press(&azimuth, &azimuth.increasing, az_manual);
}

void drive_up_pressed(void)
{
    arrow_press(&elevation, &elevation.increasing, el_manual);
}

void drive_down_pressed(void)
{
    arrow_press(&elevation, &elevation.decreasing, el_manual);
}

// The one stop of an axis, for the stepping rules, a limit, a failed read
// and the end of a jog pulse: the increasing motion's off when that runs,
// else the decreasing one's. An idle axis so repeats the decreasing off,
// which on a PWM axis sends that port a zero duty again.
static const DriveMotion *axis_stop(const DriveAxis *a)
{
    const DriveMotion *m = *a->direction == a->increasing.direction ? &a->increasing : &a->decreasing;
    motion_off(a, m);
    return m;
}

static void axis_start(const DriveAxis *a, double error)
{
    motion(a, error > 0 ? &a->increasing : &a->decreasing, 1);
}

static void axis_stop_with_guard(const DriveAxis *a)
{
    axis_stop(a);
    *a->guard_ms = (int)(*a->guard_time_s * 1000);
}

static void axis_speed(const DriveAxis *a, int mode, double duty)
{
    if (*a->speed_mode != mode)
    {
        axis_set_duty(a, duty);
        *a->speed_mode = mode;
    }
}

// The jog pulse: full duty for the jog time, then the motor stops, and the
// arrow of the way it ran stays lit so the operator sees the pulses. No
// guard follows: the next cycle may pulse again until the error is inside
// the start threshold.
static void axis_jog_pulse(const DriveAxis *a)
{
    axis_speed(a, SPEED_JOG, 100.0);
    sys_sleep_ms(*a->jog_time_ms);
    const DriveMotion *ran = axis_stop(a);
    panel_style(ran->arrow, STYLE_DARKRED);
    *a->jog_shade = ran->direction;
}

static void axis_start_at_speed(const DriveAxis *a, double error)
{
    double size = fabs(error);
    if (size > *a->slow_degrees)
    {
        *a->speed_mode = SPEED_FAST;
        axis_set_duty(a, *a->fast_duty);
    }
    else if (*a->jog_enable)
    {
        *a->speed_mode = SPEED_JOG;
        axis_set_duty(a, 100.0);
    }
    else
    {
        *a->speed_mode = SPEED_SLOW;
        axis_set_duty(a, *a->slow_duty);
    }
    axis_start(a, error);
    *a->start_error = error;
}

static void axis_step(const DriveAxis *a)
{
    double error = *a->error;
    double size = fabs(error);
    if (*a->drive_on == 1)
    {
        if (size <= *a->stop_threshold)
        {
            axis_stop_with_guard(a);
        }
        // A narrow beam and a fast motor overshoot; the guard time keeps the
        // antenna from hunting back at once.
        if ((*a->start_error > 0 && error < 0) || (*a->start_error < 0 && error > 0))
        {
            axis_stop_with_guard(a);
        }
    }
    else if (*a->guard_ms == 0 && size >= *a->start_threshold)
    {
        axis_start_at_speed(a, error);
    }

    if (*a->drive_on == 1)
    {
        if (size > *a->slow_degrees)
        {
            axis_speed(a, SPEED_FAST, *a->fast_duty);
        }
        else if (*a->jog_enable)
        {
            axis_jog_pulse(a);
        }
        else
        {
            axis_speed(a, SPEED_SLOW, *a->slow_duty);
        }
    }
    else if (*a->jog_shade != 1)
    {
        // The arrow stays lit after a pulse until a step that starts nothing.
        panel_style(a->decreasing.arrow, STYLE_GRAY);
        panel_style(a->increasing.arrow, STYLE_GRAY);
        *a->jog_shade = 1;
    }
}

// A stalled or runaway axis stops at once and tracking ends, with STOP red
// and the reason on the status bar, until the operator presses AUTO again.
// The other axis stops too when AUTO or PARK was driving it, since nothing
// would stop it once they are off; a manual move of it is the operator's.
static void axis_stalled(const DriveAxis *a, const DriveAxis *other)
{
    axis_stop(a);
    if ((auto_tracking || park_active) && !*other->manual)
    {
        axis_stop(other);
    }
    auto_tracking = 0;
    park_active = 0;
    panel_style(PANEL_AUTO, STYLE_GRAY);
    panel_style(PANEL_PARK, STYLE_GRAY);
    panel_style(PANEL_STOP, STYLE_DARKRED);
    panel_status(a->stalled_text, 0);
}

static void axis_watch(const DriveAxis *a, const DriveAxis *other)
{
    if (!settings.StallWatchdogEnable)
    {
        watch_reset(a->watch);
        return;
    }
    // A failed read says nothing about the motion; the read error has its
    // own message, and the motor's time goes on counting.
    if (*a->read_status != 0)
    {
        return;
    }
    // This station's rule: a time under a second counts as one, since a
    // motor starting from rest may not move the reading in less.
    int limit_ms = (int)(settings.StallWatchdogTime * 1000);
    limit_ms = limit_ms < 1000 ? 1000 : limit_ms;
    int sign = !*a->drive_on ? 0 : *a->direction == a->increasing.direction ? 1 : -1;
    if (watch_step(a->watch, sign, *a->position, limit_ms))
    {
        axis_stalled(a, other);
    }
}

// The one shortcut through north: with limits that run through it (the
// southern station's 270..90), a source that has passed 0 going down while
// the antenna is still on the low side is reached by going left through 0.
static double az_tracking_error(int through_north)
{
    if (through_north && source_az >= settings.AzimuthLimitMin && az_position >= 0 &&
        az_position <= settings.AzimuthLimitMax)
    {
        return source_az - 360 - az_position;
    }
    return source_az - az_position;
}

static void drive_targets(const SourceRecord *row, int through_north, int az_ok, int el_ok)
{
    if (az_manual)
    {
        if (!az_ok && az_drive_on == 1)
        {
            axis_stop(&azimuth);
        }
    }
    else if (auto_tracking && row->above_horizon && row->az_tracking_enable && az_ok)
    {
        az_error = az_tracking_error(through_north);
    }

    if (el_manual)
    {
        if (!el_ok && el_drive_on == 1)
        {
            axis_stop(&elevation);
        }
    }
    else if (auto_tracking && row->above_horizon && row->el_tracking_enable && el_ok && source_el >= 0)
    {
        el_error = source_el - el_position;
    }

    if (park_active)
    {
        if (az_ok)
        {
            az_error = settings.Park_Azimuth - az_position;
        }
        if (el_ok)
        {
            el_error = settings.Park_Elevation - el_position;
        }
    }
}

void drive_step(int source, int through_north, int az_limit_hit, int el_limit_hit)
{
    axis_watch(&azimuth, &elevation);
    axis_watch(&elevation, &azimuth);
    int az_ok = az_read_status == 0 && !az_limit_hit;
    int el_ok = el_read_status == 0 && !el_limit_hit;

    if (!auto_tracking && !park_active)
    {
        if (!az_ok)
        {
            axis_stop(&azimuth);
        }
        if (!el_ok)
        {
            axis_stop(&elevation);
        }
        return;
    }

    // Every reason not to track leaves an error of 0, and an error of 0 stops
    // a running motor through the stop rule.
    az_error = 0;
    el_error = 0;
    drive_targets(source_row(source), through_north, az_ok, el_ok);
    // Quiet motion is one more such reason, outside the window before the
    // minute: nothing starts, and a move still running at the minute stops.
    if (auto_tracking && settings.QuietMotion)
    {
        int second = (int)(clock_utc() % 60);
        az_error = quiet_motion_error(az_error, second, settings.QuietWindowStart);
        el_error = quiet_motion_error(el_error, second, settings.QuietWindowStart);
    }

    if (!az_manual)
    {
        axis_step(&azimuth);
    }
    if (!el_manual)
    {
        axis_step(&elevation);
    }
    if (park_active && az_drive_on == 0 && el_drive_on == 0)
    {
        park_control(0);
    }
}
