#include "core/settings.h"

#include "bus/encoders.h"
#include "core/ini_file.h"

#include <QDir>
#include <cstdio>
#include <cstring>
#include <string>

const char *settings_directory(void)
{
    static char directory[512];
    snprintf(directory, sizeof directory, "%s/.config/Morvane/", QDir::homePath().toUtf8().constData());
    return directory;
}

void settings_path(const char *file_name, char *path, int size)
{
    snprintf(path, (size_t)size, "%s%s", settings_directory(), file_name);
}

void settings_instance_names(int instance, char *file_name, int file_size, char *title, int title_size)
{
    if (instance == 0)
    {
        snprintf(file_name, (size_t)file_size, "%s", "Morvane.ini");
        snprintf(title, (size_t)title_size, "%s", window_title);
        return;
    }
    snprintf(file_name, (size_t)file_size, "%s_%d.ini", "Morvane", instance);
    snprintf(title, (size_t)title_size, "%s (%d)", window_title, instance);
}

// The record holds an index, the file the word or number an operator knows.
static const int baud_rates[] = {1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600};
static const char *const parity_words[] = {"None", "Odd", "Even", "Mark", "Space"};
static const char *const flow_words[] = {"None", "Hardware", "Software", "Custom"};
static const char *const stop_bits_words[] = {"1", "1.5", "2"};

enum
{
    BAUD_COUNT = (int)(sizeof baud_rates / sizeof baud_rates[0]),
    PARITY_COUNT = (int)(sizeof parity_words / sizeof parity_words[0]),
    FLOW_COUNT = (int)(sizeof flow_words / sizeof flow_words[0]),
    STOP_BITS_COUNT = (int)(sizeof stop_bits_words / sizeof stop_bits_words[0]),
    BAUD_9600 = 3
};

int settings_baud_index(int baud)
{
    for (int i = 0; i < BAUD_COUNT; i++)
    {
        if (baud_rates[i] == baud)
        {
            return i;
        }
    }
    return BAUD_9600;
}

int settings_baud_rate(int index)
{
    return baud_rates[index >= 0 && index < BAUD_COUNT ? index : BAUD_9600];
}

int settings_data_bits_index(int bits)
{
    return bits == 7 ? 0 : 1;
}

int settings_data_bits(int index)
{
    return index == 0 ? 7 : 8;
}

int settings_stop_bits_index(double bits)
{
    if (bits == 1.0)
    {
        return 0;
    }
    return bits == 1.5 ? 1 : 2;
}

const char *settings_stop_bits_text(int index)
{
    return stop_bits_words[index >= 0 && index < STOP_BITS_COUNT ? index : 0];
}

static int settings_word_index(const char *const words[], int count, const char *text)
{
    for (int i = 0; i < count; i++)
    {
        if (text && strcmp(words[i], text) == 0)
        {
            return i;
        }
    }
    return 0;
}

int settings_parity_index(const char *text)
{
    return settings_word_index(parity_words, PARITY_COUNT, text);
}

const char *settings_parity_text(int index)
{
    return parity_words[index >= 0 && index < PARITY_COUNT ? index : 0];
}

int settings_flow_index(const char *text)
{
    return settings_word_index(flow_words, FLOW_COUNT, text);
}

const char *settings_flow_text(int index)
{
    return flow_words[index >= 0 && index < FLOW_COUNT ? index : 0];
}

// Load and save walk the same list of keys, one direction each, so a key
// added for one of them cannot be forgotten by the other.
struct SettingsWalk
{
    IniFile ini;
    int saving;
    const char *section;
};

static void walk_text(SettingsWalk *w, const char *key, const char *fallback, char *field, int size)
{
    if (w->saving)
    {
        // A dialog may have filled the field to the last byte; never read past it.
        std::string text(field, strnlen(field, (size_t)size));
        ini_set(&w->ini, w->section, key, text.c_str());
        return;
    }
    ini_text(&w->ini, w->section, key, fallback, field, size);
}

