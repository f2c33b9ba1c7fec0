// The alerts' dialog: for each of the six, its switch, name, action, trigger
// and threshold. Edits go straight into the table while the alerts go on
// being evaluated; switching, or choosing an action or a trigger, re-arms.
#pragma once

#include "bus/alerts.h"

#include <QDialog>

class QComboBox;
class QPushButton;
class QRadioButton;

class AlertsConfigDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit AlertsConfigDialog(QWidget *parent = nullptr);

    QRadioButton *active_buttons[ALERT_COUNT]; // AlertnButton
    QPushButton *name_edits[ALERT_COUNT];      // AlertnEdit
    QComboBox *action_boxes[ALERT_COUNT];      // AlertnAction
    QComboBox *trigger_boxes[ALERT_COUNT];     // AlertnTrigger
    QPushButton *threshold_edits[ALERT_COUNT]; // AlertnThresholdEdit

    // The slots of alert n (0 to 5); the numbered slots below call them.
    void AlertPressed(int n);
    void AlertConfigChanged(int n);
    void ActionChanged(int n, int index);
    void TriggerChanged(int n, int index);
    void AlertThresholdPressed(int n);

  public slots:
    void Alert1Pressed(void) { AlertPressed(0); }
    void Alert2Pressed(void) { AlertPressed(1); }
    void Alert3Pressed(void) { AlertPressed(2); }
    void Alert4Pressed(void) { AlertPressed(3); }
    void Alert5Pressed(void) { AlertPressed(4); }
    void Alert6Pressed(void) { AlertPressed(5); }
    void Alert1ConfigChanged(void) { AlertConfigChanged(0); }
    void Alert2ConfigChanged(void) { AlertConfigChanged(1); }
    void Alert3ConfigChanged(void) { AlertConfigChanged(2); }
    void Alert4ConfigChanged(void) { AlertConfigChanged(3); }
    void Alert5ConfigChanged(void) { AlertConfigChanged(4); }
    void Alert6ConfigChanged(void) { AlertConfigChanged(5); }
    void Action1Changed(int index) { ActionChanged(0, index); }
    void Action2Changed(int index) { ActionChanged(1, index); }
    void Action3Changed(int index) { ActionChanged(2, index); }
    void Action4Changed(int index) { ActionChanged(3, index); }
    void Action5Changed(int index) { ActionChanged(4, index); }
    void Action6Changed(int index) { ActionChanged(5, index); }
    void Trigger1Changed(int index) { TriggerChanged(0, index); }
    void Trigger2Changed(int index) { TriggerChanged(1, index); }
    void Trigger3Changed(int index) { TriggerChanged(2, index); }
    void Trigger4Changed(int index) { TriggerChanged(3, index); }
    void Trigger5Changed(int index) { TriggerChanged(4, index); }
    void Trigger6Changed(int index) { TriggerChanged(5, index); }
    void Alert1ThresholdPressed(void) { AlertThresholdPressed(0); }
    void Alert2ThresholdPressed(void) { AlertThresholdPressed(1); }
    void Alert3ThresholdPressed(void) { AlertThresholdPressed(2); }
    void Alert4ThresholdPressed(void) { AlertThresholdPressed(3); }
    void Alert5ThresholdPressed(void) { AlertThresholdPressed(4); }
    void Alert6ThresholdPressed(void) { AlertThresholdPressed(5); }

  private:
    void showThreshold(int n);
};
