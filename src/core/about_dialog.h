// The about box: the program's name, its release history and the credits of
// the data it ships.
#pragma once

#include <QDialog>

class AboutDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit AboutDialog(QWidget *parent = nullptr);
};
