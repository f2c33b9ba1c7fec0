#include "sim/mount.h"

#include <cmath>

// The physics runs in steps no longer than this, so a long sleep of the
// program still sees the ramps and the run-down it would see in real time.
static const int mount_step_ms = 5;

void mount_init(SimMount *m)
{
    *m = SimMount();
    m->az_top_speed = 2.0;
    m->el_top_speed = 1.0;
    m->az_accel = 2.0;
    m->el_accel = 1.0;
    m->coast_deg = 0.3;
    m->min_duty = 10.0;
    m->az_pwm = m->el_pwm = 1;
    // A mount that turns a little past north either way, and an elevation
    // axis that can just look below the horizon and over the zenith.
    m->az_min = -10.0;
    m->az_max = 370.0;
    m->el_min = -5.0;
    m->el_max = 95.0;
    m->az = 180.0;
    m->el = 45.0;
    m->az_address = 0;
    m->el_address = 1;
}

static double mount_port_share(const SimOutputs *board, int port, int pwm, double min_duty)
{
    if (!board->relay[port])
    {
        return 0.0;
    }
    if (!pwm)
    {
        return 1.0;
    }
    int duty = board->duty[port] > 100 ? 100 : board->duty[port];
    return duty > 0 && duty >= min_duty ? duty / 100.0 : 0.0;
}

// The driven speed; 0 means the motor has no power.
static double mount_drive_rate(const SimOutputs *board, int minus, int plus, double top_speed, int pwm, double min_duty)
{
    if (!board)
    {
        return 0.0;
    }
    if (board->relay[minus] && board->relay[plus])
    {
        return 0.0;
    }
    double down = mount_port_share(board, minus, pwm, min_duty);
    double up = mount_port_share(board, plus, pwm, min_duty);
    return (up - down) * top_speed;
}

struct MountAxis
{
    double *angle;
    double *rate;
    double top_speed;
    double accel;
    double low;
    double high;
    uint8_t *on_stop;
    int *stop_hits;
};

// Under power the axis ramps toward the driven speed at its acceleration.
// Without power it runs down as a heavy dish does against the gear's
// friction: the speed decays so that a stop from top speed runs on
// coast_deg, a slower one proportionally less.
static void mount_axis_step(const MountAxis *a, double drive, double coast_deg, double dt)
{
    double before = *a->rate;
    if (drive != 0.0)
    {
        double change = a->accel > 0.0 ? a->accel * dt : INFINITY;
        double gap = drive - *a->rate;
        *a->rate = std::fabs(gap) <= change ? drive : *a->rate + std::copysign(change, gap);
        *a->angle += (before + *a->rate) / 2.0 * dt;
    }
    else if (coast_deg > 0.0 && a->top_speed > 0.0 && before != 0.0)
    {
        double tau = coast_deg / a->top_speed;
        double decay = std::exp(-dt / tau);
        *a->angle += before * tau * (1.0 - decay);
        // It comes to rest once what is left of the run-on is far below an
        // encoder step.
        *a->rate = std::fabs(before * decay) * tau < 1e-3 ? 0.0 : before * decay;
    }
    else
    {
        *a->rate = 0.0;
    }
    int beyond = *a->angle < a->low ? -1 : *a->angle > a->high ? 1 : 0;
    if (beyond == 0)
    {
        *a->on_stop = *a->angle == a->low || *a->angle == a->high ? *a->on_stop : 0;
        return;
    }
    *a->angle = beyond < 0 ? a->low : a->high;
    *a->rate = 0.0;
    if (!*a->on_stop)
    {
        (*a->stop_hits)++;
    }
    *a->on_stop = 1;
}

static const SimOutputs *mount_board(const SimOutputs outputs[SIM_ADDRESSES], int address)
{
    return address >= 0 && address < SIM_ADDRESSES ? &outputs[address] : nullptr;
}

void mount_advance(SimMount *m, const SimOutputs outputs[SIM_ADDRESSES], int elapsed_ms)
{
    const MountAxis az = {.angle = &m->az,
                          .rate = &m->az_rate,
                          .top_speed = m->az_top_speed,
                          .accel = m->az_accel,
                          .low = m->az_min,
                          .high = m->az_max,
                          .on_stop = &m->az_on_stop,
                          .stop_hits = &m->az_stop_hits};
    const MountAxis el = {.angle = &m->el,
                          .rate = &m->el_rate,
                          .top_speed = m->el_top_speed,
                          .accel = m->el_accel,
                          .low = m->el_min,
                          .high = m->el_max,
                          .on_stop = &m->el_on_stop,
                          .stop_hits = &m->el_stop_hits};
    const SimOutputs *az_board = mount_board(outputs, m->az_address);
    const SimOutputs *el_board = mount_board(outputs, m->el_address);
    // The outputs cannot change within one call, so neither can the drive.
    double az_drive = mount_drive_rate(az_board, 3, 4, m->az_top_speed, m->az_pwm, m->min_duty);
    double el_drive = mount_drive_rate(el_board, 2, 1, m->el_top_speed, m->el_pwm, m->min_duty);
    for (int done = 0; done < elapsed_ms; done += mount_step_ms)
    {
        int step = elapsed_ms - done < mount_step_ms ? elapsed_ms - done : mount_step_ms;
        mount_axis_step(&az, az_drive, m->coast_deg, step / 1000.0);
        mount_axis_step(&el, el_drive, m->coast_deg, step / 1000.0);
    }
}
