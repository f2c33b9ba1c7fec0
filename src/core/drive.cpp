#include "core/drive.h"

#include "bus/sei_commands.h"
#include "core/clock.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"

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

// Off sends nothing once the axis is known to be off, so stopping one
// direction and then the other costs a single frame.
static void relay_switch(int address, int port, int on, int32_t *drive_on)
{
    if (on)
    {
        drive_relay(address, port, 1);
        *drive_on = 1;
        return;
    }
    if (*drive_on == 1)
    {
        drive_relay(address, port, 0);
    }
    *drive_on = 0;
}

void relay_az_left(int on)
{
    relay_switch(settings.AZ_Addr, DRIVE_PORT_LEFT, on, &az_drive_on);
}

void relay_az_right(int on)
{
    relay_switch(settings.AZ_Addr, DRIVE_PORT_RIGHT, on, &az_drive_on);
}

void relay_el_up(int on)
{
    relay_switch(settings.EL_Addr, DRIVE_PORT_UP, on, &el_drive_on);
}

void relay_el_down(int on)
{
    relay_switch(settings.EL_Addr, DRIVE_PORT_DOWN, on, &el_drive_on);
}

static void pwm_switch(int address, int port, int on, int on_state, int duty, int32_t *port_state, int32_t *active)
{
    drive_pwm(address, port, on ? duty : 0);
    *port_state = on ? on_state : 1;
    *active = on ? 1 : 0;
}

void pwm_az_left(int on)
{
    pwm_switch(settings.AZ_Addr, DRIVE_PORT_LEFT, on, DIR_LEFT, az_duty, &az_pwm_port_state, &az_pwm_active);
}

void pwm_az_right(int on)
{
    pwm_switch(settings.AZ_Addr, DRIVE_PORT_RIGHT, on, DIR_RIGHT, az_duty, &az_pwm_port_state, &az_pwm_active);
}

void pwm_el_up(int on)
{
    pwm_switch(settings.EL_Addr, DRIVE_PORT_UP, on, DIR_UP, el_duty, &el_pwm_port_state, &el_pwm_active);
}

void pwm_el_down(int on)
{
    pwm_switch(settings.EL_Addr, DRIVE_PORT_DOWN, on, DIR_DOWN, el_duty, &el_pwm_port_state, &el_pwm_active);
}

