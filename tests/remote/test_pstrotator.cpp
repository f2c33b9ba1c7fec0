#include "remote/pstrotator.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "remote/net.h"
#include "remote_peer.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>

static const SourceRecord &row26 = source_table[SOURCE_PSTROTATOR];

struct SplitRow
{
    const char *datagram;
    int count;
    const char *fields[6];
    const char *why;
};

static const SplitRow split_rows[] = {
    {"<PST><AZIMUTH>120</AZIMUTH></PST>",
     5,
     {"PST", "AZIMUTH", "120", "/AZIMUTH", "/PST"},
     "a set of azimuth: the closing tags keep their slash"},
    {"PST><AZ?></PST>", 3, {"PST", "AZ?", "/PST"}, "the opening bracket is optional"},
    {"<PST>AZ?</PST>", 3, {"PST", "AZ?", "/PST"}, "a query may stand without brackets"},
    {"<PST>\n<EL?>\n</PST>\n", 3, {"PST", "EL?", "/PST"}, "line feeds cut like brackets"},
    {"<<PST>", 1, {"PST"}, "one bracket at a field's head is dropped"},
    {"<PST>", 1, {"PST"}, "a lone tag"},
    {"", 0, {}, "nothing"},
};

TEST(PstSplit, FieldRule)
{
    for (const SplitRow &row : split_rows)
    {
        char fields[PST_FIELDS][TEXT_FIELD_SIZE];
        memset(fields, 0, sizeof fields);
        int count = pst_split(row.datagram, (int)strlen(row.datagram), fields, PST_FIELDS);
        ASSERT_EQ(count, row.count) << row.why;
        for (int i = 0; i < count && i < 6; i++)
        {
            EXPECT_STREQ(fields[i], row.fields[i]) << row.why << ", field " << i;
        }
    }
}

TEST(PstSplit, AtMostTenFieldsAndEachCutToItsBuffer)
{
    char fields[PST_FIELDS][TEXT_FIELD_SIZE];
    const char *many = "<PST><a><b><c><d><e><f><g><h><i><j><k><l></PST>";
    EXPECT_EQ(pst_split(many, (int)strlen(many), fields, PST_FIELDS), PST_FIELDS);
    EXPECT_STREQ(fields[9], "i");
    std::string longer = "<PST><" + std::string(50, 'A') + "></PST>";
    EXPECT_EQ(pst_split(longer.c_str(), (int)longer.size(), fields, PST_FIELDS), 3);
    EXPECT_EQ(strlen(fields[1]), 31u);
}

class PstProtocol : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        az_position = 7.26;
        el_position = 30.04;
    }
    PstAnswers handle(const char *datagram)
    {
        PstAnswers answers;
        memset(&answers, 0x55, sizeof answers);
        EXPECT_EQ(pst_handle(datagram, (int)strlen(datagram), &answers), 0);
        return answers;
    }
};

struct PstRow
{
    const char *datagram;
    int auto_on;
    const char *answer; // the one answer, or none
    double az, el;
    int az_enable, el_enable;
    const char *why;
};

// The antenna stands at 7.26 / 30.04 in every row.
static const PstRow pst_rows[] = {
    {"<PST><AZIMUTH>120.5</AZIMUTH></PST>", 0, nullptr, 120.5, 0.0, 1, 0, "azimuth alone enables azimuth alone"},
    {"<PST><ELEVATION>33.3</ELEVATION></PST>", 0, nullptr, 0.0, 33.3, 0, 1, "elevation alone enables elevation alone"},
    {"<PST><AZIMUTH>10</AZIMUTH><ELEVATION>20</ELEVATION></PST>", 0, nullptr, 10.0, 20.0, 1, 1, "both at once"},
    {"<PST><AZ?></PST>", 0, "AZ:7.3\r", 0.0, 0.0, 0, 0, "a query answers one decimal and enables nothing"},
    {"<PST>EL?</PST>", 0, "EL:30.0\r", 0.0, 0.0, 0, 0, "a query may stand without brackets"},
    {"<PST><MODE?></PST>", 0, "MODE:0\r", 0.0, 0.0, 0, 0, "the mode is 0 without AUTO"},
    {"<PST><MODE?></PST>", 1, "MODE:1\r", 0.0, 0.0, 0, 0, "and 1 with it"},
    {"<XYZ><AZIMUTH>5</AZIMUTH></XYZ>", 0, nullptr, 0.0, 0.0, 0, 0, "not PstRotator's"},
    {"<pst><AZ?></pst>", 0, nullptr, 0.0, 0.0, 0, 0, "the tag is matched exactly"},
    {"<PST><AZ?>", 0, nullptr, 0.0, 0.0, 0, 0, "the last field is never served"},
    {"<PST><AZIMUTH>", 0, nullptr, 0.0, 0.0, 0, 0, "a tag at the very end"},
};

