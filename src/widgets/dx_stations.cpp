#include "widgets/dx_stations.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstring>

DxStationRecord dx_station_table[DX_STATION_MAX];
int dx_station_count;

void dx_station_path(char *path, int size)
{
    snprintf(path, (size_t)size, "%s/DxStations.txt", QCoreApplication::applicationDirPath().toUtf8().constData());
}

// Copy at most limit characters of a field into out, stopping at a comma, and
// step over that comma. A field that fills its limit stops short of its comma,
// so the rest of it is read as the next field: lists written for this reader
// rely on that, and a shorter cut would shift their columns differently.
static const char *dx_field(const char *p, char *out, int limit, int stop_at_line_end)
{
    int n = 0;
    while (*p && *p != ',' && n < limit)
    {
        if (stop_at_line_end && (*p == '\r' || *p == '\n'))
        {
            break;
        }
        out[n++] = *p++;
    }
    out[n] = 0;
    if (*p == ',')
    {
        p++;
    }
    return p;
}

static const char *dx_skip_field(const char *p)
{
    while (*p && *p != ',')
    {
        p++;
    }
    if (*p == ',')
    {
        p++;
    }
    return p;
}

int dx_station_parse(const char *line, DxStationRecord *record)
{
    memset(record, 0, sizeof *record);
    const char *p = dx_field(line, record->call, DX_CALL_CHARS, 1);
    if (strcmp(record->call, "ZZZZZZ") == 0)
    {
        return 0;
    }
    p = dx_field(p, record->locator, DX_LOCATOR_CHARS, 1);
    for (int i = 0; i < 4; i++)
    {
        p = dx_skip_field(p);
    }
    // The location is read to the end of the line, line end and all, unless a
    // comma closes it; the lists shipped with the program end their lines
    // with one.
    dx_field(p, record->location, DX_LOCATION_CHARS, 0);
    return 1;
}

static int dx_line_skipped(const char *line)
{
    return line[0] == '/' || line[0] == 0 || line[0] == '\n' || line[0] == '\r';
}

int dx_station_load(const char *path)
{
    dx_station_count = 0;
    memset(dx_station_table, 0, sizeof dx_station_table);
    FILE *f = fopen(path, "r");
    if (!f)
    {
        return -1;
    }
    // A line longer than the buffer is read on as the next line.
    char line[DX_LINE_CHARS + 1];
    DxStationRecord record;
    while (dx_station_count < DX_STATION_MAX && fgets(line, sizeof line, f))
    {
        if (dx_line_skipped(line))
        {
            continue;
        }
        if (!dx_station_parse(line, &record))
        {
            break;
        }
        dx_station_table[dx_station_count++] = record;
    }
    fclose(f);
    return 0;
}
