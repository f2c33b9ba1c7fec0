#include "remote/psk_reporter.h"

#include "bus/brt.h"
#include "bus/encoders.h"
#include "bus/sei_commands.h"
#include "core/clock.h"
#include "core/state.h"
#include "remote/net.h"
#include "remote/rotctl.h"

#include <QtGlobal>
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

uint32_t psk_sequence = 0;
uint32_t psk_domain = 0;

// The service's own numbers: its enterprise number, the two template ids and
// the field numbers of its information elements.
enum
{
    PSK_ENTERPRISE = 30351,
    PSK_RECEIVER_TEMPLATE = 0x9992,
    PSK_SENDER_TEMPLATE = 0x9993,
    PSK_VARIABLE = 0xFFFF,
    PSK_HEADER_SIZE = 16
};

static int psk_socket = -1;
static char psk_host[256];
static int psk_port = PSK_DEFAULT_PORT;
static struct sockaddr_in psk_collector;
static int psk_collector_known = 0;

static char psk_receiver_call[PSK_CALL_CHARS + 1];
static char psk_receiver_grid[PSK_GRID_CHARS + 1];
static char psk_receiver_software[PSK_TEXT_CHARS + 1];
static char psk_receiver_antenna[PSK_TEXT_CHARS + 1];
static char psk_receiver_further[PSK_TEXT_CHARS + 1]; // kept, never sent

static PskReport psk_queue[PSK_QUEUE_SIZE];
static int psk_count = 0;
static std::mutex psk_queue_lock;

// The two descriptors never change: the receiver's options template (call
// sign, locator, software, antenna, all of variable length) and the sender's
// template (call sign, locator, frequency in 5 bytes, SNR, mode, information
// source, flow start seconds).
static const uint8_t psk_receiver_descriptor[44] = {
    0x00, 0x03, 0x00, 0x2C, 0x99, 0x92, 0x00, 0x04, 0x00, 0x00, 0x80, 0x02, 0xFF, 0xFF, 0x00,
    0x00, 0x76, 0x8F, 0x80, 0x04, 0xFF, 0xFF, 0x00, 0x00, 0x76, 0x8F, 0x80, 0x08, 0xFF, 0xFF,
    0x00, 0x00, 0x76, 0x8F, 0x80, 0x09, 0xFF, 0xFF, 0x00, 0x00, 0x76, 0x8F, 0x00, 0x00};
static const uint8_t psk_sender_descriptor[60] = {
    0x00, 0x02, 0x00, 0x3C, 0x99, 0x93, 0x00, 0x07, 0x80, 0x01, 0xFF, 0xFF, 0x00, 0x00, 0x76,
    0x8F, 0x80, 0x03, 0xFF, 0xFF, 0x00, 0x00, 0x76, 0x8F, 0x80, 0x05, 0x00, 0x05, 0x00, 0x00,
    0x76, 0x8F, 0x80, 0x06, 0x00, 0x01, 0x00, 0x00, 0x76, 0x8F, 0x80, 0x0A, 0xFF, 0xFF, 0x00,
    0x00, 0x76, 0x8F, 0x80, 0x0B, 0x00, 0x01, 0x00, 0x00, 0x76, 0x8F, 0x00, 0x96, 0x00, 0x04};

static void psk_copy(char *field, int chars, const char *text)
{
    text_copy(field, chars + 1, text ? text : "");
}

int psk_parse_collector(const char *text, char *host, int host_size, int *port)
{
    const char *colon = strrchr(text, ':');
    int length = colon ? (int)(colon - text) : (int)strlen(text);
    int number = PSK_DEFAULT_PORT;
    if (colon)
    {
        char *end = nullptr;
        long value = strtol(colon + 1, &end, 10);
        if (end == colon + 1 || *end || value < 1 || value > 65535)
        {
            return -1;
        }
        number = (int)value;
    }
    if (length < 1 || length >= host_size)
    {
        return -1;
    }
    memcpy(host, text, (size_t)length);
    host[length] = 0;
    *port = number;
    return 0;
}

