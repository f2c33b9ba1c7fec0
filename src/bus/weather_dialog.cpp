#include "bus/weather_dialog.h"

#include "bus/weather.h"
#include "core/ini_file.h"
#include "core/state.h"
#include "widgets/enter.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <cstdio>

static const int keypad_length = 16;

// The C library's rounding, as everywhere else the panel shows a number.
static QString int_text(int value)
{
    char text[16];
    snprintf(text, sizeof text, "%d", value);
    return QString::fromLatin1(text);
}

static QString limit_text(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%5.1f", value);
    return QString::fromLatin1(text);
}

void weather_edit_int(QPushButton *button, int32_t *value)
{
    char text[24];
    snprintf(text, sizeof text, "%d", *value);
    if (enter_number_field(text, sizeof text, keypad_length))
    {
        *value = ini_to_int(text);
        button->setText(int_text(*value));
    }
}

void weather_edit_double(QPushButton *button, double *value)
{
    char text[24];
    snprintf(text, sizeof text, "%5.1f", *value);
    if (enter_number_field(text, sizeof text, keypad_length))
    {
        *value = ini_to_double(text);
        button->setText(limit_text(*value));
    }
}

static QPushButton *value_button(QGridLayout *grid, const char *name, const QString &text, int row, int column)
{
    QPushButton *b = new QPushButton(text);
    b->setObjectName(name);
    b->setMinimumHeight(34);
    grid->addWidget(b, row, column);
    return b;
}

static QComboBox *unit_box(QGridLayout *grid, const char *name, const char *first, const char *second, int index,
                           int row)
{
    QComboBox *box = new QComboBox;
    box->setObjectName(name);
    box->addItem(first);
    box->addItem(second);
    box->setCurrentIndex(index ? 1 : 0);
    box->setMinimumHeight(34);
    grid->addWidget(box, row, 2);
    return box;
}

static QLabel *heading(QGridLayout *grid, const char *name, const char *text, int row, int column, int span = 1)
{
    QLabel *label = new QLabel(text);
    label->setObjectName(name);
    grid->addWidget(label, row, column, 1, span);
    return label;
}

WxConfigDialog::WxConfigDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle("WxStation Configuration");
    QGridLayout *grid = new QGridLayout(this);
    grid->setVerticalSpacing(4);

    heading(grid, "AddrLabel", "Addr", 0, 0);
    WxStationEdit = new QComboBox;
    WxStationEdit->setObjectName("WxStationEdit");
    WxStationEdit->addItem("-1");
    for (int a = 0; a <= 14; a++)
    {
        WxStationEdit->addItem(int_text(a));
    }
    int address = weather.WxStationAddr;
    WxStationEdit->setCurrentIndex(address >= -1 && address <= 14 ? address + 1 : 0);
    WxStationEdit->setMinimumHeight(34);
    grid->addWidget(WxStationEdit, 0, 1);
    heading(grid, "CalibrationLabel", "Calibration", 0, 2);
    CalibrationEdit = value_button(grid, "CalibrationEdit", int_text(weather.Calibration), 0, 3);

    buildSensorRows(grid);
    buildStowRow(grid);

    QDialogButtonBox *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    grid->addWidget(buttons, 9, 0, 1, 5);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    connect(WxStationEdit, &QComboBox::currentIndexChanged, this, &WxConfigDialog::WxStationAddrChanged);
    connect(CalibrationEdit, &QPushButton::clicked, this, &WxConfigDialog::CalibrationPressed);
    for (QRadioButton *b : sensor_buttons)
    {
        connect(b, &QRadioButton::clicked, this, &WxConfigDialog::WxConfigChanged);
    }
    connect(interval_edits[0], &QPushButton::clicked, this, &WxConfigDialog::WindSpeedPressed);
    connect(interval_edits[1], &QPushButton::clicked, this, &WxConfigDialog::WindDirectionPressed);
    connect(interval_edits[2], &QPushButton::clicked, this, &WxConfigDialog::ThermometerPressed);
    connect(interval_edits[3], &QPushButton::clicked, this, &WxConfigDialog::BarometerPressed);
    connect(interval_edits[4], &QPushButton::clicked, this, &WxConfigDialog::AltimeterPressed);
    connect(WindSpeedUnits, &QComboBox::currentIndexChanged, this, &WxConfigDialog::WindSpeedUnitsChanged);
    connect(ThermometerUnits, &QComboBox::currentIndexChanged, this, &WxConfigDialog::ThermometerUnitsChanged);
    connect(BarometerUnits, &QComboBox::currentIndexChanged, this, &WxConfigDialog::BarometerUnitsChanged);
    connect(AltimeterUnits, &QComboBox::currentIndexChanged, this, &WxConfigDialog::AltimeterUnitsChanged);
    connect(WindSpeedAlarmHighEdit, &QPushButton::clicked, this, &WxConfigDialog::WindSpeedAlarmHighPressed);
    connect(WindDirectionAlarmLowEdit, &QPushButton::clicked, this, &WxConfigDialog::WindDirectionAlarmLowPressed);
    connect(WindDirectionAlarmHighEdit, &QPushButton::clicked, this,
            &WxConfigDialog::WindDirectionAlarmHighPressed);
    connect(ThermometerAlarmLowEdit, &QPushButton::clicked, this, &WxConfigDialog::ThermometerAlarmLowPressed);
    connect(ThermometerAlarmHighEdit, &QPushButton::clicked, this, &WxConfigDialog::ThermometerAlarmHighPressed);
    connect(WindStowButton, &QRadioButton::clicked, this, &WxConfigDialog::WindStowChanged);
    connect(WindStowResumeEdit, &QPushButton::clicked, this, &WxConfigDialog::WindStowResumePressed);
    connect(WindStowMinutesEdit, &QPushButton::clicked, this, &WxConfigDialog::WindStowMinutesPressed);
}

