// DxStationDialog: the DX station list in a table. A touch on any cell of a
// row makes that station the DX station at once; OK lets the panel take it up.
#pragma once

#include <QDialog>

class QTableWidgetItem;

namespace Ui
{
class DxStationDialog;
}

// The background of a row's colour index, 0 to 3.
void dx_station_colour(int index, int *red, int *green, int *blue);

class DxStationDialog : public QDialog
{
    Q_OBJECT

  public:
    // The list is read from path, or from "DxStations.txt" beside the program.
    explicit DxStationDialog(QWidget *parent = nullptr, const char *path = nullptr);
    ~DxStationDialog() override;

    Ui::DxStationDialog *ui;

  public slots:
    void DxStationSelected(QTableWidgetItem *item);

  private:
    void fill_table(void);
};