int psk_init(void)
{
    if (net_start() != 0)
    {
        if (rotctl_debug)
        {
            qDebug("PskReporter could not find hostname");
        }
        return -1;
    }
    if (psk_socket < 0)
    {
        psk_socket = net_datagram_socket();
    }
    if (psk_socket < 0)
    {
        if (rotctl_debug)
        {
            qDebug("Could not create socket for PskReporter");
        }
        return PSK_FAILED;
    }
    psk_collector_known = 0;
    if (psk_parse_collector(settings.Collector, psk_host, sizeof psk_host, &psk_port) != 0)
    {
        psk_host[0] = 0;
        if (rotctl_debug)
        {
            qDebug("Could not resolve PskReporter IP address");
        }
        return PSK_NO_ADDRESS;
    }
    // The domain tells this run's datagrams from those of the run before.
    srand((unsigned)clock_utc());
    psk_domain = (uint32_t)rand();
    return PSK_OK;
}

int psk_set_receiver(const char *call, const char *grid, const char *software, const char *antenna,
                     const char *further)
{
    // The "-R" marks the receiver's own record; the call gives way to it.
    psk_copy(psk_receiver_call, PSK_CALL_CHARS - 2, call);
    memcpy(psk_receiver_call + strlen(psk_receiver_call), "-R", 3);
    psk_copy(psk_receiver_grid, PSK_GRID_CHARS, grid);
    psk_copy(psk_receiver_software, PSK_TEXT_CHARS, software);
    psk_copy(psk_receiver_antenna, PSK_TEXT_CHARS, antenna);
    psk_copy(psk_receiver_further, PSK_TEXT_CHARS, further);
    return PSK_OK;
}

int psk_add_report(const char *call, const char *grid, int64_t frequency, uint8_t snr, uint8_t mode_flag,
                   const char *mode, uint32_t information_source, uint32_t time)
{
    std::lock_guard<std::mutex> hold(psk_queue_lock);
    if (psk_count >= PSK_QUEUE_SIZE)
    {
        if (trace_debug)
        {
            qDebug("PskReporter message queue is full");
        }
        return PSK_FAILED;
    }
    PskReport *r = &psk_queue[psk_count];
    memset(r, 0, sizeof *r);
    psk_copy(r->call, PSK_CALL_CHARS, call);
    psk_copy(r->grid, PSK_GRID_CHARS, grid);
    r->frequency = frequency;
    r->snr = snr;
    r->mode_flag = mode_flag;
    psk_copy(r->mode, PSK_MODE_CHARS, mode);
    r->information_source = information_source;
    r->time = time;
    psk_count++;
    if (trace_debug)
    {
        qDebug("report (%d) added to queue (call:%s grid:%s)", psk_count, r->call, r->grid);
    }
    return PSK_OK;
}

int psk_queue_count(void)
{
    std::lock_guard<std::mutex> hold(psk_queue_lock);
    return psk_count;
}

// A cursor over the datagram buffer; a write that would pass its end is
// dropped and remembered, so a layout error can never run over the buffer.
struct PskWriter
{
    uint8_t *at;
    int size;
    int length;
    int overrun;
};

static void psk_put(PskWriter *w, const void *bytes, int count)
{
    if (w->length + count > w->size)
    {
        w->overrun = 1;
        return;
    }
    memcpy(w->at + w->length, bytes, (size_t)count);
    w->length += count;
}

static void psk_put_u8(PskWriter *w, uint32_t value)
{
    uint8_t byte = (uint8_t)value;
    psk_put(w, &byte, 1);
}

static void psk_put_u16(PskWriter *w, uint32_t value)
{
    uint8_t bytes[2] = {(uint8_t)(value >> 8), (uint8_t)value};
    psk_put(w, bytes, 2);
}

static void psk_put_u32(PskWriter *w, uint32_t value)
{
    uint8_t bytes[4] = {(uint8_t)(value >> 24), (uint8_t)(value >> 16), (uint8_t)(value >> 8), (uint8_t)value};
    psk_put(w, bytes, 4);
}

