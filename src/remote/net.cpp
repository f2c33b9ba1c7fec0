#include "remote/net.h"

#include "core/clock.h"

#include <QtGlobal>
#include <arpa/inet.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/ip.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

int net_debug = 0;

static void net_log(const char *format, ...)
{
    char line[256];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    qDebug("%s", line);
}

// A trace line, built only when a developer has asked for them.
__attribute__((format(printf, 1, 2))) static void net_trace(const char *format, ...)
{
    if (!net_debug)
    {
        return;
    }
    char line[256];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    qDebug("%s", line);
}

int net_start(void)
{
    return 0;
}

int net_stop(void)
{
    return 0;
}

// The port of a service name under a protocol, or a plain number; 0 when the
// text is neither. In network order.
static uint16_t net_service_port(const char *service, const char *protocol)
{
    struct servent *entry = getservbyname(service, protocol);
    if (entry)
    {
        return (uint16_t)entry->s_port;
    }
    return htons((uint16_t)atoi(service));
}

// A name first, then a dotted address; 0 found, -1 neither.
static int net_host_address(const char *host, struct in_addr *address)
{
    struct hostent *entry = gethostbyname(host);
    if (entry && entry->h_addrtype == AF_INET && entry->h_addr_list[0])
    {
        memcpy(address, entry->h_addr_list[0], sizeof *address);
        return 0;
    }
    in_addr_t dotted = inet_addr(host);
    if (dotted == INADDR_NONE)
    {
        return -1;
    }
    address->s_addr = dotted;
    return 0;
}

static int net_socket_type(const char *protocol)
{
    if (strcmp(protocol, "udp") == 0)
    {
        return SOCK_DGRAM;
    }
    if (strcmp(protocol, "tcp") == 0)
    {
        return SOCK_STREAM;
    }
    if (strcmp(protocol, "icmp") == 0)
    {
        return SOCK_RAW;
    }
    return 0;
}

