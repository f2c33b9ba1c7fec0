#include "rig/rig_file.h"

#include <gtest/gtest.h>
#include <string>

static std::string value_of(const std::string &text, const char *section, const char *key)
{
    RigFile file;
    rig_file_parse(text.data(), text.size(), &file);
    const char *value = rig_file_value(&file, section, key);
    return value ? value : "<none>";
}

static std::string wide(const std::string &text, int big_endian)
{
    std::string out(big_endian ? "\xFE\xFF" : "\xFF\xFE", 2);
    for (char c : text)
    {
        out += big_endian ? std::string(1, '\0') + c : std::string(1, c) + '\0';
    }
    return out;
}

TEST(RigFile, ValuesSectionsCommentsAndEncodings)
{
    struct Row
    {
        std::string text;
        const char *section, *key, *want, *why;
    };
    const std::string twice = "[pmRit0]\nCommand=(RC;)\n[pmFM]\nCommand=(MD4;)\n[pmRit0]\nReplyLength=0\nCommand=(RC0;)\n";
    const Row rows[] = {
        {"[STATUS2]\r\nCommand=(FA;)\r\nReplyEnd=(;)\r\n", "STATUS2", "ReplyEnd", "(;)", "a ';' inside a value is kept"},
        {"[STATUS1]\nFlag1 =(...0...)|pmRitOff  \r\n", "STATUS1", "Flag1", "(...0...)|pmRitOff",
         "blanks around key and value are trimmed, as published files line their flags up"},
        {";Command=(XX;)\nCommand=(outside;)\n[INIT]\n  ; indented comment\na line with no equals sign\nCommand=(AI0;)\n",
         "INIT", "Command", "(AI0;)", "comments, keys outside a section and stray lines are passed over"},
        {"[INIT]\n;Command=(XX;)\n", "INIT", "Command", "<none>", "a commented key is no key"},
        {twice, "pmRit0", "Command", "(RC0;)", "a section twice is one section and the last key wins"},
        {twice, "pmRit0", "ReplyLength", "0", "keys of both halves are kept"},
        {twice, "pmFM", "ReplyLength", "<none>", "keys stay in their own section"},
        {twice, "pmrit0", "Command", "<none>", "section names are case-sensitive"},
        {twice, "pmFM", "command", "<none>", "key names are case-sensitive"},
        {wide("[INIT1]\r\nCommand=FEFE7CE0.1A05.FD\r\n", 0), "INIT1", "Command", "FEFE7CE0.1A05.FD", "UTF-16 LE"},
        {wide("[INIT]\nCommand=(ID;)\n", 1), "INIT", "Command", "(ID;)", "UTF-16 BE"},
        {"\xEF\xBB\xBF[INIT]\nCommand=(ID;)\n", "INIT", "Command", "(ID;)", "UTF-8 with its mark"},
    };
    for (const Row &row : rows)
    {
        EXPECT_EQ(value_of(row.text, row.section, row.key), row.want) << row.why;
    }
}
