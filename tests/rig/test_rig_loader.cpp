#include "rig/rig_loader.h"

#include "rig/rig_engine.h"

#include "rig_test_files.h"
#include "support/test_env.h"

#include <QByteArray>
#include <QDir>
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

// The loader's warnings, caught for the cases that look at them.
static std::string rig_warnings;
static void rig_catch_warning(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtWarningMsg)
    {
        rig_warnings += text.toStdString() + "\n";
    }
}

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

    // ASCII records read as their text, hex ones as their digits.
    static std::string text(const uint8_t *bytes, int length, int is_hex = 1)
    {
        QByteArray raw((const char *)bytes, length);
        return (is_hex ? raw.toHex().toUpper() : raw).toStdString();
    }
    static std::string code(const RigCommand &r)
    {
        return text(r.code, r.code_length, r.is_hex);
    }
};

TEST_F(RigLoader, HexAndAsciiCommandsReplyEndsAndValidate)
{
    load("[STATUS]\nCommand=FEFE94E0.03.FD\nReplyLength=17\nReplyEnd=FDFE00\n"
         "Validate=FEFE94E003FD.FEFEE094.03.0000000000.FD\n"
         "[STATUS1]\nCommand=(FA;)\nReplyEnd=(;)\nValidate=(IF....;)\n[STATUS2]\nCommand=(FA)\n");
    const RigCommand *s = rig_status;
    EXPECT_EQ(code(s[0]), "FEFE94E003FD");
    EXPECT_EQ(s[0].ReplyLength, 17);
    EXPECT_EQ(s[0].reply_end, 0xFD); // a hex ReplyEnd takes only its first two digits
    EXPECT_EQ(text(s[0].validate, s[0].validate_length), "FEFE94E003FDFEFEE094030000000000FD");
    EXPECT_EQ(s[1].is_hex, 0);
    EXPECT_EQ(code(s[1]), "FA;");
    EXPECT_EQ(s[1].has_reply_end * 256 + s[1].reply_end, 256 + ';');
    EXPECT_EQ(text(s[1].validate, s[1].validate_length, 0), "IF....;");
    EXPECT_EQ(code(s[2]), "FA");

    // A stray character in a hex list gives a wrong byte, not a stop, in a
    // command and in a ReplyEnd alike.
    load("[STATUS]\nCommand=!!FD\nReplyLength=0\nReplyEnd=!F\n");
    EXPECT_EQ(code(s[0]), "8AFD");
    EXPECT_EQ(s[0].reply_end, 0xAF);
}

TEST_F(RigLoader, ValueParts)
{
    load("[STATUS]\nCommand=FEFE\n"
         "Value=6||5|vfBcdLU|1|0\n"                  // the empty part drops out, the rest move up
         "Value1=13|5|vfbcdlu|1|0|pmFreqA\n"         // wrong case: no format
         "Value2=2|11|vfText|0.425|-127.5|pmFreqB\n" // fractions read as 0
         "Value3=1|2|vfText|1\n"                     // too few parts: passed over, the scan goes on
         "Value4=1|2|vfText|1|0|pmfreqa\n"           // unknown parameter: pmFreq
         "Value5=1|2|vfText|1|0|pmFreqB|extra\n"     // seven parts: no parameter looked for
         "[STATUS1]\nCommand=FEFE\nValue1=13|5|vfBcdLU|1|0|pmFreqA\nValue3=13|5|vfBcdLU|1|0|pmFreqB\n");
    const RigValue *v = rig_status[0].values;
    EXPECT_EQ(v[0].start * 100 + v[0].length, 605);
    EXPECT_EQ(v[0].format, vfBcdLU);
    EXPECT_EQ(v[0].param, pmFreq);
    EXPECT_EQ(v[1].format, vfNone);
    EXPECT_EQ(v[1].param, pmFreqA);
    EXPECT_EQ(v[2].param, pmFreqB);
    EXPECT_EQ(v[2].multiplier + v[2].adder, 0.0f);
    EXPECT_EQ(v[3].length, 0);
    EXPECT_EQ(v[4].length, 2);
    EXPECT_EQ(v[4].param, pmFreq);
    EXPECT_EQ(v[5].param, pmFreq);
    // Value3 without Value2: the scan stops at the gap, but not at a missing Value.
    EXPECT_EQ(rig_status[1].values[1].param, pmFreqA);
    EXPECT_EQ(rig_status[1].values[3].length, 0);
}

