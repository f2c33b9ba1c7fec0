#include "core/settings.h"

#include "bus/encoders.h"
#include "core/ini_file.h"
#include "core/state.h"
#include "support/test_env.h"

#include <QDir>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

static const char *const file_name = "Morvane.ini";

// One key of the main sections as the operator's documentation lists it:
// kind 'd' double, 'i' integer, anything else a text compared exactly.
struct KeyRow
{
    std::string section, key;
    char kind;
    std::string fallback;
};

// Each entry is "Key kind default"; a missing default is the empty text.
static void add(std::vector<KeyRow> &rows, const std::string &section, const std::vector<std::string> &entries)
{
    for (const std::string &entry : entries)
    {
        char key[40] = "", kind = 't', fallback[40] = "";
        sscanf(entry.c_str(), "%39s %c %39s", key, &kind, fallback);
        rows.push_back({section, key, kind, fallback});
    }
}

static std::vector<KeyRow> documented_keys(void)
{
    std::vector<KeyRow> rows;
    add(rows, "HOME_DATA",
        {"Callsign t", "Grid t", "Location t", "TrackingSource i 0", "Latitude d", "Longitude d",
         "Frequency d 1296.0"});
    add(rows, "USER_SETTINGS", {"User_Azimuth d", "User_Elevation d", "User_RA d", "User_Declination d"});
    add(rows, "ANTENNA",
        {"Park_Azimuth d 180.00",
         "Park_Elevation d 90.00",
         "Service_Azimuth d 180.00",
         "Service_Elevation d 90.00",
         "Azimuth_Start d 1.00",
         "Azimuth_Stop d 0.20",
         "Elevation_Start d 1.00",
         "Elevation_Stop d 0.20",
         "AzimuthLimitMin d 0.00",
         "AzimuthLimitMax d 360.0",
         "ElevationLimitMin d 0.0",
         "ElevationLimitMax d 90.0",
         "AzimuthPwmActive i 1",
         "AzimuthPwmType i 0",
         "AzimuthSlowDutyCycle d 25.0",
         "AzimuthFastDutyCycle d 100.0",
         "AzimuthManualDutyCycle d 50.0",
         "AzimuthGuardTime d 2.0",
         "AzimuthJogEnable t false",
         "AzimuthJogTime i 1",
         "AzimuthSlowDegrees d 10.0",
         "ElevationPwmActive i 1",
         "ElevationPwmType i 0",
         "ElevationSlowDutyCycle d 25.0",
         "ElevationFastDutyCycle d 100.0",
         "ElevationManualDutyCycle d 50.0",
         "ElevationGuardTime d 2.0",
         "ElevationJogEnable t false",
         "ElevationJogTime i 1",
         "ElevationSlowDegrees d 10.0",
         "AZ_Addr i -1",
         "EL_Addr i -1"});
    for (int n = 0; n < 15; n++)
    {
        std::string type = n < 2 ? "Type i 0" : n < 4 ? "Type i 1" : "Type i -1";
        add(rows, "ENCODER_" + std::to_string(n),
            {type, "Mode i 0", "Resolution i 36000", "PPR i 1024", "Range i 1024"});
    }
    add(rows, "CALIBRATION", {"Azimuth_Offset d 0.0", "Elevation_Offset d 0.0"});
    for (int n = 0; n < 46; n++)
    {
        add(rows, "CALIBRATION", {(n < 36 ? "AZ_" + std::to_string(n) : "EL_" + std::to_string(n - 36)) + " d 0.0"});
    }
    add(rows, "RIG_CONTROL",
        {"OmniRigFilename t", "OmniRigActive i 0", "OmniRigDebug i 0", "Port i 1", "PortName t /dev/ttyS0",
         "BaudRate t 9600", "DataBits t 8", "StopBits t 1", "Parity t None", "FlowControl t None"});
    add(rows, "ADC", {"ads1115_present i 0"});
    for (int n = 0; n < 4; n++)
    {
        std::string p = "ADC_" + std::to_string(n) + "_";
        add(rows, "ADC", {p + "Active i 0", p + "Minimum d 0.0", p + "Maximum d 3.3", p + "Range d 360.0"});
    }
    add(rows, "BRAKE_CONTROL",
        {"az_brake_enabled i 0", "az_brake_delay i 1000", "el_brake_enabled i 0", "el_brake_delay i 1000"});
    add(rows, "GPREDICT", {"Active i 1", "Debug i 1", "Port i 5333"});
    add(rows, "PSTROTATOR", {"Active i 1", "Debug i 1", "CmdPort t 12000", "RspPort t 12001", "Protocol t udp"});
    add(rows, "REMOTE_DISPLAY",
        {"DisplayEnabled i 1", "DisplayType i 0", "DisplayRows i 8", "DisplayColumns i 20", "RemoteSwitches i 0",
         "RemoteAdcs i 0"});
    add(rows, "REPORT", {"Active i 1"});
    return rows;
}

