#include "rig/rig_engine.h"

#include "core/clock.h"
#include "rig/rig_log.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

SerialLink rig_link;
RigEngine rig_engine;
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
    // In 64 bits: a file may give any start and length, and their sum must not wrap.
    int fits = value->length > 0 && value->start >= 0 && (int64_t)value->start + value->length <= length;
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
    for (int i = 0; i < flag->bits_length && i < RIG_PATTERN_SIZE && i < RIG_REPLY_SIZE; i++)
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

// A BCD byte holds two decimal digits; anything else is a garbled reply,
// and taking it would write a wrong frequency to the other VFO.
static int rig_bcd_is_decimal(const RigCommand *record, const uint8_t *reply, int length)
{
    for (const RigValue &value : record->values)
    {
        if ((value.format != vfBcdBU && value.format != vfBcdLU) || value.length < 1 || value.start < 0 ||
            (int64_t)value.start + value.length > length)
        {
            continue;
        }
        for (int i = value.start; i < value.start + value.length; i++)
        {
            if ((reply[i] >> 4) > 9 || (reply[i] & 0x0F) > 9)
            {
                return 0;
            }
        }
    }
    return 1;
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
    if (!rig_bcd_is_decimal(record, reply, length))
    {
        if (log)
        {
            fprintf(log, "Reply refused: a BCD value holds a byte that is not two decimal digits\n");
        }
        return 1;
    }
    rig_decode_values(record, reply, length, log);
    rig_test_flags(record, reply, length, log);
    return 0;
}

static void rig_log_command(const RigCommand *record)
{
    FILE *log = rig_debug ? rig_log_open("a") : nullptr;
    if (log)
    {
        fprintf(log, "Command(%2d)  :", record->code_length);
        rig_log_bytes(log, record->is_hex, record->code, record->code_length);
    }
    rig_log_close(log);
}

static void rig_send(const RigCommand *record, int64_t now_ms)
{
    RigEngine *e = &rig_engine;
    e->record = record;
    e->started_ms = now_ms;
    e->sent = 0;
    e->count = 0;
    memset(e->reply, 0, sizeof e->reply);
    serial_clear(&rig_link);
    rig_log_command(record);
}

static int rig_awaits_reply(const RigCommand *record)
{
    return record->ReplyLength >= 1 || record->has_reply_end;
}

// Take the bytes that have come. 1 when the reply is whole, -1 when it can no
// longer be (64 bytes without the terminator), else 0.
static int rig_collect(RigEngine *e)
{
    const RigCommand *record = e->record;
    if (record->ReplyLength >= 1)
    {
        // A few old files ask for more than the reply buffer holds; the
        // first 64 bytes are taken and the rest is dropped by the next clear.
        int want = record->ReplyLength < RIG_REPLY_SIZE ? record->ReplyLength : RIG_REPLY_SIZE;
        e->count += serial_read_some(&rig_link, e->reply + e->count, want - e->count);
        return e->count >= want ? 1 : 0;
    }
    // A terminated reply is taken a byte at a time, so that nothing behind
    // its terminator is taken with it.
    while (e->count < RIG_REPLY_SIZE)
    {
        if (serial_read_some(&rig_link, e->reply + e->count, 1) != 1)
        {
            return 0;
        }
        if (e->reply[e->count++] == record->reply_end)
        {
            return 1;
        }
    }
    return -1;
}

// One step of the exchange on the line: its outcome, or RIG_OUTCOME_NONE
// while it goes on.
static int rig_step(RigEngine *e, int64_t now_ms)
{
    const RigCommand *record = e->record;
    if (e->sent < record->code_length)
    {
        int n = serial_write(&rig_link, record->code + e->sent, record->code_length - e->sent);
        e->sent += n > 0 ? n : 0;
    }
    int written = e->sent >= record->code_length && serial_output_pending(&rig_link) == 0;
    int whole = rig_awaits_reply(record) ? rig_collect(e) : 1;
    if (whole < 0)
    {
        return RIG_OUTCOME_INCOMPLETE;
    }
    if (written && whole)
    {
        return RIG_OUTCOME_REPLY;
    }
    if (now_ms - e->started_ms < RIG_BUDGET_MS)
    {
        return RIG_OUTCOME_NONE;
    }
    if (!written)
    {
        // A command that reached the radio late would be a wrong one by then.
        serial_discard_output(&rig_link);
        return RIG_OUTCOME_WRITE_TIMEOUT;
    }
    return RIG_OUTCOME_NO_REPLY;
}

