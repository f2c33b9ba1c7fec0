#include "widgets/keypad_dialog.h"

#include "core/panel_seam.h"
#include "ui_keypad_dialog.h"
#include "widgets/enter.h"

#include <QPushButton>
#include <cstring>

// The field takes 17 characters; the caller's text may bring one more, which
// the operator sees and can delete.
static const int KEYPAD_KEEP = 17;
static const int KEYPAD_LOAD = 18;

KeypadDialog::KeypadDialog(QWidget *parent) : QDialog(parent), ui(new Ui::KeypadDialog), length(0)
{
    ui->setupUi(this);
    memset(value, 0, sizeof value);
    // No title bar: on the panel it would only take room from the keys.
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint);
    setFixedSize(size());
    enter_place(this);
    for (QPushButton *key : findChildren<QPushButton *>())
    {
        key->setStyleSheet(panel_style_text(STYLE_GRAY));
    }

    // A key acts the moment it is touched, not when the finger lifts.
    connect(ui->Key0, &QPushButton::pressed, this, &KeypadDialog::Key0_Pressed);
    connect(ui->Key1, &QPushButton::pressed, this, &KeypadDialog::Key1_Pressed);
    connect(ui->Key2, &QPushButton::pressed, this, &KeypadDialog::Key2_Pressed);
    connect(ui->Key3, &QPushButton::pressed, this, &KeypadDialog::Key3_Pressed);
    connect(ui->Key4, &QPushButton::pressed, this, &KeypadDialog::Key4_Pressed);
    connect(ui->Key5, &QPushButton::pressed, this, &KeypadDialog::Key5_Pressed);
    connect(ui->Key6, &QPushButton::pressed, this, &KeypadDialog::Key6_Pressed);
    connect(ui->Key7, &QPushButton::pressed, this, &KeypadDialog::Key7_Pressed);
    connect(ui->Key8, &QPushButton::pressed, this, &KeypadDialog::Key8_Pressed);
    connect(ui->Key9, &QPushButton::pressed, this, &KeypadDialog::Key9_Pressed);
    connect(ui->KeyPlus, &QPushButton::pressed, this, &KeypadDialog::KeyPlus_Pressed);
    connect(ui->KeyMinus, &QPushButton::pressed, this, &KeypadDialog::KeyMinus_Pressed);
    connect(ui->KeyEnter, &QPushButton::pressed, this, &KeypadDialog::KeyEnter_Pressed);
    connect(ui->KeyDelete, &QPushButton::pressed, this, &KeypadDialog::KeyDelete_Pressed);
    connect(ui->KeyPeriod, &QPushButton::pressed, this, &KeypadDialog::KeyPeriod_Pressed);
}

KeypadDialog::~KeypadDialog()
{
    delete ui;
}

void KeypadDialog::load(const char *text)
{
    enter_field_load(value, sizeof value, &length, text, KEYPAD_LOAD);
    show_value();
}

void KeypadDialog::append(char c)
{
    enter_field_append(value, &length, KEYPAD_KEEP, c);
    show_value();
}

void KeypadDialog::remove_last(void)
{
    enter_field_remove(value, &length);
    show_value();
}

void KeypadDialog::show_value(void)
{
    ui->KeyValue->setText(QString::fromLatin1(value));
}

void KeypadDialog::Key0_Pressed(void)
{
    append('0');
}

void KeypadDialog::Key1_Pressed(void)
{
    append('1');
}

void KeypadDialog::Key2_Pressed(void)
{
    append('2');
}

void KeypadDialog::Key3_Pressed(void)
{
    append('3');
}

void KeypadDialog::Key4_Pressed(void)
{
    append('4');
}

void KeypadDialog::Key5_Pressed(void)
{
    append('5');
}

void KeypadDialog::Key6_Pressed(void)
{
    append('6');
}

void KeypadDialog::Key7_Pressed(void)
{
    append('7');
}

void KeypadDialog::Key8_Pressed(void)
{
    append('8');
}

void KeypadDialog::Key9_Pressed(void)
{
    append('9');
}

void KeypadDialog::KeyPlus_Pressed(void)
{
    append('+');
}

void KeypadDialog::KeyMinus_Pressed(void)
{
    append('-');
}

void KeypadDialog::KeyEnter_Pressed(void)
{
    accept();
}

void KeypadDialog::KeyDelete_Pressed(void)
{
    remove_last();
}

void KeypadDialog::KeyPeriod_Pressed(void)
{
    append('.');
}
