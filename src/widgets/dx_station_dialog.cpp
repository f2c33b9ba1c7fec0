#include "widgets/dx_station_dialog.h"

#include "core/state.h"
#include "ui_dx_station_dialog.h"
#include "widgets/dx_stations.h"
#include "widgets/locator.h"

#include <QAbstractButton>
#include <QColor>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableWidget>
#include <cstdio>

enum
{
    DX_COLUMN_LOCATION,
    DX_COLUMN_CALL,
    DX_COLUMN_GRID,
    DX_COLUMN_LATITUDE,
    DX_COLUMN_LONGITUDE,
    DX_COLUMNS
};

void dx_station_colour(int index, int *red, int *green, int *blue)
{
    static const int colours[4][3] = {{172, 255, 172}, {239, 255, 85}, {85, 255, 255}, {255, 170, 85}};
    const int *c = colours[index & 3];
    *red = c[0];
    *green = c[1];
    *blue = c[2];
}

DxStationDialog::DxStationDialog(QWidget *parent, const char *path) : QDialog(parent), ui(new Ui::DxStationDialog)
{
    ui->setupUi(this);
    setFixedSize(size());
    for (QAbstractButton *button : ui->buttonBox->buttons())
    {
        button->setMinimumSize(120, 50);
    }
    // Scroll bars wide enough for a finger.
    ui->tableWidget->verticalScrollBar()->setStyleSheet("QScrollBar:vertical { width: 32px; }");
    ui->tableWidget->horizontalScrollBar()->setStyleSheet("QScrollBar:horizontal { height: 32px; }");
    ui->tableWidget->verticalHeader()->setVisible(false);
    ui->tableWidget->verticalHeader()->setDefaultSectionSize(36);

    char file[512];
    if (path)
    {
        text_copy(file, sizeof file, path);
    }
    else
    {
        dx_station_path(file, sizeof file);
    }
    // A missing list is an empty table; there is nothing the operator could do
    // about a message here.
    dx_station_load(file);
    fill_table();

    connect(ui->tableWidget, &QTableWidget::itemClicked, this, &DxStationDialog::DxStationSelected);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

DxStationDialog::~DxStationDialog()
{
    delete ui;
}

// A line without a call heads a group: the colour moves on at that line, so
// the heading wears its group's colour.
void DxStationDialog::fill_table(void)
{
    QTableWidget *table = ui->tableWidget;
    table->setSortingEnabled(false);
    table->setColumnCount(DX_COLUMNS);
    table->setHorizontalHeaderLabels({"Location", "Prefix / Call", "Grid", "Latitude", "Longitude"});
    table->setColumnWidth(DX_COLUMN_LOCATION, 200);
    table->setColumnWidth(DX_COLUMN_CALL, 140);
    table->setColumnWidth(DX_COLUMN_GRID, 110);
    table->setColumnWidth(DX_COLUMN_LATITUDE, 110);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setRowCount(dx_station_count);
    int colour = 0;
    for (int row = 0; row < dx_station_count; row++)
    {
        DxStationRecord *record = &dx_station_table[row];
        if (!record->call[0])
        {
            colour = (colour + 1) % 4;
        }
        char latitude[32] = "", longitude[32] = "";
        if (grid_to_position(record->locator, &record->latitude, &record->longitude) == 0)
        {
            snprintf(latitude, sizeof latitude, "%5.2f", record->latitude);
            snprintf(longitude, sizeof longitude, "%5.2f", record->longitude);
        }
        const char *cells[DX_COLUMNS] = {record->location, record->call, record->locator, latitude, longitude};
        int red, green, blue;
        dx_station_colour(colour, &red, &green, &blue);
        for (int column = 0; column < DX_COLUMNS; column++)
        {
            QTableWidgetItem *item = new QTableWidgetItem(QString::fromUtf8(cells[column]));
            item->setBackground(QColor(red, green, blue));
            item->setForeground(QColor(Qt::black));
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
            table->setItem(row, column, item);
        }
    }
}

// Taken at once, so a Cancel afterwards keeps the choice in memory; only OK
// makes the panel convert and show it.
void DxStationDialog::DxStationSelected(QTableWidgetItem *item)
{
    int row = item ? item->row() : -1;
    if (row < 0 || row >= dx_station_count)
    {
        return;
    }
    const DxStationRecord *record = &dx_station_table[row];
    text_copy(dx_call, sizeof dx_call, record->call);
    text_copy(dx_grid, sizeof dx_grid, record->locator);
    dx_latitude = record->latitude;
    dx_longitude = record->longitude;
}
