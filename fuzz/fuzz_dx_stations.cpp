// DxStations.txt as anyone may edit it: the input is the whole list, read as
// the program reads it at start. Every field of every station must stay a
// terminated text and the count within the table.
#include "fuzz_support.h"
#include "widgets/dx_stations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    dx_station_load(fuzz_scratch_file(data, size));
    if (dx_station_count < 0 || dx_station_count > DX_STATION_MAX)
    {
        fuzz_fail("dx_stations", "count out of range");
    }
    for (int i = 0; i < dx_station_count; i++)
    {
        const DxStationRecord *r = &dx_station_table[i];
        if (!fuzz_terminated(r->call, sizeof r->call) || !fuzz_terminated(r->locator, sizeof r->locator) ||
            !fuzz_terminated(r->location, sizeof r->location))
        {
            fuzz_fail("dx_stations", "field not terminated");
        }
    }
    return 0;
}
