#include "rigsim_radio.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

void rigsim_radio_init(RigsimRadio *radio, int protocol)
{
    memset(radio, 0, sizeof *radio);
    radio->vfo[0] = 144000000;
    radio->vfo[1] = 144000000;
    radio->mode = 3; // CW
    radio->echo = protocol == RIGSIM_CIV;
    radio->address = 0xA2;
}

void rigsim_advance(RigsimRadio *radio, int elapsed_ms)
{
    for (int v = 0; v < 2; v++)
    {
        if (radio->dial_rate[v] == 0.0)
        {
            continue;
        }
        radio->dial_rest[v] += radio->dial_rate[v] * elapsed_ms / 1000.0;
        int64_t whole = (int64_t)radio->dial_rest[v];
        radio->vfo[v] += whole;
        radio->dial_rest[v] -= (double)whole;
    }
}

static int rigsim_vfo_index(const char *name)
{
    if (strcmp(name, "a") == 0 || strcmp(name, "A") == 0)
    {
        return 0;
    }
    if (strcmp(name, "b") == 0 || strcmp(name, "B") == 0)
    {
        return 1;
    }
    return -1;
}

int rigsim_control(RigsimRadio *radio, const char *line, char *reply, int size)
{
    char verb[16] = "", first[24] = "", second[24] = "";
    int n = sscanf(line, "%15s %23s %23s", verb, first, second);
    int vfo = rigsim_vfo_index(first);
    if (n == 1 && strcmp(verb, "status") == 0)
    {
        snprintf(reply, (size_t)size, "OK A=%lld B=%lld SEL=%c SILENT=%d IN=%lld OUT=%lld", (long long)radio->vfo[0],
                 (long long)radio->vfo[1], radio->selected ? 'b' : 'a', radio->silent, (long long)radio->frames_in,
                 (long long)radio->frames_out);
        return 0;
    }
    if (n == 3 && vfo >= 0 && strcmp(verb, "freq") == 0)
    {
        radio->vfo[vfo] = atoll(second);
    }
    else if (n == 3 && vfo >= 0 && strcmp(verb, "turn") == 0)
    {
        radio->vfo[vfo] += atoll(second);
    }
    else if (n == 3 && vfo >= 0 && strcmp(verb, "rate") == 0)
    {
        radio->dial_rate[vfo] = atof(second);
    }
    else if (n == 2 && vfo >= 0 && strcmp(verb, "select") == 0)
    {
        radio->selected = vfo;
    }
    else if (n == 2 && strcmp(verb, "silent") == 0)
    {
        radio->silent = atoi(first) != 0;
    }
    else if (n == 2 && strcmp(verb, "off") == 0)
    {
        radio->off = atoi(first) != 0;
    }
    else if (n == 2 && strcmp(verb, "echo") == 0)
    {
        radio->echo = atoi(first) != 0;
    }
    else if (n == 2 && strcmp(verb, "garble") == 0)
    {
        radio->garble = atoi(first);
    }
    else if (n == 2 && strcmp(verb, "cut") == 0)
    {
        radio->cut = atoi(first);
    }
    else if (n == 2 && strcmp(verb, "noise") == 0)
    {
        radio->noise = atoi(first);
    }
    else
    {
        snprintf(reply, (size_t)size, "ERR %s", line);
        return -1;
    }
    snprintf(reply, (size_t)size, "OK");
    return 0;
}

int rigsim_apply_faults(RigsimRadio *radio, int protocol, uint8_t *reply, int length, int size)
{
    if (radio->silent)
    {
        return 0;
    }
    if (radio->noise > 0)
    {
        // Noise that never holds a terminator: neither ';' nor FD.
        int n = radio->noise < size ? radio->noise : size;
        for (int i = 0; i < n; i++)
        {
            reply[i] = (uint8_t)('a' + i % 26);
        }
        radio->noise = 0;
        return n;
    }
    if (radio->garble > 0 && length > 2)
    {
        reply[protocol == RIGSIM_CIV ? 2 : 1] ^= 0x55;
        radio->garble--;
    }
    if (radio->cut > 0)
    {
        length = radio->cut < length ? length - radio->cut : 0;
        radio->cut = 0;
    }
    return length;
}
