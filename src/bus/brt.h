// Briter BRT-38 encoders on the SEI line. They speak only two register
// frames; everything a native SEI encoder keeps itself (mode, resolution,
// pulses, range) a BRT-38 keeps in its entry of the encoder table. The calls
// mirror the SEI commands so that a caller branches only on the device kind.
// Each returns 0 on success; an address outside the table returns 1.
#pragma once

#include "bus/encoders.h"

#include <cstdint>

enum BrtRegister
{
    BRT_REG_POSITION = 0, // pulses
    BRT_REG_ADDRESS = 4,
    BRT_REG_DIRECTION = 9, // the inverse of mode bit 0
    BRT_REG_PRESET = 11
};

// 1 on a short reply, else the device's status byte (the value is stored
// whatever that says).
int brt_read_register(int a, uint16_t reg, uint16_t *value);
int brt_write_register(int a, uint16_t reg, uint16_t value);

// Pulses to Resolution counts, cut toward zero. PPR 0 counts as 1024 and
// Resolution 0 as 36000.
uint32_t brt_scale(uint32_t pulses, uint32_t ppr, uint16_t resolution);

// Register 0 scaled by the table's PPR and Resolution. On failure the position
// becomes 0 and the register status is returned. `mode` is not used.
int brt_read_position(int a, uint8_t mode, uint32_t *position);
int brt_get_mode(int a, uint8_t *mode);
int brt_get_resolution(int a, uint16_t *resolution);
int brt_get_ppr(int a, uint32_t *ppr);
int brt_get_range(int a, uint32_t *range);
int brt_get_factory_info(int a, EncoderFactoryInfo *info);
// Register 9 gets the inverse of bit 0; the table keeps `mode` whatever the
// write returned, and the write's status is returned.
int brt_set_mode(int a, uint8_t mode);
int brt_set_resolution(int a, uint16_t resolution);
int brt_set_ppr(int a, uint32_t ppr);
int brt_set_range(int a, uint32_t range);
int brt_set_address(int a, uint8_t new_address);
// Register 11 with the low 16 bits; `mode` is not used.
int brt_set_position(int a, uint8_t mode, uint32_t position);
