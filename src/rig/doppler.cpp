#include "rig/doppler.h"

#include "core/clock.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rig/rig_survey.h"

#include <cmath>
#include <cstdio>
#include <cstring>

int64_t doppler_round(double hz)
{
    return (int64_t)(hz < 0 ? -std::floor(-hz + 0.5) : std::floor(hz + 0.5));
}

static const SourceRecord *doppler_home_row(void)
{
    int source = settings.TrackingSource;
    return &source_table[source >= 0 && source < SOURCE_COUNT ? source : 0];
}

double doppler_correction(void)
{
    double home = doppler_home_row()->doppler_hz;
    double dx = dx_source_record.doppler_hz;
    switch (doppler_mode)
    {
    case 1:
        return home;
    case 2:
        return dx;
    case 3:
        return (dx + home) * 0.5;
    default:
        return 0.0;
    }
}

void doppler_follow(int vfo_mode, double correction)
{
    int64_t rx, tx;
    if (vfo_mode == 1)
    {
        if (rig_get_freq_a(&rx) != 0)
        {
            return;
        }
        tx = rx - doppler_round(correction);
        rig_set_freq_b(tx);
        rx_frequency_hz = (double)rx;
        tx_frequency_hz = (double)tx;
    }
    else if (vfo_mode == 2)
    {
        if (rig_get_freq_b(&tx) != 0)
        {
            return;
        }
        rx = tx + doppler_round(correction);
        rig_set_freq_a(rx);
        rx_frequency_hz = (double)rx;
        tx_frequency_hz = (double)tx;
    }
    else
    {
        if (rig_get_freq_a(&rx) == 0)
        {
            rx_frequency_hz = (double)rx;
        }
        if (rig_get_freq_b(&tx) == 0)
        {
            tx_frequency_hz = (double)tx;
        }
    }
}

void doppler_show_frequencies(void)
{
    char text[32];
    snprintf(text, sizeof text, "%12.5f", tx_frequency_hz / 1000000.0);
    panel_text(PANEL_TX_FREQUENCY, text);
    snprintf(text, sizeof text, "%12.5f", rx_frequency_hz / 1000000.0);
    panel_text(PANEL_RX_FREQUENCY, text);
}

// Three commands in a row went unanswered: the radio is off or its cable
// is out. Rig control stops, and the button and the status bar say so.
static void doppler_radio_gone(void)
{
    char text[SERIAL_PORT_NAME_SIZE + 64];
    snprintf(text, sizeof text, "Radio not answering on %s", rig_link.PortName);
    rig_control_off();
    panel_style(PANEL_OMNIRIG, STYLE_DARKRED);
    panel_status(text, 0);
}

// The rig's walk moves on as its bytes come, between the groups too. Bytes
// that come while no command waits answer nothing (a radio announcing its own
// changes): they are dropped, or the port would keep calling.
static void doppler_rig_readable(void)
{
    rig_service(clock_monotonic_ms());
    if (!rig_engine.record)
    {
        serial_clear(&rig_link);
    }
}

void doppler_frequency_group(void)
{
    if (settings.OmniRigActive)
    {
        rig_service(clock_monotonic_ms());
        if (rig_not_answering())
        {
            doppler_radio_gone();
        }
        else if (!rig_busy())
        {
            // The walk just ended brought the leading VFO; its follower is
            // written before the next walk reads again.
            doppler_follow(vfo_doppler_mode, doppler_correction());
            rig_start_status();
            rig_service(clock_monotonic_ms());
        }
    }
    else
    {
        rx_frequency_hz = settings.Frequency * 1000000.0;
        tx_frequency_hz = settings.Frequency * 1000000.0;
    }
    doppler_show_frequencies();
}

void rig_control_off(void)
{
    settings.OmniRigActive = 0;
    rig_stop();
    serial_close(&rig_link);
    panel_style(PANEL_OMNIRIG, STYLE_GRAY);
}

// The link takes the port as the settings have it now, so a change made in
// the dialog counts from the next switching on.
static void rig_link_from_settings(void)
{
    text_copy(rig_link.PortName, sizeof rig_link.PortName, settings.PortName);
    rig_link.Port = settings.Port;
    rig_link.BaudRate = settings.BaudRate;
    rig_link.DataBits = settings.DataBits;
    rig_link.StopBits = settings.StopBits;
    rig_link.Parity = settings.Parity;
    rig_link.FlowControl = settings.FlowControl;
}

