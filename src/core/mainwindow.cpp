#include "core/mainwindow.h"

#include "astro/sources_dialog.h"
#include "bus/alerts.h"
#include "bus/alerts_dialog.h"
#include "bus/calibration_dialog.h"
#include "bus/encoder_dialog.h"
#include "bus/position.h"
#include "bus/sei_commands.h"
#include "bus/sei_link.h"
#include "bus/remote_display.h"
#include "bus/weather.h"
#include "bus/weather_dialog.h"
#include "core/about_dialog.h"
#include "core/antenna_dialog.h"
#include "core/cycle.h"
#include "core/display.h"
#include "core/drive.h"
#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/panel_slots.h"
#include "core/pass_log.h"
#include "core/position_group.h"
#include "core/sensor_groups.h"
#include "core/settings.h"
#include "core/state.h"
#include "remote/easycomm.h"
#include "remote/easycomm_dialog.h"
#include "remote/psk_reporter.h"
#include "remote/pstrotator.h"
#include "remote/remote_services.h"
#include "remote/rotctl.h"
#include "rig/doppler.h"
#include "rig/rig_dialog.h"
#include "skymap/skymap_dialog.h"
#include "ui_mainwindow.h"
#include "widgets/compass.h"
#include "widgets/dx_station_dialog.h"
#include "widgets/home_station_dialog.h"
#include "widgets/locator.h"
#include "widgets/system_clock.h"
#include "widgets/time_config_dialog.h"

#include <QCoreApplication>
#include <QMenuBar>
#include <cstdio>

static void cycle_run_display(void *window, int source)
{
    static_cast<MainWindow *>(window)->DisplayGroup(source);
}

static void cycle_run_position(void *window, int source)
{
    static_cast<MainWindow *>(window)->PositionGroup(source);
}

static void cycle_run_adc(void *, int)
{
    adc_group();
}

static void cycle_run_frequency(void *, int)
{
    doppler_frequency_group();
}

static void cycle_run_easycomm(void *, int)
{
    easycomm_cycle_step();
}

static void cycle_run_rotctl(void *, int)
{
    rotctl_cycle_step();
}

static void cycle_run_pstrotator(void *, int)
{
    pst_cycle_step();
}

static void cycle_run_panel_page(void *window, int)
{
    static_cast<MainWindow *>(window)->PanelPageGroup();
}

MainWindow::MainWindow(int instance, QWidget *parent)
    : QMainWindow(parent), azimuth_dial(nullptr), elevation_dial(nullptr), wind_direction_dial(nullptr),
      wind_speed_dial(nullptr), temperature_dial(nullptr), barometer_dial(nullptr), altimeter_dial(nullptr),
      ui(new Ui::MainWindow), timer(new QTimer(this)), menu_bar(nullptr), menu_shown(0)
{
    ui->setupUi(this);

    char title[96];
    settings_instance_names(instance, ini_file_name, sizeof ini_file_name, title, sizeof title);
    setWindowTitle(QString::fromLatin1(title));

    setFixedSize(size());
    memset(adc_samples, 0, sizeof adc_samples);
    ui->MutualDopplerButton->hide();
    ui->MutualDoppler->hide();
    ui->menuFrame->hide();
    LoadIcons();
    registerPanel();
    connectButtons();

    LoadSettings(ini_file_name, &settings);
    weather_load(ini_file_name, &weather);
    alerts_load(ini_file_name, alerts);
    easycomm_load_settings(ini_file_name, &easycomm);

    // Rig control always starts off; the operator switches it on with the rig button.
    settings.OmniRigActive = 0;
    weather.calibration_pending = 1;

    createDials();
    UpdateDisplay();
    applyInitialStyles();

    // Without a bus the station still tracks on paper: the read errors and
    // this message say why the antenna does not follow.
    if (sei_open() < 0)
    {
        char text[SERIAL_PORT_NAME_SIZE + 128];
        snprintf(text, sizeof text, "Morvane communication failure: %s", sei_open_failure());
        panel_status(text, 0);
    }
    else
    {
        sei_wakeup();
    }

    SetupTrackingSource();
    if (settings.ReportActive)
    {
        psk_init();
        SendPskSelfReport();
    }

    connect(timer, &QTimer::timeout, this, &MainWindow::TimerEvent);
    timer->start(CYCLE_TICK_MS);
}

