// SIGTERM, SIGINT and SIGHUP close the window as a click on its close box
// would, so the shutdown sequence runs and no motor is left on.
#pragma once

class QWidget;

// Returns 0, or -1 when the signals could not be routed.
int app_close_on_signals(QWidget *window);
