// The rig control dialog: the operator picks the rig file and the radio's
// port. Every control writes straight into the settings record; OK only
// saves, Cancel takes nothing back.
#pragma once

#include <QDialog>

class QTableWidgetItem;

namespace Ui
{
class RigControlDialog;
}

class RigControlDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit RigControlDialog(QWidget *parent = nullptr);
    ~RigControlDialog() override;

    Ui::RigControlDialog *ui;

  public slots:
    void rigSelected(QTableWidgetItem *item);
    void PortChanged(int index);
    void BaudRateChanged(int index);
    void DataBitsChanged(int index);
    void StopBitsChanged(int index);
    void ParityChanged(int index);
    void FlowControlChanged(int index);
    void DebugChanged(void);

  private:
    void listFiles(void);
    void listPorts(void);
    void showSurvey(void);
};

// What an accepted dialog leaves: the file's name on the rig button, or rig
// control off when no file is chosen; the settings saved; the panel redrawn.
void rig_dialog_accepted(void);
