#include "support/panel_record.h"

#include "core/state.h"

#include <cstring>

char panel_last_text[PANEL_COUNT][64];
int panel_last_style[PANEL_COUNT];
int panel_last_visible[PANEL_COUNT];
int panel_last_enabled[PANEL_COUNT];
char panel_last_status[128];
int panel_dial_repaints[DIAL_COUNT];
int panel_dial_states[DIAL_COUNT];

static void record_text(int control, const char *text)
{
    text_copy(panel_last_text[control], sizeof panel_last_text[control], text);
}

static void record_style(int control, int style)
{
    panel_last_style[control] = style;
}

static void record_visible(int control, int visible)
{
    panel_last_visible[control] = visible;
}

static void record_enabled(int control, int enabled)
{
    panel_last_enabled[control] = enabled;
}

static void record_status(const char *text)
{
    text_copy(panel_last_status, sizeof panel_last_status, text);
}

static void record_dial_repaint(int dial)
{
    panel_dial_repaints[dial]++;
}

static void record_dial_state(int dial, int state)
{
    panel_dial_states[dial] = state;
}

void panel_record_start(void)
{
    static const PanelWatcher recorder = {record_text,    record_style,  record_visible,
                                          record_enabled, record_status, record_dial_repaint,
                                          record_dial_state};
    memset(panel_last_text, 0, sizeof panel_last_text);
    memset(panel_last_style, 0, sizeof panel_last_style);
    memset(panel_last_visible, 0, sizeof panel_last_visible);
    memset(panel_last_enabled, 0, sizeof panel_last_enabled);
    memset(panel_last_status, 0, sizeof panel_last_status);
    memset(panel_dial_repaints, 0, sizeof panel_dial_repaints);
    memset(panel_dial_states, 0, sizeof panel_dial_states);
    panel_set_watcher(&recorder);
}
