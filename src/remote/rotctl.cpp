#include "remote/rotctl.h"

#include "core/state.h"
#include "remote/net.h"
#include "remote/remote_services.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int32_t rotctl_status = 0;
int32_t rotctl_move_direction = 0;
int32_t rotctl_move_speed = 0;
int32_t rotctl_debug = 1;
char remote_host[32] = "localhost";
char rotctl_service[8] = "4533";

void rotctl_reset(void)
{
    rotctl_status = 0;
    rotctl_move_direction = 0;
    rotctl_move_speed = 0;
    rotctl_debug = 1;
    text_copy(remote_host, sizeof remote_host, "localhost");
    text_copy(rotctl_service, sizeof rotctl_service, "4533");
}

int rotctl_start(const char *host, const char *service, const char *protocol)
{
    int s = net_init_client(host, service, protocol);
    if (s < 0)
    {
        qDebug("[rotctl] could not initialize service (IP:%s port:%s prot:%s)", host, service, protocol);
        return s;
    }
    if (rotctl_debug)
    {
        qDebug("[rotctl] service (IP:%s port:%s prot:%s) started", host, service, protocol);
    }
    return s;
}

int rotctl_stop(int listener, int client)
{
    if (rotctl_debug)
    {
        qDebug("[rotctl] stopping service");
    }
    if (client >= 0)
    {
        net_close(client);
    }
    if (listener >= 0)
    {
        net_close(listener);
    }
    net_stop();
    return 0;
}

int rotctl_split(const char *text, int length, char fields[][TEXT_FIELD_SIZE], int max_fields)
{
    char work[ROTCTL_REQUEST_SIZE + 1];
    int n = length < 0 ? 0 : length > ROTCTL_REQUEST_SIZE ? ROTCTL_REQUEST_SIZE : length;
    if (n > 0)
    {
        memcpy(work, text, (size_t)n);
    }
    work[n] = 0;
    n = (int)strlen(work);
    int starts[ROTCTL_FIELDS + 1];
    int max = max_fields < 0 ? 0 : max_fields > ROTCTL_FIELDS ? ROTCTL_FIELDS : max_fields;
    int tokens = text_tokens(work, n, "\n ;|", starts, max + 1);
    if (tokens == 0)
    {
        return 0;
    }
    // A field runs from its start up to the delimiter before the next token,
    // so a field may keep delimiters that stood in front of the first token.
    int count = 0;
    int start = 0;
    for (int next = 1; next <= max; next++)
    {
        int bytes = next < tokens ? starts[next] - start - 1 : n - start;
        if (bytes > 0)
        {
            text_field_copy(fields[count], work, start, bytes);
            if (rotctl_debug)
            {
                qDebug("Field[%d] = %s len: %d", count, fields[count], bytes);
            }
            count++;
        }
        if (next >= tokens)
        {
            return count;
        }
        start = starts[next];
    }
    return count;
}

struct RotctlRequest
{
    char fields[ROTCTL_FIELDS][TEXT_FIELD_SIZE];
    int count;
};

typedef void (*RotctlHandler)(const RotctlRequest *request, char *reply, int size);

static void rotctl_reply_status(char *reply, int size)
{
    snprintf(reply, (size_t)size, "RPRT %d\n", rotctl_status);
}

static void rotctl_get_position(const RotctlRequest *, char *reply, int size)
{
    // The antenna's own position, never the target: a tracking program
    // compares the two to see the rotator follow.
    snprintf(reply, (size_t)size, "%6.4f\n%6.4f\nRPRT %d\n", az_position, el_position, rotctl_status);
    qDebug("[rotctl] Get position: AZ: %7.5f EL: %7.5f", az_position, el_position);
}

