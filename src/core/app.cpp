#include "core/app.h"

#include <QSocketNotifier>
#include <QWidget>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

void app_init_locale(void)
{
    setlocale(LC_NUMERIC, "C");
}

// A signal handler may do almost nothing; it writes one byte, and the event
// loop, which watches the other end, closes the window in its own time.
static int signal_pipe[2] = {-1, -1};

static void app_signal_handler(int)
{
    char byte = 1;
    ssize_t n = write(signal_pipe[1], &byte, 1);
    (void)n;
}

int app_close_on_signals(QWidget *window)
{
    if (signal_pipe[0] < 0 && socketpair(AF_UNIX, SOCK_STREAM, 0, signal_pipe) != 0)
    {
        return -1;
    }
    fcntl(signal_pipe[1], F_SETFL, O_NONBLOCK);
    QSocketNotifier *notifier = new QSocketNotifier(signal_pipe[0], QSocketNotifier::Read, window);
    QObject::connect(notifier, &QSocketNotifier::activated, window, [window]() {
        char bytes[16];
        ssize_t n = read(signal_pipe[0], bytes, sizeof bytes);
        (void)n;
        window->close();
    });

    struct sigaction action = {};
    action.sa_handler = app_signal_handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    const int quit_signals[3] = {SIGTERM, SIGINT, SIGHUP};
    for (int s : quit_signals)
    {
        if (sigaction(s, &action, nullptr) != 0)
        {
            return -1;
        }
    }
    return 0;
}
