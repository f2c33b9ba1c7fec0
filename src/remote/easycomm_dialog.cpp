#include "remote/easycomm_dialog.h"

#include "core/state.h"
#include "remote/easycomm.h"
#include "ui_easycomm_dialog.h"
#include "widgets/touch_style.h"

#include <QStringList>

EasyCommDialog::EasyCommDialog(QWidget *parent) : QDialog(parent), ui(new Ui::EasyCommDialog)
{
    ui->setupUi(this);
    touch_style_dialog(this);
    listPorts();
    SerialLink *link = &easycomm.link;
    ui->BaudComboBox->setCurrentIndex(link->BaudRate);
    ui->DataBitsComboBox->setCurrentIndex(link->DataBits);
    ui->StopBitsComboBox->setCurrentIndex(link->StopBits);
    ui->ParityComboBox->setCurrentIndex(link->Parity);
    ui->FlowComboBox->setCurrentIndex(link->FlowControl);
    ui->DebugButton->setChecked(easycomm.debug != 0);

    connect(ui->PortComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::PortChanged);
    connect(ui->BaudComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::BaudRateChanged);
    connect(ui->DataBitsComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::DataBitsChanged);
    connect(ui->StopBitsComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::StopBitsChanged);
    connect(ui->ParityComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::ParityChanged);
    connect(ui->FlowComboBox, &QComboBox::currentIndexChanged, this, &EasyCommDialog::FlowControlChanged);
    connect(ui->DebugButton, &QAbstractButton::clicked, this, &EasyCommDialog::DebugChanged);
}

EasyCommDialog::~EasyCommDialog()
{
    delete ui;
}

// Opening the dialog takes the shown port's name, as a change of the list would.
void EasyCommDialog::listPorts(void)
{
    SerialLink *link = &easycomm.link;
    QStringList names = serial_port_names(link->PortName, 0);
    QString stored = QString::fromUtf8(link->PortName);
    ui->PortComboBox->addItems(names);
    int row = names.indexOf(stored);
    ui->PortComboBox->setCurrentIndex(row >= 0 ? row : 0);
    if (ui->PortComboBox->currentIndex() >= 0)
    {
        PortChanged(ui->PortComboBox->currentIndex());
    }
}

void EasyCommDialog::PortChanged(int index)
{
    easycomm.link.Port = index;
    text_copy(easycomm.link.PortName, sizeof easycomm.link.PortName,
              ui->PortComboBox->currentText().toUtf8().constData());
}

void EasyCommDialog::BaudRateChanged(int index)
{
    easycomm.link.BaudRate = index;
}

void EasyCommDialog::DataBitsChanged(int index)
{
    easycomm.link.DataBits = index;
}

void EasyCommDialog::StopBitsChanged(int index)
{
    easycomm.link.StopBits = index;
}

void EasyCommDialog::ParityChanged(int index)
{
    easycomm.link.Parity = index;
}

void EasyCommDialog::FlowControlChanged(int index)
{
    easycomm.link.FlowControl = index;
}

void EasyCommDialog::DebugChanged(void)
{
    easycomm.debug = ui->DebugButton->isChecked() ? 1 : 0;
}
