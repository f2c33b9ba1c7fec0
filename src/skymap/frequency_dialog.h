// FrequencyDialog: the working frequency, typed on the keypad from the sky
// map. The value counts at once; Cancel does not take it back.
#pragma once

#include <QDialog>

class QDialogButtonBox;
class QPushButton;

// OK and Cancel at x, y, width by 50 pixels, sized for a finger, wired to
// accept and reject.
QDialogButtonBox *ok_cancel_box(QDialog *dialog, int x, int y, int width);

// The frequency on the keypad from a frequency button: the text the operator
// leaves goes on the button and its leading number (0 without one) into
// settings.Frequency. Returns 1 when the keypad was left with Enter.
int frequency_edit(QPushButton *button);

class FrequencyDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit FrequencyDialog(QWidget *parent = nullptr);

    QPushButton *FrequencyEdit;

  public slots:
    void FrequencyEditPressed(void);
};
