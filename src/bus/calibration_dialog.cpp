#include "bus/calibration_dialog.h"

#include "bus/brt.h"
#include "bus/encoders.h"
#include "bus/position.h"
#include "bus/sei_commands.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "ui_calibration_dialog.h"
#include "widgets/enter.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTableWidget>
#include <cstdio>
#include <cstdlib>

enum
{
    CALIBRATION_KEYPAD_LENGTH = 16,
    LEVEL_DISABLED = 2
};

// One axis's settings, device state and controls, so that both axes share
// every step.
struct CalibrationAxis
{
    int32_t *address;
    double *offset;
    double *bins;
    int bin_count;
    uint8_t *mode;
    uint32_t *range;
    uint32_t *ppr;
    uint8_t *level;
    QTableWidget *table;
    QComboBox *address_box;
    QPushButton *offset_button;
    QPushButton *range_button;
    QPushButton *pulses_button;
    QComboBox *level_box;
};

CalibrationAxis CalibrationDialog::axis(int elevation)
{
    if (elevation)
    {
        return {&settings.EL_Addr,  &settings.Elevation_Offset, settings.EL,         10,
                &el_mode,           &el_range,                  &el_ppr,             &el_index_level,
                ui->ElTableWidget,  ui->ElAddrEdit,             ui->ElOffsetEdit,    ui->ElRangeEdit,
                ui->ElPulsesRevEdit, ui->ElIndexPulseLevel};
    }
    return {&settings.AZ_Addr,  &settings.Azimuth_Offset, settings.AZ,         36,
            &az_mode,           &az_range,                &az_ppr,             &az_index_level,
            ui->AzTableWidget,  ui->AzAddrEdit,           ui->AzOffsetEdit,    ui->AzRangeEdit,
            ui->AzPulsesRevEdit, ui->AzIndexPulseLevel};
}

static int calibration_valid(int a)
{
    return a >= 0 && a < ENCODER_COUNT;
}

static int calibration_is_brt(int a)
{
    return calibration_valid(a) && encoders[a].Type == ENCODER_BRT;
}

// A native encoder with mode bit 4 keeps range, pulses and index level itself.
static int calibration_multi_turn(const CalibrationAxis &x)
{
    return calibration_valid(*x.address) && !calibration_is_brt(*x.address) && (*x.mode & MODE_MULTI_TURN);
}

static QString calibration_text(const char *format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    return QString::fromLatin1(text);
}

// The keypad on a button's or cell's text; a cancelled keypad gives the text
// back as it was, and the caller still takes it.
static QString calibration_enter(const QString &shown)
{
    char text[CALIBRATION_KEYPAD_LENGTH + 1];
    text_copy(text, sizeof text, shown.toLatin1().constData());
    EnterNumber(text, CALIBRATION_KEYPAD_LENGTH);
    return QString::fromLatin1(text);
}

CalibrationDialog::CalibrationDialog(QWidget *parent) : QDialog(parent), ui(new Ui::CalibrationDialog)
{
    ui->setupUi(this);
    for (QPushButton *button : {ui->AzOffsetEdit, ui->ElOffsetEdit, ui->AzRangeEdit, ui->ElRangeEdit,
                                ui->AzPulsesRevEdit, ui->ElPulsesRevEdit})
    {
        button->setStyleSheet(panel_style_text(STYLE_GRAY));
    }
    for (QAbstractButton *button : ui->buttonBox->buttons())
    {
        button->setMinimumSize(120, 50);
    }
    fillAxis(axis(0));
    fillAxis(axis(1));
    // Connected once the controls are filled, so that filling sends nothing.
    connectAxis(0);
    connectAxis(1);
}

CalibrationDialog::~CalibrationDialog()
{
    delete ui;
}

void CalibrationDialog::fillAxis(const CalibrationAxis &x)
{
    x.table->setColumnCount(1);
    x.table->setRowCount(x.bin_count);
    x.table->setHorizontalHeaderItem(0, new QTableWidgetItem(tr("Correction")));
    x.table->horizontalHeader()->setStretchLastSection(true);
    x.table->verticalScrollBar()->setStyleSheet("QScrollBar:vertical { width: 28px; }");
    for (int row = 0; row < x.bin_count; row++)
    {
        x.table->setVerticalHeaderItem(row, new QTableWidgetItem(QString::number(row * 10)));
        x.table->setItem(row, 0, new QTableWidgetItem(calibration_text("%0.1f", x.bins[row])));
    }
    x.address_box->setCurrentIndex(*x.address + 1);
    x.offset_button->setText(calibration_text("%0.1f", *x.offset));
    int a = *x.address;
    if (!calibration_valid(a))
    {
        x.range_button->setText("");
        x.pulses_button->setText("");
        x.range_button->setEnabled(false);
        x.pulses_button->setEnabled(false);
        x.level_box->setCurrentIndex(LEVEL_DISABLED);
        x.level_box->setEnabled(false);
        return;
    }
    uint8_t status = 0;
    if (calibration_is_brt(a))
    {
        brt_get_range(a, x.range);
        brt_get_ppr(a, x.ppr);
        x.level_box->setCurrentIndex(LEVEL_DISABLED);
        x.level_box->setEnabled(false);
    }
    else if (*x.mode & MODE_MULTI_TURN)
    {
        // A silent device leaves what the axis state held.
        sei_read_range(a, x.range, &status);
        sei_read_ppr(a, x.ppr, x.level, &status);
        x.level_box->setCurrentIndex(*x.level & 3);
    }
    x.range_button->setText(QString::number(*x.range));
    x.pulses_button->setText(QString::number(*x.ppr));
}

