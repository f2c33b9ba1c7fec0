#include "bus/sei_commands.h"

#include "bus/sei_link.h"
#include "core/clock.h"

#include <cstdio>
#include <cstring>

int sei_frame(int frame_class, int address, const uint8_t *body, int body_length, uint8_t *frame)
{
    // Only the low four bits carry the address: an unset address (-1) would
    // go out as the broadcast that every board obeys, and 20 would reach the
    // device at 4. Such a frame is not laid out at all.
    int broadcast_class = frame_class == SEI_CLASS_SLEEP || frame_class == SEI_CLASS_WAKEUP;
    int last = broadcast_class ? SEI_BROADCAST : SEI_BROADCAST - 1;
    if (address < 0 || address > last || body_length < 0 || 1 + body_length > SEI_FRAME_MAX)
    {
        return 0;
    }
    frame[0] = (uint8_t)(frame_class | address);
    if (body_length > 0)
    {
        memcpy(frame + 1, body, (size_t)body_length);
    }
    return 1 + body_length;
}

void sei_put_u16(uint8_t *at, uint16_t value)
{
    at[0] = (uint8_t)(value >> 8);
    at[1] = (uint8_t)value;
}

void sei_put_u32(uint8_t *at, uint32_t value)
{
    at[0] = (uint8_t)(value >> 24);
    at[1] = (uint8_t)(value >> 16);
    at[2] = (uint8_t)(value >> 8);
    at[3] = (uint8_t)value;
}

uint16_t sei_get_u16(const uint8_t *at)
{
    return (uint16_t)(at[0] << 8 | at[1]);
}

uint32_t sei_get_u32(const uint8_t *at)
{
    return (uint32_t)at[0] << 24 | (uint32_t)at[1] << 16 | (uint32_t)at[2] << 8 | at[3];
}

int sei_command_frame(int address, int command, const uint8_t *args, int arg_count, uint8_t *frame)
{
    int length = sei_frame(SEI_CLASS_COMMAND, address, nullptr, 0, frame);
    if (length == 0 || arg_count < 0 || 2 + arg_count > SEI_FRAME_MAX)
    {
        return 0;
    }
    frame[1] = (uint8_t)command;
    if (arg_count > 0)
    {
        memcpy(frame + 2, args, (size_t)arg_count);
    }
    return 2 + arg_count;
}

int sei_decode_position(uint8_t mode, uint16_t resolution, const uint8_t *reply, int count, uint32_t *position)
{
    if (mode & MODE_32BIT)
    {
        if (count != 4)
        {
            return 1;
        }
        *position = sei_get_u32(reply);
        return 0;
    }
    // Our station's rule: an encoder whose whole turn fits in one byte may
    // answer with that byte alone; from any other a lone byte is a reply cut
    // short, and taking it as a position would swing the antenna.
    if (count == 1 && resolution >= 1 && resolution <= 256)
    {
        *position = reply[0];
        return 0;
    }
    if (count == 2)
    {
        *position = sei_get_u16(reply);
        return 0;
    }
    return 1;
}

void sei_decode_factory_info(const uint8_t *reply, EncoderFactoryInfo *info, uint8_t *crc)
{
    info->Model = sei_get_u16(reply);
    info->Version = sei_get_u16(reply + 2);
    info->Config = sei_get_u16(reply + 4);
    info->Serial = sei_get_u32(reply + 6);
    info->Month = reply[10];
    info->Day = reply[11];
    info->Year = sei_get_u16(reply + 12);
    info->CRC = reply[14];
    *crc = reply[14];
}

// 0 when exactly the request and the whole reply went over the line.
static int sei_exchange(const uint8_t *frame, int frame_length, uint8_t *reply, int reply_length, int budget)
{
    int moved = sei_transact(frame, frame_length, reply, reply_length, budget);
    return moved == frame_length + reply_length ? 0 : 1;
}

// The many reads that are a bare command number and a fixed reply.
static int sei_query(int a, int command, uint8_t *reply, int reply_length, int budget)
{
    uint8_t frame[2];
    int length = sei_command_frame(a, command, nullptr, 0, frame);
    return sei_exchange(frame, length, reply, reply_length, budget);
}

