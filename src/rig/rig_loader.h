// Loading a rig description file into the command tables.
#pragma once

#include "rig/rig_command.h"

struct RigFile;

// The folder of rig files: "OmniRigFiles" beside the program, unless a test
// or a tool has named another one (null or "" restores the default).
const char *rig_files_folder(void);
void rig_files_set_folder(const char *folder);

// Load the named file of the rig folder. Returns 0, whatever the file holds:
// a missing file leaves the tables empty and the engine then sends nothing.
int LoadOmniRigFile(const char *file_name, int debug);
// The same for a file given by its path.
int rig_load_path(const char *path, int debug);
// Fill one record from one section of a read file. Returns 0.
int LoadOmniRigParams(const RigFile *file, RigCommand *record, const char *section);

// The two readers of key texts, bounded by size; each returns the byte count.
// Hex list: pairs of digits, high first, with a '.' skipped wherever it stands.
int rig_read_hex_list(const char *text, uint8_t *bytes, int size);
// Bracket text: the characters between the first and the last, as they stand.
int rig_read_bracket_text(const char *text, uint8_t *bytes, int size);
