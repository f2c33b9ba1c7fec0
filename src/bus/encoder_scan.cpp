#include "bus/encoder_scan.h"

#include "bus/brt.h"
#include "bus/encoders.h"
#include "bus/sei_commands.h"

#include <QtGlobal>
#include <cstdio>
#include <cstring>

static int encoder_valid(int a)
{
    return a >= 0 && a < ENCODER_COUNT;
}

// A BRT-38 is known by the model its entry holds; everything else gets the
// native SEI commands.
static int encoder_is_brt(int a)
{
    return encoders[a].Info.Model == 38;
}

static ScanRow encoder_scan_sei(int a)
{
    EncoderEntry *e = &encoders[a];
    ScanRow row = {};
    uint8_t status = 0, crc = 0;
    int failed = sei_read_mode(a, &e->Mode, &status);
    qDebug("Encoder: %d mode_status: %d", a, failed ? 1 : 0);
    if (failed)
    {
        row.silent = 1;
        return row;
    }
    row.mode_ok = 1;
    row.position_ok = sei_read_position(a, e->Mode, e->Resolution, &e->Position) == 0;
    row.resolution_ok = sei_read_resolution(a, &e->Resolution, &status) == 0;
    row.info_ok = sei_read_factory_info(a, &e->Info, &crc) == 0;
    return row;
}

static ScanRow encoder_scan_brt(int a)
{
    EncoderEntry *e = &encoders[a];
    ScanRow row = {};
    int status = brt_read_position(a, e->Mode, &e->Position);
    qDebug("Encoder: %d pos_status: %d", a, status);
    if (status != 0)
    {
        row.silent = 1;
        return row;
    }
    row.position_ok = 1;
    row.mode_ok = brt_get_mode(a, &e->Mode) == 0;
    row.resolution_ok = brt_get_resolution(a, &e->Resolution) == 0;
    row.info_ok = brt_get_factory_info(a, &e->Info) == 0;
    return row;
}

ScanRow encoder_scan_address(int a)
{
    ScanRow silent = {1, 0, 0, 0, 0};
    if (!encoder_valid(a))
    {
        return silent;
    }
    switch (encoders[a].Type)
    {
    case ENCODER_SEI:
        return encoder_scan_sei(a);
    case ENCODER_BRT:
        return encoder_scan_brt(a);
    default:
        // Nothing asked: no type, or a module that is no encoder.
        return silent;
    }
}

const char *encoder_type_word(int type)
{
    switch (type)
    {
    case ENCODER_SEI:
        return "SEI";
    case ENCODER_BRT:
        return "BRT";
    case ENCODER_MOD:
        return "MOD";
    default:
        return "";
    }
}

void encoder_row_texts(int a, const ScanRow *row, char texts[SCAN_COLUMNS][SCAN_TEXT_SIZE], int filled[SCAN_COLUMNS])
{
    const EncoderEntry *e = &encoders[a];
    memset(texts, 0, sizeof(char) * SCAN_COLUMNS * SCAN_TEXT_SIZE);
    memset(filled, 0, sizeof(int) * SCAN_COLUMNS);
    snprintf(texts[SCAN_ADDRESS], SCAN_TEXT_SIZE, "%d", a);
    snprintf(texts[SCAN_TYPE], SCAN_TEXT_SIZE, "%s", encoder_type_word(e->Type));
    filled[SCAN_ADDRESS] = filled[SCAN_TYPE] = 1;
    if (row->silent)
    {
        for (int c = SCAN_MODEL; c < SCAN_COLUMNS; c++)
        {
            filled[c] = 1;
        }
        return;
    }
    if (row->info_ok)
    {
        const EncoderFactoryInfo *i = &e->Info;
        snprintf(texts[SCAN_MODEL], SCAN_TEXT_SIZE, "%d", i->Model);
        snprintf(texts[SCAN_VERSION], SCAN_TEXT_SIZE, "%d.%02d", i->Version >> 8, i->Version & 0xFF);
        snprintf(texts[SCAN_CONFIG], SCAN_TEXT_SIZE, "%d.%02d", i->Config >> 8, i->Config & 0xFF);
        snprintf(texts[SCAN_SERIAL], SCAN_TEXT_SIZE, "%d", (int)i->Serial);
        snprintf(texts[SCAN_DATE], SCAN_TEXT_SIZE, "%02d-%02d-%04d", i->Month, i->Day, i->Year);
        for (int c = SCAN_MODEL; c <= SCAN_DATE; c++)
        {
            filled[c] = 1;
        }
    }
    if (row->resolution_ok)
    {
        snprintf(texts[SCAN_RESOLUTION], SCAN_TEXT_SIZE, "%d", e->Resolution);
        filled[SCAN_RESOLUTION] = 1;
    }
    if (row->position_ok)
    {
        snprintf(texts[SCAN_POSITION], SCAN_TEXT_SIZE, "%d", (int)e->Position);
        filled[SCAN_POSITION] = 1;
    }
    if (row->mode_ok)
    {
        snprintf(texts[SCAN_MODE], SCAN_TEXT_SIZE, "%d", e->Mode);
        filled[SCAN_MODE] = 1;
    }
}

int encoder_change_address(int r, int n)
{
    if (!encoder_valid(r) || !encoder_valid(n) || n == r)
    {
        return 0;
    }
    uint8_t status = 0;
    int moved;
    int closes = 0;
    if (encoder_is_brt(r))
    {
        moved = brt_set_address(r, (uint8_t)n) == 0;
    }
    else
    {
        moved = sei_assign_address(r, encoders[r].Info.Serial, (uint8_t)n, &status) == 0;
        closes = moved;
    }
    // The entry travels with its device: a BRT-38's mode, resolution and
    // pulses live only here, and the new address must be asked by its type.
    // The old address keeps its entry and shows silent from now on.
    if (moved)
    {
        encoders[n] = encoders[r];
    }
    return closes;
}

void encoder_change_resolution(int r, long value)
{
    if (!encoder_valid(r))
    {
        return;
    }
    uint16_t resolution = (uint16_t)value;
    uint8_t status = 0;
    if (encoder_is_brt(r))
    {
        brt_set_resolution(r, resolution);
        return;
    }
    sei_change_resolution(r, resolution, &status);
}

void encoder_preset_position(int r, uint32_t value)
{
    if (!encoder_valid(r))
    {
        return;
    }
    uint8_t status = 0;
    if (encoder_is_brt(r))
    {
        brt_set_position(r, encoders[r].Mode, value);
        return;
    }
    sei_set_position(r, encoders[r].Mode, value, &status);
}

void encoder_change_mode(int r, long value)
{
    if (!encoder_valid(r))
    {
        return;
    }
    uint8_t mode = (uint8_t)(value & SCAN_MODE_MASK);
    uint8_t status = 0;
    if (encoder_is_brt(r))
    {
        brt_set_mode(r, mode);
        return;
    }
    sei_change_mode_temporary(r, mode, &status);
    sei_change_mode_power_up(r, mode, &status);
}
