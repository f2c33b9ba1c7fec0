#include "core/panel_seam.h"

#include "core/state.h"
#include "widgets/compass.h"

#include <QAbstractButton>
#include <QLabel>
#include <QStatusBar>
#include <QWidget>
#include <cstring>

static QWidget *panel_widgets[PANEL_COUNT];
// The style each registered widget shows, -1 before the first.
static int panel_shown_style[PANEL_COUNT];
static const PanelWatcher *panel_watcher;
static Compass *panel_dials[DIAL_COUNT];
static QStatusBar *panel_status_bar;
// The status text last written, for a clear that must not wipe another's message.
static char panel_shown_status[128];

// Every style names the weight of the form (bold): a style sheet that names
// none lets the restyled button fall back to a regular face while its
// neighbours stay bold.
#define PANEL_WEIGHT " font-weight: bold;"
#define PANEL_GRADIENT(colour)                                                                                     \
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 " colour                     \
    ", stop:1 white); color:white; border-radius:5px;" PANEL_WEIGHT

const char *panel_style_text(int style)
{
    static const char *const texts[STYLE_COUNT] = {
        "",
        PANEL_GRADIENT("gray"),
        PANEL_GRADIENT("DarkRed"),
        PANEL_GRADIENT("DarkGreen"),
        "background-color: black; color:red; border-radius:5px;" PANEL_WEIGHT,
        "background-color: black; color:green; border-radius:5px;" PANEL_WEIGHT,
        "background-color: white; color:black;" PANEL_WEIGHT,
        "background-color: green; color:white;" PANEL_WEIGHT,
        "background-color: black; color:gray; border-radius:5px;" PANEL_WEIGHT,
    };
    return style >= 0 && style < STYLE_COUNT ? texts[style] : "";
}

static int panel_valid(int control)
{
    return control >= 0 && control < PANEL_COUNT;
}

static Compass *panel_dial(int dial)
{
    return dial >= 0 && dial < DIAL_COUNT ? panel_dials[dial] : nullptr;
}

void panel_text(int control, const char *text)
{
    if (!panel_valid(control))
    {
        return;
    }
    if (panel_watcher && panel_watcher->text)
    {
        panel_watcher->text(control, text ? text : "");
    }
    QWidget *w = panel_widgets[control];
    if (QLabel *label = qobject_cast<QLabel *>(w))
    {
        label->setText(QString::fromUtf8(text ? text : ""));
    }
    else if (QAbstractButton *button = qobject_cast<QAbstractButton *>(w))
    {
        button->setText(QString::fromUtf8(text ? text : ""));
    }
}

void panel_style(int control, int style)
{
    if (!panel_valid(control))
    {
        return;
    }
    if (panel_watcher && panel_watcher->style)
    {
        panel_watcher->style(control, style);
    }
    // Setting an unchanged style sheet still re-polishes the widget; the drive
    // restyles its buttons often, so only a change is passed on.
    if (panel_widgets[control] && panel_shown_style[control] != style)
    {
        panel_shown_style[control] = style;
        panel_widgets[control]->setStyleSheet(QString::fromLatin1(panel_style_text(style)));
    }
}

void panel_visible(int control, int visible)
{
    if (!panel_valid(control))
    {
        return;
    }
    if (panel_watcher && panel_watcher->visible)
    {
        panel_watcher->visible(control, visible != 0);
    }
    if (panel_widgets[control])
    {
        panel_widgets[control]->setVisible(visible != 0);
    }
}

void panel_enabled(int control, int enabled)
{
    if (!panel_valid(control))
    {
        return;
    }
    if (panel_watcher && panel_watcher->enabled)
    {
        panel_watcher->enabled(control, enabled != 0);
    }
    if (panel_widgets[control])
    {
        panel_widgets[control]->setEnabled(enabled != 0);
    }
}

void panel_status(const char *text, int timeout_ms)
{
    if (panel_watcher && panel_watcher->status)
    {
        panel_watcher->status(text ? text : "");
    }
    text_copy(panel_shown_status, sizeof panel_shown_status, text ? text : "");
    if (panel_status_bar)
    {
        panel_status_bar->showMessage(QString::fromUtf8(text ? text : ""), timeout_ms);
    }
}

void panel_status_clear(const char *text)
{
    if (text && panel_shown_status[0] && strcmp(panel_shown_status, text) == 0)
    {
        panel_status("", 0);
    }
}

void panel_dial_needle(int dial, int needle, double value)
{
    if (Compass *c = panel_dial(dial))
    {
        if (needle == 1)
        {
            c->setNeedle1(value);
        }
        else
        {
            c->setNeedle2(value);
        }
    }
}

void panel_dial_value_text(int dial, const char *text)
{
    if (Compass *c = panel_dial(dial))
    {
        c->setValueText(text);
    }
}

void panel_dial_source_text(int dial, const char *text)
{
    if (Compass *c = panel_dial(dial))
    {
        c->setSourceText(text);
    }
}

void panel_dial_limits(int dial, double low, double high)
{
    if (Compass *c = panel_dial(dial))
    {
        c->setLimits(low, high);
    }
}

void panel_dial_repaint(int dial)
{
    if (dial < 0 || dial >= DIAL_COUNT)
    {
        return;
    }
    if (panel_watcher && panel_watcher->dial_repaint)
    {
        panel_watcher->dial_repaint(dial);
    }
    if (Compass *c = panel_dials[dial])
    {
        c->repaint();
    }
}

static_assert((int)DIAL_LIVE == (int)COMPASS_LIVE && (int)DIAL_STALE == (int)COMPASS_STALE &&
                  (int)DIAL_NO_DATA == (int)COMPASS_NO_DATA,
              "the seam hands the dial state on unchanged");

void panel_dial_state(int dial, int state)
{
    if (dial < 0 || dial >= DIAL_COUNT)
    {
        return;
    }
    if (panel_watcher && panel_watcher->dial_state)
    {
        panel_watcher->dial_state(dial, state);
    }
    if (Compass *c = panel_dials[dial])
    {
        c->setState(state);
    }
}

void panel_register(int control, QWidget *widget)
{
    if (panel_valid(control))
    {
        panel_widgets[control] = widget;
        panel_shown_style[control] = -1;
    }
}

void panel_register_dial(int dial, Compass *compass)
{
    if (dial >= 0 && dial < DIAL_COUNT)
    {
        panel_dials[dial] = compass;
    }
}

void panel_register_status(QStatusBar *bar)
{
    panel_status_bar = bar;
}

void panel_unregister_all(void)
{
    memset(panel_widgets, 0, sizeof panel_widgets);
    memset(panel_dials, 0, sizeof panel_dials);
    panel_status_bar = nullptr;
    panel_shown_status[0] = 0;
}

void panel_set_watcher(const PanelWatcher *watcher)
{
    panel_watcher = watcher;
}
