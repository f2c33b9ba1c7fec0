// The ASCII side of the simulated radio, after Kenwood's published CAT
// layout: two letters, parameters, ';'. A command with no parameters reads,
// one with parameters sets and is answered by nothing.
#pragma once

#include "rigsim_radio.h"

struct RigsimCatStream
{
    char command[64];
    int length;
};

// Feed one byte; returns the command's length (with its ';') when this byte
// completed one, which then stands in stream->command, terminated.
int rigsim_cat_feed(RigsimCatStream *stream, char byte);

// The radio's answer to one command: its length, 0 for none.
int rigsim_cat_reply(RigsimRadio *radio, const char *command, char *reply, int size);
