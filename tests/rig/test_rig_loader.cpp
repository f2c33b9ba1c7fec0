#include "rig/rig_loader.h"

#include "core/settings.h"
#include "rig_test_files.h"
#include "support/test_env.h"

#include <QDir>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

class RigLoader : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        rig_tables_clear();
        rig_debug = 0;
    }

    static void load(const std::string &text, int debug = 0)
    {
        rig_load_path(rig_test_write("test.ini", text).c_str(), debug);
    }

    static std::string code(const RigCommand &record)
    {
        return std::string((const char *)record.code, (size_t)record.code_length);
    }

    static std::string hex(const uint8_t *bytes, int length)
    {
        std::string text;
        char pair[4];
        for (int i = 0; i < length; i++)
        {
            snprintf(pair, sizeof pair, "%02X", bytes[i]);
            text += pair;
        }
        return text;
    }
};

TEST_F(RigLoader, HexCommandSkipsDotsAndKeepsReplyLength)
{
    load("[STATUS]\nCommand=FEFE.03\nReplyLength=17\n");
    EXPECT_EQ(rig_status[0].is_hex, 1);
    EXPECT_EQ(hex(rig_status[0].code, rig_status[0].code_length), "FEFE03");
    EXPECT_EQ(rig_status[0].ReplyLength, 17);
}

TEST_F(RigLoader, AsciiCommandIsTheTextInsideTheBrackets)
{
    load("[STATUS]\nCommand=(FA)\n[STATUS1]\nCommand=(FA;)\nReplyEnd=(;)\n");
    EXPECT_EQ(rig_status[0].is_hex, 0);
    EXPECT_EQ(code(rig_status[0]), "FA");
    EXPECT_EQ(code(rig_status[1]), "FA;");
    EXPECT_EQ(rig_status[1].has_reply_end, 1);
    EXPECT_EQ(rig_status[1].reply_end, ';');
}

TEST_F(RigLoader, HexReplyEndTakesOnlyItsFirstTwoDigits)
{
    load("[STATUS]\nCommand=FEFE94E0.03.FD\nReplyEnd=FDFE00\n");
    EXPECT_EQ(rig_status[0].has_reply_end, 1);
    EXPECT_EQ(rig_status[0].reply_end, 0xFD);
}

TEST_F(RigLoader, ValidateIsReadTheWayTheCommandWas)
{
    load("[STATUS]\nCommand=FEFE94E0.03.FD\nValidate=FEFE94E003FD.FEFEE094.03.0000000000.FD\n"
         "[STATUS1]\nCommand=(IF;)\nValidate=(IF....;)\n");
    EXPECT_EQ(hex(rig_status[0].validate, rig_status[0].validate_length), "FEFE94E003FDFEFEE094030000000000FD");
    EXPECT_EQ(std::string((const char *)rig_status[1].validate, (size_t)rig_status[1].validate_length), "IF....;");
}

TEST_F(RigLoader, ValueParts)
{
    load("[STATUS]\nCommand=FEFE\n"
         "Value=6||5|vfBcdLU|1|0\n"                  // the empty part drops out, the rest move up
         "Value1=13|5|vfbcdlu|1|0|pmFreqA\n"         // wrong case: no format
         "Value2=2|11|vfText|0.425|-127.5|pmFreqB\n" // fractions read as 0
         "Value3=1|2|vfText|1\n"                     // too few parts: passed over, the scan goes on
         "Value4=1|2|vfText|1|0|pmfreqa\n"           // unknown parameter: pmFreq
         "Value5=1|2|vfText|1|0|pmFreqB|extra\n");   // seven parts: no parameter looked for
    const RigValue *v = rig_status[0].values;
    EXPECT_EQ(v[0].start, 6);
    EXPECT_EQ(v[0].length, 5);
    EXPECT_EQ(v[0].format, vfBcdLU);
    EXPECT_EQ(v[0].param, pmFreq);
    EXPECT_EQ(v[1].format, vfNone);
    EXPECT_EQ(v[1].param, pmFreqA);
    EXPECT_EQ(v[2].param, pmFreqB);
    EXPECT_EQ(v[2].multiplier, 0.0f);
    EXPECT_EQ(v[2].adder, 0.0f);
    EXPECT_EQ(v[3].length, 0);
    EXPECT_EQ(v[4].length, 2);
    EXPECT_EQ(v[4].param, pmFreq);
    EXPECT_EQ(v[5].format, vfText);
    EXPECT_EQ(v[5].param, pmFreq);
}

