#include "rig/rig_dialog.h"

#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/settings.h"
#include "core/state.h"
#include "rig/doppler.h"
#include "rig/rig_loader.h"
#include "rig/rig_survey.h"
#include "rig/serial_link.h"
#include "ui_rig_dialog.h"
#include "widgets/touch_style.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QStringList>
#include <QTableWidgetItem>
#include <cstdio>

RigControlDialog::RigControlDialog(QWidget *parent) : QDialog(parent), ui(new Ui::RigControlDialog)
{
    ui->setupUi(this);
    touch_style_dialog(this);
    ui->tableWidget->setColumnWidth(0, 160);
    ui->tableWidget->setColumnWidth(1, 100);
    // Rows a finger can hit on the panel.
    ui->tableWidget->verticalHeader()->setDefaultSectionSize(36);
    ui->tableWidget->setSortingEnabled(false);
    listFiles();
    listPorts();
    showSurvey();

    ui->BaudComboBox->setCurrentIndex(settings.BaudRate);
    ui->DataBitsComboBox->setCurrentIndex(settings.DataBits);
    ui->StopBitsComboBox->setCurrentIndex(settings.StopBits);
    ui->ParityComboBox->setCurrentIndex(settings.Parity);
    ui->FlowComboBox->setCurrentIndex(settings.FlowControl);
    ui->DebugButton->setChecked(settings.OmniRigDebug != 0);

    connect(ui->tableWidget, &QTableWidget::itemClicked, this, &RigControlDialog::rigSelected);
    connect(ui->PortComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::PortChanged);
    connect(ui->BaudComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::BaudRateChanged);
    connect(ui->DataBitsComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::DataBitsChanged);
    connect(ui->StopBitsComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::StopBitsChanged);
    connect(ui->ParityComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::ParityChanged);
    connect(ui->FlowComboBox, &QComboBox::currentIndexChanged, this, &RigControlDialog::FlowControlChanged);
    connect(ui->DebugButton, &QAbstractButton::clicked, this, &RigControlDialog::DebugChanged);
}

RigControlDialog::~RigControlDialog()
{
    delete ui;
}

void RigControlDialog::listFiles(void)
{
    QDir folder(QString::fromUtf8(rig_files_folder()));
    const QFileInfoList files =
        folder.entryInfoList(QStringList() << "*.ini", QDir::Files | QDir::NoSymLinks, QDir::Name);
    ui->tableWidget->setRowCount((int)files.size());
    int row = 0;
    for (const QFileInfo &file : files)
    {
        char size[32];
        snprintf(size, sizeof size, "%lld", (long long)file.size());
        ui->tableWidget->setVerticalHeaderItem(row, new QTableWidgetItem(QString()));
        ui->tableWidget->setItem(row, 0, new QTableWidgetItem(file.fileName()));
        ui->tableWidget->setItem(row, 1, new QTableWidgetItem(QString::fromLatin1(size)));
        row++;
    }
}

void RigControlDialog::listPorts(void)
{
    QStringList names = serial_port_names(settings.PortName, 1);
    QString stored = QString::fromUtf8(settings.PortName);
    ui->PortComboBox->addItems(names);
    int row = names.indexOf(stored);
    ui->PortComboBox->setCurrentIndex(row >= 0 ? row : 0);
    if (ui->PortComboBox->currentIndex() >= 0)
    {
        settings.Port = ui->PortComboBox->currentIndex();
        text_copy(settings.PortName, sizeof settings.PortName, ui->PortComboBox->currentText().toUtf8().constData());
    }
}

void RigControlDialog::rigSelected(QTableWidgetItem *item)
{
    rig_control_off();
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, item->text().toUtf8().constData());
    showSurvey();
}

// What the chosen file lets Doppler tuning do, before the operator relies on
// it. While rig control is on, the tables hold that very file; otherwise it is
// loaded here, and the rig button loads it again when pressed.
void RigControlDialog::showSurvey(void)
{
    if (!settings.OmniRigFilename[0])
    {
        ui->SurveyLabel->clear();
        return;
    }
    QString name = QString::fromUtf8(settings.OmniRigFilename);
    if (!QFileInfo::exists(QString::fromUtf8(rig_files_folder()) + "/" + name))
    {
        ui->SurveyLabel->setText(name + ": no such file among the rig files");
        return;
    }
    if (!settings.OmniRigActive)
    {
        LoadOmniRigFile(settings.OmniRigFilename, 0);
    }
    char verdict[160];
    rig_survey_verdict(verdict, sizeof verdict);
    ui->SurveyLabel->setText(QString::fromUtf8(settings.OmniRigFilename) + ": " + QString::fromUtf8(verdict));
}

void RigControlDialog::PortChanged(int index)
{
    settings.Port = index;
    text_copy(settings.PortName, sizeof settings.PortName, ui->PortComboBox->currentText().toUtf8().constData());
}

void RigControlDialog::BaudRateChanged(int index)
{
    settings.BaudRate = index;
}

void RigControlDialog::DataBitsChanged(int index)
{
    settings.DataBits = index;
}

void RigControlDialog::StopBitsChanged(int index)
{
    settings.StopBits = index;
}

void RigControlDialog::ParityChanged(int index)
{
    settings.Parity = index;
}

void RigControlDialog::FlowControlChanged(int index)
{
    settings.FlowControl = index;
}

void RigControlDialog::DebugChanged(void)
{
    settings.OmniRigDebug = ui->DebugButton->isChecked() ? 1 : 0;
}

void rig_dialog_accepted(void)
{
    if (settings.OmniRigFilename[0])
    {
        panel_text(PANEL_OMNIRIG, settings.OmniRigFilename);
    }
    else
    {
        rig_control_off();
    }
    SaveSettings(ini_file_name, &settings);
    panel_update_display();
}
