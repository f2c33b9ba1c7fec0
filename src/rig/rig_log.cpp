#include "rig/rig_log.h"

#include "core/settings.h"

#include <QDir>

FILE *rig_log_open(const char *mode)
{
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    char path[600];
    settings_path("OmniRigDebug.log", path, sizeof path);
    return fopen(path, mode);
}

void rig_log_close(FILE *log)
{
    if (log)
    {
        fclose(log);
    }
}

void rig_log_hex(FILE *log, const uint8_t *bytes, int length)
{
    if (!log)
    {
        return;
    }
    for (int i = 0; i < length; i++)
    {
        fprintf(log, "%02X", bytes[i]);
    }
}

void rig_log_text(FILE *log, const uint8_t *bytes, int length)
{
    if (!log)
    {
        return;
    }
    fwrite(bytes, 1, (size_t)(length > 0 ? length : 0), log);
}
