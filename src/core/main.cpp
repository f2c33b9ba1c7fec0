#include "core/app.h"
#include "core/mainwindow.h"

#include <QApplication>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app_init_locale();

    int instance = argc > 1 ? atoi(argv[1]) : 0;
    MainWindow window(instance);
    window.show();
    app_close_on_signals(&window);
    return app.exec();
}
