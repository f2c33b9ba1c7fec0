// The settings file format: sections of key=value lines, read and written
// in the order they stand. The toolkit's own INI writer sorts the keys of a
// section and turns a value with a comma into a list; ours keeps the file in
// the order an operator expects to read it and every text as it was typed.
//
// A missing key reads as the fall-back text, converted like any other text:
// numbers that do not convert read as 0, a boolean is false only for "",
// "0" and "false".
#pragma once

#include <string>
#include <utility>
#include <vector>

struct IniSection
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> keys;
};

struct IniFile
{
    std::vector<IniSection> sections;
};

// 0; a file that is missing or unreadable gives an empty one.
int ini_read(const char *path, IniFile *ini);
// 0, or -1 when the folder or the file cannot be written. The file is
// replaced whole (written beside and renamed), so a crash never leaves half.
int ini_write(const char *path, const IniFile *ini);

// Read one section of a file, change it and write the file back, keeping every
// other section as it was.
const char *ini_value(const IniFile *ini, const char *section, const char *key, const char *fallback);
int ini_int(const IniFile *ini, const char *section, const char *key, const char *fallback);
double ini_double(const IniFile *ini, const char *section, const char *key, const char *fallback);
int ini_bool(const IniFile *ini, const char *section, const char *key, const char *fallback);
// Copy the text into a fixed field, cut to fit.
void ini_text(const IniFile *ini, const char *section, const char *key, const char *fallback, char *field, int size);

// A key keeps its place when it exists, else it is added at the end of its
// section; a new section goes at the end of the file.
void ini_set(IniFile *ini, const char *section, const char *key, const char *value);
void ini_set_int(IniFile *ini, const char *section, const char *key, long value);
void ini_set_double(IniFile *ini, const char *section, const char *key, double value);
void ini_set_bool(IniFile *ini, const char *section, const char *key, int value);

// Put the named sections first, in the order given; the others follow in the
// order they had.
void ini_order(IniFile *ini, const char *const names[], int count);

// Conversions as the settings file uses them, for texts from elsewhere.
int ini_to_int(const char *text);
double ini_to_double(const char *text);
int ini_to_bool(const char *text);
// The shortest text that reads back as exactly this double.
std::string ini_from_double(double value);
