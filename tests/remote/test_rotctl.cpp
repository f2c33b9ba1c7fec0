#include "remote/rotctl.h"

#include "core/clock.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "remote/net.h"
#include "remote_peer.h"
#include "support/test_env.h"

#include <clocale>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

static const SourceRecord &row25 = source_table[SOURCE_GPREDICT];

// rotctl_handle on a text, with its reply.
static int handle(const char *request, std::string *reply)
{
    char buffer[ROTCTL_REPLY_SIZE] = {0};
    int result = rotctl_handle(request, (int)strlen(request), buffer, sizeof buffer);
    *reply = buffer;
    return result;
}

class RotctlSplit : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        memset(fields, 0, sizeof fields);
    }
    int split(const char *text, int max = ROTCTL_FIELDS)
    {
        return rotctl_split(text, (int)strlen(text), fields, max);
    }
    char fields[ROTCTL_FIELDS][TEXT_FIELD_SIZE];
};

TEST_F(RotctlSplit, CommandLetterCountsAsAField)
{
    LogCapture log;
    EXPECT_EQ(split("P 180.0 45.0\n"), 3);
    EXPECT_STREQ(fields[0], "P");
    EXPECT_STREQ(fields[1], "180.0");
    EXPECT_STREQ(fields[2], "45.0");
    EXPECT_TRUE(log.contains("Field[2] = 45.0 len: 5")) << "the last length counts the delimiter behind it";
    EXPECT_EQ(split("p\n"), 1);
    EXPECT_STREQ(fields[0], "p");
}

TEST_F(RotctlSplit, DoubleDelimiterStaysInTheFieldLength)
{
    LogCapture log;
    EXPECT_EQ(split("P  180"), 2);
    EXPECT_STREQ(fields[0], "P");
    EXPECT_TRUE(log.contains("Field[0] = P len: 2"));
    EXPECT_TRUE(log.contains("Field[1] = 180 len: 3"));
}

class RotctlProtocol : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        az_position = 33.25;
        el_position = 12.5;
    }
};

struct RotctlRow
{
    const char *before; // a request served first, or none
    const char *request;
    const char *reply;
    double az, el;
    int az_enable, el_enable;
    const char *why;
};

// The antenna stands at 33.25 / 12.5 in every row.
static const RotctlRow rotctl_rows[] = {
    {nullptr, "P 120.5 45.25\n", "RPRT 0\n", 120.5, 45.25, 1, 1, "P with both angles sets and enables both"},
    {nullptr, "P 200\n", "RPRT 0\n", 200.0, 0.0, 1, 0, "P with azimuth alone enables azimuth alone"},
    {"P 120 45\n", "p\n", "33.2500\n12.5000\nRPRT 0\n", 120.0, 45.0, 1, 1, "p tells the antenna, not the target"},
    {"P 120 45\n", "S\n", "RPRT 0\n", 120.0, 45.0, 0, 0, "S clears both enables and keeps the target"},
    {nullptr, "Position 10 20\n", "RPRT 0\n", 10.0, 20.0, 1, 1, "a word that begins with P acts as P"},
    {nullptr, "p\np\n", "33.2500\n12.5000\nRPRT 0\n", 0.0, 0.0, 0, 0, "two requests in one read: one answer"},
    {"P 120 45\n", "P 10 20\nS\n", "RPRT 0\n", 120.0, 45.0, 1, 1,
     "two requests in one read make six fields, no P of two or three, and the S is never seen"},
    {nullptr, "_\n", "RPRT Morvane v2.18\n", 0.0, 0.0, 0, 0, "the info names the protocol's version"},
};

TEST_F(RotctlProtocol, Rows)
{
    for (const RotctlRow &row : rotctl_rows)
    {
        SetUp();
        std::string reply;
        if (row.before)
        {
            handle(row.before, &reply);
        }
        EXPECT_EQ(handle(row.request, &reply), 0) << row.why;
        EXPECT_EQ(reply, row.reply) << row.why;
        EXPECT_DOUBLE_EQ(row25.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row25.el, row.el) << row.why;
        EXPECT_EQ(row25.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row25.el_tracking_enable, row.el_enable) << row.why;
    }
}

TEST_F(RotctlProtocol, PositionIsInTheCFormWhateverTheDesktop)
{
    // ctest runs this program under de_DE.UTF-8.
    EXPECT_NE(strstr(setlocale(LC_CTYPE, nullptr), "de_DE"), nullptr);
    az_position = 120.0;
    std::string reply;
    handle("p\n", &reply);
    EXPECT_EQ(reply.substr(0, 9), "120.0000\n");
    handle("P 120.5 10.25\n", &reply);
    EXPECT_DOUBLE_EQ(row25.az, 120.5);
}