// One row a sensor: its switch, interval, units and alarm limits.
void WxConfigDialog::buildSensorRows(QGridLayout *grid)
{
    static const char *const names[5] = {"WindSpeed", "WindDirection", "Thermometer", "Barometer", "Altimeter"};
    const bool on[5] = {weather.WindSpeed, weather.WindDirection, weather.Thermometer, weather.Barometer,
                        weather.Altimeter};
    const int32_t intervals[5] = {weather.WindSpeedInterval, weather.WindDirectionInterval,
                                  weather.ThermometerInterval, weather.BarometerInterval, weather.AltimeterInterval};
    heading(grid, "SensorLabel", "Sensor", 1, 0);
    heading(grid, "IntervalLabel", " Interval (ms)", 1, 1);
    heading(grid, "UnitsLabel", "Units", 1, 2);
    heading(grid, "AlarmLabel", " Alarm Settings", 1, 3, 2);
    for (int i = 0; i < 5; i++)
    {
        char object[32];
        sensor_buttons[i] = new QRadioButton(names[i]);
        sensor_buttons[i]->setObjectName(names[i] + QString("Button"));
        sensor_buttons[i]->setAutoExclusive(false);
        sensor_buttons[i]->setChecked(on[i]);
        sensor_buttons[i]->setMinimumHeight(34);
        grid->addWidget(sensor_buttons[i], 2 + i, 0);
        snprintf(object, sizeof object, "%sEdit", names[i]);
        interval_edits[i] = value_button(grid, object, int_text(intervals[i]), 2 + i, 1);
    }
    WindSpeedUnits = unit_box(grid, "WindSpeedUnits", "km/h", "mph", weather.WindSpeedUnits, 2);
    ThermometerUnits = unit_box(grid, "ThermometerUnits", "Deg C", "Deg F", weather.ThermometerUnits, 4);
    BarometerUnits = unit_box(grid, "BarometerUnits", "mb", "in Hg", weather.BarometerUnits, 5);
    AltimeterUnits = unit_box(grid, "AltimeterUnits", "meters", "feet", weather.AltimeterUnits, 6);

    // HI beside the wind speed, LO and HI beside direction and temperature,
    // each pair in the same columns.
    QGridLayout *speed = new QGridLayout;
    QGridLayout *direction = new QGridLayout;
    QGridLayout *temperature = new QGridLayout;
    int row = 2;
    for (QGridLayout *limits : {speed, direction, temperature})
    {
        limits->setColumnMinimumWidth(0, 24);
        limits->setColumnMinimumWidth(1, 84);
        limits->setColumnMinimumWidth(2, 24);
        limits->setColumnMinimumWidth(3, 84);
        grid->addLayout(limits, row++, 3, 1, 2);
    }
    heading(speed, "WindSpeedAlarmHighLabel", "HI", 0, 2);
    WindSpeedAlarmHighEdit = value_button(speed, "WindSpeedAlarmHighEdit", limit_text(weather.WindSpeedAlarmHigh), 0, 3);
    heading(direction, "WindDirectionAlarmLowLabel", "LO", 0, 0);
    WindDirectionAlarmLowEdit =
        value_button(direction, "WindDirectionAlarmLowEdit", limit_text(weather.WindDirectionAlarmLow), 0, 1);
    heading(direction, "WindDirectionAlarmHighLabel", "HI", 0, 2);
    WindDirectionAlarmHighEdit =
        value_button(direction, "WindDirectionAlarmHighEdit", limit_text(weather.WindDirectionAlarmHigh), 0, 3);
    heading(temperature, "ThermometerAlarmLowLabel", "LO", 0, 0);
    ThermometerAlarmLowEdit =
        value_button(temperature, "ThermometerAlarmLowEdit", limit_text(weather.ThermometerAlarmLow), 0, 1);
    heading(temperature, "ThermometerAlarmHighLabel", "HI", 0, 2);
    ThermometerAlarmHighEdit =
        value_button(temperature, "ThermometerAlarmHighEdit", limit_text(weather.ThermometerAlarmHigh), 0, 3);
}

