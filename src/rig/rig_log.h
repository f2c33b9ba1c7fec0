// The rig engine's debug log, "OmniRigDebug.log" in the program's writable
// folder. Loading a file starts it afresh; the loader's readings and every
// command exchanged with the radio are appended, so one file tells the story
// of a session from the file's first section to the last reply.
#pragma once

#include <cstdint>
#include <cstdio>

// Open the log: "w" empties it, "a" appends. Null when it cannot be opened;
// every writer below takes a null log and writes nothing.
FILE *rig_log_open(const char *mode);
void rig_log_close(FILE *log);
// Bytes as "%02X" each, with no separator.
void rig_log_hex(FILE *log, const uint8_t *bytes, int length);
// Bytes as text, for ASCII records.
void rig_log_text(FILE *log, const uint8_t *bytes, int length);