static void rotctl_set_position(const RotctlRequest *request, char *reply, int size)
{
    SourceRecord *row = &source_table[SOURCE_GPREDICT];
    if (request->count == 2)
    {
        row->az = atof(request->fields[1]);
        row->az_tracking_enable = 1;
        qDebug("[rotctl] Set position: AZ: %7.5f", row->az);
    }
    else if (request->count == 3)
    {
        row->az = atof(request->fields[1]);
        row->el = atof(request->fields[2]);
        row->az_tracking_enable = 1;
        row->el_tracking_enable = 1;
        qDebug("[rotctl] Set position: AZ: %7.5f EL: %7.5f", row->az, row->el);
    }
    rotctl_reply_status(reply, size);
}

static void rotctl_stop_tracking(const RotctlRequest *, char *reply, int size)
{
    qDebug("[rotctl] STOP");
    rotctl_reply_status(reply, size);
    // The drive sees the enables fall and stops the motors itself.
    source_table[SOURCE_GPREDICT].az_tracking_enable = 0;
    source_table[SOURCE_GPREDICT].el_tracking_enable = 0;
}

static void rotctl_move(const RotctlRequest *request, char *reply, int size)
{
    if (request->count == 3)
    {
        rotctl_move_direction = atoi(request->fields[1]);
        rotctl_move_speed = atoi(request->fields[2]);
        qDebug("Move CMD: direction: %d speed: %d", rotctl_move_direction, rotctl_move_speed);
    }
    rotctl_reply_status(reply, size);
}

static void rotctl_get_info(const RotctlRequest *, char *reply, int size)
{
    qDebug("[rotctl] GetInfo");
    snprintf(reply, (size_t)size, "RPRT Morvane v2.18\n");
}

static void rotctl_sp_to_lp(const RotctlRequest *, char *reply, int size)
{
    qDebug("[rotctl] d_sp2d_lp received");
    rotctl_reply_status(reply, size);
    qDebug("a received\n");
}

// The commands that change nothing: a log line and a plain success.
#define ROTCTL_ACKNOWLEDGE(name, text)                                                                                 \
    static void name(const RotctlRequest *, char *reply, int size)                                                     \
    {                                                                                                                  \
        qDebug(text);                                                                                                  \
        rotctl_reply_status(reply, size);                                                                              \
    }
ROTCTL_ACKNOWLEDGE(rotctl_park, "[rotctl] PARK")
ROTCTL_ACKNOWLEDGE(rotctl_set_conf, "[rotctl] SetConf")
ROTCTL_ACKNOWLEDGE(rotctl_reset_rotator, "[rotctl] RESET")
ROTCTL_ACKNOWLEDGE(rotctl_raw, "[rotctl] RawCmd")
ROTCTL_ACKNOWLEDGE(rotctl_locator, "[rotctl] Maidenhead locator request")
ROTCTL_ACKNOWLEDGE(rotctl_lat_long, "[rotctl] Lat/Long request received")
ROTCTL_ACKNOWLEDGE(rotctl_dms_to_dec, "[rotctl] DMS2DEC received")
ROTCTL_ACKNOWLEDGE(rotctl_dec_to_dms, "[rotctl] dec2dms command received")
ROTCTL_ACKNOWLEDGE(rotctl_dmmm_to_dec, "[rotctl] dmmm2dec command received")
ROTCTL_ACKNOWLEDGE(rotctl_dec_to_dmmm, "[rotctl] dec2dmmm command received")
ROTCTL_ACKNOWLEDGE(rotctl_qrb, "[rotctl] qrb command received")
ROTCTL_ACKNOWLEDGE(rotctl_azimuth_sp_to_lp, "[rotctl] a_sp2a_lp command received")

struct RotctlCommand
{
    char letter;
    RotctlHandler handler;
};

