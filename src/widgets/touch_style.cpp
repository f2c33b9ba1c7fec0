#include "widgets/touch_style.h"

#include <QAbstractItemView>
#include <QScroller>
#include <QWidget>

// The panel's own colours: the navy of the dial ground, the gray gradient of
// its buttons, bold white text. Tables keep their light cells: rows of
// figures read best dark on light.
static const char touch_sheet[] =
    "QDialog { background-color: rgb(0, 0, 64); }"
    "QDialog QLabel, QDialog QGroupBox, QDialog QCheckBox, QDialog QRadioButton"
    " { color: white; font-weight: bold; }"
    "QDialog QPushButton { background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black,"
    " stop:0.9 gray, stop:1 white); color: white; border-radius: 5px; font-weight: bold; padding: 4px 12px; }"
    "QDialog QPushButton:pressed { background-color: DarkGreen; }"
    "QDialogButtonBox QPushButton { min-height: 44px; min-width: 88px; }"
    "QDialog QCheckBox::indicator, QDialog QRadioButton::indicator { width: 32px; height: 32px; }";

void touch_style_dialog(QWidget *dialog)
{
    dialog->setStyleSheet(QString::fromLatin1(touch_sheet));
    // A 14 px scroll bar is hard to hit with a finger; a drag anywhere on
    // the list scrolls it, and a flick runs on.
    const QList<QAbstractItemView *> views = dialog->findChildren<QAbstractItemView *>();
    for (QAbstractItemView *view : views)
    {
        view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
        QScroller::grabGesture(view->viewport(), QScroller::LeftMouseButtonGesture);
    }
}
