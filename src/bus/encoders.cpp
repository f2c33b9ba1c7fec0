#include "bus/encoders.h"

EncoderEntry encoders[ENCODER_COUNT];

int encoder_default_type(int n)
{
    if (n == 0 || n == 1)
    {
        return ENCODER_SEI;
    }
    if (n == 2 || n == 3)
    {
        return ENCODER_BRT;
    }
    return ENCODER_NONE;
}

EncoderFactoryInfo brt_factory_record(int address)
{
    EncoderFactoryInfo info = {};
    info.Model = 38;
    info.Version = 0x0100;
    info.Config = 0x0201;
    info.Serial = 1001u + (uint32_t)address;
    info.Month = 5;
    info.Day = 29;
    info.Year = 2025;
    return info;
}
