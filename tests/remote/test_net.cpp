#include "remote/net.h"

#include "remote_peer.h"
#include "support/test_env.h"

#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <unistd.h>

// The descriptor the next socket would get: a failure that made a socket
// and lost it would move it on.
static int next_descriptor(void)
{
    int probe = dup(0);
    close(probe);
    return probe;
}

TEST(Net, ServiceByNumberListensAndBindsAgainAtOnceAfterASession)
{
    int listener = net_init_client("127.0.0.1", test_port_text(0).c_str(), "tcp");
    ASSERT_GE(listener, 0);
    int client = peer_connect(test_port(0));
    int served = net_accept(listener);
    ASSERT_GE(served, 0) << "a number outside the services database is that port";
    net_close(served);
    net_close(listener);
    close(client);
    // Without address reuse the port stays refused while the closed session
    // waits out TIME_WAIT, and the service could not reopen.
    int again = net_init_client("127.0.0.1", test_port_text(0).c_str(), "tcp");
    EXPECT_GE(again, 0);
    net_close(again);
}

TEST(Net, BadServiceOrHostFailsBeforeAnySocket)
{
    int before = next_descriptor();
    EXPECT_EQ(net_init_client("127.0.0.1", "0", "tcp"), -1);
    EXPECT_EQ(net_init_client("127.0.0.1", "no-such-service", "tcp"), -1);
    // Digits and dots that make no address: no resolver is asked.
    EXPECT_EQ(net_init_client("999.1.2.3", test_port_text(1).c_str(), "tcp"), -1);
    EXPECT_EQ(next_descriptor(), before);
}

TEST(Net, HexdumpRows)
{
    uint8_t bytes[17];
    for (int i = 0; i < 17; i++)
    {
        bytes[i] = (uint8_t)(0x41 + i);
    }
    LogCapture log;
    net_hexdump(0x20, bytes, 16);
    net_hexdump(0, bytes, 17);
    // Each row under its offset line; a closing blank line after each dump.
    std::string all;
    for (const std::string &line : log.lines)
    {
        all += line + "|";
    }
    EXPECT_EQ(all, "0020 : |4142 4344 4546 4748 494A 4B4C 4D4E 4F50   ABCDEFGHIJKLMNOP||"
                   "0000 : |4142 4344 4546 4748 494A 4B4C 4D4E 4F50   ABCDEFGHIJKLMNOP|"
                   "0010 : |5100 0000 0000 0000 0000 0000 0000 0000   Q...............||");
    // DEL is not printable, the tilde is.
    const uint8_t edge[4] = {0x7F, 0x7E, 0x1F, 0x20};
    char head[16], line[64];
    net_hexdump_row(0, edge, 4, head, sizeof head, line, sizeof line);
    EXPECT_STREQ(line, "7F7E 1F20 0000 0000 0000 0000 0000 0000   .~. ............");
}

TEST(Net, FirstUpWiredIpv4AddressWins)
{
    // As getifaddrs lists them: loopback, wireless, a wired one down, a wired
    // one with IPv6 first, then the one to pick, then a later wired one.
    const char *const names[] = {"lo", "wlan0", "eth0", "enp3s0", "enp3s0", "eth1"};
    const unsigned flags[] = {IFF_UP | IFF_LOOPBACK, IFF_UP, 0, IFF_UP, IFF_UP, IFF_UP};
    const char *const addresses[] = {"127.0.0.1", "10.0.0.9", "10.0.0.1", "", "192.168.1.20", "192.168.2.30"};
    struct ifaddrs list[6];
    struct sockaddr_in in4[6];
    struct sockaddr_in6 in6;
    memset(list, 0, sizeof list);
    memset(in4, 0, sizeof in4);
    memset(&in6, 0, sizeof in6);
    in6.sin6_family = AF_INET6;
    for (int i = 0; i < 6; i++)
    {
        in4[i].sin_family = AF_INET;
        inet_pton(AF_INET, addresses[i], &in4[i].sin_addr);
        list[i].ifa_name = const_cast<char *>(names[i]);
        list[i].ifa_flags = flags[i];
        list[i].ifa_addr = i == 3 ? (struct sockaddr *)&in6 : (struct sockaddr *)&in4[i];
        list[i].ifa_next = i < 5 ? &list[i + 1] : nullptr;
    }
    // Cut after the IPv6 entry, no address fits and the output stays as it was.
    char address[32] = "unchanged";
    list[3].ifa_next = nullptr;
    EXPECT_NE(net_pick_ethernet_address(list, "eth", address, sizeof address), 0);
    EXPECT_STREQ(address, "unchanged");
    list[3].ifa_next = &list[4];
    EXPECT_EQ(net_pick_ethernet_address(list, "eth", address, sizeof address), 0);
    EXPECT_STREQ(address, "192.168.1.20");
}