// Whatever the flags say: this is the switch-off of last resort, at STOP and
// at shutdown, when a flag may no longer match the device.
void all_relays_off(void)
{
    az_drive_on = 0;
    el_drive_on = 0;
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

static void duty_set(double percent, int address, int port_low, int port_high, int32_t *duty, int32_t port_state)
{
    // Cut toward zero, so 24.9 and 24.0 are one duty and a steady move costs
    // no traffic.
    int whole = (int)percent;
    if (whole == *duty)
    {
        return;
    }
    *duty = whole;
    if (port_state == 2)
    {
        drive_pwm(address, port_low, whole);
    }
    else if (port_state == 3)
    {
        drive_pwm(address, port_high, whole);
    }
    else
    {
        drive_pwm(address, port_low, 0);
        drive_pwm(address, port_high, 0);
    }
}

void set_az_duty_cycle(double percent)
{
    duty_set(percent, settings.AZ_Addr, DRIVE_PORT_LEFT, DRIVE_PORT_RIGHT, &az_duty, az_pwm_port_state);
}

void set_el_duty_cycle(double percent)
{
    duty_set(percent, settings.EL_Addr, DRIVE_PORT_UP, DRIVE_PORT_DOWN, &el_duty, el_pwm_port_state);
}

void brake_output(int) {}

// What differs between the four directions: their state values, arrow,
// outputs and the brake and PWM settings of their axis.
struct DriveMotion
{
    int32_t *direction;
    int value;
    int arrow;
    void (*relay)(int on);
    void (*pwm)(int on);
    const int32_t *brake_enabled;
    const int32_t *brake_delay;
    const int32_t *pwm_active;
};

// A start releases the brake before the motor runs, and with PWM sets the
// duty before the relay closes; a stop opens the relay first, lets the motor
// run down for the brake delay, and only then engages the brake.
static void motion(const DriveMotion *m, int on)
{
    if (on)
    {
        if (*m->direction == m->value)
        {
            return;
        }
        *m->direction = m->value;
        panel_style(m->arrow, STYLE_DARKRED);
        if (*m->brake_enabled)
        {
            brake_output(1);
            brake_output(1);
            sys_sleep_ms(100);
        }
        if (*m->pwm_active)
        {
            m->pwm(1);
        }
        m->relay(1);
        return;
    }
    m->relay(0);
    if (*m->brake_enabled && *m->direction != DIR_STOPPED)
    {
        sys_sleep_ms(*m->brake_delay);
        brake_output(0);
        brake_output(0);
    }
    if (*m->pwm_active)
    {
        m->pwm(0);
    }
    *m->direction = DIR_STOPPED;
    panel_style(m->arrow, STYLE_GRAY);
}

// Azimuth left and right, elevation up and down.
static const DriveMotion motions[4] = {
    {&az_direction, DIR_LEFT, PANEL_LEFT, relay_az_left, pwm_az_left, &settings.az_brake_enabled,
     &settings.az_brake_delay, &settings.AzimuthPwmActive},
    {&az_direction, DIR_RIGHT, PANEL_RIGHT, relay_az_right, pwm_az_right, &settings.az_brake_enabled,
     &settings.az_brake_delay, &settings.AzimuthPwmActive},
    {&el_direction, DIR_UP, PANEL_UP, relay_el_up, pwm_el_up, &settings.el_brake_enabled, &settings.el_brake_delay,
     &settings.ElevationPwmActive},
    {&el_direction, DIR_DOWN, PANEL_DOWN, relay_el_down, pwm_el_down, &settings.el_brake_enabled,
     &settings.el_brake_delay, &settings.ElevationPwmActive},
};

void az_left(int on)
{
    motion(&motions[0], on);
}

void az_right(int on)
{
    motion(&motions[1], on);
}

void el_up(int on)
{
    motion(&motions[2], on);
}

void el_down(int on)
{
    motion(&motions[3], on);
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
    park_active = 0;
    panel_style(PANEL_STOP, STYLE_GRAY);
    panel_style(PANEL_PARK, STYLE_GRAY);
    auto_tracking = 1;
    panel_style(PANEL_AUTO, STYLE_DARKGREEN);
    // A fresh start has no direction of travel yet, so no overshoot to judge.
    az_start_error = 0;
    el_start_error = 0;
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

// One arrow of one axis in MAN. `self` is the arrow's own direction,
// `other` the opposite one of the same axis.
static void jog_press(int manual, int32_t *speed_mode, void (*set_duty)(double), double manual_duty, double guard_time,
                      const int32_t *direction, int own_value, void (*self)(int), void (*other)(int))
{
    if (!manual)
    {
        return;
    }
    *speed_mode = SPEED_MANUAL;
    set_duty(manual_duty);
    if (*direction == DIR_STOPPED)
    {
        self(1);
    }
    else if (*direction == own_value)
    {
        self(0);
    }
    else
    {
        // A reversal waits the whole seconds of the guard time, so the
        // gearbox is not thrown from one direction into the other.
        other(0);
        sys_sleep_ms((int)guard_time * 1000);
        self(1);
    }
}

void drive_left_pressed(void)
{
    jog_press(az_manual, &az_speed_mode, set_az_duty_cycle, settings.AzimuthManualDutyCycle, settings.AzimuthGuardTime,
              &az_direction, DIR_LEFT, az_left, az_right);
}

void drive_right_pressed(void)
{
    jog_press(az_manual, &az_speed_mode, set_az_duty_cycle, settings.AzimuthManualDutyCycle, settings.AzimuthGuardTime,
              &az_direction, DIR_RIGHT, az_right, az_left);
}

void drive_up_pressed(void)
{
    jog_press(el_manual, &el_speed_mode, set_el_duty_cycle, settings.ElevationManualDutyCycle,
              settings.ElevationGuardTime, &el_direction, DIR_UP, el_up, el_down);
}

void drive_down_pressed(void)
{
    jog_press(el_manual, &el_speed_mode, set_el_duty_cycle, settings.ElevationManualDutyCycle,
              settings.ElevationGuardTime, &el_direction, DIR_DOWN, el_down, el_up);
}

// Stop an axis where it cannot be trusted: a limit, a failed read. Also the
// end of a jog pulse.
static void az_halt(void)
{
    if (az_direction == DIR_RIGHT)
    {
        az_right(0);
    }
    else
    {
        az_left(0);
    }
}

static void el_halt(void)
{
    if (el_direction == DIR_UP)
    {
        el_up(0);
    }
    else
    {
        el_down(0);
    }
}

// The stop of the stepping rules. Azimuth switches both directions off when
// it does not know which one runs.
static void az_stop(void)
{
    if (az_direction == DIR_LEFT)
    {
        az_left(0);
    }
    else if (az_direction == DIR_RIGHT)
    {
        az_right(0);
    }
    else
    {
        az_left(0);
        az_right(0);
    }
}

static void az_start(double error)
{
    if (error > 0)
    {
        az_right(1);
    }
    else
    {
        az_left(1);
    }
}

static void el_start(double error)
{
    if (error > 0)
    {
        el_up(1);
    }
    else
    {
        el_down(1);
    }
}

// The jog pulse's end: the motor stops, and the arrow of the direction it
// ran in stays lit so the operator sees the pulses.
static int az_pulse_end(void)
{
    int shade = az_direction == DIR_RIGHT ? DIR_RIGHT : DIR_LEFT;
    az_halt();
    panel_style(shade == DIR_RIGHT ? PANEL_RIGHT : PANEL_LEFT, STYLE_DARKRED);
    return shade;
}

static int el_pulse_end(void)
{
    int shade = el_direction == DIR_UP ? DIR_UP : DIR_DOWN;
    el_halt();
    panel_style(shade == DIR_UP ? PANEL_UP : PANEL_DOWN, STYLE_DARKRED);
    return shade;
}

// One axis as the stepping rules see it: its state, its settings, and the
// few actions in which azimuth and elevation differ.
struct DriveAxis
{
    int32_t *drive_on;
    int32_t *speed_mode;
    int32_t *jog_shade;
    int32_t *guard_ms;
    double *error;
    double *start_error;
    const double *start, *stop, *slow_degrees, *slow_duty, *fast_duty, *guard_time;
    const uint8_t *jog_enable;
    const int32_t *jog_time;
    int arrow_low, arrow_high;
    void (*set_duty)(double percent);
    void (*stop_motor)(void);
    void (*start_motor)(double error);
    int (*pulse_end)(void);
};

static void axis_stop_with_guard(const DriveAxis *a)
{
    a->stop_motor();
    *a->guard_ms = (int)(*a->guard_time * 1000);
}

static void axis_speed(const DriveAxis *a, int mode, double duty)
{
    if (*a->speed_mode != mode)
    {
        a->set_duty(duty);
        *a->speed_mode = mode;
    }
}

static void axis_step(const DriveAxis *a)
{
    double error = *a->error;
    double size = fabs(error);
    if (*a->drive_on == 1)
    {
        if (size <= *a->stop)
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
    else if (*a->guard_ms == 0 && size >= *a->start)
    {
        if (size > *a->slow_degrees)
        {
            *a->speed_mode = SPEED_FAST;
            a->set_duty(*a->fast_duty);
        }
        else if (*a->jog_enable)
        {
            *a->speed_mode = SPEED_JOG;
            a->set_duty(100.0);
        }
        else
        {
            *a->speed_mode = SPEED_SLOW;
            a->set_duty(*a->slow_duty);
        }
        a->start_motor(error);
        *a->start_error = error;
    }

    if (*a->drive_on == 1)
    {
        if (size > *a->slow_degrees)
        {
            axis_speed(a, SPEED_FAST, *a->fast_duty);
        }
        else if (*a->jog_enable)
        {
            axis_speed(a, SPEED_JOG, 100.0);
            // No guard after a pulse: the next cycle may pulse again until
            // the error is inside the start threshold.
            sys_sleep_ms(*a->jog_time);
            *a->jog_shade = a->pulse_end();
        }
        else
        {
            axis_speed(a, SPEED_SLOW, *a->slow_duty);
        }
    }
    else if (*a->jog_shade != 1)
    {
        // The arrow stays lit after a pulse until a step that starts nothing.
        panel_style(a->arrow_low, STYLE_GRAY);
        panel_style(a->arrow_high, STYLE_GRAY);
        *a->jog_shade = 1;
    }
}

// Azimuth, then elevation.
static const DriveAxis axes[2] = {
    {&az_drive_on,
     &az_speed_mode,
     &az_jog_shade,
     &az_guard_ms,
     &az_error,
     &az_start_error,
     &settings.Azimuth_Start,
     &settings.Azimuth_Stop,
     &settings.AzimuthSlowDegrees,
     &settings.AzimuthSlowDutyCycle,
     &settings.AzimuthFastDutyCycle,
     &settings.AzimuthGuardTime,
     &settings.AzimuthJogEnable,
     &settings.AzimuthJogTime,
     PANEL_LEFT,
     PANEL_RIGHT,
     set_az_duty_cycle,
     az_stop,
     az_start,
     az_pulse_end},
    {&el_drive_on,
     &el_speed_mode,
     &el_jog_shade,
     &el_guard_ms,
     &el_error,
     &el_start_error,
     &settings.Elevation_Start,
     &settings.Elevation_Stop,
     &settings.ElevationSlowDegrees,
     &settings.ElevationSlowDutyCycle,
     &settings.ElevationFastDutyCycle,
     &settings.ElevationGuardTime,
     &settings.ElevationJogEnable,
     &settings.ElevationJogTime,
     PANEL_UP,
     PANEL_DOWN,
     set_el_duty_cycle,
     el_halt,
     el_start,
     el_pulse_end},
};

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
            az_halt();
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
            el_halt();
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
    int az_ok = az_read_status == 0 && !az_limit_hit;
    int el_ok = el_read_status == 0 && !el_limit_hit;

    if (!auto_tracking && !park_active)
    {
        if (!az_ok)
        {
            az_halt();
        }
        if (!el_ok)
        {
            el_halt();
        }
        return;
    }

    // Every reason not to track leaves an error of 0, and an error of 0 stops
    // a running motor through the stop rule.
    az_error = 0;
    el_error = 0;
    static const SourceRecord no_row = {};
    const SourceRecord *row = source >= 0 && source < SOURCE_COUNT ? &source_table[source] : &no_row;
    drive_targets(row, through_north, az_ok, el_ok);

    if (!az_manual)
    {
        axis_step(&axes[0]);
    }
    if (!el_manual)
    {
        axis_step(&axes[1]);
    }
    if (park_active && az_drive_on == 0 && el_drive_on == 0)
    {
        park_control(0);
    }
}
