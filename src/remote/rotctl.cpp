#include "remote/rotctl.h"

#include "core/drive.h"
#include "core/panel_seam.h"
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

// What a session has sent that does not yet end in a line feed. A client may
// send a request in pieces ("P 120" then " 45\n") or several in one go; each
// whole line is one request. A line longer than the record is no request this
// station knows: it is dropped up to its line feed, so no peer grows memory.
struct RotctlSession
{
    int socket;
    int length;
    int dropping; // in a line that is too long, up to its line feed
    char line[ROTCTL_LINE_SIZE];
};

// The two slots' sessions and a spare for a socket served outside the slots.
static RotctlSession rotctl_sessions[3] = {{-1, 0, 0, {0}}, {-1, 0, 0, {0}}, {-1, 0, 0, {0}}};

static void rotctl_session_open(RotctlSession *session, int socket)
{
    memset(session, 0, sizeof *session);
    session->socket = socket;
}

void rotctl_reset(void)
{
    rotctl_status = 0;
    rotctl_move_direction = 0;
    rotctl_move_speed = 0;
    rotctl_debug = 1;
    text_copy(remote_host, sizeof remote_host, "localhost");
    text_copy(rotctl_service, sizeof rotctl_service, "4533");
    for (RotctlSession &session : rotctl_sessions)
    {
        rotctl_session_open(&session, -1);
    }
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
// are Hamlib's dialect, below.
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

// The Part's protocol: the first byte picks the command, unknown ones get
// nothing back.
static int rotctl_handle_plain(const RotctlRequest *parsed, char letter, char *reply, int size)
{
    if (letter < 'A' || letter > 'w')
    {
        return -1;
    }
    for (const RotctlCommand &command : rotctl_commands)
    {
        if (command.letter == letter)
        {
            command.handler(parsed, reply, size);
            return 0;
        }
    }
    return -1;
}

// The commands of Hamlib's dialect that have no letter of their own.
enum
{
    ROTCTL_DUMP_STATE = 1,
    ROTCTL_DUMP_CAPS = 2,
    ROTCTL_QUIT = 'q'
};

struct RotctlName
{
    const char *name;
    char letter;
};

// The long names of the commands a Hamlib client uses, and the names its
// extended replies carry.
static const RotctlName rotctl_names[] = {
    {"set_pos", 'P'},
    {"get_pos", 'p'},
    {"stop", 'S'},
    {"park", 'K'},
    {"move", 'M'},
    {"get_info", '_'},
    {"reset", 'R'},
    {"set_conf", 'C'},
    {"dump_caps", ROTCTL_DUMP_CAPS},
    {"dump_state", ROTCTL_DUMP_STATE},
    {"quit", ROTCTL_QUIT},
};

static const char *rotctl_name_of(char letter)
{
    for (const RotctlName &entry : rotctl_names)
    {
        if (entry.letter == letter)
        {
            return entry.name;
        }
    }
    return "";
}

// A long name after its backslash: the command, or 0 for one not known.
static char rotctl_letter_of(const char *word)
{
    for (const RotctlName &entry : rotctl_names)
    {
        if (strcmp(word, entry.name) == 0)
        {
            return entry.letter;
        }
    }
    return 0;
}

// What Hamlib's network rotator reads when it opens: the protocol version,
// the model, the limits as key=value lines, and "done".
static void rotctl_dump_state(char *reply, int size)
{
    snprintf(
        reply, (size_t)size, "1\n2\nmin_az=%f\nmax_az=%f\nmin_el=%f\nmax_el=%f\nsouth_zero=0\nrot_type=AzEl\ndone\n",
        settings.AzimuthLimitMin, settings.AzimuthLimitMax, settings.ElevationLimitMin, settings.ElevationLimitMax);
}

static void rotctl_dump_caps(char *reply, int size)
{
    snprintf(reply, (size_t)size,
             "Model name:\tMorvane\nRotator type:\tAz/El\nMin Azimuth:\t%.2f\nMax Azimuth:\t%.2f\n"
             "Min Elevation:\t%.2f\nMax Elevation:\t%.2f\nCan set/get Position, Stop, Park, Move:\tY\nRPRT 0\n",
             settings.AzimuthLimitMin, settings.AzimuthLimitMax, settings.ElevationLimitMin,
             settings.ElevationLimitMax);
}

// A target outside the station's limits is refused before it reaches the
// row: a Hamlib client reads the refusal, where the drive would only stop
// at the limit.
static int rotctl_within_limits(const RotctlRequest *request)
{
    double az = atof(request->fields[1]);
    if (az < settings.AzimuthLimitMin || az > settings.AzimuthLimitMax)
    {
        return 0;
    }
    double el = request->count == 3 ? atof(request->fields[2]) : settings.ElevationLimitMin;
    return el >= settings.ElevationLimitMin && el <= settings.ElevationLimitMax;
}

// The panel's STOP, but without its half second of red: a peer may send S
// as often as it likes, and the cycle must not wait for any of them.
static void rotctl_station_stop(void)
{
    stop_all(1);
    panel_style(PANEL_STOP, STYLE_GRAY);
}

// One axis's arrow in MAN, as the operator would press it: MAN comes on
// first when it is off. A reversal only stops the axis, since the arrows'
// own reversal waits out the guard time inside the cycle. 0, or -1.
static int rotctl_arrow(uint8_t *manual, void (*manual_pressed)(void), const int32_t *direction, int wanted,
                        void (*press)(void), void (*press_other)(void))
{
    if (!*manual)
    {
        manual_pressed();
    }
    if (*direction == wanted)
    {
        return 0;
    }
    if (*direction != DIR_STOPPED)
    {
        press_other();
        return -1;
    }
    press();
    return 0;
}

// Hamlib's directions: up 2, down 4, left 8, right 16, and the four
// diagonals from 32 on. The speed is kept and not used: MAN runs at its duty.
static int rotctl_move_arrows(int direction)
{
    static const int up = 2 | 32 | 64, down = 4 | 128 | 256, left = 8 | 32 | 128, right = 16 | 64 | 256;
    int result = (direction & (up | down | left | right)) && direction < 512 ? 0 : -1;
    if (result == 0 && (direction & (left | right)))
    {
        int to_left = (direction & left) != 0;
        result |= rotctl_arrow(&az_manual, drive_az_manual_pressed, &az_direction, to_left ? DIR_LEFT : DIR_RIGHT,
                               to_left ? drive_left_pressed : drive_right_pressed,
                               to_left ? drive_right_pressed : drive_left_pressed);
    }
    if (result == 0 && (direction & (up | down)))
    {
        int to_up = (direction & up) != 0;
        result |=
            rotctl_arrow(&el_manual, drive_el_manual_pressed, &el_direction, to_up ? DIR_UP : DIR_DOWN,
                         to_up ? drive_up_pressed : drive_down_pressed, to_up ? drive_down_pressed : drive_up_pressed);
    }
    return result;
}

// The station's own acts behind the letters the Part answers and leaves
// alone: the status, or 1 when the Part's reply stands.
static int rotctl_hamlib_act(char letter, const RotctlRequest *parsed)
{
    switch (letter)
    {
    case 'P':
        return parsed->count >= 2 && parsed->count <= 3 && !rotctl_within_limits(parsed) ? -1 : 1;
    case 'S':
        rotctl_station_stop();
        return 1;
    case 'K':
        qDebug("[rotctl] PARK");
        if (!park_active)
        {
            drive_park_pressed();
        }
        return 0;
    case 'M':
        if (parsed->count != 3)
        {
            return -1;
        }
        rotctl_move_direction = atoi(parsed->fields[1]);
        rotctl_move_speed = atoi(parsed->fields[2]);
        qDebug("Move CMD: direction: %d speed: %d", rotctl_move_direction, rotctl_move_speed);
        return rotctl_move_arrows(rotctl_move_direction);
    default:
        return 1;
    }
}

// Hamlib's extended form: the command's name and its arguments, then each
// value on a labelled line and the status, all between separators.
static void rotctl_extended(char letter, const RotctlRequest *parsed, char separator, const char *reply, char *out,
                            int size)
{
    int at = snprintf(out, (size_t)size, "%s:", rotctl_name_of(letter));
    for (int i = 1; i < parsed->count && at < size; i++)
    {
        at += snprintf(out + at, (size_t)(size - at), " %s", parsed->fields[i]);
    }
    if (at < size)
    {
        at += snprintf(out + at, (size_t)(size - at), "%c", separator);
    }
    const char *status = strstr(reply, "RPRT ");
    if (letter == 'p' && at < size)
    {
        at += snprintf(out + at, (size_t)(size - at), "Azimuth: %f%cElevation: %f%c", az_position, separator,
                       el_position, separator);
    }
    else if (letter == '_' && at < size)
    {
        at += snprintf(out + at, (size_t)(size - at), "Info: %s%c", "Morvane v2.18", separator);
        status = "RPRT 0\n";
    }
    if (at < size)
    {
        snprintf(out + at, (size_t)(size - at), "%s", status ? status : "RPRT 0\n");
    }
}

// The station's reply to a Hamlib client. Every request gets an answer but
// quit, so no client hangs on its read.
static int rotctl_handle_hamlib(const char *text, int length, char *reply, int size)
{
    char separator = 0;
    if (length > 0 && text[0] && strchr("+;|,", text[0]))
    {
        separator = text[0] == '+' ? '\n' : text[0];
        text++;
        length--;
    }
    RotctlRequest parsed;
    memset(&parsed, 0, sizeof parsed);
    parsed.count = rotctl_split(text, length, parsed.fields, ROTCTL_FIELDS);
    // A desktop with a decimal comma makes its client write 174,46.
    for (int i = 1; i < parsed.count; i++)
    {
        for (char *c = parsed.fields[i]; *c; c++)
        {
            *c = *c == ',' ? '.' : *c;
        }
    }
    char letter = length > 0 ? text[0] : 0;
    if (letter == '\\')
    {
        letter = parsed.count > 0 ? rotctl_letter_of(parsed.fields[0] + 1) : 0;
    }
    if (letter == ROTCTL_QUIT || letter == 'Q')
    {
        return 1;
    }
    char plain[ROTCTL_REPLY_SIZE] = {0};
    if (letter == ROTCTL_DUMP_STATE || letter == ROTCTL_DUMP_CAPS)
    {
        (letter == ROTCTL_DUMP_STATE ? rotctl_dump_state : rotctl_dump_caps)(reply, size);
        return 0;
    }
    int status = rotctl_hamlib_act(letter, &parsed);
    if (status == 1 && rotctl_handle_plain(&parsed, letter, plain, sizeof plain) != 0)
    {
        snprintf(reply, (size_t)size, "RPRT -4\n");
        return 0;
    }
    if (status != 1)
    {
        snprintf(plain, sizeof plain, "RPRT %d\n", status);
    }
    if (separator)
    {
        rotctl_extended(letter, &parsed, separator, plain, reply, size);
    }
    else
    {
        snprintf(reply, (size_t)size, "%s", plain);
    }
    return 0;
}

int rotctl_handle(const char *request, int length, char *reply, int size)
{
    if (length < 1 || size < 1)
    {
        return -1;
    }
    if (settings.HamlibCompatible)
    {
        return rotctl_handle_hamlib(request, length, reply, size);
    }
    RotctlRequest parsed;
    memset(&parsed, 0, sizeof parsed);
    parsed.count = rotctl_split(request, length, parsed.fields, ROTCTL_FIELDS);
    // Only the first byte counts: a word that begins with P acts as P.
    return rotctl_handle_plain(&parsed, request[0], reply, size);
}

static RotctlSession *rotctl_session_of(int client)
{
    for (RotctlSession &session : rotctl_sessions)
    {
        if (session.socket == client)
        {
            return &session;
        }
    }
    rotctl_session_open(&rotctl_sessions[2], client);
    return &rotctl_sessions[2];
}

// Serve one whole line: 0, or -1 when the session is over.
static int rotctl_serve_line(RotctlSession *session)
{
    int n = session->length;
    while (n > 0 && session->line[n - 1] == '\r')
    {
        n--;
    }
    session->line[n] = 0;
    session->length = 0;
    if (n == 0)
    {
        return 0;
    }
    // The line feed goes back in: the Part's requests are read with it.
    session->line[n] = '\n';
    char reply[ROTCTL_REPLY_SIZE];
    int result = rotctl_handle(session->line, n + 1, reply, sizeof reply);
    if (result == 1)
    {
        return -1;
    }
    if (result != 0)
    {
        return 0;
    }
    int length = (int)strlen(reply);
    if (net_write(session->socket, reply, length) != length)
    {
        // A client that leaves its replies unread fills the buffers; waiting
        // for it would hold the whole station, so its session ends.
        qDebug("[rotctl] client on socket %d does not read its replies: session ended", session->socket);
        return -1;
    }
    return 0;
}

int rotctl_command(int client)
{
    char bytes[ROTCTL_REQUEST_SIZE];
    int n = net_read(client, bytes, ROTCTL_REQUEST_SIZE);
    if (n < 1)
    {
        return -1;
    }
    RotctlSession *session = rotctl_session_of(client);
    for (int i = 0; i < n; i++)
    {
        if (bytes[i] == '\n')
        {
            int dropped = session->dropping;
            session->dropping = 0;
            if (dropped)
            {
                continue;
            }
            if (rotctl_serve_line(session) != 0)
            {
                return -1;
            }
        }
        else if (session->dropping)
        {
            continue;
        }
        else if (session->length >= ROTCTL_LINE_SIZE - 1)
        {
            qDebug("[rotctl] request longer than %d bytes dropped", ROTCTL_LINE_SIZE - 1);
            session->length = 0;
            session->dropping = 1;
        }
        else
        {
            session->line[session->length++] = bytes[i];
        }
    }
    return 0;
}

// A session that ended: close it and free its slot.
static int rotctl_end_session(int32_t *client, const char *name, int result)
{
    rotctl_session_of(*client)->socket = -1;
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
static void rotctl_take_slot(int listener, int32_t *client, RotctlSession *session)
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
    rotctl_session_open(session, s);
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
        rotctl_take_slot(listener0, client0, &rotctl_sessions[0]);
        return 0;
    }
    if (listener1 >= 0 && (ready & 2))
    {
        rotctl_take_slot(listener1, client1, &rotctl_sessions[1]);
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
