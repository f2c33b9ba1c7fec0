#include "core/ini_file.h"

#include "core/state.h"

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

static std::string ini_trim(const std::string &s)
{
    size_t a = s.find_first_not_of(" \t\r\n");
    if (a == std::string::npos)
    {
        return std::string();
    }
    size_t b = s.find_last_not_of(" \t\r\n");
    return s.substr(a, b - a + 1);
}

// A quoted value ends at its closing quote; an unquoted one at a ';', which
// starts a comment, as in the INI files people edit by hand.
static std::string ini_parse_value(const std::string &raw)
{
    std::string v = ini_trim(raw);
    if (v.empty() || v[0] != '"')
    {
        size_t semicolon = v.find(';');
        return semicolon == std::string::npos ? v : ini_trim(v.substr(0, semicolon));
    }
    std::string out;
    for (size_t i = 1; i < v.size(); i++)
    {
        if (v[i] == '\\' && i + 1 < v.size())
        {
            char c = v[++i];
            out += c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
        }
        else if (v[i] == '"')
        {
            break;
        }
        else
        {
            out += v[i];
        }
    }
    return out;
}

static std::string ini_quote(const std::string &v)
{
    bool plain = v.empty() || (v.front() != ' ' && v.back() != ' ' && v.front() != '\t' && v.back() != '\t');
    for (char c : v)
    {
        if (c == ';' || c == '"' || c == '\\' || c == '#' || (unsigned char)c < 0x20)
        {
            plain = false;
        }
    }
    if (plain)
    {
        return v;
    }
    std::string out = "\"";
    for (char c : v)
    {
        if (c == '"' || c == '\\')
        {
            out += '\\';
            out += c;
        }
        else if (c == '\n')
        {
            out += "\\n";
        }
        else if (c == '\r')
        {
            out += "\\r";
        }
        else if (c == '\t')
        {
            out += "\\t";
        }
        else
        {
            out += c;
        }
    }
    out += '"';
    return out;
}

static IniSection *ini_find_section(IniFile *ini, const char *name)
{
    for (IniSection &s : ini->sections)
    {
        if (s.name == name)
        {
            return &s;
        }
    }
    return nullptr;
}

static const IniSection *ini_find_section(const IniFile *ini, const char *name)
{
    return ini_find_section(const_cast<IniFile *>(ini), name);
}