// The offset of the first byte where two records differ, or their size:
// it names the field that went wrong.
static size_t first_difference(const void *a, const void *b, size_t size)
{
    const unsigned char *x = (const unsigned char *)a, *y = (const unsigned char *)b;
    size_t i = 0;
    while (i < size && x[i] == y[i])
    {
        i++;
    }
    return i;
}

class Settings : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_clear_settings();
        test_reset_state();
    }

    static std::string path(void)
    {
        char p[1024];
        settings_path(file_name, p, sizeof p);
        return p;
    }

    static void put(const std::string &text)
    {
        QDir().mkpath(QString::fromUtf8(settings_directory()));
        FILE *f = fopen(path().c_str(), "wb");
        ASSERT_NE(f, nullptr);
        fputs(text.c_str(), f);
        fclose(f);
    }

    static std::string saved(const char *section, const char *key)
    {
        IniFile ini;
        ini_read(path().c_str(), &ini);
        return ini_value(&ini, section, key, "<missing>");
    }

    // Load the text as the whole file, save it back, and return the record.
    static SystemSettings load_and_save(const std::string &text)
    {
        put(text);
        SystemSettings r;
        LoadSettings(file_name, &r);
        SaveSettings(file_name, &r);
        return r;
    }
};

TEST_F(Settings, FirstRunRecordHoldsTheDefaults)
{
    // The documented defaults, spelt out in a file, must load as a missing file does.
    std::string text, section;
    for (const KeyRow &row : documented_keys())
    {
        text += (row.section != section ? "[" + row.section + "]\n" : "") + row.key + "=" + row.fallback + "\n";
        section = row.section;
    }
    SystemSettings documented, first_run;
    EncoderEntry documented_encoders[ENCODER_COUNT];
    put(text);
    LoadSettings(file_name, &documented);
    memcpy(documented_encoders, encoders, sizeof encoders);
    test_clear_settings();
    test_reset_state();
    memset(&first_run, 0x5a, sizeof first_run);
    EXPECT_EQ(LoadSettings(file_name, &first_run), 0);
    EXPECT_EQ(first_difference(&first_run, &documented, sizeof first_run), sizeof first_run) << "SystemSettings";
    EXPECT_EQ(first_difference(encoders, documented_encoders, sizeof encoders), sizeof encoders) << "encoders";

    // What the operator sees on a first start.
    EXPECT_EQ(first_run.Frequency, 1296.0);
    EXPECT_EQ(first_run.Park_Azimuth, 180.0);
    EXPECT_EQ(first_run.Park_Elevation, 90.0);
    EXPECT_EQ(first_run.AzimuthLimitMax, 360.0);
    EXPECT_EQ(first_run.ElevationLimitMax, 90.0);
    EXPECT_EQ(first_run.Azimuth_Start, 1.0);
    EXPECT_EQ(first_run.Elevation_Stop, 0.2);
    EXPECT_EQ(first_run.AzimuthSlowDutyCycle, 25.0);
    EXPECT_EQ(first_run.ElevationFastDutyCycle, 100.0);
    EXPECT_EQ(first_run.AzimuthManualDutyCycle, 50.0);
    EXPECT_EQ(first_run.AZ_Addr, -1);
    EXPECT_EQ(first_run.BaudRate, 3);
    EXPECT_EQ(first_run.DataBits, 1);
    EXPECT_EQ(first_run.AzimuthPwmActive, 1);
    EXPECT_EQ(first_run.ElevationPwmActive, 1);
    EXPECT_STREQ(first_run.Callsign, "");
    EXPECT_STREQ(first_run.PortName, "/dev/ttyS0");
    EXPECT_EQ(first_run.AdcDebug, 0);
    EXPECT_EQ(SeiDebug + SeiDebugVerbose, 0);
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        EXPECT_EQ(encoders[n].Type, n < 2 ? ENCODER_SEI : n < 4 ? ENCODER_BRT : ENCODER_NONE) << n;
        EXPECT_EQ(encoders[n].Resolution, 36000);
        EXPECT_EQ(encoders[n].Info.Model, 38);
        EXPECT_EQ(encoders[n].Info.Serial, 1001u + (unsigned)n);
    }
}

