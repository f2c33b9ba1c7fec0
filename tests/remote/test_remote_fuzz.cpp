// Hostile input for the three remote parsers. This program is built with
// AddressSanitizer and UndefinedBehaviorSanitizer over the parsers' own
// sources, so a byte read or written outside a field fails the run even where
// the result would look right.
#include "core/state.h"
#include "remote/easycomm.h"
#include "remote/pstrotator.h"
#include "remote/rotctl.h"
#include "support/test_env.h"

#include <QtGlobal>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

// Every parser logs; thousands of rounds of it would bury the report.
static void fuzz_quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

// Bytes drawn from the protocol's own words and delimiters, binary noise, or
// long runs of digits without a delimiter; the named hostile inputs first.
static std::string fuzz_input(std::mt19937 &rng, int round, const std::vector<std::string> &words, int max_size)
{
    if (round < (int)words.size())
    {
        return words[(size_t)round];
    }
    std::string bytes;
    size_t size = rng() % (unsigned)(max_size + 1);
    unsigned kind = rng() % 3;
    while (bytes.size() < size)
    {
        bytes += kind == 0 ? words[rng() % words.size()] : std::string(1, (char)(kind == 1 ? rng() : '0' + rng() % 10));
    }
    bytes.resize(size);
    return bytes;
}

static bool terminated(const char *text, size_t size)
{
    return strnlen(text, size) < size;
}

TEST(Fuzz, ParsersHoldTheirBuffers)
{
    test_reset_state();
    qInstallMessageHandler(fuzz_quiet);
    std::mt19937 rng{20261123};
    std::string many_queries = "<PST>";
    for (int i = 0; i < 20; i++)
    {
        many_queries += "<AZ?>";
    }
    std::vector<std::string> rotctl_words = {
        "P", "p", "S", "_", "\\dump_state", " ",         "\n",    "120.5", "-45", "+",
        ";", ",", "K", "M", "16",           "\\get_pos", "\\quit"};
    rotctl_words.insert(rotctl_words.begin(), {std::string(ROTCTL_LINE_SIZE, 'P'), "P " + std::string(60, '7'),
                                               "+P " + std::string(30, '1') + " " + std::string(30, '2')});
    std::vector<std::string> pst_words = {"<PST>", "</PST>", "<AZIMUTH>", "<ELEVATION>", "AZ?", "<", ">", "12.5"};
    pst_words.insert(pst_words.begin(), {std::string(PST_DATAGRAM_SIZE, 'A'), many_queries,
                                         "<PST><AZIMUTH>" + std::string(60, '1') + "</AZIMUTH></PST>"});
    std::vector<std::string> easycomm_words = {"AZ", "EL", "SA", "VE", "az", "1", ".", "-"};
    easycomm_words.insert(easycomm_words.begin(), std::string(EASYCOMM_WORD_SIZE - 1, '8'));
    for (int round = 0; round < 5000; round++)
    {
        // A session hands over at most one line of its line buffer; every
        // other round speaks Hamlib's dialect.
        settings.HamlibCompatible = round & 1;
        settings.AzimuthLimitMax = 450;
        settings.ElevationLimitMax = 90;
        std::string request = fuzz_input(rng, round, rotctl_words, 300);
        char reply[ROTCTL_REPLY_SIZE];
        int length = std::min((int)request.size(), (int)ROTCTL_LINE_SIZE);
        if (rotctl_handle(request.c_str(), length, reply, sizeof reply) == 0)
        {
            ASSERT_TRUE(terminated(reply, sizeof reply)) << round;
        }
        ASSERT_EQ(rotctl_handle("p\n", 2, reply, 4), 0) << "a reply cut to a small buffer";
        ASSERT_TRUE(terminated(reply, 4));
        ASSERT_EQ(rotctl_handle("+\\dump_state\n", 13, reply, 4), settings.HamlibCompatible ? 0 : -1);
        ASSERT_TRUE(terminated(reply, 4));

        // The client reads at most 80 bytes of a datagram and a zero.
        std::string datagram = fuzz_input(rng, round, pst_words, 200).substr(0, PST_DATAGRAM_SIZE);
        PstAnswers answers;
        ASSERT_EQ(pst_handle(datagram.c_str(), (int)datagram.size(), &answers), 0);
        ASSERT_GE(answers.count, 0);
        ASSERT_LE(answers.count, PST_FIELDS);
        for (int i = 0; i < answers.count; i++)
        {
            ASSERT_TRUE(terminated(answers.text[i], PST_ANSWER_SIZE)) << round;
        }

        // The line reader hands over at most 29 characters and a zero.
        std::string word = fuzz_input(rng, round, easycomm_words, EASYCOMM_WORD_SIZE - 1);
        int code = easycomm_parse(&easycomm, word.c_str());
        ASSERT_GE(code, 0);
        ASSERT_LE(code, EASYCOMM_NONE);
        ASSERT_TRUE(terminated(easycomm.reply, EASYCOMM_WORD_SIZE)) << round;
    }
    qInstallMessageHandler(nullptr);
}
