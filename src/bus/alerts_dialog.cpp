#include "bus/alerts_dialog.h"

#include "core/ini_file.h"
#include "core/state.h"
#include "widgets/enter.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <cstdio>

static QComboBox *alert_box(QGridLayout *grid, const QString &name, const char *(*text)(int), int count, int index,
                            int row, int column)
{
    QComboBox *box = new QComboBox;
    box->setObjectName(name);
    for (int i = 0; i < count; i++)
    {
        box->addItem(text(i));
    }
    box->setCurrentIndex(index >= 0 && index < count ? index : -1);
    box->setMinimumHeight(36);
    grid->addWidget(box, row, column);
    return box;
}

AlertsConfigDialog::AlertsConfigDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle("Alerts Configuration");
    QGridLayout *grid = new QGridLayout(this);
    static const char *const labels[4][2] = {
        {"AlertNameLabel", "Name"}, {"GPIOLabel", "Action"}, {"TriggerLabel", "Trigger"}, {"ThresholdLabel", "Threshold"}};
    for (int c = 0; c < 4; c++)
    {
        QLabel *label = new QLabel(labels[c][1]);
        label->setObjectName(labels[c][0]);
        grid->addWidget(label, 0, c + 1);
    }
    for (int n = 0; n < ALERT_COUNT; n++)
    {
        const AlertEntry *a = &alerts[n];
        QString prefix = QString("Alert%1").arg(n + 1);
        active_buttons[n] = new QRadioButton;
        active_buttons[n]->setObjectName(prefix + "Button");
        active_buttons[n]->setAutoExclusive(false);
        active_buttons[n]->setChecked(a->Active != 0);
        active_buttons[n]->setMinimumSize(36, 36);
        grid->addWidget(active_buttons[n], n + 1, 0);
        name_edits[n] = new QPushButton(QString::fromUtf8(a->Name));
        name_edits[n]->setObjectName(prefix + "Edit");
        name_edits[n]->setMinimumHeight(36);
        grid->addWidget(name_edits[n], n + 1, 1);
        action_boxes[n] = alert_box(grid, prefix + "Action", alert_action_text, ACTION_COUNT, a->Action, n + 1, 2);
        trigger_boxes[n] =
            alert_box(grid, prefix + "Trigger", alert_trigger_text, TRIGGER_COUNT, a->Trigger, n + 1, 3);
        threshold_edits[n] = new QPushButton;
        threshold_edits[n]->setObjectName(prefix + "ThresholdEdit");
        threshold_edits[n]->setMinimumHeight(36);
        grid->addWidget(threshold_edits[n], n + 1, 4);
        showThreshold(n);

        connect(active_buttons[n], &QRadioButton::clicked, this, [this, n] { AlertConfigChanged(n); });
        connect(name_edits[n], &QPushButton::clicked, this, [this, n] { AlertPressed(n); });
        connect(action_boxes[n], &QComboBox::currentIndexChanged, this, [this, n](int i) { ActionChanged(n, i); });
        connect(trigger_boxes[n], &QComboBox::currentIndexChanged, this, [this, n](int i) { TriggerChanged(n, i); });
        connect(threshold_edits[n], &QPushButton::clicked, this, [this, n] { AlertThresholdPressed(n); });
    }
    QDialogButtonBox *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    grid->addWidget(buttons, ALERT_COUNT + 1, 0, 1, 5);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

static QString threshold_text(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%0.1f", value);
    return QString::fromLatin1(text);
}

// The threshold counts only for the two elevation triggers.
void AlertsConfigDialog::showThreshold(int n)
{
    int used = alerts[n].Trigger == TRIGGER_ABOVE_THRESHOLD || alerts[n].Trigger == TRIGGER_BELOW_THRESHOLD;
    threshold_edits[n]->setText(used ? threshold_text(alerts[n].Threshold) : QString("---"));
    threshold_edits[n]->setEnabled(used);
}

// Renaming does not re-arm: the name is only what the message says.
void AlertsConfigDialog::AlertPressed(int n)
{
    char title[24], text[ALERT_NAME_SIZE + 1];
    snprintf(title, sizeof title, "Alert-%d", n + 1);
    text_copy(text, sizeof text, alerts[n].Name);
    if (enter_text_field(title, text, sizeof text, ALERT_NAME_SIZE))
    {
        text_copy(alerts[n].Name, sizeof alerts[n].Name, text);
        name_edits[n]->setText(QString::fromUtf8(alerts[n].Name));
    }
}

void AlertsConfigDialog::AlertConfigChanged(int n)
{
    alerts[n].Active = active_buttons[n]->isChecked();
    alerts[n].Triggered = 0;
}

void AlertsConfigDialog::ActionChanged(int n, int index)
{
    alerts[n].Action = index;
    alerts[n].Triggered = 0;
}

void AlertsConfigDialog::TriggerChanged(int n, int index)
{
    alerts[n].Trigger = index;
    alerts[n].Triggered = 0;
    showThreshold(n);
}

// A new threshold does not re-arm an alert that has fired. A cancelled
// keypad leaves the value as shown, to one decimal.
void AlertsConfigDialog::AlertThresholdPressed(int n)
{
    char text[24];
    snprintf(text, sizeof text, "%0.1f", alerts[n].Threshold);
    int accepted = enter_number_field(text, sizeof text, 10);
    alerts[n].Threshold = ini_to_double(text);
    threshold_edits[n]->setText(accepted ? QString::fromUtf8(text) : threshold_text(alerts[n].Threshold));
}
