// morvane-astro: the station's ephemeris on the command line, from the same
// engine as the panel, for operators and for checking our figures against
// other tools.
//
//   morvane-astro --lat D --lon D [--mhz F] [--utc "YYYY-MM-DD hh:mm:ss"] [--source N]
//   morvane-astro --csv --source N [--mask M]  < rows of utc,lat,lon,mhz
//
// --precise computes the Moon from the full lunar theory, as the station does
// with PreciseMoon on, for a station --height metres up (200 by default).
//
// The first prints a table of one source now (or at that UTC). The second
// reads rows from standard input, no header, and writes one header line and
// one row per input with every field of the source record, full precision.
// Each row is computed into a fresh record, so a row's figures never depend
// on the rows before it. Bad input stops with a one-line error and exit 1.
#include "astro/source.h"
#include "astro/source_names.h"
#include "core/clock.h"
#include "core/state.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <libnova/julian_day.h>

enum
{
    ASTRO_OK = 0,
    ASTRO_BAD_INPUT = 1,
    ASTRO_USAGE = 2
};

struct AstroOptions
{
    int csv;
    int precise;
    double height;
    int source;
    int mask;
    int have_lat, have_lon;
    double lat, lon, mhz;
    const char *utc; // null: now
};

static const char usage_text[] =
    "usage: morvane-astro --lat D --lon D [--mhz F] [--utc \"YYYY-MM-DD hh:mm:ss\"] [--source N]\n"
    "       morvane-astro --csv --source N [--mask M] < rows of utc,lat,lon,mhz\n"
    "       either with [--precise [--height METRES]]\n";

static int astro_days_in_month(int year, int month)
{
    static const int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

// "YYYY-MM-DD hh:mm:ss" and nothing else: every digit in its place (no signs
// or blanks that a scanf would let through), every field in its range.
static int astro_parse_utc(const char *text, struct tm *tm)
{
    static const char pattern[] = "dddd-dd-dd dd:dd:dd";
    for (int i = 0; pattern[i]; i++)
    {
        int digit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == 'd' ? !digit : text[i] != pattern[i])
        {
            return -1;
        }
    }
    if (text[sizeof pattern - 1] != 0)
    {
        return -1;
    }
    int year = atoi(text), month = atoi(text + 5), day = atoi(text + 8);
    int hour = atoi(text + 11), minute = atoi(text + 14), second = atoi(text + 17);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > astro_days_in_month(year, month) || hour > 23 ||
        minute > 59 || second > 59)
    {
        return -1;
    }
    memset(tm, 0, sizeof *tm);
    tm->tm_year = year - 1900;
    tm->tm_mon = month - 1;
    tm->tm_mday = day;
    tm->tm_hour = hour;
    tm->tm_min = minute;
    tm->tm_sec = second;
    return 0;
}

// A whole text that is one finite number.
static int astro_parse_number(const char *text, double *value)
{
    char *end;
    double v = strtod(text, &end);
    while (*end == ' ')
    {
        end++;
    }
    if (end == text || *end != 0 || !std::isfinite(v))
    {
        return -1;
    }
    *value = v;
    return 0;
}

static int astro_parse_int(const char *text, int low, int high, int *value)
{
    double v;
    if (astro_parse_number(text, &v) != 0 || v != floor(v) || v < low || v > high)
    {
        return -1;
    }
    *value = (int)v;
    return 0;
}

// The station's figures that our engine cannot use: it divides by the
// frequency, and the topocentric Moon needs a latitude on the globe.
static const char *astro_check_station(double lat, double lon, double mhz)
{
    if (!(lat >= -90.0 && lat <= 90.0))
    {
        return "latitude outside -90..90";
    }
    if (!(lon >= -180.0 && lon <= 360.0))
    {
        return "longitude outside -180..360";
    }
    if (!(mhz > 0.0))
    {
        return "frequency not above 0 MHz";
    }
    return nullptr;
}