TEST_F(Settings, FirstRunFileListsEveryKeyInOrder)
{
    SystemSettings r;
    LoadSettings(file_name, &r);
    ASSERT_EQ(SaveSettings(file_name, &r), 0);

    // Read the file by hand, line by line, as an operator's editor shows it.
    std::vector<std::string> got_keys, got_values;
    std::string section, text = test_read_file(path());
    ASSERT_FALSE(text.empty());
    size_t start = 0;
    while (start < text.size())
    {
        size_t end = text.find('\n', start);
        std::string line = text.substr(start, end - start);
        start = end == std::string::npos ? text.size() : end + 1;
        if (!line.empty() && line[0] == '[')
        {
            section = line.substr(1, line.find(']') - 1);
        }
        else if (line.find('=') != std::string::npos)
        {
            got_keys.push_back(section + "/" + line.substr(0, line.find('=')));
            got_values.push_back(line.substr(line.find('=') + 1));
        }
    }
    std::vector<KeyRow> rows = documented_keys();
    std::vector<std::string> want_keys;
    for (const KeyRow &row : rows)
    {
        want_keys.push_back(row.section + "/" + row.key);
    }
    ASSERT_EQ(got_keys, want_keys);
    for (size_t i = 0; i < rows.size(); i++)
    {
        const char *value = got_values[i].c_str();
        if (rows[i].kind == 'd')
        {
            EXPECT_EQ(strtod(value, nullptr), strtod(rows[i].fallback.c_str(), nullptr)) << want_keys[i];
        }
        else
        {
            EXPECT_EQ(got_values[i], rows[i].fallback) << want_keys[i];
        }
    }
}