TEST_F(RotctlProtocol, LongFormsAndUnknownLettersGetNoReply)
{
    static const char *const ignored[] = {"\\dump_state\n", "\\get_pos\n", "Z\n", "x\n", "@\n", "1\n",
                                          " P 1 2\n",       "\n"};
    for (const char *request : ignored)
    {
        std::string reply;
        EXPECT_EQ(handle(request, &reply), -1) << request;
        EXPECT_EQ(reply, "") << request;
    }
    EXPECT_EQ(row25.az_tracking_enable, 0);
}

TEST_F(RotctlProtocol, EveryOtherLetterAnswersPlainSuccess)
{
    static const char letters[] = "KCRwLlDdEeBAaM";
    for (const char *l = letters; *l; l++)
    {
        char request[4] = {*l, '\n', 0};
        std::string reply;
        EXPECT_EQ(handle(request, &reply), 0) << *l;
        EXPECT_EQ(reply, "RPRT 0\n") << *l;
    }
}

// The server on the loopback, with a client of our own.
class RotctlSession : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        az_position = 181.5;
        el_position = 22.75;
        listener = rotctl_start("127.0.0.1", test_port_text(0).c_str(), "tcp");
        ASSERT_GE(listener, 0);
    }
    void TearDown() override
    {
        rotctl_stop(listener, slot[0]);
        net_close(slot[1]);
    }
    // Poll until the condition holds; a bounded number of 1 ms waits.
    template <typename F> int poll_until(F done, int polls = 200)
    {
        int result = 0;
        for (int i = 0; i < polls && !done(); i++)
        {
            result = rotctl_poll(listener, -1, &slot[0], &slot[1]);
        }
        return result;
    }
    int connect_client(void)
    {
        int c = peer_connect(test_port(0));
        int before = slot[0];
        poll_until([&] { return slot[0] != before; });
        return c;
    }
    // Send a request and serve it: the reply as the client reads it.
    // Serve the next request once it is at the server's end.
    int serve(void)
    {
        uint32_t ready = 0;
        net_select(&slot[0], 1, 2000000, &ready);
        return rotctl_poll(listener, -1, &slot[0], &slot[1]);
    }
    std::string ask(int client, const std::string &request)
    {
        peer_send(client, request);
        serve();
        return peer_receive(client, 2000);
    }
    int listener = -1;
    int32_t slot[2] = {-1, -1};
};

TEST_F(RotctlSession, SetThenGetAnswersWholeRepliesInOneRead)
{
    int client = connect_client();
    EXPECT_EQ(ask(client, "P 120.00 45.00\n"), "RPRT 0\n");
    EXPECT_EQ(ask(client, "p\n"), "181.5000\n22.7500\nRPRT 0\n");
    EXPECT_DOUBLE_EQ(row25.az, 120.0);
    peer_close(client);
}

TEST_F(RotctlSession, IgnoredRequestKeepsTheSession)
{
    int client = connect_client();
    peer_send(client, "\\dump_state\n");
    EXPECT_EQ(serve(), 0);
    peer_send(client, "Z\n");
    EXPECT_EQ(serve(), 0);
    EXPECT_GE(slot[0], 0);
    // The first bytes back belong to this p: nothing answered the two before.
    EXPECT_EQ(ask(client, "p\n"), "181.5000\n22.7500\nRPRT 0\n");
    peer_close(client);
}

TEST_F(RotctlSession, RequestOverSixtyFourBytesIsReadInTwoParts)
{
    int client = connect_client();
    std::string first = "S" + std::string(63, ' ');
    peer_send(client, first + "p\n");
    serve();
    EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
    serve();
    EXPECT_EQ(peer_receive(client, 2000), "181.5000\n22.7500\nRPRT 0\n");
    peer_close(client);
}

TEST_F(RotctlSession, SecondClientTakesTheSlotAndTheFirstIsClosed)
{
    int first = connect_client();
    int first_slot = slot[0];
    int second = connect_client();
    EXPECT_NE(slot[0], first_slot);
    bool closed = false;
    peer_receive(first, 2000, &closed);
    EXPECT_TRUE(closed) << "the displaced session is closed, not left open";
    EXPECT_EQ(ask(second, "P 10 20\n"), "RPRT 0\n");
    peer_close(first);
    peer_close(second);
}

TEST_F(RotctlSession, ClientCloseEndsTheSession)
{
    int client = connect_client();
    LogCapture log;
    peer_close(client);
    int result = poll_until([&] { return slot[0] == -1; });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(slot[0], -1);
    EXPECT_TRUE(log.contains("[rotctl] cd1 control session terminated"));
}

