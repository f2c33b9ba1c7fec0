// morvane-passlog: the summaries of the pass log, one row per pass, so an
// operator sees at a glance how well the antenna followed each pass.
//
//   morvane-passlog [--dir DIR] [FILE | YYYY-MM-DD]...
//
// With no file or date it reads every "tracking-*.csv" of the settings
// folder (or DIR), oldest first. A date names that day's file. Lines that
// are not summaries are passed over; a damaged summary is counted and told
// on the error output. A file that cannot be read is told too, and the exit
// status is then 1.
#include "core/pass_log.h"
#include "core/settings.h"

#include <QDir>
#include <QStringList>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

struct PasslogRun
{
    int passes;
    int damaged;
    int unreadable;
};

static void passlog_time_text(time_t t, char *text, int size)
{
    struct tm f;
    gmtime_r(&t, &f);
    strftime(text, (size_t)size, "%Y-%m-%d %H:%M:%S", &f);
}

static void passlog_duration(long seconds, char *text, int size)
{
    seconds = seconds < 0 ? 0 : seconds;
    snprintf(text, (size_t)size, "%ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

static void passlog_print(const PassSummary *s)
{
    char start[32], length[24], tracked[24], starts[24], switchings[24];
    passlog_time_text(s->start, start, sizeof start);
    passlog_duration((long)(s->end - s->start) + 1, length, sizeof length);
    passlog_duration(s->tracked, tracked, sizeof tracked);
    snprintf(starts, sizeof starts, "%d/%d", s->az_starts, s->el_starts);
    snprintf(switchings, sizeof switchings, "%d/%d", s->az_switchings, s->el_switchings);
    printf("%-19s  %8s  %-13s  %8s  %6.2f  %6.2f  %6.2f  %6.2f  %-9s  %-10s  %s\n", start, length, s->source, tracked,
           s->az_rms, s->az_max, s->el_rms, s->el_max, starts, switchings, s->quiet ? "on" : "off");
}

static void passlog_read(const char *path, PasslogRun *run)
{
    FILE *file = fopen(path, "r");
    if (!file)
    {
        fprintf(stderr, "morvane-passlog: cannot read %s: %s\n", path, strerror(errno));
        run->unreadable++;
        return;
    }
    char line[PASS_LINE_MAX + 2];
    int continuing = 0; // the rest of a line too long for the buffer
    while (fgets(line, sizeof line, file))
    {
        int whole = strchr(line, '\n') != nullptr || feof(file);
        int skip = continuing;
        continuing = !whole;
        if (skip || strncmp(line, "# pass,", 7) != 0)
        {
            continue;
        }
        PassSummary s;
        if (!whole || pass_summary_parse(line, &s) != 0)
        {
            run->damaged++;
            continue;
        }
        if (run->passes++ == 0)
        {
            printf("%-19s  %8s  %-13s  %8s  %6s  %6s  %6s  %6s  %-9s  %-10s  %s\n", "Pass start (UTC)", "Length",
                   "Source", "Tracked", "Az RMS", "Az max", "El RMS", "El max", "Starts", "Switchings", "Quiet");
        }
        passlog_print(&s);
    }
    fclose(file);
}

// A date stands for its day's file in the folder; anything else is a path.
static std::string passlog_path(const char *argument, const std::string &folder)
{
    int y, m, d;
    char rest;
    if (strlen(argument) == 10 && sscanf(argument, "%4d-%2d-%2d%c", &y, &m, &d, &rest) == 3)
    {
        return folder + "tracking-" + argument + ".csv";
    }
    return argument;
}

int main(int argc, char **argv)
{
    std::string folder = settings_directory();
    std::vector<std::string> paths;
    for (int i = 1; i < argc; i++)
    {
        if (strcmp(argv[i], "--dir") == 0 && i + 1 < argc)
        {
            folder = std::string(argv[++i]) + "/";
        }
        else if (argv[i][0] == '-')
        {
            fprintf(stderr, "usage: morvane-passlog [--dir DIR] [FILE | YYYY-MM-DD]...\n");
            return 2;
        }
        else
        {
            paths.push_back(argv[i]);
        }
    }
    for (std::string &p : paths)
    {
        p = passlog_path(p.c_str(), folder);
    }
    if (paths.empty())
    {
        QStringList files = QDir(QString::fromStdString(folder)).entryList({"tracking-*.csv"}, QDir::Files, QDir::Name);
        for (const QString &f : files)
        {
            paths.push_back(folder + f.toStdString());
        }
    }

    PasslogRun run = {};
    for (const std::string &p : paths)
    {
        passlog_read(p.c_str(), &run);
    }
    if (run.passes == 0)
    {
        printf("No pass in %s\n", paths.empty() ? folder.c_str() : "the files given");
    }
    if (run.damaged)
    {
        fprintf(stderr, "morvane-passlog: %d damaged summary lines skipped\n", run.damaged);
    }
    return run.unreadable ? 1 : 0;
}
