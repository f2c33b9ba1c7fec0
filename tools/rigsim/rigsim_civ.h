// The CI-V side of the simulated radio, after Icom's published frame layout:
//   FE FE <to> <from> <command> [<sub command>] [<data>] FD
// Frequencies are five bytes of BCD, the lowest two digits first.
#pragma once

#include "rigsim_radio.h"

#include <cstdint>

// Collects bytes from the line into whole frames.
struct RigsimCivStream
{
    uint8_t frame[64];
    int length;
};

// Feed one byte. Returns the frame's length when this byte completed one
// (the frame is then in stream->frame), else 0.
int rigsim_civ_feed(RigsimCivStream *stream, uint8_t byte);

// The radio's answer to one whole frame, or 0 bytes when it answers nothing
// (a frame for another address, or a transceive broadcast).
int rigsim_civ_reply(RigsimRadio *radio, const uint8_t *frame, int length, uint8_t *reply, int size);

// Five BCD bytes of a frequency, and back.
void rigsim_civ_put_frequency(int64_t hz, uint8_t bcd[5]);
int64_t rigsim_civ_get_frequency(const uint8_t bcd[5]);
