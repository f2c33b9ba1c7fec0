// Position acquisition: the antenna's azimuth and elevation in degrees, from
// the encoder at AZ_Addr / EL_Addr (native SEI or BRT-38) or, when that
// address is -1, from analogue channel 0 / 1; then one correction for both.
#pragma once

#include <cstdint>

// Axis state, azimuth and elevation twins.
extern uint8_t az_encoder_ready, el_encoder_ready;
extern uint8_t az_mode, el_mode;
extern uint16_t az_resolution, el_resolution;
extern uint32_t az_range, el_range;
extern uint32_t az_ppr, el_ppr;
extern uint8_t az_index_level, el_index_level;
extern uint32_t az_raw, el_raw;
extern uint32_t az_last_raw, el_last_raw;
extern double az_adc_position, el_adc_position;
// 1 once an axis has given a good reading; until then its position is no
// reading at all, only the start value.
extern uint8_t az_position_seen, el_position_seen;

// The smoothed voltage of each analogue channel; above 450 means no reading yet.
extern double adc_volts[4];

// Back to the start values (between tests; the scan dialog clears only the
// ready flags).
void position_reset(void);

// The whole read pass: both axes, the status bar's read error (the axes
// that failed by themselves, cleared when both read again), needle 2 of
// both dials. 1 when either axis failed, else 0; az_read_status and
// el_read_status tell which.
int ReadPosition(void);

// Sample the active analogue channels, five samples each, into adc_volts.
void adc_sample_channels(void);

// The arithmetic of the pass, apart from the bus.
double position_counts_to_degrees(uint32_t raw, uint16_t resolution);
double position_correct_azimuth(double degrees);
double position_correct_elevation(double degrees);
// Sort five samples in place and give the median in volts (5 V in 1024 steps).
double adc_median_volts(uint16_t samples[5]);
// One smoothing step; the first reading is taken as it is.
double adc_smooth(double previous, double volts);
// Volts to degrees on a channel's scale.
double adc_position(double volts, double minimum, double maximum, double range);
