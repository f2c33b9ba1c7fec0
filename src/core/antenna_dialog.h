// "Tracking Parameters": duty cycles, guard times, jog, slow degrees, range
// limits, hysteresis, park and service positions, and the sky model the drive
// follows (precise Moon, refraction, precession). It has no copy of the
// values: every control writes straight into settings, so a Cancel keeps
// what was changed and only the caller's save after Ok makes it last.
#pragma once

#include <QDialog>
#include <cstdint>

namespace Ui
{
class AntennaDialog;
}
class QComboBox;
class QPushButton;

// The combo index for a duty in percent: items are 5% steps from 5%.
int antenna_duty_index(double duty);
// The combo index for a guard time in seconds: items are half seconds from
// 0.5; an index past the list is 0.
int antenna_guard_index(double guard, int count);
// The value buttons: show the field with one decimal on the keypad and take
// whatever atof makes of the answer (a refused keypad keeps the shown text).
// text gets what the button is to show.
void antenna_enter_value(double *field, char *text, int size);
// The jog times: whole milliseconds from 1 to 100; anything else changes
// nothing. Returns 1 when the field took the new value (text then holds it).
int antenna_enter_jog_time(int32_t *field, char *text, int size);

class AntennaDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit AntennaDialog(QWidget *parent = nullptr);
    ~AntennaDialog() override;

    Ui::AntennaDialog *ui;

  public slots:
    void AzSpeedSlowChanged(int index);
    void AzSpeedFastChanged(int index);
    void AzSpeedManualChanged(int index);
    void AzGuardTimeChanged(int index);
    void AzSlowDegreesPressed(void);
    void AzJogEnableChanged(bool enable);
    void AzJogTimePressed(void);
    void ElSpeedSlowChanged(int index);
    void ElSpeedFastChanged(int index);
    void ElSpeedManualChanged(int index);
    void ElGuardTimeChanged(int index);
    void ElSlowDegreesPressed(void);
    void ElJogEnableChanged(bool state);
    void ElJogTimePressed(void);
    void AzLimitMinPressed(void);
    void AzLimitMaxPressed(void);
    void ElLimitMinPressed(void);
    void ElLimitMaxPressed(void);
    void AzStartPressed(void);
    void AzStopPressed(void);
    void ElStartPressed(void);
    void ElStopPressed(void);
    void AzParkPressed(void);
    void ElParkPressed(void);
    void AzServicePressed(void);
    void ElServicePressed(void);
    void PreciseMoonChanged(bool enable);
    void RefractionChanged(bool enable);
    void PrecessionChanged(bool enable);

  private:
    void fillControls(void);
    void connectControls(void);
    void enterValue(QPushButton *button, double *field);
    void enterJogTime(QPushButton *button, int32_t *field);
};
