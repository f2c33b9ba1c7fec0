// The encoder table: one entry per bus address, its first five fields kept in
// the ENCODER_n sections of the settings file.
#pragma once

#include <cstdint>

// Factory record of an encoder, as its reply carries it.
struct EncoderFactoryInfo
{
    uint16_t Model;   // 38 is the BRT-38
    uint16_t Version; // high byte major, low byte minor
    uint16_t Config;  // high byte major, low byte minor
    uint32_t Serial;
    uint8_t Month;
    uint8_t Day;
    uint16_t Year;
    uint8_t CRC;
};

enum EncoderType
{
    ENCODER_NONE = -1,
    ENCODER_SEI = 0,
    ENCODER_BRT = 1,
    ENCODER_MOD = 2
};

enum
{
    ENCODER_COUNT = 15,
    MODE_DIRECTION = 0x01,
    MODE_32BIT = 0x04,
    MODE_MULTI_TURN = 0x10
};

struct EncoderEntry
{
    int32_t Type;
    uint8_t Mode;
    uint16_t Resolution;
    uint32_t PPR;
    uint32_t Range;
    uint32_t Position; // last position seen by the scan
    EncoderFactoryInfo Info;
};

extern EncoderEntry encoders[ENCODER_COUNT];

// The default Type of entry n before any file says otherwise.
int encoder_default_type(int n);
// The fixed record a BRT-38 at this address reports about itself.
EncoderFactoryInfo brt_factory_record(int address);
