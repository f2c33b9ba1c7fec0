// HomeStationDialog: call sign, locator, location, frequency and the station's
// position, in decimal degrees or degrees, minutes and seconds. Every field is
// a button that opens the keyboard or the keypad, and every edit goes straight
// into the settings record: OK only adds the save.
#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;

namespace Ui
{
class HomeStationDialog;
}

// Split an angle for the degree, minute and second buttons: the whole degrees
// (modulo 360, with the angle's sign), whole minutes and seconds, all taken
// as magnitudes, and whether the angle is negative (S or W).
void home_station_dms(double value, int *degrees, int *minutes, double *seconds, int *negative);

class HomeStationDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit HomeStationDialog(QWidget *parent = nullptr);
    ~HomeStationDialog() override;

    Ui::HomeStationDialog *ui;

    void DMStoLatitude(void);
    void DMStoLongitude(void);
    void refresh_position_fields(void);

  public slots:
    void CallsignEditPressed(void);
    void LocationEditPressed(void);
    void GridEditPressed(void);
    void FrequencyEditPressed(void);
    void LatitudeEditPressed(void);
    void LongitudeEditPressed(void);
    void LatitudeDegEditPressed(void);
    void LatitudeMinEditPressed(void);
    void LatitudeSecEditPressed(void);
    void LatitudeNSChanged(int index);
    void LongitudeDegEditPressed(void);
    void LongitudeMinEditPressed(void);
    void LongitudeSecEditPressed(void);
    void LongitudeEWChanged(int index);
    void gridConvertPressed(void);

  private:
    void connect_controls(void);
    void apply_styles(void);
    int edit_text(QLabel *label, QPushButton *button, char *field, int field_size, int limit);
    int edit_number(QPushButton *button, int limit, double *value);
    int edit_part(QPushButton *button, int limit);
    double dms_value(QPushButton *degrees, QPushButton *minutes, QPushButton *seconds, QComboBox *sign);
    void show_position(double value, QPushButton *decimal, QPushButton *degrees, QPushButton *minutes,
                       QPushButton *seconds, QComboBox *sign);
};
