#include "support/test_env.h"
#include "widgets/dx_stations.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

class DxList : public ::testing::Test
{
  protected:
    std::string path;

    void SetUp() override
    {
        test_reset_state();
        path = std::string(test_home()) + "/DxStations.txt";
        remove(path.c_str());
    }
    void TearDown() override
    {
        remove(path.c_str());
    }
    void write(const std::string &text)
    {
        FILE *f = fopen(path.c_str(), "w");
        ASSERT_NE(nullptr, f);
        fputs(text.c_str(), f);
        fclose(f);
    }
};

TEST_F(DxList, CallLocatorAndLocationFromTheirColumns)
{
    write("K1JT,FN20qi,a,b,c,d,Princeton NJ,more,fields\n"
          ",,,,,,Europe,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(2, dx_station_count);
    EXPECT_STREQ("K1JT", dx_station_table[0].call);
    EXPECT_STREQ("FN20qi", dx_station_table[0].locator);
    EXPECT_STREQ("Princeton NJ", dx_station_table[0].location);
    EXPECT_STREQ("", dx_station_table[1].call);
    EXPECT_STREQ("", dx_station_table[1].locator);
    EXPECT_STREQ("Europe", dx_station_table[1].location);
}

TEST_F(DxList, CommentAndEmptyLinesArePassedOver)
{
    write("// the list\n"
          "\n"
          "/K2UYH,FN20qg,,,,,not read,\n"
          "W5UN,EM13qc,,,,,Dallas TX,\n"
          "\r\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(1, dx_station_count);
    EXPECT_STREQ("W5UN", dx_station_table[0].call);
}

TEST_F(DxList, ZzzzzzEndsTheListAndDoesNotCount)
{
    write("W5UN,EM13qc,,,,,Dallas TX,\n"
          "ZZZZZZ,,,,,,End,\n"
          "G3SEK,IO91in,,,,,Reading,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(1, dx_station_count);
    EXPECT_STREQ("", dx_station_table[1].call);
}

TEST_F(DxList, ZzzzzzWithMoreBehindItIsAStation)
{
    write("ZZZZZZA,EM13qc,,,,,Somewhere,\n"
          "zzzzzz,EM13qc,,,,,Lower case,\n"
          "ZZZZZ,EM13qc,,,,,Five,\n"
          "G3SEK,IO91in,,,,,Reading,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(4, dx_station_count);
    EXPECT_STREQ("ZZZZZZA", dx_station_table[0].call);
}

TEST_F(DxList, FewerThanSevenFieldsGiveAnEmptyLocation)
{
    write("K1JT,FN20qi,,,\n"
          "W5UN,EM13qc\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(2, dx_station_count);
    EXPECT_STREQ("", dx_station_table[0].location);
    EXPECT_STREQ("", dx_station_table[1].location);
    EXPECT_STREQ("EM13qc", dx_station_table[1].locator);
}

TEST_F(DxList, LocationWithoutAClosingCommaKeepsTheLineEnd)
{
    write("W5UN,EM13qc,,,,,Dallas TX\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    EXPECT_STREQ("Dallas TX\n", dx_station_table[0].location);
}

TEST_F(DxList, OverlongFieldRunsOnIntoTheNext)
{
    // Twelve characters make the call; "MN" is then read as the locator, and
    // the skipped fields take "FN20qi" and the next three.
    write("ABCDEFGHIJKLMN,FN20qi,1,2,3,Place,\n"
          "K1JT,FN20qiABCDEF,,,,,Princeton,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(2, dx_station_count);
    EXPECT_STREQ("ABCDEFGHIJKL", dx_station_table[0].call);
    EXPECT_STREQ("MN", dx_station_table[0].locator);
    EXPECT_STREQ("Place", dx_station_table[0].location);
    EXPECT_STREQ("FN20qiABC", dx_station_table[1].locator);
    EXPECT_STREQ("", dx_station_table[1].location);
}

TEST_F(DxList, FieldsOfExactlyTheirLimitKeepTheirComma)
{
    write("ABCDEFGHIJKL,FN20qi,,,,,Place,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    EXPECT_STREQ("ABCDEFGHIJKL", dx_station_table[0].call);
    EXPECT_STREQ("FN20qi", dx_station_table[0].locator);
    EXPECT_STREQ("Place", dx_station_table[0].location);
}

TEST_F(DxList, LocationIsCutAtSixtyFourCharacters)
{
    std::string place(70, 'x');
    write("K1JT,FN20qi,,,,," + place + ",\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(1, dx_station_count);
    EXPECT_EQ(std::string(64, 'x'), dx_station_table[0].location);
}

TEST_F(DxList, ALineOverTwoHundredFiftyFiveCharactersReadsOnAsTheNext)
{
    std::string line = "K1JT,FN20qi,,,,," + std::string(300, 'y') + "\n";
    write(line);
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(2, dx_station_count);
    EXPECT_STREQ("K1JT", dx_station_table[0].call);
    EXPECT_STREQ("yyyyyyyyyyyy", dx_station_table[1].call);
}

TEST_F(DxList, TheThousandAndFirstRecordIsNotRead)
{
    std::string text;
    char line[64];
    for (int i = 1; i <= DX_STATION_MAX + 1; i++)
    {
        snprintf(line, sizeof line, "C%d,JO62qm,,,,,Place %d,\n", i, i);
        text += line;
    }
    write(text);
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    EXPECT_EQ(DX_STATION_MAX, dx_station_count);
    EXPECT_STREQ("C1000", dx_station_table[DX_STATION_MAX - 1].call);
}

TEST_F(DxList, EachLoadStartsAfreshAndAMissingFileIsEmpty)
{
    write("K1JT,FN20qi,,,,,Princeton,\nW5UN,EM13qc,,,,,Dallas,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(2, dx_station_count);
    write("G3SEK,IO91in,,,,,Reading,\n");
    ASSERT_EQ(0, dx_station_load(path.c_str()));
    ASSERT_EQ(1, dx_station_count);
    EXPECT_STREQ("", dx_station_table[1].call);
    remove(path.c_str());
    EXPECT_EQ(-1, dx_station_load(path.c_str()));
    EXPECT_EQ(0, dx_station_count);
    EXPECT_STREQ("", dx_station_table[0].call);
}

// The example list shipped beside the program reads whole, with its groups.
TEST_F(DxList, TheShippedListReads)
{
    const char *bin = getenv("MORVANE_BIN");
    ASSERT_NE(nullptr, bin);
    std::string shipped = std::string(bin) + "/DxStations.txt";
    ASSERT_EQ(0, dx_station_load(shipped.c_str()));
    EXPECT_GE(dx_station_count, 10);
    int groups = 0;
    for (int i = 0; i < dx_station_count; i++)
    {
        groups += dx_station_table[i].call[0] == 0;
        EXPECT_EQ(nullptr, strchr(dx_station_table[i].location, '\n')) << dx_station_table[i].call;
    }
    EXPECT_GE(groups, 2);
}