// Every field of the record, none of them at its default; the doubles need
// all their digits to come back.
static void fill_record(SystemSettings *r)
{
    static const double awkward[] = {0.1 + 0.2, 1e-17, -123.456789012345678, 1.0 / 3.0, 6.02214076e23, -2.5e-300};
    memset(r, 0, sizeof *r);
    double *doubles[] = {&r->Latitude,
                         &r->Longitude,
                         &r->Frequency,
                         &r->User_Azimuth,
                         &r->User_Elevation,
                         &r->User_RA,
                         &r->User_Declination,
                         &r->Park_Azimuth,
                         &r->Park_Elevation,
                         &r->Service_Azimuth,
                         &r->Service_Elevation,
                         &r->Azimuth_Offset,
                         &r->Elevation_Offset,
                         &r->Azimuth_Start,
                         &r->Azimuth_Stop,
                         &r->Elevation_Start,
                         &r->Elevation_Stop,
                         &r->AzimuthLimitMin,
                         &r->AzimuthLimitMax,
                         &r->ElevationLimitMin,
                         &r->ElevationLimitMax,
                         &r->AzimuthManualDutyCycle,
                         &r->AzimuthGuardTime,
                         &r->AzimuthSlowDegrees,
                         &r->ElevationManualDutyCycle,
                         &r->ElevationGuardTime,
                         &r->ElevationSlowDegrees};
    int k = 0;
    for (double *d : doubles)
    {
        *d = awkward[k % 6] * (k + 1);
        k++;
    }
    for (double &d : r->AZ)
    {
        d = awkward[k % 6] * (k + 1);
        k++;
    }
    for (double &d : r->EL)
    {
        d = -awkward[k % 6] * (k + 1);
        k++;
    }
    for (int n = 0; n < 4; n++)
    {
        r->ADC_Active[n] = n + 2;
        r->ADC_Minimum[n] = awkward[n] * 2;
        r->ADC_Maximum[n] = awkward[n + 1] * 3;
        r->ADC_Range[n] = awkward[n + 2] * 5;
    }
    int32_t *ints[] = {
        &r->TrackingSource, &r->AzimuthPwmType,  &r->AzimuthJogTime, &r->ElevationPwmType, &r->ElevationJogTime,
        &r->AZ_Addr,        &r->EL_Addr,         &r->Port,           &r->OmniRigActive,    &r->OmniRigDebug,
        &r->GpredictActive, &r->GpredictDebug,   &r->GpredictPort,   &r->PstActive,        &r->PstDebug,
        &r->ReportActive,   &r->ads1115_present, &r->az_brake_delay, &r->el_brake_delay,   &r->DisplayEnabled,
        &r->DisplayType,    &r->DisplayRows,     &r->DisplayColumns, &r->RemoteSwitches,   &r->RemoteAdcs};
    k = 0;
    for (int32_t *i : ints)
    {
        *i = k % 2 ? 7000 + k : -3 - k;
        k++;
    }
    r->AzimuthSlowDutyCycle = 12.5;
    r->AzimuthFastDutyCycle = 0.1 + 0.2;
    r->ElevationSlowDutyCycle = 33.3;
    r->ElevationFastDutyCycle = 99.9;
    r->AzimuthPwmActive = 1;
    r->el_brake_enabled = 1;
    r->AzimuthJogEnable = r->ElevationJogEnable = 1;
    r->BaudRate = 7;
    r->DataBits = 0;
    r->StopBits = 1;
    r->Parity = 4;
    r->FlowControl = 2;
    text_copy(r->Callsign, sizeof r->Callsign, "a \"b\";c=d,");
    text_copy(r->Grid, sizeof r->Grid, "JO62QM;a");
    text_copy(r->Location, sizeof r->Location, "  Hill top, \"north\"; field = 3 \\ end  ");
    text_copy(r->PortName, sizeof r->PortName, "/dev/ttyUSB 1;x");
    text_copy(r->OmniRigFilename, sizeof r->OmniRigFilename, "IC-9700 (EME), v2.ini");
    text_copy(r->CmdPort, sizeof r->CmdPort, "4533 ;x");
    text_copy(r->RspPort, sizeof r->RspPort, "\"4534\"");
    text_copy(r->Protocol, sizeof r->Protocol, "tcp = yes");
}

