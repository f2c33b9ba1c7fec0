#include "bus/encoder_dialog.h"

#include "bus/encoder_config_dialog.h"
#include "bus/encoder_scan.h"
#include "bus/encoders.h"
#include "core/state.h"
#include "ui_encoder_dialog.h"
#include "widgets/enter.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableWidget>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <cstring>

enum
{
    SCAN_PERIOD_MS = 1000,
    SCAN_KEYPAD_LENGTH = 8
};

EncoderDialog::EncoderDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::EncoderDialog), timer(new QTimer(this)), presses_connected(false)
{
    ui->setupUi(this);
    setFixedSize(size());
    static const char *const headers[SCAN_COLUMNS] = {"Addr",   "Type", "Model",      "Version",  "Config",
                                                      "Serial", "Date", "Resolution", "Position", "Mode"};
    static const int widths[SCAN_COLUMNS] = {50, 50, 60, 60, 60, 80, 100, 100, 100, 60};
    QTableWidget *table = ui->tableWidget;
    for (int c = 0; c < SCAN_COLUMNS; c++)
    {
        table->setHorizontalHeaderItem(c, new QTableWidgetItem(tr(headers[c])));
        table->setColumnWidth(c, widths[c]);
    }
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setDefaultSectionSize(32);
    // Scroll bars wide enough for a finger.
    table->verticalScrollBar()->setStyleSheet("QScrollBar:vertical { width: 32px; }");
    for (QAbstractButton *button : ui->buttonBox->buttons())
    {
        button->setMinimumSize(120, 50);
    }
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, [this] { EncoderClose(), accept(); });
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, [this] { EncoderClose(), reject(); });

    // The first pass comes a second after opening; until then the table is empty.
    connect(timer, &QTimer::timeout, this, &EncoderDialog::TimerEvent);
    timer->start(SCAN_PERIOD_MS);
}

EncoderDialog::~EncoderDialog()
{
    delete ui;
}

void EncoderDialog::TimerEvent(void)
{
    EncoderScan();
}

void EncoderDialog::EncoderClose(void)
{
    timer->stop();
}

void EncoderDialog::showRow(int a)
{
    ScanRow row = encoder_scan_address(a);
    char texts[SCAN_COLUMNS][SCAN_TEXT_SIZE];
    int filled[SCAN_COLUMNS];
    encoder_row_texts(a, &row, texts, filled);
    for (int c = 0; c < SCAN_COLUMNS; c++)
    {
        if (!filled[c])
        {
            continue;
        }
        QTableWidgetItem *item = ui->tableWidget->item(a, c);
        if (!item)
        {
            item = new QTableWidgetItem();
            ui->tableWidget->setItem(a, c, item);
        }
        item->setText(QString::fromLatin1(texts[c]));
        if (c >= SCAN_MODEL)
        {
            bool editable = !row.silent && c >= SCAN_RESOLUTION;
            item->setFlags(editable ? item->flags() | Qt::ItemIsEditable : item->flags() & ~Qt::ItemIsEditable);
        }
    }
}

// One pass over the bus, row by row, each shown as soon as it is asked; a
// silent SEI address costs its 200 ms, so the table fills while one waits.
void EncoderDialog::EncoderScan(void)
{
    for (int a = 0; a < ENCODER_COUNT; a++)
    {
        if (!timer->isActive())
        {
            return;
        }
        showRow(a);
        repaint();
    }
    // A press before the first whole pass would act on an empty table.
    if (!presses_connected)
    {
        connect(ui->tableWidget, &QTableWidget::itemPressed, this, &EncoderDialog::ItemPressed);
        presses_connected = true;
    }
}

bool EncoderDialog::SetConfiguration(int addr)
{
    ConfigDialog dialog(addr, this);
    return dialog.exec() != 0;
}

void EncoderDialog::pressValue(int row, int column)
{
    QTableWidgetItem *item = ui->tableWidget->item(row, column);
    // A blank cell is a silent device: there is nothing to change.
    if (!item || item->text().isEmpty())
    {
        return;
    }
    char text[SCAN_KEYPAD_LENGTH + 1] = "";
    text_copy(text, sizeof text, item->text().toLatin1().constData());
    EnterNumber(text, SCAN_KEYPAD_LENGTH);
    item->setText(QString::fromLatin1(text));
    long value = strtol(text, nullptr, 10);
    if (column == SCAN_RESOLUTION)
    {
        encoder_change_resolution(row, value);
    }
    else if (column == SCAN_POSITION)
    {
        encoder_preset_position(row, (uint32_t)strtoul(text, nullptr, 10));
    }
    else
    {
        encoder_change_mode(row, value);
    }
}

// The scan waits while a press is handled, keypad and all; the next pass
// shows what the device now says.
void EncoderDialog::ItemPressed(QTableWidgetItem *item)
{
    timer->stop();
    int row = item->row(), column = item->column();
    if (row < ENCODER_COUNT && column == SCAN_ADDRESS)
    {
        char text[16];
        snprintf(text, sizeof text, "%d", row);
        EnterNumber(text, SCAN_KEYPAD_LENGTH);
        if (encoder_change_address(row, atoi(text)))
        {
            EncoderClose();
            accept();
            return;
        }
    }
    else if (row < ENCODER_COUNT && column == SCAN_TYPE)
    {
        SetConfiguration(row);
    }
    else if (row < ENCODER_COUNT && column >= SCAN_RESOLUTION)
    {
        pressValue(row, column);
    }
    timer->start(SCAN_PERIOD_MS);
}