int sei_read_position(int a, uint8_t mode, uint16_t resolution, uint32_t *position)
{
    uint8_t frame[1];
    uint8_t reply[4];
    int width = (mode & MODE_32BIT) ? 4 : 2;
    int length = sei_frame(SEI_CLASS_POSITION, a, nullptr, 0, frame);
    int moved = sei_transact(frame, length, reply, width, SEI_BUDGET_SHORT);
    uint32_t value = 0;
    int status = moved < 1 ? 1 : sei_decode_position(mode, resolution, reply, moved - 1, &value);
    if (status == 0)
    {
        *position = value;
    }
    sei_log("%s(%d): status=%d pos=%d\n", __func__, a, status, (int)(status == 0 ? value : *position));
    return status;
}

int sei_read_factory_info(int a, EncoderFactoryInfo *info, uint8_t *crc)
{
    uint8_t reply[SEI_FACTORY_REPLY];
    int status = sei_query(a, SEI_READ_FACTORY_INFO, reply, sizeof reply, SEI_BUDGET_LONG);
    if (status == 0)
    {
        sei_decode_factory_info(reply, info, crc);
    }
    sei_log("%s(%d): status=%d\n", __func__, a, status);
    if (status == 0)
    {
        sei_log("Model=%d Vers=%d.%02d Config=%d.%02d Serial=%d Date=%02d-%02d-%04d CRC=%02x\n", info->Model,
                info->Version >> 8, info->Version & 0xFF, info->Config >> 8, info->Config & 0xFF, (int)info->Serial,
                info->Month, info->Day, info->Year, *crc);
    }
    return status;
}

int sei_read_resolution(int a, uint16_t *resolution, uint8_t *status)
{
    uint8_t reply[3];
    int result = sei_query(a, SEI_READ_RESOLUTION, reply, sizeof reply, SEI_BUDGET_NORMAL);
    if (result == 0)
    {
        *resolution = sei_get_u16(reply);
        *status = reply[2];
    }
    sei_log("%s(%d): status=%d res=%d\n", __func__, a, result, *resolution);
    return result;
}

int sei_read_mode(int a, uint8_t *mode, uint8_t *status)
{
    uint8_t reply[2];
    int result = sei_query(a, SEI_READ_MODE, reply, sizeof reply, SEI_BUDGET_NORMAL);
    if (result == 0)
    {
        *mode = reply[0];
        *status = reply[1];
    }
    sei_log("%s(%d): status=%d mode=%d\n", __func__, a, result, *mode);
    return result;
}

static int sei_read_u16(int a, int command, uint16_t *value, uint8_t *status)
{
    uint8_t reply[3];
    int result = sei_query(a, command, reply, sizeof reply, SEI_BUDGET_NORMAL);
    if (result == 0)
    {
        *value = sei_get_u16(reply);
        *status = reply[2];
    }
    return result;
}

static int sei_read_u32(int a, int command, uint32_t *value, uint8_t *status)
{
    uint8_t reply[5];
    int result = sei_query(a, command, reply, sizeof reply, SEI_BUDGET_NORMAL);
    if (result == 0)
    {
        *value = sei_get_u32(reply);
        *status = reply[4];
    }
    return result;
}

int sei_read_wind_speed(int a, uint16_t *speed, uint8_t *status)
{
    int result = sei_read_u16(a, SEI_READ_WIND_SPEED, speed, status);
    sei_log("%s(%d): status=%d speed=%d\n", __func__, a, result, *speed);
    return result;
}

int sei_read_wind_direction(int a, uint16_t *direction, uint8_t *status)
{
    int result = sei_read_u16(a, SEI_READ_WIND_DIRECTION, direction, status);
    sei_log("%s(%d): status=%d direction=%d\n", __func__, a, result, *direction);
    return result;
}

