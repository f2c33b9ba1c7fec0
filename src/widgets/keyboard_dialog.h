// KeyboardDialog: the on-screen keyboard for every text of the panel, with a
// shift lock and a symbol layout. A character key enters the first character
// of its present caption, so changing layout is nothing but new captions.
#pragma once

#include <QDialog>

class QPushButton;

namespace Ui
{
class KeyboardDialog;
}

enum
{
    KEYBOARD_KEYS = 38
};

class KeyboardDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit KeyboardDialog(QWidget *parent = nullptr);
    ~KeyboardDialog() override;

    void load(const char *title, const char *text);
    void append(char c);
    void remove_last(void);

    Ui::KeyboardDialog *ui;
    QPushButton *keys[KEYBOARD_KEYS];
    bool symbols;
    bool shifted;
    char value[80];
    int length;

  public slots:
    void Key1_Pressed(void);
    void Key2_Pressed(void);
    void Key3_Pressed(void);
    void Key4_Pressed(void);
    void Key5_Pressed(void);
    void Key6_Pressed(void);
    void Key7_Pressed(void);
    void Key8_Pressed(void);
    void Key9_Pressed(void);
    void Key10_Pressed(void);
    void Key11_Pressed(void);
    void Key12_Pressed(void);
    void Key13_Pressed(void);
    void Key14_Pressed(void);
    void Key15_Pressed(void);
    void Key16_Pressed(void);
    void Key17_Pressed(void);
    void Key18_Pressed(void);
    void Key19_Pressed(void);
    void Key20_Pressed(void);
    void Key21_Pressed(void);
    void Key22_Pressed(void);
    void Key23_Pressed(void);
    void Key24_Pressed(void);
    void Key25_Pressed(void);
    void Key26_Pressed(void);
    void Key27_Pressed(void);
    void Key28_Pressed(void);
    void Key29_Pressed(void);
    void Key30_Pressed(void);
    void Key31_Pressed(void);
    void Key32_Pressed(void);
    void Key33_Pressed(void);
    void Key34_Pressed(void);
    void Key35_Pressed(void);
    void Key36_Pressed(void);
    void Key37_Pressed(void);
    void Key38_Pressed(void);
    void KeySpace_Pressed(void);
    void KeyEnter_Pressed(void);
    void KeyDelete_Pressed(void);
    void KeyUpArrow_Pressed(void);
    void KeyMode_Pressed(void);

  private:
    void connect_keys(void);
    void character_key(int index);
    void show_captions(void);
    void show_value(void);
};
