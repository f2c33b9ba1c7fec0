// The settings store: the main INI file of one instance and its memory image.
#pragma once

#include "core/state.h"

// The one writable folder of the program, with a trailing slash:
// the home directory followed by "/.config/Morvane/".
const char *settings_directory(void);
// The full path of an INI file (or log) of that folder.
void settings_path(const char *file_name, char *path, int size);

// Instance naming: "Morvane.ini" and the plain title for 0, "Morvane_<n>.ini"
// and the title with " (<n>)" for any other number.
void settings_instance_names(int instance, char *file_name, int file_size, char *title, int title_size);

// Fill the record from the named file of the writable folder; missing keys
// take their defaults. Also fills the encoder table. Returns 0.
int LoadSettings(const char *file_name, SystemSettings *record);
// Write every key of the record, the encoder table with it. Returns 0.
int SaveSettings(const char *file_name, SystemSettings *record);

// The mapped keys: index to the text or number the file holds, and back.
// Reading anything unknown gives the key's fall-back index; an index out of
// range gives what a save resets it to: 9600 baud, 8 data bits, 1 stop bit,
// no parity, no flow control.
int settings_baud_index(int baud);
int settings_baud_rate(int index);
int settings_data_bits_index(int bits);
int settings_data_bits(int index);
int settings_stop_bits_index(double bits);
const char *settings_stop_bits_text(int index);
int settings_parity_index(const char *text);
const char *settings_parity_text(int index);
int settings_flow_index(const char *text);
const char *settings_flow_text(int index);