int sei_read_thermometer(int a, int16_t *temperature, uint8_t *status)
{
    uint16_t raw = (uint16_t)*temperature;
    int result = sei_read_u16(a, SEI_READ_THERMOMETER, &raw, status);
    if (result == 0)
    {
        *temperature = (int16_t)raw;
    }
    sei_log("%s(%d): status=%d temperature=%d\n", __func__, a, result, *temperature);
    return result;
}

int sei_read_barometer(int a, uint32_t *pressure, uint8_t *status)
{
    int result = sei_read_u32(a, SEI_READ_BAROMETER, pressure, status);
    sei_log("%s(%d): status=%d pressure=%d\n", __func__, a, result, (int)*pressure);
    return result;
}

int sei_read_altimeter(int a, uint32_t *altitude, uint8_t *status)
{
    int result = sei_read_u32(a, SEI_READ_ALTIMETER, altitude, status);
    sei_log("%s(%d): status=%d altitude=%d\n", __func__, a, result, (int)*altitude);
    return result;
}

int sei_read_range(int a, uint32_t *range, uint8_t *status)
{
    int result = sei_read_u32(a, SEI_READ_RANGE, range, status);
    sei_log("%s(%d): status=%d range=%d\n", __func__, a, result, (int)*range);
    return result;
}

int sei_read_ppr(int a, uint32_t *ppr, uint8_t *level, uint8_t *status)
{
    uint8_t reply[6];
    int result = sei_query(a, SEI_READ_PPR, reply, sizeof reply, SEI_BUDGET_NORMAL);
    if (result == 0)
    {
        *ppr = sei_get_u32(reply);
        *level = reply[4];
        *status = reply[5];
    }
    sei_log("%s(%d): status=%d ppr=%d level=%d\n", __func__, a, result, (int)*ppr, *level);
    return result;
}

int sei_read_adc(int a, uint8_t channel, uint16_t *value, uint8_t *status)
{
    uint8_t frame[3];
    uint8_t reply[3];
    int length = sei_command_frame(a, SEI_READ_ADC, &channel, 1, frame);
    int result = sei_exchange(frame, length, reply, sizeof reply, SEI_BUDGET_SHORT);
    if (result == 0)
    {
        // The converter module sends its word least significant byte first,
        // unlike every other device on the bus.
        *value = (uint16_t)(reply[1] << 8 | reply[0]);
        *status = reply[2];
    }
    sei_log("%s(%d): ADC=%04x status=%d\n", __func__, a, *value, result);
    return result;
}

int sei_read_gpio(int a, uint8_t *gpio, uint8_t *status)
{
    uint8_t reply[2];
    int result = sei_query(a, SEI_READ_GPIO, reply, sizeof reply, SEI_BUDGET_SHORT);
    if (result == 0)
    {
        *gpio = reply[0];
        *status = reply[1];
    }
    sei_log("%s(%d): GPIO=%02x status=%d\n", __func__, a, *gpio, result);
    return result;
}

// A write: its frame out, one status byte back.
static int sei_write(int a, int command, const uint8_t *args, int arg_count, int budget, uint8_t *status)
{
    uint8_t frame[SEI_FRAME_MAX];
    uint8_t reply[1];
    int length = sei_command_frame(a, command, args, arg_count, frame);
    int result = sei_exchange(frame, length, reply, 1, budget);
    if (result == 0)
    {
        *status = reply[0];
    }
    return result;
}