MainWindow::~MainWindow()
{
    timer->stop();
    // No motor may outlive the program: every output off, whatever the flags
    // say, before the bus goes. PWM frames go only to a station that drives
    // PWM: a relay-only board does not answer them, and each would cost the
    // exit a timeout.
    all_relays_off();
    if (settings.AzimuthPwmActive || settings.ElevationPwmActive)
    {
        all_pwm_off();
    }
    // Asleep, the encoders count no stray pulses while the power goes off.
    sei_sleep(SEI_BROADCAST);
    sei_close();
    SaveSettings(ini_file_name, &settings);
    // The weather and alert sections are written whole too, so the file shows
    // every key an operator may edit.
    weather_save(ini_file_name, &weather);
    alerts_save(ini_file_name, alerts);
    pass_log_close();
    // Every link closes with the window: a listener left open would keep its
    // port from the next window of this process, and the serial line from
    // the next program.
    remote_shutdown();
    psk_reset();
    panel_unregister_all();
    delete ui;
}

void MainWindow::LoadIcons(void)
{
    QString path = QCoreApplication::applicationDirPath() + "/pixmaps/menu-icon.png";
    if (!menu_icon.load(path))
    {
        return;
    }
    ui->MenuButton->setIcon(QIcon(menu_icon));
    QSize button = ui->MenuButton->size();
    ui->MenuButton->setIconSize(QSize(8 * button.width() / 10, 8 * button.height() / 10));
}

void MainWindow::registerPanel(void)
{
    QWidget *const controls[PANEL_COUNT] = {
        ui->MenuButton,        ui->SourceButton,        ui->SourceAzimuth,     ui->SourceElevation,
        ui->antennaAzimuth,    ui->antennaElevation,    ui->CallSign,          ui->Location,
        ui->HomeStationButton, ui->DxStationButton,     ui->DateTime,          ui->RiseTime,
        ui->SetTime,           ui->AU,                  ui->LHA_Label,         ui->LHA,
        ui->DEC_Label,         ui->Declination,         ui->AzCalibrateButton, ui->ElCalibrateButton,
        ui->autoButton,        ui->parkButton,          ui->stopButton,        ui->AzManualButton,
        ui->ElManualButton,    ui->leftButton,          ui->rightButton,       ui->upButton,
        ui->downButton,        ui->TxDopplerButton,     ui->RxDopplerButton,   ui->MutualDopplerButton,
        ui->OmniRigButton,     ui->txFrequency,         ui->rxFrequency,       ui->HomeDoppler,
        ui->DxDoppler,         ui->MutualDoppler,       ui->WindSpeed,         ui->WindDirection,
        ui->Thermometer,
    };
    for (int i = 0; i < PANEL_COUNT; i++)
    {
        panel_register(i, controls[i]);
    }
    panel_register_status(ui->statusBar);
}

