#include "astro/sources_dialog.h"

#include "astro/source.h"
#include "astro/source_names.h"
#include "core/clock.h"
#include "core/state.h"
#include "ui_sources_dialog.h"
#include "widgets/enter.h"
#include "widgets/touch_style.h"

#include <QColor>
#include <QTableWidgetItem>
#include <cstdio>
#include <cstdlib>
#include <libnova/julian_day.h>

enum
{
    SOURCES_COLUMNS = 9,
    SOURCES_REFRESH_MS = 1000,
    SOURCES_ENTRY_LENGTH = 16
};

// The background of a source's name says its class; remote rows have none.
static QColor sources_class_colour(int row)
{
    if (row == SOURCE_MOON)
    {
        return QColor(0, 170, 255);
    }
    if (row == SOURCE_SUN || (row >= 12 && row <= 20))
    {
        return QColor(255, 85, 127);
    }
    if (row == SOURCE_USER_AZEL || row == SOURCE_USER_RADEC)
    {
        return QColor(0, 219, 197);
    }
    if (row >= 4 && row <= 11)
    {
        return QColor(190, 190, 190);
    }
    if (row >= 21 && row <= 23)
    {
        return QColor(85, 255, 255);
    }
    return QColor();
}

int sources_cell_editable(int row, int column)
{
    return (row == SOURCE_USER_AZEL && (column == 1 || column == 2)) ||
           (row == SOURCE_USER_RADEC && (column == 3 || column == 4));
}

SourcesDialog::SourcesDialog(QWidget *parent) : QDialog(parent), ui(new Ui::SourcesDialog), timer(new QTimer(this))
{
    ui->setupUi(this);
    touch_style_dialog(this);
    setFixedSize(761, 398);
    buildTable();
    ui->tableWidget->setSelectionBehavior(QAbstractItemView::SelectRows);
    connect(ui->tableWidget, &QTableWidget::itemClicked, this, &SourcesDialog::SourceChanged);
    connect(ui->tableWidget, &QTableWidget::itemPressed, this, &SourcesDialog::ItemPressed);
    Recalculate();
    // The operator sees the source that is tracked now; only a click changes it.
    if (settings.TrackingSource >= 0 && settings.TrackingSource < SOURCE_COUNT)
    {
        ui->tableWidget->selectRow(settings.TrackingSource);
    }
    connect(timer, &QTimer::timeout, this, &SourcesDialog::TimerEvent);
    timer->start(SOURCES_REFRESH_MS);
}

SourcesDialog::~SourcesDialog()
{
    delete ui;
}

void SourcesDialog::buildTable(void)
{
    static const char *const headers[SOURCES_COLUMNS] = {"Source",   "Azimuth", "Elevation", "RA",      "Declination",
                                                         "Distance", "Phase",   "Rise Time", "Set Time"};
    // All nine columns fit the width of the panel without scrolling sideways.
    static const int widths[SOURCES_COLUMNS] = {100, 70, 70, 60, 82, 80, 48, 90, 90};
    QTableWidget *table = ui->tableWidget;
    table->setRowCount(SOURCE_COUNT);
    table->setColumnCount(SOURCES_COLUMNS);
    QStringList labels;
    for (int column = 0; column < SOURCES_COLUMNS; column++)
    {
        labels << QString::fromLatin1(headers[column]);
        table->setColumnWidth(column, widths[column]);
    }
    table->setHorizontalHeaderLabels(labels);
    QStringList rows;
    for (int row = 0; row < SOURCE_COUNT; row++)
    {
        rows << QString::number(row);
        auto *name = new QTableWidgetItem(QString::fromLatin1(source_name(row)));
        QColor colour = sources_class_colour(row);
        if (colour.isValid())
        {
            name->setBackground(colour);
        }
        table->setItem(row, 0, name);
    }
    table->setVerticalHeaderLabels(rows);
}

void SourcesDialog::TimerEvent(void)
{
    Recalculate();
}

static void sources_date_text(double jd, char *text, int size)
{
    struct ln_date date;
    ln_get_date(jd, &date);
    snprintf(text, size, "%02d-%02d %02d:%02d", date.months, date.days, date.hours, date.minutes);
}

// The eight figures of a row, in column order 1 to 8.
static void sources_row_texts(const SourceRecord *r, char texts[8][32])
{
    snprintf(texts[0], 32, "%7.2f", r->az);
    snprintf(texts[1], 32, "%7.2f", r->el);
    snprintf(texts[2], 32, "%7.2f", r->ra);
    snprintf(texts[3], 32, "%7.2f", r->dec);
    snprintf(texts[4], 32, "%9.6f", r->distance);
    snprintf(texts[5], 32, "%4.2f", r->phase);
    sources_date_text(r->rise, texts[6], 32);
    sources_date_text(r->set, texts[7], 32);
}

// The table runs on the sky map's clock, so after the map was left shifted it
// shows the shifted instant.
void SourcesDialog::Recalculate(void)
{
    time_t now = clock_utc() + map_time_offset;
    struct tm tm;
    gmtime_r(&now, &tm);
    for (int row = 0; row < SOURCE_COUNT; row++)
    {
        SourceRecord &record = source_table[row];
        source_calculate(row, SOURCE_MASK_ALL, &tm, settings.Latitude, settings.Longitude, settings.Frequency, record);
        char texts[8][32];
        sources_row_texts(&record, texts);
        QColor background = record.el > 0.0 ? QColor(172, 255, 172) : QColor(190, 190, 190);
        for (int column = 1; column < SOURCES_COLUMNS; column++)
        {
            auto *item = new QTableWidgetItem(QString::fromLatin1(texts[column - 1]));
            item->setBackground(background);
            if (!sources_cell_editable(row, column))
            {
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            }
            ui->tableWidget->setItem(row, column, item);
        }
    }
}

// The selection holds at once: Cancel does not take it back.
void SourcesDialog::SourceChanged(QTableWidgetItem *item)
{
    int row = item->row();
    if (row < 0 || row >= SOURCE_COUNT)
    {
        return;
    }
    settings.TrackingSource = row;
}

// The user values go to the settings (the engine copies them from there at
// each refresh) and to the row, so the table and the panel agree at once.
static void sources_store_user_value(int row, int column, double value)
{
    if (row == SOURCE_USER_AZEL && column == 1)
    {
        source_table[row].az = settings.User_Azimuth = value;
    }
    else if (row == SOURCE_USER_AZEL && column == 2)
    {
        source_table[row].el = settings.User_Elevation = value;
    }
    else if (row == SOURCE_USER_RADEC && column == 3)
    {
        source_table[row].ra = settings.User_RA = value;
    }
    else if (row == SOURCE_USER_RADEC && column == 4)
    {
        source_table[row].dec = settings.User_Declination = value;
    }
}

// A press on one of the user cells opens the keypad; the refresh is held off
// meanwhile, or it would replace the cell under the operator's finger. Every
// press, on any cell, starts the second of the refresh again.
void SourcesDialog::ItemPressed(QTableWidgetItem *item)
{
    int row = item->row();
    int column = item->column();
    if (sources_cell_editable(row, column))
    {
        timer->stop();
        char buffer[SOURCES_ENTRY_LENGTH + 4];
        text_copy(buffer, sizeof buffer, item->text().toLatin1().constData());
        enter_number_field(buffer, sizeof buffer, SOURCES_ENTRY_LENGTH);
        item->setText(QString::fromLatin1(buffer));
        // No range test here: a text that is no number gives 0.
        sources_store_user_value(row, column, atof(buffer));
    }
    timer->start(SOURCES_REFRESH_MS);
}
