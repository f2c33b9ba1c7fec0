#include "rig/rig_engine.h"

#include "rig/rig_log.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

SerialLink rig_link;
char rig_param_text[RIG_TEXT_COUNT][RIG_TEXT_SIZE];
int32_t rig_flag_state[RIG_PARAM_COUNT];

static void rig_log_bytes(FILE *log, int is_hex, const uint8_t *bytes, int length)
{
    if (is_hex)
    {
        rig_log_hex(log, bytes, length);
    }
    else
    {
        rig_log_text(log, bytes, length);
    }
    if (log)
    {
        fprintf(log, "\n");
    }
}

int rig_validate_reply(const RigCommand *record, const uint8_t *reply, int length)
{
    for (int i = 0; i < record->validate_length; i++)
    {
        uint8_t want = record->validate[i];
        // A wildcard matches any byte. Past the reply's end the pattern meets
        // the cleared buffer, so a pattern longer than its reply fails unless
        // its tail is wildcards or zeros.
        if ((record->is_hex && want == 0x00) || (!record->is_hex && want == '.'))
        {
            continue;
        }
        uint8_t got = i < length ? reply[i] : 0;
        if (got != want)
        {
            return 0;
        }
    }
    return 1;
}

int rig_value_text(const RigValue *value, const uint8_t *reply, int length, char *text, int size)
{
    text[0] = 0;
    int fits = value->length > 0 && value->start >= 0 && value->start + value->length <= length;
    switch (value->format)
    {
    case vfText:
        if (fits)
        {
            int n = value->length < size - 1 ? value->length : size - 1;
            memcpy(text, reply + value->start, (size_t)n);
            text[n] = 0;
        }
        return 1;
    case vfBcdBU:
    case vfBcdLU:
        if (fits)
        {
            int at = 0;
            for (int i = 0; i < value->length && at + 2 < size; i++)
            {
                // In vfBcdLU the last byte of the reply holds the highest digits.
                int from = value->format == vfBcdLU ? value->start + value->length - 1 - i : value->start + i;
                at += snprintf(text + at, (size_t)(size - at), "%02X", reply[from]);
            }
        }
        return 1;
    default:
        return 0;
    }
}

static void rig_store_text(int param, const char *text, FILE *log)
{
    static const char *const names[RIG_TEXT_COUNT] = {"pmFreq", "pmFreqA", "pmFreqB", "pmPitch", "pmRitOffset"};
    if (param < 0 || param >= RIG_TEXT_COUNT)
    {
        return;
    }
    snprintf(rig_param_text[param], sizeof rig_param_text[param], "%s", text);
    if (log)
    {
        fprintf(log, "%s: %s\n", names[param], text);
    }
}

static void rig_decode_values(const RigCommand *record, const uint8_t *reply, int length, FILE *log)
{
    for (int i = 0; i < RIG_VALUE_COUNT; i++)
    {
        const RigValue *value = &record->values[i];
        char text[RIG_TEXT_SIZE];
        if (rig_value_text(value, reply, length, text, sizeof text))
        {
            rig_store_text(value->param, text, log);
        }
        else if (log && (value->format == vfBinL || value->format == vfBinB || value->format == vfBcdLS ||
                         value->format == vfBcdBS))
        {
            fprintf(log, "Format: %s\n", rig_format_names[value->format]);
        }
    }
}

static int rig_flag_matches(const RigCommand *record, const RigFlag *flag, const uint8_t *reply)
{
    for (int i = 0; i < flag->bits_length && i < RIG_PATTERN_SIZE; i++)
    {
        uint8_t mask = flag->mask[i];
        if (!record->is_hex && mask == '.')
        {
            continue;
        }
        if ((reply[i] & mask) != flag->bits[i])
        {
            return 0;
        }
    }
    return 1;
}

