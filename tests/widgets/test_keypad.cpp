#include "core/panel_seam.h"
#include "support/test_env.h"
#include "ui_keyboard_dialog.h"
#include "ui_keypad_dialog.h"
#include "widgets/enter.h"
#include "widgets/keyboard_dialog.h"
#include "widgets/keypad_dialog.h"

#include <QLabel>
#include <QPushButton>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

class Keys : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        enter_reset();
    }
    void TearDown() override
    {
        enter_reset();
    }
};

// A touch is the button's pressed() signal; no release is needed.
static void touch(QPushButton *key, int times = 1)
{
    for (int i = 0; i < times; i++)
    {
        emit key->pressed();
    }
}

// Every key is wired to its own character, and the keypad doesn't judge the
// number's form; it holds 17 typed characters but 18 from the caller, and
// deletes from there down to nothing, never below.
TEST_F(Keys, KeypadKeysAndLimits)
{
    KeypadDialog pad;
    QPushButton *order[] = {pad.ui->Key7, pad.ui->Key8, pad.ui->Key9,      pad.ui->KeyMinus, pad.ui->Key4,
                            pad.ui->Key5, pad.ui->Key6, pad.ui->KeyPlus,   pad.ui->Key1,     pad.ui->Key2,
                            pad.ui->Key3, pad.ui->Key0, pad.ui->KeyPeriod, pad.ui->KeyPeriod};
    for (QPushButton *key : order)
    {
        touch(key);
    }
    EXPECT_STREQ("789-456+1230..", pad.value);
    EXPECT_EQ(QString("789-456+1230.."), pad.ui->KeyValue->text());
    touch(pad.ui->Key9, 10);
    EXPECT_EQ(17, pad.length);
    EXPECT_EQ(QString("789-456+1230..999"), pad.ui->KeyValue->text());

    pad.load("12345678901234567890");
    EXPECT_STREQ("123456789012345678", pad.value);
    touch(pad.ui->Key1);
    EXPECT_EQ(18, pad.length);
    touch(pad.ui->KeyDelete, 2);
    EXPECT_STREQ("1234567890123456", pad.value);
    touch(pad.ui->KeyDelete, 20);
    EXPECT_EQ(0, pad.length);
    EXPECT_STREQ("", pad.value);
    // Centred at the bottom of the panel, without a title bar.
    EXPECT_EQ(QPoint((800 - 251) / 2, 480 - 301), pad.pos());
    EXPECT_FALSE(pad.windowFlags() & Qt::WindowTitleHint);
}

// Each layout, typed key by key from Key1 to Key38: what the operator gets is
// the caption's first character ("&&" shows one ampersand and enters one).
TEST_F(Keys, KeyboardLayoutsTypeTheirCaptions)
{
    struct Row
    {
        bool shift, mode;
        const char *typed;
    };
    const Row rows[] = {
        {false, false, "1234567890qwertyuiopasdfghjklzxcvbnm,."},
        {true, false, "1234567890QWERTYUIOPASDFGHJKLZXCVBNM<>"},
        {false, true, "1234567890+-*/={}[]|@#$%^&()_\"`\\~:;?,."},
    };
    for (const Row &row : rows)
    {
        KeyboardDialog board;
        touch(board.ui->KeyUpArrow, row.shift);
        touch(board.ui->KeyMode, row.mode);
        for (QPushButton *key : board.keys)
        {
            touch(key);
        }
        EXPECT_STREQ(row.typed, board.value);
    }
    KeyboardDialog board;
    touch(board.ui->Key11, 70);
    touch(board.ui->KeySpace, 20);
    EXPECT_EQ(std::string(70, 'q') + std::string(9, ' '), board.value);
    touch(board.ui->KeyDelete, 90);
    EXPECT_EQ(0, board.length);
    EXPECT_EQ(QPoint(0, 480 - 371), board.pos());
}

