#include "support/test_env.h"
#include "ui_keyboard_dialog.h"
#include "ui_keypad_dialog.h"
#include "widgets/enter.h"
#include "widgets/keyboard_dialog.h"
#include "widgets/keypad_dialog.h"

#include "core/panel_seam.h"

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

static std::string shown(QLabel *label)
{
    return label->text().toStdString();
}

static void expect_geometry(QWidget *w, int x, int y, int width, int height)
{
    EXPECT_EQ(QRect(x, y, width, height), w->geometry()) << w->objectName().toStdString();
}

TEST_F(Keys, KeypadEveryKeyEntersItsCharacter)
{
    KeypadDialog pad;
    QPushButton *order[] = {pad.ui->Key7, pad.ui->Key8, pad.ui->Key9,     pad.ui->KeyMinus, pad.ui->Key4,
                            pad.ui->Key5, pad.ui->Key6, pad.ui->KeyPlus,  pad.ui->Key1,     pad.ui->Key2,
                            pad.ui->Key3, pad.ui->Key0, pad.ui->KeyPeriod};
    for (QPushButton *key : order)
    {
        touch(key);
    }
    EXPECT_STREQ("789-456+1230.", pad.value);
    EXPECT_EQ(13, pad.length);
    EXPECT_EQ("789-456+1230.", shown(pad.ui->KeyValue));
}

TEST_F(Keys, KeypadFieldTakesSeventeenCharacters)
{
    KeypadDialog pad;
    touch(pad.ui->Key9, 25);
    EXPECT_EQ(17, pad.length);
    EXPECT_EQ(std::string(17, '9'), pad.value);
    EXPECT_EQ(std::string(17, '9'), shown(pad.ui->KeyValue));
}

TEST_F(Keys, KeypadTakesEighteenFromTheCallerAndDeleteWorksFromThere)
{
    KeypadDialog pad;
    pad.load("12345678901234567890");
    EXPECT_EQ(18, pad.length);
    EXPECT_STREQ("123456789012345678", pad.value);
    touch(pad.ui->Key1);
    EXPECT_EQ(18, pad.length);
    touch(pad.ui->KeyDelete, 2);
    EXPECT_STREQ("1234567890123456", pad.value);
}

TEST_F(Keys, DeleteOnAnEmptyFieldStaysAtZero)
{
    KeypadDialog pad;
    touch(pad.ui->KeyDelete, 3);
    EXPECT_EQ(0, pad.length);
    EXPECT_STREQ("", pad.value);
    KeyboardDialog board;
    touch(board.ui->KeyDelete, 3);
    EXPECT_EQ(0, board.length);
}

TEST_F(Keys, KeypadDoesNotJudgeTheNumbersForm)
{
    KeypadDialog pad;
    touch(pad.ui->KeyPeriod, 2);
    touch(pad.ui->KeyMinus, 2);
    touch(pad.ui->KeyPlus);
    EXPECT_STREQ("..--+", pad.value);
}

TEST_F(Keys, KeypadLayoutAndPlace)
{
    KeypadDialog pad;
    EXPECT_EQ(QSize(251, 301), pad.size());
    expect_geometry(pad.ui->KeyValue, 10, 10, 231, 41);
    expect_geometry(pad.ui->Key7, 10, 60, 51, 51);
    expect_geometry(pad.ui->KeyMinus, 190, 60, 51, 51);
    expect_geometry(pad.ui->KeyPlus, 190, 120, 51, 51);
    expect_geometry(pad.ui->Key3, 130, 180, 51, 51);
    expect_geometry(pad.ui->KeyEnter, 190, 180, 51, 111);
    expect_geometry(pad.ui->Key0, 10, 240, 51, 51);
    expect_geometry(pad.ui->KeyDelete, 130, 240, 51, 51);
    EXPECT_EQ(QString("DEL"), pad.ui->KeyDelete->text());
    EXPECT_EQ(QString("Enter"), pad.ui->KeyEnter->text());
    // Centred at the bottom of the panel, without a title bar.
    EXPECT_EQ(QPoint((800 - 251) / 2, 480 - 301), pad.pos());
    EXPECT_TRUE(pad.windowFlags() & Qt::CustomizeWindowHint);
    EXPECT_FALSE(pad.windowFlags() & Qt::WindowTitleHint);
    EXPECT_EQ(QString(panel_style_text(STYLE_GRAY)), pad.ui->Key5->styleSheet());
}

