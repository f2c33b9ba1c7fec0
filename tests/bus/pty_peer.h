// A raw peer on a pseudo-terminal: the test plays the devices byte by byte,
// hostile ones included, with no thread and every wait bounded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct PtyPeer
{
    int master;
    int slave_keep; // held open so the line survives the program closing its end
    char device[64];
};

// 0, or -1 when no pseudo-terminal can be had.
int pty_peer_open(PtyPeer *peer);
void pty_peer_close(PtyPeer *peer);
void pty_peer_write(PtyPeer *peer, const std::vector<uint8_t> &bytes);
// Whatever arrives within timeout_ms, up to max bytes; stops early at max.
std::vector<uint8_t> pty_peer_read(PtyPeer *peer, int max, int timeout_ms);

// Point the SEI section of the instance's INI at a device and open the bus,
// with the settle sleep skipped. Returns what sei_open returned.
int bus_open_on(const char *device);
// Write one key of the SEI section (before sei_open reads it).
void bus_set_key(const char *key, const char *value);
