#include "rig_test_files.h"

#include "support/test_env.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

std::string rig_test_write(const char *name, const std::string &text)
{
    std::string path = std::string(test_home()) + "/" + name;
    FILE *f = fopen(path.c_str(), "wb");
    if (f)
    {
        fwrite(text.data(), 1, text.size(), f);
        fclose(f);
    }
    return path;
}

std::string rig_test_real_folder(void)
{
    QFileInfo folder(QString::fromUtf8(MORVANE_OMNIRIG_DIR));
    return folder.isDir() ? folder.absoluteFilePath().toStdString() : std::string();
}

std::string rig_test_own_file(const char *name)
{
    return std::string(MORVANE_OWN_RIG_DIR) + "/" + name;
}

std::string rig_test_own_folder(void)
{
    return MORVANE_OWN_RIG_DIR;
}
