// All that the station's logic may do to the panel: set a control's text,
// style, visibility or enabled state, move a dial, write the status bar. The
// main window registers its widgets; with none registered (a test, a tool)
// the calls reach nothing but a watcher, when one is set.
#pragma once

enum PanelControl
{
    PANEL_MENU,
    PANEL_SOURCE,
    PANEL_SOURCE_AZIMUTH,
    PANEL_SOURCE_ELEVATION,
    PANEL_ANTENNA_AZIMUTH,
    PANEL_ANTENNA_ELEVATION,
    PANEL_CALLSIGN,
    PANEL_LOCATION,
    PANEL_HOME_STATION,
    PANEL_DX_STATION,
    PANEL_DATE_TIME,
    PANEL_RISE_TIME,
    PANEL_SET_TIME,
    PANEL_AU,
    PANEL_LHA_LABEL,
    PANEL_LHA,
    PANEL_DEC_LABEL,
    PANEL_DECLINATION,
    PANEL_AZ_CALIBRATE,
    PANEL_EL_CALIBRATE,
    PANEL_AUTO,
    PANEL_PARK,
    PANEL_STOP,
    PANEL_AZ_MANUAL,
    PANEL_EL_MANUAL,
    PANEL_LEFT,
    PANEL_RIGHT,
    PANEL_UP,
    PANEL_DOWN,
    PANEL_TX_DOPPLER,
    PANEL_RX_DOPPLER,
    PANEL_MUTUAL_DOPPLER_BUTTON,
    PANEL_OMNIRIG,
    PANEL_TX_FREQUENCY,
    PANEL_RX_FREQUENCY,
    PANEL_HOME_DOPPLER,
    PANEL_DX_DOPPLER,
    PANEL_MUTUAL_DOPPLER,
    PANEL_WIND_SPEED,
    PANEL_WIND_DIRECTION,
    PANEL_THERMOMETER,
    PANEL_COUNT
};

enum PanelStyle
{
    STYLE_NONE,
    STYLE_GRAY,
    STYLE_DARKRED,
    STYLE_DARKGREEN,
    STYLE_RED_TEXT,
    STYLE_GREEN_TEXT,
    STYLE_MENU_BAR,
    STYLE_MENU,
    STYLE_GRAY_TEXT,
    STYLE_COUNT
};

enum PanelDial
{
    DIAL_AZIMUTH,
    DIAL_ELEVATION,
    DIAL_WIND_SPEED,
    DIAL_WIND_DIRECTION,
    DIAL_TEMPERATURE,
    DIAL_BAROMETER,
    DIAL_ALTIMETER,
    DIAL_COUNT
};

// What a dial's reading is worth: live, stale (the last one, in gray), or
// none at all ("no data", no needle).
enum DialState
{
    DIAL_LIVE,
    DIAL_STALE,
    DIAL_NO_DATA
};

class QWidget;
class QStatusBar;
class Compass;

// The style sheet text of a style.
const char *panel_style_text(int style);

void panel_text(int control, const char *text);
void panel_style(int control, int style);
void panel_visible(int control, int visible);
void panel_enabled(int control, int enabled);
void panel_status(const char *text, int timeout_ms); // 0: no time-out
// Clear the status bar if it still shows this text; another message that
// has replaced it since is left alone.
void panel_status_clear(const char *text);

void panel_dial_needle(int dial, int needle, double value);
void panel_dial_value_text(int dial, const char *text);
void panel_dial_source_text(int dial, const char *text);
void panel_dial_limits(int dial, double low, double high);
void panel_dial_repaint(int dial);
void panel_dial_state(int dial, int state); // a DialState

// Something that sees every call of the seam, widgets or not: the tests'
// recorder. Null entries are skipped; a null watcher removes it.
struct PanelWatcher
{
    void (*text)(int control, const char *text);
    void (*style)(int control, int style);
    void (*visible)(int control, int visible);
    void (*enabled)(int control, int enabled);
    void (*status)(const char *text);
    void (*dial_repaint)(int dial);
    void (*dial_state)(int dial, int state);
};
void panel_set_watcher(const PanelWatcher *watcher);

// The main window hands its widgets over, and takes them back when it goes.
void panel_register(int control, QWidget *widget);
void panel_register_dial(int dial, Compass *compass);
void panel_register_status(QStatusBar *bar);
void panel_unregister_all(void);
