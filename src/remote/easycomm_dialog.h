// The EasyComm port settings. Every control writes straight into the link's
// record, so a Cancel leaves the change in memory; the port itself opens with
// the new settings only at the link's next start.
#pragma once

#include <QDialog>

namespace Ui
{
class EasyCommDialog;
}

class EasyCommDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit EasyCommDialog(QWidget *parent = nullptr);
    ~EasyCommDialog() override;

    Ui::EasyCommDialog *ui;

  public slots:
    void PortChanged(int index);
    void BaudRateChanged(int index);
    void DataBitsChanged(int index);
    void StopBitsChanged(int index);
    void ParityChanged(int index);
    void FlowControlChanged(int index);
    void DebugChanged(void);

  private:
    void listPorts(void);
};