TEST_F(RigLoader, ValueScanStopsAtAGapButNotAtAMissingFirstKey)
{
    load("[STATUS]\nCommand=FEFE\nValue1=13|5|vfBcdLU|1|0|pmFreqA\nValue3=13|5|vfBcdLU|1|0|pmFreqB\n");
    EXPECT_EQ(rig_status[0].values[1].param, pmFreqA);
    EXPECT_EQ(rig_status[0].values[1].length, 5);
    EXPECT_EQ(rig_status[0].values[3].length, 0);
}

TEST_F(RigLoader, FlagForms)
{
    load("[STATUS]\nCommand=FEFE\n"
         "Flag0=FF|01|pmTx\n"
         "Flag1=0000.FF.00|0000.03.00|pmCW_L\n"
         "Flag2=0000.0F.10|pmSplitOn\n"
         "Flag3=a|b|c|d\n"
         "Flag4=01|pmNoSuch\n"
         "[STATUS1]\nCommand=(IF;)\nFlag1 =(...1..)|pmTx\n");
    const RigFlag *f = rig_status[0].flags;
    EXPECT_EQ(hex(f[0].mask, f[0].mask_length), "0000FF00");
    EXPECT_EQ(hex(f[0].bits, f[0].bits_length), "00000300");
    EXPECT_EQ(f[0].param, pmCW_L);
    EXPECT_EQ(hex(f[1].mask, f[1].mask_length), "0000FFFF");
    EXPECT_EQ(hex(f[1].bits, f[1].bits_length), "00000F10");
    EXPECT_EQ(f[1].param, pmSplitOn);
    EXPECT_EQ(f[2].bits_length, 0);
    EXPECT_EQ(f[3].bits_length, 1);
    EXPECT_EQ(f[3].param, pmFreq);
    const RigFlag *a = &rig_status[1].flags[0];
    EXPECT_EQ(std::string((const char *)a->mask, (size_t)a->mask_length), "...1..");
    EXPECT_EQ(std::string((const char *)a->bits, (size_t)a->bits_length), "...1..");
    EXPECT_EQ(a->param, pmTx);
}

TEST_F(RigLoader, RecordsWithoutCommandStayEmpty)
{
    load("[STATUS]\nValue=13|5|vfBcdLU|1|0|pmFreqA\nReplyLength=19\n"
         "[INIT1]\nCommand=FEFE94E0.1A05.FD\n");
    EXPECT_EQ(rig_status[0].code_length, 0);
    EXPECT_EQ(rig_status[0].is_hex, 0);
    EXPECT_EQ(rig_init[0].code_length, 0);
    EXPECT_EQ(rig_init[1].code_length, 7);
}

TEST_F(RigLoader, WriteSectionsFollowTheParameterNames)
{
    load("[pmFreqB]\nCommand=(FB...........;)\nValue=2|11|vfText|1|0\n"
         "[pmvfoBB]\nCommand=(FR1;)\n[pmVfoAA]\nCommand=(FR0;)\n");
    EXPECT_EQ(code(rig_write[pmFreqB]), "FB...........;");
    EXPECT_EQ(rig_write[pmFreqB].values[0].length, 11);
    EXPECT_EQ(code(rig_write[pmvfoBB]), "FR1;");
    EXPECT_EQ(code(rig_write[pmVfoAA]), "FR0;");
}

