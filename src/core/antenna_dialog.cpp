#include "core/antenna_dialog.h"

#include "core/state.h"
#include "ui_antenna_dialog.h"
#include "widgets/enter.h"

#include <QDebug>
#include <cmath>
#include <cstdio>
#include <cstdlib>

// The guard times as the operator has always seen them, odd "9.0" included.
static const char *const guard_items[20] = {"0.50", "1.00", "1.50", "2.00", "2.50", "3.00", "3.50",
                                            "4.00", "4.50", "5.00", "5.50", "6.00", "6.50", "7.00",
                                            "7.50", "8.00", "8.50", "9.0",  "9.50", "10.0"};

int antenna_duty_index(double duty)
{
    return (int)std::fabs((duty - 5) / 5);
}

int antenna_guard_index(double guard, int count)
{
    int index = (int)std::fabs((guard - 0.5) * 2);
    return index >= count ? 0 : index;
}

void antenna_enter_value(double *field, char *text, int size)
{
    snprintf(text, size, "%0.1f", *field);
    enter_number_field(text, size, 10);
    *field = atof(text);
}

int antenna_enter_jog_time(int32_t *field, char *text, int size)
{
    snprintf(text, size, "%d", *field);
    enter_number_field(text, size, 10);
    int value = atoi(text);
    if (value < 1 || value > 100)
    {
        return 0;
    }
    *field = value;
    return 1;
}

static void antenna_fill_duty(QComboBox *box, double duty)
{
    for (int percent = 5; percent <= 100; percent += 5)
    {
        box->addItem(QString::asprintf("%d%%", percent));
    }
    box->setCurrentIndex(antenna_duty_index(duty));
}

static void antenna_fill_guard(QComboBox *box, double guard)
{
    for (const char *item : guard_items)
    {
        box->addItem(QString::fromLatin1(item));
    }
    box->setCurrentIndex(antenna_guard_index(guard, box->count()));
}

static void antenna_show(QPushButton *button, const char *format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    button->setText(QString::fromLatin1(text));
}

AntennaDialog::AntennaDialog(QWidget *parent) : QDialog(parent), ui(new Ui::AntennaDialog)
{
    ui->setupUi(this);
    setFixedSize(740, 435);
    // Filled before the signals are connected, so showing the stored values
    // writes nothing back.
    fillControls();
    connectControls();
}

AntennaDialog::~AntennaDialog()
{
    delete ui;
}

void AntennaDialog::fillControls(void)
{
    const SystemSettings &s = settings;
    antenna_fill_duty(ui->AzSpeedSlowEdit, s.AzimuthSlowDutyCycle);
    antenna_fill_duty(ui->AzSpeedFastEdit, s.AzimuthFastDutyCycle);
    antenna_fill_duty(ui->AzSpeedManualEdit, s.AzimuthManualDutyCycle);
    antenna_fill_guard(ui->AzGuardTimeEdit, s.AzimuthGuardTime);
    antenna_fill_duty(ui->ElSpeedSlowEdit, s.ElevationSlowDutyCycle);
    antenna_fill_duty(ui->ElSpeedFastEdit, s.ElevationFastDutyCycle);
    antenna_fill_duty(ui->ElSpeedManualEdit, s.ElevationManualDutyCycle);
    antenna_fill_guard(ui->ElGuardTimeEdit, s.ElevationGuardTime);
    ui->AzJogEnable->setChecked(s.AzimuthJogEnable != 0);
    ui->ElJogEnable->setChecked(s.ElevationJogEnable != 0);
    ui->PreciseMoonEnable->setChecked(s.PreciseMoon != 0);
    ui->RefractionEnable->setChecked(s.Refraction != 0);
    ui->PrecessionEnable->setChecked(s.Precession != 0);

    antenna_show(ui->AzSlowDegreesEdit, "%0.1f", s.AzimuthSlowDegrees);
    antenna_show(ui->ElSlowDegreesEdit, "%0.1f", s.ElevationSlowDegrees);
    ui->AzJogTimeEdit->setText(QString::asprintf("%-d", s.AzimuthJogTime));
    ui->ElJogTimeEdit->setText(QString::asprintf("%-d", s.ElevationJogTime));
    antenna_show(ui->AzLimitMinEdit, "%5.1f", s.AzimuthLimitMin);
    antenna_show(ui->AzLimitMaxEdit, "%5.1f", s.AzimuthLimitMax);
    antenna_show(ui->ElLimitMinEdit, "%5.1f", s.ElevationLimitMin);
    antenna_show(ui->ElLimitMaxEdit, "%5.1f", s.ElevationLimitMax);
    antenna_show(ui->AzStartEdit, "%0.1f", s.Azimuth_Start);
    antenna_show(ui->AzStopEdit, "%0.1f", s.Azimuth_Stop);
    antenna_show(ui->ElStartEdit, "%0.1f", s.Elevation_Start);
    antenna_show(ui->ElStopEdit, "%0.1f", s.Elevation_Stop);
    antenna_show(ui->AzParkEdit, "%0.1f", s.Park_Azimuth);
    antenna_show(ui->ElParkEdit, "%0.1f", s.Park_Elevation);
    antenna_show(ui->AzServiceEdit, "%0.1f", s.Service_Azimuth);
    antenna_show(ui->ElServiceEdit, "%0.1f", s.Service_Elevation);
}

