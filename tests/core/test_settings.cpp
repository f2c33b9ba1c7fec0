#include "core/settings.h"

#include "bus/encoders.h"
#include "core/ini_file.h"
#include "core/state.h"
#include "support/test_env.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

static const char *const file_name = "Morvane.ini";

// One key as the operator's documentation lists it: kind 'd' double, anything
// else compared as text.
struct KeyRow
{
    std::string section, key;
    char kind;
    std::string fallback;
};

// Entries are "Key kind default" separated by commas; a missing default is the empty text.
static void add(std::vector<KeyRow> &rows, const std::string &section, const std::string &entries)
{
    for (size_t at = 0; at < entries.size();)
    {
        size_t end = entries.find(',', at);
        end = end == std::string::npos ? entries.size() : end;
        char key[40] = "", kind = 't', fallback[40] = "";
        sscanf(entries.substr(at, end - at).c_str(), "%39s %c %39s", key, &kind, fallback);
        rows.push_back({section, key, kind, fallback});
        at = end + 1;
    }
}

static std::vector<KeyRow> documented_keys(void)
{
    std::vector<KeyRow> rows;
    add(rows, "HOME_DATA",
        "Callsign t, Grid t, Location t, TrackingSource i 0, Latitude d, Longitude d, Frequency d 1296.0");
    add(rows, "USER_SETTINGS",
        "User_Azimuth d, User_Elevation d, User_RA d, User_Declination d, PreciseMoon i 0,"
        "StationHeight d 200, Refraction i 0, Precession i 0");
    add(rows, "ANTENNA",
        "Park_Azimuth d 180.00, Park_Elevation d 90.00, Service_Azimuth d 180.00, Service_Elevation d 90.00,"
        "Azimuth_Start d 1.00, Azimuth_Stop d 0.20, Elevation_Start d 1.00, Elevation_Stop d 0.20,"
        "AzimuthLimitMin d 0.00, AzimuthLimitMax d 360.0, ElevationLimitMin d 0.0, ElevationLimitMax d 90.0,"
        "AzimuthPwmActive i 1, AzimuthPwmType i 0, AzimuthSlowDutyCycle d 25.0, AzimuthFastDutyCycle d 100.0,"
        "AzimuthManualDutyCycle d 50.0, AzimuthGuardTime d 2.0, AzimuthJogEnable t false, AzimuthJogTime i 1,"
        "AzimuthSlowDegrees d 10.0, ElevationPwmActive i 1, ElevationPwmType i 0, ElevationSlowDutyCycle d 25.0,"
        "ElevationFastDutyCycle d 100.0, ElevationManualDutyCycle d 50.0, ElevationGuardTime d 2.0,"
        "ElevationJogEnable t false, ElevationJogTime i 1, ElevationSlowDegrees d 10.0, AZ_Addr i -1, EL_Addr i -1,"
        "StallWatchdogEnable t true, StallWatchdogTime d 5.0, QuietMotion i 0, QuietWindowStart i 50");
    for (int n = 0; n < 15; n++)
    {
        std::string type = n < 2 ? "Type i 0" : n < 4 ? "Type i 1" : "Type i -1";
        add(rows, "ENCODER_" + std::to_string(n), type + ", Mode i 0, Resolution i 36000, PPR i 1024, Range i 1024");
    }
    add(rows, "CALIBRATION", "Azimuth_Offset d 0.0, Elevation_Offset d 0.0");
    for (int n = 0; n < 46; n++)
    {
        add(rows, "CALIBRATION", (n < 36 ? "AZ_" + std::to_string(n) : "EL_" + std::to_string(n - 36)) + " d 0.0");
    }
    add(rows, "RIG_CONTROL",
        "OmniRigFilename t, OmniRigActive i 0, OmniRigDebug i 0, Port i 1, PortName t /dev/ttyS0, BaudRate t 9600,"
        "DataBits t 8, StopBits t 1, Parity t None, FlowControl t None");
    add(rows, "ADC", "ads1115_present i 0");
    for (int n = 0; n < 4; n++)
    {
        std::string p = "ADC_" + std::to_string(n) + "_";
        add(rows, "ADC", p + "Active i 0," + p + "Minimum d 0.0," + p + "Maximum d 3.3," + p + "Range d 360.0");
    }
    add(rows, "BRAKE_CONTROL",
        "az_brake_enabled i 0, az_brake_delay i 1000, el_brake_enabled i 0, el_brake_delay i 1000");
    add(rows, "GPREDICT", "Active i 1, Debug i 1, Port i 5333, HamlibCompatible i 1");
    add(rows, "PSTROTATOR", "Active i 1, Debug i 1, CmdPort t 12000, RspPort t 12001, Protocol t udp");
    add(rows, "REMOTE_DISPLAY",
        "DisplayEnabled i 1, DisplayType i 0, DisplayRows i 8, DisplayColumns i 20, RemoteSwitches i 0, RemoteAdcs i "
        "0");
    add(rows, "REPORT", "Active i 1, Collector t report.pskreporter.info:4739");
    return rows;
}