// Shift is a lock with its own colour. The up arrow in symbol mode leaves it
// for upper case; the mode key while shifted keeps the lock underneath.
TEST_F(Keys, ShiftLockAndModeKeys)
{
    KeyboardDialog board;
    const QString gray = panel_style_text(STYLE_GRAY);
    touch(board.ui->KeyUpArrow);
    EXPECT_TRUE(board.ui->KeyUpArrow->styleSheet().contains("DarkBlue"));
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("+"), board.ui->Key11->text());
    EXPECT_TRUE(board.shifted);
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("Q"), board.ui->Key11->text());
    touch(board.ui->Key11);
    touch(board.ui->KeyUpArrow);
    EXPECT_EQ(gray, board.ui->KeyUpArrow->styleSheet());
    touch(board.ui->Key11);
    EXPECT_STREQ("Qq", board.value);

    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("ABC"), board.ui->KeyMode->text());
    touch(board.ui->KeyUpArrow);
    EXPECT_FALSE(board.symbols);
    EXPECT_TRUE(board.shifted);
    EXPECT_EQ(QString("Q"), board.ui->Key11->text());
    EXPECT_EQ(QString("?123"), board.ui->KeyMode->text());
}

// The operator, in place of exec(): types what `typing` holds after the
// caller's text, then presses Enter, or Escape when `escape` is set.
static const char *typing;
static bool escape;
static QString shown;

static int operate(QDialog *dialog)
{
    KeypadDialog *pad = qobject_cast<KeypadDialog *>(dialog);
    KeyboardDialog *board = qobject_cast<KeyboardDialog *>(dialog);
    shown = pad ? pad->ui->KeyValue->text() : board->ui->KeyValue->text();
    for (const char *p = typing; *p; p++)
    {
        pad ? pad->append(*p) : board->append(*p);
    }
    escape ? dialog->reject() : touch(pad ? pad->ui->KeyEnter : board->ui->KeyEnter);
    return dialog->result();
}

TEST_F(Keys, EnterTextAndNumberHandBackTheAnswer)
{
    enter_set_exec_hook(operate);
    typing = "2";
    escape = false;
    char text[32] = "Alert-1";
    EXPECT_EQ(1, EnterText("Alert name", text, sizeof text));
    EXPECT_STREQ("Alert-12", text);
    EXPECT_EQ(QString("Alert-1"), shown);
    EXPECT_STREQ("Alert name", enter_last_title);

    // A short answer clears the rest of the limit, and not a byte past it.
    char number[16];
    memset(number, 'X', sizeof number);
    number[0] = 0;
    EXPECT_EQ(1, EnterNumber(number, 8));
    EXPECT_EQ(0, memcmp("2\0\0\0\0\0\0\0X", number, 9));

    // Eight bytes come back and nothing more: the ninth is the caller's, so a
    // full-length answer has no terminator of its own.
    typing = "123456789012";
    number[0] = 0;
    EXPECT_EQ(1, EnterNumber(number, 8));
    EXPECT_EQ(0, memcmp("12345678X", number, 9));

    // The callers' helper: a full-length answer ends within the caller's
    // buffer, whatever the buffer held before.
    memset(number, 'X', sizeof number);
    number[0] = 0;
    EXPECT_EQ(1, enter_number_field(number, sizeof number, 8));
    EXPECT_STREQ("12345678", number);
    char call[6];
    EXPECT_EQ(1, enter_text_field("Callsign", strcpy(call, "K1"), sizeof call, 12));
    EXPECT_STREQ("K1123", call) << "cut to the caller's field";

    escape = true;
    char kept[16] = "12.5";
    EXPECT_EQ(0, EnterNumber(kept, 10));
    EXPECT_STREQ("12.5", kept);
    char callsign[16] = "K1JT";
    EXPECT_EQ(0, EnterText("Callsign", callsign, 12));
    EXPECT_STREQ("K1JT", callsign);
}
