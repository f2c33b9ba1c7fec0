// PstRotator datagrams: the input is one datagram, cut to what the client
// reads. The answers must stay within their count and each a terminated text.
#include "fuzz_support.h"
#include "remote/pstrotator.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    pst_reset();
    size_t length = size < PST_DATAGRAM_SIZE ? size : PST_DATAGRAM_SIZE;
    std::vector<char> datagram(data, data + length);
    datagram.push_back(0);
    PstAnswers answers;
    pst_handle(datagram.data(), (int)length, &answers);
    if (answers.count < 0 || answers.count > PST_FIELDS)
    {
        fuzz_fail("pstrotator", "answer count out of range");
    }
    for (int i = 0; i < answers.count; i++)
    {
        if (!fuzz_terminated(answers.text[i], PST_ANSWER_SIZE))
        {
            fuzz_fail("pstrotator", "answer not terminated");
        }
    }
    return 0;
}
