#include "remote/rotctl.h"

#include "core/clock.h"
#include "core/drive.h"
#include "core/state.h"
#include "drive_recorder.h"
#include "drive_sim.h"
#include "remote/net.h"
#include "remote_peer.h"
#include "support/test_env.h"

#include <arpa/inet.h>
#include <clocale>
#include <cmath>
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
    {nullptr, "q\n", nullptr, 0.0, 0.0, 0, 0, "GPredict's goodbye is not answered"},
};

// The same requests and Hamlib's own with HamlibCompatible on: GPredict's
// lines keep their bytes, everything else gets an answer. Limits 0..450, 0..90.
static const RotctlRow hamlib_rows[] = {
    {nullptr, "P 120.50 45.25\n", "RPRT 0\n", 120.5, 45.25, 1, 1, "GPredict's P is answered as before"},
    {nullptr, "P 174,46 0,00\n", "RPRT 0\n", 174.46, 0.0, 1, 1, "a decimal comma is read as a point"},
    {"P 120 45\n", "p\n", "33.2500\n12.5000\nRPRT 0\n", 120.0, 45.0, 1, 1, "GPredict's p is answered as before"},
    {"P 120 45\n", "P 451 10\n", "RPRT -1\n", 120.0, 45.0, 1, 1, "an azimuth past the limit moves nothing"},
    {nullptr, "P 10 -0.5\n", "RPRT -1\n", 0.0, 0.0, 0, 0, "an elevation below the limit moves nothing"},
    {nullptr, "\\set_pos 200 10\n", "RPRT 0\n", 200.0, 10.0, 1, 1, "a long name acts as its letter"},
    {nullptr, "\\get_pos\n", "33.2500\n12.5000\nRPRT 0\n", 0.0, 0.0, 0, 0, "get_pos is p"},
    {nullptr, "+\\get_pos\n", "get_pos:\nAzimuth: 33.250000\nElevation: 12.500000\nRPRT 0\n", 0.0, 0.0, 0, 0,
     "a plus asks for the extended form"},
    {nullptr, ";P 100 20\n", "set_pos: 100 20;RPRT 0\n", 100.0, 20.0, 1, 1, "a separator stands between the lines"},
    {nullptr, "+_\n", "get_info:\nInfo: Morvane v2.18\nRPRT 0\n", 0.0, 0.0, 0, 0, "the info in the extended form"},
    {nullptr, "_\n", "RPRT Morvane v2.18\n", 0.0, 0.0, 0, 0, "the info in the short form as before"},
    {nullptr, "\\dump_state\n",
     "1\n2\nmin_az=0.000000\nmax_az=450.000000\nmin_el=0.000000\nmax_el=90.000000\nsouth_zero=0\nrot_type=AzEl\ndone\n",
     0.0, 0.0, 0, 0, "the state a Hamlib client opens with, from the station's limits"},
    {nullptr, "Z\n", "RPRT -4\n", 0.0, 0.0, 0, 0, "an unknown letter is refused, not left unanswered"},
    {nullptr, "\\set_freq 145000000\n", "RPRT -4\n", 0.0, 0.0, 0, 0, "so is an unknown long name"},
    {nullptr, "M 8\n", "RPRT -1\n", 0.0, 0.0, 0, 0, "a move needs a direction and a speed"},
};

