#include "widgets/enter.h"

#include "core/state.h"
#include "widgets/keyboard_dialog.h"
#include "widgets/keypad_dialog.h"

#include <QApplication>
#include <cstring>

int enter_call_count;
char enter_last_title[80];
char enter_last_text[80];
int enter_last_max_length;

static EnterExecHook enter_hook;
static const char *const *enter_answers;
static int enter_answer_count;
static int enter_answer_next;

static const int PANEL_WIDTH = 800;
static const int PANEL_HEIGHT = 480;

void enter_place(QWidget *dialog)
{
    dialog->move((PANEL_WIDTH - dialog->width()) / 2, PANEL_HEIGHT - dialog->height());
}

void enter_set_exec_hook(EnterExecHook hook)
{
    enter_hook = hook;
}

static int enter_answer(QDialog *dialog)
{
    if (enter_answer_next >= enter_answer_count || !enter_answers[enter_answer_next])
    {
        enter_answer_next++;
        return QDialog::Rejected;
    }
    const char *answer = enter_answers[enter_answer_next++];
    if (KeypadDialog *keypad = qobject_cast<KeypadDialog *>(dialog))
    {
        while (keypad->length > 0)
        {
            keypad->KeyDelete_Pressed();
        }
        for (const char *p = answer; *p; p++)
        {
            keypad->append(*p);
        }
        keypad->KeyEnter_Pressed();
    }
    else if (KeyboardDialog *keyboard = qobject_cast<KeyboardDialog *>(dialog))
    {
        while (keyboard->length > 0)
        {
            keyboard->KeyDelete_Pressed();
        }
        for (const char *p = answer; *p; p++)
        {
            keyboard->append(*p);
        }
        keyboard->KeyEnter_Pressed();
    }
    return dialog->result();
}

void enter_set_answers(const char *const *answers, int count)
{
    enter_answers = answers;
    enter_answer_count = count;
    enter_answer_next = 0;
    enter_hook = enter_answer;
}

void enter_reset(void)
{
    enter_hook = nullptr;
    enter_answers = nullptr;
    enter_answer_count = 0;
    enter_answer_next = 0;
    enter_call_count = 0;
    enter_last_title[0] = 0;
    enter_last_text[0] = 0;
    enter_last_max_length = 0;
}

static int enter_run(QDialog *dialog, const char *title, const char *text, int max_length)
{
    enter_call_count++;
    text_copy(enter_last_title, sizeof enter_last_title, title);
    size_t n = strnlen(text, sizeof enter_last_text - 1);
    memcpy(enter_last_text, text, n);
    enter_last_text[n] = 0;
    enter_last_max_length = max_length;
    return enter_hook ? enter_hook(dialog) : dialog->exec();
}

// strncpy is the rule here, not an accident: the caller's bytes past the text
// are cleared, and a full-length text comes back without a terminator.
static void enter_copy_back(char *text, const char *value, int max_length)
{
    if (max_length > 0)
    {
        strncpy(text, value, (size_t)max_length);
    }
}

// The editor belongs to the window it was opened from, so that a full-screen
// panel can't cover it.
static QWidget *enter_owner(void)
{
    QWidget *owner = QApplication::activeModalWidget();
    return owner ? owner : QApplication::activeWindow();
}

int EnterNumber(char *text, int max_length)
{
    KeypadDialog dialog(enter_owner());
    dialog.load(text);
    if (enter_run(&dialog, "", text, max_length) != QDialog::Accepted)
    {
        return 0;
    }
    enter_copy_back(text, dialog.value, max_length);
    return 1;
}

int EnterText(const char *title, char *text, int max_length)
{
    KeyboardDialog dialog(enter_owner());
    dialog.load(title, text);
    if (enter_run(&dialog, title, text, max_length) != QDialog::Accepted)
    {
        return 0;
    }
    enter_copy_back(text, dialog.value, max_length);
    return 1;
}

static int enter_field(const char *title, char *text, int size, int max_length)
{
    // Room for the keyboard's longest text and a terminator that no answer
    // can overwrite, since the editors hand back at most `most` bytes.
    char value[96];
    memset(value, 0, sizeof value);
    text_copy(value, sizeof value, text);
    int most = max_length < (int)sizeof value - 1 ? max_length : (int)sizeof value - 1;
    int accepted = title ? EnterText(title, value, most) : EnterNumber(value, most);
    if (accepted)
    {
        text_copy(text, size, value);
    }
    return accepted;
}

int enter_number_field(char *text, int size, int max_length)
{
    return enter_field(nullptr, text, size, max_length);
}

int enter_text_field(const char *title, char *text, int size, int max_length)
{
    return enter_field(title ? title : "", text, size, max_length);
}

void enter_field_load(char *value, int size, int *length, const char *text, int most)
{
    const char *from = text ? text : "";
    size_t n = strnlen(from, (size_t)(most < size ? most : size - 1));
    memset(value, 0, (size_t)size);
    memcpy(value, from, n);
    *length = (int)n;
}

void enter_field_append(char *value, int *length, int keep, char c)
{
    if (*length >= keep)
    {
        return;
    }
    value[(*length)++] = c;
    value[*length] = 0;
}

void enter_field_remove(char *value, int *length)
{
    if (*length > 0)
    {
        value[--(*length)] = 0;
    }
}
