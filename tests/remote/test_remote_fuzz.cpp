// Hostile input for the three remote parsers. This program is built with
// AddressSanitizer and UndefinedBehaviorSanitizer over the parsers' own
// sources, so a byte read or written outside a field fails the run even where
// the result would look right.
#include "core/state.h"
#include "pty_pair.h"
#include "remote/easycomm.h"
#include "remote/pstrotator.h"
#include "remote/rotctl.h"
#include "support/test_env.h"

#include <QSerialPort>

#include <QtGlobal>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

// Every parser logs; thousands of rounds of it would bury the report.
static void fuzz_quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

class Fuzz : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        previous = qInstallMessageHandler(fuzz_quiet);
    }
    void TearDown() override
    {
        qInstallMessageHandler(previous);
    }

    // Bytes drawn from the protocol's own words and delimiters, from binary
    // noise, or long runs without a delimiter.
    std::vector<char> input(const std::vector<std::string> &words, int max_size)
    {
        std::vector<char> bytes;
        int size = (int)(rng() % (unsigned)(max_size + 1));
        int kind = (int)(rng() % 3);
        while ((int)bytes.size() < size)
        {
            if (kind == 0)
            {
                const std::string &w = words[rng() % words.size()];
                bytes.insert(bytes.end(), w.begin(), w.end());
            }
            else if (kind == 1)
            {
                bytes.push_back((char)(rng() & 0xFF));
            }
            else
            {
                bytes.push_back((char)('0' + rng() % 10));
            }
        }
        bytes.resize((size_t)size);
        return bytes;
    }

    std::mt19937 rng{20261123};
    QtMessageHandler previous = nullptr;
};

static void expect_terminated(const char *text, int size)
{
    ASSERT_LT(strnlen(text, (size_t)size), (size_t)size);
}

TEST_F(Fuzz, RotctlRequests)
{
    const std::vector<std::string> words = {"P",  "p", "S", "M",     "_",   "\\dump_state",      " ",
                                            "\n", ";", "|", "120.5", "-45", std::string(40, '9')};
    for (int round = 0; round < 20000; round++)
    {
        std::vector<char> bytes = input(words, 200);
        // The server never hands over more than its 64-byte request, zero
        // terminated; the handler must also hold with any length it is told.
        std::vector<char> request(bytes);
        request.push_back(0);
        char reply[ROTCTL_REPLY_SIZE];
        memset(reply, 0x7E, sizeof reply);
        int length = (int)bytes.size() < ROTCTL_REQUEST_SIZE ? (int)bytes.size() : ROTCTL_REQUEST_SIZE;
        if (rotctl_handle(request.data(), length, reply, sizeof reply) == 0)
        {
            expect_terminated(reply, sizeof reply);
        }
        char fields[ROTCTL_FIELDS][TEXT_FIELD_SIZE];
        int count = rotctl_split(request.data(), (int)bytes.size(), fields, ROTCTL_FIELDS);
        ASSERT_GE(count, 0);
        ASSERT_LE(count, ROTCTL_FIELDS);
        for (int i = 0; i < count; i++)
        {
            expect_terminated(fields[i], TEXT_FIELD_SIZE);
        }
    }
}

TEST_F(Fuzz, RotctlNamedHostileRequests)
{
    char reply[ROTCTL_REPLY_SIZE];
    std::string no_delimiter(ROTCTL_REQUEST_SIZE, 'P');
    EXPECT_EQ(rotctl_handle(no_delimiter.c_str(), (int)no_delimiter.size(), reply, sizeof reply), 0);
    std::string long_field = "P " + std::string(60, '7');
    EXPECT_EQ(rotctl_handle(long_field.c_str(), ROTCTL_REQUEST_SIZE, reply, sizeof reply), 0);
    EXPECT_EQ(rotctl_handle("p\n", 2, reply, 4), 0) << "a reply cut to a small buffer";
    expect_terminated(reply, 4);
}