// The wind stow: on or off, the calm level in the wind's units, the minutes.
void WxConfigDialog::buildStowRow(QGridLayout *grid)
{
    WindStowButton = new QRadioButton("Wind stow");
    WindStowButton->setObjectName("WindStowButton");
    WindStowButton->setAutoExclusive(false);
    WindStowButton->setChecked(weather.WindStow != 0);
    WindStowButton->setMinimumHeight(34);
    grid->addWidget(WindStowButton, 7, 0);
    heading(grid, "WindStowResumeLabel", "Resume below", 7, 1);
    WindStowResumeEdit = value_button(grid, "WindStowResumeEdit", limit_text(weather.WindStowResume), 7, 2);
    heading(grid, "WindStowMinutesLabel", "after (min)", 7, 3);
    WindStowMinutesEdit = value_button(grid, "WindStowMinutesEdit", int_text(weather.WindStowResumeMinutes), 7, 4);
}

void WxConfigDialog::WxConfigChanged(void)
{
    bool *const flags[5] = {&weather.WindSpeed, &weather.WindDirection, &weather.Thermometer, &weather.Barometer,
                            &weather.Altimeter};
    for (int i = 0; i < 5; i++)
    {
        *flags[i] = sensor_buttons[i]->isChecked();
    }
}

void WxConfigDialog::WxStationAddrChanged(int index)
{
    weather.WxStationAddr = index - 1;
}

void WxConfigDialog::CalibrationPressed(void)
{
    int32_t value = weather.Calibration;
    weather_edit_int(CalibrationEdit, &value);
    weather.Calibration = (uint16_t)value;
}

void WxConfigDialog::WindSpeedUnitsChanged(int index)
{
    weather.WindSpeedUnits = index;
}

void WxConfigDialog::ThermometerUnitsChanged(int index)
{
    weather.ThermometerUnits = index;
}

void WxConfigDialog::BarometerUnitsChanged(int index)
{
    weather.BarometerUnits = index;
}

void WxConfigDialog::AltimeterUnitsChanged(int index)
{
    weather.AltimeterUnits = index;
}

void WxConfigDialog::WindSpeedPressed(void)
{
    weather_edit_int(interval_edits[0], &weather.WindSpeedInterval);
}

void WxConfigDialog::WindDirectionPressed(void)
{
    weather_edit_int(interval_edits[1], &weather.WindDirectionInterval);
}

void WxConfigDialog::ThermometerPressed(void)
{
    weather_edit_int(interval_edits[2], &weather.ThermometerInterval);
}

void WxConfigDialog::BarometerPressed(void)
{
    weather_edit_int(interval_edits[3], &weather.BarometerInterval);
}

void WxConfigDialog::AltimeterPressed(void)
{
    weather_edit_int(interval_edits[4], &weather.AltimeterInterval);
}

void WxConfigDialog::WindSpeedAlarmHighPressed(void)
{
    weather_edit_double(WindSpeedAlarmHighEdit, &weather.WindSpeedAlarmHigh);
}

void WxConfigDialog::WindDirectionAlarmLowPressed(void)
{
    weather_edit_double(WindDirectionAlarmLowEdit, &weather.WindDirectionAlarmLow);
}

void WxConfigDialog::WindDirectionAlarmHighPressed(void)
{
    weather_edit_double(WindDirectionAlarmHighEdit, &weather.WindDirectionAlarmHigh);
}

void WxConfigDialog::ThermometerAlarmLowPressed(void)
{
    weather_edit_double(ThermometerAlarmLowEdit, &weather.ThermometerAlarmLow);
}

void WxConfigDialog::ThermometerAlarmHighPressed(void)
{
    weather_edit_double(ThermometerAlarmHighEdit, &weather.ThermometerAlarmHigh);
}

void WxConfigDialog::WindStowChanged(void)
{
    weather.WindStow = WindStowButton->isChecked();
}

void WxConfigDialog::WindStowResumePressed(void)
{
    weather_edit_double(WindStowResumeEdit, &weather.WindStowResume);
}

void WxConfigDialog::WindStowMinutesPressed(void)
{
    weather_edit_int(WindStowMinutesEdit, &weather.WindStowResumeMinutes);
}
