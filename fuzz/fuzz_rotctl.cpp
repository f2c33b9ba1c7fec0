// rotctl requests as a client may send them: the input is cut into lines and
// each line, at most one request long, is handled as the server would. Every
// reply must stay a terminated text inside its buffer, the small ones too.
#include "fuzz_support.h"
#include "core/state.h"
#include "remote/rotctl.h"

#include <algorithm>
#include <cstring>
#include <vector>

static void fuzz_request(const uint8_t *data, size_t size)
{
    // A heap copy of exactly the request and its zero, so a read past either
    // is caught.
    std::vector<char> request(data, data + size);
    request.push_back(0);
    char reply[ROTCTL_REPLY_SIZE];
    if (rotctl_handle(request.data(), (int)size, reply, sizeof reply) == 0 && !fuzz_terminated(reply, sizeof reply))
    {
        fuzz_fail("rotctl", "reply not terminated");
    }
    // A client's reply cut to a few bytes still ends in its terminator.
    std::vector<char> small(1 + size % 8);
    if (rotctl_handle(request.data(), (int)size, small.data(), (int)small.size()) == 0 &&
        !fuzz_terminated(small.data(), small.size()))
    {
        fuzz_fail("rotctl", "short reply not terminated");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    rotctl_reset();
    // Both dialects: an odd first byte (a '+', say) speaks Hamlib's, an even
    // one the plain one-letter rows.
    settings.HamlibCompatible = size > 0 ? data[0] & 1 : 0;
    size_t at = 0;
    while (at < size)
    {
        const uint8_t *end = (const uint8_t *)memchr(data + at, '\n', size - at);
        size_t line = end ? (size_t)(end - (data + at)) + 1 : size - at;
        fuzz_request(data + at, std::min(line, (size_t)ROTCTL_REQUEST_SIZE));
        at += line;
    }
    return 0;
}