TEST_F(Settings, EveryKeyRoundTrips)
{
    SystemSettings out, in;
    fill_record(&out);
    // Only the bus log's own section keeps this one; a save never does.
    out.AdcDebug = 1;
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        encoders[n] =
            EncoderEntry{n % 4 - 1, (uint8_t)(0x15 + n), (uint16_t)(4096 + n), 100000u + n, 7u * n + 3, 0, {}};
    }
    EncoderEntry saved_encoders[ENCODER_COUNT];
    memcpy(saved_encoders, encoders, sizeof encoders);
    ASSERT_EQ(SaveSettings(file_name, &out), 0);
    test_reset_state();
    ASSERT_EQ(LoadSettings(file_name, &in), 0);

    out.AdcDebug = 0;
    EXPECT_EQ(in.Frequency, out.Frequency);
    EXPECT_EQ(in.AZ[5], out.AZ[5]);
    EXPECT_STREQ(in.Location, out.Location);
    EXPECT_STREQ(in.Callsign, out.Callsign);
    EXPECT_EQ(in.AzimuthPwmActive, 1);
    EXPECT_EQ(in.ElevationPwmActive, 0) << "a braked axis has no PWM";
    EXPECT_EQ(first_difference(&in, &out, sizeof in), sizeof in) << "at that byte of SystemSettings";
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        EXPECT_EQ(encoders[n].Type, saved_encoders[n].Type) << n;
        EXPECT_EQ(encoders[n].Mode, saved_encoders[n].Mode) << n;
        EXPECT_EQ(encoders[n].Resolution, saved_encoders[n].Resolution) << n;
        EXPECT_EQ(encoders[n].PPR, saved_encoders[n].PPR) << n;
        EXPECT_EQ(encoders[n].Range, saved_encoders[n].Range) << n;
        EXPECT_EQ(encoders[n].Info.Serial, 1001u + (unsigned)n);
    }
}

TEST_F(Settings, NumbersWriteTheSameUnderACommaLocale)
{
    if (!setlocale(LC_NUMERIC, "de_DE.UTF-8"))
    {
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    }
    SystemSettings r;
    LoadSettings(file_name, &r);
    r.Frequency = 144.125;
    SaveSettings(file_name, &r);
    LoadSettings(file_name, &r);
    setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(saved("HOME_DATA", "Frequency"), "144.125");
    EXPECT_EQ(r.Frequency, 144.125);
}

struct MappedRow
{
    const char *key;
    const char *in_file;
    int index;
    const char *written;
};

TEST_F(Settings, MappedKeysNormaliseOnLoadAndSave)
{
    const MappedRow rows[] = {{"BaudRate", "1234", 3, "9600"},
                              {"BaudRate", "57600", 7, "57600"},
                              {"BaudRate", "fast", 3, "9600"},
                              {"DataBits", "5", 1, "8"},
                              {"DataBits", "7", 0, "7"},
                              {"StopBits", "1.5", 1, "1.5"},
                              {"StopBits", "3", 2, "2"},
                              {"StopBits", "1.0", 0, "1"},
                              {"Parity", "none", 0, "None"},
                              {"Parity", "Mark", 3, "Mark"},
                              {"Parity", "Space ", 4, "Space"},
                              {"FlowControl", "hardware", 0, "None"},
                              {"FlowControl", "Custom", 3, "Custom"}};
    for (const MappedRow &row : rows)
    {
        SystemSettings r = load_and_save(std::string("[RIG_CONTROL]\n") + row.key + "=" + row.in_file + "\n");
        int index = !strcmp(row.key, "BaudRate")   ? r.BaudRate
                    : !strcmp(row.key, "DataBits") ? r.DataBits
                    : !strcmp(row.key, "StopBits") ? r.StopBits
                    : !strcmp(row.key, "Parity")   ? r.Parity
                                                   : r.FlowControl;
        EXPECT_EQ(index, row.index) << row.key << "=" << row.in_file;
        EXPECT_EQ(saved("RIG_CONTROL", row.key), row.written) << row.key << "=" << row.in_file;
    }
}

