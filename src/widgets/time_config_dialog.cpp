#include "widgets/time_config_dialog.h"

#include "core/clock.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "ui_time_config_dialog.h"
#include "widgets/system_clock.h"

#include <QComboBox>
#include <cstdio>

const char *const time_network_notice = "The clock is set by network time; a manual setting will be overwritten";

static void time_fill_numbers(QComboBox *box, int first, int last, const char *format)
{
    for (int n = first; n <= last; n++)
    {
        char text[8];
        snprintf(text, sizeof text, format, n);
        box->addItem(QString::fromLatin1(text));
    }
}

TimeConfigDialog::TimeConfigDialog(QWidget *parent, const char *proc_root)
    : QDialog(parent), ui(new Ui::TimeConfigDialog)
{
    ui->setupUi(this);
    static const char *const months[] = {"January", "February", "March",     "April",   "May",      "June",
                                         "July",    "August",   "September", "October", "November", "December"};
    for (const char *month : months)
    {
        ui->MonthComboBox->addItem(tr(month));
    }
    time_fill_numbers(ui->DayComboBox, 1, 31, "%d");
    time_fill_numbers(ui->YearComboBox, 2000, 2047, "%d");
    time_fill_numbers(ui->HoursComboBox, 0, 23, "%02d");
    time_fill_numbers(ui->MinutesComboBox, 0, 59, "%02d");
    time_fill_numbers(ui->SecondsComboBox, 0, 59, "%02d");
    for (QComboBox *box : findChildren<QComboBox *>())
    {
        box->setStyleSheet(panel_style_text(STYLE_GRAY));
    }

    // Most Linux stations keep their clock by network time, and a wrong clock
    // there is better mended at the daemon than here.
    ui->NetworkTimeLabel->setText(tr(time_network_notice));
    ui->NetworkTimeLabel->setVisible(clock_network_time_active(proc_root) != 0);

    clock_date_fields(clock_utc() + map_time_offset, &map_date_time);
    const DateTimeFields &f = map_date_time;
    // A year past the list selects nothing; the field keeps the real year.
    ui->MonthComboBox->setCurrentIndex(f.Month - 1);
    ui->DayComboBox->setCurrentIndex(f.Day - 1);
    ui->YearComboBox->setCurrentIndex(f.Year - 2000);
    ui->HoursComboBox->setCurrentIndex(f.Hours);
    ui->MinutesComboBox->setCurrentIndex(f.Minutes);
    ui->SecondsComboBox->setCurrentIndex(f.Seconds);

    // Connected after the selection, so that opening changes nothing.
    connect(ui->MonthComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::MonthChanged);
    connect(ui->DayComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::DayChanged);
    connect(ui->YearComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::YearChanged);
    connect(ui->HoursComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::HoursChanged);
    connect(ui->MinutesComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::MinutesChanged);
    connect(ui->SecondsComboBox, &QComboBox::currentIndexChanged, this, &TimeConfigDialog::SecondsChanged);
}

TimeConfigDialog::~TimeConfigDialog()
{
    delete ui;
}

void TimeConfigDialog::MonthChanged(int index)
{
    map_date_time.Month = index + 1;
}

void TimeConfigDialog::DayChanged(int index)
{
    map_date_time.Day = index + 1;
}

void TimeConfigDialog::YearChanged(int index)
{
    map_date_time.Year = index + 2000;
}

void TimeConfigDialog::HoursChanged(int index)
{
    map_date_time.Hours = index;
}

void TimeConfigDialog::MinutesChanged(int index)
{
    map_date_time.Minutes = index;
}

void TimeConfigDialog::SecondsChanged(int index)
{
    map_date_time.Seconds = index;
}