// The protocol, one row a letter. The long forms (a backslash and a word)
// are not served: GPredict and rotctl's short forms are all a station needs.
static const RotctlCommand rotctl_commands[] = {
    {'p', rotctl_get_position},
    {'P', rotctl_set_position},
    {'S', rotctl_stop_tracking},
    {'K', rotctl_park},
    {'M', rotctl_move},
    {'C', rotctl_set_conf},
    {'R', rotctl_reset_rotator},
    {'_', rotctl_get_info},
    {'w', rotctl_raw},
    {'L', rotctl_locator},
    {'l', rotctl_lat_long},
    {'D', rotctl_dms_to_dec},
    {'d', rotctl_dec_to_dms},
    {'E', rotctl_dmmm_to_dec},
    {'e', rotctl_dec_to_dmmm},
    {'B', rotctl_qrb},
    {'A', rotctl_azimuth_sp_to_lp},
    {'a', rotctl_sp_to_lp},
};

int rotctl_handle(const char *request, int length, char *reply, int size)
{
    RotctlRequest parsed;
    memset(&parsed, 0, sizeof parsed);
    parsed.count = rotctl_split(request, length, parsed.fields, ROTCTL_FIELDS);
    if (length < 1 || size < 1)
    {
        return -1;
    }
    // Only the first byte counts: a word that begins with P acts as P.
    char letter = request[0];
    if (letter < 'A' || letter > 'w')
    {
        return -1;
    }
    for (const RotctlCommand &command : rotctl_commands)
    {
        if (command.letter == letter)
        {
            command.handler(&parsed, reply, size);
            return 0;
        }
    }
    return -1;
}

int rotctl_command(int client)
{
    char request[ROTCTL_REQUEST_SIZE + 1];
    char reply[ROTCTL_REPLY_SIZE];
    memset(request, 0, sizeof request);
    int n = net_read(client, request, ROTCTL_REQUEST_SIZE);
    if (n < 1)
    {
        return -1;
    }
    request[n] = 0;
    // One read is one request; what a client sent behind it in the same read
    // is not kept for later.
    if (rotctl_handle(request, n, reply, sizeof reply) == 0)
    {
        net_write(client, reply, (int)strlen(reply));
    }
    return 0;
}

// A session that ended: close it and free its slot.
static int rotctl_end_session(int32_t *client, const char *name, int result)
{
    net_close(*client);
    *client = -1;
    if (rotctl_debug)
    {
        qDebug("[rotctl] %s control session terminated", name);
    }
    return result;
}

// A new connection takes the slot over; the session that had it is no longer
// served, so it is closed rather than left open and unread.
static void rotctl_take_slot(int listener, int32_t *client)
{
    int s = net_accept(listener);
    if (s < 0)
    {
        return;
    }
    if (*client >= 0)
    {
        net_close(*client);
    }
    *client = s;
}

int rotctl_poll(int listener0, int listener1, int32_t *client0, int32_t *client1)
{
    int sockets[4] = {listener0, listener1, *client0, *client1};
    uint32_t ready = 0;
    if (net_select(sockets, 4, 1000, &ready) < 1)
    {
        return 0;
    }
    if (listener0 >= 0 && (ready & 1))
    {
        rotctl_take_slot(listener0, client0);
        return 0;
    }
    if (listener1 >= 0 && (ready & 2))
    {
        rotctl_take_slot(listener1, client1);
        return 0;
    }
    if (*client0 >= 0 && (ready & 4))
    {
        int result = rotctl_command(*client0);
        return result >= 0 ? result : rotctl_end_session(client0, "cd1", result);
    }
    if (*client1 >= 0 && (ready & 8))
    {
        int result = rotctl_command(*client1);
        return result >= 0 ? result : rotctl_end_session(client1, "cd2", result);
    }
    return 0;
}

void rotctl_cycle_step(void)
{
    int result = rotctl_poll(remote_socket[0], remote_socket[1], &remote_client[0], &remote_client[1]);
    if (result != 0 || (remote_client[0] == -1 && remote_client[1] == -1))
    {
        return;
    }
    // The hand-over runs on every tick with a session, not only on a P, so
    // the target shown is always the client's latest.
    remote_hand_over(SOURCE_GPREDICT);
}