TEST_F(Settings, IndicesOutOfRangeAreResetBeforeTheyAreWritten)
{
    SystemSettings r;
    LoadSettings(file_name, &r);
    r.BaudRate = 8;
    r.DataBits = -4;
    r.StopBits = 3;
    r.Parity = -1;
    r.FlowControl = 4;
    SaveSettings(file_name, &r);
    EXPECT_EQ(r.BaudRate, 3);
    EXPECT_EQ(r.DataBits, 1);
    EXPECT_EQ(r.StopBits, 0);
    EXPECT_EQ(r.Parity, 0);
    EXPECT_EQ(r.FlowControl, 0);
    EXPECT_EQ(saved("RIG_CONTROL", "BaudRate"), "9600");
    EXPECT_EQ(saved("RIG_CONTROL", "DataBits"), "8");
    EXPECT_EQ(saved("RIG_CONTROL", "StopBits"), "1");
    EXPECT_EQ(saved("RIG_CONTROL", "Parity"), "None");
    EXPECT_EQ(saved("RIG_CONTROL", "FlowControl"), "None");
    // The helpers serve other links too, which may hand them anything.
    for (int bad : {-1000, -1, 99})
    {
        EXPECT_EQ(settings_baud_rate(bad), 9600);
        EXPECT_STREQ(settings_stop_bits_text(bad), "1");
        EXPECT_STREQ(settings_parity_text(bad), "None");
        EXPECT_STREQ(settings_flow_text(bad), "None");
    }
    EXPECT_EQ(settings_parity_index(nullptr), 0);
}

struct PwmRow
{
    const char *slow, *fast, *brake, *stored;
    int want;
    const char *why;
};

TEST_F(Settings, PwmNeedsBothDutiesAndNoBrake)
{
    const PwmRow rows[] = {
        {nullptr, nullptr, nullptr, nullptr, 1, "defaults drive by PWM"},
        {"0", "100", "0", "1", 0, "a slow duty of 0 makes the axis relay-only whatever the file says"},
        {"25", "0", "0", "1", 0, "a fast duty of 0 does too"},
        {"-5", "100", "0", "1", 0, "a negative duty is no duty"},
        {"25", "100", "1", "1", 0, "a brake makes the axis relay-only with both duties above 0"},
        {"25", "100", "0", "0", 1, "the stored flag is never read"}};
    const char *axes[][3] = {{"Azimuth", "az", "AzimuthPwmActive"}, {"Elevation", "el", "ElevationPwmActive"}};
    for (auto &axis : axes)
    {
        for (const PwmRow &row : rows)
        {
            std::string text = "[ANTENNA]\n", brakes = "[BRAKE_CONTROL]\n";
            std::string a = axis[0];
            if (row.slow)
            {
                text += a + "SlowDutyCycle=" + row.slow + "\n" + a + "FastDutyCycle=" + row.fast + "\n";
                text += std::string(axis[2]) + "=" + row.stored + "\n";
                brakes += std::string(axis[1]) + "_brake_enabled=" + row.brake + "\n";
            }
            SystemSettings r = load_and_save(text + brakes);
            int got = axis[0][0] == 'A' ? r.AzimuthPwmActive : r.ElevationPwmActive;
            int other = axis[0][0] == 'A' ? r.ElevationPwmActive : r.AzimuthPwmActive;
            EXPECT_EQ(got, row.want) << axis[0] << ": " << row.why;
            EXPECT_EQ(other, 1) << axis[0] << ": the other axis is untouched";
            EXPECT_EQ(saved("ANTENNA", axis[2]), std::to_string(row.want)) << axis[0] << ": " << row.why;
        }
    }
}

TEST_F(Settings, OverLongTextsAreCutToTheirFields)
{
    const struct
    {
        const char *section, *key;
        size_t kept;
    } rows[] = {{"HOME_DATA", "Callsign", 11},          {"HOME_DATA", "Grid", 8},
                {"HOME_DATA", "Location", 63},          {"RIG_CONTROL", "PortName", 31},
                {"RIG_CONTROL", "OmniRigFilename", 31}, {"PSTROTATOR", "CmdPort", 9},
                {"PSTROTATOR", "RspPort", 9},           {"PSTROTATOR", "Protocol", 11}};
    std::string text, long_text = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcdefghijklmnopqrstuvwxyz0123456789";
    for (const auto &row : rows)
    {
        text += std::string("[") + row.section + "]\n" + row.key + "=" + long_text + "\n";
    }
    SystemSettings r = load_and_save(text);
    const char *fields[] = {r.Callsign,        r.Grid,    r.Location, r.PortName,
                            r.OmniRigFilename, r.CmdPort, r.RspPort,  r.Protocol};
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; i++)
    {
        EXPECT_EQ(std::string(fields[i]), long_text.substr(0, rows[i].kept)) << rows[i].key;
        EXPECT_EQ(saved(rows[i].section, rows[i].key), long_text.substr(0, rows[i].kept)) << rows[i].key;
    }
    EXPECT_EQ(std::string(r.Callsign).size(), 11u) << "a 20-character call sign keeps 11";
}

