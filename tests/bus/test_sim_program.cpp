// morvane-sim as people run it: its command line, its control lines on
// standard input or a Unix socket, and its line on a pseudo-terminal.
#include "support/test_env.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct SimProcess
{
    pid_t pid = -1;
    int to_sim = -1;
    int from_sim = -1;
};

static std::string sim_binary(void)
{
    const char *bin = getenv("MORVANE_BIN");
    return std::string(bin ? bin : "bin") + "/morvane-sim";
}

static int sim_spawn(SimProcess *p, const std::vector<std::string> &args)
{
    int in[2], out[2];
    if (pipe(in) != 0 || pipe(out) != 0)
    {
        return -1;
    }
    p->pid = fork();
    if (p->pid == 0)
    {
        dup2(in[0], 0);
        dup2(out[1], 1);
        close(in[1]);
        close(out[0]);
        std::vector<char *> argv;
        std::string binary = sim_binary();
        argv.push_back(const_cast<char *>(binary.c_str()));
        for (const std::string &a : args)
        {
            argv.push_back(const_cast<char *>(a.c_str()));
        }
        argv.push_back(nullptr);
        execv(binary.c_str(), argv.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    p->to_sim = in[1];
    p->from_sim = out[0];
    return p->pid > 0 ? 0 : -1;
}

// One line from the process, waiting at most two seconds for it.
static std::string sim_line(int fd)
{
    std::string line;
    char c;
    while (true)
    {
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, 2000) < 1 || read(fd, &c, 1) != 1 || c == '\n')
        {
            return line;
        }
        line += c;
    }
}

static std::string sim_say(SimProcess *p, const char *line)
{
    std::string text = std::string(line) + "\n";
    if (write(p->to_sim, text.data(), text.size()) < 0)
    {
        return "";
    }
    return sim_line(p->from_sim);
}

// The exit status, or -1 when the process did not end within two seconds.
static int sim_reap(SimProcess *p)
{
    for (int i = 0; i < 400; i++)
    {
        int status;
        if (waitpid(p->pid, &status, WNOHANG) == p->pid)
        {
            close(p->to_sim);
            close(p->from_sim);
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        poll(nullptr, 0, 5);
    }
    kill(p->pid, SIGKILL);
    waitpid(p->pid, nullptr, 0);
    return -1;
}

TEST(SimProgram, StandardInputControlAndTheLink)
{
    std::string link = std::string(test_home()) + "/sim-link";
    SimProcess p;
    ASSERT_EQ(0, sim_spawn(&p, {"--link", link, "--az", "12.5", "--el", "7"}));
    std::string device = sim_line(p.from_sim);
    EXPECT_EQ(0u, device.find("/dev/pts/"));
    char target[128] = "";
    ASSERT_GT(readlink(link.c_str(), target, sizeof target - 1), 0);
    EXPECT_EQ(device, target);
    std::string state = sim_say(&p, "state");
    EXPECT_NE(std::string::npos, state.find("\"az\":12.500"));
    EXPECT_NE(std::string::npos, state.find("\"el\":7.000"));
    EXPECT_EQ("ok", sim_say(&p, "weather temperature -3.5"));
    EXPECT_EQ("ok", sim_say(&p, "switch up pressed"));
    EXPECT_NE(std::string::npos, sim_say(&p, "state").find("\"up\":1"));
    EXPECT_EQ(0u, sim_say(&p, "nonsense").find("error"));
    EXPECT_EQ('[', sim_say(&p, "display")[0]);
    EXPECT_EQ("bye", sim_say(&p, "quit"));
    EXPECT_EQ(0, sim_reap(&p));
    struct stat st;
    EXPECT_NE(0, lstat(link.c_str(), &st));
}

TEST(SimProgram, EndOfInputEndsTheSimulator)
{
    SimProcess p;
    ASSERT_EQ(0, sim_spawn(&p, {}));
    sim_line(p.from_sim);
    close(p.to_sim);
    p.to_sim = open("/dev/null", O_RDONLY);
    EXPECT_EQ(0, sim_reap(&p));
}

TEST(SimProgram, ControlSocketAndAsk)
{
    std::string socket_path = std::string(test_home()) + "/sim-control";
    SimProcess p;
    ASSERT_EQ(0, sim_spawn(&p, {"--control", socket_path, "--baud", "9600"}));
    sim_line(p.from_sim);
    struct stat st;
    for (int i = 0; i < 400 && stat(socket_path.c_str(), &st) != 0; i++)
    {
        poll(nullptr, 0, 5);
    }
    std::string ask = sim_binary() + " --ask " + socket_path + " set el 33 > " + test_home() + "/ask.out";
    ASSERT_EQ(0, system(ask.c_str()));
    EXPECT_EQ("ok\n", test_read_file(std::string(test_home()) + "/ask.out"));
    ask = sim_binary() + " --ask " + socket_path + " state > " + test_home() + "/ask.out";
    ASSERT_EQ(0, system(ask.c_str()));
    EXPECT_NE(std::string::npos, test_read_file(std::string(test_home()) + "/ask.out").find("\"el\":33.000"));
    ask = sim_binary() + " --ask " + socket_path + " quit > /dev/null";
    ASSERT_EQ(0, system(ask.c_str()));
    EXPECT_EQ(0, sim_reap(&p));
}

TEST(SimProgram, UnknownOptionIsRefused)
{
    SimProcess p;
    ASSERT_EQ(0, sim_spawn(&p, {"--speed", "3"}));
    EXPECT_EQ(2, sim_reap(&p));
}