static void rig_log_flag(FILE *log, const RigCommand *record, const RigFlag *flag, int n, const uint8_t *reply,
                         int length, int state)
{
    if (!log)
    {
        return;
    }
    fprintf(log, "\nFlag%d\n", n);
    fprintf(log, "Reply(%2d) : ", length);
    rig_log_bytes(log, record->is_hex, reply, length);
    fprintf(log, "Mask(%2d)  : ", flag->mask_length);
    rig_log_bytes(log, record->is_hex, flag->mask, flag->mask_length);
    fprintf(log, "Bits(%2d)  : ", flag->bits_length);
    rig_log_bytes(log, record->is_hex, flag->bits, flag->bits_length);
    fprintf(log, "%s : %s\n", rig_param_names[flag->param], state ? "true" : "false");
}

static void rig_test_flags(const RigCommand *record, const uint8_t *reply, int length, FILE *log)
{
    for (int i = 0; i < RIG_FLAG_COUNT; i++)
    {
        const RigFlag *flag = &record->flags[i];
        if (flag->bits_length < 1 || flag->bits_length > length)
        {
            continue;
        }
        int state = rig_flag_matches(record, flag, reply);
        if (flag->param >= 0 && flag->param < RIG_PARAM_COUNT)
        {
            rig_flag_state[flag->param] = state;
        }
        rig_log_flag(log, record, flag, i + 1, reply, length, state);
    }
}

int rig_decode_reply(const RigCommand *record, const uint8_t *reply, int length, FILE *log)
{
    if (record->validate_length >= 1)
    {
        if (log)
        {
            fprintf(log, "Validate(%2d) :", record->validate_length);
            rig_log_bytes(log, record->is_hex, record->validate, record->validate_length);
        }
        if (!rig_validate_reply(record, reply, length))
        {
            return 1;
        }
    }
    rig_decode_values(record, reply, length, log);
    rig_test_flags(record, reply, length, log);
    return 0;
}

// Collect a reply that ends in the record's terminator: one byte at a time,
// the terminator kept. 1 when it came, 0 when the radio fell silent or 64
// bytes went by without it. *count says how many came either way.
static int rig_read_terminated(const RigCommand *record, uint8_t *reply, int *count)
{
    *count = 0;
    while (*count < RIG_REPLY_SIZE)
    {
        if (serial_read(&rig_link, reply + *count, 1, RIG_WAIT_PERIODS) != 1)
        {
            return 0;
        }
        (*count)++;
        if (reply[*count - 1] == record->reply_end)
        {
            return 1;
        }
    }
    return 0;
}

int rig_issue_command(const RigCommand *record, uint8_t reply[RIG_REPLY_SIZE])
{
    memset(reply, 0, RIG_REPLY_SIZE);
    if (record->code_length < 1)
    {
        return -1;
    }
    serial_clear(&rig_link);
    FILE *log = rig_debug ? rig_log_open("a") : nullptr;
    if (log)
    {
        fprintf(log, "Command(%2d)  :", record->code_length);
        rig_log_bytes(log, record->is_hex, record->code, record->code_length);
    }
    serial_write(&rig_link, record->code, record->code_length);

    int count = 0;
    int complete = 0;
    if (record->ReplyLength >= 1)
    {
        // A few old files ask for more than the reply buffer holds; the
        // first 64 bytes are taken and the rest is dropped by the next clear.
        int want = record->ReplyLength < RIG_REPLY_SIZE ? record->ReplyLength : RIG_REPLY_SIZE;
        count = serial_read(&rig_link, reply, want, RIG_WAIT_PERIODS);
        complete = count == want;
        if (log)
        {
            fprintf(log, "Reply(%2d)    :", count);
        }
    }
    else if (record->has_reply_end)
    {
        complete = rig_read_terminated(record, reply, &count);
        if (log)
        {
            fprintf(log, "ReplyEnd(%2d) :", count);
        }
    }
    else
    {
        // Nothing is awaited: the bytes have gone, and that is all.
        rig_log_close(log);
        return 0;
    }
    rig_log_bytes(log, record->is_hex, reply, count);
    if (complete)
    {
        rig_decode_reply(record, reply, count, log);
    }
    else if (log && count == 0)
    {
        fprintf(log, "No Reply was Received\n");
    }
    if (log)
    {
        fprintf(log, "\n");
    }
    rig_log_close(log);
    return 0;
}

