#include "widgets/keyboard_dialog.h"

#include "core/panel_seam.h"
#include "ui_keyboard_dialog.h"
#include "widgets/enter.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygon>
#include <QPushButton>
#include <cstring>

// The captions of Key1 to Key38 in each layout. "&&" is how a button shows
// one ampersand; its key enters the first "&".
static const char *const keyboard_normal[KEYBOARD_KEYS] = {
    "1", "2", "3", "4", "5", "6", "7", "8", "9", "0", "q", "w", "e", "r", "t", "y", "u", "i", "o",
    "p", "a", "s", "d", "f", "g", "h", "j", "k", "l", "z", "x", "c", "v", "b", "n", "m", ",", "."};
static const char *const keyboard_shifted[KEYBOARD_KEYS] = {
    "1", "2", "3", "4", "5", "6", "7", "8", "9", "0", "Q", "W", "E", "R", "T", "Y", "U", "I", "O",
    "P", "A", "S", "D", "F", "G", "H", "J", "K", "L", "Z", "X", "C", "V", "B", "N", "M", "<", ">"};
static const char *const keyboard_symbols[KEYBOARD_KEYS] = {
    "1", "2", "3", "4", "5", "6", "7",  "8", "9", "0", "+",  "-", "*",  "/", "=", "{", "}", "[", "]",
    "|", "@", "#", "$", "%", "^", "&&", "(", ")", "_", "\"", "`", "\\", "~", ":", ";", "?", ",", "."};

static const int KEYBOARD_KEEP = 79;

static const char keyboard_shift_style[] =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 DarkBlue, stop:1 white); "
    "color:white; border-radius:5px;";

// A white arrow in the keys' own colours, drawn here rather than shipped.
static QIcon keyboard_arrow_icon(void)
{
    QPixmap arrow(16, 16);
    arrow.fill(Qt::transparent);
    QPainter painter(&arrow);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawPolygon(QPolygon(
        {QPoint(8, 1), QPoint(15, 9), QPoint(11, 9), QPoint(11, 15), QPoint(5, 15), QPoint(5, 9), QPoint(1, 9)}));
    return QIcon(arrow);
}

KeyboardDialog::KeyboardDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::KeyboardDialog), symbols(false), shifted(false), length(0)
{
    ui->setupUi(this);
    memset(value, 0, sizeof value);
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint);
    setFixedSize(size());
    enter_place(this);
    for (QPushButton *key : findChildren<QPushButton *>())
    {
        key->setStyleSheet(panel_style_text(STYLE_GRAY));
    }
    QPushButton *const row[KEYBOARD_KEYS] = {
        ui->Key1,  ui->Key2,  ui->Key3,  ui->Key4,  ui->Key5,  ui->Key6,  ui->Key7,  ui->Key8,  ui->Key9,  ui->Key10,
        ui->Key11, ui->Key12, ui->Key13, ui->Key14, ui->Key15, ui->Key16, ui->Key17, ui->Key18, ui->Key19, ui->Key20,
        ui->Key21, ui->Key22, ui->Key23, ui->Key24, ui->Key25, ui->Key26, ui->Key27, ui->Key28, ui->Key29, ui->Key30,
        ui->Key31, ui->Key32, ui->Key33, ui->Key34, ui->Key35, ui->Key36, ui->Key37, ui->Key38};
    memcpy(keys, row, sizeof keys);
    // The caption alone would not tell a finger that this is the shift key.
    ui->KeyUpArrow->setIcon(keyboard_arrow_icon());
    ui->KeyUpArrow->setIconSize(QSize(16, 16));
    connect_keys();
    show_captions();
}

KeyboardDialog::~KeyboardDialog()
{
    delete ui;
}

