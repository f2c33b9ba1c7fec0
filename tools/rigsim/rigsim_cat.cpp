#include "rigsim_cat.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int rigsim_cat_feed(RigsimCatStream *stream, char byte)
{
    // Line ends between commands are tolerated, as a terminal would send them.
    if (stream->length == 0 && (byte == '\r' || byte == '\n' || byte == ' '))
    {
        return 0;
    }
    if (stream->length >= (int)sizeof stream->command - 1)
    {
        stream->length = 0;
    }
    stream->command[stream->length++] = byte;
    if (byte != ';')
    {
        return 0;
    }
    stream->command[stream->length] = 0;
    int length = stream->length;
    stream->length = 0;
    return length;
}

static int rigsim_all_digits(const char *text, int length)
{
    for (int i = 0; i < length; i++)
    {
        if (!isdigit((unsigned char)text[i]))
        {
            return 0;
        }
    }
    return length > 0;
}

// IF: the radio's whole status in 38 characters.
// IF ffffffffff f ssss rrrrrr R X mmm T M V S P t tt h ;
//    frequency    step offset  rit xit channel tx mode vfo scan split tone number shift
static int rigsim_cat_status(const RigsimRadio *radio, char *reply, int size)
{
    // The CAT radio keeps its mode in Kenwood's numbers: 1 LSB, 2 USB, 3 CW...
    int mode = radio->mode >= 0 && radio->mode <= 9 ? '0' + radio->mode : '3';
    return snprintf(reply, (size_t)size, "IF%011lld%4s%+06d%c%c%03d%c%c%c%c%c%c%02d%c;",
                    (long long)radio->vfo[radio->selected], "    ", 0, '0', '0', 0, radio->transmit ? '1' : '0', mode,
                    radio->selected ? '1' : '0', '0', radio->split ? '1' : '0', '0', 0, '0');
}

int rigsim_cat_reply(RigsimRadio *radio, const char *command, char *reply, int size)
{
    int length = (int)strlen(command);
    if (length < 3 || command[length - 1] != ';')
    {
        return snprintf(reply, (size_t)size, "?;");
    }
    char name[3] = {(char)toupper((unsigned char)command[0]), (char)toupper((unsigned char)command[1]), 0};
    const char *params = command + 2;
    int n = length - 3;
    if ((strcmp(name, "FA") == 0 || strcmp(name, "FB") == 0))
    {
        int vfo = name[1] == 'B';
        if (n == 0)
        {
            return snprintf(reply, (size_t)size, "%s%011lld;", name, (long long)radio->vfo[vfo]);
        }
        if (n == 11 && rigsim_all_digits(params, n))
        {
            radio->vfo[vfo] = atoll(params);
            return 0;
        }
    }
    else if (strcmp(name, "IF") == 0 && n == 0)
    {
        return rigsim_cat_status(radio, reply, size);
    }
    else if (strcmp(name, "ID") == 0 && n == 0)
    {
        return snprintf(reply, (size_t)size, "ID019;");
    }
    else if (strcmp(name, "FR") == 0 || strcmp(name, "FT") == 0)
    {
        if (n == 0)
        {
            return snprintf(reply, (size_t)size, "%s%d;", name, radio->selected);
        }
        if (n == 1 && (params[0] == '0' || params[0] == '1'))
        {
            radio->selected = name[1] == 'R' ? params[0] - '0' : radio->selected;
            return 0;
        }
    }
    else if (strcmp(name, "MD") == 0)
    {
        if (n == 0)
        {
            return snprintf(reply, (size_t)size, "MD%d;", radio->mode);
        }
        if (n == 1 && isdigit((unsigned char)params[0]))
        {
            radio->mode = params[0] - '0';
            return 0;
        }
    }
    else if ((strcmp(name, "TX") == 0 || strcmp(name, "RX") == 0) && n <= 1)
    {
        radio->transmit = name[0] == 'T';
        return 0;
    }
    else if (strcmp(name, "AI") == 0 || strcmp(name, "RT") == 0 || strcmp(name, "XT") == 0 || strcmp(name, "RC") == 0)
    {
        if (n == 0 && name[0] == 'A')
        {
            return snprintf(reply, (size_t)size, "AI0;");
        }
        return 0;
    }
    return snprintf(reply, (size_t)size, "?;");
}
