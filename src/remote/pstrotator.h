// The PstRotator client: PstRotator's tagged UDP datagrams on the command
// port set a target or ask for the antenna's position and mode; answers go to
// the sender's address at the response port. Targets reach the drive through
// row 26 of the source table, whose enables stay off until a first position.
#pragma once

#include "remote/text_fields.h"

#include <cstdint>

enum
{
    PST_DATAGRAM_SIZE = 80,
    PST_FIELDS = 10,
    PST_ANSWER_SIZE = 24
};

// What one datagram asks to be sent back, one datagram per answer.
struct PstAnswers
{
    int count;
    char text[PST_FIELDS][PST_ANSWER_SIZE];
};

extern int32_t pst_cmd_port, pst_rsp_port; // -1 while stopped

// Open the command port on host into *socket. 0, or -1.
int pst_start(const char *host, const char *protocol, const char *cmd_port, const char *rsp_port, int32_t *socket);
// Close both sockets (those that are open). 0.
int pst_stop(int socket0, int socket1);
// Serve one datagram of the two sockets, socket 0 first, after a wait of 1 ms
// at most. 0 when a datagram was served, -1 when none came.
int pst_poll(int socket0, int socket1);
// Read one datagram, act on it and send its answers. 0.
int pst_receive(int socket);

// Cut a datagram into its fields at line feeds, "<" and ">". The number of
// fields; the closing tags come out with their slash.
int pst_split(const char *datagram, int length, char fields[][TEXT_FIELD_SIZE], int max_fields);
// The protocol itself: set row 26 from a datagram and collect its answers. 0.
int pst_handle(const char *datagram, int length, PstAnswers *answers);

// The cycle's step for the client: poll, and after a served datagram hand the
// row's target to the drive.
void pst_cycle_step(void);

// Back to the start values.
void pst_reset(void);