// The offset of the first byte where two records differ, or their size: it
// names the field that went wrong.
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
    static IniFile saved_file(void)
    {
        IniFile ini;
        ini_read(path().c_str(), &ini);
        return ini;
    }
    static std::string saved(const char *section, const char *key)
    {
        IniFile ini = saved_file();
        return ini_value(&ini, section, key, "<missing>");
    }
    // Load the text as the whole file, save it back, and return the record.
    static SystemSettings load_and_save(const std::string &text)
    {
        QDir().mkpath(QString::fromUtf8(settings_directory()));
        FILE *f = fopen(path().c_str(), "wb");
        EXPECT_NE(f, nullptr);
        fputs(text.c_str(), f);
        fclose(f);
        SystemSettings r;
        LoadSettings(file_name, &r);
        SaveSettings(file_name, &r);
        return r;
    }
};

TEST_F(Settings, FirstRunHoldsTheDocumentedDefaults)
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
    documented = load_and_save(text);
    memcpy(documented_encoders, encoders, sizeof encoders);
    test_clear_settings();
    test_reset_state();
    memset(&first_run, 0x5a, sizeof first_run);
    EXPECT_EQ(LoadSettings(file_name, &first_run), 0);
    EXPECT_EQ(first_difference(&first_run, &documented, sizeof first_run), sizeof first_run) << "SystemSettings";
    EXPECT_EQ(first_difference(encoders, documented_encoders, sizeof encoders), sizeof encoders) << "encoders";
    EXPECT_EQ(first_run.Frequency, 1296.0) << "a file of defaults and no file can still both be wrong";
    // The first file lists every key in the documented order.
    SaveSettings(file_name, &first_run);
    std::vector<std::string> written, listed;
    for (const IniSection &section : saved_file().sections)
    {
        for (const auto &kv : section.keys)
        {
            written.push_back(section.name + "/" + kv.first);
        }
    }
    for (const KeyRow &row : documented_keys())
    {
        listed.push_back(row.section + "/" + row.key);
    }
    EXPECT_EQ(written, listed);
}

TEST_F(Settings, EveryKeyRoundTrips)
{
    // Every key away from its default: doubles that need all their digits,
    // texts with the file's own separators, the mapped keys at valid choices.
    static const double awkward[] = {0.1 + 0.2, 1e-17, -123.456789012345678, 1.0 / 3.0, 6.02214076e23, -2.5e-300};
    const char *mapped[][2] = {{"BaudRate", "57600"},      {"DataBits", "7"},         {"StopBits", "1.5"},
                               {"Parity", "Mark"},         {"FlowControl", "Custom"}, {"JogEnable", "true"},
                               {"WatchdogEnable", "false"}};
    std::vector<KeyRow> rows = documented_keys();
    IniFile written;
    int k = 0;
    for (KeyRow &row : rows)
    {
        char value[40];
        snprintf(value, sizeof value, "%.17g", awkward[k % 6] * (k + 1));
        row.fallback = row.kind == 'd' ? value : row.kind == 'i' ? std::to_string(10 + k % 240) : "x \"y\";=z";
        for (auto &m : mapped)
        {
            row.fallback = row.key.find(m[0]) != std::string::npos ? m[1] : row.fallback;
        }
        ini_set(&written, row.section.c_str(), row.key.c_str(), row.fallback.c_str());
        k++;
    }
    SystemSettings first, second;
    ASSERT_EQ(ini_write(path().c_str(), &written), 0);
    LoadSettings(file_name, &first);
    SaveSettings(file_name, &first);
    EncoderEntry first_encoders[ENCODER_COUNT];
    memcpy(first_encoders, encoders, sizeof encoders);
    test_reset_state();
    ASSERT_EQ(LoadSettings(file_name, &second), 0);
    EXPECT_EQ(first_difference(&first, &second, sizeof first), sizeof first) << "at that byte of SystemSettings";
    EXPECT_EQ(first_difference(encoders, first_encoders, sizeof encoders), sizeof encoders) << "encoders";
    IniFile ini = saved_file();
    for (const KeyRow &row : rows)
    {
        std::string got = ini_value(&ini, row.section.c_str(), row.key.c_str(), "<missing>");
        if (row.key.find("PwmActive") == std::string::npos)
        {
            EXPECT_TRUE(row.kind == 'd' ? atof(got.c_str()) == atof(row.fallback.c_str()) : got == row.fallback)
                << row.section << "/" << row.key << " wrote " << got << " for " << row.fallback;
        }
    }
}