int ini_read(const char *path, IniFile *ini)
{
    ini->sections.clear();
    FILE *f = fopen(path, "r");
    if (!f)
    {
        return 0;
    }
    IniSection *current = nullptr;
    char *line = nullptr;
    size_t capacity = 0;
    bool first = true;
    // A line has no length limit: a fixed buffer would cut a long one in two
    // and read its tail as a line of its own.
    while (getline(&line, &capacity, f) >= 0)
    {
        std::string text = ini_trim(line);
        // Editors on the other desktop start a UTF-8 file with a byte order
        // mark, which would hide the first section's header.
        if (first && text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        {
            text = ini_trim(text.substr(3));
        }
        first = false;
        if (text.empty() || text[0] == ';' || text[0] == '#')
        {
            continue;
        }
        if (text[0] == '[')
        {
            size_t close = text.find(']');
            std::string name = text.substr(1, close == std::string::npos ? std::string::npos : close - 1);
            current = ini_find_section(ini, name.c_str());
            if (!current)
            {
                ini->sections.push_back(IniSection{name, {}});
                current = &ini->sections.back();
            }
            continue;
        }
        size_t equals = text.find('=');
        if (!current || equals == std::string::npos)
        {
            continue;
        }
        std::string key = ini_trim(text.substr(0, equals));
        std::string value = ini_parse_value(text.substr(equals + 1));
        ini_set(ini, current->name.c_str(), key.c_str(), value.c_str());
        current = ini_find_section(ini, current->name.c_str());
    }
    free(line);
    fclose(f);
    return 0;
}

int ini_write(const char *path, const IniFile *ini)
{
    QString folder = QFileInfo(QString::fromUtf8(path)).absolutePath();
    if (!QDir().mkpath(folder))
    {
        return -1;
    }
    char temp[1024];
    // A cut name would be renamed over some other file.
    if (snprintf(temp, sizeof temp, "%s.new", path) >= (int)sizeof temp)
    {
        return -1;
    }
    FILE *f = fopen(temp, "w");
    if (!f)
    {
        return -1;
    }
    bool first = true;
    for (const IniSection &s : ini->sections)
    {
        fprintf(f, "%s[%s]\n", first ? "" : "\n", s.name.c_str());
        first = false;
        for (const auto &kv : s.keys)
        {
            fprintf(f, "%s=%s\n", kv.first.c_str(), ini_quote(kv.second).c_str());
        }
    }
    bool good = fflush(f) == 0 && fsync(fileno(f)) == 0;
    good = fclose(f) == 0 && good;
    if (!good || rename(temp, path) != 0)
    {
        unlink(temp);
        return -1;
    }
    return 0;
}

const char *ini_value(const IniFile *ini, const char *section, const char *key, const char *fallback)
{
    const IniSection *s = ini_find_section(ini, section);
    if (s)
    {
        for (const auto &kv : s->keys)
        {
            if (kv.first == key)
            {
                return kv.second.c_str();
            }
        }
    }
    return fallback ? fallback : "";
}

int ini_to_int(const char *text)
{
    bool ok = false;
    int v = QString::fromUtf8(text).trimmed().toInt(&ok);
    return ok ? v : 0;
}

double ini_to_double(const char *text)
{
    bool ok = false;
    double v = QString::fromUtf8(text).trimmed().toDouble(&ok);
    return ok ? v : 0.0;
}

int ini_to_bool(const char *text)
{
    QString t = QString::fromUtf8(text).trimmed();
    return !(t.isEmpty() || t == "0" || t.compare("false", Qt::CaseInsensitive) == 0);
}

std::string ini_from_double(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest).toStdString();
}

int ini_int(const IniFile *ini, const char *section, const char *key, const char *fallback)
{
    return ini_to_int(ini_value(ini, section, key, fallback));
}

double ini_double(const IniFile *ini, const char *section, const char *key, const char *fallback)
{
    return ini_to_double(ini_value(ini, section, key, fallback));
}

int ini_bool(const IniFile *ini, const char *section, const char *key, const char *fallback)
{
    return ini_to_bool(ini_value(ini, section, key, fallback));
}

void ini_text(const IniFile *ini, const char *section, const char *key, const char *fallback, char *field, int size)
{
    text_copy(field, size, ini_value(ini, section, key, fallback));
}

void ini_set(IniFile *ini, const char *section, const char *key, const char *value)
{
    IniSection *s = ini_find_section(ini, section);
    if (!s)
    {
        ini->sections.push_back(IniSection{section, {}});
        s = &ini->sections.back();
    }
    for (auto &kv : s->keys)
    {
        if (kv.first == key)
        {
            kv.second = value ? value : "";
            return;
        }
    }
    s->keys.emplace_back(key, value ? value : "");
}

void ini_set_int(IniFile *ini, const char *section, const char *key, long value)
{
    char text[32];
    snprintf(text, sizeof text, "%ld", value);
    ini_set(ini, section, key, text);
}

void ini_set_double(IniFile *ini, const char *section, const char *key, double value)
{
    ini_set(ini, section, key, ini_from_double(value).c_str());
}

void ini_set_bool(IniFile *ini, const char *section, const char *key, int value)
{
    ini_set(ini, section, key, value ? "true" : "false");
}

void ini_order(IniFile *ini, const char *const names[], int count)
{
    std::vector<IniSection> ordered;
    for (int i = 0; i < count; i++)
    {
        for (auto it = ini->sections.begin(); it != ini->sections.end(); ++it)
        {
            if (it->name == names[i])
            {
                ordered.push_back(*it);
                ini->sections.erase(it);
                break;
            }
        }
    }
    ordered.insert(ordered.end(), ini->sections.begin(), ini->sections.end());
    ini->sections.swap(ordered);
}
