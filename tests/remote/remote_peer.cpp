#include "remote_peer.h"

#include <QString>
#include <QtGlobal>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

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

int peer_connect(int port)
{
    int s = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in address = peer_loopback(port);
    if (s >= 0 && connect(s, (struct sockaddr *)&address, sizeof address) != 0)
    {
        close(s);
        return -1;
    }
    return s;
}

int peer_udp(int port)
{
    int s = socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in address = peer_loopback(port);
    int on = 1;
    setsockopt(s, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (s >= 0 && bind(s, (struct sockaddr *)&address, sizeof address) != 0)
    {
        close(s);
        return -1;
    }
    return s;
}

int peer_local_port(int socket)
{
    struct sockaddr_in address;
    socklen_t size = sizeof address;
    if (getsockname(socket, (struct sockaddr *)&address, &size) != 0)
    {
        return -1;
    }
    return ntohs(address.sin_port);
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
    if (closed)
    {
        *closed = false;
    }
    struct pollfd p = {socket, POLLIN, 0};
    if (poll(&p, 1, timeout_ms) < 1)
    {
        return "";
    }
    char buffer[512];
    ssize_t n = recv(socket, buffer, sizeof buffer, 0);
    if (n < 1)
    {
        if (closed)
        {
            *closed = true;
        }
        return "";
    }
    return std::string(buffer, (size_t)n);
}

void peer_close(int socket)
{
    if (socket >= 0)
    {
        close(socket);
    }
}

static LogCapture *log_capture;

static void log_capture_handler(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (log_capture)
    {
        log_capture->lines.push_back(message.toStdString());
    }
}

LogCapture::LogCapture()
{
    log_capture = this;
    qInstallMessageHandler(log_capture_handler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(nullptr);
    log_capture = nullptr;
}

bool LogCapture::contains(const std::string &text) const
{
    for (const std::string &line : lines)
    {
        if (line.find(text) != std::string::npos)
        {
            return true;
        }
    }
    return false;
}