template <typename T> static void walk_int(SettingsWalk *w, const char *key, const char *fallback, T *field)
{
    if (w->saving)
    {
        ini_set_int(&w->ini, w->section, key, (long)*field);
        return;
    }
    *field = (T)ini_int(&w->ini, w->section, key, fallback);
}

static void walk_double(SettingsWalk *w, const char *key, const char *fallback, double *field)
{
    if (w->saving)
    {
        ini_set_double(&w->ini, w->section, key, *field);
        return;
    }
    *field = ini_double(&w->ini, w->section, key, fallback);
}

static void walk_bool(SettingsWalk *w, const char *key, const char *fallback, uint8_t *field)
{
    if (w->saving)
    {
        ini_set_bool(&w->ini, w->section, key, *field);
        return;
    }
    *field = (uint8_t)ini_bool(&w->ini, w->section, key, fallback);
}

// Keys the file carries for the operator's eyes only, or reads but never keeps.
static void walk_written_only(SettingsWalk *w, const char *key, int32_t *field)
{
    if (w->saving)
    {
        ini_set_int(&w->ini, w->section, key, *field);
    }
}

static void walk_read_only(SettingsWalk *w, const char *key, const char *fallback, int32_t *field)
{
    if (!w->saving)
    {
        *field = ini_int(&w->ini, w->section, key, fallback);
    }
}

// The five line settings of the rig port. An index out of range is put right
// in the record too, so the dialog shows what the file now says.
static void walk_line_settings(SettingsWalk *w, SystemSettings *r)
{
    IniFile *ini = &w->ini;
    const char *s = w->section;
    if (!w->saving)
    {
        r->BaudRate = settings_baud_index(ini_int(ini, s, "BaudRate", "9600"));
        r->DataBits = settings_data_bits_index(ini_int(ini, s, "DataBits", "8"));
        r->StopBits = settings_stop_bits_index(ini_double(ini, s, "StopBits", "1"));
        r->Parity = settings_parity_index(ini_value(ini, s, "Parity", "None"));
        r->FlowControl = settings_flow_index(ini_value(ini, s, "FlowControl", "None"));
        return;
    }
    if (r->BaudRate < 0 || r->BaudRate >= BAUD_COUNT)
    {
        r->BaudRate = BAUD_9600;
    }
    if (r->DataBits != 0)
    {
        r->DataBits = 1;
    }
    if (r->StopBits < 0 || r->StopBits >= STOP_BITS_COUNT)
    {
        r->StopBits = 0;
    }
    if (r->Parity < 0 || r->Parity >= PARITY_COUNT)
    {
        r->Parity = 0;
    }
    if (r->FlowControl < 0 || r->FlowControl >= FLOW_COUNT)
    {
        r->FlowControl = 0;
    }
    ini_set_int(ini, s, "BaudRate", settings_baud_rate(r->BaudRate));
    ini_set_int(ini, s, "DataBits", settings_data_bits(r->DataBits));
    ini_set(ini, s, "StopBits", settings_stop_bits_text(r->StopBits));
    ini_set(ini, s, "Parity", settings_parity_text(r->Parity));
    ini_set(ini, s, "FlowControl", settings_flow_text(r->FlowControl));
}

static void walk_home(SettingsWalk *w, SystemSettings *r)
{
    w->section = "HOME_DATA";
    walk_text(w, "Callsign", "", r->Callsign, sizeof r->Callsign);
    walk_text(w, "Grid", "", r->Grid, sizeof r->Grid);
    walk_text(w, "Location", "", r->Location, sizeof r->Location);
    walk_int(w, "TrackingSource", "0", &r->TrackingSource);
    walk_double(w, "Latitude", "", &r->Latitude);
    walk_double(w, "Longitude", "", &r->Longitude);
    walk_double(w, "Frequency", "1296.0", &r->Frequency);

    w->section = "USER_SETTINGS";
    walk_double(w, "User_Azimuth", "", &r->User_Azimuth);
    walk_double(w, "User_Elevation", "", &r->User_Elevation);
    walk_double(w, "User_RA", "", &r->User_RA);
    walk_double(w, "User_Declination", "", &r->User_Declination);
    walk_int(w, "PreciseMoon", "0", &r->PreciseMoon);
    walk_double(w, "StationHeight", "200", &r->StationHeight);
    walk_int(w, "Refraction", "0", &r->Refraction);
    walk_int(w, "Precession", "0", &r->Precession);
}