TEST_F(PstProtocol, Rows)
{
    for (const PstRow &row : pst_rows)
    {
        SetUp();
        auto_tracking = (uint8_t)row.auto_on;
        PstAnswers a = handle(row.datagram);
        ASSERT_EQ(a.count, row.answer ? 1 : 0) << row.why;
        if (row.answer)
        {
            EXPECT_STREQ(a.text[0], row.answer) << row.why;
        }
        EXPECT_DOUBLE_EQ(row26.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row26.el, row.el) << row.why;
        EXPECT_EQ(row26.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row26.el_tracking_enable, row.el_enable) << row.why;
    }
}

// The client on two loopback ports, with PstRotator played by a UDP socket.
class PstSession : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        az_position = 181.25;
        el_position = 5.0;
        rotator = peer_udp(0);
        ASSERT_GE(rotator, 0);
        rsp_port = std::to_string(peer_local_port(rotator));
        ASSERT_EQ(pst_start("127.0.0.1", "udp", test_port_text(0).c_str(), rsp_port.c_str(), &socket[0]), 0);
        ASSERT_EQ(pst_start("127.0.0.1", "udp", test_port_text(1).c_str(), rsp_port.c_str(), &socket[1]), 0);
    }
    void TearDown() override
    {
        pst_stop(socket[0], socket[1]);
        peer_close(rotator);
    }
    int rotator = -1;
    std::string rsp_port;
    int32_t socket[2] = {-1, -1};
};

TEST_F(PstSession, AnswerGoesToTheSenderAtTheResponsePort)
{
    peer_sendto(rotator, test_port(0), "<PST><AZ?></PST>");
    uint32_t ready = 0;
    net_select(&socket[0], 1, 2000000, &ready);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), 0);
    EXPECT_EQ(peer_receive(rotator, 2000), "AZ:181.2\r") << "one datagram, no terminating zero";
}

TEST_F(PstSession, BothSocketsAreServedTheFirstOneFirst)
{
    peer_sendto(rotator, test_port(1), "<PST><ELEVATION>12</ELEVATION></PST>");
    peer_sendto(rotator, test_port(0), "<PST><AZIMUTH>34</AZIMUTH></PST>");
    // Wait until both datagrams are there, so the order is the poll's.
    int sockets[2] = {socket[0], socket[1]};
    uint32_t ready = 0;
    for (int i = 0; i < 200 && ready != 3u; i++)
    {
        net_select(sockets, 2, 10000, &ready);
    }
    ASSERT_EQ(ready, 3u);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), 0);
    EXPECT_EQ(row26.az_tracking_enable, 1);
    EXPECT_EQ(row26.el_tracking_enable, 0);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), 0);
    EXPECT_EQ(row26.el_tracking_enable, 1);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), -1) << "nothing left";
}

TEST_F(PstSession, QueryHandsTheRowOverInTheCycle)
{
    remote_socket[0] = socket[0];
    remote_socket[1] = socket[1];
    source_table[SOURCE_PSTROTATOR].az = 210.0;
    source_table[SOURCE_PSTROTATOR].el = 15.5;
    source_az = 1.0;
    pst_cycle_step();
    EXPECT_DOUBLE_EQ(source_az, 1.0) << "a quiet tick hands nothing over";
    peer_sendto(rotator, test_port(0), "<PST><MODE?></PST>");
    pst_cycle_step();
    EXPECT_DOUBLE_EQ(source_az, 210.0);
    EXPECT_DOUBLE_EQ(source_el, 15.5);
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 210.00");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_ELEVATION], "  15.50");
    EXPECT_EQ(peer_receive(rotator, 2000), "MODE:0\r");
    remote_socket[0] = remote_socket[1] = -1;
}
