#include "core/pass_log.h"

#include "astro/source_names.h"
#include "core/clock.h"
#include "core/drive.h"
#include "core/settings.h"
#include "core/state.h"
#include "rig/doppler.h"

#include <QDir>
#include <QtGlobal>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static const char sample_header[] = "utc,source,target_az,target_el,antenna_az,antenna_el,error_az,error_el,"
                                    "motor_az,motor_el,doppler_hz,vfo_a_hz,vfo_b_hz\n";
static const char summary_header[] = "# pass summary: start_utc,end_utc,source,tracked_s,az_rms_deg,az_max_deg,"
                                     "el_rms_deg,el_max_deg,az_starts,el_starts,az_switchings,el_switchings,quiet\n";
static const char summary_tag[] = "# pass,";

struct PassState
{
    int active;
    time_t last; // the second of the last line
    int acquired;
    double az_sum, el_sum;
    PassSummary summary;
    int32_t closings[5], switchings[5]; // the drive's counts when the pass began
};

struct PassWriter
{
    char text[PASS_BUFFER_SIZE];
    int used;
    time_t first;    // the time of the first line waiting
    time_t retry_at; // after a failed write, the next try
    long lost;       // lines that found no room since the last good write
    int failing;     // the last write failed and has been reported
};

static PassState pass;
static PassWriter writer;

void pass_log_reset(void)
{
    pass = PassState();
    writer = PassWriter();
}

static void pass_utc_text(time_t t, char *text, int size)
{
    struct tm f;
    gmtime_r(&t, &f);
    snprintf(text, (size_t)size, "%04d-%02d-%02dT%02d:%02d:%02dZ", f.tm_year + 1900, f.tm_mon + 1, f.tm_mday, f.tm_hour,
             f.tm_min, f.tm_sec);
}

void pass_log_file_name(time_t t, char *name, int size)
{
    struct tm f;
    gmtime_r(&t, &f);
    snprintf(name, (size_t)size, "tracking-%04d-%02d-%02d.csv", f.tm_year + 1900, f.tm_mon + 1, f.tm_mday);
}

static int pass_write_all(int fd, const char *text, int length)
{
    while (length > 0)
    {
        ssize_t n = write(fd, text, (size_t)length);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            return -1;
        }
        text += n;
        length -= (int)n;
    }
    return 0;
}

// One append to the day's file: the two header lines first when the file is
// new, then the buffer, then the count of the lines that found no room.
static int pass_write_file(const char *path)
{
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
    {
        return -1;
    }
    struct stat st;
    int failed = fstat(fd, &st) != 0;
    if (!failed && st.st_size == 0)
    {
        failed = pass_write_all(fd, sample_header, (int)strlen(sample_header)) ||
                 pass_write_all(fd, summary_header, (int)strlen(summary_header));
    }
    failed = failed || pass_write_all(fd, writer.text, writer.used);
    // The lost lines came after the ones that waited in the buffer.
    if (!failed && writer.lost > 0)
    {
        char note[96];
        int n = snprintf(note, sizeof note, "# %ld lines lost: the log could not be written\n", writer.lost);
        failed = pass_write_all(fd, note, n);
    }
    int saved = errno;
    close(fd);
    errno = saved;
    return failed ? -1 : 0;
}

static void pass_flush(time_t now)
{
    if (writer.used == 0 || now < writer.retry_at)
    {
        return;
    }
    char name[48], path[600];
    pass_log_file_name(writer.first, name, sizeof name);
    settings_path(name, path, sizeof path);
    if (pass_write_file(path) != 0)
    {
        if (!writer.failing)
        {
            qWarning("Pass log: cannot write %s: %s", path, strerror(errno));
        }
        writer.failing = 1;
        writer.retry_at = now + PASS_FLUSH_SECONDS;
        return;
    }
    writer.used = 0;
    writer.lost = 0;
    writer.failing = 0;
    writer.retry_at = 0;
}

static int pass_same_day(time_t a, time_t b)
{
    return a / 86400 == b / 86400;
}

// Lines of one UTC day share the buffer; the first line of a new day sends
// the old day's lines to their own file.
static void pass_append(time_t t, const char *line)
{
    int length = (int)strlen(line);
    if (writer.used > 0 && !pass_same_day(writer.first, t))
    {
        pass_flush(t);
    }
    if (writer.used + length > (int)sizeof writer.text)
    {
        pass_flush(t);
    }
    if (writer.used + length > (int)sizeof writer.text || (writer.used > 0 && !pass_same_day(writer.first, t)))
    {
        writer.lost++;
        return;
    }
    if (writer.used == 0)
    {
        writer.first = t;
    }
    memcpy(writer.text + writer.used, line, (size_t)length);
    writer.used += length;
    if (t - writer.first >= PASS_FLUSH_SECONDS || writer.used > (int)sizeof writer.text / 2)
    {
        pass_flush(t);
    }
}