TEST_F(Settings, OtherSectionsAndKeysSurviveASave)
{
    SystemSettings r = load_and_save("[SEI]\nPortName=/dev/ttyUSB3\nBaudRate=19200\n"
                                     "[DEBUG]\nSeiDebug=1\nSeiDebugVerbose=2\n"
                                     "[ADC]\nExtra=keep me\nAdcDebug=1\n"
                                     "[HOME_DATA]\nFrequency=144.1\nTrackingSource=7x\nLatitude=north\n"
                                     "[WXSTATION]\nInterval=5\n");
    EXPECT_EQ(SeiDebug, 1);
    EXPECT_EQ(SeiDebugVerbose, 2);
    EXPECT_EQ(r.AdcDebug, 1);
    EXPECT_EQ(r.Frequency, 144.1);
    EXPECT_EQ(r.TrackingSource, 0) << "a number that does not convert reads as 0, not as the default";
    EXPECT_EQ(r.Latitude, 0.0);
    EXPECT_EQ(saved("SEI", "PortName"), "/dev/ttyUSB3");
    EXPECT_EQ(saved("SEI", "BaudRate"), "19200");
    EXPECT_EQ(saved("DEBUG", "SeiDebugVerbose"), "2");
    EXPECT_EQ(saved("ADC", "Extra"), "keep me");
    EXPECT_EQ(saved("ADC", "AdcDebug"), "1");
    EXPECT_EQ(saved("WXSTATION", "Interval"), "5");

    IniFile ini;
    ini_read(path().c_str(), &ini);
    ASSERT_EQ(ini.sections.size(), 3u + 15u + 8u + 3u);
    EXPECT_EQ(ini.sections[0].name, "HOME_DATA");
    EXPECT_EQ(ini.sections[25].name, "REPORT");
    EXPECT_EQ(ini.sections[26].name, "SEI");
    EXPECT_EQ(ini.sections[27].name, "DEBUG");
    EXPECT_EQ(ini.sections[28].name, "WXSTATION");
    // A debugging switch read from the file is never written into one that lacks it.
    test_clear_settings();
    SaveSettings(file_name, &r);
    EXPECT_EQ(saved("ADC", "AdcDebug"), "<missing>");
    EXPECT_EQ(saved("DEBUG", "SeiDebug"), "<missing>");
}

TEST(SettingsInstance, NumberChoosesFileAndTitle)
{
    const struct
    {
        const char *argument, *file, *suffix;
    } rows[] = {{"0", "Morvane.ini", ""},
                {"3", "Morvane_3.ini", " (3)"},
                {"abc", "Morvane.ini", ""},
                {"-2", "Morvane_-2.ini", " (-2)"},
                {"12x", "Morvane_12.ini", " (12)"}};
    for (const auto &row : rows)
    {
        char file[32], title[96];
        settings_instance_names(atoi(row.argument), file, sizeof file, title, sizeof title);
        EXPECT_STREQ(file, row.file) << row.argument;
        EXPECT_EQ(std::string(title), std::string(window_title) + row.suffix) << row.argument;
    }
    char path[1024];
    settings_path("Morvane_3.ini", path, sizeof path);
    EXPECT_EQ(std::string(path), std::string(test_home()) + "/.config/Morvane/Morvane_3.ini");
}
