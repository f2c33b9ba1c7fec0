// The PSK Reporter sender: reception reports in the service's IPFIX form, one
// UDP datagram to the collector. The station only ever sends its self report,
// which names the station, its locator, the program and, in the antenna text,
// the two encoders; the queue would take up to 20 spots.
#pragma once

#include <cstdint>
#include <netinet/in.h>

enum
{
    PSK_QUEUE_SIZE = 20,
    PSK_PACKET_SIZE = 1400,
    PSK_DEFAULT_PORT = 4739,
    PSK_RESOLVE_MS = 1000, // the longest the name service may hold the panel up
    // Characters kept of each text; the fields hold a terminating zero too.
    PSK_CALL_CHARS = 16,
    PSK_GRID_CHARS = 7,
    PSK_TEXT_CHARS = 64,
    PSK_MODE_CHARS = 8
};

enum PskResult
{
    PSK_OK = 0,
    PSK_FAILED = -1,     // no socket, or a full queue
    PSK_NO_ADDRESS = -2, // the collector's name is unusable or did not resolve
};

struct PskReport
{
    char call[PSK_CALL_CHARS + 1];
    char grid[PSK_GRID_CHARS + 1];
    int64_t frequency; // hertz
    uint8_t snr;
    uint8_t mode_flag; // kept, not sent
    char mode[PSK_MODE_CHARS + 1];
    uint32_t information_source; // its low byte is sent
    uint32_t time;               // seconds since 1970
};

extern uint32_t psk_sequence; // of the next datagram
extern uint32_t psk_domain;   // the observation domain of this run

// Socket, collector (the REPORT Collector setting, "host" or "host:port") and
// domain. 0; -1 no socket; -2 the collector setting names no host or port.
// The name itself is resolved when the first datagram goes out, so a station
// with nothing to report, or no network yet, never waits on it.
int psk_init(void);
// Any text may be null. The call sign gets "-R" behind it. 0.
int psk_set_receiver(const char *call, const char *grid, const char *software, const char *antenna,
                     const char *further);
// 0, or -1 with the queue unchanged when it already holds 20.
int psk_add_report(const char *call, const char *grid, int64_t frequency, uint8_t snr, uint8_t mode_flag,
                   const char *mode, uint32_t information_source, uint32_t time);
int psk_queue_count(void);
// Lay the datagram out from the receiver texts and the queue, which it
// empties, and count the sequence on. The length, or 0 for an empty queue.
int psk_build_packet(uint8_t *packet, int size, uint32_t export_time);
// Build and send one datagram. 0, also for an empty queue or a failed send;
// -2 when the collector's name did not resolve in time (the datagram is lost).
int psk_send(void);
// The station's self report, when REPORT Active is set and the station has a
// call sign and a locator. 0, or the result of the failing step.
int psk_self_report(void);
// Close the socket and forget everything (the window's end, and tests).
void psk_reset(void);

// "host:port" or "host" into its parts. 0, or -1 for an empty host or a port
// that is not a number from 1 to 65535.
int psk_parse_collector(const char *text, char *host, int host_size, int *port);
