#include "fuzz_support.h"

#include <QtGlobal>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

static char fuzz_home[64];
static char fuzz_file[96];

// Thousands of inputs a second each log a line; the report would drown.
static void fuzz_quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

void fuzz_setup(void)
{
    if (fuzz_home[0])
    {
        return;
    }
    snprintf(fuzz_home, sizeof fuzz_home, "/tmp/morvane-fuzz-XXXXXX");
    if (!mkdtemp(fuzz_home))
    {
        perror("mkdtemp");
        abort();
    }
    setenv("HOME", fuzz_home, 1);
    setlocale(LC_ALL, "C");
    snprintf(fuzz_file, sizeof fuzz_file, "%s/input", fuzz_home);
    qInstallMessageHandler(fuzz_quiet);
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
