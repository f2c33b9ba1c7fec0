// morvane-shot: render the station's window and dialogs to PNG files, with no
// display, so anyone can look at the panel. Beside each picture goes a text
// file of its named controls (name, x, y, width, height), for reviewing touch
// targets on an 800x480 panel.
//
//   morvane-shot [--run SECONDS] [--home DIR] [--utc "YYYY-MM-DD hh:mm:ss"]
//                [--set SECTION.KEY=VALUE]... [--press NAME]... [DIR]
//
// --run lets the panel's own cycle run that long before the picture is taken;
// --home uses that folder as the home directory (its settings are read and,
// when the window closes, written); by default a fresh temporary one is used,
// so the operator's own settings are never touched. --utc stops the clock at
// that instant for every picture, so the sky map can be laid beside an
// ephemeris. --set writes a key into the INI file before the window reads it
// (HOME_DATA.Grid=JO62sm, OVERLAYS.MapOffset=6); DX.Grid=FN31pr makes a DX
// station, which has no key of its own. --press NAME presses the panel's
// control of that name after the run, in the order given (autoButton,
// parkButton, AzManualButton, ...); pressing panelSlider turns the dial
// stacks to their next page. Each press gets half a second of the cycle.
#include "astro/sources_dialog.h"
#include "bus/calibration_dialog.h"
#include "bus/alerts_dialog.h"
#include "bus/encoder_dialog.h"
#include "bus/weather_dialog.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "sim/pty_server.h"
#include "core/about_dialog.h"
#include "core/antenna_dialog.h"
#include "core/mainwindow.h"
#include "core/state.h"
#include "remote/easycomm_dialog.h"
#include "rig/rig_dialog.h"
#include "skymap/frequency_dialog.h"
#include "skymap/overlays_dialog.h"
#include "skymap/skymap_dialog.h"

#include "core/app.h"
#include "core/clock.h"
#include "core/ini_file.h"
#include "core/settings.h"
#include "widgets/locator.h"
#include "widgets/dx_station_dialog.h"
#include "widgets/home_station_dialog.h"
#include "widgets/keyboard_dialog.h"
#include "widgets/keypad_dialog.h"
#include "widgets/time_config_dialog.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QSlider>
#include <QThread>
#include <QWidget>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

static int shot_controls(QWidget *top, const QString &path)
{
    FILE *f = fopen(path.toUtf8().constData(), "w");
    if (!f)
    {
        return -1;
    }
    const QList<QWidget *> children = top->findChildren<QWidget *>();
    for (QWidget *w : children)
    {
        QString name = w->objectName();
        if (name.isEmpty() || name.startsWith("qt_") || !w->isVisibleTo(top))
        {
            continue;
        }
        QPoint at = w->mapTo(top, QPoint(0, 0));
        fprintf(f, "%s %d %d %d %d\n", name.toUtf8().constData(), at.x(), at.y(), w->width(), w->height());
    }
    fclose(f);
    return 0;
}

static void shot_settle(int ms)
{
    QElapsedTimer clock;
    clock.start();
    do
    {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    } while (clock.elapsed() < ms);
}

static int shot_write(QWidget *w, const QString &dir, const char *name)
{
    QString base = dir + "/" + name;
    if (!w->grab().save(base + ".png"))
    {
        fprintf(stderr, "morvane-shot: cannot write %s.png\n", base.toUtf8().constData());
        return 1;
    }
    shot_controls(w, base + ".txt");
    printf("%s.png\n", base.toUtf8().constData());
    return 0;
}

static int shot_dialog(QDialog *dialog, const QString &dir, const char *name)
{
    dialog->show();
    shot_settle(100);
    int status = shot_write(dialog, dir, name);
    dialog->hide();
    return status;
}

// The weather pages of the dial stacks, each after the cycle has shown it.
static int shot_dial_pages(MainWindow *window, const QString &dir)
{
    static const char *const names[3] = {"panel_wind", "panel_temperature", "panel_altimeter"};
    QSlider *slider = window->findChild<QSlider *>("panelSlider");
    int status = 0;
    for (int page = 1; page <= 3 && slider; page++)
    {
        slider->setValue(page);
        shot_settle(1200);
        status |= shot_write(window, dir, names[page - 1]);
    }
    if (slider)
    {
        slider->setValue(0);
        shot_settle(100);
    }
    return status;
}

// Press a named control of the window as a finger would: a button is
// clicked, a slider moves one step. 0, or -1 when no such control exists.
static int shot_press(QWidget *window, const char *name)
{
    QWidget *w = window->findChild<QWidget *>(QString::fromUtf8(name));
    if (QAbstractButton *button = qobject_cast<QAbstractButton *>(w))
    {
        button->click();
    }
    else if (QAbstractSlider *slider = qobject_cast<QAbstractSlider *>(w))
    {
        slider->setValue(slider->value() < slider->maximum() ? slider->value() + 1 : slider->minimum());
    }
    else
    {
        fprintf(stderr, "morvane-shot: no control named \"%s\" to press\n", name);
        return -1;
    }
    shot_settle(500);
    return 0;
}