void MainWindow::connectButtons(void)
{
    connect(ui->MenuButton, &QPushButton::pressed, this, &MainWindow::MenuButtonPressed);
    connect(ui->SourceAzimuth, &QPushButton::pressed, this, &MainWindow::AzSourceButtonPressed);
    connect(ui->SourceElevation, &QPushButton::pressed, this, &MainWindow::ElSourceButtonPressed);
    connect(ui->AzManualButton, &QPushButton::pressed, this, &MainWindow::AzManualButtonPressed);
    connect(ui->ElManualButton, &QPushButton::pressed, this, &MainWindow::ElManualButtonPressed);
    connect(ui->SourceButton, &QPushButton::pressed, this, &MainWindow::SourceButtonPressed);
    connect(ui->stopButton, &QPushButton::pressed, this, &MainWindow::StopButtonPressed);
    connect(ui->upButton, &QToolButton::pressed, this, &MainWindow::UpButtonPressed);
    connect(ui->downButton, &QToolButton::pressed, this, &MainWindow::DownButtonPressed);
    connect(ui->leftButton, &QToolButton::pressed, this, &MainWindow::LeftButtonPressed);
    connect(ui->rightButton, &QToolButton::pressed, this, &MainWindow::RightButtonPressed);
    connect(ui->AzCalibrateButton, &QPushButton::pressed, this, &MainWindow::AzCalibrateButtonPressed);
    connect(ui->ElCalibrateButton, &QPushButton::pressed, this, &MainWindow::ElCalibrateButtonPressed);
    connect(ui->autoButton, &QPushButton::pressed, this, &MainWindow::AutoButtonPressed);
    connect(ui->parkButton, &QPushButton::pressed, this, &MainWindow::ParkButtonPressed);
    connect(ui->TxDopplerButton, &QPushButton::pressed, this, &MainWindow::TxButtonPressed);
    connect(ui->RxDopplerButton, &QPushButton::pressed, this, &MainWindow::RxButtonPressed);
    connect(ui->OmniRigButton, &QPushButton::pressed, this, &MainWindow::OmniRigButtonPressed);
    connect(ui->HomeStationButton, &QPushButton::pressed, this, &MainWindow::HomeStationButtonPressed);
    connect(ui->DxStationButton, &QPushButton::pressed, this, &MainWindow::DxStationButtonPressed);
}

void MainWindow::applyInitialStyles(void)
{
    static const int gray[] = {PANEL_AZ_CALIBRATE, PANEL_EL_CALIBRATE, PANEL_AUTO,       PANEL_PARK,
                               PANEL_STOP,         PANEL_LEFT,         PANEL_RIGHT,      PANEL_UP,
                               PANEL_DOWN,         PANEL_AZ_MANUAL,    PANEL_EL_MANUAL,  PANEL_TX_DOPPLER,
                               PANEL_RX_DOPPLER,   PANEL_OMNIRIG,      PANEL_HOME_STATION, PANEL_DX_STATION};
    static const int green_text[] = {PANEL_SOURCE_AZIMUTH, PANEL_SOURCE_ELEVATION, PANEL_SOURCE, PANEL_DECLINATION,
                                     PANEL_LHA};
    for (int control : gray)
    {
        panel_style(control, STYLE_GRAY);
    }
    panel_style(PANEL_ANTENNA_AZIMUTH, STYLE_RED_TEXT);
    panel_style(PANEL_ANTENNA_ELEVATION, STYLE_RED_TEXT);
    for (int control : green_text)
    {
        panel_style(control, STYLE_GREEN_TEXT);
    }
    panel_visible(PANEL_AZ_CALIBRATE, 0);
    panel_enabled(PANEL_AZ_CALIBRATE, 0);
    panel_visible(PANEL_EL_CALIBRATE, 0);
    panel_enabled(PANEL_EL_CALIBRATE, 0);
}