TEST_F(RotctlSession, SecondListenerFillsSlotOne)
{
    int listener1 = rotctl_start("127.0.0.1", test_port_text(1).c_str(), "tcp");
    ASSERT_GE(listener1, 0);
    int client = peer_connect(test_port(1));
    for (int i = 0; i < 200 && slot[1] == -1; i++)
    {
        rotctl_poll(listener, listener1, &slot[0], &slot[1]);
    }
    EXPECT_EQ(slot[0], -1);
    ASSERT_GE(slot[1], 0);
    peer_send(client, "P 77 7\n");
    uint32_t ready = 0;
    net_select(&slot[1], 1, 2000000, &ready);
    rotctl_poll(listener, listener1, &slot[0], &slot[1]);
    EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
    peer_close(client);
    net_close(listener1);
}

// The cycle's step, through the shared slots the window uses.
class RotctlCycle : public RotctlSession
{
  protected:
    void SetUp() override
    {
        RotctlSession::SetUp();
        remote_socket[0] = listener;
        gpredict_running = 1;
    }
    void TearDown() override
    {
        slot[0] = remote_client[0];
        RotctlSession::TearDown();
    }
    void tick(int times = 1)
    {
        for (int i = 0; i < times; i++)
        {
            rotctl_cycle_step();
        }
    }
};

TEST_F(RotctlCycle, TargetIsHandedOverOnEveryTickWithASession)
{
    int client = peer_connect(test_port(0));
    for (int i = 0; i < 200 && remote_client[0] == -1; i++)
    {
        tick();
    }
    ASSERT_GE(remote_client[0], 0);
    peer_send(client, "P 123.456 12.5\n");
    uint32_t ready = 0;
    net_select(&remote_client[0], 1, 2000000, &ready);
    tick();
    EXPECT_EQ(peer_receive(client, 2000), "RPRT 0\n");
    EXPECT_DOUBLE_EQ(source_az, 123.456);
    EXPECT_DOUBLE_EQ(source_el, 12.5);
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_AZIMUTH], " 123.46");
    EXPECT_STREQ(panel_last_text[PANEL_SOURCE_ELEVATION], "  12.50");
    // A quiet tick hands the row over again: something else moved source_az.
    source_az = 0.0;
    tick();
    EXPECT_DOUBLE_EQ(source_az, 123.456);
    peer_close(client);
    for (int i = 0; i < 200 && remote_client[0] != -1; i++)
    {
        tick();
    }
    source_az = 0.0;
    tick();
    EXPECT_DOUBLE_EQ(source_az, 0.0) << "no session left, no hand-over";
}

// Hamlib's own client against our server. Its network rotator first asks for
// the long form \dump_state, which this server does not know: the client gets
// no answer, gives up after its time-out and closes, and the server must come
// out of that with its slot free and nothing sent.
TEST_F(RotctlSession, HamlibClientIsAnsweredNothingAndLeavesCleanly)
{
    if (access("/usr/bin/rotctl", X_OK) != 0)
    {
        GTEST_SKIP() << "Hamlib's rotctl is not installed (package libhamlib-utils)";
    }
    std::string address = "127.0.0.1:" + test_port_text(0);
    const char *argv[] = {"rotctl", "-m", "2", "-r", address.c_str(), "-C", "timeout=300,retry=0", "p", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    ASSERT_EQ(posix_spawn(&pid, "/usr/bin/rotctl", &actions, nullptr, const_cast<char **>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&actions);

    net_debug = 1;
    LogCapture log;
    int status = -1;
    bool connected = false;
    int64_t deadline = clock_monotonic_ms() + 10000;
    while (clock_monotonic_ms() < deadline)
    {
        rotctl_poll(listener, -1, &slot[0], &slot[1]);
        connected = connected || slot[0] >= 0;
        if (waitpid(pid, &status, WNOHANG) == pid)
        {
            break;
        }
    }
    for (int i = 0; i < 200 && slot[0] != -1; i++)
    {
        rotctl_poll(listener, -1, &slot[0], &slot[1]);
    }
    net_debug = 0;
    ASSERT_TRUE(WIFEXITED(status)) << "rotctl did not finish";
    EXPECT_NE(WEXITSTATUS(status), 0) << "it cannot open a rotator that does not answer its dump_state";
    EXPECT_TRUE(connected);
    EXPECT_EQ(slot[0], -1) << "its session ended when it closed";
    EXPECT_TRUE(log.contains("dump_state"));
    EXPECT_FALSE(log.contains("net_write(")) << "nothing was sent back";
}