// A fresh home sends no self report, whatever station --set makes, and gets
// the simulated station on its bus, with the encoders at addresses 0 and 1,
// so the bus dialogs show devices. 1 with the simulator, 0 without it.
static int shot_fresh_home(SimServer *sim)
{
    char path[1024];
    static IniFile ini;
    QDir().mkpath(QString::fromUtf8(settings_directory()));
    settings_path("Morvane.ini", path, sizeof path);
    ini_read(path, &ini);
    ini_set_int(&ini, "REPORT", "Active", 0);
    sim_station_init(&sim->station);
    int simulated = sim_server_start(sim, nullptr) == 0;
    if (simulated)
    {
        ini_set(&ini, "SEI", "PortName", sim->device);
        ini_set_int(&ini, "ANTENNA", "AZ_Addr", 0);
        ini_set_int(&ini, "ANTENNA", "EL_Addr", 1);
        // The simulated weather station at 4, every sensor polled.
        ini_set_int(&ini, "WXSTATION", "WxStationAddr", 4);
        for (const char *sensor : {"WindSpeed", "WindDirection", "Thermometer", "Barometer", "Altimeter"})
        {
            ini_set_bool(&ini, "WXSTATION", sensor, 1);
        }
    }
    ini_write(path, &ini);
    return simulated;
}

// "YYYY-MM-DD hh:mm:ss" as UTC seconds, or -1.
static time_t shot_parse_utc(const char *text)
{
    QString s = QString::fromLatin1(text);
    QDate date = QDate::fromString(s.left(10), "yyyy-MM-dd");
    QTime time = QTime::fromString(s.mid(11), "hh:mm:ss");
    if (s.length() != 19 || s[10] != ' ' || !date.isValid() || !time.isValid())
    {
        return -1;
    }
    return (time_t)QDateTime(date, time, Qt::UTC).toSecsSinceEpoch();
}

// SECTION.KEY=VALUE into the home's INI file; DX.Grid into the DX station.
static int shot_apply_setting(const char *setting, int dx_only)
{
    const char *dot = strchr(setting, '.');
    const char *equals = strchr(setting, '=');
    if (!dot || !equals || dot > equals || dot == setting || equals == dot + 1)
    {
        fprintf(stderr, "morvane-shot: --set wants SECTION.KEY=VALUE, not \"%s\"\n", setting);
        return -1;
    }
    std::string section(setting, dot), key(dot + 1, equals);
    if (section == "DX")
    {
        double latitude, longitude;
        if (key != "Grid" || grid_to_position(equals + 1, &latitude, &longitude) != 0)
        {
            fprintf(stderr, "morvane-shot: DX takes only Grid=LOCATOR, not \"%s\"\n", setting);
            return -1;
        }
        if (dx_only)
        {
            text_copy(dx_grid, sizeof dx_grid, equals + 1);
            dx_latitude = latitude;
            dx_longitude = longitude;
            dx_station_valid = 1;
        }
        return 0;
    }
    if (!dx_only)
    {
        char path[1024];
        IniFile ini;
        settings_path(ini_file_name, path, sizeof path);
        ini_read(path, &ini);
        ini_set(&ini, section.c_str(), key.c_str(), equals + 1);
        if (ini_write(path, &ini) != 0)
        {
            fprintf(stderr, "morvane-shot: cannot write %s\n", path);
            return -1;
        }
    }
    return 0;
}

// The map, its configuration and the frequency dialog, once the map's first
// tick has drawn the picture.
static int shot_sky_map(QWidget *parent, const QString &out)
{
    SkyMapDialog map(parent);
    map.show();
    for (int i = 0; i < 200 && map.map_draws == 0; i++)
    {
        shot_settle(10);
    }
    int status = shot_write(&map, out, "skymap");
    OverlaysDialog configuration(&map);
    status |= shot_dialog(&configuration, out, "skymap_config");
    FrequencyDialog frequency(&map);
    status |= shot_dialog(&frequency, out, "frequency");
    map.hide();
    return status;
}

