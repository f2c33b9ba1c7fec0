// The rotctl server: the one-letter commands of Hamlib's rotator protocol on
// TCP, so that GPredict or any rotctl client can steer the antenna. Targets go
// to row 25 of the source table, whose enables hold the drive back until a
// first P has come; replies tell the antenna's own position. With the key
// HamlibCompatible it also speaks what the Hamlib library's own clients need:
// the long names, \dump_state, extended replies and an answer to everything.
#pragma once

#include "remote/text_fields.h"

#include <cstdint>

enum
{
    ROTCTL_REQUEST_SIZE = 64, // one read
    ROTCTL_LINE_SIZE = 256,   // one request line of a session; longer ones are dropped
    ROTCTL_FIELDS = 6,
    ROTCTL_REPLY_SIZE = 256
};

extern int32_t rotctl_status;         // printed in every RPRT; never changed
extern int32_t rotctl_move_direction; // the M command's arguments, kept only
extern int32_t rotctl_move_speed;
extern int32_t rotctl_debug;   // trace switch, on from the start
extern char remote_host[32];   // the first listener's host, "localhost"
extern char rotctl_service[8]; // "4533"; tests move it off the real port

// The listening socket, or a negative value.
int rotctl_start(const char *host, const char *service, const char *protocol);
// Close the client (when there is one), then the listener. 0.
int rotctl_stop(int listener, int client);
// Serve at most one event of the two listeners and their sessions, waiting
// 1 ms at most. A new connection takes its listener's slot over and the
// displaced session is closed. 0, or -1 when a session ended this tick.
int rotctl_poll(int listener0, int listener1, int32_t *client0, int32_t *client1);
// Read what a session sent and answer each whole line in it, each reply in
// one send that never waits; a part of a line waits for the rest. 0 handled
// or ignored, -1 the session is over: the peer closed, asked to quit, or
// does not read its replies.
int rotctl_command(int client);

// Cut a request at line feeds, blanks, ";" and "|": the number of fields, the
// command letter's field included.
int rotctl_split(const char *text, int length, char fields[][TEXT_FIELD_SIZE], int max_fields);
// The protocol itself: act on one request and write its reply. 0 with a reply
// to send, -1 when nothing is sent (an unknown letter, a long form without
// HamlibCompatible), 1 when nothing is sent and the client asked to quit.
int rotctl_handle(const char *request, int length, char *reply, int size);

// The cycle's step for the service: poll, and while a session is connected
// hand the row's target to the drive on every tick.
void rotctl_cycle_step(void);

// Back to the start values, for the program's start and the tests.
void rotctl_reset(void);