int sei_set_position(int a, uint8_t mode, uint32_t position, uint8_t *status)
{
    uint8_t args[4];
    int width = 2;
    if (mode & MODE_32BIT)
    {
        sei_put_u32(args, position);
        width = 4;
    }
    else
    {
        sei_put_u16(args, (uint16_t)position);
    }
    int result = sei_write(a, SEI_SET_POSITION, args, width, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_assign_address(int a, uint32_t serial, uint8_t new_address, uint8_t *status)
{
    uint8_t args[5];
    sei_put_u32(args, serial);
    args[4] = new_address;
    int result = sei_write(a, SEI_ASSIGN_ADDRESS, args, sizeof args, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_change_resolution(int a, uint16_t resolution, uint8_t *status)
{
    uint8_t args[2];
    sei_put_u16(args, resolution);
    int result = sei_write(a, SEI_CHANGE_RESOLUTION, args, sizeof args, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_change_mode_temporary(int a, uint8_t mode, uint8_t *status)
{
    int result = sei_write(a, SEI_CHANGE_MODE_TEMPORARY, &mode, 1, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_change_mode_power_up(int a, uint8_t mode, uint8_t *status)
{
    int result = sei_write(a, SEI_CHANGE_MODE_POWER_UP, &mode, 1, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_write_barometer_calibration(int a, uint16_t value, uint8_t *status)
{
    uint8_t args[2];
    sei_put_u16(args, value);
    int result = sei_write(a, SEI_WRITE_BAROMETER_CALIBRATION, args, sizeof args, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_write_range(int a, uint32_t range, uint8_t *status)
{
    uint8_t args[4];
    sei_put_u32(args, range);
    int result = sei_write(a, SEI_WRITE_RANGE, args, sizeof args, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): range=%d status=%d\n", __func__, a, (int)range, result);
    return result;
}

int sei_write_ppr(int a, uint32_t ppr, uint8_t level, uint8_t *status)
{
    uint8_t args[5];
    sei_put_u32(args, ppr);
    args[4] = level;
    int result = sei_write(a, SEI_WRITE_PPR, args, sizeof args, SEI_BUDGET_NORMAL, status);
    sei_log("%s(%d): ppr=%d level=%d status=%d\n", __func__, a, (int)ppr, level, result);
    return result;
}

int sei_relay_control(int a, uint8_t port, uint8_t state, uint8_t *status)
{
    uint8_t args[2] = {port, state};
    int result = sei_write(a, SEI_RELAY_CONTROL, args, sizeof args, SEI_BUDGET_SHORT, status);
    sei_log("%s(%d): port:%d state:%d status=%d\n", __func__, a, port, state, result);
    return result;
}

int sei_pwm_control(int a, uint8_t port, uint8_t duty, uint8_t *status)
{
    uint8_t args[2] = {port, duty};
    int result = sei_write(a, SEI_PWM_CONTROL, args, sizeof args, SEI_BUDGET_SHORT, status);
    sei_log("%s(%d): port:%d duty:%d status=%d\n", __func__, a, port, duty, result);
    return result;
}

int sei_display_msg(int a, uint8_t x, uint8_t y, uint8_t length, const char *text, uint8_t *status)
{
    char shown[SEI_DISPLAY_MAX_TEXT + 1] = "";
    int result = length;
    if (length <= SEI_DISPLAY_MAX_TEXT)
    {
        // The text goes out as `length` bytes; a shorter string is padded
        // with zeros rather than read past its end.
        uint8_t args[3 + SEI_DISPLAY_MAX_TEXT] = {x, y, length};
        size_t used = text ? strnlen(text, length) : 0;
        if (used > 0)
        {
            memcpy(args + 3, text, used);
            memcpy(shown, text, used);
        }
        result = sei_write(a, SEI_DISPLAY_MSG, args, 3 + length, SEI_BUDGET_NORMAL, status);
    }
    else if (text)
    {
        snprintf(shown, sizeof shown, "%s", text);
    }
    sei_log("%s(%d): x=%d y=%d len:%d msg=%s status=%d\n", __func__, a, x, y, length, shown, result);
    return result;
}

int sei_sleep(int a)
{
    uint8_t frame[1];
    int length = sei_frame(SEI_CLASS_SLEEP, a, nullptr, 0, frame);
    int result = sei_transact(frame, length, nullptr, 0, 0) == 1 ? 0 : 1;
    sei_log("%s(%d): status=%d\n", __func__, a, result);
    return result;
}

int sei_wakeup(void)
{
    uint8_t frame[1];
    int length = sei_frame(SEI_CLASS_WAKEUP, SEI_BROADCAST, nullptr, 0, frame);
    int result = sei_transact(frame, length, nullptr, 0, 0) == 1 ? 0 : 1;
    sei_log("%s(%d): status=%d\n", __func__, SEI_BROADCAST, result);
    // The encoders need a moment after the wake-up before the first frame.
    sys_sleep_ms(5);
    return result;
}
