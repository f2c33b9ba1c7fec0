// The number keypad through which every value of every dialog is entered: one
// blocking call that hands the operator a text and gives back the edit.
#pragma once

// Edit text on the keypad. Returns 1 when the operator accepted; then at most
// max_length bytes come back, zero-filled past the text's end, and a text of
// max_length bytes or more comes back without a terminator (callers pass
// sizes below their buffers'). Otherwise returns 0 and text stays as it was.
int EnterNumber(char *text, int max_length);

// A test stands in for the operator: when set, the hook gets the field as the
// keypad would show it (value, with room for size bytes) instead of a dialog,
// and returns 1 to accept. Null restores the dialog.
typedef int (*EnterNumberHook)(char *value, int size);
void keypad_set_test_hook(EnterNumberHook hook);
