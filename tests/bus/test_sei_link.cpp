#include "sim_fixture.h"
#include "support/test_env.h"

#include "bus/sei_commands.h"
#include "bus/sei_link.h"
#include "core/clock.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <termios.h>

static std::string sei_ini_value(const char *key)
{
    char path[600];
    settings_path(ini_file_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);
    return ini_value(&ini, "SEI", key, "<missing>");
}

static std::string sei_debug_log(void)
{
    char path[600];
    settings_path("sei_debug.log", path, sizeof path);
    return test_read_file(path);
}

class SeiLink : public ::testing::Test
{
  protected:
    PtyPeer peer = {-1, -1, ""};
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        ASSERT_EQ(0, pty_peer_open(&peer));
    }
    void TearDown() override
    {
        sei_link_reset();
        pty_peer_close(&peer);
    }
    speed_t line_speed(void)
    {
        struct termios tio;
        EXPECT_EQ(0, tcgetattr(peer.slave_keep, &tio));
        EXPECT_FALSE(tio.c_lflag & (ICANON | ECHO));
        return cfgetospeed(&tio);
    }
};

TEST_F(SeiLink, OddValuesAreNormalisedWhenWrittenBack)
{
    struct Row
    {
        const char *key, *stored, *written;
    };
    const Row rows[] = {
        {"BaudRate", "14400", "14400"}, {"BaudRate", "9601", "9600"}, {"DataBits", "5", "8"},
        {"StopBits", "2.5", "2"},       {"Parity", "odd", "None"},    {"FlowControl", "xon", "None"},
    };
    for (const Row &row : rows)
    {
        test_clear_settings();
        bus_set_key(row.key, row.stored);
        SeiSettings record = {};
        sei_load_settings(ini_file_name, &record);
        sei_save_settings(ini_file_name, &record);
        EXPECT_EQ(row.written, sei_ini_value(row.key)) << row.key << "=" << row.stored;
    }
}

TEST_F(SeiLink, FailedOpenSavesTheDefaultsAndTheClosedPortFailsAtOnce)
{
    struct stat st;
    if (stat("/dev/ttyUSB0", &st) == 0)
    {
        GTEST_SKIP() << "a real adapter is plugged in here";
    }
    EXPECT_EQ(-1, sei_open());
    EXPECT_EQ("9600", sei_ini_value("BaudRate"));
    uint8_t request[1] = {0x10};
    uint8_t reply[3] = {7, 7, 7};
    EXPECT_EQ(-1, sei_transact(request, 1, reply, 3, SEI_BUDGET_LONG));
    EXPECT_EQ(0, reply[0] | reply[1] | reply[2]);
    uint32_t position = 99;
    EXPECT_EQ(1, sei_read_position(0, 0, 36000, &position));
    EXPECT_EQ(99u, position);
}

// A pseudo-terminal always runs 8 bits without parity, so the frame format is
// checked on the settings the port is given, starting from what the kernel
// gives a new terminal and a port left with every flag set.
TEST(SeiLineSettings, RawFromAnyPreviousStateWithHardwareFlowOnlyWhenAsked)
{
    struct Row
    {
        int data, parity, stop, flow;
        tcflag_t want;
    };
    const Row rows[] = {
        {1, 0, 0, 0, CS8},
        {0, 2, 0, 2, CS7 | PARENB},
        {1, 1, 2, 1, CS8 | PARENB | PARODD | CSTOPB | CRTSCTS},
        {1, 3, 1, 3, CS8 | PARENB | PARODD | CMSPAR | CSTOPB},
        {1, 4, 0, 0, CS8 | PARENB | CMSPAR},
    };
    for (const Row &row : rows)
    {
        SeiSettings s = {};
        s.DataBits = row.data;
        s.Parity = row.parity;
        s.StopBits = row.stop;
        s.FlowControl = row.flow;
        s.BaudRate = 5;
        struct termios tio = {};
        tio.c_cflag = CRTSCTS | PARENB | HUPCL;
        tio.c_iflag = ICRNL | IXON | IXOFF | IXANY | INPCK | ISTRIP | IMAXBEL | BRKINT;
        tio.c_oflag = OPOST | ONLCR;
        tio.c_lflag = ISIG | ICANON | ECHO | ECHOE | IEXTEN;
        sei_line_termios(&s, &tio);
        EXPECT_EQ(row.want, tio.c_cflag & (CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS))
            << row.data << row.parity << row.stop << row.flow;
        EXPECT_EQ(0u, tio.c_iflag | tio.c_oflag | tio.c_lflag);
        EXPECT_EQ((speed_t)B19200, cfgetospeed(&tio));
    }
}

static int settle_sleeps;
static void count_sleep(int ms)
{
    settle_sleeps += ms;
}

TEST_F(SeiLink, OpensRawSettlesTwoSecondsAndKeeps14400At9600)
{
    bus_set_key("BaudRate", "14400");
    bus_set_key("PortName", peer.device);
    settle_sleeps = 0;
    clock_set_sleep_hook(count_sleep);
    ASSERT_EQ(0, sei_open());
    EXPECT_EQ(2000, settle_sleeps);
    EXPECT_EQ((speed_t)B9600, line_speed());
    sei_close();
    EXPECT_EQ("14400", sei_ini_value("BaudRate"));
    bus_set_key("BaudRate", "38400");
    ASSERT_EQ(0, bus_open_on(peer.device));
    EXPECT_EQ((speed_t)B38400, line_speed());
}

