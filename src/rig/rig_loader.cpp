#include "rig/rig_loader.h"

#include "rig/rig_file.h"
#include "rig/rig_log.h"

#include <QCoreApplication>
#include <QtGlobal>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

static char rig_folder_override[512];

const char *rig_files_folder(void)
{
    static char folder[512];
    if (rig_folder_override[0])
    {
        return rig_folder_override;
    }
    snprintf(folder, sizeof folder, "%s/OmniRigFiles", QCoreApplication::applicationDirPath().toUtf8().constData());
    return folder;
}

void rig_files_set_folder(const char *folder)
{
    snprintf(rig_folder_override, sizeof rig_folder_override, "%s", folder ? folder : "");
}

// Digits are 0-9 and A-F; anything else counts as its code less 55, as the
// letters do, so a stray character gives a wrong byte rather than a stop.
static int rig_hex_digit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : c - 55;
}

// Two digits as one byte; a stray digit's negative value wraps like any other.
static uint8_t rig_hex_byte(char high, char low)
{
    return (uint8_t)(((unsigned)rig_hex_digit(high) << 4) + (unsigned)(low ? rig_hex_digit(low) : 0));
}

int rig_read_hex_list(const char *text, uint8_t *bytes, int size)
{
    int count = 0;
    for (const char *p = text; *p && count < size;)
    {
        if (*p == '.')
        {
            p++;
            continue;
        }
        // A lone last digit is taken as the high half of a byte.
        bytes[count++] = rig_hex_byte(p[0], p[1]);
        p += p[1] ? 2 : 1;
    }
    return count;
}

int rig_read_bracket_text(const char *text, uint8_t *bytes, int size)
{
    int length = (int)strlen(text) - 2;
    if (length < 1)
    {
        return 0;
    }
    if (length > size)
    {
        length = size;
    }
    memcpy(bytes, text + 1, (size_t)length);
    return length;
}

static int rig_read_pattern(int is_hex, const char *text, uint8_t *bytes, int size)
{
    return is_hex ? rig_read_hex_list(text, bytes, size) : rig_read_bracket_text(text, bytes, size);
}

// A whole decimal number, or 0 for anything else ("0.425" included).
static int rig_read_int(const std::string &text)
{
    const char *start = text.c_str();
    char *end;
    errno = 0;
    long value = strtol(start, &end, 10);
    while (*end == ' ' || *end == '\t')
    {
        end++;
    }
    if (end == start || *end)
    {
        return 0;
    }
    // A number beyond an int is kept as the largest one, so that the checks
    // of the loader refuse it rather than see it wrapped into a small one.
    if (errno || value > INT_MAX || value < INT_MIN)
    {
        return value < 0 ? INT_MIN : INT_MAX;
    }
    return (int)value;
}

static std::vector<std::string> rig_split(const char *text)
{
    std::vector<std::string> parts;
    std::string part;
    for (const char *p = text;; p++)
    {
        if (*p == '|' || *p == 0)
        {
            if (!part.empty())
            {
                parts.push_back(part);
            }
            part.clear();
            if (*p == 0)
            {
                break;
            }
            continue;
        }
        part.push_back(*p);
    }
    return parts;
}

static const char *rig_key(const RigFile *file, const char *section, const char *key)
{
    const char *value = rig_file_value(file, section, key);
    return value ? value : "";
}

static void rig_load_command(const RigFile *file, RigCommand *record, const char *section, FILE *log)
{
    const char *command = rig_key(file, section, "Command");
    if (!command[0])
    {
        return;
    }
    record->ReplyLength = 0;
    record->has_reply_end = 0;
    record->validate_length = 0;
    record->is_hex = command[0] != '(';
    if (record->is_hex)
    {
        record->code_length = rig_read_hex_list(command, record->code, RIG_CODE_SIZE);
        if (log)
        {
            fprintf(log, "Command(HEX): Code=");
            rig_log_hex(log, record->code, record->code_length);
            fprintf(log, "\n");
        }
        return;
    }
    record->code_length = rig_read_bracket_text(command, record->code, RIG_CODE_SIZE);
    if (log)
    {
        fprintf(log, "Command(ASCII): Code(%2d)=", record->code_length);
        rig_log_text(log, record->code, record->code_length);
        fprintf(log, "\n");
    }
}

