// morvane-rig: try a rig file before going on the air, with the station's
// own engine.
//
//   morvane-rig --survey FILE
//       which parameters the file lets us read and write, and whether Doppler
//       tuning can follow each way (exit 0 only when both ways work);
//   morvane-rig --port P --rig FILE --vfo-mode 0|1|2 --correction HZ [--debug 0|1] [--baud RATE]
//       open the port, load the file, send its INIT commands once, then run
//       the rig group every 150 ms with that fixed correction until SIGTERM or
//       SIGINT, printing both frequencies. vfo-mode 1: VFO B (TX) follows A
//       (RX); 2: A follows B; 0: read only.
//
// A FILE with no '/' that is not in the current folder is looked for in
// "OmniRigFiles" beside the program. The port runs 8N1 at 9600 unless --baud
// says otherwise; --debug 1 writes the engine's log to OmniRigDebug.log in the
// station's settings folder.
#include "core/app.h"
#include "core/clock.h"
#include "core/settings.h"
#include "core/state.h"
#include "rig/doppler.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rig/rig_survey.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static volatile sig_atomic_t rig_tool_quit;

static void rig_tool_on_signal(int)
{
    rig_tool_quit = 1;
}

static int rig_tool_usage(void)
{
    fprintf(stderr, "usage: morvane-rig --survey FILE\n"
                    "       morvane-rig --port P --rig FILE --vfo-mode 0|1|2 --correction HZ [--debug 0|1] "
                    "[--baud RATE]\n");
    return 2;
}

static void rig_tool_load(const char *file, int debug)
{
    if (!strchr(file, '/') && !QFileInfo::exists(QString::fromUtf8(file)))
    {
        LoadOmniRigFile(file, debug);
        return;
    }
    rig_load_path(file, debug);
}

static int rig_tool_survey(const char *file)
{
    rig_tool_load(file, 0);
    char text[2048];
    int status = rig_survey(text, sizeof text);
    char verdict[160];
    rig_survey_verdict(verdict, sizeof verdict);
    printf("%s\n%s%s\n", file, text, verdict);
    return status;
}

static int rig_tool_baud_row(int rate)
{
    static const int rates[8] = {1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600};
    for (int row = 0; row < 8; row++)
    {
        if (rates[row] == rate)
        {
            return row;
        }
    }
    return 3;
}

static int rig_tool_run(const char *port, const char *file, int vfo_mode, double correction, int debug, int baud)
{
    text_copy(rig_link.PortName, sizeof rig_link.PortName, port);
    rig_link.BaudRate = rig_tool_baud_row(baud);
    rig_link.DataBits = 1;
    if (serial_open(&rig_link) != 0)
    {
        fprintf(stderr, "morvane-rig: %s\n", serial_failure());
        return 1;
    }
    rig_tool_load(file, debug);
    rig_send_init();
    if (debug)
    {
        char path[600];
        settings_path("OmniRigDebug.log", path, sizeof path);
        fprintf(stderr, "morvane-rig: engine log in %s\n", path);
    }

    struct sigaction action = {};
    action.sa_handler = rig_tool_on_signal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);

    int64_t next = clock_monotonic_ms();
    while (!rig_tool_quit)
    {
        rig_poll_status();
        doppler_follow(vfo_mode, correction);
        rig_run_until_idle();
        if (rig_not_answering())
        {
            fprintf(stderr, "morvane-rig: radio not answering on %s\n", port);
            break;
        }
        printf("RX %12.5f TX %12.5f\n", rx_frequency_hz / 1000000.0, tx_frequency_hz / 1000000.0);
        fflush(stdout);
        next += 150;
        int64_t wait = next - clock_monotonic_ms();
        if (wait > 0)
        {
            sys_sleep_ms((int)wait);
        }
        else
        {
            next = clock_monotonic_ms();
        }
    }
    serial_close(&rig_link);
    return 0;
}

int main(int argc, char **argv)
{
    const char *survey = nullptr, *port = nullptr, *file = nullptr;
    int vfo_mode = -1, debug = 0, baud = 9600;
    double correction = 0.0;
    int have_correction = 0;
    for (int i = 1; i < argc; i++)
    {
        const char *value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (!value)
        {
            return rig_tool_usage();
        }
        if (strcmp(argv[i], "--survey") == 0)
        {
            survey = value;
        }
        else if (strcmp(argv[i], "--port") == 0)
        {
            port = value;
        }
        else if (strcmp(argv[i], "--rig") == 0)
        {
            file = value;
        }
        else if (strcmp(argv[i], "--vfo-mode") == 0)
        {
            vfo_mode = atoi(value);
        }
        else if (strcmp(argv[i], "--correction") == 0)
        {
            correction = atof(value);
            have_correction = 1;
        }
        else if (strcmp(argv[i], "--debug") == 0)
        {
            debug = atoi(value);
        }
        else if (strcmp(argv[i], "--baud") == 0)
        {
            baud = atoi(value);
        }
        else
        {
            return rig_tool_usage();
        }
        i++;
    }
    QCoreApplication app(argc, argv);
    app_init_locale();
    if (survey)
    {
        return rig_tool_survey(survey);
    }
    if (!port || !file || vfo_mode < 0 || vfo_mode > 2 || !have_correction)
    {
        return rig_tool_usage();
    }
    return rig_tool_run(port, file, vfo_mode, correction, debug, baud);
}
