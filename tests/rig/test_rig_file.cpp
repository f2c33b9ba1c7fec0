#include "rig/rig_file.h"

#include <gtest/gtest.h>
#include <string>

static RigFile parse(const std::string &text)
{
    RigFile file;
    rig_file_parse(text.data(), text.size(), &file);
    return file;
}

static std::string value_of(const RigFile &file, const char *section, const char *key)
{
    const char *value = rig_file_value(&file, section, key);
    return value ? value : "<none>";
}

TEST(RigFile, AsciiValueKeepsItsSemicolons)
{
    RigFile file = parse("[STATUS2]\r\nCommand=(FA;)\r\nReplyEnd=(;)\r\nValidate=(FA...........;)\r\n");
    EXPECT_EQ(value_of(file, "STATUS2", "Command"), "(FA;)");
    EXPECT_EQ(value_of(file, "STATUS2", "ReplyEnd"), "(;)");
    EXPECT_EQ(value_of(file, "STATUS2", "Validate"), "(FA...........;)");
}

TEST(RigFile, CommentsAndStrayLines)
{
    RigFile file = parse(";Command=(XX;)\nCommand=(outside;)\n[INIT]\n  ; indented comment\n"
                         "a line with no equals sign\nCommand=(AI0;)\n");
    EXPECT_EQ(value_of(file, "INIT", "Command"), "(AI0;)");
    EXPECT_EQ(file.entries.size(), 1u);
}

TEST(RigFile, BlanksAroundKeyAndValueAreTrimmed)
{
    // Published files write "Flag1 =(...)" to line their flags up.
    RigFile file = parse("[STATUS1]\nFlag1 =(...0...)|pmRitOff  \r\n");
    EXPECT_EQ(value_of(file, "STATUS1", "Flag1"), "(...0...)|pmRitOff");
}

TEST(RigFile, SectionTwiceIsOneSectionAndLastKeyWins)
{
    RigFile file = parse("[pmRit0]\nCommand=(RC;)\n[pmFM]\nCommand=(MD4;)\n[pmRit0]\nReplyLength=0\nCommand=(RC0;)\n");
    EXPECT_EQ(value_of(file, "pmRit0", "Command"), "(RC0;)");
    EXPECT_EQ(value_of(file, "pmRit0", "ReplyLength"), "0");
    EXPECT_EQ(value_of(file, "pmFM", "Command"), "(MD4;)");
    EXPECT_EQ(value_of(file, "pmFM", "ReplyLength"), "<none>");
}

TEST(RigFile, NamesAreCaseSensitive)
{
    RigFile file = parse("[pmVfoBB]\nCommand=(FR1;FT1;)\n");
    EXPECT_EQ(value_of(file, "pmvfoBB", "Command"), "<none>");
    EXPECT_EQ(value_of(file, "pmVfoBB", "command"), "<none>");
}

TEST(RigFile, Utf16AndByteOrderMarks)
{
    std::string wide("\xFF\xFE", 2);
    for (char c : std::string("[INIT1]\r\nCommand=FEFE7CE0.1A05.FD\r\n"))
    {
        wide.push_back(c);
        wide.push_back(0);
    }
    EXPECT_EQ(value_of(parse(wide), "INIT1", "Command"), "FEFE7CE0.1A05.FD");

    std::string big("\xFE\xFF", 2);
    for (char c : std::string("[INIT]\nCommand=(ID;)\n"))
    {
        big.push_back(0);
        big.push_back(c);
    }
    EXPECT_EQ(value_of(parse(big), "INIT", "Command"), "(ID;)");

    EXPECT_EQ(value_of(parse("\xEF\xBB\xBF[INIT]\nCommand=(ID;)\n"), "INIT", "Command"), "(ID;)");
}

TEST(RigFile, MissingFileIsEmpty)
{
    RigFile file;
    file.entries.push_back(RigFileEntry{"x", "y", "z"});
    EXPECT_EQ(rig_file_read("/nonexistent/rig.ini", &file), 0);
    EXPECT_TRUE(file.entries.empty());
}