static void rig_load_reply(const RigFile *file, RigCommand *record, const char *section, FILE *log)
{
    record->ReplyLength = rig_read_int(rig_key(file, section, "ReplyLength"));
    if (log && record->ReplyLength > 0)
    {
        fprintf(log, "ReplyLength=%d\n", record->ReplyLength);
    }

    const char *end = rig_key(file, section, "ReplyEnd");
    if (end[0])
    {
        record->has_reply_end = 1;
        if (record->is_hex)
        {
            // Only the first two digits count, however long the text.
            record->reply_end = rig_hex_byte(end[0], end[1]);
            if (log)
            {
                fprintf(log, "ReplyEnd=%02X\n", record->reply_end);
            }
        }
        else
        {
            record->reply_end = (uint8_t)end[1];
            if (log)
            {
                fprintf(log, "ReplyEnd=%c\n", record->reply_end);
            }
        }
    }

    const char *validate = rig_key(file, section, "Validate");
    if (validate[0])
    {
        record->validate_length = rig_read_pattern(record->is_hex, validate, record->validate, RIG_PATTERN_SIZE);
        if (log)
        {
            fprintf(log, "Validate(%2d)=", record->validate_length);
            if (record->is_hex)
            {
                rig_log_hex(log, record->validate, record->validate_length);
            }
            else
            {
                rig_log_text(log, record->validate, record->validate_length);
            }
            fprintf(log, "\n");
        }
    }
}

// Where a value may lie: in a parameter's write record it is a place in the
// command's own bytes; anywhere else a place in the reply, which is at most
// RIG_REPLY_SIZE bytes however long the file says it is. Checked in 64 bits,
// since a file may give any numbers.
static int rig_value_fits(const RigCommand *record, const char *section, const RigValue *value)
{
    int64_t room = RIG_REPLY_SIZE;
    if (rig_param_index(section) >= 0)
    {
        room = record->code_length;
    }
    else if (record->ReplyLength >= 1 && record->ReplyLength < RIG_REPLY_SIZE)
    {
        room = record->ReplyLength;
    }
    return value->start >= 0 && value->length >= 0 && (int64_t)value->start + value->length <= room;
}

static void rig_load_values(const RigFile *file, RigCommand *record, const char *section)
{
    for (int i = 0; i < RIG_VALUE_COUNT; i++)
    {
        char key[16];
        snprintf(key, sizeof key, i == 0 ? "Value" : "Value%d", i);
        const char *text = rig_key(file, section, key);
        if (!text[0])
        {
            // "Value" may be missing while "Value1" follows; any later gap ends the list.
            if (i == 0)
            {
                continue;
            }
            break;
        }
        std::vector<std::string> parts = rig_split(text);
        if (parts.size() < 5)
        {
            continue;
        }
        RigValue *value = &record->values[i];
        value->start = rig_read_int(parts[0]);
        value->length = rig_read_int(parts[1]);
        int format = rig_format_index(parts[2].c_str());
        value->format = format < 0 ? vfNone : format;
        value->multiplier = (float)rig_read_int(parts[3]);
        value->adder = (float)rig_read_int(parts[4]);
        int param = parts.size() == 6 ? rig_param_index(parts[5].c_str()) : -1;
        value->param = param < 0 ? pmFreq : param;
        if (!rig_value_fits(record, section, value))
        {
            qWarning("Rig file %s [%s] %s: start %d and length %d lie outside the %s; the value is passed over",
                     file->name.c_str(), section, key, value->start, value->length,
                     rig_param_index(section) >= 0 ? "command" : "reply");
            memset(value, 0, sizeof *value);
        }
    }
}

static void rig_log_flag_part(FILE *log, int is_hex, const uint8_t *bytes, int length)
{
    for (int i = 0; i < length; i++)
    {
        fprintf(log, is_hex ? "%02X" : "%c", bytes[i]);
    }
}

