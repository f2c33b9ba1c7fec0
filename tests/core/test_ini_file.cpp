#include "core/ini_file.h"

#include "support/test_env.h"

#include <QDir>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

class Ini : public ::testing::Test
{
  protected:
    std::string folder;

    void SetUp() override
    {
        test_reset_state();
        folder = std::string(test_home()) + "/ini-test";
        QDir(QString::fromStdString(folder)).removeRecursively();
        QDir().mkpath(QString::fromStdString(folder));
    }

    std::string path(const char *name) const
    {
        return folder + "/" + name;
    }

    // Write raw bytes, as an editor would leave them.
    void put(const char *name, const std::string &text) const
    {
        FILE *f = fopen(path(name).c_str(), "wb");
        ASSERT_NE(f, nullptr);
        fwrite(text.data(), 1, text.size(), f);
        fclose(f);
    }

    IniFile read(const char *name) const
    {
        IniFile ini;
        ini_read(path(name).c_str(), &ini);
        return ini;
    }
};

static std::vector<std::string> key_names(const IniFile &ini, const char *section)
{
    std::vector<std::string> names;
    for (const IniSection &s : ini.sections)
    {
        if (s.name == section)
        {
            for (const auto &kv : s.keys)
            {
                names.push_back(kv.first);
            }
        }
    }
    return names;
}

static std::vector<std::string> section_names(const IniFile &ini)
{
    std::vector<std::string> names;
    for (const IniSection &s : ini.sections)
    {
        names.push_back(s.name);
    }
    return names;
}

TEST_F(Ini, ReadsWhatAnEditorLeaves)
{
    std::string long_value(10000, 'x');
    put("a.ini", "\xEF\xBB\xBForphan=1\r\n; a comment\n# another\n\n[A]\n  ; indented comment\nx = 1\nnot a key\n"
                 "plain=Home ; my place\r\nquoted=\"a;b = c\" ; trailing\nequals=a=b\nopen=\"no end\n"
                 "[B]\r\nlong=" +
                     long_value + "\r\nq=\"two words\"\r\n");
    IniFile ini = read("a.ini");
    const char *rows[][3] = {{"x", "1", "spaces around the equals sign go"},
                             {"plain", "Home", "a semicolon ends an unquoted value"},
                             {"quoted", "a;b = c", "but not a quoted one"},
                             {"equals", "a=b", "the first equals sign splits"},
                             {"open", "no end", "an open quote runs to the end of the line"}};
    for (auto &row : rows)
    {
        EXPECT_STREQ(ini_value(&ini, "A", row[0], "?"), row[1]) << row[2];
    }
    EXPECT_EQ(section_names(ini), (std::vector<std::string>{"A", "B"})) << "the orphan key and the mark are skipped";
    EXPECT_EQ(key_names(ini, "A"), (std::vector<std::string>{"x", "plain", "quoted", "equals", "open"}));
    EXPECT_EQ(ini_value(&ini, "B", "long", "?"), long_value);
    EXPECT_STREQ(ini_value(&ini, "B", "q", "?"), "two words") << "CRLF lines";
}

TEST_F(Ini, AwkwardTextsComeBackExactly)
{
    const std::vector<std::string> texts = {
        "", "  leading and trailing  ", "a;b", "say \"hi\"", "back\\slash", "#hash", "line\nbreak", "\"", ";"};
    IniFile ini;
    for (size_t i = 0; i < texts.size(); i++)
    {
        ini_set(&ini, "T", ("k" + std::to_string(i)).c_str(), texts[i].c_str());
    }
    ini_set_int(&ini, "T", "plain", 4533);
    ASSERT_EQ(ini_write(path("t.ini").c_str(), &ini), 0);
    IniFile back = read("t.ini");
    for (size_t i = 0; i < texts.size(); i++)
    {
        EXPECT_EQ(ini_value(&back, "T", ("k" + std::to_string(i)).c_str(), "?"), texts[i]) << "text " << i;
    }
    // Plain values stay unquoted, so the file reads well in an editor.
    EXPECT_NE(test_read_file(path("t.ini")).find("\nplain=4533\n"), std::string::npos);
}

TEST_F(Ini, KeysKeepTheirPlaceAndNewOnesGoLast)
{
    put("a.ini", "[S]\nb=1\na=2\n[T]\nz=0\n[S]\nc=3\nb=4\n");
    IniFile ini = read("a.ini");
    // A repeated section merges into the first, a repeated key keeps the last value.
    EXPECT_EQ(key_names(ini, "S"), (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_STREQ(ini_value(&ini, "S", "b", "?"), "4");
    ini_set(&ini, "S", "a", "changed");
    ini_set(&ini, "S", "d", "new");
    ini_set(&ini, "U", "u", "new section");
    EXPECT_EQ(key_names(ini, "S"), (std::vector<std::string>{"b", "a", "c", "d"}));
    EXPECT_EQ(section_names(ini), (std::vector<std::string>{"S", "T", "U"}));
    EXPECT_STREQ(ini_value(&ini, "S", "a", "?"), "changed");
    // Named sections go first, the rest keep their order.
    const char *const order[] = {"U", "Missing", "T"};
    ini_order(&ini, order, 3);
    EXPECT_EQ(section_names(ini), (std::vector<std::string>{"U", "T", "S"}));
}

TEST_F(Ini, WriteThatCannotHappenFailsAndKeepsTheOldFile)
{
    put("keep.ini", "[A]\nx=old\n");
    IniFile ini;
    ini_set(&ini, "A", "x", "new");
    // The side file is a folder, so the new text has nowhere to go.
    QDir().mkpath(QString::fromStdString(path("keep.ini.new")));
    EXPECT_EQ(ini_write(path("keep.ini").c_str(), &ini), -1);
    EXPECT_EQ(test_read_file(path("keep.ini")), "[A]\nx=old\n");
    // A folder that cannot be made because a file stands in its place; missing folders are made.
    put("blocker", "");
    EXPECT_EQ(ini_write(path("blocker/sub.ini").c_str(), &ini), -1);
    EXPECT_EQ(ini_write(path("one/two/three.ini").c_str(), &ini), 0);
}
