#include "fuzz_support.h"

#include "core/clock.h"

#include <QtGlobal>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ftw.h>
#include <unistd.h>

static char fuzz_home[64];
static char fuzz_file[96];

// Thousands of inputs a second each log a line; the report would drown.
static void fuzz_quiet(QtMsgType, const QMessageLogContext &, const QString &) {}
static void fuzz_no_sleep(int) {}

// In memory where the system offers it: the readers that take a path open
// their file afresh for every input.
static int fuzz_make_home(const char *base)
{
    snprintf(fuzz_home, sizeof fuzz_home, "%s/morvane-fuzz-XXXXXX", base);
    return mkdtemp(fuzz_home) ? 0 : -1;
}

static int fuzz_remove_entry(const char *path, const struct stat *, int, struct FTW *)
{
    return remove(path);
}

static void fuzz_remove_home(void)
{
    nftw(fuzz_home, fuzz_remove_entry, 8, FTW_DEPTH | FTW_PHYS);
}

void fuzz_setup(void)
{
    if (fuzz_home[0])
    {
        return;
    }
    // scripts/fuzz names a folder of its own: the jobs it ends never reach
    // their clean-up, and it removes what they leave.
    const char *base = getenv("MORVANE_FUZZ_TMP");
    if ((!base || fuzz_make_home(base) != 0) && fuzz_make_home("/dev/shm") != 0 && fuzz_make_home("/tmp") != 0)
    {
        perror("mkdtemp");
        abort();
    }
    atexit(fuzz_remove_home);
    setenv("HOME", fuzz_home, 1);
    setlocale(LC_ALL, "C");
    snprintf(fuzz_file, sizeof fuzz_file, "%s/input", fuzz_home);
    qInstallMessageHandler(fuzz_quiet);
    // The drive's brake and settle waits would cost real seconds per input.
    clock_set_sleep_hook(fuzz_no_sleep);
}

const char *fuzz_scratch_file(const uint8_t *data, size_t size)
{
    FILE *f = fopen(fuzz_file, "wb");
    if (!f || fwrite(data, 1, size, f) != size || fclose(f) != 0)
    {
        perror(fuzz_file);
        abort();
    }
    return fuzz_file;
}

void fuzz_fail(const char *target, const char *why)
{
    fprintf(stderr, "%s: %s\n", target, why);
    abort();
}

int fuzz_terminated(const char *text, size_t size)
{
    return strnlen(text, size) < size;
}
