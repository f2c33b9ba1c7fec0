#include "remote_peer.h"

#include <QString>
#include <QtGlobal>
#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

extern char **environ;

int test_port(int offset)
{
    // Below the kernel's ephemeral range, so no client socket takes it first.
    return 10000 + (int)(getpid() % 2000) * 10 + offset;
}

std::string test_port_text(int offset)
{
    return std::to_string(test_port(offset));
}

static struct sockaddr_in peer_loopback(int port)
{
    struct sockaddr_in address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = htons((uint16_t)port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A socket of the type, connected to the port or bound to it.
static int peer_socket(int type, int port)
{
    int s = socket(AF_INET, type, 0);
    struct sockaddr_in address = peer_loopback(port);
    int done = type == SOCK_STREAM ? connect(s, (struct sockaddr *)&address, sizeof address)
                                   : bind(s, (struct sockaddr *)&address, sizeof address);
    if (s >= 0 && done != 0)
    {
        close(s);
        return -1;
    }
    return s;
}

int peer_connect(int port)
{
    return peer_socket(SOCK_STREAM, port);
}

int peer_udp(int port)
{
    return peer_socket(SOCK_DGRAM, port);
}

int peer_send(int socket, const std::string &text)
{
    return (int)send(socket, text.data(), text.size(), MSG_NOSIGNAL);
}

int peer_sendto(int socket, int port, const std::string &text)
{
    struct sockaddr_in address = peer_loopback(port);
    return (int)sendto(socket, text.data(), text.size(), 0, (struct sockaddr *)&address, sizeof address);
}

std::string peer_receive(int socket, int timeout_ms, bool *closed)
{
    struct pollfd p = {socket, POLLIN, 0};
    char buffer[512];
    ssize_t n = poll(&p, 1, timeout_ms) < 1 ? 0 : recv(socket, buffer, sizeof buffer, 0);
    if (closed)
    {
        *closed = p.revents != 0 && n < 1;
    }
    return std::string(buffer, n > 0 ? (size_t)n : 0);
}

static LogCapture *log_capture;

static void log_capture_handler(QtMsgType, const QMessageLogContext &, const QString &message)
{
    log_capture->lines.push_back(message.toStdString());
}

LogCapture::LogCapture()
{
    log_capture = this;
    qInstallMessageHandler(log_capture_handler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(nullptr);
}

bool LogCapture::contains(const std::string &text) const
{
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string &line) { return line.find(text) != std::string::npos; });
}

bool peer_rotctl_installed(void)
{
    return access("/usr/bin/rotctl", X_OK) == 0;
}

int peer_spawn_rotctl(const std::vector<std::string> &args, const std::string &out_path)
{
    std::vector<char *> argv;
    argv.push_back(const_cast<char *>("rotctl"));
    for (const std::string &arg : args)
    {
        argv.push_back(const_cast<char *>(arg.c_str()));
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t pid = -1;
    int result = posix_spawn(&pid, "/usr/bin/rotctl", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return result == 0 ? (int)pid : -1;
}
