// A rig description file and a radio's reply. An input that starts with the
// byte 01 holds the reply's length (at most 64), the reply, then the file;
// any other input is a file alone, so real rig files (UTF-16 ones too) serve
// as seeds as they are. The file is loaded as the rig button loads it; every
// record it fills then decodes the reply, with and without the debug log,
// and the write records take a frequency made from the reply, as the Doppler
// follow writes one.
#include "fuzz_support.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rig/rig_survey.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

static void fuzz_decode_table(const RigCommand *table, int count, const std::vector<uint8_t> &reply, FILE *log)
{
    for (int i = 0; i < count; i++)
    {
        if (table[i].code_length > 0)
        {
            // A copy of exactly the reply, so a read past its end is caught;
            // an empty one still has storage, as the engine's buffer does.
            std::vector<uint8_t> copy(reply);
            copy.reserve(1);
            rig_decode_reply(&table[i], copy.data(), (int)copy.size(), log);
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    static FILE *log = fopen("/dev/null", "w");
    size_t reply_size = 0;
    size_t file_at = 0;
    if (size >= 2 && data[0] == 0x01)
    {
        reply_size = std::min({(size_t)data[1], (size_t)RIG_REPLY_SIZE, size - 2});
        file_at = 2 + reply_size;
    }
    std::vector<uint8_t> reply(data + file_at - reply_size, data + file_at);

    rig_reset();
    rig_load_path(fuzz_scratch_file(data + file_at, size - file_at), 0);
    fuzz_decode_table(rig_init, RIG_INIT_COUNT, reply, nullptr);
    fuzz_decode_table(rig_status, RIG_STATUS_COUNT, reply, log);

    // Any 64-bit value the reply's first bytes make, negative ones included.
    long long hz = 0;
    if (!reply.empty())
    {
        memcpy(&hz, reply.data(), reply.size() < sizeof hz ? reply.size() : sizeof hz);
    }
    for (int param : {pmFreq, pmFreqA, pmFreqB})
    {
        rig_encode_frequency(&rig_write[param], hz);
    }
    char survey[2048];
    rig_survey(survey, sizeof survey);
    if (!fuzz_terminated(survey, sizeof survey))
    {
        fuzz_fail("rig", "survey not terminated");
    }
    return 0;
}
