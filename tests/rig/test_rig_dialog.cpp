#include "rig/rig_dialog.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "rig/rig_loader.h"
#include "support/test_env.h"
#include "ui_rig_dialog.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <string>

class RigDialog : public ::testing::Test
{
  protected:
    std::string folder;

    void SetUp() override
    {
        test_reset_state();
        folder = std::string(test_home()) + "/rigs";
        QDir(QString::fromStdString(folder)).removeRecursively();
        QDir().mkpath(QString::fromStdString(folder));
        write("TS-2000.ini", 1234);
        write("IC-9700.ini", 56);
        write("notes.txt", 3);
        QFile::link(QString::fromStdString(folder + "/TS-2000.ini"), QString::fromStdString(folder + "/link.ini"));
        rig_files_set_folder(folder.c_str());
    }

    void write(const char *name, int size)
    {
        QFile file(QString::fromStdString(folder + "/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(size, ';'));
    }
};

TEST_F(RigDialog, ListsRigFilesWithTheirSizes)
{
    RigControlDialog dialog;
    QTableWidget *table = dialog.ui->tableWidget;
    ASSERT_EQ(table->rowCount(), 2); // no text file, no link
    EXPECT_EQ(table->item(0, 0)->text(), "IC-9700.ini");
    EXPECT_EQ(table->item(0, 1)->text(), "56");
    EXPECT_EQ(table->item(1, 0)->text(), "TS-2000.ini");
    EXPECT_EQ(table->item(1, 1)->text(), "1234");
    EXPECT_EQ(table->horizontalHeaderItem(0)->text(), "Filename");
    EXPECT_EQ(table->columnWidth(0), 160);
    EXPECT_EQ(table->columnWidth(1), 100);
    EXPECT_EQ(dialog.windowTitle(), "Rig Control Configuration");
}

TEST_F(RigDialog, ClickedCellBecomesTheFileAndSwitchesRigOff)
{
    settings.OmniRigActive = 1;
    RigControlDialog dialog;
    QTableWidget *table = dialog.ui->tableWidget;
    emit table->itemClicked(table->item(1, 0));
    EXPECT_STREQ(settings.OmniRigFilename, "TS-2000.ini");
    EXPECT_EQ(settings.OmniRigActive, 0);
    // The slot takes whatever cell was touched, the size too.
    emit table->itemClicked(table->item(1, 1));
    EXPECT_STREQ(settings.OmniRigFilename, "1234");
}

TEST_F(RigDialog, ControlsWriteTheSettings)
{
    settings.BaudRate = 3;
    settings.DataBits = 1;
    settings.Parity = 2;
    text_copy(settings.PortName, sizeof settings.PortName, "/dev/ttyUSB7");
    RigControlDialog dialog;
    EXPECT_EQ(dialog.ui->BaudComboBox->currentText(), "9600");
    EXPECT_EQ(dialog.ui->ParityComboBox->currentText(), "Even");
    // A port that is not plugged in now keeps its place in the list.
    EXPECT_EQ(dialog.ui->PortComboBox->currentText(), "/dev/ttyUSB7");
    EXPECT_EQ(settings.Port, dialog.ui->PortComboBox->currentIndex());

    dialog.ui->BaudComboBox->setCurrentIndex(4);
    dialog.ui->DataBitsComboBox->setCurrentIndex(0);
    dialog.ui->StopBitsComboBox->setCurrentIndex(2);
    dialog.ui->ParityComboBox->setCurrentIndex(4);
    dialog.ui->FlowComboBox->setCurrentIndex(1);
    dialog.ui->DebugButton->click();
    EXPECT_EQ(settings.BaudRate, 4); // 14400 is stored; the link opens it at 9600
    EXPECT_EQ(settings.DataBits, 0);
    EXPECT_EQ(settings.StopBits, 2);
    EXPECT_EQ(settings.Parity, 4);
    EXPECT_EQ(settings.FlowControl, 1);
    EXPECT_EQ(settings.OmniRigDebug, 1);
}

TEST_F(RigDialog, AcceptedPutsTheFileOnTheRigButton)
{
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "IC-9700.ini");
    rig_dialog_accepted();
    EXPECT_STREQ(panel_last_text[PANEL_OMNIRIG], "IC-9700.ini");

    settings.OmniRigFilename[0] = 0;
    settings.OmniRigActive = 1;
    rig_dialog_accepted();
    EXPECT_EQ(settings.OmniRigActive, 0);
    EXPECT_STREQ(panel_last_text[PANEL_OMNIRIG], "OmniRig is inactive");
    EXPECT_EQ(panel_last_style[PANEL_OMNIRIG], STYLE_GRAY);
}
