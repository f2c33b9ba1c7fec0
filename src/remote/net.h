// The network layer: plain functions over the system's sockets, shared by the
// rotctl server, the PstRotator client and the PSK Reporter sender. This is
// the only file that calls socket functions. Sockets stay blocking; a caller
// reads or accepts only after net_select has said the socket is ready, so
// nothing here stalls the 50 ms cycle.
#pragma once

#include <cstdint>
#include <netinet/in.h>

struct ifaddrs;

// The trace lines of this layer; a developer turns them on, nothing else does.
extern int net_debug;

// Kept for the call sites of the services: POSIX sockets need no library
// start, so both do nothing and return 0.
int net_start(void);
int net_stop(void);

// The local end of a service: resolve service, host and protocol by name,
// make the socket, bind it and, for TCP, listen. The socket, or -1.
int net_init_client(const char *host, const char *service, const char *protocol);
// 0; -1 is no socket and is left alone.
int net_close(int socket);
// The new connected socket, or the accept's -1.
int net_accept(int listener);
// Bytes read, or -1 when the read gave nothing (a peer's close looks the same).
int net_read(int socket, char *buffer, int size);
// One datagram after a wait of at most a second; its sender goes to peer.
// Bytes read, or -1.
int net_recvfrom(int socket, char *buffer, int size, struct sockaddr_in *peer);
// The whole reply in one send, so a client reading line by line never sees
// half of it. The send never waits: a peer whose buffers are full gets less
// than length, or -1. The send's result.
int net_write(int socket, const char *data, int length);
// The same host at another port: where a datagram's answer goes.
void net_address_with_port(const struct sockaddr_in *peer, int port, struct sockaddr_in *address);
// Bytes sent, or -1; never waits.
int net_sendto(int socket, const char *data, int length, const struct sockaddr_in *peer);

// An unbound datagram socket for sending, or -1.
int net_datagram_socket(void);
// A host name or dotted address to an IPv4 address, waiting at most
// timeout_ms for the name service: a station without a network must not hang
// its start on a DNS time-out. A look-up that runs out of time goes on in the
// background, and a later call for the same name takes its answer. 0 and the
// address, or -1.
int net_resolve(const char *host, int timeout_ms, struct in_addr *address);

// Wait up to timeout_us for any of the sockets to become readable; -1 entries
// are skipped, a socket given twice is waited on once. Bit i of ready is set
// for a ready sockets[i] (count at most 32). The select's result.
int net_select(const int *sockets, int count, int timeout_us, uint32_t *ready);

// The bytes in rows of 16, hexadecimal and printable, to the debug log.
void net_hexdump(uint32_t base, const void *data, int length);
// The two log lines of one row of at most 16 bytes, filled with zeros.
void net_hexdump_row(uint32_t offset, const uint8_t *bytes, int count, char *head, int head_size, char *line,
                     int line_size);

// The numeric IPv4 address of the wired adapter: the first address of an
// interface that is up, not the loopback, and named by the hint. The hint
// "eth" stands for the wired adapters, whose names begin with "eth" or, in the
// predictable naming, "en"; any other hint is the start of an interface name.
// 0 found, 1 the interface query failed, -1 none; the address is written only
// when one is found.
int net_get_ethernet_address(const char *hint, char *address, int size);
// The same choice over a list that the caller got from getifaddrs.
int net_pick_ethernet_address(const struct ifaddrs *list, const char *hint, char *address, int size);
