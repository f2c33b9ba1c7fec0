// The EasyComm II link: a rotator controller's plain words on a serial line
// (AZ120.0, EL45, SA, VE ...). Targets reach the drive through row 24 of the
// source table, whose enables stay off until a first position on each axis;
// queries are answered with the antenna's own position.
#pragma once

#include "rig/serial_link.h"

#include <cstdint>

enum
{
    EASYCOMM_WORD_SIZE = 30, // a word holds at most 29 characters and its zero
    // Input waiting beyond this is a backlog no longer worth serving: a word
    // is taken every 150 ms, so a chattering line is cut to its newest bytes.
    EASYCOMM_BACKLOG = 1024
};

// The codes of the word table; EASYCOMM_NONE also stands for no word at all.
enum EasyCommCode
{
    EASYCOMM_AZ = 0,
    EASYCOMM_EL = 1,
    EASYCOMM_UP = 2,
    EASYCOMM_DN = 3,
    EASYCOMM_SA = 12,
    EASYCOMM_SE = 13,
    EASYCOMM_VE = 20,
    EASYCOMM_NONE = 21
};

struct EasyCommRecord
{
    int32_t active; // the link runs; also the key EasyCommActive
    int32_t debug;  // the key EasyCommDebug: kept and shown, nothing more
    SerialLink link;
    double az; // last azimuth received
    double el;
    double up; // number of the last UP word, unused
    double down;
    char command[EASYCOMM_WORD_SIZE]; // the word being read
    char reply[EASYCOMM_WORD_SIZE];   // what to send back
    int32_t line_end;                 // the word ended with a line feed: so does its answer
    int32_t answered;                 // an answer went out since the last line feed
    int32_t held_count;               // 1 when held is a byte looked at but not yet taken
    uint8_t held;
};

extern EasyCommRecord easycomm;

// Open the port: active tells the outcome. Both enables of row 24 fall.
void easycomm_start(EasyCommRecord *e);
// Close the port when it is open; the enables fall and the link is inactive.
void easycomm_stop(EasyCommRecord *e);
// Read one word from the line and act on it: the word's code, or
// EASYCOMM_NONE when no whole word came or it is not in the table.
int easycomm_poll(EasyCommRecord *e);
// Send reply when there is one, with a line feed behind it when the query
// ended with one.
void easycomm_send_reply(EasyCommRecord *e);

// The protocol itself: act on one whole word. Sets row 24 and the record,
// and leaves in reply what must go back at once. The word's code.
int easycomm_parse(EasyCommRecord *e, const char *word);

// The cycle's step for the link: poll, answer a query, show a new target on
// the panel, stop an axis on SA or SE, and put any other word on the status
// bar.
void easycomm_cycle_step(void);
// The part of the step after the poll: act on the code of the word just read.
void easycomm_apply(int code);

// The EASYCOMM section of the main settings file. Both return 0.
int easycomm_load_settings(const char *file_name, EasyCommRecord *e);
int easycomm_save_settings(const char *file_name, const EasyCommRecord *e);

// Close the port and clear the record, as at load.
void easycomm_reset(void);
