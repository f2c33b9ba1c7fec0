// The main of every test program: a private HOME made before anything reads
// it, removed at the end, so no test touches the operator's settings.
#include "core/app.h"

#include <QApplication>
#include <QDir>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    char home[] = "/tmp/morvane-test-XXXXXX";
    if (!mkdtemp(home))
    {
        perror("mkdtemp");
        return 1;
    }
    setenv("HOME", home, 1);
    if (!getenv("QT_QPA_PLATFORM"))
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    testing::InitGoogleTest(&argc, argv);
    int status;
    {
        QApplication app(argc, argv);
        app_init_locale();
        status = RUN_ALL_TESTS();
    }
    QDir(QString::fromUtf8(home)).removeRecursively();
    return status;
}
