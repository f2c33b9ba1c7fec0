#include "rig/rig_dialog.h"

#include "core/panel_seam.h"
#include "core/state.h"
#include "rig/rig_loader.h"
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

TEST_F(RigDialog, ListsRigFilesWithTheirSizesAndAClickedCellBecomesTheFile)
{
    RigControlDialog dialog;
    QTableWidget *table = dialog.ui->tableWidget;
    ASSERT_EQ(table->rowCount(), 2); // no text file, no link
    EXPECT_EQ(table->item(0, 0)->text(), "IC-9700.ini");
    EXPECT_EQ(table->item(1, 1)->text(), "1234");
    settings.OmniRigActive = 1;
    emit table->itemClicked(table->item(1, 0));
    EXPECT_STREQ(settings.OmniRigFilename, "TS-2000.ini");
    EXPECT_EQ(settings.OmniRigActive, 0);
    // The slot takes whatever cell was touched, the size too.
    emit table->itemClicked(table->item(1, 1));
    EXPECT_STREQ(settings.OmniRigFilename, "1234");
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