TEST_F(SeiLink, ShortReplyCountsWhatCameAndTheNextStartsClean)
{
    ASSERT_EQ(0, bus_open_on(peer.device));
    pty_peer_write(&peer, {0xAA, 0xBB});
    uint8_t request[2] = {0xF1, 0x0B};
    uint8_t reply[3];
    EXPECT_EQ(4, sei_transact(request, 2, reply, 3, 5));
    uint8_t mode = 0x55, status = 0x66;
    EXPECT_EQ(1, sei_read_mode(1, &mode, &status));
    EXPECT_EQ(0x5566, mode << 8 | status);
    EXPECT_EQ(2, sei_transact(request, 2, reply, 3, 0));
    EXPECT_EQ(0, reply[0] | reply[1] | reply[2]);
}

TEST_F(SeiLink, LateReplyIsReadAsTheStartOfTheNextOne)
{
    ASSERT_EQ(0, bus_open_on(peer.device));
    uint16_t resolution = 1;
    uint8_t status = 0, mode = 0;
    EXPECT_EQ(1, sei_read_resolution(0, &resolution, &status));
    // The encoder answers after the budget ran out; nothing flushes the line.
    pty_peer_write(&peer, {0x8C, 0xA0, 0x00});
    EXPECT_EQ(0, sei_read_mode(0, &mode, &status));
    EXPECT_EQ(0x8CA0, mode << 8 | status);
    EXPECT_EQ(1u, (unsigned)resolution);
}

TEST_F(SeiLink, DebugAloneWritesExactlyTheHeader)
{
    bus_set_key("SeiDebug", "1");
    clock_freeze(1700000000); // Tue Nov 14 22:13:20 2023 UTC
    ASSERT_EQ(0, bus_open_on(peer.device));
    pty_peer_write(&peer, {0x00, 0x2A});
    uint32_t position = 0;
    EXPECT_EQ(0, sei_read_position(0, 0, 36000, &position));
    sei_close();
    EXPECT_EQ("Log created: Tue Nov 14 22:13:20 2023\n"
              "=============================================\n",
              sei_debug_log());
}

// The simulator leaves its end as the kernel sets up a new terminal; the
// program's own setup must make every byte pass as it is, in both directions.
TEST_F(SimBus, ControlCharactersCrossTheLineUnchanged)
{
    SimServer fresh;
    sim_station_init(&fresh.station);
    ASSERT_EQ(0, sim_server_start(&fresh, nullptr));
    struct termios tio;
    ASSERT_EQ(0, tcgetattr(fresh.slave_keep, &tio));
    sim_server_stop(&fresh);
    EXPECT_TRUE((tio.c_iflag & (IXON | ICRNL)) && (tio.c_oflag & OPOST) && (tio.c_lflag & (ICANON | ECHO)));

    // Positions whose two bytes are 0x0A 0x0D, 0x7F 0x03, XOFF then XON, XON.
    const struct
    {
        const char *angle;
        uint32_t counts;
    } readings[] = {{"25.73", 0x0A0D}, {"325.15", 0x7F03}, {"48.81", 0x1311}, {"44.32", 0x1150}};
    for (const auto &r : readings)
    {
        control((std::string("set az ") + r.angle).c_str());
        uint32_t position = 0;
        EXPECT_EQ(0, sei_read_position(0, 0, 36000, &position)) << r.angle;
        EXPECT_EQ(r.counts, position) << r.angle;
    }
    uint8_t status = 0;
    for (uint8_t duty : {0x03, 0x0A, 0x0D, 0x11, 0x13, 0x7F})
    {
        EXPECT_EQ(0, sei_pwm_control(0, 3, duty, &status)) << (int)duty;
        std::lock_guard<std::mutex> hold(sim->lock);
        EXPECT_EQ(duty, sim->station.outputs[0].duty[3]) << (int)duty;
    }
}

// The devices are still busy with the last read when the program goes: the
// sleep frame must wait in the line for them, not be thrown away at close.
TEST_F(SimBus, TheSleepFrameOutlivesTheClose)
{
    // At 1200 baud the byte takes 8 ms to leave.
    sei_link_reset();
    sim->baud = 1200;
    bus_set_key("BaudRate", "1200");
    ASSERT_EQ(0, bus_open_on(sim->device));
    control("late 0 500");
    uint32_t position = 0;
    EXPECT_EQ(1, sei_read_position(0, 0, 36000, &position));
    EXPECT_EQ(0, sei_sleep(SEI_BROADCAST));
    sei_close();
    int sleeps = 0;
    for (int i = 0; i < 300 && sleeps == 0; i++)
    {
        poll(nullptr, 0, 10);
        std::lock_guard<std::mutex> hold(sim->lock);
        sleeps = sim->station.sleep_frames;
    }
    EXPECT_EQ(1, sleeps);
    EXPECT_NE(std::string::npos, control("state").find("\"asleep\":[0,1]"));
}
