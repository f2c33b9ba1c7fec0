#include "core/app_signals.h"
#include "core/mainwindow.h"

#include <QApplication>
#include <clocale>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // Qt takes the desktop's locale at start; numbers on the panel, in the
    // settings and on every link are written and read the C way.
    setlocale(LC_NUMERIC, "C");

    int instance = argc > 1 ? atoi(argv[1]) : 0;
    MainWindow window(instance);
    window.show();
    app_close_on_signals(&window);
    return app.exec();
}
