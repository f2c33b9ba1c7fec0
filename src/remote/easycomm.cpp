#include "remote/easycomm.h"

#include "core/drive.h"
#include "core/ini_file.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"

#include <QSerialPort>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

EasyCommRecord easycomm;

// The word table: two letters each. The last row is two blanks, which no word
// can begin with, since a blank ends a word.
static const char *const easycomm_words[] = {"AZ", "EL", "UP", "DN", "DM", "UM", "DR", "UR", "ML", "MR", "MU",
                                             "MD", "SA", "SE", "AO", "LO", "OP", "IP", "AN", "ST", "VE", "  "};

enum
{
    EASYCOMM_WORDS = (int)(sizeof easycomm_words / sizeof easycomm_words[0]),
    // A line that falls silent in mid word gives up after this many empty
    // reads of about 1 ms each.
    EASYCOMM_SILENT_READS = 1000
};

void easycomm_reset(void)
{
    serial_close(&easycomm.link);
    memset(&easycomm, 0, sizeof easycomm);
}

void easycomm_start(EasyCommRecord *e)
{
    e->active = serial_open(&e->link) == 0 ? 1 : 0;
    e->held_count = 0;
    if (!e->active)
    {
        char text[SERIAL_PORT_NAME_SIZE + 160];
        snprintf(text, sizeof text, "EasyComm: %s", serial_failure());
        panel_status(text, 0);
    }
    source_table[SOURCE_EASYCOMM].az_tracking_enable = 0;
    source_table[SOURCE_EASYCOMM].el_tracking_enable = 0;
}

void easycomm_stop(EasyCommRecord *e)
{
    if (e->active)
    {
        serial_close(&e->link);
    }
    source_table[SOURCE_EASYCOMM].az_tracking_enable = 0;
    source_table[SOURCE_EASYCOMM].el_tracking_enable = 0;
    e->active = 0;
}

// A client that reads its answers up to a line feed (Hamlib's EasyComm
// backend does) ends its queries with one; the answer then ends with one too.
// Any other client gets the bytes of the protocol unchanged. This is the
// station's own rule.
void easycomm_send_reply(EasyCommRecord *e)
{
    char bytes[EASYCOMM_WORD_SIZE + 1];
    int n = (int)strnlen(e->reply, sizeof e->reply);
    if (n < 1)
    {
        return;
    }
    memcpy(bytes, e->reply, (size_t)n);
    if (e->line_end)
    {
        bytes[n++] = '\n';
    }
    e->answered = !e->line_end;
    serial_write(&e->link, (const uint8_t *)bytes, n);
}

int easycomm_parse(EasyCommRecord *e, const char *word)
{
    SourceRecord *row = &source_table[SOURCE_EASYCOMM];
    int code = EASYCOMM_NONE;
    for (int i = 0; i < EASYCOMM_WORDS; i++)
    {
        if (strncmp(word, easycomm_words[i], 2) == 0)
        {
            code = i;
            break;
        }
    }
    // Only the two letters are matched: AZIMUTH10 is AZ with the number text
    // IMUTH10, which reads as 0.0.
    const char *rest = code == EASYCOMM_NONE ? "" : word + 2;
    switch (code)
    {
    case EASYCOMM_AZ:
        if (rest[0])
        {
            e->az = row->az = atof(rest);
            row->az_tracking_enable = 1;
        }
        break;
    case EASYCOMM_EL:
        if (rest[0])
        {
            e->el = row->el = atof(rest);
            row->el_tracking_enable = 1;
        }
        break;
    case EASYCOMM_UP:
        e->up = atof(rest);
        break;
    case EASYCOMM_DN:
        e->down = atof(rest);
        break;
    case EASYCOMM_SA:
        row->az_tracking_enable = 0;
        break;
    case EASYCOMM_SE:
        row->el_tracking_enable = 0;
        break;
    case EASYCOMM_VE:
        text_copy(e->reply, sizeof e->reply, "002\r");
        break;
    default:
        break;
    }
    return code;
}

