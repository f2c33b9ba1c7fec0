#include "skymap/overlays_dialog.h"

#include "core/clock.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "skymap/frequency_dialog.h"
#include "skymap/overlays.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <cstdio>

// A combo box of numbers: item i shows first + i, and the bound field takes
// base + i (the month's items are names instead).
struct ChoiceBox
{
    const char *name;
    int x, y, width;
    int count;
    int first; // the number the first item shows
    int base;  // what the first item stores
    int32_t *field;
    const char *format;
};

static const int row_height = 40;

static const ChoiceBox date_boxes[] = {
    {"MonthComboBox", 75, 10, 150, 12, 1, 1, &map_date_time.Month, nullptr},
    {"DayComboBox", 230, 10, 70, 31, 1, 1, &map_date_time.Day, "%d"},
    {"YearComboBox", 305, 10, 95, 48, 2000, 2000, &map_date_time.Year, "%d"},
    {"HoursComboBox", 470, 10, 75, 24, 0, 0, &map_date_time.Hours, "%02d"},
    {"MinutesComboBox", 550, 10, 75, 60, 0, 0, &map_date_time.Minutes, "%02d"},
    {"SecondsComboBox", 630, 10, 75, 60, 0, 0, &map_date_time.Seconds, "%02d"},
};

static const ChoiceBox overlay_boxes[] = {
    {"StarsMagnitudeComboBox", 620, 170, 85, 21, 0, 0, &overlays.StarsMagnitude, "%d"},
    {"MapOffsetComboBox", 190, 290, 85, 24, 0, 0, &overlays.MapOffset, "%d"},
};

struct SwitchBox
{
    const char *name;
    const char *text;
    int column, row;
    uint8_t OverlaySettings::*field;
};

static const SwitchBox switch_boxes[] = {
    {"SunCheckbox", "Sun", 0, 0, &OverlaySettings::SunOverlay},
    {"MoonCheckbox", "Moon", 0, 1, &OverlaySettings::MoonOverlay},
    {"MercuryCheckbox", "Mercury", 0, 2, &OverlaySettings::MercuryOverlay},
    {"VenusCheckbox", "Venus", 0, 3, &OverlaySettings::VenusOverlay},
    {"MarsCheckbox", "Mars", 0, 4, &OverlaySettings::MarsOverlay},
    {"JupiterCheckbox", "Jupiter", 1, 0, &OverlaySettings::JupiterOverlay},
    {"SaturnCheckbox", "Saturn", 1, 1, &OverlaySettings::SaturnOverlay},
    {"NeptuneCheckbox", "Neptune", 1, 2, &OverlaySettings::NeptuneOverlay},
    {"UranusCheckbox", "Uranus", 1, 3, &OverlaySettings::UranusOverlay},
    {"PlutoCheckbox", "Pluto", 1, 4, &OverlaySettings::PlutoOverlay},
    {"SunShadingCheckbox", "Sun Shading", 2, 0, &OverlaySettings::SunShadingOverlay},
    {"MoonShadingCheckbox", "Moon Shading", 2, 1, &OverlaySettings::MoonShadingOverlay},
    {"SkyNoiseCheckbox", "Sky Noise", 2, 2, &OverlaySettings::SkyNoiseOverlay},
    {"StarsCheckbox", "Stars", 2, 3, &OverlaySettings::StarsOverlay},
    {"ConstellationsCheckbox", "Constellations", 2, 4, &OverlaySettings::ConstellationsOverlay},
    {"LatitudeGridlinesCheckbox", "Latitude Grid Lines", 3, 0, &OverlaySettings::LatitudeGridlines},
    {"LongitudeGridlinesCheckbox", "Longitude Grid Lines", 3, 1, &OverlaySettings::LongitudeGridlines},
};

struct LabelText
{
    const char *name;
    const char *text;
    int x, y, width, height;
};