void CalibrationDialog::connectAxis(int elevation)
{
    CalibrationAxis x = axis(elevation);
    connect(x.address_box, &QComboBox::currentIndexChanged, this,
            elevation ? &CalibrationDialog::ElAddrIndexChanged : &CalibrationDialog::AzAddrIndexChanged);
    connect(x.offset_button, &QPushButton::pressed, this,
            elevation ? &CalibrationDialog::ElOffsetPressed : &CalibrationDialog::AzOffsetPressed);
    connect(x.range_button, &QPushButton::pressed, this,
            elevation ? &CalibrationDialog::ElRangePressed : &CalibrationDialog::AzRangePressed);
    connect(x.pulses_button, &QPushButton::pressed, this,
            elevation ? &CalibrationDialog::ElPulsesRevPressed : &CalibrationDialog::AzPulsesRevPressed);
    connect(x.level_box, &QComboBox::currentIndexChanged, this,
            elevation ? &CalibrationDialog::ElIndexPulseLevelChanged : &CalibrationDialog::AzIndexPulseLevelChanged);
    connect(x.table, &QTableWidget::itemPressed, this,
            elevation ? &CalibrationDialog::ElTablePressed : &CalibrationDialog::AzTablePressed);
}

// The axis keeps the mode and resolution of its earlier device until the
// next scan or start: the ready flags are left alone.
static void calibration_address(const CalibrationAxis &x, int index)
{
    if (index >= 0)
    {
        *x.address = index - 1;
    }
}

static void calibration_offset(const CalibrationAxis &x)
{
    QString text = calibration_enter(x.offset_button->text());
    *x.offset = atof(text.toLatin1().constData());
    x.offset_button->setText(text);
}

static void calibration_bin(const CalibrationAxis &x, QTableWidgetItem *item)
{
    int row = item->row();
    if (row < 0 || row >= x.bin_count)
    {
        return;
    }
    QString text = calibration_enter(item->text());
    x.bins[row] = atof(text.toLatin1().constData());
    item->setText(text);
}

static uint32_t calibration_count(QPushButton *button)
{
    QString text = calibration_enter(button->text());
    button->setText(text);
    return (uint32_t)strtoul(text.toLatin1().constData(), nullptr, 10);
}

static void calibration_pulses(const CalibrationAxis &x)
{
    *x.ppr = calibration_count(x.pulses_button);
    int a = *x.address;
    uint8_t status = 0;
    if (calibration_is_brt(a))
    {
        // A BRT-38 has no index pulse to configure.
        brt_set_ppr(a, *x.ppr);
        *x.level = LEVEL_DISABLED;
        QSignalBlocker quiet(x.level_box);
        x.level_box->setCurrentIndex(LEVEL_DISABLED);
    }
    else if (calibration_multi_turn(x))
    {
        sei_write_ppr(a, *x.ppr, *x.level, &status);
    }
}

static void calibration_range(const CalibrationAxis &x)
{
    *x.range = calibration_count(x.range_button);
    int a = *x.address;
    uint8_t status = 0;
    if (calibration_is_brt(a))
    {
        brt_set_range(a, *x.range);
    }
    else if (calibration_multi_turn(x))
    {
        sei_write_range(a, *x.range, &status);
    }
}

// Pulses and level always reach a device together.
static void calibration_level(const CalibrationAxis &x, int level)
{
    uint8_t status = 0;
    *x.level = (uint8_t)(level & 3);
    if (calibration_multi_turn(x))
    {
        sei_write_ppr(*x.address, *x.ppr, *x.level, &status);
    }
}

void CalibrationDialog::AzAddrIndexChanged(int index)
{
    calibration_address(axis(0), index);
}

void CalibrationDialog::ElAddrIndexChanged(int index)
{
    calibration_address(axis(1), index);
}

void CalibrationDialog::AzOffsetPressed(void)
{
    calibration_offset(axis(0));
}

void CalibrationDialog::ElOffsetPressed(void)
{
    calibration_offset(axis(1));
}

void CalibrationDialog::AzRangePressed(void)
{
    calibration_range(axis(0));
}

void CalibrationDialog::ElRangePressed(void)
{
    calibration_range(axis(1));
}

void CalibrationDialog::AzPulsesRevPressed(void)
{
    calibration_pulses(axis(0));
}

void CalibrationDialog::ElPulsesRevPressed(void)
{
    calibration_pulses(axis(1));
}

void CalibrationDialog::AzIndexPulseLevelChanged(int level)
{
    calibration_level(axis(0), level);
}

void CalibrationDialog::ElIndexPulseLevelChanged(int level)
{
    calibration_level(axis(1), level);
}

void CalibrationDialog::AzTablePressed(QTableWidgetItem *item)
{
    calibration_bin(axis(0), item);
}

void CalibrationDialog::ElTablePressed(QTableWidgetItem *item)
{
    calibration_bin(axis(1), item);
}
