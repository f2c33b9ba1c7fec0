#include "pty_pair.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

extern char **environ;

// socat -d -d names each pseudo-terminal it makes on its standard error,
// "... N PTY is /dev/pts/7", before it says it starts to copy. Read up to
// that, within a bound.
static std::string pty_read_log(int fd)
{
    std::string text;
    char buffer[512];
    struct pollfd p = {fd, POLLIN, 0};
    ssize_t n = 1;
    while (n > 0 && text.find("starting data transfer loop") == std::string::npos && poll(&p, 1, 5000) > 0)
    {
        n = read(fd, buffer, sizeof buffer);
        text.append(buffer, n > 0 ? (size_t)n : 0);
    }
    return text;
}

// The name after the index'th "PTY is ", "" when there is none.
static std::string pty_name(const std::string &text, int index)
{
    size_t at = text.find("PTY is ");
    at = index == 0 || at == std::string::npos ? at : text.find("PTY is ", at + 1);
    size_t end = at == std::string::npos ? at : text.find('\n', at);
    return end == std::string::npos ? "" : text.substr(at + 7, end - at - 7);
}

PtyPair::PtyPair()
{
    int err[2];
    if (access("/usr/bin/socat", X_OK) != 0 || pipe(err) != 0)
    {
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    posix_spawn_file_actions_addclose(&actions, err[0]);
    const char *argv[] = {"socat", "-d", "-d", "pty,raw,echo=0", "pty,raw,echo=0", nullptr};
    if (posix_spawn(&pid, "/usr/bin/socat", &actions, nullptr, const_cast<char **>(argv), environ) != 0)
    {
        pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(err[1]);
    std::string log = pid > 0 ? pty_read_log(err[0]) : "";
    close(err[0]);
    near_name = pty_name(log, 0);
    far_name = pty_name(log, 1);
    if (log.find("starting data transfer loop") == std::string::npos || far_name.empty())
    {
        return;
    }
    far_fd = open(far_name.c_str(), O_RDWR | O_NOCTTY);
    struct termios t;
    if (far_fd >= 0 && tcgetattr(far_fd, &t) == 0)
    {
        cfmakeraw(&t);
        tcsetattr(far_fd, TCSANOW, &t);
    }
}

PtyPair::~PtyPair()
{
    if (far_fd >= 0)
    {
        close(far_fd);
    }
    if (pid > 0)
    {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
}

void PtyPair::send(const std::string &text)
{
    ssize_t n = write(far_fd, text.data(), text.size());
    (void)n;
}

std::string PtyPair::receive(int timeout_ms)
{
    std::string text;
    char buffer[256];
    struct pollfd p = {far_fd, POLLIN, 0};
    ssize_t n = 1;
    // The first byte within the time-out, then what follows within a few ms.
    while (n > 0 && poll(&p, 1, text.empty() ? timeout_ms : 20) > 0)
    {
        n = read(far_fd, buffer, sizeof buffer);
        text.append(buffer, n > 0 ? (size_t)n : 0);
    }
    return text;
}