void MainWindow::createDials(void)
{
    azimuth_dial = new Compass("Azimuth", nullptr, nullptr, 2, Qt::green, Qt::red);
    azimuth_dial->setOuterScale(180, 540, 0, 360, 2, 10);
    azimuth_dial->setLimits(settings.AzimuthLimitMin, settings.AzimuthLimitMax);

    elevation_dial = new Compass("Elevation", nullptr, nullptr, 2, Qt::green, Qt::red);
    elevation_dial->setOuterScale(90, 360, -90, 180, 2, 10);
    elevation_dial->setLimits(settings.ElevationLimitMin, settings.ElevationLimitMax);

    // The weather dials take their alarm limits from the weather settings.
    wind_speed_dial = new Compass("Wind Speed", nullptr, nullptr, 1, Qt::yellow, Qt::red);
    wind_speed_dial->setOuterScale(40, 320, 0, 140, 2, 10);
    wind_speed_dial->setInnerScale(40, 320, 0, 225.308, 5, 25);

    wind_direction_dial = new Compass("Wind Direction", nullptr, nullptr, 1, Qt::yellow, Qt::black);
    wind_direction_dial->setOuterScale(180, 540, 0, 360, 2, 10);

    temperature_dial = new Compass("Temperature", nullptr, nullptr, 1, Qt::yellow, Qt::red);
    temperature_dial->setOuterScale(90, 270, -30, 150, 2, 10);
    temperature_dial->setInnerScale(90, 270, -34.4, 65.6, 5, 10);

    barometer_dial = new Compass("Barometer", nullptr, nullptr, 1, Qt::yellow, Qt::blue);
    barometer_dial->setOuterScale(90, 270, 25, 35, 3, 18);
    barometer_dial->setInnerScale(90, 270, 847, 1185, 6, 36);

    altimeter_dial = new Compass("Altimeter", "x 1000", nullptr, 1, Qt::yellow, Qt::blue);
    altimeter_dial->setOuterScale(180, 540, 0, 10, 4, 36);

    ui->stackedWidget1->addWidget(azimuth_dial);
    ui->stackedWidget1->addWidget(wind_speed_dial);
    ui->stackedWidget1->addWidget(temperature_dial);
    ui->stackedWidget1->addWidget(altimeter_dial);
    ui->stackedWidget2->addWidget(elevation_dial);
    ui->stackedWidget2->addWidget(wind_direction_dial);
    ui->stackedWidget2->addWidget(barometer_dial);
    ui->stackedWidget1->setCurrentIndex(0);
    ui->stackedWidget2->setCurrentIndex(0);

    Compass *const dials[DIAL_COUNT] = {azimuth_dial,        elevation_dial,   wind_speed_dial, wind_direction_dial,
                                        temperature_dial,    barometer_dial,   altimeter_dial};
    static const char *const names[DIAL_COUNT] = {"AzimuthDial",     "ElevationDial", "WindSpeedDial",
                                                  "WindDirectionDial", "TemperatureDial", "BarometerDial",
                                                  "AltimeterDial"};
    for (int i = 0; i < DIAL_COUNT; i++)
    {
        dials[i]->setObjectName(names[i]);
        panel_register_dial(i, dials[i]);
    }

    connect(azimuth_dial, &Compass::MousePosition, this, &MainWindow::SourceAzimuthMousePosition);
    connect(elevation_dial, &Compass::MousePosition, this, &MainWindow::SourceElevationMousePosition);
    connect(barometer_dial, &Compass::MousePosition, this, &MainWindow::BarometerMousePosition);
    connect(azimuth_dial, &Compass::MousePressed, this, &MainWindow::SourceAzimuthMousePressed);
    connect(elevation_dial, &Compass::MousePressed, this, &MainWindow::SourceElevationMousePressed);
}

void MainWindow::createMenus(void)
{
    menu_bar = new QMenuBar();
    menu_bar->setStyleSheet(panel_style_text(STYLE_MENU_BAR));
    QMenu *configure = menu_bar->addMenu(tr("Configure"));
    configure->setStyleSheet(panel_style_text(STYLE_MENU));
    connect(configure->addAction(tr("HomeStation")), &QAction::triggered, this, &MainWindow::HomeStation);
    connect(configure->addAction(tr("Sources")), &QAction::triggered, this, &MainWindow::SourcesDisplay);
    connect(configure->addAction(tr("Dx Station")), &QAction::triggered, this, &MainWindow::DxStation);
    connect(configure->addAction(tr("Alerts")), &QAction::triggered, this, &MainWindow::Alerts);
    connect(configure->addAction(tr("EasyComm")), &QAction::triggered, this, &MainWindow::EasyComm);
    connect(configure->addAction(tr("Weather")), &QAction::triggered, this, &MainWindow::WxConfig);
    connect(configure->addAction(tr("Rig Control")), &QAction::triggered, this, &MainWindow::RigControl);
    connect(configure->addAction(tr("Date and Time")), &QAction::triggered, this, &MainWindow::SetDateTime);
    QMenu *encoders = menu_bar->addMenu(tr("Encoders"));
    encoders->setStyleSheet(panel_style_text(STYLE_MENU));
    connect(encoders->addAction(tr("Scan")), &QAction::triggered, this, &MainWindow::EncoderScan);
    connect(encoders->addAction(tr("Calibration")), &QAction::triggered, this, &MainWindow::Calibration);
    QMenu *tracking = menu_bar->addMenu(tr("Tracking"));
    tracking->setStyleSheet(panel_style_text(STYLE_MENU));
    connect(tracking->addAction(tr("Parameters")), &QAction::triggered, this, &MainWindow::Antenna);
    connect(menu_bar->addAction(tr("SkyMap")), &QAction::triggered, this, &MainWindow::SkyMap);
    QAction *about = menu_bar->addAction(tr("About"));
    connect(about, &QAction::triggered, this, &MainWindow::About);
}

