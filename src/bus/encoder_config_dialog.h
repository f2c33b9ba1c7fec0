// ConfigDialog: what kind of device an address of the encoder table carries,
// and the mode, resolution, pulses and range the program keeps for it. No
// frame goes out from here; the next scan asks the address by its new type.
#pragma once

#include <QDialog>

class QPushButton;

namespace Ui
{
class ConfigDialog;
}

class ConfigDialog : public QDialog
{
    Q_OBJECT

  public:
    ConfigDialog(int address, QWidget *parent = nullptr);
    // Stores the shown values into the entry, whichever button closed it.
    ~ConfigDialog() override;

    Ui::ConfigDialog *ui;

  public slots:
    void TypeChanged(int index);
    void ModePressed(void);
    void ResolutionPressed(void);
    void PprPressed(void);
    void RangePressed(void);

  private:
    int address;
    void editNumber(QPushButton *button);
};
