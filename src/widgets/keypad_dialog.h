// KeypadDialog: the number pad that every numeric field of the panel opens.
// It only collects characters; the caller parses what comes back, so a text
// with two periods is the caller's to judge.
#pragma once

#include <QDialog>

namespace Ui
{
class KeypadDialog;
}

class KeypadDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit KeypadDialog(QWidget *parent = nullptr);
    ~KeypadDialog() override;

    // Start from the caller's text, as much of it as the field holds.
    void load(const char *text);
    // One key's character, dropped once the field is full.
    void append(char c);
    void remove_last(void);

    Ui::KeypadDialog *ui;
    char value[20];
    int length;

  public slots:
    void Key0_Pressed(void);
    void Key1_Pressed(void);
    void Key2_Pressed(void);
    void Key3_Pressed(void);
    void Key4_Pressed(void);
    void Key5_Pressed(void);
    void Key6_Pressed(void);
    void Key7_Pressed(void);
    void Key8_Pressed(void);
    void Key9_Pressed(void);
    void KeyPlus_Pressed(void);
    void KeyMinus_Pressed(void);
    void KeyEnter_Pressed(void);
    void KeyDelete_Pressed(void);
    void KeyPeriod_Pressed(void);

  private:
    void show_value(void);
};