void MainWindow::UpdateDisplay(void)
{
    panel_update_display();
}

// A remote source stops the antenna and opens its link; nothing moves until
// AUTO is pressed and a first valid position has come over the link.
void MainWindow::SetupTrackingSource(void)
{
    panel_setup_tracking_source();
    remote_start(settings.TrackingSource);
}

int MainWindow::SendPskSelfReport(void)
{
    return psk_self_report();
}

void MainWindow::TimerEvent(void)
{
    CycleActions actions = {};
    actions.context = this;
    actions.run[CYCLE_DISPLAY] = cycle_run_display;
    actions.run[CYCLE_POSITION] = cycle_run_position;
    actions.run[CYCLE_ADC] = cycle_run_adc;
    actions.run[CYCLE_EASYCOMM] = cycle_run_easycomm;
    actions.run[CYCLE_FREQUENCY] = cycle_run_frequency;
    actions.run[CYCLE_ROTCTL] = cycle_run_rotctl;
    actions.run[CYCLE_PSTROTATOR] = cycle_run_pstrotator;
    actions.run[CYCLE_PANEL_PAGE] = cycle_run_panel_page;
    sensor_groups_wire(&actions, ui->panelSlider->value());
    CycleConditions conditions = cycle_conditions_now();
    cycle_tick(&actions, &conditions);
}

void MainWindow::DisplayGroup(int source)
{
    display_group(source, ui->panelSlider->value());
    EvaluateAlerts();
}

void MainWindow::EvaluateAlerts(void)
{
    alerts_evaluate(alerts);
}

void MainWindow::UpdateRemoteDisplay(void)
{
    remote_display_update();
}

// Polling and the alerts go on while the dialogs are open, and Cancel takes
// nothing back; OK saves the section.
void MainWindow::Alerts(void)
{
    AlertsConfigDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        alerts_save(ini_file_name, alerts);
        UpdateDisplay();
    }
}

// The barometer gets its calibration word again after every visit, in case
// it was changed.
void MainWindow::WxConfig(void)
{
    WxConfigDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        weather_save(ini_file_name, &weather);
        UpdateDisplay();
        weather_dial_limits();
        weather_dial_repaint_page(ui->panelSlider->value());
    }
    weather.calibration_pending = 1;
}

void MainWindow::PositionGroup(int source)
{
    PositionLimits limits = position_group(ui->panelSlider->value());
    // Before the step, so a pass counts the start that AUTO's first step makes.
    pass_log_step();
    drive_step(source, limits.through_north, limits.az_limit_hit, limits.el_limit_hit);
}

void MainWindow::PanelPageGroup(void)
{
    selectPanel(ui->panelSlider->value());
}

void MainWindow::selectPanel(int pos)
{
    int page1, page2;
    cycle_panel_pages(pos, &page1, &page2);
    panel_weather_dials();
    ui->stackedWidget1->setCurrentIndex(page1);
    ui->stackedWidget2->setCurrentIndex(page2);
}