static void rig_finish(RigEngine *e, int outcome)
{
    const RigCommand *record = e->record;
    FILE *log = rig_debug ? rig_log_open("a") : nullptr;
    if (log && rig_awaits_reply(record))
    {
        fprintf(log, record->ReplyLength >= 1 ? "Reply(%2d)    :" : "ReplyEnd(%2d) :", e->count);
        rig_log_bytes(log, record->is_hex, e->reply, e->count);
    }
    if (outcome == RIG_OUTCOME_REPLY && rig_awaits_reply(record))
    {
        rig_decode_reply(record, e->reply, e->count, log);
    }
    else if (log && outcome == RIG_OUTCOME_WRITE_TIMEOUT)
    {
        fprintf(log, "The command could not leave the port within %d ms\n", RIG_BUDGET_MS);
    }
    else if (log && outcome == RIG_OUTCOME_NO_REPLY && e->count == 0)
    {
        fprintf(log, "No Reply was Received\n");
    }
    if (log)
    {
        fprintf(log, "\n");
    }
    rig_log_close(log);
    // Only a command that ran out of time counts towards a radio that is gone;
    // any answer, even a wrong one, shows it is there.
    e->silent_run = outcome == RIG_OUTCOME_NO_REPLY || outcome == RIG_OUTCOME_WRITE_TIMEOUT ? e->silent_run + 1 : 0;
    e->last_outcome = outcome;
    e->record = nullptr;
}

// The next record of the walk: the first may be empty, the first gap after
// it ends the walk. Null when the walk is over.
static const RigCommand *rig_walk_next(RigEngine *e)
{
    while (e->walk && e->walk_next < e->walk_count)
    {
        const RigCommand *record = &e->walk[e->walk_next++];
        if (record->code_length > 0)
        {
            return record;
        }
        if (e->walk_next > 1)
        {
            break;
        }
    }
    if (e->walk == rig_status)
    {
        e->walks_done++;
    }
    e->walk = nullptr;
    return nullptr;
}

void rig_service(int64_t now_ms)
{
    RigEngine *e = &rig_engine;
    // Each turn ends one exchange or starts one; a turn that does neither
    // waits for the bytes, and the bound keeps a table of empty writes short.
    for (int turn = 0; turn < 2 * (RIG_STATUS_COUNT + 2); turn++)
    {
        if (e->record)
        {
            int outcome = rig_step(e, now_ms);
            if (outcome == RIG_OUTCOME_NONE)
            {
                return;
            }
            rig_finish(e, outcome);
            if (rig_not_answering())
            {
                return;
            }
        }
        const RigCommand *next = e->pending_write;
        e->pending_write = nullptr;
        if (!next)
        {
            next = rig_walk_next(e);
        }
        if (!next)
        {
            return;
        }
        rig_send(next, now_ms);
    }
}

int rig_busy(void)
{
    return rig_engine.record || rig_engine.pending_write || rig_engine.walk;
}

int rig_not_answering(void)
{
    return rig_engine.silent_run >= RIG_SILENT_LIMIT;
}

static void rig_start_walk(const RigCommand *table, int count)
{
    rig_engine.walk = table;
    rig_engine.walk_count = count;
    rig_engine.walk_next = 0;
}

void rig_start_init(void)
{
    memset(rig_param_text, 0, sizeof rig_param_text);
    memset(rig_flag_state, 0, sizeof rig_flag_state);
    rig_engine.silent_run = 0;
    rig_start_walk(rig_init, RIG_INIT_COUNT);
}

void rig_stop(void)
{
    rig_engine.walk = nullptr;
    rig_engine.pending_write = nullptr;
    rig_engine.record = nullptr;
}