TEST_F(RigLoader, OversizedTextsAreCutToTheirFields)
{
    std::string long_hex(400, 'A');
    std::string long_ascii = "(" + std::string(200, 'x') + ")";
    load("[STATUS]\nCommand=" + long_hex + "\nValidate=" + long_hex + "\nFlag1=" + long_hex + "|" + long_hex +
         "|pmTx\n[STATUS1]\nCommand=" + long_ascii + "\nValidate=" + long_ascii + "\n");
    EXPECT_EQ(rig_status[0].code_length, RIG_CODE_SIZE);
    EXPECT_EQ(rig_status[0].validate_length, RIG_PATTERN_SIZE);
    EXPECT_EQ(rig_status[0].flags[0].mask_length, RIG_PATTERN_SIZE);
    EXPECT_EQ(rig_status[0].flags[0].param, pmTx);
    EXPECT_EQ(rig_status[1].code_length, RIG_CODE_SIZE);
    EXPECT_EQ(rig_status[1].validate_length, RIG_PATTERN_SIZE);
}

TEST_F(RigLoader, ANewLoadEmptiesTheTables)
{
    load("[STATUS5]\nCommand=(FA;)\n");
    ASSERT_EQ(rig_status[5].code_length, 3);
    rig_load_path("/nonexistent/rig.ini", 0);
    EXPECT_EQ(rig_status[5].code_length, 0);
}

