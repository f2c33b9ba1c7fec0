#include "rig/rig_command.h"

#include <cstring>

RigCommand rig_init[RIG_INIT_COUNT];
RigCommand rig_status[RIG_STATUS_COUNT];
RigCommand rig_write[RIG_WRITE_COUNT];
int32_t rig_debug;

const char *const rig_format_names[RIG_FORMAT_COUNT] = {"vfNone",  "vfText",   "vfBinL",  "vfBinB",
                                                        "vfBcdLU", "vfBcdLS",  "vfBcdBU", "vfBcdBS",
                                                        "vfYaesu", "vfDPIcom", "vfTextUD"};

// "pmvfoBB" has a small v: that is the form rig files have been written with
// for this one parameter, so it is the form looked for.
const char *const rig_param_names[RIG_PARAM_COUNT] = {
    "pmFreq",  "pmFreqA",  "pmFreqB", "pmPitch",  "pmRitOffset", "pmRit0",    "pmVfoAA",   "pmVfoAB",
    "pmVfoBA", "pmvfoBB",  "pmVfoA",  "pmVfoB",   "pmVfoEqual",  "pmVfoSwap", "pmSplitOn", "pmSplitOff",
    "pmRitOn", "pmRitOff", "pmXitOn", "pmXitOff", "pmRx",        "pmTx",      "pmCW_U",    "pmCW_L",
    "pmSSB_U", "pmSSB_L",  "pmDIG_U", "pmDIG_L",  "pmAM",        "pmFM"};

static int rig_name_index(const char *const names[], int count, const char *name)
{
    for (int i = 0; i < count; i++)
    {
        if (strcmp(names[i], name) == 0)
        {
            return i;
        }
    }
    return -1;
}

int rig_format_index(const char *name)
{
    return rig_name_index(rig_format_names, RIG_FORMAT_COUNT, name);
}

int rig_param_index(const char *name)
{
    return rig_name_index(rig_param_names, RIG_PARAM_COUNT, name);
}

void rig_tables_clear(void)
{
    memset(rig_init, 0, sizeof rig_init);
    memset(rig_status, 0, sizeof rig_status);
    memset(rig_write, 0, sizeof rig_write);
}
