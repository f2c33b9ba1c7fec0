#include "drive_sim.h"

#include "bus/sei_commands.h"
#include "core/clock.h"
#include "core/cycle.h"
#include "core/drive.h"
#include "core/position_group.h"
#include "core/state.h"

#include <cmath>

static DriveSim *active;

// The line's time for one exchange, as morvane-sim paces it: ten bits a byte
// at 9600 baud both ways, and the device's 3 ms turnaround before a reply.
// The mount moves on meanwhile.
static void sim_wire(DriveSim *sim, int bytes_out, int bytes_back)
{
    if (sim->instant)
    {
        return;
    }
    sim->wire_us += (int64_t)(bytes_out + bytes_back) * 10 * 1000000 / 9600 + (bytes_back > 0 ? 3000 : 0);
    int whole_ms = (int)(sim->wire_us / 1000);
    sim->wire_us -= whole_ms * 1000;
    sim_station_advance(&sim->station, whole_ms);
    sim->ms += whole_ms;
}

static void sim_send(int address, int command, uint8_t port, uint8_t value)
{
    uint8_t args[2] = {port, value};
    uint8_t frame[8], reply[SIM_REPLY_MAX];
    int delay_ms;
    int length = sei_command_frame(address, command, args, 2, frame);
    sim_frame_note(&active->station, active->ms, '>', frame, length);
    int answered = sim_reply(&active->station, frame, length, reply, sizeof reply, &delay_ms);
    sim_wire(active, length, answered > 0 ? answered : 0);
}

static int sim_relay(int address, uint8_t port, uint8_t state, uint8_t *status)
{
    if (state && address == settings.AZ_Addr)
    {
        active->az_starts++;
    }
    if (state && address == settings.EL_Addr)
    {
        active->el_starts++;
    }
    sim_send(address, SEI_RELAY_CONTROL, port, state);
    *status = 0;
    return 0;
}

static int sim_pwm(int address, uint8_t port, uint8_t duty, uint8_t *status)
{
    sim_send(address, SEI_PWM_CONTROL, port, duty);
    *status = 0;
    return 0;
}

// A sleep blocks the program but not the mount: a jog pulse moves it.
static void sim_sleep(int ms)
{
    sim_station_advance(&active->station, ms);
    active->ms += ms;
}

void drive_sim_start(DriveSim *sim)
{
    *sim = DriveSim();
    sim_station_init(&sim->station);
    active = sim;
    settings.AZ_Addr = sim->station.mount.az_address;
    settings.EL_Addr = sim->station.mount.el_address;
    static const DriveBus bus = {sim_relay, sim_pwm};
    drive_set_bus(&bus);
    clock_set_sleep_hook(sim_sleep);
}

void drive_sim_stop(void)
{
    drive_set_bus(nullptr);
    clock_set_sleep_hook(nullptr);
    active = nullptr;
}

void drive_sim_tick(DriveSim *sim)
{
    sim_station_advance(&sim->station, CYCLE_TICK_MS);
    sim->ms += CYCLE_TICK_MS;
    cycle_guard_timers();
    if (sim->tick++ % 2 == 1)
    {
        // The encoder turns with the mount (unless it stuck) and reads 0 to
        // 360 whichever way it passed north.
        // A failed read keeps the last good position, as the position group does.
        // A position read asks each encoder with one byte for two back.
        sim_wire(sim, 1, 2);
        double az = sim_axis_reading(&sim->station, SIM_AXIS_AZ);
        az = sim->az_mirrored ? 360 - az : az;
        if (!sim->az_read_fails)
        {
            az_position = std::round(std::fmod(az + 360, 360) * 100) / 100;
        }
        sim_wire(sim, 1, 2);
        el_position = std::round(sim_axis_reading(&sim->station, SIM_AXIS_EL) * 100) / 100;
        az_read_status = sim->az_read_fails ? 1 : 0;
        int through_north = settings.AzimuthLimitMin > settings.AzimuthLimitMax;
        int az_hit = position_az_limit_hit(az_position, settings.AzimuthLimitMin, settings.AzimuthLimitMax);
        int el_hit = position_el_limit_hit(el_position, settings.ElevationLimitMin, settings.ElevationLimitMax);
        // The clock the drive reads is the simulated time of its step.
        if (sim->utc_start)
        {
            clock_freeze(sim->utc_start + (time_t)(sim->ms / 1000));
        }
        if (sim->after_read)
        {
            sim->after_read();
        }
        drive_step(settings.TrackingSource, through_north, az_hit, el_hit);
    }
}