static int easycomm_is_terminator(uint8_t byte)
{
    return byte == '\n' || byte == '\r' || byte == ' ';
}

// The line feed that ends a line of queries whose words ended in blanks
// ("AZ EL \n"): it ends their answers too.
static void easycomm_line_end(EasyCommRecord *e, uint8_t byte)
{
    if (byte == '\n' && e->answered)
    {
        e->answered = 0;
        serial_write(&e->link, (const uint8_t *)"\n", 1);
    }
}

// A chattering line must neither grow the program nor make every real word
// late: beyond the backlog bound only the newest bytes stay, from the first
// word that begins among them.
static void easycomm_drop_backlog(EasyCommRecord *e)
{
    int waiting = serial_input_pending(&e->link);
    if (waiting <= EASYCOMM_BACKLOG)
    {
        return;
    }
    long long dropped = e->held_count + serial_skip(&e->link, waiting - EASYCOMM_BACKLOG / 4);
    e->held_count = 0;
    uint8_t byte = 0;
    while (serial_input_pending(&e->link) > 0 && serial_read_some(&e->link, &byte, 1) == 1 &&
           !easycomm_is_terminator(byte))
    {
        dropped++;
    }
    qDebug("[EasyComm] line sends faster than words are served: %lld bytes of backlog dropped", dropped);
}

// Wait for a byte, up to the silent budget: 0 when one is there, -1 not.
static int easycomm_wait_byte(EasyCommRecord *e)
{
    if (e->held_count)
    {
        return 0;
    }
    for (int silent = 0; e->link.is_open && silent < EASYCOMM_SILENT_READS; silent++)
    {
        if (serial_input_pending(&e->link) > 0)
        {
            return 0;
        }
        serial_wait_readable(&e->link, 1);
    }
    return -1;
}

// The next byte, taken or only looked at (then held for the next taker): 0,
// or -1 when none came.
static int easycomm_next_byte(EasyCommRecord *e, uint8_t *byte, int peek)
{
    if (easycomm_wait_byte(e) != 0)
    {
        return -1;
    }
    if (e->held_count)
    {
        *byte = e->held;
        e->held_count = peek ? 1 : 0;
        return 0;
    }
    if (serial_read_some(&e->link, byte, 1) != 1)
    {
        return -1;
    }
    if (peek)
    {
        e->held = *byte;
        e->held_count = 1;
    }
    return 0;
}

// Read one word into command: 0 when a terminator ended it, -1 when none
// came, it was empty, or it stopped unfinished (30 characters without a
// terminator, or the line fell silent). An unfinished word stays in command;
// what follows it on the line begins the next word.
static int easycomm_read_word(EasyCommRecord *e)
{
    uint8_t byte;
    e->line_end = 0;
    if (e->held_count)
    {
        byte = e->held;
        e->held_count = 0;
    }
    else if (serial_read(&e->link, &byte, 1, 1) != 1)
    {
        return -1;
    }
    if (easycomm_is_terminator(byte))
    {
        easycomm_line_end(e, byte);
        return -1;
    }
    int length = 0;
    e->command[length++] = (char)byte;
    while (length < EASYCOMM_WORD_SIZE - 1 && easycomm_next_byte(e, &byte, 0) == 0 && !easycomm_is_terminator(byte))
    {
        e->command[length++] = (char)byte;
    }
    e->command[length] = 0;
    if (length == EASYCOMM_WORD_SIZE - 1)
    {
        // 29 characters fill the word: it is whole only when its terminator
        // comes next, and anything else is left to begin the next word.
        if (easycomm_next_byte(e, &byte, 1) != 0 || !easycomm_is_terminator(byte))
        {
            return -1;
        }
        e->held_count = 0; // the terminator looked at is taken
    }
    else if (!easycomm_is_terminator(byte))
    {
        return -1;
    }
    e->line_end = byte == '\n';
    return 0;
}