// A key acts the moment it is touched, not when the finger lifts.
void KeyboardDialog::connect_keys(void)
{
    connect(ui->Key1, &QPushButton::pressed, this, &KeyboardDialog::Key1_Pressed);
    connect(ui->Key2, &QPushButton::pressed, this, &KeyboardDialog::Key2_Pressed);
    connect(ui->Key3, &QPushButton::pressed, this, &KeyboardDialog::Key3_Pressed);
    connect(ui->Key4, &QPushButton::pressed, this, &KeyboardDialog::Key4_Pressed);
    connect(ui->Key5, &QPushButton::pressed, this, &KeyboardDialog::Key5_Pressed);
    connect(ui->Key6, &QPushButton::pressed, this, &KeyboardDialog::Key6_Pressed);
    connect(ui->Key7, &QPushButton::pressed, this, &KeyboardDialog::Key7_Pressed);
    connect(ui->Key8, &QPushButton::pressed, this, &KeyboardDialog::Key8_Pressed);
    connect(ui->Key9, &QPushButton::pressed, this, &KeyboardDialog::Key9_Pressed);
    connect(ui->Key10, &QPushButton::pressed, this, &KeyboardDialog::Key10_Pressed);
    connect(ui->Key11, &QPushButton::pressed, this, &KeyboardDialog::Key11_Pressed);
    connect(ui->Key12, &QPushButton::pressed, this, &KeyboardDialog::Key12_Pressed);
    connect(ui->Key13, &QPushButton::pressed, this, &KeyboardDialog::Key13_Pressed);
    connect(ui->Key14, &QPushButton::pressed, this, &KeyboardDialog::Key14_Pressed);
    connect(ui->Key15, &QPushButton::pressed, this, &KeyboardDialog::Key15_Pressed);
    connect(ui->Key16, &QPushButton::pressed, this, &KeyboardDialog::Key16_Pressed);
    connect(ui->Key17, &QPushButton::pressed, this, &KeyboardDialog::Key17_Pressed);
    connect(ui->Key18, &QPushButton::pressed, this, &KeyboardDialog::Key18_Pressed);
    connect(ui->Key19, &QPushButton::pressed, this, &KeyboardDialog::Key19_Pressed);
    connect(ui->Key20, &QPushButton::pressed, this, &KeyboardDialog::Key20_Pressed);
    connect(ui->Key21, &QPushButton::pressed, this, &KeyboardDialog::Key21_Pressed);
    connect(ui->Key22, &QPushButton::pressed, this, &KeyboardDialog::Key22_Pressed);
    connect(ui->Key23, &QPushButton::pressed, this, &KeyboardDialog::Key23_Pressed);
    connect(ui->Key24, &QPushButton::pressed, this, &KeyboardDialog::Key24_Pressed);
    connect(ui->Key25, &QPushButton::pressed, this, &KeyboardDialog::Key25_Pressed);
    connect(ui->Key26, &QPushButton::pressed, this, &KeyboardDialog::Key26_Pressed);
    connect(ui->Key27, &QPushButton::pressed, this, &KeyboardDialog::Key27_Pressed);
    connect(ui->Key28, &QPushButton::pressed, this, &KeyboardDialog::Key28_Pressed);
    connect(ui->Key29, &QPushButton::pressed, this, &KeyboardDialog::Key29_Pressed);
    connect(ui->Key30, &QPushButton::pressed, this, &KeyboardDialog::Key30_Pressed);
    connect(ui->Key31, &QPushButton::pressed, this, &KeyboardDialog::Key31_Pressed);
    connect(ui->Key32, &QPushButton::pressed, this, &KeyboardDialog::Key32_Pressed);
    connect(ui->Key33, &QPushButton::pressed, this, &KeyboardDialog::Key33_Pressed);
    connect(ui->Key34, &QPushButton::pressed, this, &KeyboardDialog::Key34_Pressed);
    connect(ui->Key35, &QPushButton::pressed, this, &KeyboardDialog::Key35_Pressed);
    connect(ui->Key36, &QPushButton::pressed, this, &KeyboardDialog::Key36_Pressed);
    connect(ui->Key37, &QPushButton::pressed, this, &KeyboardDialog::Key37_Pressed);
    connect(ui->Key38, &QPushButton::pressed, this, &KeyboardDialog::Key38_Pressed);
    connect(ui->KeySpace, &QPushButton::pressed, this, &KeyboardDialog::KeySpace_Pressed);
    connect(ui->KeyEnter, &QPushButton::pressed, this, &KeyboardDialog::KeyEnter_Pressed);
    connect(ui->KeyDelete, &QPushButton::pressed, this, &KeyboardDialog::KeyDelete_Pressed);
    connect(ui->KeyUpArrow, &QPushButton::pressed, this, &KeyboardDialog::KeyUpArrow_Pressed);
    connect(ui->KeyMode, &QPushButton::pressed, this, &KeyboardDialog::KeyMode_Pressed);
}

void KeyboardDialog::load(const char *title, const char *text)
{
    ui->KeyName->setText(QString::fromUtf8(title ? title : ""));
    enter_field_load(value, sizeof value, &length, text, sizeof value - 1);
    show_value();
}

void KeyboardDialog::append(char c)
{
    enter_field_append(value, &length, KEYBOARD_KEEP, c);
    show_value();
}

void KeyboardDialog::remove_last(void)
{
    enter_field_remove(value, &length);
    show_value();
}

void KeyboardDialog::show_value(void)
{
    ui->KeyValue->setText(QString::fromUtf8(value));
}