static void walk_antenna(SettingsWalk *w, SystemSettings *r)
{
    w->section = "ANTENNA";
    walk_double(w, "Park_Azimuth", "180.00", &r->Park_Azimuth);
    walk_double(w, "Park_Elevation", "90.00", &r->Park_Elevation);
    walk_double(w, "Service_Azimuth", "180.00", &r->Service_Azimuth);
    walk_double(w, "Service_Elevation", "90.00", &r->Service_Elevation);
    walk_double(w, "Azimuth_Start", "1.00", &r->Azimuth_Start);
    walk_double(w, "Azimuth_Stop", "0.20", &r->Azimuth_Stop);
    walk_double(w, "Elevation_Start", "1.00", &r->Elevation_Start);
    walk_double(w, "Elevation_Stop", "0.20", &r->Elevation_Stop);
    walk_double(w, "AzimuthLimitMin", "0.00", &r->AzimuthLimitMin);
    walk_double(w, "AzimuthLimitMax", "360.0", &r->AzimuthLimitMax);
    walk_double(w, "ElevationLimitMin", "0.0", &r->ElevationLimitMin);
    walk_double(w, "ElevationLimitMax", "90.0", &r->ElevationLimitMax);
    walk_written_only(w, "AzimuthPwmActive", &r->AzimuthPwmActive);
    walk_int(w, "AzimuthPwmType", "0", &r->AzimuthPwmType);
    walk_double(w, "AzimuthSlowDutyCycle", "25.0", &r->AzimuthSlowDutyCycle);
    walk_double(w, "AzimuthFastDutyCycle", "100.0", &r->AzimuthFastDutyCycle);
    walk_double(w, "AzimuthManualDutyCycle", "50.0", &r->AzimuthManualDutyCycle);
    walk_double(w, "AzimuthGuardTime", "2.0", &r->AzimuthGuardTime);
    walk_bool(w, "AzimuthJogEnable", "false", &r->AzimuthJogEnable);
    walk_int(w, "AzimuthJogTime", "1", &r->AzimuthJogTime);
    walk_double(w, "AzimuthSlowDegrees", "10.0", &r->AzimuthSlowDegrees);
    walk_written_only(w, "ElevationPwmActive", &r->ElevationPwmActive);
    walk_int(w, "ElevationPwmType", "0", &r->ElevationPwmType);
    walk_double(w, "ElevationSlowDutyCycle", "25.0", &r->ElevationSlowDutyCycle);
    walk_double(w, "ElevationFastDutyCycle", "100.0", &r->ElevationFastDutyCycle);
    walk_double(w, "ElevationManualDutyCycle", "50.0", &r->ElevationManualDutyCycle);
    walk_double(w, "ElevationGuardTime", "2.0", &r->ElevationGuardTime);
    walk_bool(w, "ElevationJogEnable", "false", &r->ElevationJogEnable);
    walk_int(w, "ElevationJogTime", "1", &r->ElevationJogTime);
    walk_double(w, "ElevationSlowDegrees", "10.0", &r->ElevationSlowDegrees);
    walk_int(w, "AZ_Addr", "-1", &r->AZ_Addr);
    walk_int(w, "EL_Addr", "-1", &r->EL_Addr);
    walk_bool(w, "StallWatchdogEnable", "true", &r->StallWatchdogEnable);
    walk_double(w, "StallWatchdogTime", "5.0", &r->StallWatchdogTime);
    walk_int(w, "QuietMotion", "0", &r->QuietMotion);
    walk_int(w, "QuietWindowStart", "50", &r->QuietWindowStart);

    // An axis drives by PWM only when both speeds have a duty to give; the
    // stored flag is for the reader of the file, the duties decide.
    if (!w->saving)
    {
        r->AzimuthPwmActive = r->AzimuthSlowDutyCycle > 0 && r->AzimuthFastDutyCycle > 0;
        r->ElevationPwmActive = r->ElevationSlowDutyCycle > 0 && r->ElevationFastDutyCycle > 0;
    }
}

