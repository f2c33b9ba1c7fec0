// The bus inventory apart from its table widget: asking one address what sits
// there, the texts of its row, and the changes a press on a cell makes to a
// device. The encoder table decides what is asked: an entry of Type -1 costs
// no byte on the line.
#pragma once

#include <cstdint>

enum
{
    SCAN_COLUMNS = 10,
    SCAN_TEXT_SIZE = 24,
    SCAN_MODE_MASK = 0x9D // bits 1, 5 and 6 of a mode never reach a device
};

enum ScanColumn
{
    SCAN_ADDRESS,
    SCAN_TYPE,
    SCAN_MODEL,
    SCAN_VERSION,
    SCAN_CONFIG,
    SCAN_SERIAL,
    SCAN_DATE,
    SCAN_RESOLUTION,
    SCAN_POSITION,
    SCAN_MODE
};

// What one pass learnt of an address: silent, or which reads came back.
struct ScanRow
{
    int silent;
    int info_ok, resolution_ok, position_ok, mode_ok;
};

// Ask the address by its Type, into its entry of the encoder table.
ScanRow encoder_scan_address(int a);

// The type word of an entry: "SEI", "BRT", "MOD", or blank.
const char *encoder_type_word(int type);

// The texts of a row from the entry, for the columns the pass read; the
// others stay null (keep what is shown). A silent row blanks columns 2 to 9.
void encoder_row_texts(int a, const ScanRow *row, char texts[SCAN_COLUMNS][SCAN_TEXT_SIZE], int filled[SCAN_COLUMNS]);

// The device at r moves to address n. Nothing goes out when n is r, or not
// an address of the table. A moved device takes its entry with it, so the
// next pass asks it where it now is. 1 when a native SEI encoder took its
// new address (the dialog then closes), else 0.
int encoder_change_address(int r, int n);
// The device's resolution, its low 16 bits.
void encoder_change_resolution(int r, long value);
// The device's position, as wide as its mode says.
void encoder_preset_position(int r, uint32_t value);
// The device's mode, masked; a SEI encoder keeps it for its next power-up too.
void encoder_change_mode(int r, long value);