// Symbols win over the shift lock, which keeps its state underneath.
void KeyboardDialog::show_captions(void)
{
    const char *const *table = symbols ? keyboard_symbols : shifted ? keyboard_shifted : keyboard_normal;
    for (int i = 0; i < KEYBOARD_KEYS; i++)
    {
        keys[i]->setText(QString::fromLatin1(table[i]));
    }
    ui->KeyMode->setText(symbols ? "ABC" : "?123");
}

void KeyboardDialog::character_key(int index)
{
    QByteArray caption = keys[index]->text().toLatin1();
    if (!caption.isEmpty())
    {
        append(caption[0]);
    }
}

void KeyboardDialog::Key1_Pressed(void)
{
    character_key(0);
}

void KeyboardDialog::Key2_Pressed(void)
{
    character_key(1);
}

void KeyboardDialog::Key3_Pressed(void)
{
    character_key(2);
}

void KeyboardDialog::Key4_Pressed(void)
{
    character_key(3);
}

void KeyboardDialog::Key5_Pressed(void)
{
    character_key(4);
}

void KeyboardDialog::Key6_Pressed(void)
{
    character_key(5);
}

void KeyboardDialog::Key7_Pressed(void)
{
    character_key(6);
}

void KeyboardDialog::Key8_Pressed(void)
{
    character_key(7);
}

void KeyboardDialog::Key9_Pressed(void)
{
    character_key(8);
}

void KeyboardDialog::Key10_Pressed(void)
{
    character_key(9);
}

void KeyboardDialog::Key11_Pressed(void)
{
    character_key(10);
}

void KeyboardDialog::Key12_Pressed(void)
{
    character_key(11);
}

void KeyboardDialog::Key13_Pressed(void)
{
    character_key(12);
}

void KeyboardDialog::Key14_Pressed(void)
{
    character_key(13);
}

void KeyboardDialog::Key15_Pressed(void)
{
    character_key(14);
}

void KeyboardDialog::Key16_Pressed(void)
{
    character_key(15);
}

void KeyboardDialog::Key17_Pressed(void)
{
    character_key(16);
}

void KeyboardDialog::Key18_Pressed(void)
{
    character_key(17);
}

void KeyboardDialog::Key19_Pressed(void)
{
    character_key(18);
}

void KeyboardDialog::Key20_Pressed(void)
{
    character_key(19);
}

void KeyboardDialog::Key21_Pressed(void)
{
    character_key(20);
}

void KeyboardDialog::Key22_Pressed(void)
{
    character_key(21);
}

void KeyboardDialog::Key23_Pressed(void)
{
    character_key(22);
}

void KeyboardDialog::Key24_Pressed(void)
{
    character_key(23);
}

void KeyboardDialog::Key25_Pressed(void)
{
    character_key(24);
}

void KeyboardDialog::Key26_Pressed(void)
{
    character_key(25);
}

void KeyboardDialog::Key27_Pressed(void)
{
    character_key(26);
}

void KeyboardDialog::Key28_Pressed(void)
{
    character_key(27);
}

void KeyboardDialog::Key29_Pressed(void)
{
    character_key(28);
}

void KeyboardDialog::Key30_Pressed(void)
{
    character_key(29);
}

void KeyboardDialog::Key31_Pressed(void)
{
    character_key(30);
}

void KeyboardDialog::Key32_Pressed(void)
{
    character_key(31);
}

void KeyboardDialog::Key33_Pressed(void)
{
    character_key(32);
}

void KeyboardDialog::Key34_Pressed(void)
{
    character_key(33);
}

void KeyboardDialog::Key35_Pressed(void)
{
    character_key(34);
}

void KeyboardDialog::Key36_Pressed(void)
{
    character_key(35);
}

void KeyboardDialog::Key37_Pressed(void)
{
    character_key(36);
}

void KeyboardDialog::Key38_Pressed(void)
{
    character_key(37);
}

void KeyboardDialog::KeySpace_Pressed(void)
{
    append(' ');
}

void KeyboardDialog::KeyEnter_Pressed(void)
{
    accept();
}

void KeyboardDialog::KeyDelete_Pressed(void)
{
    remove_last();
}

// A lock, not a one-shot: it holds until pressed again, and the colour says so.
void KeyboardDialog::KeyUpArrow_Pressed(void)
{
    if (shifted)
    {
        shifted = false;
        ui->KeyUpArrow->setStyleSheet(panel_style_text(STYLE_GRAY));
    }
    else
    {
        shifted = true;
        symbols = false;
        ui->KeyUpArrow->setStyleSheet(keyboard_shift_style);
    }
    show_captions();
}

void KeyboardDialog::KeyMode_Pressed(void)
{
    symbols = !symbols;
    show_captions();
}
