// The DX station list: "DxStations.txt" beside the program, one station a
// line as call, locator, four fields nobody reads, location. A line without a
// call heads a group, and "ZZZZZZ" as a call ends the list.
#pragma once

enum
{
    DX_STATION_MAX = 1000,
    DX_CALL_CHARS = 12,
    DX_LOCATOR_CHARS = 9,
    DX_LOCATION_CHARS = 64,
    DX_LINE_CHARS = 255
};

// Each text field has room for its full width and a terminator.
struct DxStationRecord
{
    char call[DX_CALL_CHARS + 1];
    char locator[DX_LOCATOR_CHARS + 1];
    char location[DX_LOCATION_CHARS + 1];
    double latitude;
    double longitude;
};

extern DxStationRecord dx_station_table[DX_STATION_MAX];
extern int dx_station_count;

// The list's place: "DxStations.txt" in the program's folder.
void dx_station_path(char *path, int size);

// Read the list afresh into dx_station_table. Returns 0, or -1 with an empty
// table when the file can't be opened.
int dx_station_load(const char *path);

// Read one line (without the "/" and empty-line tests) into a record.
// Returns 1 for a record, 0 for the "ZZZZZZ" line that ends the list.
int dx_station_parse(const char *line, DxStationRecord *record);
