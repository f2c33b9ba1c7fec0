// The reader of rig description files. These files are INI in form, but their
// values are raw command texts: "(FA;)" must reach the loader whole, so a ';'
// inside a value is text here, never the start of a comment. Only a line whose
// first non-blank character is ';' is a comment.
#pragma once

#include <string>
#include <vector>

struct RigFileEntry
{
    std::string section;
    std::string key;
    std::string value;
};

struct RigFile
{
    std::string name; // the file's name, for the log lines about it
    std::vector<RigFileEntry> entries;
};

// Read a file in UTF-8, Latin-1 or UTF-16 (with its byte order mark). Returns
// 0; a missing or unreadable file gives an empty one.
int rig_file_read(const char *path, RigFile *file);
// The same from text in memory, for files already read.
int rig_file_parse(const char *text, size_t length, RigFile *file);

// The whole text after '=' of a key, blanks around it trimmed, or null when
// the section has no such key. A section that stands twice in a file is one
// section, and a key given twice takes its last value.
const char *rig_file_value(const RigFile *file, const char *section, const char *key);