void MainWindow::MenuButtonPressed(void)
{
    if (!menu_shown)
    {
        createMenus();
        ui->MenuLayout->setMenuBar(menu_bar);
        ui->menuFrame->show();
        ui->menuFrame->raise();
        menu_shown = 1;
        return;
    }
    ui->MenuLayout->setMenuBar(nullptr);
    ui->menuFrame->hide();
    delete menu_bar;
    menu_bar = nullptr;
    menu_shown = 0;
}

// The port settings count from the link's next start; the antenna stops, as
// for any change of the remote source.
void MainWindow::EasyComm(void)
{
    EasyCommDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
    {
        return;
    }
    auto_tracking = 0;
    panel_style(PANEL_AUTO, STYLE_GRAY);
    park_control(0);
    easycomm_save_settings(ini_file_name, &easycomm);
}

// The cycle stands still while the home station is edited: the Doppler,
// the source positions and the remote links all hang on it.
void MainWindow::HomeStation(void)
{
    timer->stop();
    panel_pause_begin();
    HomeStationDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        SaveSettings(ini_file_name, &settings);
        home_station_valid = settings.Grid[0] != 0;
        doppler_mode = 1;
        UpdateDisplay();
    }
    panel_pause_end();
    SendPskSelfReport();
    timer->start(CYCLE_TICK_MS);
}

// Chosen from the menu, a source changes TrackingSource but leaves the remote
// links alone; only the source button closes and reopens them. Tracking goes
// on behind the table.
void MainWindow::SourcesDisplay(void)
{
    SourcesDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        SaveSettings(ini_file_name, &settings);
        UpdateDisplay();
    }
}

// The DX station is only read, never driven to, so tracking goes on behind
// the list.
void MainWindow::DxStation(void)
{
    DxStationDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
    {
        return;
    }
    double latitude, longitude;
    dx_station_valid = 0;
    if (dx_grid[0] && grid_to_position(dx_grid, &latitude, &longitude) == 0)
    {
        dx_latitude = latitude;
        dx_longitude = longitude;
        dx_station_valid = 1;
    }
    UpdateDisplay();
}

void MainWindow::RigControl(void)
{
    RigControlDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        rig_dialog_accepted();
    }
}

// The drive's parameters change under it, so it stands still while they are
// edited; a Cancel keeps the edits, only Ok saves them.
void MainWindow::Antenna(void)
{
    timer->stop();
    panel_pause_begin();
    AntennaDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        panel_antenna_accepted(ui->panelSlider->value());
    }
    panel_pause_end();
    timer->start(CYCLE_TICK_MS);
}

// The scan is the bus's only user while it is open, and whatever it changed
// is fetched afresh by the next read pass.
void MainWindow::EncoderScan(void)
{
    timer->stop();
    panel_pause_begin();
    EncoderDialog dialog(this);
    dialog.exec();
    az_encoder_ready = 0;
    el_encoder_ready = 0;
    SaveSettings(ini_file_name, &settings);
    panel_pause_end();
    timer->start(CYCLE_TICK_MS);
}

// Addresses and corrections change under the drive, so it stands still; the
// edits are in force at once, OK only saves them.
void MainWindow::Calibration(void)
{
    timer->stop();
    panel_pause_begin();
    CalibrationDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        SaveSettings(ini_file_name, &settings);
        UpdateDisplay();
    }
    panel_pause_end();
    timer->start(CYCLE_TICK_MS);
}

// The map runs the source engine on its own clock and uses the source table
// as its own, so the cycle and the drive stand still while it is open.
void MainWindow::SkyMap(void)
{
    timer->stop();
    panel_pause_begin();
    SkyMapDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        UpdateDisplay();
    }
    panel_pause_end();
    timer->start(CYCLE_TICK_MS);
}

// Tracking goes on while the date is chosen. The fields are UTC and the clock
// is set as UTC; a station that cannot set it is told why.
bool MainWindow::SetDateTime(void)
{
    TimeConfigDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        char why[128], text[192];
        if (clock_set_system(&map_date_time, why, sizeof why) != 0)
        {
            snprintf(text, sizeof text, "The clock could not be set: %s", why);
            panel_status(text, 0);
        }
        UpdateDisplay();
    }
    return true;
}

