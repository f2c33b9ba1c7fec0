// What the program sets up around its window: the numeric locale and the
// signals that close it.
#pragma once

class QWidget;

// Qt adopts the desktop's locale when the application object is made; from
// then on printf("%f") would write "120,5" on a German desktop and atof would
// stop at the comma. Numbers on the panel, in the settings and on every link
// are written and read the C way: call this right after the application
// object exists.
void app_init_locale(void);

// SIGTERM, SIGINT and SIGHUP close the window as a click on its close box
// would, so the shutdown sequence runs and no motor is left on.
// Returns 0, or -1 when the signals could not be routed.
int app_close_on_signals(QWidget *window);
