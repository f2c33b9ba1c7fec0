// CalibrationDialog: which encoder serves which axis, and how its reading is
// corrected: the bus addresses, the fixed offsets, the 10-degree correction
// bins, and a multi-turn device's range, pulses per revolution and index
// pulse. Every edit takes effect at once, in the settings and on the device;
// OK only adds the save.
#pragma once

#include <QDialog>

class QTableWidgetItem;
struct CalibrationAxis;

namespace Ui
{
class CalibrationDialog;
}

class CalibrationDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit CalibrationDialog(QWidget *parent = nullptr);
    ~CalibrationDialog() override;

    Ui::CalibrationDialog *ui;

  public slots:
    void AzAddrIndexChanged(int index);
    void ElAddrIndexChanged(int index);
    void AzOffsetPressed(void);
    void ElOffsetPressed(void);
    void AzRangePressed(void);
    void ElRangePressed(void);
    void AzPulsesRevPressed(void);
    void ElPulsesRevPressed(void);
    void AzIndexPulseLevelChanged(int level);
    void ElIndexPulseLevelChanged(int level);
    void AzTablePressed(QTableWidgetItem *item);
    void ElTablePressed(QTableWidgetItem *item);

  private:
    CalibrationAxis axis(int elevation);
    void fillAxis(const CalibrationAxis &x);
    void connectAxis(int elevation);
};
