// OverlaysDialog: what the sky map shows, its turn, the magnitude limit, the
// frequency, and a date and time to jump to. Every control writes straight
// into `overlays`, `map_date_time` or the frequency; OK makes the map save
// the section and go to the date shown, Cancel only leaves the switches as
// they were set (they show at the next redraw).
#pragma once

#include <QDialog>

class QComboBox;
class QPushButton;

class OverlaysDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit OverlaysDialog(QWidget *parent = nullptr);

    QPushButton *FrequencyEdit;

  public slots:
    void FrequencyEditPressed(void);

  private:
    void build_date_time(void);
    void build_switches(void);
    void build_choices(void);
};
