#include "bus/remote_display.h"

#include "astro/source_names.h"
#include "bus/sei_commands.h"
#include "core/drive.h"
#include "core/state.h"

#include <cctype>
#include <cstdio>
#include <cstring>

int32_t display_pass_count;
int32_t remote_az_direction = DIR_STOPPED, remote_el_direction = DIR_STOPPED;

void remote_display_reset(void)
{
    display_pass_count = 0;
    remote_az_direction = DIR_STOPPED;
    remote_el_direction = DIR_STOPPED;
}

// One line at column x, row y. The length counts the terminating zero, and
// the result is not looked at: the next call simply sends again.
static void display_line(int address, int x, int y, const char *text)
{
    uint8_t status;
    sei_display_msg(address, (uint8_t)x, (uint8_t)y, (uint8_t)(strlen(text) + 1), text, &status);
}

static void display_source_name(int address, int x, int y)
{
    char name[32], text[32];
    text_copy(name, sizeof name, source_name(settings.TrackingSource));
    for (char *c = name; *c; c++)
    {
        *c = (char)toupper((unsigned char)*c);
    }
    snprintf(text, sizeof text, "%-12s", name);
    display_line(address, x, y, text);
}

static void display_number(int address, int x, int y, const char *format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    display_line(address, x, y, text);
}

// The antenna's block at the top, the source's below it.
static void display_type_0(int full)
{
    int az = settings.AZ_Addr, el = settings.EL_Addr;
    if (full || source_changed)
    {
        display_source_name(az, 0, 5);
        source_changed = 0;
        display_line(az, 0, 6, "AZ ");
        display_line(el, 0, 7, "EL ");
        display_line(az, 0, 0, "ANTENNA");
        char text[32];
        snprintf(text, sizeof text, "%7d", (int)settings.Frequency);
        display_line(az, 9, 0, text);
        display_line(az, 0, 1, "AZ ");
        display_line(el, 0, 2, "EL ");
    }
    display_number(az, 3, 6, "%6.2f", source_az);
    display_number(el, 3, 7, "%6.2f", source_el);
    if (full || az_changed)
    {
        display_number(az, 3, 1, "%6.2f", az_position);
        az_changed = 0;
    }
    if (full || el_changed)
    {
        display_number(el, 3, 2, "%6.2f", el_position);
        el_changed = 0;
    }
}

// The source alone.
static void display_type_1(int full)
{
    if (full || source_changed)
    {
        display_source_name(settings.AZ_Addr, 0, 2);
        source_changed = 0;
    }
    display_number(settings.AZ_Addr, 0, 3, "AZ %6.2f", source_az);
    display_number(settings.EL_Addr, 10, 3, "EL %6.2f", source_el);
}

void remote_display_update(void)
{
    int full = 0;
    if (++display_pass_count >= DISPLAY_FULL_REWRITE)
    {
        display_pass_count = 0;
        full = 1;
    }
    if (!settings.DisplayEnabled)
    {
        return;
    }
    if (settings.DisplayType == 0)
    {
        display_type_0(full);
    }
    else if (settings.DisplayType == 1)
    {
        display_type_1(full);
    }
}

struct SwitchAxis
{
    uint8_t first_bit, second_bit; // left and right, or up and down
    const uint8_t *manual;
    const int32_t *direction;
    int32_t *remote_direction;
    void (*first_pressed)(void);
    void (*second_pressed)(void);
};

// A held switch presses its arrow once to start and its release presses the
// same arrow again to stop, as the panel's toggling arrows want. The first
// switch wins over the second, so two opposite switches held together drive
// one way only, and the arrow's own reversal opens one relay before the other
// closes.
static void switch_axis(const SwitchAxis *s, uint8_t gpio)
{
    if (!*s->manual)
    {
        return;
    }
    if (!(gpio & s->first_bit))
    {
        if (*s->direction == DIR_STOPPED || *s->direction == DIR_RIGHT)
        {
            s->first_pressed();
            *s->remote_direction = *s->direction;
        }
    }
    else if (!(gpio & s->second_bit))
    {
        if (*s->direction == DIR_STOPPED || *s->direction == DIR_LEFT)
        {
            s->second_pressed();
            *s->remote_direction = *s->direction;
        }
    }
    else
    {
        if (*s->remote_direction == DIR_LEFT)
        {
            s->first_pressed();
        }
        else if (*s->remote_direction == DIR_RIGHT)
        {
            s->second_pressed();
        }
        *s->remote_direction = DIR_STOPPED;
    }
}

void remote_switch_group(void)
{
    uint8_t gpio, status;
    if (sei_read_gpio(settings.AZ_Addr, &gpio, &status) != 0)
    {
        return;
    }
    // A 0 bit is a pressed switch: bit 0 left, 1 right, 2 up, 3 down.
    static const SwitchAxis azimuth = {1, 2, &az_manual, &az_direction, &remote_az_direction,
                                       drive_left_pressed, drive_right_pressed};
    static const SwitchAxis elevation = {4, 8, &el_manual, &el_direction, &remote_el_direction,
                                         drive_up_pressed, drive_down_pressed};
    switch_axis(&azimuth, gpio);
    switch_axis(&elevation, gpio);
}
