#include "skymap/frequency_dialog.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "widgets/enter.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <cstdio>
#include <cstdlib>

int frequency_edit(QPushButton *button)
{
    char text[32];
    snprintf(text, sizeof text, "%7.2f", settings.Frequency);
    if (!enter_number_field(text, sizeof text, 16))
    {
        return 0;
    }
    button->setText(QString::fromLatin1(text));
    settings.Frequency = atof(text);
    return 1;
}

QDialogButtonBox *ok_cancel_box(QDialog *dialog, int x, int y, int width)
{
    QDialogButtonBox *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    buttons->setObjectName("buttonBox");
    buttons->setGeometry(x, y, width, 50);
    for (QAbstractButton *button : buttons->buttons())
    {
        button->setMinimumSize(110, 46);
    }
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

FrequencyDialog::FrequencyDialog(QWidget *parent) : QDialog(parent)
{
    setObjectName("FrequencyDialog");
    setWindowTitle(tr("Home Station"));
    QLabel *label = new QLabel(tr("Frequency"), this);
    label->setObjectName("FrequencyLabel");
    label->setGeometry(15, 12, 100, 44);
    char text[32];
    snprintf(text, sizeof text, "%7.2f", settings.Frequency);
    FrequencyEdit = new QPushButton(QString::fromLatin1(text), this);
    FrequencyEdit->setObjectName("FrequencyEdit");
    FrequencyEdit->setGeometry(120, 10, 217, 44);
    FrequencyEdit->setStyleSheet(panel_style_text(STYLE_GRAY));
    ok_cancel_box(this, 92, 62, 245);
    connect(FrequencyEdit, &QPushButton::pressed, this, &FrequencyDialog::FrequencyEditPressed);
    setFixedSize(352, 116);
}

void FrequencyDialog::FrequencyEditPressed(void)
{
    frequency_edit(FrequencyEdit);
}
