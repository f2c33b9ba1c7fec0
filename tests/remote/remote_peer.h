// The far end of the remote links in tests: plain loopback sockets that play
// a rotctl client or PstRotator, and a catcher for the debug log. Every wait
// is bounded; nothing here sleeps to let time pass.
#pragma once

#include <string>
#include <vector>

// A port of this test program: derived from its pid, so two runs of the suite
// side by side do not meet. Offsets 0 to 9.
int test_port(int offset);
std::string test_port_text(int offset);

// A TCP client connected to 127.0.0.1:port, or a UDP socket bound to it; -1
// when that fails.
int peer_connect(int port);
int peer_udp(int port);
int peer_send(int socket, const std::string &text);
int peer_sendto(int socket, int port, const std::string &text);
// Bytes received within timeout_ms, "" on a time-out; closed is set when the
// peer closed the connection.
std::string peer_receive(int socket, int timeout_ms, bool *closed = nullptr);

// Hamlib's own command line client, when the system has it.
bool peer_rotctl_installed(void);
// Start rotctl with these arguments, its output (both streams) into
// out_path; the child's pid, or -1.
int peer_spawn_rotctl(const std::vector<std::string> &args, const std::string &out_path);

// Everything the program writes to the debug log while one is alive.
struct LogCapture
{
    LogCapture();
    ~LogCapture();
    std::vector<std::string> lines;
    bool contains(const std::string &text) const;
};
