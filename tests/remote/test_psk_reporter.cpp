#include "remote/psk_reporter.h"

#include "../bus/sim_fixture.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "core/state.h"
#include "remote_peer.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <map>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

// A collector's reading of a datagram after RFC 7011: header, templates, and
// each data record as the raw bytes of its fields. Any length or padding a
// collector would trip over sets the error.
struct IpfixMessage
{
    uint32_t version = 0, export_time = 0, sequence = 0, domain = 0;
    std::vector<int> set_ids;
    std::map<int, std::vector<std::vector<uint32_t>>> templates; // id, length, enterprise of each field
    std::map<int, std::vector<std::vector<std::string>>> records;
    std::string error;
};

static uint32_t be(const std::string &d, size_t at, int bytes)
{
    uint32_t value = 0;
    for (int i = 0; i < bytes && at + i < d.size(); i++)
    {
        value = value << 8 | (uint8_t)d[at + i];
    }
    return value;
}

// What is left of a set after its records: fewer bytes than the shortest
// record, all zero.
static void ipfix_padding(const std::string &d, size_t at, size_t end, size_t shortest, IpfixMessage *m)
{
    if (end - at >= shortest || d.find_first_not_of('\0', at) < end)
    {
        m->error = "bad padding at " + std::to_string(at);
    }
}

static void ipfix_templates(const std::string &d, size_t at, size_t end, size_t header, IpfixMessage *m)
{
    while (end - at >= header)
    {
        std::vector<std::vector<uint32_t>> &fields = m->templates[(int)be(d, at, 2)];
        int count = (int)be(d, at + 2, 2);
        for (at += header; count-- > 0 && at + 4 <= end; at += fields.back()[0] & 0x8000 ? 8 : 4)
        {
            fields.push_back({be(d, at, 2), be(d, at + 2, 2), be(d, at, 2) & 0x8000 ? be(d, at + 4, 4) : 0});
        }
    }
    ipfix_padding(d, at, end, header, m);
}

static void ipfix_data(const std::string &d, size_t at, size_t end, int id, IpfixMessage *m)
{
    const std::vector<std::vector<uint32_t>> &fields = m->templates[id];
    size_t shortest = 0;
    for (const std::vector<uint32_t> &f : fields)
    {
        shortest += f[1] == 0xFFFF ? 1 : f[1];
    }
    while (shortest && end - at >= shortest && m->error.empty())
    {
        std::vector<std::string> record;
        for (const std::vector<uint32_t> &f : fields)
        {
            size_t length = f[1] == 0xFFFF ? (uint8_t)d[at++] : f[1];
            m->error = at + length > end ? "record past its set" : m->error;
            record.push_back(d.substr(at, length));
            at += length;
        }
        m->records[id].push_back(record);
    }
    ipfix_padding(d, at, end, shortest, m);
}

static IpfixMessage ipfix_decode(const std::string &d)
{
    IpfixMessage m;
    m.version = be(d, 0, 2);
    m.export_time = be(d, 4, 4);
    m.sequence = be(d, 8, 4);
    m.domain = be(d, 12, 4);
    m.error = d.size() < 16 || be(d, 2, 2) != d.size() ? "message length is not the datagram's" : "";
    for (size_t at = 16; at < d.size() && m.error.empty();)
    {
        int id = (int)be(d, at, 2);
        size_t end = at + be(d, at + 2, 2);
        if (end < at + 4 || end > d.size())
        {
            m.error = "set length out of the message";
            break;
        }
        m.set_ids.push_back(id);
        if (id == 2 || id == 3)
        {
            ipfix_templates(d, at + 4, end, id == 3 ? 6 : 4, &m);
        }
        else
        {
            ipfix_data(d, at + 4, end, id, &m);
        }
        at = end;
    }
    return m;
}

static std::string bytes(std::initializer_list<int> list)
{
    std::string s;
    for (int b : list)
    {
        s.push_back((char)b);
    }
    return s;
}

// One datagram at the collector, or "": a loopback send has arrived by the
// time sendto returns, so the wait only covers a slow machine.
static std::string receive(int collector, int timeout_ms = 1000)
{
    struct pollfd p = {collector, POLLIN, 0};
    char buffer[2048];
    ssize_t n = poll(&p, 1, timeout_ms) < 1 ? 0 : recv(collector, buffer, sizeof buffer, 0);
    return std::string(buffer, n > 0 ? (size_t)n : 0);
}

