// The rig command engine: sends a record's bytes over the rig's link, takes
// the reply as the record says, and turns it into parameter texts and flags.
// Decoding and encoding are pure; the exchanges run as a small state machine
// that never waits inside a call: a command goes out, its reply is collected
// by later calls as the bytes come, and the next command goes only after the
// reply or its budget. So a radio that is off never holds the 50 ms cycle.
#pragma once

#include "rig/rig_command.h"
#include "rig/serial_link.h"

#include <cstdio>

enum
{
    RIG_TEXT_COUNT = 5, // pmFreq, pmFreqA, pmFreqB, pmPitch, pmRitOffset
    RIG_TEXT_SIZE = 64,
    RIG_BUDGET_MS = 2000, // a command's time for its write and its reply, on the clock
    RIG_SILENT_LIMIT = 3  // commands in a row without a reply: the radio is taken as gone
};

// How the last exchange ended.
enum RigOutcome
{
    RIG_OUTCOME_NONE,        // nothing has ended yet
    RIG_OUTCOME_REPLY,       // its reply came whole (or none was awaited and the bytes left)
    RIG_OUTCOME_INCOMPLETE,  // bytes came, but no whole reply among 64
    RIG_OUTCOME_NO_REPLY,    // the budget ran out before the reply was whole
    RIG_OUTCOME_WRITE_TIMEOUT // the bytes could not leave within the budget
};

struct RigEngine
{
    const RigCommand *walk; // the table being walked, or null
    int walk_count;
    int walk_next;
    const RigCommand *pending_write; // a frequency write waiting for the line
    // The exchange on the line.
    const RigCommand *record; // null: the line is idle
    int64_t started_ms;
    int sent;
    uint8_t reply[RIG_REPLY_SIZE];
    int count;
    int last_outcome;
    int silent_run;     // consecutive exchanges that ran out of budget
    int64_t walks_done; // status walks finished
};

extern SerialLink rig_link;
extern RigEngine rig_engine;
extern char rig_param_text[RIG_TEXT_COUNT][RIG_TEXT_SIZE];
extern int32_t rig_flag_state[RIG_PARAM_COUNT];

// Start the INIT walk (after clearing the results), or a STATUS walk. A walk
// already under way is replaced by the INIT walk and left alone by a STATUS one.
void rig_start_init(void);
void rig_start_status(void);
// Drop the walk, the queued write and the exchange on the line.
void rig_stop(void);
// Move the exchanges on, now_ms being the monotonic clock: take the bytes that
// came, decode a whole reply, end a command whose budget is spent, and send
// the next. Never waits.
void rig_service(int64_t now_ms);
// 1 while a command is on the line or waits for it.
int rig_busy(void);
// 1 once RIG_SILENT_LIMIT commands in a row went unanswered.
int rig_not_answering(void);

// A whole exchange of one record, waited out: for the command-line tool and
// the tests, never the station's cycle. 0, or -1 for an empty record.
int rig_issue_command(const RigCommand *record, uint8_t reply[RIG_REPLY_SIZE]);
// Run the queued work to its end the same way (INIT, STATUS, a write).
void rig_run_until_idle(void);
// Walk the INIT records (after clearing the results), or the STATUS records,
// waited out as above.
int rig_send_init(void);
void rig_poll_status(void);

// A complete reply, checked and decoded into rig_param_text and
// rig_flag_state. Returns 0, or 1 when the reply was refused and nothing was
// taken: its pattern did not match, or a BCD value held a byte that is not
// two decimal digits. A null log writes nothing.
int rig_decode_reply(const RigCommand *record, const uint8_t *reply, int length, FILE *log);
// The pattern test alone: 1 when the reply matches.
int rig_validate_reply(const RigCommand *record, const uint8_t *reply, int length);
// One value of a reply as text ("" when the reply is too short or the format
// gives no text). Returns 1 when the format makes a text, else 0.
int rig_value_text(const RigValue *value, const uint8_t *reply, int length, char *text, int size);
// Put a frequency into a record's code at the place of its value. 0, 1 when
// the record or the value is missing or the value lies outside the code, -1
// for a format with no writer or a frequency below 0.
int rig_encode_frequency(RigCommand *record, int64_t hz);

// The radio's VFO A and B as last read: 0, or 1 while no reading has come.
int rig_get_freq_a(int64_t *hz);
int rig_get_freq_b(int64_t *hz);
// Queue a write of VFO A or B through the pmFreqA or pmFreqB record: 0, 1
// when the record or its value is missing, -1 for a format without a writer.
int rig_set_freq_a(int64_t hz);
int rig_set_freq_b(int64_t hz);

// Close the link and forget the file and every result, as at program start.
void rig_reset(void);