int easycomm_poll(EasyCommRecord *e)
{
    memset(e->command, 0, sizeof e->command);
    memset(e->reply, 0, sizeof e->reply);
    easycomm_drop_backlog(e);
    if (easycomm_read_word(e) != 0)
    {
        return EASYCOMM_NONE;
    }
    int code = easycomm_parse(e, e->command);
    // A VE is answered at once; the other answers are the cycle's.
    easycomm_send_reply(e);
    return code;
}

// A query (the bare letters) answers the antenna's position; a position word
// shows the new target, which the display group hands to the drive. While
// another source is selected the row only fills: its target is not the one
// on the buttons.
static void easycomm_axis(const char *letters, const char *format, double antenna, int control, double target)
{
    if (strcmp(easycomm.command, letters) == 0)
    {
        snprintf(easycomm.reply, sizeof easycomm.reply, format, antenna);
        easycomm_send_reply(&easycomm);
        return;
    }
    if (settings.TrackingSource == SOURCE_EASYCOMM)
    {
        panel_show_source_angle(control, target);
    }
}

void easycomm_cycle_step(void)
{
    easycomm_apply(easycomm_poll(&easycomm));
}

void easycomm_apply(int code)
{
    switch (code)
    {
    case EASYCOMM_AZ:
        easycomm_axis("AZ", "AZ%0.1f ", az_position, PANEL_SOURCE_AZIMUTH, easycomm.az);
        break;
    case EASYCOMM_EL:
        easycomm_axis("EL", "EL%0.1f ", el_position, PANEL_SOURCE_ELEVATION, easycomm.el);
        break;
    case EASYCOMM_SA:
        az_left(0);
        az_right(0);
        break;
    case EASYCOMM_SE:
        el_up(0);
        el_down(0);
        break;
    default:
        if (easycomm.command[0])
        {
            panel_status(easycomm.command, 0);
        }
        break;
    }
}

int easycomm_load_settings(const char *file_name, EasyCommRecord *e)
{
    static const char *const s = "EASYCOMM";
    char path[1024];
    IniFile ini;
    settings_path(file_name, path, sizeof path);
    ini_read(path, &ini);
    e->active = ini_int(&ini, s, "EasyCommActive", "1");
    e->debug = ini_int(&ini, s, "EasyCommDebug", "1");
    e->link.Port = ini_int(&ini, s, "Port", "1");
    ini_text(&ini, s, "PortName", "/dev/ttyS0", e->link.PortName, sizeof e->link.PortName);
    e->link.BaudRate = settings_baud_index(ini_int(&ini, s, "BaudRate", "9600"));
    e->link.DataBits = settings_data_bits_index(ini_int(&ini, s, "DataBits", "8"));
    e->link.StopBits = settings_stop_bits_index(ini_double(&ini, s, "StopBits", "1"));
    e->link.Parity = settings_parity_index(ini_value(&ini, s, "Parity", "None"));
    e->link.FlowControl = settings_flow_index(ini_value(&ini, s, "FlowControl", "None"));
    return 0;
}

int easycomm_save_settings(const char *file_name, const EasyCommRecord *e)
{
    static const char *const s = "EASYCOMM";
    char path[1024];
    IniFile ini;
    settings_path(file_name, path, sizeof path);
    // The rest of the file belongs to the other sections; it goes back as it was.
    ini_read(path, &ini);
    ini_set_int(&ini, s, "EasyCommActive", e->active);
    ini_set_int(&ini, s, "EasyCommDebug", e->debug);
    ini_set_int(&ini, s, "Port", e->link.Port);
    ini_set(&ini, s, "PortName", e->link.PortName);
    ini_set_int(&ini, s, "BaudRate", settings_baud_rate(e->link.BaudRate));
    ini_set_int(&ini, s, "DataBits", settings_data_bits(e->link.DataBits));
    ini_set(&ini, s, "StopBits", settings_stop_bits_text(e->link.StopBits));
    ini_set(&ini, s, "Parity", settings_parity_text(e->link.Parity));
    ini_set(&ini, s, "FlowControl", settings_flow_text(e->link.FlowControl));
    ini_write(path, &ini);
    return 0;
}