// The collector is a UDP socket on the loopback, named in the settings.
static int collector_at(int offset)
{
    settings.ReportActive = 1;
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    snprintf(settings.Collector, sizeof settings.Collector, "127.0.0.1:%d", test_port(offset));
    return peer_udp(test_port(offset));
}

class Psk : public ::testing::Test
{
  protected:
    int collector = -1;

    void SetUp() override
    {
        test_reset_state();
        clock_freeze(1700000000);
        collector = collector_at(0);
        ASSERT_GE(collector, 0);
        settings.AZ_Addr = settings.EL_Addr = -1;
        ASSERT_EQ(0, psk_init());
    }
    void TearDown() override
    {
        close(collector);
        test_reset_state();
    }
};

TEST_F(Psk, SelfReportDecodesAsTheServiceReadsIt)
{
    struct Row
    {
        const char *call, *grid;
        double mhz;
        const char *sent_call, *sent_grid;
        std::string frequency;
        const char *why;
    } rows[] = {
        {"DL7APV", "JO62sm", 1296.0, "DL7APV-R", "JO62sm", bytes({0x00, 0x4D, 0x3F, 0x64, 0x00}), "padding 2"},
        {"VK2ABC/P123", "QF56od12", 10368.1, "VK2ABC/P123-R", "QF56od1", bytes({0x02, 0x69, 0xFC, 0xA6, 0xA0}),
         "the longest call keeps its -R, the locator is cut to 7, no padding, 10 GHz has a top byte"},
        {"W1A", "FN42", 432.0, "W1A-R", "FN42", bytes({0x00, 0x19, 0xBF, 0xCC, 0x00}), "padding 3"},
        {"G4DDK", "JO02", 2320.2, "G4DDK-R", "JO02", bytes({0x00, 0x8A, 0x4B, 0x71, 0x40}), "padding 1"},
    };
    uint32_t domain = psk_domain;
    IpfixMessage m;
    for (const Row &row : rows)
    {
        text_copy(settings.Callsign, sizeof settings.Callsign, row.call);
        text_copy(settings.Grid, sizeof settings.Grid, row.grid);
        settings.Frequency = row.mhz;
        uint32_t sequence = psk_sequence;
        ASSERT_EQ(0, psk_self_report()) << row.why;
        std::string d = receive(collector);
        m = ipfix_decode(d);
        ASSERT_EQ(m.error, "") << row.why;
        EXPECT_TRUE(m.version == 10 && m.export_time == 1700000000u && m.domain == domain) << row.why;
        EXPECT_EQ(m.sequence, sequence) << "the number before it is counted on";
        EXPECT_EQ(psk_sequence, sequence + 1);
        EXPECT_EQ(m.set_ids, (std::vector<int>{3, 2, 0x9992, 0x9993}));
        EXPECT_EQ(d.substr(16, 4) + d.substr(60, 4), bytes({0, 3, 0, 44, 0, 2, 0, 60}));
        EXPECT_EQ(m.records[0x9992], (std::vector<std::vector<std::string>>{
                                         {row.sent_call, row.sent_grid, "Morvane v2.35",
                                          "AZ(0 0 00-0000) EL(0 0 00-0000)"}}))
            << row.why;
        EXPECT_EQ(m.records[0x9993], (std::vector<std::vector<std::string>>{
                                         {"ZZ9ZZZ", "JJ00aa", row.frequency, bytes({0}), "ROS", bytes({0}),
                                          bytes({0x65, 0x53, 0xF1, 0x00})}}))
            << row.why;
    }
    const uint32_t E = 30351, V = 0xFFFF;
    EXPECT_EQ(m.templates[0x9992], (std::vector<std::vector<uint32_t>>{
                                       {0x8002, V, E}, {0x8004, V, E}, {0x8008, V, E}, {0x8009, V, E}}));
    EXPECT_EQ(m.templates[0x9993],
              (std::vector<std::vector<uint32_t>>{{0x8001, V, E}, {0x8003, V, E}, {0x8005, 5, E}, {0x8006, 1, E},
                                                  {0x800A, V, E}, {0x800B, 1, E}, {150, 4, 0}}));
}

