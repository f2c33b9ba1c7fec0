// The sources table: all 27 sources with their position, distance, phase and
// rise and set, refreshed once a second on the sky map's clock. The operator
// selects the tracking source here and types in the user positions.
#pragma once

#include <QDialog>
#include <QTimer>

class QTableWidgetItem;

namespace Ui
{
class SourcesDialog;
}

class SourcesDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit SourcesDialog(QWidget *parent = nullptr);
    ~SourcesDialog() override;

    Ui::SourcesDialog *ui;
    QTimer *timer;

  public slots:
    void TimerEvent(void);
    void SourceChanged(QTableWidgetItem *item);
    void ItemPressed(QTableWidgetItem *item);
    void Recalculate(void);

  private:
    void buildTable(void);
};

// The cells the operator may edit: User Az/El's azimuth and elevation, User
// RA/Dec's right ascension and declination.
int sources_cell_editable(int row, int column);