void rig_start_status(void)
{
    if (!rig_engine.walk)
    {
        rig_start_walk(rig_status, RIG_STATUS_COUNT);
    }
}

void rig_run_until_idle(void)
{
    // Bounded by what the queued work can take when every command runs out
    // of time, and a little over.
    int64_t end = clock_monotonic_ms() + (int64_t)(RIG_STATUS_COUNT + 2) * RIG_BUDGET_MS;
    for (;;)
    {
        rig_service(clock_monotonic_ms());
        if (!rig_busy() || rig_not_answering() || clock_monotonic_ms() > end)
        {
            return;
        }
        serial_wait_readable(&rig_link, 5);
    }
}

int rig_issue_command(const RigCommand *record, uint8_t reply[RIG_REPLY_SIZE])
{
    memset(reply, 0, RIG_REPLY_SIZE);
    if (record->code_length < 1)
    {
        return -1;
    }
    rig_run_until_idle();
    rig_engine.pending_write = record;
    rig_run_until_idle();
    memcpy(reply, rig_engine.reply, RIG_REPLY_SIZE);
    return 0;
}

int rig_send_init(void)
{
    rig_start_init();
    rig_run_until_idle();
    return 0;
}

void rig_poll_status(void)
{
    rig_start_status();
    rig_run_until_idle();
}

// A frequency is whole hertz in decimal digits, nothing else: a text that
// holds any other character is no reading.
static int rig_get_freq(int param, int64_t *hz)
{
    const char *text = rig_param_text[param];
    if (!text[0] || strspn(text, "0123456789") != strlen(text) || strlen(text) > 18)
    {
        return 1;
    }
    *hz = strtoll(text, nullptr, 10);
    return 0;
}

int rig_get_freq_a(int64_t *hz)
{
    return rig_get_freq(pmFreqA, hz);
}

int rig_get_freq_b(int64_t *hz)
{
    return rig_get_freq(pmFreqB, hz);
}

int rig_encode_frequency(RigCommand *record, int64_t hz)
{
    const RigValue *value = &record->values[0];
    if (record->code_length < 1 || value->length < 1 || value->start < 0 ||
        (int64_t)value->start + value->length > record->code_length)
    {
        return 1;
    }
    if ((value->format != vfText && value->format != vfBcdLU) || hz < 0)
    {
        return -1;
    }
    // Digits that do not fit are lost at the high end, as the field allows.
    int digits_count = value->format == vfText ? value->length : 2 * value->length;
    char digits[2 * RIG_CODE_SIZE];
    uint64_t rest = (uint64_t)hz;
    for (int i = digits_count - 1; i >= 0; i--)
    {
        digits[i] = (char)('0' + rest % 10);
        rest /= 10;
    }
    if (value->format == vfText)
    {
        memcpy(record->code + value->start, digits, (size_t)digits_count);
        return 0;
    }
    // vfBcdLU: the lowest pair of digits goes into the first byte.
    for (int i = 0; i < value->length; i++)
    {
        int pair = value->length - 1 - i;
        record->code[value->start + i] = (uint8_t)(((digits[2 * pair] - '0') << 4) | (digits[2 * pair + 1] - '0'));
    }
    return 0;
}

static int rig_set_freq(int param, int64_t hz)
{
    RigCommand *record = &rig_write[param];
    int status = rig_encode_frequency(record, hz);
    if (status == 0)
    {
        rig_engine.pending_write = record;
    }
    return status;
}

int rig_set_freq_a(int64_t hz)
{
    return rig_set_freq(pmFreqA, hz);
}

int rig_set_freq_b(int64_t hz)
{
    return rig_set_freq(pmFreqB, hz);
}

void rig_reset(void)
{
    serial_close(&rig_link);
    memset(&rig_link, 0, sizeof rig_link);
    memset(&rig_engine, 0, sizeof rig_engine);
    rig_tables_clear();
    memset(rig_param_text, 0, sizeof rig_param_text);
    memset(rig_flag_state, 0, sizeof rig_flag_state);
    rig_debug = 0;
}