void AntennaDialog::connectControls(void)
{
    typedef void (QComboBox::*IndexSignal)(int);
    const IndexSignal changed = &QComboBox::currentIndexChanged;
    connect(ui->AzSpeedSlowEdit, changed, this, &AntennaDialog::AzSpeedSlowChanged);
    connect(ui->AzSpeedFastEdit, changed, this, &AntennaDialog::AzSpeedFastChanged);
    connect(ui->AzSpeedManualEdit, changed, this, &AntennaDialog::AzSpeedManualChanged);
    connect(ui->AzGuardTimeEdit, changed, this, &AntennaDialog::AzGuardTimeChanged);
    connect(ui->ElSpeedSlowEdit, changed, this, &AntennaDialog::ElSpeedSlowChanged);
    connect(ui->ElSpeedFastEdit, changed, this, &AntennaDialog::ElSpeedFastChanged);
    connect(ui->ElSpeedManualEdit, changed, this, &AntennaDialog::ElSpeedManualChanged);
    connect(ui->ElGuardTimeEdit, changed, this, &AntennaDialog::ElGuardTimeChanged);
    connect(ui->AzJogEnable, &QCheckBox::clicked, this, &AntennaDialog::AzJogEnableChanged);
    connect(ui->ElJogEnable, &QCheckBox::clicked, this, &AntennaDialog::ElJogEnableChanged);
    connect(ui->PreciseMoonEnable, &QCheckBox::clicked, this, &AntennaDialog::PreciseMoonChanged);
    connect(ui->RefractionEnable, &QCheckBox::clicked, this, &AntennaDialog::RefractionChanged);
    connect(ui->PrecessionEnable, &QCheckBox::clicked, this, &AntennaDialog::PrecessionChanged);

    const struct
    {
        QPushButton *button;
        void (AntennaDialog::*slot)(void);
    } buttons[] = {
        {ui->AzSlowDegreesEdit, &AntennaDialog::AzSlowDegreesPressed},
        {ui->AzJogTimeEdit, &AntennaDialog::AzJogTimePressed},
        {ui->ElSlowDegreesEdit, &AntennaDialog::ElSlowDegreesPressed},
        {ui->ElJogTimeEdit, &AntennaDialog::ElJogTimePressed},
        {ui->AzLimitMinEdit, &AntennaDialog::AzLimitMinPressed},
        {ui->AzLimitMaxEdit, &AntennaDialog::AzLimitMaxPressed},
        {ui->ElLimitMinEdit, &AntennaDialog::ElLimitMinPressed},
        {ui->ElLimitMaxEdit, &AntennaDialog::ElLimitMaxPressed},
        {ui->AzStartEdit, &AntennaDialog::AzStartPressed},
        {ui->AzStopEdit, &AntennaDialog::AzStopPressed},
        {ui->ElStartEdit, &AntennaDialog::ElStartPressed},
        {ui->ElStopEdit, &AntennaDialog::ElStopPressed},
        {ui->AzParkEdit, &AntennaDialog::AzParkPressed},
        {ui->ElParkEdit, &AntennaDialog::ElParkPressed},
        {ui->AzServiceEdit, &AntennaDialog::AzServicePressed},
        {ui->ElServiceEdit, &AntennaDialog::ElServicePressed},
    };
    for (const auto &b : buttons)
    {
        connect(b.button, &QPushButton::pressed, this, b.slot);
    }
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void AntennaDialog::enterValue(QPushButton *button, double *field)
{
    char text[32];
    antenna_enter_value(field, text, sizeof text);
    // The button shows what was typed, not a reformatted number.
    button->setText(QString::fromLatin1(text));
}

void AntennaDialog::enterJogTime(QPushButton *button, int32_t *field)
{
    char text[32];
    if (antenna_enter_jog_time(field, text, sizeof text))
    {
        button->setText(QString::fromLatin1(text));
    }
}

void AntennaDialog::AzSpeedSlowChanged(int index)
{
    settings.AzimuthSlowDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::AzSpeedFastChanged(int index)
{
    settings.AzimuthFastDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::AzSpeedManualChanged(int index)
{
    settings.AzimuthManualDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::AzGuardTimeChanged(int index)
{
    settings.AzimuthGuardTime = ui->AzGuardTimeEdit->itemText(index).toDouble();
    qDebug("AzGuardTime index(%d) set to %6.2f", index, settings.AzimuthGuardTime);
}

void AntennaDialog::AzSlowDegreesPressed(void)
{
    enterValue(ui->AzSlowDegreesEdit, &settings.AzimuthSlowDegrees);
}

void AntennaDialog::AzJogEnableChanged(bool enable)
{
    settings.AzimuthJogEnable = enable;
}

void AntennaDialog::AzJogTimePressed(void)
{
    enterJogTime(ui->AzJogTimeEdit, &settings.AzimuthJogTime);
}

void AntennaDialog::ElSpeedSlowChanged(int index)
{
    settings.ElevationSlowDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::ElSpeedFastChanged(int index)
{
    settings.ElevationFastDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::ElSpeedManualChanged(int index)
{
    settings.ElevationManualDutyCycle = (index + 1) * 5.0;
}

void AntennaDialog::ElGuardTimeChanged(int index)
{
    settings.ElevationGuardTime = ui->ElGuardTimeEdit->itemText(index).toDouble();
    qDebug("ElGuardTime index(%d) set to %6.2f", index, settings.ElevationGuardTime);
}

void AntennaDialog::ElSlowDegreesPressed(void)
{
    enterValue(ui->ElSlowDegreesEdit, &settings.ElevationSlowDegrees);
}

void AntennaDialog::ElJogEnableChanged(bool state)
{
    settings.ElevationJogEnable = state;
}

void AntennaDialog::PreciseMoonChanged(bool enable)
{
    settings.PreciseMoon = enable;
}

void AntennaDialog::RefractionChanged(bool enable)
{
    settings.Refraction = enable;
}

void AntennaDialog::PrecessionChanged(bool enable)
{
    settings.Precession = enable;
}

void AntennaDialog::ElJogTimePressed(void)
{
    enterJogTime(ui->ElJogTimeEdit, &settings.ElevationJogTime);
}

void AntennaDialog::AzLimitMinPressed(void)
{
    enterValue(ui->AzLimitMinEdit, &settings.AzimuthLimitMin);
}

void AntennaDialog::AzLimitMaxPressed(void)
{
    enterValue(ui->AzLimitMaxEdit, &settings.AzimuthLimitMax);
}

void AntennaDialog::ElLimitMinPressed(void)
{
    enterValue(ui->ElLimitMinEdit, &settings.ElevationLimitMin);
}

void AntennaDialog::ElLimitMaxPressed(void)
{
    enterValue(ui->ElLimitMaxEdit, &settings.ElevationLimitMax);
}

void AntennaDialog::AzStartPressed(void)
{
    enterValue(ui->AzStartEdit, &settings.Azimuth_Start);
}

void AntennaDialog::AzStopPressed(void)
{
    enterValue(ui->AzStopEdit, &settings.Azimuth_Stop);
}

void AntennaDialog::ElStartPressed(void)
{
    enterValue(ui->ElStartEdit, &settings.Elevation_Start);
}

void AntennaDialog::ElStopPressed(void)
{
    enterValue(ui->ElStopEdit, &settings.Elevation_Stop);
}

void AntennaDialog::AzParkPressed(void)
{
    enterValue(ui->AzParkEdit, &settings.Park_Azimuth);
}

void AntennaDialog::ElParkPressed(void)
{
    enterValue(ui->ElParkEdit, &settings.Park_Elevation);
}

void AntennaDialog::AzServicePressed(void)
{
    enterValue(ui->AzServiceEdit, &settings.Service_Azimuth);
}

void AntennaDialog::ElServicePressed(void)
{
    enterValue(ui->ElServiceEdit, &settings.Service_Elevation);
}