// The azimuth error the short way round: a target at 1 and the antenna at
// 359 are 2 degrees apart, not 358.
static double pass_wrap180(double angle)
{
    return angle - 360.0 * std::floor((angle + 180.0) / 360.0);
}

static const char *pass_motor(int direction, const char *lower, const char *higher, int speed, char *text, int size)
{
    static const char *const speeds[5] = {"", "slow", "fast", "manual", "jog"};
    if (direction == DIR_STOPPED)
    {
        return "stop";
    }
    snprintf(text, (size_t)size, "%s/%s", direction == DIR_LEFT ? lower : higher,
             speeds[speed >= 1 && speed <= 4 ? speed : 0]);
    return text;
}

static void pass_count(double az_error, double el_error)
{
    const SourceRecord *row = source_row(settings.TrackingSource);
    if (!row->above_horizon || !row->az_tracking_enable || !row->el_tracking_enable)
    {
        return;
    }
    if (!pass.acquired)
    {
        pass.acquired = fabs(az_error) <= settings.Azimuth_Start && fabs(el_error) <= settings.Elevation_Start;
    }
    if (!pass.acquired)
    {
        return;
    }
    PassSummary *s = &pass.summary;
    s->tracked++;
    pass.az_sum += az_error * az_error;
    pass.el_sum += el_error * el_error;
    s->az_max = fmax(s->az_max, fabs(az_error));
    s->el_max = fmax(s->el_max, fabs(el_error));
}

static void pass_sample(time_t now)
{
    double az_error = pass_wrap180(source_az - az_position);
    double el_error = source_el - el_position;
    pass_count(az_error, el_error);

    char utc[48], az_motor[24], el_motor[24], line[PASS_LINE_MAX];
    pass_utc_text(now, utc, sizeof utc);
    int n = snprintf(line, sizeof line, "%s,%s,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%s,%s,%.0f,%.0f,%.0f\n", utc,
                     source_name(settings.TrackingSource), source_az, source_el, az_position, el_position, az_error,
                     el_error, pass_motor(az_direction, "left", "right", az_speed_mode, az_motor, sizeof az_motor),
                     pass_motor(el_direction, "up", "down", el_speed_mode, el_motor, sizeof el_motor),
                     doppler_correction(), rx_frequency_hz, tx_frequency_hz);
    // A wild frequency from a confused radio may not run into the next line.
    if (n >= (int)sizeof line)
    {
        line[sizeof line - 2] = '\n';
    }
    pass_append(now, line);
}

static void pass_begin(time_t now)
{
    pass = PassState();
    pass.active = 1;
    pass.summary.start = now;
    pass.summary.quiet = settings.QuietMotion != 0;
    text_copy(pass.summary.source, sizeof pass.summary.source, source_name(settings.TrackingSource));
    memcpy(pass.closings, drive_relay_closings, sizeof pass.closings);
    memcpy(pass.switchings, drive_relay_switchings, sizeof pass.switchings);
}

static int pass_counted(const int32_t *now, const int32_t *then, int port_a, int port_b)
{
    return now[port_a] - then[port_a] + now[port_b] - then[port_b];
}

static void pass_end(void)
{
    PassSummary *s = &pass.summary;
    s->end = pass.last;
    s->az_rms = s->tracked ? sqrt(pass.az_sum / s->tracked) : 0;
    s->el_rms = s->tracked ? sqrt(pass.el_sum / s->tracked) : 0;
    s->az_starts = pass_counted(drive_relay_closings, pass.closings, DRIVE_PORT_LEFT, DRIVE_PORT_RIGHT);
    s->el_starts = pass_counted(drive_relay_closings, pass.closings, DRIVE_PORT_UP, DRIVE_PORT_DOWN);
    s->az_switchings = pass_counted(drive_relay_switchings, pass.switchings, DRIVE_PORT_LEFT, DRIVE_PORT_RIGHT);
    s->el_switchings = pass_counted(drive_relay_switchings, pass.switchings, DRIVE_PORT_UP, DRIVE_PORT_DOWN);
    char line[PASS_LINE_MAX];
    int n = pass_summary_format(s, line, sizeof line - 1);
    line[n] = '\n';
    line[n + 1] = 0;
    pass_append(pass.last, line);
    // The summary goes out now: the next pass may be days away.
    pass_flush(pass.last);
    pass.active = 0;
}

