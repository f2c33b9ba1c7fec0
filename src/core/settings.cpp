#include "core/settings.h"

#include "bus/encoders.h"

#include <QDir>
#include <cstdio>
#include <cstring>

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

int LoadSettings(const char *, SystemSettings *record)
{
    memset(record, 0, sizeof *record);
    return 0;
}

int SaveSettings(const char *, SystemSettings *)
{
    return 0;
}
