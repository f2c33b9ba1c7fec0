// The settings file as an operator or a crash may leave it: the input is
// read as an INI file, every key it holds is converted each way, and then it
// stands as the instance's file for the program's own loaders.
#include "bus/sei_link.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "core/state.h"
#include "fuzz_support.h"
#include "remote/easycomm.h"

#include <QDir>
#include <cstdio>

static void fuzz_every_key(const IniFile *ini)
{
    for (const IniSection &section : ini->sections)
    {
        for (const auto &key : section.keys)
        {
            const char *s = section.name.c_str();
            const char *k = key.first.c_str();
            ini_int(ini, s, k, "");
            ini_double(ini, s, k, "");
            ini_bool(ini, s, k, "");
            char field[8];
            ini_text(ini, s, k, "", field, sizeof field);
            if (!fuzz_terminated(field, sizeof field))
            {
                fuzz_fail("ini", "cut text not terminated");
            }
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    IniFile ini;
    ini_read(fuzz_scratch_file(data, size), &ini);
    fuzz_every_key(&ini);

    char path[512];
    settings_path("Morvane.ini", path, sizeof path);
    // The loaders read the instance's file from the settings folder.
    static bool folder = QDir().mkpath(QString::fromUtf8(settings_directory()));
    FILE *f = folder ? fopen(path, "wb") : nullptr;
    if (f)
    {
        fwrite(data, 1, size, f);
        fclose(f);
    }
    static SystemSettings record;
    LoadSettings("Morvane.ini", &record);
    SeiSettings sei;
    sei_load_settings("Morvane.ini", &sei);
    EasyCommRecord link = {};
    easycomm_load_settings("Morvane.ini", &link);
    return 0;
}
