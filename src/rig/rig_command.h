// The command records of a rig description file, as the engine executes them:
// what to send, how the reply ends, the pattern a good reply matches, and
// where its values and flags lie.
#pragma once

#include <cstdint>

enum
{
    RIG_CODE_SIZE = 88,
    RIG_PATTERN_SIZE = 64, // validate, mask and bits
    RIG_REPLY_SIZE = 64,
    RIG_VALUE_COUNT = 30,
    RIG_FLAG_COUNT = 30,
    RIG_INIT_COUNT = 10,
    RIG_STATUS_COUNT = 30,
    RIG_WRITE_COUNT = 30
};

enum RigFormat
{
    vfNone,
    vfText,
    vfBinL,
    vfBinB,
    vfBcdLU,
    vfBcdLS,
    vfBcdBU,
    vfBcdBS,
    vfYaesu,
    vfDPIcom,
    vfTextUD,
    RIG_FORMAT_COUNT
};

enum RigParam
{
    pmFreq,
    pmFreqA,
    pmFreqB,
    pmPitch,
    pmRitOffset,
    pmRit0,
    pmVfoAA,
    pmVfoAB,
    pmVfoBA,
    pmvfoBB,
    pmVfoA,
    pmVfoB,
    pmVfoEqual,
    pmVfoSwap,
    pmSplitOn,
    pmSplitOff,
    pmRitOn,
    pmRitOff,
    pmXitOn,
    pmXitOff,
    pmRx,
    pmTx,
    pmCW_U,
    pmCW_L,
    pmSSB_U,
    pmSSB_L,
    pmDIG_U,
    pmDIG_L,
    pmAM,
    pmFM,
    RIG_PARAM_COUNT
};

struct RigValue
{
    int32_t start;
    int32_t length;
    int32_t format;
    float multiplier; // kept as the file has them; no radio we drive needs them
    float adder;
    int32_t param;
};

struct RigFlag
{
    int32_t mask_length;
    uint8_t mask[RIG_PATTERN_SIZE];
    int32_t bits_length;
    uint8_t bits[RIG_PATTERN_SIZE];
    int32_t param;
};

struct RigCommand
{
    int32_t is_hex;
    int32_t code_length; // 0: an empty record
    uint8_t code[RIG_CODE_SIZE];
    int32_t ReplyLength; // 0: the reply has no fixed length
    int32_t has_reply_end;
    uint8_t reply_end;
    int32_t validate_length;
    uint8_t validate[RIG_PATTERN_SIZE];
    RigValue values[RIG_VALUE_COUNT];
    RigFlag flags[RIG_FLAG_COUNT];
};

// The tables of the file loaded last.
extern RigCommand rig_init[RIG_INIT_COUNT];
extern RigCommand rig_status[RIG_STATUS_COUNT];
extern RigCommand rig_write[RIG_WRITE_COUNT];
extern int32_t rig_debug;

// Names as rig files write them; the parameter names are also the sections of
// rig_write.
extern const char *const rig_format_names[RIG_FORMAT_COUNT];
extern const char *const rig_param_names[RIG_PARAM_COUNT];

// The row of a name, compared exactly (capitals count), or -1.
int rig_format_index(const char *name);
int rig_param_index(const char *name);

// Empty all three tables.
void rig_tables_clear(void);