static int astro_parse_options(int argc, char **argv, AstroOptions *o)
{
    memset(o, 0, sizeof *o);
    o->mhz = 1296.0;
    o->mask = SOURCE_MASK_ALL;
    o->height = 200.0;
    for (int i = 1; i < argc; i++)
    {
        const char *arg = argv[i];
        const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
        int bad = 0;
        if (strcmp(arg, "--csv") == 0 || strcmp(arg, "--precise") == 0)
        {
            *(arg[2] == 'c' ? &o->csv : &o->precise) = 1;
            continue;
        }
        if (!value)
        {
            fprintf(stderr, "morvane-astro: %s needs a value\n%s", arg, usage_text);
            return ASTRO_USAGE;
        }
        i++;
        if (strcmp(arg, "--lat") == 0)
        {
            bad = astro_parse_number(value, &o->lat);
            o->have_lat = 1;
        }
        else if (strcmp(arg, "--lon") == 0)
        {
            bad = astro_parse_number(value, &o->lon);
            o->have_lon = 1;
        }
        else if (strcmp(arg, "--mhz") == 0)
        {
            bad = astro_parse_number(value, &o->mhz);
        }
        else if (strcmp(arg, "--height") == 0)
        {
            bad = astro_parse_number(value, &o->height) || o->height < -500.0 || o->height > 9000.0;
        }
        else if (strcmp(arg, "--utc") == 0)
        {
            o->utc = value;
        }
        else if (strcmp(arg, "--source") == 0)
        {
            bad = astro_parse_int(value, 0, SOURCE_COUNT - 1, &o->source);
        }
        else if (strcmp(arg, "--mask") == 0)
        {
            bad = astro_parse_int(value, 0, 31, &o->mask);
        }
        else
        {
            fprintf(stderr, "morvane-astro: unknown option %s\n%s", arg, usage_text);
            return ASTRO_USAGE;
        }
        if (bad)
        {
            const char *what = strcmp(arg, "--source") == 0   ? " (a source is 0..26)"
                               : strcmp(arg, "--mask") == 0   ? " (a mask is 0..31)"
                               : strcmp(arg, "--height") == 0 ? " (a height is -500..9000 m)"
                                                              : "";
            fprintf(stderr, "morvane-astro: bad value for %s: \"%s\"%s\n", arg, value, what);
            return ASTRO_BAD_INPUT;
        }
    }
    return ASTRO_OK;
}

// The tool's station is the home station: the engine gives the precise Moon
// the configured height only there.
static void astro_calculate(const AstroOptions *o, const struct tm *tm, double lat, double lon, double mhz,
                            SourceRecord *record)
{
    settings.PreciseMoon = o->precise;
    settings.StationHeight = o->height;
    settings.Latitude = lat;
    settings.Longitude = lon;
    source_calculate(o->source, o->mask, tm, lat, lon, mhz, *record);
}

static void astro_date_text(double jd, char *text, int size)
{
    struct ln_date date;
    ln_get_date(jd, &date);
    snprintf(text, size, "%04d-%02d-%02d %02d:%02d:%02d", date.years, date.months, date.days, date.hours, date.minutes,
             (int)date.seconds);
}

static void astro_print_table(const AstroOptions *o, const struct tm *tm, const SourceRecord *r)
{
    char rise[32], set[32], transit[32];
    astro_date_text(r->rise, rise, sizeof rise);
    astro_date_text(r->set, set, sizeof set);
    astro_date_text(r->transit, transit, sizeof transit);
    printf("Source           %d %s\n", o->source, source_name(o->source));
    printf("UTC              %04d-%02d-%02d %02d:%02d:%02d\n", tm->tm_year + 1900, tm->tm_mon + 1, tm->tm_mday,
           tm->tm_hour, tm->tm_min, tm->tm_sec);
    printf("Station          %.6f %.6f, %.3f MHz\n", o->lat, o->lon, o->mhz);
    if (o->precise && o->source == SOURCE_MOON)
    {
        printf("Moon             ELP 2000-82B, station %.0f m up\n", o->height);
    }
    printf("Azimuth          %.3f deg\n", r->az);
    printf("Elevation        %.3f deg%s\n", r->el, r->above_horizon ? "" : " (below the horizon)");
    printf("Right ascension  %.5f h\n", r->ra);
    printf("Declination      %.4f deg\n", r->dec);
    printf("Hour angle       %.3f deg\n", r->hour_angle);
    printf("Doppler          %.0f Hz\n", r->doppler_hz);
    printf("Sky temperature  %.1f K\n", r->sky_temp);
    printf("Spatial offset   %.1f deg\n", r->spatial_offset);
    printf("Path loss        %.2f dB\n", r->path_loss);
    printf("Degradation      %.2f dB\n", r->degradation);
    if (o->source == SOURCE_MOON)
    {
        printf("Distance         %.0f km\n", r->distance * 1.5e8);
    }
    else
    {
        printf("Distance         %.6f AU\n", r->distance);
    }
    printf("Phase            %.3f\n", r->phase);
    printf("Sub-point        %.3f %.3f\n", r->sub_lat, r->sub_lng);
    printf("Rise             %s UTC\n", rise);
    printf("Transit          %s UTC\n", transit);
    printf("Set              %s UTC%s\n", set,
           r->rst_status ? (r->rst_status > 0 ? " (circumpolar)" : " (never rises)") : "");
}