static void walk_encoders(SettingsWalk *w)
{
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        EncoderEntry *e = &encoders[n];
        char section[16];
        char type[8];
        snprintf(section, sizeof section, "ENCODER_%d", n);
        snprintf(type, sizeof type, "%d", encoder_default_type(n));
        w->section = section;
        if (!w->saving)
        {
            // The table is complete before any scan has asked a device.
            e->Info = brt_factory_record(n);
        }
        walk_int(w, "Type", type, &e->Type);
        walk_int(w, "Mode", "0", &e->Mode);
        walk_int(w, "Resolution", "36000", &e->Resolution);
        walk_int(w, "PPR", "1024", &e->PPR);
        walk_int(w, "Range", "1024", &e->Range);
    }
}

static void walk_calibration(SettingsWalk *w, SystemSettings *r)
{
    char key[16];
    w->section = "CALIBRATION";
    walk_double(w, "Azimuth_Offset", "0.0", &r->Azimuth_Offset);
    walk_double(w, "Elevation_Offset", "0.0", &r->Elevation_Offset);
    for (int i = 0; i < (int)(sizeof r->AZ / sizeof r->AZ[0]); i++)
    {
        snprintf(key, sizeof key, "AZ_%-d", i);
        walk_double(w, key, "0.0", &r->AZ[i]);
    }
    for (int i = 0; i < (int)(sizeof r->EL / sizeof r->EL[0]); i++)
    {
        snprintf(key, sizeof key, "EL_%-d", i);
        walk_double(w, key, "0.0", &r->EL[i]);
    }
}

static void walk_rig(SettingsWalk *w, SystemSettings *r)
{
    w->section = "RIG_CONTROL";
    walk_text(w, "OmniRigFilename", "", r->OmniRigFilename, sizeof r->OmniRigFilename);
    walk_int(w, "OmniRigActive", "0", &r->OmniRigActive);
    walk_int(w, "OmniRigDebug", "0", &r->OmniRigDebug);
    walk_int(w, "Port", "1", &r->Port);
    walk_text(w, "PortName", "/dev/ttyS0", r->PortName, sizeof r->PortName);
    walk_line_settings(w, r);
}

static void walk_adc(SettingsWalk *w, SystemSettings *r)
{
    char key[24];
    w->section = "ADC";
    walk_int(w, "ads1115_present", "0", &r->ads1115_present);
    for (int n = 0; n < 4; n++)
    {
        snprintf(key, sizeof key, "ADC_%d_Active", n);
        walk_int(w, key, "0", &r->ADC_Active[n]);
        snprintf(key, sizeof key, "ADC_%d_Minimum", n);
        walk_double(w, key, "0.0", &r->ADC_Minimum[n]);
        snprintf(key, sizeof key, "ADC_%d_Maximum", n);
        walk_double(w, key, "3.3", &r->ADC_Maximum[n]);
        snprintf(key, sizeof key, "ADC_%d_Range", n);
        walk_double(w, key, "360.0", &r->ADC_Range[n]);
    }
    // A switch for a debugging session: set by hand in the file, never kept on.
    walk_read_only(w, "AdcDebug", "0", &r->AdcDebug);
}

static void walk_brakes(SettingsWalk *w, SystemSettings *r)
{
    w->section = "BRAKE_CONTROL";
    walk_int(w, "az_brake_enabled", "0", &r->az_brake_enabled);
    walk_int(w, "az_brake_delay", "1000", &r->az_brake_delay);
    walk_int(w, "el_brake_enabled", "0", &r->el_brake_enabled);
    walk_int(w, "el_brake_delay", "1000", &r->el_brake_delay);

    // A brake takes over the axis's PWM outputs, so a braked axis is relay-only.
    if (!w->saving)
    {
        if (r->az_brake_enabled)
        {
            r->AzimuthPwmActive = 0;
        }
        if (r->el_brake_enabled)
        {
            r->ElevationPwmActive = 0;
        }
    }
}

