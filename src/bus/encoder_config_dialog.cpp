#include "bus/encoder_config_dialog.h"

#include "bus/encoders.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "ui_encoder_config_dialog.h"
#include "widgets/enter.h"

#include <QPushButton>
#include <cstdlib>

enum
{
    CONFIG_KEYPAD_LENGTH = 10
};

static QString config_number(long value)
{
    return QString::number(value);
}

ConfigDialog::ConfigDialog(int address, QWidget *parent)
    : QDialog(parent), ui(new Ui::ConfigDialog), address(address < 0 || address >= ENCODER_COUNT ? 0 : address)
{
    ui->setupUi(this);
    for (QPushButton *button : {ui->ModeEdit, ui->ResolutionEdit, ui->PprEdit, ui->RangeEdit})
    {
        button->setStyleSheet(panel_style_text(STYLE_GRAY));
    }
    const EncoderEntry *e = &encoders[this->address];
    // Type -1 selects nothing.
    ui->TypeComboBox->setCurrentIndex(e->Type);
    ui->ModeEdit->setText(config_number(e->Mode));
    ui->ResolutionEdit->setText(config_number(e->Resolution));
    ui->PprEdit->setText(config_number(e->PPR));
    ui->RangeEdit->setText(config_number(e->Range));

    connect(ui->TypeComboBox, &QComboBox::currentIndexChanged, this, &ConfigDialog::TypeChanged);
    connect(ui->ModeEdit, &QPushButton::pressed, this, &ConfigDialog::ModePressed);
    connect(ui->ResolutionEdit, &QPushButton::pressed, this, &ConfigDialog::ResolutionPressed);
    connect(ui->PprEdit, &QPushButton::pressed, this, &ConfigDialog::PprPressed);
    connect(ui->RangeEdit, &QPushButton::pressed, this, &ConfigDialog::RangePressed);
}

// Cancel keeps the values too: the dialog is a page of the table, not an
// edit that can be taken back.
ConfigDialog::~ConfigDialog()
{
    EncoderEntry *e = &encoders[address];
    int index = ui->TypeComboBox->currentIndex();
    e->Type = index >= 0 && index <= 1 ? index : ENCODER_NONE;
    e->Mode = (uint8_t)atoi(ui->ModeEdit->text().toLatin1().constData());
    e->Resolution = (uint16_t)atoi(ui->ResolutionEdit->text().toLatin1().constData());
    e->PPR = (uint32_t)strtoul(ui->PprEdit->text().toLatin1().constData(), nullptr, 10);
    e->Range = (uint32_t)strtoul(ui->RangeEdit->text().toLatin1().constData(), nullptr, 10);
    delete ui;
}

void ConfigDialog::TypeChanged(int)
{
}

void ConfigDialog::editNumber(QPushButton *button)
{
    char text[CONFIG_KEYPAD_LENGTH + 1];
    text_copy(text, sizeof text, button->text().toLatin1().constData());
    if (EnterNumber(text, CONFIG_KEYPAD_LENGTH))
    {
        button->setText(QString::fromLatin1(text));
    }
}

void ConfigDialog::ModePressed(void)
{
    editNumber(ui->ModeEdit);
}

void ConfigDialog::ResolutionPressed(void)
{
    editNumber(ui->ResolutionEdit);
}

void ConfigDialog::PprPressed(void)
{
    editNumber(ui->PprEdit);
}

void ConfigDialog::RangePressed(void)
{
    editNumber(ui->RangeEdit);
}
