#include "rig/rig_survey.h"

#include "rig/rig_command.h"
#include "rig/rig_engine.h"

#include <cstdarg>
#include <cstdio>

// The records the engine walks: the first may be empty, the first gap after
// it ends the walk, so anything behind a gap is never sent.
static int rig_survey_walked(const RigCommand *table, int count)
{
    int last = 0;
    for (int i = 0; i < count; i++)
    {
        if (table[i].code_length > 0)
        {
            last = i + 1;
        }
        else if (i > 0)
        {
            break;
        }
    }
    return last;
}

static int rig_survey_format_gives_text(int format)
{
    return format == vfText || format == vfBcdBU || format == vfBcdLU;
}

int rig_survey_reads(int param)
{
    int walked = rig_survey_walked(rig_status, RIG_STATUS_COUNT);
    for (int i = 0; i < walked; i++)
    {
        for (const RigValue &value : rig_status[i].values)
        {
            if (value.param == param && value.length > 0 && rig_survey_format_gives_text(value.format))
            {
                return 1;
            }
        }
    }
    return 0;
}

int rig_survey_writes(int param)
{
    const RigCommand *record = &rig_write[param];
    const RigValue *value = &record->values[0];
    return record->code_length > 0 && value->length > 0 && (value->format == vfText || value->format == vfBcdLU);
}

static int rig_survey_flag_read(int param)
{
    int walked = rig_survey_walked(rig_status, RIG_STATUS_COUNT);
    for (int i = 0; i < walked; i++)
    {
        for (const RigFlag &flag : rig_status[i].flags)
        {
            if (flag.bits_length > 0 && flag.param == param)
            {
                return 1;
            }
        }
    }
    return 0;
}

struct SurveyText
{
    char *text;
    int size;
    int used;
};

static void rig_survey_line(SurveyText *out, const char *format, ...)
{
    if (out->used >= out->size - 1)
    {
        return;
    }
    va_list args;
    va_start(args, format);
    int n = vsnprintf(out->text + out->used, (size_t)(out->size - out->used), format, args);
    va_end(args);
    if (n > 0)
    {
        out->used += n < out->size - out->used ? n : out->size - out->used - 1;
    }
}

int rig_survey(char *text, int size)
{
    SurveyText out = {text, size, 0};
    text[0] = 0;
    int init = rig_survey_walked(rig_init, RIG_INIT_COUNT);
    int status = rig_survey_walked(rig_status, RIG_STATUS_COUNT);
    rig_survey_line(&out, "init commands sent:    %d\n", init - (init > 0 && rig_init[0].code_length == 0));
    rig_survey_line(&out, "status commands polled: %d\n", status - (status > 0 && rig_status[0].code_length == 0));
    for (int p = pmFreq; p < RIG_TEXT_COUNT; p++)
    {
        rig_survey_line(&out, "read  %-12s %s\n", rig_param_names[p], rig_survey_reads(p) ? "yes" : "no");
    }
    for (int p = pmFreq; p <= pmFreqB; p++)
    {
        rig_survey_line(&out, "write %-12s %s\n", rig_param_names[p], rig_survey_writes(p) ? "yes" : "no");
    }
    rig_survey_line(&out, "settable:");
    for (int p = pmPitch; p < RIG_PARAM_COUNT; p++)
    {
        if (rig_write[p].code_length > 0)
        {
            rig_survey_line(&out, " %s", rig_param_names[p]);
        }
    }
    rig_survey_line(&out, "\nflags read:");
    for (int p = 0; p < RIG_PARAM_COUNT; p++)
    {
        if (rig_survey_flag_read(p))
        {
            rig_survey_line(&out, " %s", rig_param_names[p]);
        }
    }
    int tx_follows = rig_survey_reads(pmFreqA) && rig_survey_writes(pmFreqB);
    int rx_follows = rig_survey_reads(pmFreqB) && rig_survey_writes(pmFreqA);
    rig_survey_line(&out, "\nDoppler TX<-RX (VFO B follows A): %s\n", tx_follows ? "yes" : "no");
    rig_survey_line(&out, "Doppler RX<-TX (VFO A follows B): %s\n", rx_follows ? "yes" : "no");
    return tx_follows && rx_follows ? 0 : 1;
}

int rig_survey_verdict(char *text, int size)
{
    int read_a = rig_survey_reads(pmFreqA), read_b = rig_survey_reads(pmFreqB);
    int tx_follows = read_a && rig_survey_writes(pmFreqB);
    int rx_follows = read_b && rig_survey_writes(pmFreqA);
    if (tx_follows && rx_follows)
    {
        snprintf(text, (size_t)size, "Doppler tuning both ways: VFO B follows A, and A follows B");
        return 0;
    }
    if (tx_follows || rx_follows)
    {
        snprintf(text, (size_t)size, "Doppler tuning one way only: VFO %s", tx_follows ? "B follows A" : "A follows B");
        return 1;
    }
    if (!read_a && !read_b)
    {
        snprintf(text, (size_t)size, "%s: Doppler tuning needs pmFreqA and pmFreqB",
                 rig_survey_reads(pmFreq) ? "reads only pmFreq" : "reads no frequency");
    }
    else
    {
        snprintf(text, (size_t)size, "writes neither VFO it reads: Doppler tuning needs pmFreqA and pmFreqB");
    }
    return 2;
}
