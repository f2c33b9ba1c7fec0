// Two pseudo-terminals joined by socat, as a null-modem cable between our
// serial link and a test playing the rotator controller.
#pragma once

#include <string>
#include <sys/types.h>

class PtyPair
{
  public:
    PtyPair();
    ~PtyPair();
    // False when socat is missing or did not come up: the caller skips.
    bool ok() const
    {
        return far_fd >= 0;
    }
    std::string near_name; // for the program's SerialLink
    std::string far_name;  // the test's end
    int far_fd = -1;

    // Send text from the far end.
    void send(const std::string &text);
    // What reached the far end within timeout_ms ("" on a time-out). Waits
    // for the first byte, then takes what follows within a few ms.
    std::string receive(int timeout_ms);

  private:
    pid_t pid = -1;
};