// IPFIX's variable-length form: one length byte, then the text. The texts
// here are at most 64 characters, well short of the 255 that would need the
// three-byte form.
static void psk_put_text(PskWriter *w, const char *text)
{
    int length = (int)strlen(text);
    psk_put_u8(w, (uint32_t)length);
    psk_put(w, text, length);
}

static void psk_patch_u16(PskWriter *w, int offset, uint32_t value)
{
    if (!w->overrun && offset + 2 <= w->length)
    {
        w->at[offset] = (uint8_t)(value >> 8);
        w->at[offset + 1] = (uint8_t)value;
    }
}

static void psk_trace_piece(const char *title, const uint8_t *piece, int length)
{
    if (trace_debug)
    {
        qDebug(title, length);
        net_hexdump(0, piece, length);
    }
}

static void psk_put_receiver(PskWriter *w)
{
    int start = w->length;
    psk_put_u16(w, PSK_RECEIVER_TEMPLATE);
    psk_put_u16(w, 0);
    psk_put_text(w, psk_receiver_call);
    psk_put_text(w, psk_receiver_grid);
    psk_put_text(w, psk_receiver_software);
    psk_put_text(w, psk_receiver_antenna);
    // Zeros up to the next multiple of 4. A set that ends on one gets none:
    // four zero bytes would read as a fifth record of four empty texts.
    static const uint8_t zeros[3] = {0, 0, 0};
    psk_put(w, zeros, (4 - (w->length - start) % 4) % 4);
    psk_patch_u16(w, start + 2, (uint32_t)(w->length - start));
}

// The queue goes into the set record by record, and is empty afterwards.
static void psk_put_senders(PskWriter *w)
{
    int start = w->length;
    psk_put_u16(w, PSK_SENDER_TEMPLATE);
    psk_put_u16(w, 0);
    std::lock_guard<std::mutex> hold(psk_queue_lock);
    for (int i = 0; i < psk_count; i++)
    {
        const PskReport *r = &psk_queue[i];
        psk_put_text(w, r->call);
        psk_put_text(w, r->grid);
        psk_put_u8(w, (uint32_t)((uint64_t)r->frequency >> 32));
        psk_put_u32(w, (uint32_t)r->frequency);
        psk_put_u8(w, r->snr);
        psk_put_text(w, r->mode);
        psk_put_u8(w, r->information_source);
        psk_put_u32(w, r->time);
    }
    psk_count = 0;
    psk_patch_u16(w, start + 2, (uint32_t)(w->length - start));
}

int psk_build_packet(uint8_t *packet, int size, uint32_t export_time)
{
    if (psk_queue_count() == 0)
    {
        return 0;
    }
    PskWriter w = {packet, size, 0, 0};
    memset(packet, 0, (size_t)size);
    psk_put_u16(&w, 10);
    psk_put_u16(&w, 0);
    psk_put_u32(&w, export_time);
    psk_put_u32(&w, psk_sequence++);
    psk_put_u32(&w, psk_domain);
    psk_trace_piece("PskReporter Message Header (%d bytes):", packet, w.length);

    int at = w.length;
    psk_put(&w, psk_receiver_descriptor, sizeof psk_receiver_descriptor);
    psk_trace_piece("PskReporter Receiver Information Descriptor (%d bytes):", packet + at, w.length - at);
    at = w.length;
    psk_put(&w, psk_sender_descriptor, sizeof psk_sender_descriptor);
    psk_trace_piece("PskReporter Sender Information Descriptors (%d bytes):", packet + at, w.length - at);
    at = w.length;
    psk_put_receiver(&w);
    psk_trace_piece("PskReporter Receiver Payload (%d bytes):", packet + at, w.length - at);
    at = w.length;
    psk_put_senders(&w);
    psk_trace_piece("PskReporter Sender Payload (%d bytes):", packet + at, w.length - at);

    psk_patch_u16(&w, 2, (uint32_t)w.length);
    return w.overrun ? 0 : w.length;
}

