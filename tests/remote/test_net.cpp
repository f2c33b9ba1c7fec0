#include "remote/net.h"

#include "remote_peer.h"
#include "support/test_env.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

class Net : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }
};

// The descriptor the next socket would get: a failure that made a socket
// and lost it would move it on.
static int next_descriptor(void)
{
    int probe = dup(0);
    close(probe);
    return probe;
}

TEST_F(Net, ServiceNumberNotInTheDatabaseGivesThatPort)
{
    int s = net_init_client("127.0.0.1", test_port_text(0).c_str(), "tcp");
    ASSERT_GE(s, 0);
    EXPECT_EQ(peer_local_port(s), test_port(0));
    int client = peer_connect(test_port(0));
    EXPECT_GE(client, 0) << "a stream socket listens";
    peer_close(client);
    net_close(s);
}

TEST_F(Net, ServiceZeroOrAnUnknownWordFailsBeforeAnySocket)
{
    int before = next_descriptor();
    EXPECT_EQ(net_init_client("127.0.0.1", "0", "tcp"), -1);
    EXPECT_EQ(net_init_client("127.0.0.1", "no-such-service", "tcp"), -1);
    EXPECT_EQ(next_descriptor(), before);
}

TEST_F(Net, UnresolvableHostFailsBeforeAnySocket)
{
    // Digits and dots that make no address: neither the name nor the dotted
    // reading finds it, and no resolver is asked.
    int before = next_descriptor();
    EXPECT_EQ(net_init_client("999.1.2.3", test_port_text(1).c_str(), "tcp"), -1);
    EXPECT_EQ(next_descriptor(), before);
}

TEST_F(Net, LocalhostResolvesByNameAndUdpIsNotListening)
{
    int s = net_init_client("localhost", test_port_text(2).c_str(), "udp");
    ASSERT_GE(s, 0);
    int type = 0;
    socklen_t size = sizeof type;
    getsockopt(s, SOL_SOCKET, SO_TYPE, &type, &size);
    EXPECT_EQ(type, SOCK_DGRAM);
    EXPECT_EQ(peer_local_port(s), test_port(2));
    net_close(s);
}

TEST_F(Net, ListenerBindsAgainAtOnceAfterASessionClosed)
{
    // Without address reuse the port would stay refused while the closed
    // session waits out TIME_WAIT, and the service could not reopen.
    int listener = net_init_client("127.0.0.1", test_port_text(3).c_str(), "tcp");
    ASSERT_GE(listener, 0);
    int client = peer_connect(test_port(3));
    int served = net_accept(listener);
    ASSERT_GE(served, 0);
    net_close(served);
    net_close(listener);
    peer_close(client);
    int again = net_init_client("127.0.0.1", test_port_text(3).c_str(), "tcp");
    EXPECT_GE(again, 0);
    net_close(again);
}

TEST_F(Net, SecondDatagramSocketOnTheSamePortFails)
{
    // Two instances with one command port: the second must see its failure
    // rather than share the datagrams.
    int first = net_init_client("127.0.0.1", test_port_text(5).c_str(), "udp");
    ASSERT_GE(first, 0);
    EXPECT_EQ(net_init_client("127.0.0.1", test_port_text(5).c_str(), "udp"), -1);
    net_close(first);
}

TEST_F(Net, CloseOfNoSocketDoesNothing)
{
    EXPECT_EQ(net_close(-1), 0);
}

TEST_F(Net, WriteToAGoneClientFailsWithoutASignal)
{
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    close(pair[1]);
    EXPECT_LT(net_write(pair[0], "RPRT 0\n", 7), 0);
    close(pair[0]);
}

TEST(NetHexdump, SixteenBytesMakeOneRowAndTheClosingLine)
{
    uint8_t bytes[16];
    for (int i = 0; i < 16; i++)
    {
        bytes[i] = (uint8_t)(0x41 + i);
    }
    LogCapture log;
    net_hexdump(0, bytes, 16);
    ASSERT_EQ(log.lines.size(), 3u);
    EXPECT_EQ(log.lines[0], "0000 : ");
    EXPECT_EQ(log.lines[1], "4142 4344 4546 4748 494A 4B4C 4D4E 4F50   ABCDEFGHIJKLMNOP");
    EXPECT_EQ(log.lines[2], "");
}

