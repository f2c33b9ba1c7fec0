#include "widgets/home_station_dialog.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "ui_home_station_dialog.h"
#include "widgets/enter.h"
#include "widgets/locator.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

void home_station_dms(double value, int *degrees, int *minutes, double *seconds, int *negative)
{
    int whole = (int)value % 360;
    double m = (value - whole) * 60.0;
    int whole_minutes = (int)m;
    *degrees = abs(whole);
    *minutes = abs(whole_minutes);
    *seconds = fabs((m - whole_minutes) * 60.0);
    *negative = value < 0.0;
}

HomeStationDialog::HomeStationDialog(QWidget *parent) : QDialog(parent), ui(new Ui::HomeStationDialog)
{
    ui->setupUi(this);
    setFixedSize(size());
    apply_styles();

    char text[32];
    ui->CallsignEdit->setText(QString::fromUtf8(settings.Callsign));
    ui->LocationEdit->setText(QString::fromUtf8(settings.Location));
    ui->GridEdit->setText(QString::fromUtf8(settings.Grid));
    snprintf(text, sizeof text, "%7.2f", settings.Frequency);
    ui->FrequencyEdit->setText(text);
    refresh_position_fields();
    connect_controls();
}

HomeStationDialog::~HomeStationDialog()
{
    delete ui;
}

void HomeStationDialog::apply_styles(void)
{
    for (QPushButton *button : findChildren<QPushButton *>())
    {
        button->setStyleSheet(panel_style_text(STYLE_GRAY));
    }
    // The N/S and E/W letters need the room the default arrow box and
    // frame take from them: a margin on the left and a wide arrow box.
    const QString combo = QString("QComboBox { %1 padding-left: 16px; }"
                                  "QComboBox::drop-down { width: 36px; }")
                              .arg(QString::fromLatin1(panel_style_text(STYLE_GRAY)));
    for (QComboBox *box : findChildren<QComboBox *>())
    {
        box->setStyleSheet(combo);
    }
    // OK and Cancel are touched with a finger like every other control.
    for (QAbstractButton *button : ui->buttonBox->buttons())
    {
        button->setMinimumSize(120, 50);
    }
}