static void walk_links(SettingsWalk *w, SystemSettings *r)
{
    w->section = "GPREDICT";
    walk_int(w, "Active", "1", &r->GpredictActive);
    walk_int(w, "Debug", "1", &r->GpredictDebug);
    walk_int(w, "Port", "5333", &r->GpredictPort);
    walk_int(w, "HamlibCompatible", "1", &r->HamlibCompatible);

    w->section = "PSTROTATOR";
    walk_int(w, "Active", "1", &r->PstActive);
    walk_int(w, "Debug", "1", &r->PstDebug);
    walk_text(w, "CmdPort", "12000", r->CmdPort, sizeof r->CmdPort);
    walk_text(w, "RspPort", "12001", r->RspPort, sizeof r->RspPort);
    walk_text(w, "Protocol", "udp", r->Protocol, sizeof r->Protocol);

    w->section = "REMOTE_DISPLAY";
    walk_int(w, "DisplayEnabled", "1", &r->DisplayEnabled);
    walk_int(w, "DisplayType", "0", &r->DisplayType);
    walk_int(w, "DisplayRows", "8", &r->DisplayRows);
    walk_int(w, "DisplayColumns", "20", &r->DisplayColumns);
    walk_int(w, "RemoteSwitches", "0", &r->RemoteSwitches);
    walk_int(w, "RemoteAdcs", "0", &r->RemoteAdcs);

    w->section = "REPORT";
    walk_int(w, "Active", "1", &r->ReportActive);
    walk_text(w, "Collector", "report.pskreporter.info:4739", r->Collector, sizeof r->Collector);
}

static void walk_all(SettingsWalk *w, SystemSettings *r)
{
    walk_home(w, r);
    walk_antenna(w, r);
    walk_encoders(w);
    walk_calibration(w, r);
    walk_rig(w, r);
    walk_adc(w, r);
    walk_brakes(w, r);
    walk_links(w, r);
}

int LoadSettings(const char *file_name, SystemSettings *record)
{
    char path[1024];
    SettingsWalk w;
    settings_path(file_name, path, sizeof path);
    ini_read(path, &w.ini);
    w.saving = 0;
    memset(record, 0, sizeof *record);
    walk_all(&w, record);

    // The bus log's flags; the SEI section read when the bus opens has the
    // last word, so these only matter until then.
    w.section = "DEBUG";
    walk_read_only(&w, "SeiDebug", "0", &SeiDebug);
    walk_read_only(&w, "SeiDebugVerbose", "0", &SeiDebugVerbose);
    return 0;
}

int SaveSettings(const char *file_name, SystemSettings *record)
{
    char path[1024];
    SettingsWalk w;
    settings_path(file_name, path, sizeof path);

    // The other sections belong to the bus, the dialogs and the operator's
    // editor; they are read so that they are written back as they were.
    ini_read(path, &w.ini);
    w.saving = 1;
    walk_all(&w, record);

    char encoder_names[ENCODER_COUNT][16];
    const char *order[ENCODER_COUNT + 12];
    int count = 0;
    order[count++] = "HOME_DATA";
    order[count++] = "USER_SETTINGS";
    order[count++] = "ANTENNA";
    for (int n = 0; n < ENCODER_COUNT; n++)
    {
        snprintf(encoder_names[n], sizeof encoder_names[n], "ENCODER_%d", n);
        order[count++] = encoder_names[n];
    }
    static const char *const tail[] = {"CALIBRATION", "RIG_CONTROL",    "ADC",   "BRAKE_CONTROL", "GPREDICT",
                                       "PSTROTATOR",  "REMOTE_DISPLAY", "REPORT"};
    for (const char *name : tail)
    {
        order[count++] = name;
    }
    ini_order(&w.ini, order, count);

    // A file that cannot be written costs nothing but the save: the values
    // stay in memory and the next save tries again.
    ini_write(path, &w.ini);
    return 0;
}
