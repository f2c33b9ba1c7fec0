#include "rigsim_civ.h"

#include <cstring>

enum
{
    CIV_PREAMBLE = 0xFE,
    CIV_END = 0xFD,
    CIV_OK = 0xFB,
    CIV_NG = 0xFA,
    CIV_BROADCAST = 0x00
};

int rigsim_civ_feed(RigsimCivStream *stream, uint8_t byte)
{
    // A frame starts at two preambles; anything before them is line noise.
    if (stream->length < 2 && byte != CIV_PREAMBLE)
    {
        stream->length = 0;
        return 0;
    }
    if (byte == CIV_PREAMBLE && stream->length >= 2 && stream->frame[stream->length - 1] == CIV_PREAMBLE)
    {
        // A new frame began before the last one ended (or a third preamble
        // came): start again from this pair. No data byte is ever FE.
        stream->length = 2;
        return 0;
    }
    if (stream->length >= (int)sizeof stream->frame)
    {
        stream->length = 0;
        return 0;
    }
    stream->frame[stream->length++] = byte;
    if (byte == CIV_END)
    {
        int length = stream->length;
        stream->length = 0;
        return length;
    }
    return 0;
}

void rigsim_civ_put_frequency(int64_t hz, uint8_t bcd[5])
{
    for (int i = 0; i < 5; i++)
    {
        int low = (int)(hz % 10);
        hz /= 10;
        int high = (int)(hz % 10);
        hz /= 10;
        bcd[i] = (uint8_t)((high << 4) | low);
    }
}

int64_t rigsim_civ_get_frequency(const uint8_t bcd[5])
{
    int64_t hz = 0;
    for (int i = 4; i >= 0; i--)
    {
        hz = hz * 100 + (bcd[i] >> 4) * 10 + (bcd[i] & 0x0F);
    }
    return hz;
}

static int rigsim_civ_frame(const RigsimRadio *radio, uint8_t to, const uint8_t *body, int body_length, uint8_t *reply,
                            int size)
{
    if (body_length + 5 > size)
    {
        return 0;
    }
    reply[0] = CIV_PREAMBLE;
    reply[1] = CIV_PREAMBLE;
    reply[2] = to;
    reply[3] = radio->address;
    memcpy(reply + 4, body, (size_t)body_length);
    reply[4 + body_length] = CIV_END;
    return body_length + 5;
}

static int rigsim_civ_done(uint8_t *body)
{
    body[0] = CIV_OK;
    return 1;
}

// Each handler gives the reply body's length, or 0 for a command it does
// not take (the radio then answers FA).
static int rigsim_civ_frequency(RigsimRadio *radio, const uint8_t *data, int n, uint8_t *body)
{
    int sel = radio->selected;
    if (data[0] == 0x03 && n == 1) // read the operating frequency
    {
        body[0] = 0x03;
        rigsim_civ_put_frequency(radio->vfo[sel], body + 1);
        return 6;
    }
    if (data[0] == 0x05 && n == 6) // set the operating frequency
    {
        radio->vfo[sel] = rigsim_civ_get_frequency(data + 1);
        return rigsim_civ_done(body);
    }
    if (data[0] != 0x25 || n < 2 || data[1] > 1)
    {
        return 0;
    }
    // 25 00 is the VFO in use, 25 01 the other one.
    int vfo = data[1] ? 1 - sel : sel;
    if (n == 2)
    {
        body[0] = 0x25;
        body[1] = data[1];
        rigsim_civ_put_frequency(radio->vfo[vfo], body + 2);
        return 7;
    }
    if (n != 7)
    {
        return 0;
    }
    radio->vfo[vfo] = rigsim_civ_get_frequency(data + 2);
    return rigsim_civ_done(body);
}

// 07: VFO A/B or main/sub, equalise, swap; D2 reads which is in use.
static int rigsim_civ_vfo(RigsimRadio *radio, const uint8_t *data, int n, uint8_t *body)
{
    int sel = radio->selected;
    if (n != 2)
    {
        return 0;
    }
    switch (data[1])
    {
    case 0x00:
    case 0x01:
    case 0xD0:
    case 0xD1:
        radio->selected = data[1] & 1;
        return rigsim_civ_done(body);
    case 0xA0:
        radio->vfo[1 - sel] = radio->vfo[sel];
        return rigsim_civ_done(body);
    case 0xB0:
    {
        int64_t other = radio->vfo[1 - sel];
        radio->vfo[1 - sel] = radio->vfo[sel];
        radio->vfo[sel] = other;
        return rigsim_civ_done(body);
    }
    case 0xD2:
        body[0] = 0x07;
        body[1] = 0xD2;
        body[2] = (uint8_t)sel;
        return 3;
    default:
        return 0;
    }
}

