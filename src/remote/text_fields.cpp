#include "remote/text_fields.h"

#include <cstring>

static int text_is_delimiter(const char *delimiters, char c)
{
    // strchr would also find the terminator of the delimiter list.
    return c != 0 && strchr(delimiters, c) != nullptr;
}

int text_tokens(char *work, int length, const char *delimiters, int *starts, int max)
{
    int end = (int)strnlen(work, length < 0 ? 0 : (size_t)length);
    int count = 0;
    int i = 0;
    while (count < max)
    {
        while (i < end && text_is_delimiter(delimiters, work[i]))
        {
            i++;
        }
        if (i >= end)
        {
            break;
        }
        starts[count++] = i;
        while (i < end && !text_is_delimiter(delimiters, work[i]))
        {
            i++;
        }
        if (i < end)
        {
            work[i++] = 0;
        }
    }
    return count;
}

void text_field_copy(char *field, const char *work, int start, int count)
{
    int n = count < 0 ? 0 : count > TEXT_FIELD_SIZE - 1 ? TEXT_FIELD_SIZE - 1 : count;
    memcpy(field, work + start, (size_t)n);
    field[n] = 0;
}
