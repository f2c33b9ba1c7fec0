#include "bus/brt.h"

#include "bus/sei_commands.h"
#include "bus/sei_link.h"

static int brt_valid(int a)
{
    return a >= 0 && a < ENCODER_COUNT;
}

int brt_read_register(int a, uint16_t reg, uint16_t *value)
{
    uint8_t body[2];
    uint8_t frame[3];
    uint8_t reply[3];
    sei_put_u16(body, reg);
    int length = sei_frame(SEI_CLASS_REGISTER_READ, a, body, sizeof body, frame);
    if (sei_transact(frame, length, reply, sizeof reply, SEI_BUDGET_NORMAL) != 6)
    {
        return 1;
    }
    *value = sei_get_u16(reply);
    return reply[2];
}

int brt_write_register(int a, uint16_t reg, uint16_t value)
{
    uint8_t body[4];
    uint8_t frame[5];
    uint8_t reply[1];
    sei_put_u16(body, reg);
    sei_put_u16(body + 2, value);
    int length = sei_frame(SEI_CLASS_REGISTER_WRITE, a, body, sizeof body, frame);
    if (sei_transact(frame, length, reply, sizeof reply, SEI_BUDGET_NORMAL) != 6)
    {
        return 1;
    }
    return reply[0];
}

uint32_t brt_scale(uint32_t pulses, uint32_t ppr, uint16_t resolution)
{
    double degrees_per_pulse = ppr > 0 ? 360.0 / ppr : 360.0 / 1024.0;
    double counts_per_degree = (resolution != 0 ? resolution : 36000) / 360.0;
    return (uint32_t)(pulses * degrees_per_pulse * counts_per_degree);
}

int brt_read_position(int a, uint8_t, uint32_t *position)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    uint16_t pulses = 0;
    int status = brt_read_register(a, BRT_REG_POSITION, &pulses);
    if (status != 0)
    {
        // A disconnected encoder answers with a non-zero status; to the pass
        // it is a failed read like a silent device.
        *position = 0;
        return status;
    }
    *position = brt_scale(pulses, encoders[a].PPR, encoders[a].Resolution);
    return 0;
}

int brt_get_mode(int a, uint8_t *mode)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    *mode = encoders[a].Mode;
    return 0;
}

int brt_get_resolution(int a, uint16_t *resolution)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    *resolution = encoders[a].Resolution;
    return 0;
}

int brt_get_ppr(int a, uint32_t *ppr)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    *ppr = encoders[a].PPR;
    return 0;
}

int brt_get_range(int a, uint32_t *range)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    *range = encoders[a].Range;
    return 0;
}

int brt_get_factory_info(int a, EncoderFactoryInfo *info)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    *info = brt_factory_record(a);
    return 0;
}

int brt_set_mode(int a, uint8_t mode)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    int status = brt_write_register(a, BRT_REG_DIRECTION, (uint16_t)((mode & MODE_DIRECTION) ? 0 : 1));
    encoders[a].Mode = mode;
    return status;
}

int brt_set_resolution(int a, uint16_t resolution)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    encoders[a].Resolution = resolution;
    return 0;
}

int brt_set_ppr(int a, uint32_t ppr)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    encoders[a].PPR = ppr;
    return 0;
}

int brt_set_range(int a, uint32_t range)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    encoders[a].Range = range;
    return 0;
}

int brt_set_address(int a, uint8_t new_address)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    return brt_write_register(a, BRT_REG_ADDRESS, new_address);
}

int brt_set_position(int a, uint8_t, uint32_t position)
{
    if (!brt_valid(a))
    {
        return 1;
    }
    return brt_write_register(a, BRT_REG_PRESET, (uint16_t)position);
}