TEST_F(Keys, KeyboardLayoutAndPlace)
{
    KeyboardDialog board;
    EXPECT_EQ(QSize(800, 371), board.size());
    EXPECT_EQ(QPoint(0, 480 - 371), board.pos());
    expect_geometry(board.ui->KeyName, 10, 10, 161, 31);
    expect_geometry(board.ui->KeyValue, 180, 10, 561, 31);
    expect_geometry(board.ui->Key10, 10 + 9 * 75, 50, 61, 41);
    expect_geometry(board.ui->Key20, 10 + 9 * 65, 110, 51, 51);
    expect_geometry(board.ui->KeyDelete, 660, 110, 81, 51);
    expect_geometry(board.ui->Key29, 30 + 8 * 65, 180, 51, 51);
    expect_geometry(board.ui->KeyEnter, 620, 180, 121, 51);
    expect_geometry(board.ui->KeyUpArrow, 10, 250, 51, 51);
    expect_geometry(board.ui->Key36, 75 + 6 * 65, 250, 51, 51);
    expect_geometry(board.ui->Key37, 530, 250, 51, 51);
    expect_geometry(board.ui->Key38, 595, 250, 51, 51);
    expect_geometry(board.ui->KeyAlt2, 660, 250, 81, 51);
    expect_geometry(board.ui->KeyMode, 10, 320, 71, 41);
    expect_geometry(board.ui->KeySpace, 190, 320, 351, 41);
    EXPECT_EQ(QString("English (US)"), board.ui->KeySpace->text());
    EXPECT_EQ(QString("?123"), board.ui->KeyMode->text());
    EXPECT_FALSE(board.windowFlags() & Qt::WindowTitleHint);
}

// Each layout, typed key by key from Key1 to Key38: what the operator gets
// is the caption's first character.
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
        if (row.shift)
        {
            touch(board.ui->KeyUpArrow);
        }
        if (row.mode)
        {
            touch(board.ui->KeyMode);
        }
        for (QPushButton *key : board.keys)
        {
            touch(key);
        }
        EXPECT_STREQ(row.typed, board.value);
    }
}

TEST_F(Keys, KeyboardFieldTakesSeventyNineCharacters)
{
    KeyboardDialog board;
    touch(board.ui->Key11, 70);
    touch(board.ui->KeySpace, 20);
    EXPECT_EQ(79, board.length);
    EXPECT_EQ(std::string(70, 'q') + std::string(9, ' '), board.value);
}

TEST_F(Keys, ShiftIsALockWithItsOwnColour)
{
    KeyboardDialog board;
    const QString gray = panel_style_text(STYLE_GRAY);
    touch(board.ui->KeyUpArrow);
    EXPECT_TRUE(board.shifted);
    EXPECT_NE(gray, board.ui->KeyUpArrow->styleSheet());
    EXPECT_TRUE(board.ui->KeyUpArrow->styleSheet().contains("DarkBlue"));
    touch(board.ui->Key37);
    touch(board.ui->Key11, 2);
    EXPECT_STREQ("<QQ", board.value);
    touch(board.ui->KeyUpArrow);
    EXPECT_FALSE(board.shifted);
    EXPECT_EQ(gray, board.ui->KeyUpArrow->styleSheet());
    touch(board.ui->Key37);
    EXPECT_STREQ("<QQ,", board.value);
}

TEST_F(Keys, UpArrowInSymbolModeLeavesItForUpperCase)
{
    KeyboardDialog board;
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("ABC"), board.ui->KeyMode->text());
    EXPECT_EQ(QString("+"), board.ui->Key11->text());
    touch(board.ui->KeyUpArrow);
    EXPECT_FALSE(board.symbols);
    EXPECT_TRUE(board.shifted);
    EXPECT_EQ(QString("Q"), board.ui->Key11->text());
    EXPECT_EQ(QString("?123"), board.ui->KeyMode->text());
}

TEST_F(Keys, ModeWhileShiftedKeepsTheLockUnderneath)
{
    KeyboardDialog board;
    touch(board.ui->KeyUpArrow);
    const QString locked = board.ui->KeyUpArrow->styleSheet();
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("+"), board.ui->Key11->text());
    EXPECT_EQ(locked, board.ui->KeyUpArrow->styleSheet());
    EXPECT_TRUE(board.shifted);
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("Q"), board.ui->Key11->text());
    EXPECT_EQ(QString("?123"), board.ui->KeyMode->text());
}

