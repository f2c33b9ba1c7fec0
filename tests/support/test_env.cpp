#include "support/test_env.h"

#include "bus/encoders.h"
#include "bus/position.h"
#include "bus/sei_link.h"
#include "core/clock.h"
#include "core/drive.h"
#include "core/pass_log.h"
#include "core/settings.h"
#include "core/state.h"
#include "remote/psk_reporter.h"
#include "remote/remote_services.h"
#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "support/panel_record.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>

const char *test_home(void)
{
    return getenv("HOME");
}

void test_clear_settings(void)
{
    QDir(QString::fromUtf8(settings_directory())).removeRecursively();
}

void test_reset_state(void)
{
    state_reset();
    memset(encoders, 0, sizeof encoders);
    panel_record_start();
    clock_reset();
    sei_link_reset();
    position_reset();
    rig_reset();
    rig_files_set_folder(nullptr);
    remote_reset();
    psk_reset();
    // A test never opens a listener on the wired adapter: everything stays on
    // the loopback.
    remote_adapter_hint[0] = 0;
    drive_set_bus(nullptr);
    pass_log_reset();
}

std::string test_read_file(const std::string &path)
{
    std::string text;
    FILE *f = fopen(path.c_str(), "rb");
    if (!f)
    {
        return text;
    }
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0)
    {
        text.append(buffer, n);
    }
    fclose(f);
    return text;
}