// ctest runs this program under de_DE.UTF-8: the rows' numbers must still be
// printed and read in the C form.
static void check_rows(const RotctlRow *rows, size_t count, int hamlib)
{
    for (size_t i = 0; i < count; i++)
    {
        const RotctlRow &row = rows[i];
        test_reset_state();
        settings.HamlibCompatible = hamlib;
        settings.AzimuthLimitMax = 450;
        settings.ElevationLimitMax = 90;
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

TEST(Rotctl, RowsOnAGermanDesktop)
{
    ASSERT_NE(strstr(setlocale(LC_ALL, nullptr), "de_DE"), nullptr);
    check_rows(rotctl_rows, sizeof rotctl_rows / sizeof rotctl_rows[0], 0);
    check_rows(hamlib_rows, sizeof hamlib_rows / sizeof hamlib_rows[0], 1);
    char reply[ROTCTL_REPLY_SIZE] = {0};
    EXPECT_EQ(rotctl_handle("\\quit\n", 6, reply, sizeof reply), 1) << "quit ends the session, unanswered";
    EXPECT_EQ(rotctl_handle("q\n", 2, reply, sizeof reply), 1);
    EXPECT_STREQ(reply, "");
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

TEST_F(RotctlSession, WholeLinesAreServedHoweverTheyArrive)
{
    int client = connect_client();
    // Unknown requests keep the Part's silence with HamlibCompatible off: the
    // first bytes back belong to the P.
    peer_send(client, "\\dump_state\nZ\n");
    serve(client, 0);
    peer_send(client, "P 120");
    serve(client, 0);
    peer_send(client, " 45\n");
    EXPECT_EQ(serve(client), "RPRT 0\n");
    EXPECT_DOUBLE_EQ(row25.el, 45.0) << "a request in two reads is one request";
    peer_send(client, "p\r\nS\n");
    std::string both = serve(client);
    both += both.size() < 31 ? peer_receive(client, 2000) : "";
    EXPECT_EQ(both, "181.5000\n22.7500\nRPRT 0\nRPRT 0\n") << "two lines in one read, both served";
    EXPECT_EQ(row25.az_tracking_enable, 0);
    // A line longer than a session keeps is dropped up to its line feed.
    peer_send(client, "P 1 2" + std::string(300, ' ') + "\np\n");
    std::string reply;
    for (int i = 0; i < 10 && reply.empty(); i++)
    {
        reply = serve(client, 200);
    }
    EXPECT_EQ(reply, "181.5000\n22.7500\nRPRT 0\n");
    EXPECT_DOUBLE_EQ(row25.az, 120.0);
    close(client);
}

// A client that asks and never reads fills both ends' buffers. The server
// must not wait for it: its session ends, and the other listener's client
// is served as usual.
TEST_F(RotctlSession, ClientThatNeverReadsLosesItsSessionAlone)
{
    int second_listener = rotctl_start("127.0.0.1", test_port_text(1).c_str(), "tcp");
    ASSERT_GE(second_listener, 0);
    int greedy = socket(AF_INET, SOCK_STREAM, 0);
    int small = 1024;
    setsockopt(greedy, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons((uint16_t)test_port(0));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(connect(greedy, (struct sockaddr *)&address, sizeof address), 0);
    for (int i = 0; i < 200 && slot[0] < 0; i++)
    {
        rotctl_poll(listener, second_listener, &slot[0], &slot[1]);
    }
    ASSERT_GE(slot[0], 0);
    std::string requests;
    for (int i = 0; i < 32; i++)
    {
        requests += "p\n";
    }
    for (int i = 0; i < 20000 && slot[0] >= 0; i++)
    {
        send(greedy, requests.data(), requests.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        rotctl_poll(listener, second_listener, &slot[0], &slot[1]);
    }
    EXPECT_EQ(slot[0], -1) << "the session whose replies would block is ended";
    int other = peer_connect(test_port(1));
    for (int i = 0; i < 200 && slot[1] < 0; i++)
    {
        rotctl_poll(listener, second_listener, &slot[0], &slot[1]);
    }
    peer_send(other, "p\n");
    std::string reply;
    for (int i = 0; i < 200 && reply.empty(); i++)
    {
        rotctl_poll(listener, second_listener, &slot[0], &slot[1]);
        reply = peer_receive(other, 10);
    }
    EXPECT_EQ(reply, "181.5000\n22.7500\nRPRT 0\n");
    close(greedy);
    close(other);
    rotctl_stop(second_listener, slot[1]);
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

// Hamlib's own client against the server and the simulated mount: it opens
// with \\dump_state, and every command returns without an error. The mount
// stands at 181.5 / 22.75; the drive runs on its simulated ticks meanwhile.
class RotctlHamlib : public RotctlSession
{
  protected:
    void SetUp() override
    {
        RotctlSession::SetUp();
        if (!peer_rotctl_installed())
        {
            GTEST_SKIP() << "Hamlib's rotctl is not installed (package libhamlib-utils)";
        }
        drive_test_settings();
        drive_sim_start(&sim);
        clock_set_sleep_hook([](int) {});
        settings.TrackingSource = SOURCE_GPREDICT;
        sim.station.mount.az = 181.5;
        sim.station.mount.el = 22.75;
    }
    void TearDown() override
    {
        drive_sim_stop();
        RotctlSession::TearDown();
    }
    // Serve and tick until rotctl ends: its exit status and output.
    int run(const std::vector<std::string> &commands, std::string *output)
    {
        std::string out = std::string(test_home()) + "/rotctl.out";
        std::vector<std::string> args = {"-m", "2", "-r", "127.0.0.1:" + test_port_text(0)};
        args.insert(args.end(), commands.begin(), commands.end());
        int pid = peer_spawn_rotctl(args, out);
        int status = -1;
        for (int64_t end = clock_monotonic_ms() + 20000;
             clock_monotonic_ms() < end && waitpid(pid, &status, WNOHANG) != pid;)
        {
            poll();
            drive_sim_tick(&sim);
        }
        *output = test_read_file(out);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    DriveSim sim;
};

TEST_F(RotctlHamlib, EveryCommandOfTheRealClientSucceedsAndKParks)
{
    std::string output;
    EXPECT_EQ(run({"P", "120", "30", "p", "S", "K", "_", "\\dump_state"}, &output), 0) << output;
    EXPECT_NE(output.find("181.50\n22.75"), std::string::npos) << "p prints the mount, not the target:\n" << output;
    EXPECT_EQ(output.find("rror"), std::string::npos) << output;
    EXPECT_DOUBLE_EQ(row25.az, 120.0);
    EXPECT_EQ(park_active, 1) << "K took the panel's PARK";
    for (int i = 0; i < 20000 && (std::fabs(sim.station.mount.az - settings.Park_Azimuth) > 1.0 ||
                                  std::fabs(sim.station.mount.el - settings.Park_Elevation) > 1.0);
         i++)
    {
        drive_sim_tick(&sim);
    }
    EXPECT_NEAR(sim.station.mount.az, settings.Park_Azimuth, 1.0) << "the simulated mount went to its park";
    EXPECT_NEAR(sim.station.mount.el, settings.Park_Elevation, 1.0);
}

TEST_F(RotctlHamlib, MoveRunsTheArrowInManualUntilStop)
{
    std::string output;
    EXPECT_EQ(run({"M", "16", "50"}, &output), 0) << output;
    EXPECT_EQ(az_manual, 1);
    EXPECT_EQ(az_direction, DIR_RIGHT);
    for (int i = 0; i < 40; i++)
    {
        drive_sim_tick(&sim);
    }
    EXPECT_GT(sim.station.mount.az, 181.6) << "the mount turns clockwise";
    EXPECT_EQ(run({"S"}, &output), 0) << output;
    EXPECT_EQ(az_direction, DIR_STOPPED);
    EXPECT_EQ(run({"P", "500", "10"}, &output), 2) << "outside the limits the client reports an error";
}