static const LabelText labels[] = {
    {"DateLabel", "Date", 10, 10, 60, row_height},
    {"TimeLabel", "Time", 415, 10, 50, row_height},
    {"OverlayEnablesLabel", "Overlay Enables", 10, 56, 200, 26},
    {"MagnitudeLabel", "MAGN", 545, 170, 70, row_height},
    {"MapOffsetLabel", "Map Offset (hours)", 10, 290, 175, row_height},
    {"FrequencyLabel", "Frequency", 300, 290, 90, row_height},
};

static QComboBox *choice_box(QWidget *parent, const ChoiceBox &b)
{
    static const char *const months[12] = {"January", "February", "March",     "April",   "May",      "June",
                                           "July",    "August",   "September", "October", "November", "December"};
    QComboBox *box = new QComboBox(parent);
    box->setObjectName(b.name);
    box->setGeometry(b.x, b.y, b.width, row_height);
    for (int i = 0; i < b.count; i++)
    {
        box->addItem(b.format ? QString::asprintf(b.format, b.first + i) : QString::fromLatin1(months[i]));
    }
    box->setCurrentIndex(*b.field - b.base);
    box->setStyleSheet(panel_style_text(STYLE_GRAY));
    return box;
}

static void connect_choice(QDialog *dialog, QComboBox *box, const ChoiceBox &b)
{
    int32_t *field = b.field;
    int base = b.base;
    QObject::connect(box, &QComboBox::currentIndexChanged, dialog,
                     [field, base](int index)
                     {
                         if (index >= 0)
                         {
                             *field = base + index;
                         }
                     });
}

OverlaysDialog::OverlaysDialog(QWidget *parent) : QDialog(parent)
{
    setObjectName("OverlaysDialog");
    setWindowTitle(tr("SkyMap Configuration"));
    for (const LabelText &l : labels)
    {
        QLabel *label = new QLabel(tr(l.text), this);
        label->setObjectName(l.name);
        label->setGeometry(l.x, l.y, l.width, l.height);
    }
    build_date_time();
    build_switches();
    build_choices();
    ok_cancel_box(this, 452, 336, 250);
    setFixedSize(712, 390);
}

// The boxes show the map's time as the dialog opens; they are connected only
// afterwards, so showing it changes nothing.
void OverlaysDialog::build_date_time(void)
{
    clock_date_fields(clock_utc() + map_time_offset, &map_date_time);
    for (const ChoiceBox &b : date_boxes)
    {
        connect_choice(this, choice_box(this, b), b);
    }
}

void OverlaysDialog::build_switches(void)
{
    for (const SwitchBox &s : switch_boxes)
    {
        QCheckBox *box = new QCheckBox(tr(s.text), this);
        box->setObjectName(s.name);
        box->setGeometry(10 + 175 * s.column, 86 + 40 * s.row, 172, 36);
        box->setStyleSheet("QCheckBox::indicator { width: 26px; height: 26px; }");
        box->setChecked(overlays.*s.field != 0);
        uint8_t OverlaySettings::*field = s.field;
        connect(box, &QCheckBox::clicked, this, [field, box]() { overlays.*field = box->isChecked() ? 1 : 0; });
    }
}

void OverlaysDialog::build_choices(void)
{
    for (const ChoiceBox &b : overlay_boxes)
    {
        connect_choice(this, choice_box(this, b), b);
    }
    char text[32];
    snprintf(text, sizeof text, "%7.2f", settings.Frequency);
    FrequencyEdit = new QPushButton(QString::fromLatin1(text), this);
    FrequencyEdit->setObjectName("FrequencyEdit");
    FrequencyEdit->setGeometry(395, 290, 150, row_height);
    FrequencyEdit->setStyleSheet(panel_style_text(STYLE_GRAY));
    connect(FrequencyEdit, &QPushButton::pressed, this, &OverlaysDialog::FrequencyEditPressed);
}

void OverlaysDialog::FrequencyEditPressed(void)
{
    frequency_edit(FrequencyEdit);
}
