#include "widgets/keypad.h"

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstring>

enum
{
    KEYPAD_VALUE_SIZE = 20,
    KEYPAD_COPY_IN = 18,   // the field takes at most this much of the caller's text
    KEYPAD_MAX_LENGTH = 17 // and holds at most this many characters
};

static EnterNumberHook enter_number_hook;

void keypad_set_test_hook(EnterNumberHook hook)
{
    enter_number_hook = hook;
}

// A plain field and an Enter key until the touch keypad joins; it keeps the
// keypad's size and place, centred at the bottom of the 800x480 panel, with
// no title bar.
static int keypad_run(char *value, int size)
{
    QDialog dialog;
    dialog.setWindowFlags(dialog.windowFlags() | Qt::CustomizeWindowHint);
    dialog.setFixedSize(251, 301);
    dialog.move((800 - dialog.width()) / 2, 480 - dialog.height());
    QVBoxLayout layout(&dialog);
    QLineEdit field(QString::fromLatin1(value));
    field.setObjectName("KeyValue");
    field.setMaxLength(KEYPAD_MAX_LENGTH);
    QPushButton enter("Enter");
    enter.setObjectName("KeyEnter");
    layout.addWidget(&field);
    layout.addWidget(&enter);
    QObject::connect(&enter, &QPushButton::pressed, &dialog, &QDialog::accept);
    QObject::connect(&field, &QLineEdit::returnPressed, &dialog, &QDialog::accept);
    if (dialog.exec() != QDialog::Accepted)
    {
        return 0;
    }
    QByteArray text = field.text().toLatin1();
    memset(value, 0, size);
    memcpy(value, text.constData(), qMin((int)text.size(), (int)KEYPAD_MAX_LENGTH));
    return 1;
}

int EnterNumber(char *text, int max_length)
{
    char value[KEYPAD_VALUE_SIZE] = {};
    strncpy(value, text, KEYPAD_COPY_IN);
    int accepted = enter_number_hook ? enter_number_hook(value, sizeof value) : keypad_run(value, sizeof value);
    if (!accepted)
    {
        return 0;
    }
    // The keypad never holds more than 17 characters, whatever the hook wrote.
    value[KEYPAD_MAX_LENGTH] = 0;
    if (max_length > 0)
    {
        strncpy(text, value, max_length);
    }
    return 1;
}
