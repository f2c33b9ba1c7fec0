// A rig description file and a radio's reply: the input is the file's text,
// a zero byte, and the reply's bytes. The file is loaded as the rig button
// loads it; every record it fills then decodes the reply, with and without
// the debug log, and the write records take a frequency made from the reply,
// as the Doppler follow writes one.
#include "fuzz_support.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rig/rig_survey.h"

#include <cstdio>
#include <cstring>
#include <vector>

static void fuzz_decode_table(const RigCommand *table, int count, const std::vector<uint8_t> &reply, FILE *log)
{
    for (int i = 0; i < count; i++)
    {
        if (table[i].code_length > 0)
        {
            // A copy of exactly the reply, so a read past its end is caught.
            std::vector<uint8_t> copy(reply);
            rig_decode_reply(&table[i], copy.data(), (int)copy.size(), log);
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    static FILE *log = fopen("/dev/null", "w");
    const uint8_t *split = (const uint8_t *)memchr(data, 0, size);
    size_t text_size = split ? (size_t)(split - data) : size;
    size_t reply_at = split ? text_size + 1 : size;
    size_t reply_size = size - reply_at < RIG_REPLY_SIZE ? size - reply_at : RIG_REPLY_SIZE;
    std::vector<uint8_t> reply(data + reply_at, data + reply_at + reply_size);

    rig_reset();
    rig_load_path(fuzz_scratch_file(data, text_size), 0);
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
