#include "remote/rotctl.h"

#include "core/clock.h"
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

struct RotctlRow
{
    const char *before; // a request served first, or none
    const char *request;
    const char *reply; // none: nothing is sent back
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
    {nullptr, "p\np\n", "33.2500\n12.5000\nRPRT 0\n", 0.0, 0.0, 0, 0, "two requests in one read: one answer"},
    {"P 120 45\n", "P 10 20\nS\n", "RPRT 0\n", 120.0, 45.0, 1, 1,
     "two requests in one read make six fields, no P of two or three, and the S is never seen"},
    {nullptr, "K\n", "RPRT 0\n", 0.0, 0.0, 0, 0, "the other letters of the table answer plain success"},
    {nullptr, "\\get_pos\n", nullptr, 0.0, 0.0, 0, 0, "the long forms are not served"},
    {nullptr, "Z\n", nullptr, 0.0, 0.0, 0, 0, "nor a letter outside the table"},
    {nullptr, " P 1 2\n", nullptr, 0.0, 0.0, 0, 0, "the letter comes first"},
};

// ctest runs this program under de_DE.UTF-8: the rows' numbers must still be
// printed and read in the C form.
TEST(Rotctl, RowsOnAGermanDesktop)
{
    ASSERT_NE(strstr(setlocale(LC_ALL, nullptr), "de_DE"), nullptr);
    for (const RotctlRow &row : rotctl_rows)
    {
        test_reset_state();
        az_position = 33.25;
        el_position = 12.5;
        char reply[ROTCTL_REPLY_SIZE] = {0};
        if (row.before)
        {
            rotctl_handle(row.before, (int)strlen(row.before), reply, sizeof reply);
            reply[0] = 0;
        }
        EXPECT_EQ(rotctl_handle(row.request, (int)strlen(row.request), reply, sizeof reply), row.reply ? 0 : -1)
            << row.why;
        EXPECT_STREQ(reply, row.reply ? row.reply : "") << row.why;
        EXPECT_DOUBLE_EQ(row25.az, row.az) << row.why;
        EXPECT_DOUBLE_EQ(row25.el, row.el) << row.why;
        EXPECT_EQ(row25.az_tracking_enable, row.az_enable) << row.why;
        EXPECT_EQ(row25.el_tracking_enable, row.el_enable) << row.why;
    }
}

// The server on the loopback, with clients of our own.
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
    }
    int poll(void)
    {
        return rotctl_poll(listener, -1, &slot[0], &slot[1]);
    }
    int connect_client(void)
    {
        int c = peer_connect(test_port(0));
        int before = slot[0];
        for (int i = 0; i < 200 && slot[0] == before; i++)
        {
            poll();
        }
        return c;
    }
    // Serve the next request once it is at the server's end; the reply as
    // the client reads it.
    std::string serve(int client, int wait_ms = 2000)
    {
        uint32_t ready = 0;
        net_select(&slot[0], 1, 2000000, &ready);
        EXPECT_EQ(poll(), 0);
        return peer_receive(client, wait_ms);
    }
    int listener = -1;
    int32_t slot[2] = {-1, -1};
};

TEST_F(RotctlSession, WholeRepliesAndIgnoredRequestsKeepTheSession)
{
    int client = connect_client();
    // The first bytes back belong to the P: nothing answered the two before.
    peer_send(client, "\\dump_state\n");
    serve(client, 0);
    peer_send(client, "Z\n");
    serve(client, 0);
    peer_send(client, "P 120.00 45.00\n");
    EXPECT_EQ(serve(client), "RPRT 0\n");
    peer_send(client, "p\n");
    EXPECT_EQ(serve(client), "181.5000\n22.7500\nRPRT 0\n") << "in one send, so a line reader sees it whole";
    // A request longer than the 64 bytes of one read is served in two parts.
    peer_send(client, "S" + std::string(63, ' ') + "p\n");
    EXPECT_EQ(serve(client), "RPRT 0\n");
    EXPECT_EQ(serve(client), "181.5000\n22.7500\nRPRT 0\n");
    close(client);
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
    peer_send(second, "P 10 20\n");
    EXPECT_EQ(serve(second), "RPRT 0\n");
    close(first);
    close(second);
    for (int i = 0; i < 200 && slot[0] != -1; i++)
    {
        poll();
    }
    EXPECT_EQ(slot[0], -1) << "a client's close ends its session";
}

// Hamlib's own client. Its network rotator first asks for the long form
// \dump_state, which this server does not know: the client gets no answer,
// gives up after its time-out and closes, and the server must come out of
// that with its slot free and nothing sent.
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
    for (int64_t end = clock_monotonic_ms() + 10000;
         clock_monotonic_ms() < end && waitpid(pid, &status, WNOHANG) != pid;)
    {
        poll();
        connected = connected || slot[0] >= 0;
    }
    for (int i = 0; i < 200 && slot[0] != -1; i++)
    {
        poll();
    }
    net_debug = 0;
    ASSERT_TRUE(WIFEXITED(status)) << "rotctl did not finish";
    EXPECT_NE(WEXITSTATUS(status), 0) << "it cannot open a rotator that does not answer its dump_state";
    EXPECT_TRUE(connected);
    EXPECT_EQ(slot[0], -1) << "its session ended when it closed";
    EXPECT_TRUE(log.contains("dump_state"));
    EXPECT_FALSE(log.contains("net_write(")) << "nothing was sent back";
}