static void net_set_options(int s, int type)
{
    // A listener is closed and opened again on every pass through the sources
    // dialog; without address reuse its port stays refused for a minute while
    // the old session sits in TIME_WAIT, and the service would not come back.
    // Datagram sockets have no such wait, and there reuse would let a second
    // instance bind the same command port and take half the datagrams.
    int reuse = type == SOCK_STREAM ? 1 : 0;
    int buffer = 16384;
    setsockopt(s, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    setsockopt(s, SOL_SOCKET, SO_SNDBUF, &buffer, sizeof buffer);
    setsockopt(s, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
}

// The address and protocol number of a local end, with the trace of each
// look-up. 0, or -1 when one of them fails.
static int net_local_address(const char *host, const char *service, const char *protocol, struct sockaddr_in *address,
                             int *protocol_number)
{
    memset(address, 0, sizeof *address);
    address->sin_family = AF_INET;
    address->sin_addr.s_addr = htonl(INADDR_ANY);
    address->sin_port = net_service_port(service, protocol);
    if (address->sin_port == 0)
    {
        net_trace("Could not get service (%s) by name", service);
        return -1;
    }
    net_trace("Getting service (%s) by name... successful", service);
    if (net_host_address(host, &address->sin_addr) != 0)
    {
        net_trace("\nCould not get host (%s) by name\n", host);
        return -1;
    }
    net_trace("Mapping host (%s) to IP address...successful", host);
    struct protoent *proto = getprotobyname(protocol);
    if (!proto)
    {
        net_trace("Could not get protocol (%s) by name", protocol);
        return -1;
    }
    net_trace("Mapping protocol (%s) to protocol number...successful", protocol);
    *protocol_number = proto->p_proto;
    return 0;
}

int net_init_client(const char *host, const char *service, const char *protocol)
{
    net_trace("net_init_client: (%s %s %s)", host, service, protocol);
    struct sockaddr_in address;
    int protocol_number;
    if (net_local_address(host, service, protocol, &address, &protocol_number) != 0)
    {
        return -1;
    }
    int type = net_socket_type(protocol);
    int s = socket(AF_INET, type, protocol_number);
    if (s < 0)
    {
        net_trace("Could not allocate socket");
        return -1;
    }
    net_trace("Allocating socket...successful, socket=%d\n", s);
    net_set_options(s, type);
    if (type == SOCK_RAW)
    {
        int on = 1;
        setsockopt(s, IPPROTO_IP, IP_HDRINCL, &on, sizeof on);
        return s;
    }
    if (bind(s, (struct sockaddr *)&address, sizeof address) != 0)
    {
        net_trace("Could not bind socket");
        close(s);
        return -1;
    }
    net_trace("Binding socket (%d) successful", s);
    if (type != SOCK_STREAM)
    {
        return s;
    }
    if (listen(s, 5) != 0)
    {
        net_trace("Could not listen on port (%d)", s);
        close(s);
        return -1;
    }
    net_trace("Listening on port (%d)...successful", s);
    return s;
}

int net_close(int socket)
{
    if (socket != -1)
    {
        close(socket);
    }
    return 0;
}

int net_accept(int listener)
{
    if (net_debug)
    {
        net_log("Waiting for a connection to be established on socket...");
    }
    int client = accept(listener, nullptr, nullptr);
    if (net_debug)
    {
        net_log("Client connection established on socket (%d)", client);
    }
    return client;
}

int net_read(int socket, char *buffer, int size)
{
    if (size < 1)
    {
        return -1;
    }
    ssize_t n = recv(socket, buffer, (size_t)size, 0);
    if (n < 1)
    {
        return -1;
    }
    if (net_debug)
    {
        net_log("net_read(%d) %d bytes:", socket, (int)n);
        net_hexdump(0, buffer, (int)n);
    }
    return (int)n;
}

static void net_address_bytes(const struct sockaddr_in *peer, uint8_t bytes[4])
{
    memcpy(bytes, &peer->sin_addr.s_addr, 4);
}

int net_recvfrom(int socket, char *buffer, int size, struct sockaddr_in *peer)
{
    uint32_t ready = 0;
    if (size < 1 || net_select(&socket, 1, 1000000, &ready) < 1 || !(ready & 1))
    {
        return -1;
    }
    struct sockaddr_in from;
    socklen_t from_size = sizeof from;
    memset(&from, 0, sizeof from);
    ssize_t n = recvfrom(socket, buffer, (size_t)size, 0, (struct sockaddr *)&from, &from_size);
    if (n < 1)
    {
        return -1;
    }
    *peer = from;
    if (net_debug)
    {
        uint8_t b[4];
        net_address_bytes(&from, b);
        net_log("net_read(%d) %d bytes from %d.%d.%d.%d:", socket, (int)n, b[0], b[1], b[2], b[3]);
        net_hexdump(0, buffer, (int)n);
    }
    return (int)n;
}

int net_write(int socket, const char *data, int length)
{
    if (net_debug)
    {
        net_log("net_write(%d) %d bytes:", socket, length);
        net_hexdump(0, data, length);
    }
    // A client that has gone must cost a failed send, not the whole program,
    // and one that stopped reading must not hold the cycle in the kernel:
    // the send never waits, and what does not fit now is the caller's matter.
    return (int)send(socket, data, (size_t)(length > 0 ? length : 0), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void net_address_with_port(const struct sockaddr_in *peer, int port, struct sockaddr_in *address)
{
    *address = *peer;
    address->sin_port = htons((uint16_t)port);
}

int net_sendto(int socket, const char *data, int length, const struct sockaddr_in *peer)
{
    // An answer that cannot leave at once is dropped, as a lost datagram is.
    ssize_t n = sendto(socket, data, (size_t)(length > 0 ? length : 0), MSG_NOSIGNAL | MSG_DONTWAIT,
                       (const struct sockaddr *)peer, sizeof *peer);
    if (n < 0)
    {
        if (net_debug)
        {
            net_log("net_sendto(%d) %d bytes : failed", socket, (int)n);
        }
        return -1;
    }
    if (net_debug)
    {
        uint8_t b[4];
        net_address_bytes(peer, b);
        net_log("net_sendto(%d) %d bytes to %d.%d.%d.%d", socket, (int)n, b[0], b[1], b[2], b[3]);
        net_hexdump(0, data, length);
    }
    return (int)n;
}

int net_datagram_socket(void)
{
    int s = socket(AF_INET, SOCK_DGRAM, 0);
    if (s < 0)
    {
        net_trace("Could not allocate socket");
        return -1;
    }
    return s;
}

// The one look-up in flight. The name service may still write into it after
// a caller has stopped waiting, so it lives as long as the program.
static struct
{
    char name[256];
    struct addrinfo hints;
    struct gaicb request;
    int started;
} net_lookup;

static int net_lookup_running(void)
{
    return net_lookup.started && gai_error(&net_lookup.request) == EAI_INPROGRESS;
}

static void net_lookup_wait(int timeout_ms)
{
    int64_t end = clock_monotonic_ms() + timeout_ms;
    const struct gaicb *list[1] = {&net_lookup.request};
    while (net_lookup_running())
    {
        int64_t left = end - clock_monotonic_ms();
        if (left <= 0)
        {
            return;
        }
        struct timespec wait = {(time_t)(left / 1000), (long)(left % 1000) * 1000000L};
        gai_suspend(list, 1, &wait);
    }
}

static int net_lookup_start(const char *host)
{
    if (net_lookup.started && net_lookup.request.ar_result)
    {
        freeaddrinfo(net_lookup.request.ar_result);
    }
    memset(&net_lookup, 0, sizeof net_lookup);
    snprintf(net_lookup.name, sizeof net_lookup.name, "%s", host);
    net_lookup.hints.ai_family = AF_INET;
    net_lookup.hints.ai_socktype = SOCK_DGRAM;
    net_lookup.request.ar_name = net_lookup.name;
    net_lookup.request.ar_request = &net_lookup.hints;
    struct gaicb *list[1] = {&net_lookup.request};
    if (getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0)
    {
        return -1;
    }
    net_lookup.started = 1;
    return 0;
}

int net_resolve(const char *host, int timeout_ms, struct in_addr *address)
{
    struct in_addr dotted;
    if (inet_pton(AF_INET, host, &dotted) == 1)
    {
        *address = dotted;
        return 0;
    }
    int same = net_lookup.started && strcmp(net_lookup.name, host) == 0;
    if (net_lookup_running() && !same)
    {
        net_trace("Still waiting for the name service on %s", net_lookup.name);
        return -1;
    }
    // A name answered before is taken as it was; one that failed is asked again.
    int answered = same && !net_lookup_running() && gai_error(&net_lookup.request) == 0;
    if (!same || (!answered && !net_lookup_running()))
    {
        if (net_lookup_start(host) != 0)
        {
            return -1;
        }
    }
    net_lookup_wait(timeout_ms);
    if (net_lookup_running() || gai_error(&net_lookup.request) != 0)
    {
        return -1;
    }
    for (struct addrinfo *entry = net_lookup.request.ar_result; entry; entry = entry->ai_next)
    {
        if (entry->ai_family == AF_INET)
        {
            *address = ((struct sockaddr_in *)entry->ai_addr)->sin_addr;
            return 0;
        }
    }
    return -1;
}

int net_select(const int *sockets, int count, int timeout_us, uint32_t *ready)
{
    fd_set set;
    FD_ZERO(&set);
    int highest = -1;
    *ready = 0;
    for (int i = 0; i < count && i < 32; i++)
    {
        // FD_SET on a descriptor past the set's size writes outside it.
        if (sockets[i] < 0 || sockets[i] >= FD_SETSIZE)
        {
            continue;
        }
        FD_SET(sockets[i], &set);
        highest = sockets[i] > highest ? sockets[i] : highest;
    }
    struct timeval timeout;
    timeout.tv_sec = timeout_us / 1000000;
    timeout.tv_usec = timeout_us % 1000000;
    int result = select(highest + 1, &set, nullptr, nullptr, &timeout);
    if (result < 1)
    {
        return result;
    }
    for (int i = 0; i < count && i < 32; i++)
    {
        if (sockets[i] >= 0 && sockets[i] < FD_SETSIZE && FD_ISSET(sockets[i], &set))
        {
            *ready |= 1u << i;
        }
    }
    return result;
}

void net_hexdump_row(uint32_t offset, const uint8_t *bytes, int count, char *head, int head_size, char *line,
                     int line_size)
{
    uint8_t row[16] = {0};
    memcpy(row, bytes, (size_t)(count < 0 ? 0 : count > 16 ? 16 : count));
    char text[17];
    for (int i = 0; i < 16; i++)
    {
        text[i] = row[i] < 32 || row[i] > 126 ? '.' : (char)row[i];
    }
    text[16] = 0;
    snprintf(head, (size_t)head_size, "%04lX : ", (unsigned long)offset);
    snprintf(line, (size_t)line_size, "%02X%02X %02X%02X %02X%02X %02X%02X %02X%02X %02X%02X %02X%02X %02X%02X   %s",
             row[0], row[1], row[2], row[3], row[4], row[5], row[6], row[7], row[8], row[9], row[10], row[11], row[12],
             row[13], row[14], row[15], text);
}

void net_hexdump(uint32_t base, const void *data, int length)
{
    const uint8_t *bytes = (const uint8_t *)data;
    for (int at = 0; at < length; at += 16)
    {
        char head[16], line[64];
        net_hexdump_row(base + (uint32_t)at, bytes + at, length - at, head, sizeof head, line, sizeof line);
        net_log("%s", head);
        net_log("%s", line);
    }
    net_log("%s", "");
}

static int net_name_matches(const char *name, const char *hint)
{
    if (strcmp(hint, "eth") == 0)
    {
        return strncmp(name, "eth", 3) == 0 || strncmp(name, "en", 2) == 0;
    }
    return hint[0] && strncmp(name, hint, strlen(hint)) == 0;
}

int net_pick_ethernet_address(const struct ifaddrs *list, const char *hint, char *address, int size)
{
    for (const struct ifaddrs *entry = list; entry; entry = entry->ifa_next)
    {
        if (!entry->ifa_name || !entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
        {
            continue;
        }
        if (!(entry->ifa_flags & IFF_UP) || (entry->ifa_flags & IFF_LOOPBACK) ||
            !net_name_matches(entry->ifa_name, hint ? hint : ""))
        {
            continue;
        }
        char host[NI_MAXHOST];
        if (getnameinfo(entry->ifa_addr, sizeof(struct sockaddr_in), host, sizeof host, nullptr, 0, NI_NUMERICHOST) !=
            0)
        {
            continue;
        }
        snprintf(address, (size_t)size, "%s", host);
        net_log("Hostname: %s\n", address);
        return 0;
    }
    return -1;
}

int net_get_ethernet_address(const char *hint, char *address, int size)
{
    struct ifaddrs *list = nullptr;
    if (getifaddrs(&list) != 0)
    {
        return 1;
    }
    int result = net_pick_ethernet_address(list, hint, address, size);
    freeifaddrs(list);
    return result;
}
