// The benchmarks share one QApplication on the offscreen platform and a
// private HOME, like the tests.
#include "core/app.h"

#include <QApplication>
#include <benchmark/benchmark.h>
#include <cstdlib>

int main(int argc, char **argv)
{
    char home[] = "/tmp/morvane-bench-XXXXXX";
    if (mkdtemp(home))
    {
        setenv("HOME", home, 1);
    }
    if (!getenv("QT_QPA_PLATFORM"))
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    QApplication app(argc, argv);
    app_init_locale();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
