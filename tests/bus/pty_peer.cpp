#include "pty_peer.h"

#include "bus/sei_link.h"
#include "core/clock.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

int pty_peer_open(PtyPeer *peer)
{
    peer->master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (peer->master < 0 || grantpt(peer->master) != 0 || unlockpt(peer->master) != 0)
    {
        return -1;
    }
    snprintf(peer->device, sizeof peer->device, "%s", ptsname(peer->master));
    peer->slave_keep = open(peer->device, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (peer->slave_keep < 0)
    {
        return -1;
    }
    // The program's end keeps the kernel's settings of a new terminal: the
    // bus makes its own line.
    return 0;
}

void pty_peer_close(PtyPeer *peer)
{
    // A closed or never opened end is -1, which close refuses harmlessly.
    close(peer->slave_keep);
    close(peer->master);
    peer->master = peer->slave_keep = -1;
}

void pty_peer_write(PtyPeer *peer, const std::vector<uint8_t> &bytes)
{
    if (!bytes.empty() && write(peer->master, bytes.data(), bytes.size()) < 0)
    {
        perror("pty_peer_write");
    }
    // A pty hands bytes to the other side asynchronously; wait (bounded)
    // until the program's end can see them, so a test never races its peer.
    struct pollfd p = {peer->slave_keep, POLLIN, 0};
    poll(&p, 1, 200);
}

std::vector<uint8_t> pty_peer_read(PtyPeer *peer, int max, int timeout_ms)
{
    std::vector<uint8_t> bytes;
    while ((int)bytes.size() < max)
    {
        struct pollfd p = {peer->master, POLLIN, 0};
        if (poll(&p, 1, timeout_ms) < 1)
        {
            break;
        }
        uint8_t buffer[512];
        int room = max - (int)bytes.size();
        ssize_t n = read(peer->master, buffer, room < (int)sizeof buffer ? (size_t)room : sizeof buffer);
        if (n <= 0)
        {
            break;
        }
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    return bytes;
}

void bus_set_key(const char *key, const char *value)
{
    char path[600];
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    settings_path(ini_file_name, path, sizeof path);
    IniFile ini;
    ini_read(path, &ini);
    ini_set(&ini, "SEI", key, value);
    ini_write(path, &ini);
}

static void bus_no_sleep(int) {}

int bus_open_on(const char *device)
{
    bus_set_key("PortName", device);
    clock_set_sleep_hook(bus_no_sleep);
    return sei_open();
}
