// The rig command engine: sends a record's bytes over the rig's link, takes
// the reply as the record says, and turns it into parameter texts and flags.
// Decoding and encoding are pure; only rig_issue_command touches the port.
#pragma once

#include "rig/rig_command.h"
#include "rig/serial_link.h"

#include <cstdio>

enum
{
    RIG_TEXT_COUNT = 5, // pmFreq, pmFreqA, pmFreqB, pmPitch, pmRitOffset
    RIG_TEXT_SIZE = 64,
    RIG_WAIT_PERIODS = 2000
};

extern SerialLink rig_link;
extern char rig_param_text[RIG_TEXT_COUNT][RIG_TEXT_SIZE];
extern int32_t rig_flag_state[RIG_PARAM_COUNT];

// Send the record and handle its reply. 0, or -1 for an empty record.
int rig_issue_command(const RigCommand *record, uint8_t reply[RIG_REPLY_SIZE]);

// A complete reply, checked and decoded into rig_param_text and
// rig_flag_state. Returns 0, or 1 when the pattern did not match and nothing
// was taken. A null log writes nothing.
int rig_decode_reply(const RigCommand *record, const uint8_t *reply, int length, FILE *log);
// The pattern test alone: 1 when the reply matches.
int rig_validate_reply(const RigCommand *record, const uint8_t *reply, int length);
// One value of a reply as text ("" when the reply is too short or the format
// gives no text). Returns 1 when the format makes a text, else 0.
int rig_value_text(const RigValue *value, const uint8_t *reply, int length, char *text, int size);
// Put a frequency into a record's code at the place of its value.
// 0, 1 when the record or the value is missing, -1 for a format with no writer.
int rig_encode_frequency(RigCommand *record, int32_t hz);

// Walk the INIT records (after clearing the results), or the STATUS records.
int rig_send_init(void);
void rig_poll_status(void);

// The radio's VFO A and B as last read: 0, or 1 while no text has come.
int rig_get_freq_a(int32_t *hz);
int rig_get_freq_b(int32_t *hz);
// Write VFO A or B through the pmFreqA or pmFreqB record.
int rig_set_freq_a(int32_t hz);
int rig_set_freq_b(int32_t hz);

// Close the link and forget the file and every result, as at program start.
void rig_reset(void);
