// Opening a port: the failures an operator meets on a new station each say
// what to do, and a port can be held by one program at a time.
#include "core/serial_port.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

class SerialPortPty : public ::testing::Test
{
  protected:
    int master = -1;
    std::string slave;

    void SetUp() override
    {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master, 0);
        ASSERT_EQ(grantpt(master), 0);
        ASSERT_EQ(unlockpt(master), 0);
        slave = ptsname(master);
    }
    void TearDown() override
    {
        close(master);
    }
};

TEST_F(SerialPortPty, OpensRawAndHeldByOneOpenerAtATime)
{
    char why[256];
    int fd = serial_port_open(slave.c_str(), why, sizeof why);
    ASSERT_GE(fd, 0) << why;
    struct termios tio;
    ASSERT_EQ(tcgetattr(fd, &tio), 0);
    EXPECT_EQ(tio.c_lflag & (ECHO | ICANON | ISIG), 0u);
    EXPECT_EQ(tio.c_iflag & (IXON | ICRNL), 0u);
    EXPECT_NE(fcntl(fd, F_GETFL) & O_NONBLOCK, 0);

    // A second instance of the station (root or not) is turned away.
    EXPECT_EQ(serial_port_open(slave.c_str(), why, sizeof why), -1);
    EXPECT_EQ(std::string(why), "Port " + slave + " is in use by another program");
    serial_port_close(fd);
    fd = serial_port_open(slave.c_str(), why, sizeof why);
    EXPECT_GE(fd, 0) << why;
    serial_port_close(fd);
}

TEST_F(SerialPortPty, FailuresSayWhatToDo)
{
    char why[256];
    EXPECT_EQ(serial_port_open("/dev/ttyMorvaneNone", why, sizeof why), -1);
    EXPECT_STREQ(why, "No such port /dev/ttyMorvaneNone");
    EXPECT_EQ(serial_port_open("/dev/null", why, sizeof why), -1);
    EXPECT_STREQ(why, "/dev/null is not a serial port");

    // A port the user may not open: root may open anything, so the open is
    // made by a child that has given its rights away.
    ASSERT_EQ(chmod(slave.c_str(), 0600), 0);
    int pipe_fds[2];
    ASSERT_EQ(pipe(pipe_fds), 0);
    pid_t child = fork();
    if (child == 0)
    {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
        {
            _exit(2);
        }
        if (geteuid() != 0)
        {
            chmod(slave.c_str(), 0);
        }
        char text[256] = "";
        serial_port_open(slave.c_str(), text, sizeof text);
        ssize_t n = write(pipe_fds[1], text, strlen(text));
        _exit(n < 0);
    }
    close(pipe_fds[1]);
    char text[256] = "";
    ssize_t n = read(pipe_fds[0], text, sizeof text - 1);
    close(pipe_fds[0]);
    waitpid(child, nullptr, 0);
    text[n > 0 ? n : 0] = 0;
    EXPECT_EQ(std::string(text), "No permission for " + slave + ": add the user to the dialout group and log in again");
}