int main(int argc, char *argv[])
{
    int run_seconds = 0;
    const char *home = nullptr;
    const char *dir = ".";
    std::vector<const char *> sets;
    std::vector<const char *> presses;
    for (int i = 1; i < argc; i++)
    {
        if (strcmp(argv[i], "--run") == 0 && i + 1 < argc)
        {
            run_seconds = atoi(argv[++i]);
        }
        else if (strcmp(argv[i], "--home") == 0 && i + 1 < argc)
        {
            home = argv[++i];
        }
        else if (strcmp(argv[i], "--utc") == 0 && i + 1 < argc)
        {
            time_t utc = shot_parse_utc(argv[++i]);
            if (utc < 0)
            {
                fprintf(stderr, "morvane-shot: malformed time \"%s\" (want \"YYYY-MM-DD hh:mm:ss\")\n", argv[i]);
                return 2;
            }
            clock_freeze(utc);
        }
        else if (strcmp(argv[i], "--set") == 0 && i + 1 < argc)
        {
            sets.push_back(argv[++i]);
        }
        else if (strcmp(argv[i], "--press") == 0 && i + 1 < argc)
        {
            presses.push_back(argv[++i]);
        }
        else if (argv[i][0] == '-')
        {
            fprintf(stderr, "usage: morvane-shot [--run SECONDS] [--home DIR] [--utc \"YYYY-MM-DD hh:mm:ss\"]\n"
                            "                    [--set SECTION.KEY=VALUE]... [--press NAME]... [DIR]\n");
            return 2;
        }
        else
        {
            dir = argv[i];
        }
    }
    char temp_home[] = "/tmp/morvane-shot-XXXXXX";
    if (!home)
    {
        home = mkdtemp(temp_home);
        if (!home)
        {
            perror("morvane-shot: mkdtemp");
            return 1;
        }
    }
    setenv("HOME", home, 1);
    if (!getenv("QT_QPA_PLATFORM"))
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    QApplication app(argc, argv);
    app_init_locale();
    if (!QDir().mkpath(QString::fromUtf8(dir)))
    {
        fprintf(stderr, "morvane-shot: cannot make %s\n", dir);
        return 1;
    }
    QString out = QDir(QString::fromUtf8(dir)).absolutePath();

    int status = 0;
    static SimServer sim;
    int simulated = home == temp_home && shot_fresh_home(&sim);
    for (const char *setting : sets)
    {
        if (shot_apply_setting(setting, 0) != 0)
        {
            if (simulated)
            {
                sim_server_stop(&sim);
            }
            return 2;
        }
    }
    {
        MainWindow window(0);
        for (const char *setting : sets)
        {
            shot_apply_setting(setting, 1);
        }
        window.show();
        shot_settle(run_seconds > 0 ? run_seconds * 1000 : 300);
        for (const char *name : presses)
        {
            status |= shot_press(&window, name) != 0;
        }
        status |= shot_write(&window, out, "panel");
        status |= shot_dial_pages(&window, out);

        AboutDialog about(&window);
        status |= shot_dialog(&about, out, "about");

        SourcesDialog sources(&window);
        status |= shot_dialog(&sources, out, "sources");

        KeypadDialog keypad;
        keypad.load("1296.05");
        status |= shot_dialog(&keypad, out, "keypad");

        KeyboardDialog keyboard;
        keyboard.load("Callsign", "DL7");
        status |= shot_dialog(&keyboard, out, "keyboard");
        keyboard.KeyUpArrow_Pressed();
        status |= shot_dialog(&keyboard, out, "keyboard_shifted");
        keyboard.KeyMode_Pressed();
        status |= shot_dialog(&keyboard, out, "keyboard_symbols");

        // A fresh home has no station yet; show the dialog as an operator
        // would see it filled in. A given home, or a --set one, keeps its own.
        if (home == temp_home && !settings.Callsign[0] && !settings.Grid[0])
        {
            text_copy(settings.Callsign, sizeof settings.Callsign, "DL7APV");
            text_copy(settings.Grid, sizeof settings.Grid, "JO62sm");
            text_copy(settings.Location, sizeof settings.Location, "Berlin");
            settings.Frequency = 1296.0;
            settings.Latitude = 52.5;
            settings.Longitude = 13.5;
        }
        HomeStationDialog home_dialog(&window);
        status |= shot_dialog(&home_dialog, out, "home_station");

        DxStationDialog dx(&window);
        status |= shot_dialog(&dx, out, "dx_station");

        RigControlDialog rig(&window);
        status |= shot_dialog(&rig, out, "rig_control");

        EasyCommDialog easycomm_dialog(&window);
        status |= shot_dialog(&easycomm_dialog, out, "easycomm");

        AntennaDialog antenna(&window);
        status |= shot_dialog(&antenna, out, "antenna");

        status |= shot_sky_map(&window, out);

        TimeConfigDialog time_config(&window);
        status |= shot_dialog(&time_config, out, "time_config");

        window.timer->stop();
        EncoderDialog encoder(&window);
        encoder.EncoderScan();
        status |= shot_dialog(&encoder, out, "encoder_scan");
        encoder.EncoderClose();

        CalibrationDialog calibration(&window);
        status |= shot_dialog(&calibration, out, "calibration");

        WxConfigDialog weather_dialog(&window);
        status |= shot_dialog(&weather_dialog, out, "weather");

        AlertsConfigDialog alerts_dialog(&window);
        status |= shot_dialog(&alerts_dialog, out, "alerts");
    }
    if (simulated)
    {
        sim_server_stop(&sim);
    }
    if (home == temp_home)
    {
        QDir(QString::fromUtf8(temp_home)).removeRecursively();
    }
    return status;
}
