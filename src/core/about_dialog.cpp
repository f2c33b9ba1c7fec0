#include "core/about_dialog.h"

#include "core/state.h"
#include "widgets/touch_style.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

static const char about_history[] = "v2.35  Station software for an 800x480 touch panel on Linux.\n"
                                    "\n"
                                    "Credits:\n"
                                    "Earth image: NASA Visible Earth.\n"
                                    "Deep-sky data based on OpenNGC by Mattia Verga (CC-BY-SA-4.0).\n"
                                    "Icons and the sky noise picture: Morvane's own.\n";

AboutDialog::AboutDialog(QWidget *parent) : QDialog(parent)
{
    setObjectName("AboutDialog");
    setWindowTitle(tr("About"));
    QVBoxLayout *layout = new QVBoxLayout(this);
    QLabel *name = new QLabel(QString::fromLatin1(window_title), this);
    name->setObjectName("AboutName");
    QPlainTextEdit *history = new QPlainTextEdit(QString::fromLatin1(about_history), this);
    history->setObjectName("AboutHistory");
    history->setReadOnly(true);
    QDialogButtonBox *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->setObjectName("AboutButtons");
    buttons->setMinimumHeight(44);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(name);
    layout->addWidget(history);
    layout->addWidget(buttons);
    setFixedSize(460, 300);
    touch_style_dialog(this);
}
