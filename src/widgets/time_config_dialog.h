// TimeConfigDialog: the date and time fields of map_date_time as six combo
// boxes, filled with the clock plus the sky map's offset, as UTC. Each choice
// goes to its field at once; the main window sets the clock from them on OK.
#pragma once

#include <QDialog>

namespace Ui
{
class TimeConfigDialog;
}

// The notice above the fields when a network time daemon keeps the clock.
extern const char *const time_network_notice;

class TimeConfigDialog : public QDialog
{
    Q_OBJECT

  public:
    // proc_root is where to look for a network time daemon; tests give a
    // folder of their own.
    explicit TimeConfigDialog(QWidget *parent = nullptr, const char *proc_root = "/proc");
    ~TimeConfigDialog() override;

    Ui::TimeConfigDialog *ui;

  public slots:
    void MonthChanged(int index);
    void DayChanged(int index);
    void YearChanged(int index);
    void HoursChanged(int index);
    void MinutesChanged(int index);
    void SecondsChanged(int index);
};