TEST_F(Keys, AmpersandShowsDoubledAndEntersOnce)
{
    KeyboardDialog board;
    touch(board.ui->KeyMode);
    EXPECT_EQ(QString("&&"), board.ui->Key26->text());
    touch(board.ui->Key26);
    EXPECT_STREQ("&", board.value);
}

// Hooks that stand in for the operator, in place of exec().
static int press_enter(QDialog *dialog)
{
    if (KeypadDialog *pad = qobject_cast<KeypadDialog *>(dialog))
    {
        touch(pad->ui->Key2);
        touch(pad->ui->KeyEnter);
    }
    if (KeyboardDialog *board = qobject_cast<KeyboardDialog *>(dialog))
    {
        EXPECT_EQ(QString("Alert-1"), board->ui->KeyValue->text());
        touch(board->ui->Key2);
        touch(board->ui->KeyEnter);
    }
    return dialog->result();
}

static int type_then_escape(QDialog *dialog)
{
    if (KeypadDialog *pad = qobject_cast<KeypadDialog *>(dialog))
    {
        touch(pad->ui->Key9, 3);
    }
    dialog->reject();
    return dialog->result();
}

static int twelve_digits(QDialog *dialog)
{
    KeypadDialog *pad = qobject_cast<KeypadDialog *>(dialog);
    touch(pad->ui->KeyDelete, 20);
    const char digits[] = "123456789012";
    for (const char *p = digits; *p; p++)
    {
        pad->append(*p);
    }
    touch(pad->ui->KeyEnter);
    return dialog->result();
}

TEST_F(Keys, EnterTextShowsTheCallersTextAndTitle)
{
    enter_set_exec_hook(press_enter);
    char text[32] = "Alert-1";
    EXPECT_EQ(1, EnterText("Alert name", text, sizeof text));
    EXPECT_STREQ("Alert-12", text);
    EXPECT_STREQ("Alert name", enter_last_title);
    EXPECT_STREQ("Alert-1", enter_last_text);
    EXPECT_EQ(32, enter_last_max_length);
}

TEST_F(Keys, ClosedWithoutEnterLeavesTheTextAsItWas)
{
    enter_set_exec_hook(type_then_escape);
    char number[16] = "12.5";
    EXPECT_EQ(0, EnterNumber(number, 10));
    EXPECT_STREQ("12.5", number);
    char text[16] = "K1JT";
    EXPECT_EQ(0, EnterText("Callsign", text, 12));
    EXPECT_STREQ("K1JT", text);
}

// Eight bytes come back and nothing more: the ninth is the caller's, so a
// full-length answer has no terminator of its own.
TEST_F(Keys, EightFromTwelveDigitsComeBackUnterminated)
{
    enter_set_exec_hook(twelve_digits);
    char text[16];
    memset(text, 'X', sizeof text);
    text[15] = 0;
    text[0] = 0;
    EXPECT_EQ(1, EnterNumber(text, 8));
    EXPECT_EQ(0, memcmp("12345678", text, 8));
    EXPECT_EQ('X', text[8]);
}

TEST_F(Keys, ShortAnswerClearsTheRestOfTheLimit)
{
    enter_set_exec_hook(press_enter);
    char text[16];
    memset(text, 'X', sizeof text);
    text[15] = 0;
    text[0] = 0;
    EXPECT_EQ(1, EnterNumber(text, 8));
    EXPECT_STREQ("2", text);
    for (int i = 1; i < 8; i++)
    {
        EXPECT_EQ(0, text[i]) << i;
    }
    EXPECT_EQ('X', text[8]);
}

TEST_F(Keys, ScriptedAnswersAreTypedUnderTheFieldsLimit)
{
    const std::string sevens(30, '7');
    const char *const answers[] = {"144.5", nullptr, sevens.c_str(), "W1AW"};
    enter_set_answers(answers, 4);
    char number[32] = "1296";
    EXPECT_EQ(1, EnterNumber(number, 20));
    EXPECT_STREQ("144.5", number);
    EXPECT_EQ(0, EnterNumber(number, 20));
    EXPECT_STREQ("144.5", number);
    EXPECT_EQ(1, EnterNumber(number, 20));
    EXPECT_EQ(std::string(17, '7'), number);
    char call[16] = "DL7APV";
    EXPECT_EQ(1, EnterText("Callsign", call, 12));
    EXPECT_STREQ("W1AW", call);
    // Out of answers: declined.
    EXPECT_EQ(0, EnterText("Callsign", call, 12));
    EXPECT_EQ(5, enter_call_count);
}