TEST_F(RigLoader, DebugLogTellsTheLoad)
{
    load("[INIT1]\nCommand=FEFE94E0.1A05.FD\nReplyLength=13\nValidate=FEFE94E0.00\n"
         "[STATUS]\nCommand=(FA;)\nReplyEnd=(;)\nValidate=(FA..;)\nFlag1=(.1)|pmTx\n",
         1);
    char path[600];
    settings_path("OmniRigDebug.log", path, sizeof path);
    std::string log = test_read_file(path);
    EXPECT_EQ(log.rfind("LoadOmniRigFile: test.ini\n", 0), 0u) << log;
    EXPECT_NE(log.find("\nLoadOmniRigParams [INIT1]\nCommand(HEX): Code=FEFE94E01A05FD\nReplyLength=13\n"
                       "Validate( 5)=FEFE94E000\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("\nLoadOmniRigParams [STATUS]\nCommand(ASCII): Code( 3)=FA;\nReplyEnd=;\n"
                       "Validate( 5)=FA..;\nFlag1\nMask( 2)    =.1\nBits( 2)    =.1\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("LoadOmniRigParams [pmFM]"), std::string::npos);
    EXPECT_NE(log.find("LoadOmniRigFile Complete\n***********************************\nReady to Issue Commands"),
              std::string::npos);
}

TEST_F(RigLoader, ReadersAlone)
{
    uint8_t bytes[8];
    EXPECT_EQ(rig_read_hex_list("FEFE94E0.03.FD", bytes, sizeof bytes), 6);
    EXPECT_EQ(bytes[2], 0x94);
    EXPECT_EQ(bytes[5], 0xFD);
    EXPECT_EQ(rig_read_hex_list("..", bytes, sizeof bytes), 0);
    EXPECT_EQ(rig_read_hex_list("0102030405060708090A", bytes, 4), 4);
    EXPECT_EQ(rig_read_bracket_text("()", bytes, sizeof bytes), 0);
    EXPECT_EQ(rig_read_bracket_text("(AB;]", bytes, sizeof bytes), 3);
    EXPECT_EQ(bytes[2], ';');
}

class RigLoaderRealFiles : public RigLoader
{
  protected:
    std::string folder;
    void SetUp() override
    {
        RigLoader::SetUp();
        folder = rig_test_real_folder();
        if (folder.empty())
        {
            GTEST_SKIP() << "no published rig files beside the project";
        }
    }
};

TEST_F(RigLoaderRealFiles, EveryFileLoads)
{
    QDir dir(QString::fromStdString(folder), "*.ini");
    ASSERT_GE(dir.entryList().size(), 10);
    for (const QString &name : dir.entryList())
    {
        rig_files_set_folder(folder.c_str());
        LoadOmniRigFile(name.toUtf8().constData(), 1);
        int records = 0;
        for (const RigCommand &r : rig_status)
        {
            records += r.code_length > 0;
        }
        EXPECT_GT(records, 0) << name.toStdString();
    }
    rig_files_set_folder(nullptr);
}

TEST_F(RigLoaderRealFiles, IcomIc9700)
{
    rig_load_path((folder + "/IC-9700.ini").c_str(), 0);
    EXPECT_EQ(rig_init[0].code_length, 0);
    EXPECT_EQ(hex(rig_init[4].code, rig_init[4].code_length), "FEFEA2E0165A00FD");
    EXPECT_EQ(rig_init[4].ReplyLength, 14);
    EXPECT_EQ(rig_init[7].code_length, 0);

    const RigCommand &a = rig_status[1];
    EXPECT_EQ(hex(a.code, a.code_length), "FEFEA2E02500FD");
    EXPECT_EQ(a.ReplyLength, 19);
    EXPECT_EQ(hex(a.validate, a.validate_length), "FEFEA2E02500FDFEFEE0A225000000000000FD");
    EXPECT_EQ(a.values[1].start, 13);
    EXPECT_EQ(a.values[1].format, vfBcdLU);
    EXPECT_EQ(a.values[1].param, pmFreqA);
    EXPECT_EQ(rig_status[2].values[1].param, pmFreqB);
    EXPECT_EQ(rig_status[3].flags[7].param, pmFM);
    EXPECT_EQ(rig_status[5].flags[0].param, pmTx);
    EXPECT_EQ(hex(rig_status[5].flags[0].mask, rig_status[5].flags[0].mask_length), "00000000000000000000000000FF00");
    EXPECT_EQ(rig_status[9].code_length, 0);

    const RigCommand &w = rig_write[pmFreqB];
    EXPECT_EQ(hex(w.code, w.code_length), "FEFEA2E025010000000000FD");
    EXPECT_EQ(w.values[0].start, 6);
    EXPECT_EQ(w.values[0].length, 5);
    EXPECT_EQ(w.values[0].format, vfBcdLU);
    EXPECT_EQ(rig_write[pmPitch].values[0].format, vfBcdBU);
    EXPECT_EQ(rig_write[pmFreq].code_length, 0);
}

TEST_F(RigLoaderRealFiles, KenwoodTs2000)
{
    rig_load_path((folder + "/TS-2000.ini").c_str(), 0);
    EXPECT_EQ(code(rig_init[0]), "AI0;");
    EXPECT_EQ(rig_init[1].code_length, 0);

    const RigCommand &ifr = rig_status[1];
    EXPECT_EQ(code(ifr), "IF;");
    EXPECT_EQ(ifr.reply_end, ';');
    EXPECT_EQ(ifr.validate_length, 38);
    EXPECT_EQ(ifr.values[1].param, pmRitOffset);
    EXPECT_EQ(ifr.values[2].param, pmFreq);
    EXPECT_EQ(ifr.flags[0].param, pmRitOff);
    EXPECT_EQ(ifr.flags[21].param, pmSplitOff);
    EXPECT_EQ(ifr.flags[15].param, pmFreq); // written pmVfoBB, which is not how the table spells it
    EXPECT_EQ(code(rig_status[2]), "FA;");
    EXPECT_EQ(rig_status[3].values[1].param, pmFreqB);

    EXPECT_EQ(code(rig_write[pmFreqA]), "FA...........;");
    EXPECT_EQ(rig_write[pmFreqA].values[0].format, vfText);
    EXPECT_EQ(code(rig_write[pmVfoAB]), "FR0;FT1;");
    EXPECT_EQ(rig_write[pmvfoBB].code_length, 0);
}

TEST_F(RigLoaderRealFiles, Utf16FileIsRead)
{
    rig_load_path((folder + "/IC-9100.ini").c_str(), 0);
    EXPECT_GT(rig_init[1].code_length, 0);
    EXPECT_GT(rig_write[pmFreq].code_length, 0);
}
