#include "remote/psk_reporter.h"

#include "../bus/sim_fixture.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "core/state.h"
#include "remote_peer.h"
#include "support/test_env.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

// A collector's reading of the datagram, after RFC 7011: the message header,
// the templates, and each data record as the raw bytes of its fields. Any
// length, count or padding that a collector would trip over is an error.
struct IpfixField
{
    int id, length;
    uint32_t enterprise;
};

struct IpfixMessage
{
    int version = 0, length = 0;
    uint32_t export_time = 0, sequence = 0, domain = 0;
    std::vector<int> set_ids;
    std::map<int, std::vector<IpfixField>> templates;
    std::map<int, int> scope_counts;
    std::map<int, std::vector<std::vector<std::string>>> records;
    std::string error;
};

static uint32_t be(const std::string &d, size_t at, int bytes)
{
    uint32_t value = 0;
    for (int i = 0; i < bytes; i++)
    {
        value = value << 8 | (uint8_t)d[at + i];
    }
    return value;
}

static bool all_zero(const std::string &d, size_t from, size_t to)
{
    for (size_t i = from; i < to; i++)
    {
        if (d[i] != 0)
        {
            return false;
        }
    }
    return true;
}

static void ipfix_templates(const std::string &d, size_t at, size_t end, bool options, IpfixMessage *m)
{
    size_t header = options ? 6 : 4;
    while (end - at >= header)
    {
        int id = (int)be(d, at, 2), count = (int)be(d, at + 2, 2);
        m->scope_counts[id] = options ? (int)be(d, at + 4, 2) : 0;
        at += header;
        std::vector<IpfixField> &fields = m->templates[id];
        for (int i = 0; i < count; i++)
        {
            if (end - at < 4)
            {
                m->error = "template runs past its set";
                return;
            }
            IpfixField f = {(int)be(d, at, 2), (int)be(d, at + 2, 2), 0};
            at += 4;
            if (f.id & 0x8000)
            {
                if (end - at < 4)
                {
                    m->error = "enterprise number past its set";
                    return;
                }
                f.enterprise = be(d, at, 4);
                at += 4;
            }
            fields.push_back(f);
        }
    }
    if (!all_zero(d, at, end))
    {
        m->error = "template set padding is not zero";
    }
}

static void ipfix_data(const std::string &d, size_t at, size_t end, int id, IpfixMessage *m)
{
    if (!m->templates.count(id))
    {
        m->error = "data set before its template";
        return;
    }
    const std::vector<IpfixField> &fields = m->templates[id];
    size_t shortest = 0;
    for (const IpfixField &f : fields)
    {
        shortest += f.length == 0xFFFF ? 1 : (size_t)f.length;
    }
    while (end - at >= shortest)
    {
        std::vector<std::string> record;
        for (const IpfixField &f : fields)
        {
            size_t length = (size_t)f.length;
            if (f.length == 0xFFFF)
            {
                length = (uint8_t)d[at++];
                if (length == 255)
                {
                    length = be(d, at, 2);
                    at += 2;
                }
            }
            if (at + length > end)
            {
                m->error = "record runs past its set";
                return;
            }
            record.push_back(d.substr(at, length));
            at += length;
        }
        m->records[id].push_back(record);
    }
    if (!all_zero(d, at, end))
    {
        m->error = "data set padding is not zero";
    }
}

static IpfixMessage ipfix_decode(const std::string &d)
{
    IpfixMessage m;
    if (d.size() < 16)
    {
        m.error = "shorter than a header";
        return m;
    }
    m.version = (int)be(d, 0, 2);
    m.length = (int)be(d, 2, 2);
    m.export_time = be(d, 4, 4);
    m.sequence = be(d, 8, 4);
    m.domain = be(d, 12, 4);
    if ((size_t)m.length != d.size())
    {
        m.error = "message length is not the datagram's";
        return m;
    }
    size_t at = 16;
    while (at < d.size() && m.error.empty())
    {
        int id = (int)be(d, at, 2), length = (int)be(d, at + 2, 2);
        if (length < 4 || at + (size_t)length > d.size())
        {
            m.error = "set length out of the message";
            return m;
        }
        m.set_ids.push_back(id);
        if (id == 2 || id == 3)
        {
            ipfix_templates(d, at + 4, at + (size_t)length, id == 3, &m);
        }
        else
        {
            ipfix_data(d, at + 4, at + (size_t)length, id, &m);
        }
        at += (size_t)length;
    }
    return m;
}