TEST_F(Psk, QueueHoldsTwentyAndEmptiesIntoOneDatagram)
{
    psk_set_receiver("DL7APV", "JO62sm", "Morvane v2.35", "", "kept, never sent");
    for (int i = 0; i < PSK_QUEUE_SIZE; i++)
    {
        std::string call = "CALL" + std::to_string(i);
        ASSERT_EQ(0, psk_add_report(call.c_str(), "JO62", 1296000000 + i, (uint8_t)i, 0, "JT65", 1, 1700000000));
    }
    EXPECT_EQ(-1, psk_add_report("LATE", "JO62", 1, 0, 0, "JT65", 1, 0)) << "the 21st is dropped";
    psk_send();
    IpfixMessage m = ipfix_decode(receive(collector));
    ASSERT_EQ(m.error, "");
    ASSERT_EQ(m.records[0x9993].size(), (size_t)PSK_QUEUE_SIZE);
    for (int i = 0; i < PSK_QUEUE_SIZE; i++)
    {
        EXPECT_EQ(m.records[0x9993][i][0], "CALL" + std::to_string(i)) << "queue order";
    }
    EXPECT_EQ(m.records[0x9992][0], (std::vector<std::string>{"DL7APV-R", "JO62sm", "Morvane v2.35", ""}))
        << "an empty antenna text is a zero length; the further text is not sent";
    EXPECT_EQ(psk_queue_count(), 0);
    EXPECT_EQ(0, psk_send());
    EXPECT_EQ(psk_sequence, 1u) << "an empty queue sends nothing";
}

TEST_F(Psk, NothingGoesWithoutStationOrSwitch)
{
    struct Row
    {
        int active;
        const char *call, *grid;
    } rows[] = {{0, "DL7APV", "JO62sm"}, {1, "", "JO62sm"}, {1, "DL7APV", ""}};
    for (const Row &row : rows)
    {
        settings.ReportActive = row.active;
        text_copy(settings.Callsign, sizeof settings.Callsign, row.call);
        text_copy(settings.Grid, sizeof settings.Grid, row.grid);
        EXPECT_EQ(0, psk_self_report());
        EXPECT_EQ(psk_sequence + psk_queue_count(), 0u) << row.active << row.call << row.grid;
    }
}

TEST_F(Psk, CollectorSettingNamesHostAndPort)
{
    struct Row
    {
        const char *text;
        int result, port;
    } rows[] = {{"report.pskreporter.info:4739", 0, 4739}, {"127.0.0.1", 0, 4739}, {":4739", -1, 0},
                {"host:0", -1, 0}, {"host:65536", -1, 0}, {"host:47x", -1, 0}};
    for (const Row &row : rows)
    {
        char host[64];
        int port = 0;
        EXPECT_EQ(psk_parse_collector(row.text, host, sizeof host, &port), row.result) << row.text;
        EXPECT_EQ(port, row.port) << row.text;
    }
    // An unusable setting costs the report and nothing else.
    text_copy(settings.Collector, sizeof settings.Collector, "127.0.0.1:port");
    EXPECT_EQ(PSK_NO_ADDRESS, psk_init());
    EXPECT_EQ(PSK_NO_ADDRESS, psk_self_report());
    EXPECT_EQ(psk_queue_count(), 0);
    // A name goes through the name service, here its hosts file.
    snprintf(settings.Collector, sizeof settings.Collector, "localhost:%d", test_port(0));
    ASSERT_EQ(0, psk_init());
    EXPECT_EQ(0, psk_self_report());
    EXPECT_EQ(ipfix_decode(receive(collector)).error, "");
}

// The window reports at its start and after every home station dialog, a
// cancelled one too.
TEST_F(Psk, WindowReportsAtStartAndAfterTheHomeStation)
{
    test_clear_settings();
    SaveSettings("Morvane.ini", &settings);
    psk_reset();
    MainWindow w(0);
    w.timer->stop();
    IpfixMessage start = ipfix_decode(receive(collector));
    EXPECT_TRUE(start.error.empty() && start.sequence == 0);
    QTimer::singleShot(0, [] { qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject(); });
    w.HomeStation();
    IpfixMessage again = ipfix_decode(receive(collector));
    EXPECT_TRUE(again.error.empty() && again.sequence == 1 && again.domain == start.domain);
}

// The antenna text names the encoders that answer on the bus.
TEST_F(SimBus, SelfReportNamesTheEncodersOnTheBus)
{
    int collector = collector_at(1);
    settings.AZ_Addr = 0; // SEI
    settings.EL_Addr = 3; // BRT-38
    ASSERT_EQ(0, psk_init());
    ASSERT_EQ(0, psk_self_report());
    IpfixMessage m = ipfix_decode(receive(collector));
    ASSERT_EQ(m.error, "");
    EXPECT_EQ(m.records[0x9992][0][3], "AZ(25 2000 03-2024) EL(38 1004 05-2025)");
    close(collector);
}
