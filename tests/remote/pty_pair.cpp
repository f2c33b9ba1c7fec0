#include "pty_pair.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

extern char **environ;

// socat -d -d names each pseudo-terminal it makes on its standard error:
// "... N PTY is /dev/pts/7". Read those lines as they come, up to a bound.
static bool pty_read_names(int fd, std::string *first, std::string *second)
{
    std::string text;
    char buffer[512];
    for (int i = 0; i < 100; i++)
    {
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, 5000) < 1)
        {
            return false;
        }
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 1)
        {
            return false;
        }
        text.append(buffer, (size_t)n);
        std::string names[2];
        int found = 0;
        size_t at = 0;
        while (found < 2 && (at = text.find("PTY is ", at)) != std::string::npos)
        {
            size_t end = text.find('\n', at);
            if (end == std::string::npos)
            {
                break;
            }
            names[found++] = text.substr(at + 7, end - at - 7);
            at = end;
        }
        // socat reports both before it starts to copy.
        if (found == 2 && text.find("starting data transfer loop") != std::string::npos)
        {
            *first = names[0];
            *second = names[1];
            return true;
        }
    }
    return false;
}

PtyPair::PtyPair()
{
    if (access("/usr/bin/socat", X_OK) != 0)
    {
        return;
    }
    int err[2];
    if (pipe(err) != 0)
    {
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    posix_spawn_file_actions_addclose(&actions, err[0]);
    const char *argv[] = {"socat", "-d", "-d", "pty,raw,echo=0", "pty,raw,echo=0", nullptr};
    int spawned = posix_spawn(&pid, "/usr/bin/socat", &actions, nullptr, const_cast<char **>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(err[1]);
    if (spawned != 0)
    {
        pid = -1;
        close(err[0]);
        return;
    }
    bool named = pty_read_names(err[0], &near_name, &far_name);
    close(err[0]);
    if (!named)
    {
        return;
    }
    far_fd = open(far_name.c_str(), O_RDWR | O_NOCTTY);
    if (far_fd >= 0)
    {
        struct termios t;
        tcgetattr(far_fd, &t);
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
        int status;
        waitpid(pid, &status, 0);
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
    int wait = timeout_ms;
    char buffer[256];
    for (;;)
    {
        struct pollfd p = {far_fd, POLLIN, 0};
        if (poll(&p, 1, wait) < 1)
        {
            return text;
        }
        ssize_t n = read(far_fd, buffer, sizeof buffer);
        if (n < 1)
        {
            return text;
        }
        text.append(buffer, (size_t)n);
        wait = 20;
    }
}
