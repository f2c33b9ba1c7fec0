// The weather station's dialog: address, calibration word, which sensors are
// polled and how often, units and alarm limits, and the wind stow. Edits go
// straight into the weather record while polling goes on; OK saves.
#pragma once

#include <QDialog>

class QComboBox;
class QPushButton;
class QRadioButton;

class WxConfigDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit WxConfigDialog(QWidget *parent = nullptr);

    QComboBox *WxStationEdit;
    QPushButton *CalibrationEdit;
    QRadioButton *sensor_buttons[5]; // WindSpeed, WindDirection, Thermometer, Barometer, Altimeter
    QPushButton *interval_edits[5];
    QComboBox *WindSpeedUnits;
    QComboBox *ThermometerUnits;
    QComboBox *BarometerUnits;
    QComboBox *AltimeterUnits;
    QPushButton *WindSpeedAlarmHighEdit;
    QPushButton *WindDirectionAlarmLowEdit;
    QPushButton *WindDirectionAlarmHighEdit;
    QPushButton *ThermometerAlarmLowEdit;
    QPushButton *ThermometerAlarmHighEdit;
    QRadioButton *WindStowButton;
    QPushButton *WindStowResumeEdit;
    QPushButton *WindStowMinutesEdit;

  public slots:
    void WxConfigChanged(void);
    void WxStationAddrChanged(int index);
    void CalibrationPressed(void);
    void WindSpeedUnitsChanged(int index);
    void ThermometerUnitsChanged(int index);
    void BarometerUnitsChanged(int index);
    void AltimeterUnitsChanged(int index);
    void WindSpeedPressed(void);
    void WindDirectionPressed(void);
    void ThermometerPressed(void);
    void BarometerPressed(void);
    void AltimeterPressed(void);
    void WindSpeedAlarmHighPressed(void);
    void WindDirectionAlarmLowPressed(void);
    void WindDirectionAlarmHighPressed(void);
    void ThermometerAlarmLowPressed(void);
    void ThermometerAlarmHighPressed(void);
    void WindStowChanged(void);
    void WindStowResumePressed(void);
    void WindStowMinutesPressed(void);

  private:
    void buildSensorRows(class QGridLayout *grid);
    void buildStowRow(class QGridLayout *grid);
};

// Edit a whole number or a one-decimal value on the keypad, up to 16
// characters, and show what was taken on the button.
void weather_edit_int(QPushButton *button, int32_t *value);
void weather_edit_double(QPushButton *button, double *value);
