#include "widgets/system_clock.h"

#include <QProcess>
#include <QStringList>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <unistd.h>

// `sudo -n` never asks for a password, so a station without the right fails
// at once instead of hanging on a prompt nobody sees; the bound covers a
// command that stalls all the same.
static const int clock_run_ms = 5000;

static int clock_fits(int value, int digits)
{
    int limit = digits == 4 ? 9999 : 99;
    return value >= 0 && value <= limit;
}

int clock_command_build(const DateTimeFields *f, int as_root, ClockCommand *command)
{
    if (!clock_fits(f->Month, 2) || !clock_fits(f->Day, 2) || !clock_fits(f->Hours, 2) ||
        !clock_fits(f->Minutes, 2) || !clock_fits(f->Year, 4) || !clock_fits(f->Seconds, 2))
    {
        return -1;
    }
    memset(command, 0, sizeof *command);
    static const char *const sudo[] = {"sudo", "-n"};
    if (!as_root)
    {
        for (const char *word : sudo)
        {
            snprintf(command->words[command->count++], CLOCK_WORD_SIZE, "%s", word);
        }
    }
    snprintf(command->words[command->count++], CLOCK_WORD_SIZE, "date");
    snprintf(command->words[command->count++], CLOCK_WORD_SIZE, "-u");
    snprintf(command->words[command->count++], CLOCK_WORD_SIZE, "%02d%02d%02d%02d%04d.%02d", f->Month, f->Day,
             f->Hours, f->Minutes, f->Year, f->Seconds);
    return 0;
}

static void clock_first_line(const QByteArray &text, char *why, int why_size)
{
    QByteArray line = text.trimmed();
    int end = line.indexOf('\n');
    snprintf(why, (size_t)why_size, "%s", (end < 0 ? line : line.left(end)).constData());
}

int clock_run_command(const ClockCommand *command, char *why, int why_size)
{
    QStringList arguments;
    for (int i = 1; i < command->count; i++)
    {
        arguments << QString::fromLatin1(command->words[i]);
    }
    QProcess process;
    process.start(QString::fromLatin1(command->words[0]), arguments);
    if (!process.waitForStarted(clock_run_ms))
    {
        snprintf(why, (size_t)why_size, "no command %s", command->words[0]);
        return -1;
    }
    if (!process.waitForFinished(clock_run_ms))
    {
        process.kill();
        process.waitForFinished(clock_run_ms);
        snprintf(why, (size_t)why_size, "%s did not finish", command->words[0]);
        return -1;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
    {
        clock_first_line(process.readAllStandardError(), why, why_size);
        if (!why[0])
        {
            snprintf(why, (size_t)why_size, "%s failed", command->words[0]);
        }
        return -1;
    }
    return 0;
}

static ClockRunner clock_runner = clock_run_command;

void clock_set_runner(ClockRunner runner)
{
    clock_runner = runner ? runner : clock_run_command;
}

int clock_set_system(const DateTimeFields *fields, char *why, int why_size)
{
    ClockCommand command;
    why[0] = 0;
    if (clock_command_build(fields, geteuid() == 0, &command) != 0)
    {
        snprintf(why, (size_t)why_size, "the date does not fit the command");
        return -1;
    }
    return clock_runner(&command, why, why_size);
}

int clock_network_time_active(const char *proc_root)
{
    // The kernel keeps 15 characters of a process name.
    static const char *const daemons[] = {"systemd-timesyn", "chronyd", "ntpd"};
    DIR *dir = opendir(proc_root);
    if (!dir)
    {
        return 0;
    }
    int found = 0;
    struct dirent *entry;
    while (!found && (entry = readdir(dir)) != nullptr)
    {
        if (!isdigit((unsigned char)entry->d_name[0]))
        {
            continue;
        }
        char path[512], name[32] = "";
        snprintf(path, sizeof path, "%s/%s/comm", proc_root, entry->d_name);
        FILE *f = fopen(path, "r");
        if (!f)
        {
            continue;
        }
        if (fgets(name, sizeof name, f))
        {
            name[strcspn(name, "\n")] = 0;
        }
        fclose(f);
        for (const char *daemon : daemons)
        {
            found |= strcmp(name, daemon) == 0;
        }
    }
    closedir(dir);
    return found;
}