// The collector: a UDP socket on the loopback, named in the settings.
class PskCollector : public ::testing::Test
{
  protected:
    int collector = -1;

    void SetUp() override
    {
        test_reset_state();
        clock_freeze(1700000000);
        collector = peer_udp(test_port(0));
        ASSERT_GE(collector, 0);
        settings.ReportActive = 1;
        settings.AZ_Addr = -1;
        settings.EL_Addr = -1;
        settings.Frequency = 1296.0;
        snprintf(settings.Collector, sizeof settings.Collector, "127.0.0.1:%d", test_port(0));
        ASSERT_EQ(0, psk_init());
    }
    void TearDown() override
    {
        close(collector);
        clock_reset();
    }
    // One datagram, or "" when none came: a loopback send has arrived by the
    // time sendto returns, so the wait only covers a slow machine.
    std::string receive(int timeout_ms = 1000)
    {
        struct pollfd p = {collector, POLLIN, 0};
        char buffer[2048];
        ssize_t n = poll(&p, 1, timeout_ms) < 1 ? 0 : recv(collector, buffer, sizeof buffer, 0);
        return std::string(buffer, n > 0 ? (size_t)n : 0);
    }
};

static std::string bytes(std::initializer_list<int> list)
{
    std::string s;
    for (int b : list)
    {
        s.push_back((char)b);
    }
    return s;
}

struct SelfReportRow
{
    const char *call, *grid;
    double mhz;
    const char *sent_call, *sent_grid;
    std::string frequency; // the five bytes
    const char *why;
};

TEST_F(PskCollector, SelfReportDecodesAsTheServiceReadsIt)
{
    const SelfReportRow rows[] = {
        {"DL7APV", "JO62sm", 1296.0, "DL7APV-R", "JO62sm", bytes({0x00, 0x4D, 0x3F, 0x64, 0x00}),
         "1296 MHz in five bytes"},
        {"VK2ABC/P123", "QF56od12", 10368.1, "VK2ABC/P123-R", "QF56od1", bytes({0x02, 0x69, 0xFC, 0xA6, 0xA0}),
         "the longest call keeps its -R, the locator is cut to 7, no padding, 10 GHz carries its top byte first"},
        {"K1JT", "FN20", 144.1, "K1JT-R", "FN20", bytes({0x00, 0x08, 0x96, 0xCA, 0xA0}), "two bytes of padding"},
        {"W1A", "FN42", 432.0, "W1A-R", "FN42", bytes({0x00, 0x19, 0xBF, 0xCC, 0x00}), "three bytes of padding"},
        {"G4DDK", "JO02", 2320.2, "G4DDK-R", "JO02", bytes({0x00, 0x8A, 0x4B, 0x71, 0x40}), "one byte of padding"},
    };
    uint32_t domain = psk_domain;
    for (const SelfReportRow &row : rows)
    {
        text_copy(settings.Callsign, sizeof settings.Callsign, row.call);
        text_copy(settings.Grid, sizeof settings.Grid, row.grid);
        settings.Frequency = row.mhz;
        uint32_t sequence = psk_sequence;
        ASSERT_EQ(0, psk_self_report()) << row.why;
        std::string d = receive();
        IpfixMessage m = ipfix_decode(d);
        ASSERT_EQ(m.error, "") << row.why;

        EXPECT_EQ(m.version, 10);
        EXPECT_EQ(m.export_time, 1700000000u);
        EXPECT_EQ(m.sequence, sequence) << "the header carries the number before it is counted on";
        EXPECT_EQ(psk_sequence, sequence + 1);
        EXPECT_EQ(m.domain, domain) << "the domain stays for the run";
        EXPECT_EQ(m.set_ids, (std::vector<int>{3, 2, 0x9992, 0x9993})) << row.why;
        EXPECT_EQ(d.substr(16, 4), bytes({0, 3, 0, 44}));
        EXPECT_EQ(d.substr(60, 4), bytes({0, 2, 0, 60}));
        EXPECT_EQ(be(d, 122, 2) % 4, 0u) << "the receiver set ends on a multiple of 4: " << row.why;

        const std::vector<std::vector<std::string>> &receiver = m.records[0x9992];
        ASSERT_EQ(receiver.size(), 1u) << row.why;
        EXPECT_EQ(receiver[0], (std::vector<std::string>{row.sent_call, row.sent_grid, "Morvane v2.35",
                                                          "AZ(0 0 00-0000) EL(0 0 00-0000)"}))
            << row.why;
        const std::vector<std::vector<std::string>> &senders = m.records[0x9993];
        ASSERT_EQ(senders.size(), 1u) << row.why;
        EXPECT_EQ(senders[0], (std::vector<std::string>{"ZZ9ZZZ", "JJ00aa", row.frequency, bytes({0}), "ROS",
                                                         bytes({0}), bytes({0x65, 0x53, 0xF1, 0x00})}))
            << row.why;
    }
}