// The collector's address, looked up once and kept for the run; a failed
// look-up is tried again with the next datagram.
static int psk_resolve(void)
{
    if (psk_collector_known)
    {
        return 0;
    }
    struct in_addr address;
    if (!psk_host[0] || net_resolve(psk_host, PSK_RESOLVE_MS, &address) != 0)
    {
        if (rotctl_debug)
        {
            qDebug("Could not resolve PskReporter IP address");
        }
        return PSK_NO_ADDRESS;
    }
    memset(&psk_collector, 0, sizeof psk_collector);
    psk_collector.sin_family = AF_INET;
    psk_collector.sin_addr = address;
    psk_collector.sin_port = htons((uint16_t)psk_port);
    psk_collector_known = 1;
    const uint8_t *b = (const uint8_t *)&address.s_addr;
    if (rotctl_debug)
    {
        qDebug("PskReporter IP Address : %u.%u.%u.%u Port : %d", b[0], b[1], b[2], b[3], psk_port);
    }
    return 0;
}

int psk_send(void)
{
    static uint8_t packet[PSK_PACKET_SIZE];
    int length = psk_build_packet(packet, sizeof packet, (uint32_t)clock_utc());
    if (length == 0)
    {
        return PSK_OK;
    }
    if (rotctl_debug)
    {
        qDebug("UDP packet buffer (%d bytes):", length);
        net_hexdump(0, packet, length);
    }
    if (psk_resolve() != 0)
    {
        return PSK_NO_ADDRESS;
    }
    int count = psk_socket < 0 ? -1 : net_sendto(psk_socket, (const char *)packet, length, &psk_collector);
    if (rotctl_debug)
    {
        qDebug("PskReporter update sent, count=%d", count);
    }
    return PSK_OK;
}

// The factory record of the encoder at an address, or zeros.
static void psk_encoder_info(int address, EncoderFactoryInfo *info)
{
    memset(info, 0, sizeof *info);
    if (address < 0 || address >= ENCODER_COUNT)
    {
        return;
    }
    if (encoders[address].Type == ENCODER_BRT)
    {
        brt_get_factory_info(address, info);
        return;
    }
    uint8_t crc;
    sei_read_factory_info(address, info, &crc);
}

int psk_self_report(void)
{
    if (!settings.ReportActive || !settings.Callsign[0] || !settings.Grid[0])
    {
        return 0;
    }
    EncoderFactoryInfo az, el;
    psk_encoder_info(settings.AZ_Addr, &az);
    psk_encoder_info(settings.EL_Addr, &el);
    char antenna[PSK_TEXT_CHARS + 1];
    snprintf(antenna, sizeof antenna, "AZ(%d %d %02d-%04d) EL(%d %d %02d-%04d)", az.Model, (int)az.Serial, az.Month,
             az.Year, el.Model, (int)el.Serial, el.Month, el.Year);
    psk_set_receiver(settings.Callsign, settings.Grid, version_text, antenna, "");
    // The spot itself is a fixed one; only the frequency is the station's.
    int64_t hertz = (int64_t)(settings.Frequency * 1000000.0);
    int status = psk_add_report("ZZ9ZZZ", "JJ00aa", hertz, 0, 0, "ROS", 0, (uint32_t)clock_utc());
    if (status != 0)
    {
        return status;
    }
    return psk_send();
}

void psk_reset(void)
{
    net_close(psk_socket);
    psk_socket = -1;
    psk_host[0] = 0;
    psk_port = PSK_DEFAULT_PORT;
    psk_collector_known = 0;
    psk_sequence = 0;
    psk_domain = 0;
    psk_set_receiver(nullptr, nullptr, nullptr, nullptr, nullptr);
    psk_receiver_call[0] = 0;
    std::lock_guard<std::mutex> hold(psk_queue_lock);
    psk_count = 0;
}