TEST_F(Fuzz, PstDatagrams)
{
    const std::vector<std::string> words = {
        "<PST>", "</PST>", "<AZIMUTH>", "</AZIMUTH>", "<ELEVATION>",       "AZ?", "EL?", "MODE?",
        "<",     ">",      "\n",        "12.5",       std::string(40, 'X')};
    for (int round = 0; round < 20000; round++)
    {
        std::vector<char> bytes = input(words, 200);
        // As the client reads it: at most 80 bytes and a terminating zero.
        int length = (int)bytes.size() < PST_DATAGRAM_SIZE ? (int)bytes.size() : PST_DATAGRAM_SIZE;
        std::vector<char> datagram(bytes.begin(), bytes.begin() + length);
        datagram.push_back(0);
        PstAnswers answers;
        ASSERT_EQ(pst_handle(datagram.data(), length, &answers), 0);
        ASSERT_GE(answers.count, 0);
        ASSERT_LE(answers.count, PST_FIELDS);
        for (int i = 0; i < answers.count; i++)
        {
            expect_terminated(answers.text[i], PST_ANSWER_SIZE);
        }
        char fields[PST_FIELDS][TEXT_FIELD_SIZE];
        int count = pst_split(bytes.data(), (int)bytes.size(), fields, PST_FIELDS);
        ASSERT_LE(count, PST_FIELDS);
    }
}

TEST_F(Fuzz, PstNamedHostileDatagrams)
{
    PstAnswers answers;
    std::string no_delimiter(PST_DATAGRAM_SIZE, 'A');
    EXPECT_EQ(pst_handle(no_delimiter.c_str(), PST_DATAGRAM_SIZE, &answers), 0);
    EXPECT_EQ(answers.count, 0);
    std::string many_queries = "<PST>";
    for (int i = 0; i < 20; i++)
    {
        many_queries += "<AZ?>";
    }
    EXPECT_EQ(pst_handle(many_queries.c_str(), PST_DATAGRAM_SIZE, &answers), 0);
    EXPECT_LE(answers.count, PST_FIELDS);
    std::string long_number = "<PST><AZIMUTH>" + std::string(60, '1') + "</AZIMUTH></PST>";
    EXPECT_EQ(pst_handle(long_number.c_str(), PST_DATAGRAM_SIZE, &answers), 0);
}

TEST_F(Fuzz, EasyCommWords)
{
    const std::vector<std::string> words = {"AZ", "EL", "UP", "DN", "SA", "SE",
                                            "VE", "az", "1",  ".",  "-",  std::string(29, '8')};
    for (int round = 0; round < 20000; round++)
    {
        // The reader hands over at most 29 characters and a zero.
        std::vector<char> bytes = input(words, EASYCOMM_WORD_SIZE - 1);
        bytes.push_back(0);
        memset(easycomm.reply, 0, sizeof easycomm.reply);
        int code = easycomm_parse(&easycomm, bytes.data());
        ASSERT_GE(code, 0);
        ASSERT_LE(code, EASYCOMM_NONE);
        expect_terminated(easycomm.reply, EASYCOMM_WORD_SIZE);
    }
}

TEST_F(Fuzz, EasyCommLineNoise)
{
    PtyPair pty;
    if (!pty.ok())
    {
        GTEST_SKIP() << "socat is not installed";
    }
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName, pty.near_name.c_str());
    easycomm_start(&easycomm);
    ASSERT_EQ(easycomm.active, 1);
    // Noise with a terminator now and then, words of any length between.
    std::string noise;
    for (int i = 0; i < 600; i++)
    {
        unsigned r = rng() % 16;
        noise.push_back(r == 0 ? ' ' : r == 1 ? '\r' : (char)(rng() & 0xFF));
    }
    pty.send(noise + "\n");
    for (int i = 0; i < 100 && easycomm.link.port->bytesAvailable() < (qint64)noise.size() + 1; i++)
    {
        easycomm.link.port->waitForReadyRead(50);
    }
    ASSERT_EQ(easycomm.link.port->bytesAvailable(), (qint64)noise.size() + 1);
    for (int poll = 0; poll < 700 && easycomm.link.port->bytesAvailable() > 0; poll++)
    {
        int code = easycomm_poll(&easycomm);
        ASSERT_GE(code, 0);
        ASSERT_LE(code, EASYCOMM_NONE);
        expect_terminated(easycomm.command, EASYCOMM_WORD_SIZE);
    }
    easycomm_stop(&easycomm);
}