TEST_F(PskCollector, TemplatesNameTheServiceFields)
{
    psk_set_receiver("DL7APV", "JO62sm", "Morvane v2.35", "", nullptr);
    psk_add_report("ZZ9ZZZ", "JJ00aa", 1296000000, 0, 0, "ROS", 0, 1700000000);
    psk_send();
    IpfixMessage m = ipfix_decode(receive());
    ASSERT_EQ(m.error, "");
    struct Want
    {
        int template_id;
        std::vector<int> ids, lengths;
    };
    const Want wants[] = {
        {0x9992, {0x8002, 0x8004, 0x8008, 0x8009}, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}},
        {0x9993, {0x8001, 0x8003, 0x8005, 0x8006, 0x800A, 0x800B, 150}, {0xFFFF, 0xFFFF, 5, 1, 0xFFFF, 1, 4}},
    };
    for (const Want &want : wants)
    {
        const std::vector<IpfixField> &fields = m.templates[want.template_id];
        ASSERT_EQ(fields.size(), want.ids.size());
        for (size_t i = 0; i < fields.size(); i++)
        {
            EXPECT_EQ(fields[i].id, want.ids[i]);
            EXPECT_EQ(fields[i].length, want.lengths[i]);
            EXPECT_EQ(fields[i].enterprise, want.ids[i] & 0x8000 ? 30351u : 0u);
        }
    }
    EXPECT_EQ(m.scope_counts[0x9992], 0);
    EXPECT_EQ(m.records[0x9992][0][3], "") << "an empty antenna text goes as a zero length";
}

TEST_F(PskCollector, QueueHoldsTwentyAndEmptiesIntoOneDatagram)
{
    psk_set_receiver("DL7APV", "JO62sm", "Morvane v2.35", "antenna", "kept, never sent");
    for (int i = 0; i < PSK_QUEUE_SIZE; i++)
    {
        char call[16];
        snprintf(call, sizeof call, "CALL%d", i);
        ASSERT_EQ(0, psk_add_report(call, "JO62", 1296000000 + i, (uint8_t)i, 0, "JT65", 1, 1700000000));
    }
    EXPECT_EQ(-1, psk_add_report("LATE", "JO62", 1, 0, 0, "JT65", 1, 0)) << "the 21st is dropped";
    EXPECT_EQ(psk_queue_count(), PSK_QUEUE_SIZE);

    psk_send();
    IpfixMessage m = ipfix_decode(receive());
    ASSERT_EQ(m.error, "");
    ASSERT_EQ(m.records[0x9993].size(), (size_t)PSK_QUEUE_SIZE);
    for (int i = 0; i < PSK_QUEUE_SIZE; i++)
    {
        EXPECT_EQ(m.records[0x9993][i][0], "CALL" + std::to_string(i)) << "queue order";
        EXPECT_EQ((int)(uint8_t)m.records[0x9993][i][3][0], i);
    }
    EXPECT_EQ(m.records[0x9992][0].size(), 4u) << "the further text is not sent";
    EXPECT_EQ(psk_queue_count(), 0);

    uint32_t sequence = psk_sequence;
    EXPECT_EQ(0, psk_send());
    EXPECT_EQ(psk_sequence, sequence) << "an empty queue sends nothing";
    EXPECT_EQ(receive(0), "");
}