// A hostile file: places that wrap a 32-bit sum, lie past the reply or past
// the command. Each is passed over at load with a line that names where it
// stands, and the engine neither reads nor writes outside its buffers.
TEST_F(RigLoader, ValuesOutsideReplyOrCommandArePassedOverWithALogLine)
{
    rig_warnings.clear();
    QtMessageHandler previous = qInstallMessageHandler(rig_catch_warning);
    load("[STATUS]\nCommand=FEFE03FD\nReplyLength=17\n"
         "Value=11|5|vfBcdLU|1|0|pmFreqA\n"
         "Value1=2147483647|5|vfText|1|0|pmFreqA\n"
         "Value2=13|5|vfBcdLU|1|0|pmFreqB\n"
         "Value3=-1|5|vfBcdLU|1|0|pmFreqB\n"
         "Value4=0|99999999999|vfText|1|0|pmFreqB\n"
         "[pmFreqA]\nCommand=(FA...........;)\nValue=2|100|vfText|1|0\n"
         "[pmFreqB]\nCommand=(FB...........;)\nValue=2|11|vfText|1|0\n");
    qInstallMessageHandler(previous);
    const RigValue *v = rig_status[0].values;
    EXPECT_EQ(v[0].length, 5);
    EXPECT_EQ(v[1].length + v[2].length + v[3].length + v[4].length, 0);
    EXPECT_EQ(rig_write[pmFreqA].values[0].length, 0);
    EXPECT_EQ(rig_write[pmFreqB].values[0].length, 11);
    EXPECT_NE(rig_warnings.find("Rig file test.ini [STATUS] Value1: start 2147483647 and length 5 lie outside the "
                                "reply; the value is passed over"),
              std::string::npos)
        << rig_warnings;
    EXPECT_NE(rig_warnings.find("[pmFreqA] Value: start 2 and length 100 lie outside the command"), std::string::npos);
    EXPECT_EQ(std::count(rig_warnings.begin(), rig_warnings.end(), '\n'), 5);
    EXPECT_EQ(rig_set_freq_a(1296000000), 1);
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
    EXPECT_EQ(text(f[0].mask, f[0].mask_length), "0000FF00");
    EXPECT_EQ(text(f[0].bits, f[0].bits_length), "00000300");
    EXPECT_EQ(f[0].param, pmCW_L);
    EXPECT_EQ(text(f[1].mask, f[1].mask_length), "0000FFFF");
    EXPECT_EQ(text(f[1].bits, f[1].bits_length), "00000F10");
    EXPECT_EQ(f[2].bits_length, 0);
    EXPECT_EQ(f[3].param, pmFreq);
    const RigFlag *a = &rig_status[1].flags[0];
    EXPECT_EQ(text(a->mask, a->mask_length, 0), "...1..");
    EXPECT_EQ(a->param, pmTx);
}

TEST_F(RigLoader, RecordZeroEmptyWithInit1AndWriteSectionsByParameterName)
{
    load("[STATUS]\nValue=13|5|vfBcdLU|1|0|pmFreqA\nReplyLength=19\n"
         "[INIT1]\nCommand=FEFE94E0.1A05.FD\n"
         "[pmFreqB]\nCommand=(FB...........;)\nValue=2|11|vfText|1|0\n[pmvfoBB]\nCommand=(FR1;)\n");
    EXPECT_EQ(rig_status[0].code_length, 0);
    EXPECT_EQ(rig_init[0].code_length, 0);
    EXPECT_EQ(rig_init[1].code_length, 7);
    EXPECT_EQ(code(rig_write[pmFreqB]), "FB...........;");
    EXPECT_EQ(rig_write[pmFreqB].values[0].length, 11);
    EXPECT_EQ(code(rig_write[pmvfoBB]), "FR1;");
}