TEST_F(Settings, MappedKeysNormaliseOnLoadAndSave)
{
    const struct
    {
        const char *key, *in_file;
        int index;
        const char *written;
    } rows[] = {{"BaudRate", "1234", 3, "9600"},
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
    for (const auto &row : rows)
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
    // Indices out of range are reset before they are written.
    SystemSettings r = load_and_save("");
    r.BaudRate = 8, r.DataBits = -4, r.StopBits = 3, r.Parity = -1, r.FlowControl = 4;
    SaveSettings(file_name, &r);
    EXPECT_EQ(saved("RIG_CONTROL", "BaudRate") + saved("RIG_CONTROL", "DataBits") + saved("RIG_CONTROL", "StopBits") +
                  saved("RIG_CONTROL", "Parity") + saved("RIG_CONTROL", "FlowControl"),
              "960081NoneNone");
}

TEST_F(Settings, PwmNeedsBothDutiesAndNoBrake)
{
    const struct
    {
        const char *slow, *fast, *brake, *stored;
        int want;
        const char *why;
    } rows[] = {{nullptr, nullptr, nullptr, nullptr, 1, "defaults drive by PWM"},
                {"0", "100", "0", "1", 0, "a slow duty of 0 makes the axis relay-only whatever the file says"},
                {"25", "0", "0", "1", 0, "a fast duty of 0 does too"},
                {"-5", "100", "0", "1", 0, "a negative duty is no duty"},
                {"25", "100", "1", "1", 0, "a brake makes the axis relay-only with both duties above 0"},
                {"25", "100", "0", "0", 1, "the stored flag is never read"}};
    const char *axes[][3] = {{"Azimuth", "az", "AzimuthPwmActive"}, {"Elevation", "el", "ElevationPwmActive"}};
    for (auto &axis : axes)
    {
        for (const auto &row : rows)
        {
            std::string text = "[ANTENNA]\n", brakes = "[BRAKE_CONTROL]\n", a = axis[0];
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
                {"HOME_DATA", "Location", 63},          {"RIG_CONTROL", "PortName", 72},
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
}

TEST_F(Settings, OtherSectionsAndKeysSurviveASave)
{
    SystemSettings r = load_and_save("[SEI]\nPortName=/dev/ttyUSB3\n[DEBUG]\nSeiDebug=1\nSeiDebugVerbose=2\n"
                                     "[ADC]\nExtra=keep me\nAdcDebug=1\n"
                                     "[HOME_DATA]\nFrequency=144.1\nTrackingSource=7x\n[WXSTATION]\nInterval=5\n");
    EXPECT_EQ(SeiDebug + SeiDebugVerbose + r.AdcDebug, 4);
    EXPECT_EQ(r.Frequency, 144.1);
    EXPECT_EQ(r.TrackingSource, 0) << "a number that does not convert reads as 0, not as the default";
    EXPECT_EQ(saved("SEI", "PortName") + saved("DEBUG", "SeiDebugVerbose") + saved("ADC", "Extra") +
                  saved("ADC", "AdcDebug") + saved("WXSTATION", "Interval"),
              "/dev/ttyUSB32keep me15");
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