void HomeStationDialog::connect_controls(void)
{
    connect(ui->CallsignEdit, &QPushButton::pressed, this, &HomeStationDialog::CallsignEditPressed);
    connect(ui->LocationEdit, &QPushButton::pressed, this, &HomeStationDialog::LocationEditPressed);
    connect(ui->GridEdit, &QPushButton::pressed, this, &HomeStationDialog::GridEditPressed);
    connect(ui->FrequencyEdit, &QPushButton::pressed, this, &HomeStationDialog::FrequencyEditPressed);
    connect(ui->LatitudeEdit, &QPushButton::pressed, this, &HomeStationDialog::LatitudeEditPressed);
    connect(ui->LongitudeEdit, &QPushButton::pressed, this, &HomeStationDialog::LongitudeEditPressed);
    connect(ui->LatitudeDegEdit, &QPushButton::pressed, this, &HomeStationDialog::LatitudeDegEditPressed);
    connect(ui->LatitudeMinEdit, &QPushButton::pressed, this, &HomeStationDialog::LatitudeMinEditPressed);
    connect(ui->LatitudeSecEdit, &QPushButton::pressed, this, &HomeStationDialog::LatitudeSecEditPressed);
    connect(ui->LatitudeNS, &QComboBox::currentIndexChanged, this, &HomeStationDialog::LatitudeNSChanged);
    connect(ui->LongitudeDegEdit, &QPushButton::pressed, this, &HomeStationDialog::LongitudeDegEditPressed);
    connect(ui->LongitudeMinEdit, &QPushButton::pressed, this, &HomeStationDialog::LongitudeMinEditPressed);
    connect(ui->LongitudeSecEdit, &QPushButton::pressed, this, &HomeStationDialog::LongitudeSecEditPressed);
    connect(ui->LongitudeEW, &QComboBox::currentIndexChanged, this, &HomeStationDialog::LongitudeEWChanged);
    connect(ui->gridConvertButton, &QPushButton::pressed, this, &HomeStationDialog::gridConvertPressed);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

// The keyboard is titled with the field's label and starts from the stored
// text. The answer is cut to the field, so the record's text always ends.
int HomeStationDialog::edit_text(QLabel *label, QPushButton *button, char *field, int field_size, int limit)
{
    if (!enter_text_field(label->text().toUtf8().constData(), field, field_size, limit))
    {
        return 0;
    }
    button->setText(QString::fromUtf8(field));
    return 1;
}

// The keypad starts from what the button shows. A declined keypad changes
// nothing: reading the shown, rounded text back would move the value.
int HomeStationDialog::edit_number(QPushButton *button, int limit, double *value)
{
    char text[32];
    text_copy(text, sizeof text, button->text().toUtf8().constData());
    if (!enter_number_field(text, sizeof text, limit))
    {
        return 0;
    }
    *value = atof(text);
    return 1;
}

// A degree, minute or second button takes the typed text as it stands; the
// angle is then worked out from all three.
int HomeStationDialog::edit_part(QPushButton *button, int limit)
{
    char text[32];
    text_copy(text, sizeof text, button->text().toUtf8().constData());
    if (!enter_number_field(text, sizeof text, limit))
    {
        return 0;
    }
    button->setText(QString::fromUtf8(text));
    return 1;
}

void HomeStationDialog::CallsignEditPressed(void)
{
    edit_text(ui->CallsignLabel, ui->CallsignEdit, settings.Callsign, sizeof settings.Callsign, 12);
}

void HomeStationDialog::LocationEditPressed(void)
{
    edit_text(ui->LocationLabel, ui->LocationEdit, settings.Location, sizeof settings.Location, 64);
}

// The locator is stored as typed; the position follows it only through
// Grid Convert, so a locator can be corrected without losing a surveyed
// position.
void HomeStationDialog::GridEditPressed(void)
{
    edit_text(ui->GridLabel, ui->GridEdit, settings.Grid, sizeof settings.Grid, 9);
}

void HomeStationDialog::FrequencyEditPressed(void)
{
    if (!edit_number(ui->FrequencyEdit, 16, &settings.Frequency))
    {
        return;
    }
    char text[32];
    snprintf(text, sizeof text, "%7.2f", settings.Frequency);
    ui->FrequencyEdit->setText(text);
}

void HomeStationDialog::LatitudeEditPressed(void)
{
    if (edit_number(ui->LatitudeEdit, 20, &settings.Latitude))
    {
        refresh_position_fields();
    }
}

void HomeStationDialog::LongitudeEditPressed(void)
{
    if (edit_number(ui->LongitudeEdit, 20, &settings.Longitude))
    {
        refresh_position_fields();
    }
}

void HomeStationDialog::LatitudeDegEditPressed(void)
{
    if (edit_part(ui->LatitudeDegEdit, 20))
    {
        DMStoLatitude();
    }
}

void HomeStationDialog::LatitudeMinEditPressed(void)
{
    if (edit_part(ui->LatitudeMinEdit, 10))
    {
        DMStoLatitude();
    }
}

void HomeStationDialog::LatitudeSecEditPressed(void)
{
    if (edit_part(ui->LatitudeSecEdit, 10))
    {
        DMStoLatitude();
    }
}

void HomeStationDialog::LatitudeNSChanged(int)
{
    DMStoLatitude();
}

void HomeStationDialog::LongitudeDegEditPressed(void)
{
    if (edit_part(ui->LongitudeDegEdit, 10))
    {
        DMStoLongitude();
    }
}

void HomeStationDialog::LongitudeMinEditPressed(void)
{
    if (edit_part(ui->LongitudeMinEdit, 10))
    {
        DMStoLongitude();
    }
}

void HomeStationDialog::LongitudeSecEditPressed(void)
{
    if (edit_part(ui->LongitudeSecEdit, 10))
    {
        DMStoLongitude();
    }
}

void HomeStationDialog::LongitudeEWChanged(int)
{
    DMStoLongitude();
}

// A bad locator changes nothing and says nothing: the fields simply show the
// position that stands.
void HomeStationDialog::gridConvertPressed(void)
{
    double latitude, longitude;
    if (grid_to_position(settings.Grid, &latitude, &longitude) == 0)
    {
        settings.Latitude = latitude;
        settings.Longitude = longitude;
    }
    refresh_position_fields();
}

double HomeStationDialog::dms_value(QPushButton *degrees, QPushButton *minutes, QPushButton *seconds, QComboBox *sign)
{
    double value = atoi(degrees->text().toUtf8().constData()) + atoi(minutes->text().toUtf8().constData()) / 60.0 +
                   atof(seconds->text().toUtf8().constData()) / 3600.0;
    return sign->currentIndex() == 1 ? -value : value;
}

void HomeStationDialog::DMStoLatitude(void)
{
    char text[32];
    settings.Latitude = dms_value(ui->LatitudeDegEdit, ui->LatitudeMinEdit, ui->LatitudeSecEdit, ui->LatitudeNS);
    snprintf(text, sizeof text, "%7.6f", settings.Latitude);
    ui->LatitudeEdit->setText(text);
}

void HomeStationDialog::DMStoLongitude(void)
{
    char text[32];
    settings.Longitude = dms_value(ui->LongitudeDegEdit, ui->LongitudeMinEdit, ui->LongitudeSecEdit, ui->LongitudeEW);
    snprintf(text, sizeof text, "%7.6f", settings.Longitude);
    ui->LongitudeEdit->setText(text);
}

// Showing a position must not feed back into it: the hemisphere box is set
// with its signal held, or the rounded seconds would be read back as the
// position.
void HomeStationDialog::show_position(double value, QPushButton *decimal, QPushButton *degrees, QPushButton *minutes,
                                      QPushButton *seconds, QComboBox *sign)
{
    char text[32];
    int d, m, negative;
    double s;
    home_station_dms(value, &d, &m, &s, &negative);
    snprintf(text, sizeof text, "%7.6f", value);
    decimal->setText(text);
    snprintf(text, sizeof text, "%d", d);
    degrees->setText(text);
    snprintf(text, sizeof text, "%d", m);
    minutes->setText(text);
    snprintf(text, sizeof text, "%7.2f", s);
    seconds->setText(text);
    QSignalBlocker hold(sign);
    sign->setCurrentIndex(negative ? 1 : 0);
}

void HomeStationDialog::refresh_position_fields(void)
{
    show_position(settings.Latitude, ui->LatitudeEdit, ui->LatitudeDegEdit, ui->LatitudeMinEdit, ui->LatitudeSecEdit,
                  ui->LatitudeNS);
    show_position(settings.Longitude, ui->LongitudeEdit, ui->LongitudeDegEdit, ui->LongitudeMinEdit,
                  ui->LongitudeSecEdit, ui->LongitudeEW);
}
