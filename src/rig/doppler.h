// Doppler tuning: the panel's rig and Doppler buttons, and the rig group of
// the 50 ms cycle that keeps one VFO shifted from the other by the Moon's
// Doppler. Plain functions over the shared state; the panel only through its
// seam, so all of it runs without a window.
#pragma once

#include "core/state.h"

#include <cstdint>

// Nearest hertz, halves away from zero: 12.5 is 13 and -12.5 is -13.
int64_t doppler_round(double hz);
// The shift asked for by doppler_mode: 0, the home figure, the DX figure or
// the mean of the two.
double doppler_correction(void);

// Read the leading VFO, write the following one shifted by the correction,
// and take both into rx_frequency_hz and tx_frequency_hz. vfo_mode 1: TX (B)
// follows RX (A); 2: RX follows TX; 0: both only read. A VFO that has given
// no reading leaves both frequencies alone and nothing is written.
void doppler_follow(int vfo_mode, double correction);
// The rig group of the cycle, while rig control is on: move the engine on;
// when its walk has ended, write the following VFO and start the next walk;
// after RIG_SILENT_LIMIT unanswered commands switch rig control off with
// "Radio not answering on <port>". Off, show the station's Frequency. Then
// the two frequency labels. Never waits for the radio.
void doppler_frequency_group(void);
void doppler_show_frequencies(void);

// The buttons.
void doppler_omnirig_pressed(void);
void doppler_tx_pressed(void);
void doppler_rx_pressed(void);
void doppler_home_pressed(void);
void doppler_dx_pressed(void);

// Switch rig control off: OmniRigActive cleared and the link closed.
void rig_control_off(void);
