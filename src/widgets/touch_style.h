// The panel's look for the dialogs whose layout is ours to choose: the navy
// ground and gray gradient buttons of the panel, OK and Cancel a finger high,
// check boxes a thumb wide, and lists and tables that scroll by dragging.
#pragma once

class QWidget;

// The smallest touch targets of such a dialog, in pixels.
#define TOUCH_BUTTON_HEIGHT 44
#define TOUCH_CHECK_SIZE 32

// Style the dialog and every list and table in it; call once its children
// exist (after setupUi).
void touch_style_dialog(QWidget *dialog);