TEST_F(PskCollector, NothingGoesWithoutStationOrSwitch)
{
    struct Row
    {
        int active;
        const char *call, *grid, *why;
    } rows[] = {
        {0, "DL7APV", "JO62sm", "REPORT Active 0"},
        {1, "", "JO62sm", "no call sign"},
        {1, "DL7APV", "", "no locator"},
    };
    for (const Row &row : rows)
    {
        settings.ReportActive = row.active;
        text_copy(settings.Callsign, sizeof settings.Callsign, row.call);
        text_copy(settings.Grid, sizeof settings.Grid, row.grid);
        EXPECT_EQ(0, psk_self_report()) << row.why;
        EXPECT_EQ(psk_sequence, 0u) << row.why;
        EXPECT_EQ(psk_queue_count(), 0) << row.why;
    }
    EXPECT_EQ(receive(0), "");
}

TEST_F(PskCollector, CollectorSettingNamesHostAndPort)
{
    struct Row
    {
        const char *text;
        int result;
        const char *host;
        int port;
    } rows[] = {
        {"report.pskreporter.info:4739", 0, "report.pskreporter.info", 4739},
        {"127.0.0.1", 0, "127.0.0.1", 4739},
        {"localhost:14739", 0, "localhost", 14739},
        {":4739", -1, "", 0},
        {"", -1, "", 0},
        {"host:0", -1, "", 0},
        {"host:65536", -1, "", 0},
        {"host:47x", -1, "", 0},
        {"host:", -1, "", 0},
    };
    for (const Row &row : rows)
    {
        char host[64] = "";
        int port = 0;
        EXPECT_EQ(psk_parse_collector(row.text, host, sizeof host, &port), row.result) << row.text;
        EXPECT_STREQ(host, row.host) << row.text;
        EXPECT_EQ(port, row.port) << row.text;
    }

    // An unusable setting costs the report and nothing else.
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    text_copy(settings.Collector, sizeof settings.Collector, "127.0.0.1:port");
    EXPECT_EQ(PSK_NO_ADDRESS, psk_init());
    EXPECT_EQ(PSK_NO_ADDRESS, psk_self_report());
    EXPECT_EQ(psk_queue_count(), 0);

    // A name, looked up through the name service's hosts file.
    snprintf(settings.Collector, sizeof settings.Collector, "localhost:%d", test_port(0));
    ASSERT_EQ(0, psk_init());
    EXPECT_EQ(0, psk_self_report());
    EXPECT_EQ(ipfix_decode(receive()).error, "");
}

// The antenna text names the encoders that answer on the bus.
class PskOnBus : public SimBus
{
};

TEST_F(PskOnBus, AntennaTextNamesTheEncoders)
{
    int collector = peer_udp(test_port(1));
    ASSERT_GE(collector, 0);
    settings.ReportActive = 1;
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    snprintf(settings.Collector, sizeof settings.Collector, "127.0.0.1:%d", test_port(1));
    settings.AZ_Addr = 0; // SEI
    settings.EL_Addr = 3; // BRT-38
    ASSERT_EQ(0, psk_init());
    ASSERT_EQ(0, psk_self_report());
    struct pollfd p = {collector, POLLIN, 0};
    char buffer[2048];
    ssize_t n = poll(&p, 1, 1000) < 1 ? 0 : recv(collector, buffer, sizeof buffer, 0);
    IpfixMessage m = ipfix_decode(std::string(buffer, n > 0 ? (size_t)n : 0));
    ASSERT_EQ(m.error, "");
    EXPECT_EQ(m.records[0x9992][0][3], "AZ(25 2000 03-2024) EL(38 1004 05-2025)");
    close(collector);
}

// The window reports at its start and after every home station dialog, a
// cancelled one too.
TEST_F(PskCollector, WindowReportsAtStartAndAfterTheHomeStation)
{
    test_clear_settings();
    text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
    text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
    SaveSettings("Morvane.ini", &settings);
    psk_reset();
    {
        MainWindow w(0);
        w.timer->stop();
        IpfixMessage start = ipfix_decode(receive());
        ASSERT_EQ(start.error, "");
        EXPECT_EQ(start.sequence, 0u);
        QTimer::singleShot(0, [] { qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject(); });
        w.HomeStation();
        IpfixMessage again = ipfix_decode(receive());
        ASSERT_EQ(again.error, "");
        EXPECT_EQ(again.sequence, 1u);
        EXPECT_EQ(again.domain, start.domain);
    }
    test_reset_state();
}