void pass_log_step(void)
{
    time_t now = clock_utc();
    if (!pass.active && !auto_tracking)
    {
        return;
    }
    if (!pass.active)
    {
        pass_begin(now);
    }
    else if (!auto_tracking)
    {
        pass_end();
        return;
    }
    if (now != pass.last)
    {
        pass_sample(now);
        pass.last = now;
    }
}

void pass_log_close(void)
{
    if (pass.active)
    {
        pass_end();
    }
    writer.retry_at = 0;
    pass_flush(clock_utc());
}

int pass_summary_format(const PassSummary *s, char *line, int size)
{
    char start[48], end[48];
    pass_utc_text(s->start, start, sizeof start);
    pass_utc_text(s->end, end, sizeof end);
    int n = snprintf(line, (size_t)size, "%s%s,%s,%s,%d,%.3f,%.3f,%.3f,%.3f,%d,%d,%d,%d,%d", summary_tag, start, end,
                     s->source, s->tracked, s->az_rms, s->az_max, s->el_rms, s->el_max, s->az_starts, s->el_starts,
                     s->az_switchings, s->el_switchings, s->quiet);
    return n < 0 ? 0 : n >= size ? size - 1 : n;
}

// "YYYY-MM-DDThh:mm:ssZ" with every digit in its place and every field in
// its range; anything else is not a time of ours.
static int pass_parse_utc(const char *text, time_t *t)
{
    static const char layout[] = "dddd-dd-ddTdd:dd:ddZ";
    if (strlen(text) != sizeof layout - 1)
    {
        return -1;
    }
    for (int i = 0; layout[i]; i++)
    {
        if (layout[i] == 'd' ? (text[i] < '0' || text[i] > '9') : text[i] != layout[i])
        {
            return -1;
        }
    }
    struct tm f = {};
    f.tm_year = atoi(text) - 1900;
    f.tm_mon = atoi(text + 5) - 1;
    f.tm_mday = atoi(text + 8);
    f.tm_hour = atoi(text + 11);
    f.tm_min = atoi(text + 14);
    f.tm_sec = atoi(text + 17);
    if (f.tm_mon < 0 || f.tm_mon > 11 || f.tm_mday < 1 || f.tm_mday > 31 || f.tm_hour > 23 || f.tm_min > 59 ||
        f.tm_sec > 60)
    {
        return -1;
    }
    *t = timegm(&f);
    return 0;
}

static int pass_parse_number(const char *text, double *value)
{
    char *end;
    errno = 0;
    *value = strtod(text, &end);
    return end == text || *end != 0 || errno != 0 || !std::isfinite(*value) ? -1 : 0;
}

static int pass_parse_count(const char *text, int *value)
{
    double d;
    if (pass_parse_number(text, &d) != 0 || d != std::floor(d) || d < 0 || d > 1e9)
    {
        return -1;
    }
    *value = (int)d;
    return 0;
}

int pass_summary_parse(const char *line, PassSummary *s)
{
    enum
    {
        FIELDS = 13
    };
    if (strncmp(line, summary_tag, sizeof summary_tag - 1) != 0)
    {
        return -1;
    }
    char copy[PASS_LINE_MAX];
    if (strlen(line) >= sizeof copy)
    {
        return -1;
    }
    text_copy(copy, sizeof copy, line + sizeof summary_tag - 1);
    copy[strcspn(copy, "\r\n")] = 0;
    int commas = 0;
    for (const char *at = copy; *at; at++)
    {
        commas += *at == ',';
    }
    if (commas != FIELDS - 1)
    {
        return -1;
    }
    char *field[FIELDS];
    field[0] = copy;
    for (int i = 1; i < FIELDS; i++)
    {
        char *comma = strchr(field[i - 1], ',');
        *comma = 0;
        field[i] = comma + 1;
    }
    if (strlen(field[2]) >= sizeof s->source)
    {
        return -1;
    }
    PassSummary r = {};
    double *degrees[4] = {&r.az_rms, &r.az_max, &r.el_rms, &r.el_max};
    int *counts[6] = {&r.tracked, &r.az_starts, &r.el_starts, &r.az_switchings, &r.el_switchings, &r.quiet};
    int failed =
        pass_parse_utc(field[0], &r.start) || pass_parse_utc(field[1], &r.end) || pass_parse_count(field[3], counts[0]);
    for (int i = 0; i < 4 && !failed; i++)
    {
        failed = pass_parse_number(field[4 + i], degrees[i]) || *degrees[i] < 0;
    }
    for (int i = 1; i < 6 && !failed; i++)
    {
        failed = pass_parse_count(field[7 + i], counts[i]);
    }
    if (failed)
    {
        return -1;
    }
    text_copy(r.source, sizeof r.source, field[2]);
    *s = r;
    return 0;
}
