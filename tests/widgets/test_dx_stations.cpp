#include "support/test_env.h"
#include "widgets/dx_stations.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

static std::string list_path(void)
{
    return std::string(test_home()) + "/DxStations.txt";
}

static void write_list(const std::string &text)
{
    FILE *f = fopen(list_path().c_str(), "w");
    ASSERT_NE(nullptr, f);
    fputs(text.c_str(), f);
    fclose(f);
}

// What a list reads as: the count, and the call, locator and location of one
// record. Fields are cut at their limits (12, 9, 64) and an overlong one runs
// on into the next field; a line over 255 characters reads on as the next.
TEST(DxList, ReadingRules)
{
    struct Row
    {
        std::string text;
        int count, record;
        const char *call, *locator, *location, *why;
    };
    const Row rows[] = {
        {"K1JT,FN20qi,a,b,c,d,Princeton NJ,more,fields\n,,,,,,Europe,\n", 2, 0, "K1JT", "FN20qi", "Princeton NJ",
         "columns 1, 2 and 7"},
        {"K1JT,FN20qi,,,,,x,\n,,,,,,Europe,\n", 2, 1, "", "", "Europe", "a group header line"},
        {"// the list\n\n/K2UYH,FN20qg,,,,,not read,\nW5UN,EM13qc,,,,,Dallas TX,\n\r\n", 1, 0, "W5UN", "EM13qc",
         "Dallas TX", "comment and empty lines are passed over"},
        {"W5UN,EM13qc,,,,,Dallas TX,\nZZZZZZ,,,,,,End,\nG3SEK,IO91in,,,,,Reading,\n", 1, 1, "", "", "",
         "ZZZZZZ ends the list and does not count"},
        {"ZZZZZZA,EM13qc,,,,,a,\nzzzzzz,EM13qc,,,,,b,\nZZZZZ,EM13qc,,,,,c,\nG3SEK,IO91in,,,,,d,\n", 4, 0, "ZZZZZZA",
         "EM13qc", "a", "ZZZZZZ with more behind it, or in lower case, is a station"},
        {"K1JT,FN20qi,,,\nW5UN,EM13qc\n", 2, 1, "W5UN", "EM13qc", "", "fewer than seven fields"},
        {"W5UN,EM13qc,,,,,Dallas TX\n", 1, 0, "W5UN", "EM13qc", "Dallas TX\n", "no closing comma keeps the line end"},
        {"ABCDEFGHIJKLMN,FN20qi,1,2,3,Place,\n", 1, 0, "ABCDEFGHIJKL", "MN", "Place", "an overlong call runs on"},
        {"K1JT,FN20qiABCDEF,,,,,Princeton,\n", 1, 0, "K1JT", "FN20qiABC", "", "an overlong locator runs on"},
        {"ABCDEFGHIJKL,FN20qi,,,,,Place,\n", 1, 0, "ABCDEFGHIJKL", "FN20qi", "Place", "fields at their limit"},
        {"K1JT,FN20qi,,,,," + std::string(70, 'x') + ",\n", 1, 0, "K1JT", "FN20qi",
         "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", "the location is cut at 64"},
        {"K1JT,FN20qi,,,,," + std::string(300, 'y') + "\n", 2, 1, "yyyyyyyyyyyy", nullptr, nullptr,
         "a line over 255 characters"},
    };
    for (const Row &row : rows)
    {
        SCOPED_TRACE(row.why);
        write_list(row.text);
        ASSERT_EQ(0, dx_station_load(list_path().c_str()));
        EXPECT_EQ(row.count, dx_station_count);
        const DxStationRecord &s = dx_station_table[row.record];
        EXPECT_STREQ(row.call, s.call);
        EXPECT_TRUE(!row.locator || strcmp(row.locator, s.locator) == 0) << s.locator;
        EXPECT_TRUE(!row.location || strcmp(row.location, s.location) == 0) << s.location;
    }
}

// Each load starts afresh: the thousand and first record is not read, and a
// shorter list or a missing file leaves nothing of the last one behind.
TEST(DxList, TableLimitAndReloads)
{
    test_reset_state();
    std::string text;
    char line[64];
    for (int i = 1; i <= DX_STATION_MAX + 1; i++)
    {
        snprintf(line, sizeof line, "C%d,JO62qm,,,,,Place %d,\n", i, i);
        text += line;
    }
    write_list(text);
    ASSERT_EQ(0, dx_station_load(list_path().c_str()));
    EXPECT_EQ(DX_STATION_MAX, dx_station_count);
    EXPECT_STREQ("C1000", dx_station_table[DX_STATION_MAX - 1].call);
    write_list("G3SEK,IO91in,,,,,Reading,\n");
    ASSERT_EQ(0, dx_station_load(list_path().c_str()));
    ASSERT_EQ(1, dx_station_count);
    EXPECT_STREQ("", dx_station_table[1].call);
    remove(list_path().c_str());
    EXPECT_EQ(-1, dx_station_load(list_path().c_str()));
    EXPECT_EQ(0, dx_station_count);
    EXPECT_STREQ("", dx_station_table[0].call);
}

// The example list shipped beside the program reads whole, with its groups.
TEST(DxList, TheShippedListReads)
{
    const char *bin = getenv("MORVANE_BIN");
    ASSERT_NE(nullptr, bin);
    ASSERT_EQ(0, dx_station_load((std::string(bin) + "/DxStations.txt").c_str()));
    EXPECT_GE(dx_station_count, 10);
    int groups = 0;
    for (int i = 0; i < dx_station_count; i++)
    {
        groups += dx_station_table[i].call[0] == 0;
        EXPECT_EQ(nullptr, strchr(dx_station_table[i].location, '\n')) << dx_station_table[i].call;
    }
    EXPECT_GE(groups, 2);
}
