// EasyComm words as a line delivers them: the input is cut at the line's
// terminators into words of at most 29 characters, each acted on in turn.
// The code must be one of the table's and the reply a terminated text.
#include "fuzz_support.h"
#include "remote/easycomm.h"

#include <cstring>
#include <vector>

static void fuzz_word(const uint8_t *data, size_t size)
{
    std::vector<char> word(data, data + size);
    word.push_back(0);
    int code = easycomm_parse(&easycomm, word.data());
    if (code < 0 || code > EASYCOMM_NONE)
    {
        fuzz_fail("easycomm", "code out of range");
    }
    if (!fuzz_terminated(easycomm.reply, sizeof easycomm.reply))
    {
        fuzz_fail("easycomm", "reply not terminated");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    easycomm_reset();
    size_t start = 0;
    for (size_t i = 0; i <= size; i++)
    {
        if (i == size || data[i] == '\n' || data[i] == '\r' || data[i] == ' ')
        {
            size_t length = i - start;
            fuzz_word(data + start, length < EASYCOMM_WORD_SIZE ? length : EASYCOMM_WORD_SIZE - 1);
            start = i + 1;
        }
    }
    return 0;
}
