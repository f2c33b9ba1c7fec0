// The settings store maps the SEI and RIG_CONTROL words; the bus needs the
// same maps. These weak copies keep the bus linkable on its own, and the
// store's definitions replace them wherever both are linked.
#include "core/settings.h"

#include <cstring>

static const int fallback_bauds[8] = {1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600};
static const char *const fallback_parities[5] = {"None", "Odd", "Even", "Mark", "Space"};
static const char *const fallback_flows[4] = {"None", "Hardware", "Software", "Custom"};

__attribute__((weak)) int settings_baud_index(int baud)
{
    for (int i = 0; i < 8; i++)
    {
        if (fallback_bauds[i] == baud)
        {
            return i;
        }
    }
    return 3;
}

__attribute__((weak)) int settings_baud_rate(int index)
{
    return index >= 0 && index < 8 ? fallback_bauds[index] : 9600;
}

__attribute__((weak)) int settings_parity_index(const char *text)
{
    for (int i = 1; i < 5; i++)
    {
        if (text && strcmp(text, fallback_parities[i]) == 0)
        {
            return i;
        }
    }
    return 0;
}

__attribute__((weak)) const char *settings_parity_text(int index)
{
    return index >= 0 && index < 5 ? fallback_parities[index] : "None";
}

__attribute__((weak)) int settings_flow_index(const char *text)
{
    for (int i = 1; i < 4; i++)
    {
        if (text && strcmp(text, fallback_flows[i]) == 0)
        {
            return i;
        }
    }
    return 0;
}

__attribute__((weak)) const char *settings_flow_text(int index)
{
    return index >= 0 && index < 4 ? fallback_flows[index] : "None";
}
