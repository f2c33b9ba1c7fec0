// EncoderDialog: the bus's inventory, a table of the 15 addresses asked once
// a second. Pressing a cell changes the device's address, resolution,
// position or mode on the bus, or says in ConfigDialog what kind of device an
// address carries. The main cycle stands still meanwhile, so the dialog is
// the bus's only user.
#pragma once

#include <QDialog>

class QTableWidgetItem;
class QTimer;

namespace Ui
{
class EncoderDialog;
}

class EncoderDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit EncoderDialog(QWidget *parent = nullptr);
    ~EncoderDialog() override;

    Ui::EncoderDialog *ui;
    QTimer *timer;

  public slots:
    bool SetConfiguration(int addr);
    void ItemPressed(QTableWidgetItem *item);
    void EncoderScan(void);
    void EncoderClose(void);
    void TimerEvent(void);

  private:
    bool presses_connected;
    void showRow(int a);
    void pressValue(int row, int column);
};