TEST(NetHexdump, SeventeenBytesFillTheSecondRowWithZeros)
{
    uint8_t bytes[17];
    memset(bytes, 'a', sizeof bytes);
    LogCapture log;
    net_hexdump(0x20, bytes, 17);
    ASSERT_EQ(log.lines.size(), 5u);
    EXPECT_EQ(log.lines[0], "0020 : ");
    EXPECT_EQ(log.lines[2], "0030 : ");
    EXPECT_EQ(log.lines[3], "6100 0000 0000 0000 0000 0000 0000 0000   a...............");
    std::string hex = log.lines[3].substr(0, 39);
    EXPECT_EQ(std::count(hex.begin(), hex.end(), '0'), 30);
    EXPECT_EQ(log.lines[4], "");
}

TEST(NetHexdump, UnprintableBytesAreDotsAndTildeIsNot)
{
    const uint8_t bytes[4] = {0x7F, 0x7E, 0x1F, 0x20};
    char head[16], line[64];
    net_hexdump_row(0, bytes, 4, head, sizeof head, line, sizeof line);
    EXPECT_STREQ(line, "7F7E 1F20 0000 0000 0000 0000 0000 0000   .~. ............");
}

// A list of interfaces as getifaddrs gives it, built by hand.
struct FakeInterface
{
    const char *name;
    unsigned flags;
    int family;
    const char *address;
};

class FakeInterfaces
{
  public:
    explicit FakeInterfaces(std::initializer_list<FakeInterface> list)
    {
        entries.resize(list.size());
        addresses.resize(list.size());
        int i = 0;
        for (const FakeInterface &f : list)
        {
            struct ifaddrs &e = entries[i];
            memset(&e, 0, sizeof e);
            e.ifa_name = const_cast<char *>(f.name);
            e.ifa_flags = f.flags;
            memset(&addresses[i], 0, sizeof addresses[i]);
            if (f.family == AF_INET)
            {
                auto *in = reinterpret_cast<struct sockaddr_in *>(&addresses[i]);
                in->sin_family = AF_INET;
                inet_pton(AF_INET, f.address, &in->sin_addr);
            }
            else
            {
                auto *in6 = reinterpret_cast<struct sockaddr_in6 *>(&addresses[i]);
                in6->sin6_family = AF_INET6;
                inet_pton(AF_INET6, f.address, &in6->sin6_addr);
            }
            e.ifa_addr = reinterpret_cast<struct sockaddr *>(&addresses[i]);
            e.ifa_next = i + 1 < (int)list.size() ? &entries[i + 1] : nullptr;
            i++;
        }
    }
    const struct ifaddrs *list() const
    {
        return entries.empty() ? nullptr : &entries[0];
    }

  private:
    std::vector<struct ifaddrs> entries;
    std::vector<struct sockaddr_storage> addresses;
};

TEST(NetEthernet, FirstUpWiredIpv4AddressWins)
{
    FakeInterfaces ifs({{"lo", IFF_UP | IFF_LOOPBACK, AF_INET, "127.0.0.1"},
                        {"wlan0", IFF_UP, AF_INET, "10.0.0.9"},
                        {"eth0", 0, AF_INET, "10.0.0.1"},
                        {"enp3s0", IFF_UP, AF_INET6, "fe80::1"},
                        {"enp3s0", IFF_UP, AF_INET, "192.168.1.20"},
                        {"eth1", IFF_UP, AF_INET, "192.168.2.30"}});
    char address[32] = "unchanged";
    EXPECT_EQ(net_pick_ethernet_address(ifs.list(), "eth", address, sizeof address), 0);
    EXPECT_STREQ(address, "192.168.1.20");
}

TEST(NetEthernet, NoWiredAdapterOrOnlyIpv6LeavesTheOutputAlone)
{
    FakeInterfaces ifs({{"lo", IFF_UP | IFF_LOOPBACK, AF_INET, "127.0.0.1"},
                        {"wlan0", IFF_UP, AF_INET, "10.0.0.9"},
                        {"eth0", IFF_UP, AF_INET6, "2001:db8::1"}});
    char address[32] = "unchanged";
    EXPECT_NE(net_pick_ethernet_address(ifs.list(), "eth", address, sizeof address), 0);
    EXPECT_STREQ(address, "unchanged");
    EXPECT_NE(net_pick_ethernet_address(nullptr, "eth", address, sizeof address), 0);
}
