#include "rig/rig_dialog.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "rig/rig_loader.h"
#include "rig/serial_link.h"
#include "support/panel_record.h"
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
        write_text("Reads only pmFreq.ini", "[STATUS1]\nCommand=(IF;)\nReplyEnd=(;)\nValue1=2|11|vfText|1|0|pmFreq\n"
                                             "[pmFreqA]\nCommand=(FA...........;)\nValue=2|11|vfText|1|0\n");
        write_text("Both ways.ini", "[STATUS1]\nCommand=(FA;)\nReplyEnd=(;)\nValue1=2|11|vfText|1|0|pmFreqA\n"
                                    "[STATUS2]\nCommand=(FB;)\nReplyEnd=(;)\nValue1=2|11|vfText|1|0|pmFreqB\n"
                                    "[pmFreqA]\nCommand=(FA...........;)\nValue=2|11|vfText|1|0\n"
                                    "[pmFreqB]\nCommand=(FB...........;)\nValue=2|11|vfText|1|0\n");
        write("IC-9700.ini", 56);
        write("notes.txt", 3);
        QFile::link(QString::fromStdString(folder + "/TS-2000.ini"), QString::fromStdString(folder + "/link.ini"));
        rig_files_set_folder(folder.c_str());
    }

    void write_text(const char *name, const char *text)
    {
        QFile file(QString::fromStdString(folder + "/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    void write(const char *name, int size)
    {
        QFile file(QString::fromStdString(folder + "/" + name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(size, ';'));
    }
};

TEST_F(RigDialog, ListsRigFilesWithTheirSizesAndAClickedCellBecomesTheFile)
{
    RigControlDialog dialog;
    QTableWidget *table = dialog.ui->tableWidget;
    ASSERT_EQ(table->rowCount(), 4); // no text file, no link
    int ts2000 = table->findItems("TS-2000.ini", Qt::MatchExactly)[0]->row();
    EXPECT_EQ(table->item(ts2000, 1)->text(), "1234");
    settings.OmniRigActive = 1;
    emit table->itemClicked(table->item(ts2000, 0));
    EXPECT_STREQ(settings.OmniRigFilename, "TS-2000.ini");
    EXPECT_EQ(settings.OmniRigActive, 0);
    // The slot takes whatever cell was touched, the size too.
    emit table->itemClicked(table->item(ts2000, 1));
    EXPECT_STREQ(settings.OmniRigFilename, "1234");
}

// The verdict of the survey for the file chosen, and for the stored one when the dialog opens.
TEST_F(RigDialog, ShowsWhetherTheChosenFileCanDriveDoppler)
{
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "Both ways.ini");
    RigControlDialog dialog;
    EXPECT_EQ(dialog.ui->SurveyLabel->text().toStdString(),
              "Both ways.ini: Doppler tuning both ways: VFO B follows A, and A follows B");
    emit dialog.ui->tableWidget->itemClicked(dialog.ui->tableWidget->findItems("Reads only pmFreq.ini", Qt::MatchExactly)[0]);
    EXPECT_EQ(dialog.ui->SurveyLabel->text().toStdString(),
              "Reads only pmFreq.ini: reads only pmFreq: Doppler tuning needs pmFreqA and pmFreqB");
    // The size cell, taken as a name, is no file.
    emit dialog.ui->tableWidget->itemClicked(dialog.ui->tableWidget->findItems("1234", Qt::MatchExactly)[0]);
    EXPECT_EQ(dialog.ui->SurveyLabel->text().toStdString(), "1234: no such file among the rig files");
}

// USB adapters by their stable names, whole however long, and a stored name kept.
TEST_F(RigDialog, PortListHasTheStableNamesAndKeepsALongStoredName)
{
    std::string by_id = folder + "/by-id";
    QDir().mkpath(QString::fromStdString(by_id));
    std::string adapter = by_id + "/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0";
    QFile::link("/dev/null", QString::fromStdString(adapter));
    serial_set_by_id_folder(by_id.c_str());
    std::string stored = by_id + "/usb-Silicon_Labs_CP2102_USB_to_UART_Bridge_Controller_0001-if00-port0";
    text_copy(settings.PortName, sizeof settings.PortName, stored.c_str());
    {
        RigControlDialog dialog;
        QComboBox *ports = dialog.ui->PortComboBox;
        EXPECT_GE(ports->findText(QString::fromStdString(adapter)), 0);
        EXPECT_EQ(ports->currentText().toStdString(), stored);
        ports->setCurrentIndex(ports->findText(QString::fromStdString(adapter)));
        EXPECT_EQ(std::string(settings.PortName), adapter);
    }
    serial_set_by_id_folder(nullptr);
}

TEST_F(RigDialog, AcceptedPutsTheFileOnTheRigButton)
{
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "IC-9700.ini");
    rig_dialog_accepted();
    EXPECT_STREQ(panel_last_text[PANEL_OMNIRIG], "IC-9700.ini");
    // Without a file the rig goes off.
    settings.OmniRigFilename[0] = 0;
    settings.OmniRigActive = 1;
    rig_dialog_accepted();
    EXPECT_EQ(settings.OmniRigActive, 0);
}