void doppler_omnirig_pressed(void)
{
    if (settings.OmniRigActive)
    {
        rig_control_off();
        panel_status("OmniRig is inactive", 0);
        return;
    }
    rig_link_from_settings();
    if (!settings.OmniRigFilename[0])
    {
        panel_style(PANEL_OMNIRIG, STYLE_GRAY);
        panel_status("OmniRig is inactive", 0);
        return;
    }
    if (serial_open(&rig_link) != 0)
    {
        char text[SERIAL_PORT_NAME_SIZE + 160];
        snprintf(text, sizeof text, "OmniRig is inactive: %s", serial_failure());
        panel_style(PANEL_OMNIRIG, STYLE_GRAY);
        panel_status(text, 0);
        return;
    }
    LoadOmniRigFile(settings.OmniRigFilename, settings.OmniRigDebug);
    rig_start_init();
    rig_service(clock_monotonic_ms());
    serial_watch(&rig_link, doppler_rig_readable);
    settings.OmniRigActive = 1;
    panel_style(PANEL_OMNIRIG, STYLE_DARKGREEN);
    // A file that cannot drive Doppler still reads what it can; the operator
    // is told at once why the other VFO will not follow.
    char verdict[160];
    if (rig_survey_verdict(verdict, sizeof verdict) == 2)
    {
        char text[256];
        snprintf(text, sizeof text, "OmniRig is active, but %s", verdict);
        panel_status(text, 0);
        return;
    }
    panel_status("OmniRig is active", 0);
}

void doppler_tx_pressed(void)
{
    if (vfo_doppler_mode != 1)
    {
        vfo_doppler_mode = 1;
        panel_style(PANEL_TX_DOPPLER, STYLE_DARKGREEN);
        panel_style(PANEL_RX_DOPPLER, STYLE_GRAY);
        panel_status("Tx frequency is doppler adjusted from Rx VFO", 0);
        return;
    }
    vfo_doppler_mode = 0;
    panel_style(PANEL_TX_DOPPLER, STYLE_GRAY);
    panel_style(PANEL_RX_DOPPLER, STYLE_GRAY);
    panel_status("", 0);
}

void doppler_rx_pressed(void)
{
    if (vfo_doppler_mode != 2)
    {
        vfo_doppler_mode = 2;
        panel_style(PANEL_RX_DOPPLER, STYLE_DARKGREEN);
        panel_style(PANEL_TX_DOPPLER, STYLE_GRAY);
        panel_status("Rx frequency is doppler adjusted from Tx VFO", 0);
        return;
    }
    vfo_doppler_mode = 0;
    panel_style(PANEL_TX_DOPPLER, STYLE_GRAY);
    panel_style(PANEL_RX_DOPPLER, STYLE_GRAY);
    panel_status("", 0);
}

static void doppler_show_mode(void)
{
    static const char *const texts[4] = {"Doppler Control is OFF", "Home Station Doppler selected",
                                         "Dx Station Doppler selected", "Mutual Doppler selected"};
    panel_status(texts[doppler_mode >= 0 && doppler_mode < 4 ? doppler_mode : 0], 0);
    panel_update_display();
}

void doppler_home_pressed(void)
{
    if (!home_station_valid)
    {
        home_doppler_on = 0;
        doppler_mode = 0;
    }
    else if (home_doppler_on != 1)
    {
        home_doppler_on = 1;
        doppler_mode = dx_doppler_on ? 3 : 1;
    }
    else
    {
        home_doppler_on = 0;
        doppler_mode = dx_doppler_on == 1 ? 2 : 0;
    }
    doppler_show_mode();
}

void doppler_dx_pressed(void)
{
    if (!dx_station_valid || dx_doppler_on == 1)
    {
        dx_doppler_on = 0;
        doppler_mode = home_doppler_on == 1 ? 1 : 0;
    }
    else
    {
        dx_doppler_on = 1;
        doppler_mode = home_doppler_on ? 3 : 2;
    }
    doppler_show_mode();
}
