#include "sim/mount.h"

#include <cmath>

void mount_init(SimMount *m)
{
    *m = SimMount();
    m->az_top_speed = 2.0;
    m->el_top_speed = 1.0;
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

static double mount_port_share(const SimOutputs *board, int port)
{
    if (!board->relay[port])
    {
        return 0.0;
    }
    int duty = board->duty[port] > 100 ? 100 : board->duty[port];
    return duty > 0 ? duty / 100.0 : 1.0;
}

double mount_drive_rate(const SimOutputs *board, int minus, int plus, double top_speed)
{
    if (!board)
    {
        return 0.0;
    }
    double down = mount_port_share(board, minus);
    double up = mount_port_share(board, plus);
    if (down > 0.0 && up > 0.0)
    {
        return 0.0;
    }
    return (up - down) * top_speed;
}

// A driven axis takes its speed at once; an idle one runs down linearly over
// the coast time, as a heavy dish does after its motor lets go.
static double mount_axis_step(double *position, double *rate, double drive, double top_speed, int coast_ms, double low,
                              double high, int elapsed_ms)
{
    double before = *rate;
    if (drive != 0.0 || coast_ms <= 0)
    {
        *rate = drive;
        before = drive;
    }
    else
    {
        double loss = top_speed * elapsed_ms / coast_ms;
        *rate = std::fabs(*rate) <= loss + 1e-9 ? 0.0 : *rate - std::copysign(loss, *rate);
    }
    *position += (before + *rate) / 2.0 * elapsed_ms / 1000.0;
    if (*position < low)
    {
        *position = low;
        *rate = 0.0;
    }
    if (*position > high)
    {
        *position = high;
        *rate = 0.0;
    }
    return *position;
}

static const SimOutputs *mount_board(const SimOutputs outputs[SIM_ADDRESSES], int address)
{
    return address >= 0 && address < SIM_ADDRESSES ? &outputs[address] : nullptr;
}

void mount_advance(SimMount *m, const SimOutputs outputs[SIM_ADDRESSES], int elapsed_ms)
{
    if (elapsed_ms <= 0)
    {
        return;
    }
    double az_drive = mount_drive_rate(mount_board(outputs, m->az_address), 3, 4, m->az_top_speed);
    double el_drive = mount_drive_rate(mount_board(outputs, m->el_address), 2, 1, m->el_top_speed);
    mount_axis_step(&m->az, &m->az_rate, az_drive, m->az_top_speed, m->coast_ms, m->az_min, m->az_max, elapsed_ms);
    mount_axis_step(&m->el, &m->el_rate, el_drive, m->el_top_speed, m->coast_ms, m->el_min, m->el_max, elapsed_ms);
}
