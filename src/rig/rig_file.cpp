#include "rig/rig_file.h"

#include <cstdio>
#include <cstring>

static std::string rig_file_trim(const std::string &text)
{
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
    {
        return std::string();
    }
    size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

// Rig files are plain ASCII in practice; a UTF-16 file (some editors save them
// so) is narrowed to one byte a character, which keeps every command text.
static std::string rig_file_narrow(const unsigned char *data, size_t length)
{
    if (length >= 2 && ((data[0] == 0xFF && data[1] == 0xFE) || (data[0] == 0xFE && data[1] == 0xFF)))
    {
        int low_first = data[0] == 0xFF;
        std::string text;
        text.reserve(length / 2);
        for (size_t i = 2; i + 1 < length; i += 2)
        {
            unsigned code = low_first ? data[i] | (data[i + 1] << 8) : (data[i] << 8) | data[i + 1];
            text.push_back(code < 256 ? (char)code : '?');
        }
        return text;
    }
    if (length >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
    {
        return std::string((const char *)data + 3, length - 3);
    }
    return std::string((const char *)data, length);
}

int rig_file_parse(const char *data, size_t length, RigFile *file)
{
    file->entries.clear();
    std::string text = rig_file_narrow((const unsigned char *)data, length);
    std::string section;
    int in_section = 0;
    size_t at = 0;
    while (at < text.size())
    {
        size_t end = text.find('\n', at);
        if (end == std::string::npos)
        {
            end = text.size();
        }
        std::string line = rig_file_trim(text.substr(at, end - at));
        at = end + 1;
        if (line.empty() || line[0] == ';')
        {
            continue;
        }
        if (line[0] == '[')
        {
            size_t close = line.find(']');
            section = rig_file_trim(line.substr(1, close == std::string::npos ? std::string::npos : close - 1));
            in_section = 1;
            continue;
        }
        size_t equals = line.find('=');
        if (!in_section || equals == std::string::npos)
        {
            continue;
        }
        file->entries.push_back(
            RigFileEntry{section, rig_file_trim(line.substr(0, equals)), rig_file_trim(line.substr(equals + 1))});
    }
    return 0;
}

int rig_file_read(const char *path, RigFile *file)
{
    file->entries.clear();
    const char *slash = strrchr(path, '/');
    file->name = slash ? slash + 1 : path;
    FILE *f = fopen(path, "rb");
    if (!f)
    {
        return 0;
    }
    std::string data;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0)
    {
        data.append(buffer, n);
    }
    fclose(f);
    std::string name = file->name;
    rig_file_parse(data.data(), data.size(), file);
    file->name = name;
    return 0;
}

const char *rig_file_value(const RigFile *file, const char *section, const char *key)
{
    const char *value = nullptr;
    for (const RigFileEntry &entry : file->entries)
    {
        if (entry.section == section && entry.key == key)
        {
            value = entry.value.c_str();
        }
    }
    return value;
}