// Mode, split and transmit state, read and set.
static int rigsim_civ_state(RigsimRadio *radio, const uint8_t *data, int n, uint8_t *body)
{
    switch (data[0])
    {
    case 0x04:
        body[0] = 0x04;
        body[1] = (uint8_t)radio->mode;
        body[2] = 0x01;
        return 3;
    case 0x06:
        if (n < 2)
        {
            return 0;
        }
        radio->mode = data[1];
        return rigsim_civ_done(body);
    case 0x0F:
        if (n == 1)
        {
            body[0] = 0x0F;
            body[1] = (uint8_t)radio->split;
            return 2;
        }
        radio->split = data[1] == 0x01;
        return rigsim_civ_done(body);
    case 0x1C:
        if (n == 2 && data[1] == 0x00)
        {
            body[0] = 0x1C;
            body[1] = 0x00;
            body[2] = (uint8_t)radio->transmit;
            return 3;
        }
        if (n == 3 && data[1] == 0x00)
        {
            radio->transmit = data[2] != 0;
            return rigsim_civ_done(body);
        }
        return 0;
    default:
        return 0;
    }
}

// Levels (14, two data bytes), functions (16), menu settings (1A) and RIT
// (21): a read gives zeros, a setting is accepted and forgotten.
static int rigsim_civ_settings(const uint8_t *data, int n, uint8_t *body)
{
    int cmd = data[0];
    if (cmd != 0x14 && cmd != 0x16 && cmd != 0x1A && cmd != 0x21)
    {
        return 0;
    }
    if (n == 2 || (cmd == 0x1A && n < 5))
    {
        int zeros = cmd == 0x14 ? 2 : 1;
        memcpy(body, data, (size_t)n);
        memset(body + n, 0, (size_t)zeros);
        return n + zeros;
    }
    return rigsim_civ_done(body);
}

static int rigsim_civ_body(RigsimRadio *radio, const uint8_t *data, int n, uint8_t *body)
{
    int length = 0;
    switch (data[0])
    {
    case 0x03:
    case 0x05:
    case 0x25:
        length = rigsim_civ_frequency(radio, data, n, body);
        break;
    case 0x07:
        length = rigsim_civ_vfo(radio, data, n, body);
        break;
    case 0x04:
    case 0x06:
    case 0x0F:
    case 0x1C:
        length = rigsim_civ_state(radio, data, n, body);
        break;
    default:
        length = rigsim_civ_settings(data, n, body);
        break;
    }
    if (length == 0)
    {
        body[0] = CIV_NG;
        length = 1;
    }
    return length;
}

int rigsim_civ_reply(RigsimRadio *radio, const uint8_t *frame, int length, uint8_t *reply, int size)
{
    // FE FE to from command ... FD: at least a command byte.
    if (length < 6 || frame[0] != CIV_PREAMBLE || frame[1] != CIV_PREAMBLE || frame[length - 1] != CIV_END)
    {
        return 0;
    }
    uint8_t to = frame[2];
    uint8_t from = frame[3];
    if (to != radio->address && to != CIV_BROADCAST)
    {
        return 0;
    }
    const uint8_t *data = frame + 4;
    int n = length - 5;
    // Transceive commands (00 frequency, 01 mode) are announcements: no answer.
    if (data[0] == 0x00 && n == 6)
    {
        radio->vfo[radio->selected] = rigsim_civ_get_frequency(data + 1);
        return 0;
    }
    if (data[0] == 0x01)
    {
        radio->mode = n > 1 ? data[1] : radio->mode;
        return 0;
    }
    uint8_t body[40];
    int body_length = rigsim_civ_body(radio, data, n < 32 ? n : 32, body);
    return rigsim_civ_frame(radio, from, body, body_length, reply, size);
}
