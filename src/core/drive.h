// The antenna drive: two independent bang-bang axes with start and stop
// hysteresis, slow and fast duty, jog pulses near the target, a guard time
// between moves and optional brakes. It owns AUTO, PARK and MAN. Outputs go
// to the relay and PWM ports of the devices at AZ_Addr and EL_Addr; buttons
// change colour only through the panel seam, and every wait is sys_sleep_ms.
#pragma once

#include <cstdint>

// Ports of the relay and PWM boards: the same number serves both commands.
enum DrivePort
{
    DRIVE_PORT_UP = 1,
    DRIVE_PORT_DOWN = 2,
    DRIVE_PORT_LEFT = 3,
    DRIVE_PORT_RIGHT = 4
};

// The two bus commands the drive sends. Tests may put recorders in their
// place; a null record, or null entries, restore the SEI commands.
struct DriveBus
{
    int (*relay)(int address, uint8_t port, uint8_t state, uint8_t *status);
    int (*pwm)(int address, uint8_t port, uint8_t duty, uint8_t *status);
};
void drive_set_bus(const DriveBus *bus);

// Output primitives. They act at once and ignore the bus result.
void relay_az_left(int on);
void relay_az_right(int on);
void relay_el_up(int on);
void relay_el_down(int on);
void pwm_az_left(int on);
void pwm_az_right(int on);
void pwm_el_up(int on);
void pwm_el_down(int on);
void all_relays_off(void);
void all_pwm_off(void);
// Record a new whole-number duty and pass it to the running port; an
// unchanged duty sends nothing.
void set_az_duty_cycle(double percent);
void set_el_duty_cycle(double percent);
// The brake line. This station has none wired, so it does nothing; the
// sleeps around it stay, and so does the order of the calls.
void brake_output(int state);

// Motion primitives: start or stop one direction of one axis, with the
// brake release or engagement and the arrow's colour.
void az_left(int on);
void az_right(int on);
void el_up(int on);
void el_down(int on);

// Everything off and STOP lit; off only puts STOP back to gray.
void stop_all(int on);
// On enters PARK; off ends it with a half-second red STOP flash.
void park_control(int on);

// The mode buttons.
// 1 for a source worked out for the home station (Moon, Sun, planets, radio
// sources, User RA/Dec), 0 for User Az/El and the remote sources.
int drive_source_needs_home(int source);
// AUTO on or off; refused, with a word on the status bar, for a source that
// needs a home station while none is set.
void drive_auto_pressed(void);
void drive_park_pressed(void);
void drive_stop_pressed(void);
void drive_az_manual_pressed(void);
void drive_el_manual_pressed(void);

// The arrows, in MAN only: a press starts, a second press stops, the other
// arrow of the axis reverses after the guard time.
void drive_left_pressed(void);
void drive_right_pressed(void);
void drive_up_pressed(void);
void drive_down_pressed(void);

// One drive step of the position group, after the position read and the
// limit tests. It first lets the stall watchdog look at each running axis:
// one that does not follow its motor stops, with AUTO and PARK.
void drive_step(int source, int through_north, int az_limit_hit, int el_limit_hit);