static int astro_table(const AstroOptions *o)
{
    if (!o->have_lat || !o->have_lon)
    {
        fprintf(stderr, "morvane-astro: --lat and --lon are needed\n%s", usage_text);
        return ASTRO_USAGE;
    }
    const char *problem = astro_check_station(o->lat, o->lon, o->mhz);
    if (problem)
    {
        fprintf(stderr, "morvane-astro: %s\n", problem);
        return ASTRO_BAD_INPUT;
    }
    struct tm tm;
    if (o->utc && astro_parse_utc(o->utc, &tm) != 0)
    {
        fprintf(stderr, "morvane-astro: malformed time \"%s\" (want \"YYYY-MM-DD hh:mm:ss\")\n", o->utc);
        return ASTRO_BAD_INPUT;
    }
    if (!o->utc)
    {
        time_t now = clock_utc();
        gmtime_r(&now, &tm);
    }
    SourceRecord record = {};
    astro_calculate(o, &tm, o->lat, o->lon, o->mhz, &record);
    astro_print_table(o, &tm, &record);
    return ASTRO_OK;
}

static const char csv_header[] = "computed,above_horizon,az_tracking_enable,el_tracking_enable,az,el,doppler_hz,"
                                 "sky_temp,spatial_offset,degradation,path_loss,hour_angle,ra,dec,distance,phase,"
                                 "sub_lat,sub_lng,rise,set,transit,rst_status";

static void astro_print_csv_row(const SourceRecord *r)
{
    const double figures[] = {r->az,          r->el,        r->doppler_hz, r->sky_temp, r->spatial_offset,
                              r->degradation, r->path_loss, r->hour_angle, r->ra,       r->dec,
                              r->distance,    r->phase,     r->sub_lat,    r->sub_lng,  r->rise,
                              r->set,         r->transit};
    printf("%u,%u,%u,%u", r->computed, r->above_horizon, r->az_tracking_enable, r->el_tracking_enable);
    for (double figure : figures)
    {
        printf(",%.17g", figure);
    }
    printf(",%d\n", r->rst_status);
}

// Cut a line at its commas into at most four trimmed fields; returns the count.
static int astro_split(char *line, char *fields[4])
{
    int count = 0;
    char *p = line;
    while (count < 4)
    {
        while (*p == ' ' || *p == '\t')
        {
            p++;
        }
        fields[count++] = p;
        char *comma = strchr(p, ',');
        char *end = comma ? comma : p + strlen(p);
        while (end > p && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r' || end[-1] == '\n'))
        {
            end--;
        }
        if (!comma)
        {
            *end = 0;
            return count;
        }
        *end = 0;
        p = comma + 1;
    }
    return count + 1; // a fifth field: too many
}

// One input row into the record, or a text saying what is wrong with it.
static const char *astro_csv_row(char *line, const AstroOptions *o, SourceRecord *record)
{
    char *fields[4];
    if (astro_split(line, fields) != 4)
    {
        return "want four fields utc,lat,lon,mhz";
    }
    struct tm tm;
    double lat, lon, mhz;
    if (astro_parse_utc(fields[0], &tm) != 0)
    {
        return "malformed time (want \"YYYY-MM-DD hh:mm:ss\")";
    }
    if (astro_parse_number(fields[1], &lat) != 0 || astro_parse_number(fields[2], &lon) != 0 ||
        astro_parse_number(fields[3], &mhz) != 0)
    {
        return "a latitude, longitude or frequency that is no number";
    }
    const char *problem = astro_check_station(lat, lon, mhz);
    if (problem)
    {
        return problem;
    }
    *record = SourceRecord{};
    astro_calculate(o, &tm, lat, lon, mhz, record);
    return nullptr;
}

static int astro_csv(const AstroOptions *o)
{
    char line[512];
    int row = 0;
    printf("%s\n", csv_header);
    while (fgets(line, sizeof line, stdin))
    {
        row++;
        size_t length = strlen(line);
        if (length == sizeof line - 1 && line[length - 1] != '\n')
        {
            fflush(stdout);
            fprintf(stderr, "morvane-astro: row %d: line too long\n", row);
            return ASTRO_BAD_INPUT;
        }
        if (strspn(line, " \t\r\n") == length)
        {
            continue;
        }
        SourceRecord record;
        const char *problem = astro_csv_row(line, o, &record);
        if (problem)
        {
            fflush(stdout);
            fprintf(stderr, "morvane-astro: row %d: %s\n", row, problem);
            return ASTRO_BAD_INPUT;
        }
        astro_print_csv_row(&record);
    }
    return ASTRO_OK;
}

int main(int argc, char **argv)
{
    AstroOptions options;
    int status = astro_parse_options(argc, argv, &options);
    if (status != ASTRO_OK)
    {
        return status;
    }
    return options.csv ? astro_csv(&options) : astro_table(&options);
}