static void rig_load_flag(RigFlag *flag, int is_hex, const std::vector<std::string> &parts)
{
    if (parts.size() == 3)
    {
        flag->mask_length = rig_read_pattern(is_hex, parts[0].c_str(), flag->mask, RIG_PATTERN_SIZE);
        flag->bits_length = rig_read_pattern(is_hex, parts[1].c_str(), flag->bits, RIG_PATTERN_SIZE);
    }
    else
    {
        // With the bits alone, a hex record tests every byte that isn't 00
        // whole; an ASCII record's dots are left out by the engine.
        flag->bits_length = rig_read_pattern(is_hex, parts[0].c_str(), flag->bits, RIG_PATTERN_SIZE);
        flag->mask_length = flag->bits_length;
        for (int i = 0; i < flag->bits_length; i++)
        {
            flag->mask[i] = is_hex ? (flag->bits[i] == 0 ? 0x00 : 0xFF) : flag->bits[i];
        }
    }
    int param = rig_param_index(parts.back().c_str());
    flag->param = param < 0 ? pmFreq : param;
}

static void rig_load_flags(const RigFile *file, RigCommand *record, const char *section, FILE *log)
{
    for (int n = 1; n <= RIG_FLAG_COUNT; n++)
    {
        char key[16];
        snprintf(key, sizeof key, "Flag%d", n);
        const char *text = rig_key(file, section, key);
        if (!text[0])
        {
            break;
        }
        std::vector<std::string> parts = rig_split(text);
        if (parts.size() != 2 && parts.size() != 3)
        {
            continue;
        }
        RigFlag *flag = &record->flags[n - 1];
        rig_load_flag(flag, record->is_hex, parts);
        if (log)
        {
            fprintf(log, "Flag%d\n", n);
            fprintf(log, "Mask(%2d)    =", flag->mask_length);
            rig_log_flag_part(log, record->is_hex, flag->mask, flag->mask_length);
            fprintf(log, "\nBits(%2d)    =", flag->bits_length);
            rig_log_flag_part(log, record->is_hex, flag->bits, flag->bits_length);
            fprintf(log, "\n");
        }
    }
}

int LoadOmniRigParams(const RigFile *file, RigCommand *record, const char *section)
{
    FILE *log = rig_debug ? rig_log_open("a") : nullptr;
    if (log)
    {
        fprintf(log, "\nLoadOmniRigParams [%s]\n", section);
    }
    rig_load_command(file, record, section, log);
    rig_load_reply(file, record, section, log);
    rig_load_values(file, record, section);
    rig_load_flags(file, record, section, log);
    rig_log_close(log);
    return 0;
}

static void rig_load_table(const RigFile *file, RigCommand *table, int count, const char *base)
{
    memset(table, 0, sizeof(RigCommand) * (size_t)count);
    for (int i = 0; i < count; i++)
    {
        char section[32];
        if (i == 0)
        {
            snprintf(section, sizeof section, "%s", base);
        }
        else
        {
            snprintf(section, sizeof section, "%s%d", base, i);
        }
        LoadOmniRigParams(file, &table[i], section);
    }
}

int rig_load_path(const char *path, int debug)
{
    rig_debug = debug;
    FILE *log = rig_debug ? rig_log_open("w") : nullptr;
    if (log)
    {
        const char *name = strrchr(path, '/');
        fprintf(log, "LoadOmniRigFile: %s\n", name ? name + 1 : path);
    }
    rig_log_close(log);

    RigFile file;
    rig_file_read(path, &file);
    rig_load_table(&file, rig_init, RIG_INIT_COUNT, "INIT");
    rig_load_table(&file, rig_status, RIG_STATUS_COUNT, "STATUS");
    memset(rig_write, 0, sizeof rig_write);
    for (int i = 0; i < RIG_WRITE_COUNT; i++)
    {
        LoadOmniRigParams(&file, &rig_write[i], rig_param_names[i]);
    }

    log = rig_debug ? rig_log_open("a") : nullptr;
    if (log)
    {
        fprintf(log, "\n***********************************\n");
        fprintf(log, "LoadOmniRigFile Complete\n");
        fprintf(log, "***********************************\n");
        fprintf(log, "Ready to Issue Commands...\n\n");
    }
    rig_log_close(log);
    return 0;
}

int LoadOmniRigFile(const char *file_name, int debug)
{
    char path[1024];
    snprintf(path, sizeof path, "%s/%s", rig_files_folder(), file_name);
    return rig_load_path(path, debug);
}