static int rig_walk(const RigCommand *table, int count)
{
    uint8_t reply[RIG_REPLY_SIZE];
    int result = 0;
    for (int i = 0; i < count; i++)
    {
        if (table[i].code_length > 0)
        {
            result = rig_issue_command(&table[i], reply);
        }
        else if (i > 0)
        {
            // A file may number its sections from 1; only a gap after that ends the list.
            break;
        }
    }
    return result;
}

int rig_send_init(void)
{
    memset(rig_param_text, 0, sizeof rig_param_text);
    memset(rig_flag_state, 0, sizeof rig_flag_state);
    return rig_walk(rig_init, RIG_INIT_COUNT);
}

void rig_poll_status(void)
{
    rig_walk(rig_status, RIG_STATUS_COUNT);
}

static int rig_get_freq(int param, int32_t *hz)
{
    if (!rig_param_text[param][0])
    {
        return 1;
    }
    *hz = (int32_t)atol(rig_param_text[param]);
    return 0;
}

int rig_get_freq_a(int32_t *hz)
{
    return rig_get_freq(pmFreqA, hz);
}

int rig_get_freq_b(int32_t *hz)
{
    return rig_get_freq(pmFreqB, hz);
}

int rig_encode_frequency(RigCommand *record, int32_t hz)
{
    const RigValue *value = &record->values[0];
    if (record->code_length < 1 || value->length < 1)
    {
        return 1;
    }
    if (value->format != vfText && value->format != vfBcdLU)
    {
        return -1;
    }
    int digits_count = value->format == vfText ? value->length : 2 * value->length;
    // Digits that do not fit are lost at the high end, as the field allows.
    char digits[2 * RIG_CODE_SIZE + 1];
    if (digits_count > 2 * RIG_CODE_SIZE)
    {
        digits_count = 2 * RIG_CODE_SIZE;
    }
    uint32_t rest = (uint32_t)hz;
    for (int i = digits_count - 1; i >= 0; i--)
    {
        digits[i] = (char)('0' + rest % 10);
        rest /= 10;
    }
    if (value->format == vfText)
    {
        for (int i = 0; i < digits_count && value->start + i < RIG_CODE_SIZE; i++)
        {
            if (value->start + i >= 0)
            {
                record->code[value->start + i] = (uint8_t)digits[i];
            }
        }
        return 0;
    }
    // vfBcdLU: the lowest pair of digits goes into the first byte.
    for (int i = 0; i < value->length; i++)
    {
        int pair = value->length - 1 - i;
        int at = value->start + i;
        if (at >= 0 && at < RIG_CODE_SIZE)
        {
            record->code[at] = (uint8_t)(((digits[2 * pair] - '0') << 4) | (digits[2 * pair + 1] - '0'));
        }
    }
    return 0;
}

static int rig_set_freq(int param, int32_t hz)
{
    RigCommand *record = &rig_write[param];
    int status = rig_encode_frequency(record, hz);
    if (status != 0)
    {
        return status;
    }
    uint8_t reply[RIG_REPLY_SIZE];
    return rig_issue_command(record, reply);
}

int rig_set_freq_a(int32_t hz)
{
    return rig_set_freq(pmFreqA, hz);
}

int rig_set_freq_b(int32_t hz)
{
    return rig_set_freq(pmFreqB, hz);
}

void rig_reset(void)
{
    serial_close(&rig_link);
    memset(&rig_link, 0, sizeof rig_link);
    rig_tables_clear();
    memset(rig_param_text, 0, sizeof rig_param_text);
    memset(rig_flag_state, 0, sizeof rig_flag_state);
    rig_debug = 0;
}