void MainWindow::About(void)
{
    AboutDialog dialog(this);
    dialog.exec();
}

// The selection and the user positions hold even when the table is cancelled;
// only the saving waits for OK.
void MainWindow::SourceButtonPressed(void)
{
    SourcesDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        SaveSettings(ini_file_name, &settings);
        UpdateDisplay();
    }
    source_changed = 1;
    // Every pass through the table closes the remote links, a cancelled one
    // too, and the selected source's link opens anew: a connected client is
    // dropped even when its source stays selected.
    remote_stop();
    SetupTrackingSource();
}

void MainWindow::AzSourceButtonPressed(void)
{
    panel_az_source_pressed();
}

void MainWindow::ElSourceButtonPressed(void)
{
    panel_el_source_pressed();
}

void MainWindow::AutoButtonPressed(void)
{
    drive_auto_pressed();
}

void MainWindow::ParkButtonPressed(void)
{
    drive_park_pressed();
}

void MainWindow::StopButtonPressed(void)
{
    drive_stop_pressed();
}

void MainWindow::AzManualButtonPressed(void)
{
    drive_az_manual_pressed();
}

void MainWindow::ElManualButtonPressed(void)
{
    drive_el_manual_pressed();
}

void MainWindow::LeftButtonPressed(void)
{
    drive_left_pressed();
}

void MainWindow::RightButtonPressed(void)
{
    drive_right_pressed();
}

void MainWindow::UpButtonPressed(void)
{
    drive_up_pressed();
}

void MainWindow::DownButtonPressed(void)
{
    drive_down_pressed();
}

void MainWindow::AzCalibrateButtonPressed(void)
{
    panel_az_calibrate_pressed();
}

void MainWindow::ElCalibrateButtonPressed(void)
{
    panel_el_calibrate_pressed();
}

void MainWindow::TxButtonPressed(void)
{
    doppler_tx_pressed();
}

void MainWindow::RxButtonPressed(void)
{
    doppler_rx_pressed();
}

void MainWindow::OmniRigButtonPressed(void)
{
    doppler_omnirig_pressed();
}

void MainWindow::HomeStationButtonPressed(void)
{
    // The button reads "Set home" while there is none, and leads there.
    if (!settings.Grid[0])
    {
        HomeStation();
        return;
    }
    doppler_home_pressed();
}

void MainWindow::DxStationButtonPressed(void)
{
    doppler_dx_pressed();
}

void MainWindow::SourceAzimuthMousePosition(void)
{
    if (settings.TrackingSource != SOURCE_USER_AZEL)
    {
        return;
    }
    double angle = compass_touch_azimuth(azimuth_dial->mouse_x, azimuth_dial->mouse_y, azimuth_dial->center_x,
                                         azimuth_dial->center_y);
    angle = panel_touch_limit(angle, settings.AzimuthLimitMin, settings.AzimuthLimitMax);
    azimuth_dial->setNeedle1(angle);
    azimuth_dial->repaint();
    panel_set_user_azimuth(angle);
}

void MainWindow::SourceElevationMousePosition(void)
{
    if (settings.TrackingSource != SOURCE_USER_AZEL)
    {
        return;
    }
    double angle = compass_touch_elevation(elevation_dial->mouse_x, elevation_dial->mouse_y,
                                           elevation_dial->center_x, elevation_dial->center_y);
    angle = panel_touch_limit(angle, settings.ElevationLimitMin, settings.ElevationLimitMax);
    elevation_dial->setNeedle1(angle);
    elevation_dial->repaint();
    panel_set_user_elevation(angle);
}

void MainWindow::BarometerMousePosition(void)
{
    barometer_dial->repaint();
}

void MainWindow::SourceAzimuthMousePressed(void)
{
}

void MainWindow::SourceElevationMousePressed(void)
{
}
