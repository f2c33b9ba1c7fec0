#include "remote/pstrotator.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "remote/net.h"
#include "remote_peer.h"
#include "support/panel_record.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>
#include <unistd.h>

static const SourceRecord &row26 = source_table[SOURCE_PSTROTATOR];

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
    {"<PST>\n<AZIMUTH>10</AZIMUTH>\n<ELEVATION>20</ELEVATION></PST>", 0, nullptr, 10.0, 20.0, 1, 1,
     "both at once; line feeds cut like brackets"},
    {"<PST><AZ?></PST>", 0, "AZ:7.3\r", 0.0, 0.0, 0, 0, "a query answers one decimal and enables nothing"},
    {"PST><EL?></PST>", 0, "EL:30.0\r", 0.0, 0.0, 0, 0, "the opening bracket is optional"},
    {"<PST>AZ?</PST>", 0, "AZ:7.3\r", 0.0, 0.0, 0, 0, "a query may stand without brackets"},
    {"<PST><MODE?></PST>", 0, "MODE:0\r", 0.0, 0.0, 0, 0, "the mode is 0 without AUTO"},
    {"<PST><MODE?></PST>", 1, "MODE:1\r", 0.0, 0.0, 0, 0, "and 1 with it"},
    {"<pst><AZ?></pst>", 0, nullptr, 0.0, 0.0, 0, 0, "the tag is matched exactly"},
    {"<PST><AZ?>", 0, nullptr, 0.0, 0.0, 0, 0, "the last field is never served"},
};

TEST(Pst, Rows)
{
    for (const PstRow &row : pst_rows)
    {
        test_reset_state();
        az_position = 7.26;
        el_position = 30.04;
        auto_tracking = (uint8_t)row.auto_on;
        PstAnswers a;
        memset(&a, 0x55, sizeof a);
        EXPECT_EQ(pst_handle(row.datagram, (int)strlen(row.datagram), &a), 0) << row.why;
        ASSERT_EQ(a.count, row.answer ? 1 : 0) << row.why;
        EXPECT_STREQ(row.answer ? a.text[0] : "", row.answer ? row.answer : "") << row.why;
        EXPECT_DOUBLE_EQ(row26.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row26.el, row.el) << row.why;
        EXPECT_EQ(row26.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row26.el_tracking_enable, row.el_enable) << row.why;
    }
}

// The client on two loopback ports, with PstRotator played by a UDP socket
// at the response port.
class PstSession : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        az_position = 181.25;
        rotator = peer_udp(test_port(2));
        ASSERT_GE(rotator, 0);
        ASSERT_EQ(pst_start("127.0.0.1", "udp", test_port_text(0).c_str(), test_port_text(2).c_str(), &socket[0]), 0);
        ASSERT_EQ(pst_start("127.0.0.1", "udp", test_port_text(1).c_str(), test_port_text(2).c_str(), &socket[1]), 0);
    }
    void TearDown() override
    {
        pst_stop(socket[0], socket[1]);
        close(rotator);
    }
    int rotator = -1;
    int32_t socket[2] = {-1, -1};
};

TEST_F(PstSession, BothSocketsAreServedTheFirstOneFirstAndAnswered)
{
    peer_sendto(rotator, test_port(1), "<PST><ELEVATION>12</ELEVATION><AZ?></PST>");
    peer_sendto(rotator, test_port(0), "<PST><AZIMUTH>34</AZIMUTH></PST>");
    // Wait until both datagrams are there, so the order is the poll's.
    uint32_t ready = 0;
    for (int i = 0; i < 200 && ready != 3u; i++)
    {
        net_select(socket, 2, 10000, &ready);
    }
    ASSERT_EQ(ready, 3u);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), 0);
    EXPECT_EQ(row26.az_tracking_enable, 1);
    EXPECT_EQ(row26.el_tracking_enable, 0);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), 0);
    EXPECT_EQ(row26.el_tracking_enable, 1);
    EXPECT_EQ(pst_poll(socket[0], socket[1]), -1) << "nothing left";
    EXPECT_EQ(peer_receive(rotator, 2000), "AZ:181.2\r") << "one datagram to the sender, no terminating zero";
}

TEST_F(PstSession, QueryHandsTheRowOverInTheCycleOnlyWhileItIsTheSource)
{
    remote_socket[0] = socket[0];
    remote_socket[1] = socket[1];
    settings.TrackingSource = SOURCE_PSTROTATOR;
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
    EXPECT_EQ(peer_receive(rotator, 2000), "MODE:0\r");

    // The Moon chosen from the menu: the link stays open and its row fills,
    // but the Moon keeps the target and the buttons.
    settings.TrackingSource = SOURCE_MOON;
    source_az = 1.0;
    panel_last_text[PANEL_SOURCE_AZIMUTH][0] = 0;
    peer_sendto(rotator, test_port(0), "<PST><AZIMUTH>99</AZIMUTH></PST>");
    uint32_t ready = 0;
    net_select(socket, 2, 2000000, &ready);
    pst_cycle_step();
    EXPECT_DOUBLE_EQ(source_table[SOURCE_PSTROTATOR].az, 99.0);
    EXPECT_DOUBLE_EQ(source_az, 1.0);
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], "");
    remote_socket[0] = remote_socket[1] = -1;
}
