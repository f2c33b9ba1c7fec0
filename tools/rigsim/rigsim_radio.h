// The simulated radio: two VFOs and the few switches that the rig files poll,
// a dial that an operator may be turning, and the faults a test can ask for.
// Plain state moved by plain functions; the protocols read and change it.
#pragma once

#include <cstdint>

enum RigsimProtocol
{
    RIGSIM_CIV, // Icom CI-V: binary frames FE FE to from command ... FD
    RIGSIM_CAT  // Kenwood CAT: ASCII commands ending in ';'
};

struct RigsimRadio
{
    int64_t vfo[2];      // A and B, in hertz
    double dial_rate[2]; // hertz a second the operator turns each VFO
    double dial_rest[2]; // the part of a hertz not yet shown
    int selected;        // 0 VFO A, 1 VFO B
    int mode;            // CI-V mode number
    int split;
    int transmit;
    // Faults, for tests of the engine's patience.
    int silent;      // nothing comes back, not even the echo
    int off;         // nothing is even read from the line
    int echo;        // a one-wire CI-V bus hears its own bytes
    int garble;      // replies still to be garbled
    int cut;         // bytes to drop from the end of the next reply
    int noise;       // the next reply is this many bytes of noise instead
    uint8_t address; // CI-V address of the radio
    int64_t frames_in, frames_out;
};

void rigsim_radio_init(RigsimRadio *radio, int protocol);
// Let elapsed_ms pass: the dial moves the VFOs it turns.
void rigsim_advance(RigsimRadio *radio, int elapsed_ms);

// The control channel: one line in, one line of reply out ("OK ...", "ERR ...").
//   freq a|b HZ     set a VFO        turn a|b HZ   step a VFO by HZ
//   rate a|b HZ/S   turn the dial    select a|b    pick the VFO in use
//   silent 0|1      echo 0|1         garble N      the next N replies garbled
//   off 0|1         the radio reads nothing: the line fills up
//   cut N           the next reply N bytes short
//   noise N         the next reply N bytes of noise with no end
//   status          "OK A=... B=... SEL=a SILENT=0 IN=... OUT=..."
int rigsim_control(RigsimRadio *radio, const char *line, char *reply, int size);

// Apply the pending faults to a reply about to be sent, in place. Returns the
// new length (0 when silent). protocol chooses which byte a garble hits: the
// one a radio's answer is checked by (CI-V's address, CAT's command letter).
int rigsim_apply_faults(RigsimRadio *radio, int protocol, uint8_t *reply, int length, int size);
