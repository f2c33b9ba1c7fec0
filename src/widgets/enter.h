// The two blocking editors of the touch panel: every value of every dialog is
// typed on one of them. The caller hands over its text, the operator edits it,
// and only on Enter does the edited text come back.
#pragma once

class QDialog;
class QWidget;

// The keypad on text. When accepted, at most max_length bytes come back with
// the rest of those bytes zero-filled, so a text of max_length characters has
// no terminator: pass less than the buffer's size. Returns 1 when accepted,
// 0 when the dialog was closed otherwise (text untouched).
int EnterNumber(char *text, int max_length);
// The keyboard on text, with title shown beside the field; the same rules.
int EnterText(const char *title, char *text, int max_length);

// How every dialog edits a value. The caller's text goes to the editor from
// a cleared buffer of its own, and an accepted answer of up to max_length
// characters comes back cut to the caller's size, always terminated. Returns
// 1 when accepted; otherwise text stays as it was.
int enter_number_field(char *text, int size, int max_length);
int enter_text_field(const char *title, char *text, int size, int max_length);

// The edit field both editors share. A load takes at most `most` bytes of the
// caller's text, which may lack a terminator (a full-length earlier answer),
// into a field of `size` bytes; an append is dropped once `keep` characters
// are there.
void enter_field_load(char *value, int size, int *length, const char *text, int most);
void enter_field_append(char *value, int *length, int keep, char c);
void enter_field_remove(char *value, int *length);

// Centre a dialog at the bottom of the 800 by 480 panel, under the finger.
void enter_place(QWidget *dialog);

// Tests of the callers must not block on a modal dialog. The hook runs in
// place of exec() with the dialog ready to show; it may press its keys and
// returns what exec() would have (QDialog::Accepted or Rejected).
typedef int (*EnterExecHook)(QDialog *dialog);
void enter_set_exec_hook(EnterExecHook hook); // null: exec() again

// Answer the next calls in turn, as an operator would: empty the field with
// DEL, type the answer key by key (so the field's limit holds), press Enter.
// A null answer closes the dialog without accepting, as Escape does; once the
// answers run out every call is declined. Installs its own hook.
void enter_set_answers(const char *const *answers, int count);

// What the last call was given, for the callers' tests.
extern int enter_call_count;
extern char enter_last_title[80];
extern char enter_last_text[80];
extern int enter_last_max_length;

// Back to exec(), no answers, nothing recorded.
void enter_reset(void);