TEST_F(RigLoader, OversizedTextsAreCutToTheirFieldsAndANewLoadEmptiesTheTables)
{
    std::string long_hex(400, 'A');
    std::string long_ascii = "(" + std::string(200, 'x') + ")";
    load("[STATUS]\nCommand=" + long_hex + "\nValidate=" + long_hex + "\nFlag1=" + long_hex + "|" + long_hex +
         "|pmTx\n[STATUS1]\nCommand=" + long_ascii + "\nValidate=" + long_ascii + "\n");
    EXPECT_EQ(rig_status[0].code_length, RIG_CODE_SIZE);
    EXPECT_EQ(rig_status[0].validate_length, RIG_PATTERN_SIZE);
    EXPECT_EQ(rig_status[0].flags[0].mask_length, RIG_PATTERN_SIZE);
    EXPECT_EQ(rig_status[1].code_length, RIG_CODE_SIZE);
    EXPECT_EQ(rig_status[1].validate_length, RIG_PATTERN_SIZE);
    rig_load_path("/nonexistent/rig.ini", 0);
    EXPECT_EQ(rig_status[1].code_length, 0);
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

TEST_F(RigLoaderRealFiles, EveryFileLoadsUtf16Included)
{
    QDir dir(QString::fromStdString(folder), "*.ini");
    ASSERT_GE(dir.entryList().size(), 10);
    rig_files_set_folder(folder.c_str());
    rig_warnings.clear();
    QtMessageHandler previous = qInstallMessageHandler(rig_catch_warning);
    for (const QString &name : dir.entryList())
    {
        LoadOmniRigFile(name.toUtf8().constData(), 1);
        int records = 0;
        for (const RigCommand &r : rig_status)
        {
            records += r.code_length > 0;
        }
        EXPECT_GT(records, 0) << name.toStdString();
    }
    qInstallMessageHandler(previous);
    // The checks of a hostile file find nothing to refuse in the published ones.
    EXPECT_EQ(rig_warnings, "");
    rig_files_set_folder(nullptr);
    rig_load_path((folder + "/IC-9100.ini").c_str(), 0);
    EXPECT_GT(rig_write[pmFreq].code_length, 0);
}

TEST_F(RigLoaderRealFiles, IcomIc9700)
{
    rig_load_path((folder + "/IC-9700.ini").c_str(), 0);
    EXPECT_EQ(code(rig_init[4]), "FEFEA2E0165A00FD");
    const RigCommand &a = rig_status[1];
    EXPECT_EQ(code(a), "FEFEA2E02500FD");
    EXPECT_EQ(a.ReplyLength, 19);
    EXPECT_EQ(text(a.validate, a.validate_length), "FEFEA2E02500FDFEFEE0A225000000000000FD");
    EXPECT_EQ(a.values[1].start * 100 + a.values[1].format * 10 + a.values[1].param,
              13 * 100 + vfBcdLU * 10 + pmFreqA);
    EXPECT_EQ(rig_status[5].flags[0].param, pmTx);
    EXPECT_EQ(text(rig_status[5].flags[0].mask, rig_status[5].flags[0].mask_length), "00000000000000000000000000FF00");
    EXPECT_EQ(code(rig_write[pmFreqB]), "FEFEA2E025010000000000FD");
    EXPECT_EQ(rig_write[pmPitch].values[0].format, vfBcdBU);
}

TEST_F(RigLoaderRealFiles, KenwoodTs2000)
{
    rig_load_path((folder + "/TS-2000.ini").c_str(), 0);
    EXPECT_EQ(code(rig_init[0]), "AI0;");
    const RigCommand &ifr = rig_status[1];
    EXPECT_EQ(code(ifr), "IF;");
    EXPECT_EQ(ifr.reply_end, ';');
    EXPECT_EQ(ifr.validate_length, 38);
    EXPECT_EQ(ifr.flags[21].param, pmSplitOff);
    EXPECT_EQ(ifr.flags[15].param, pmFreq); // written pmVfoBB, which is not how the table spells it
    EXPECT_EQ(rig_status[3].values[1].param, pmFreqB);
    EXPECT_EQ(code(rig_write[pmFreqA]), "FA...........;");
    EXPECT_EQ(code(rig_write[pmVfoAB]), "FR0;FT1;");
}
