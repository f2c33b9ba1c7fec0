// The station's one window: it brings the subsystems up in order, owns the
// 50 ms cycle timer and the seven dials, and takes everything down again so
// that no motor is left running.
#pragma once

#include <QMainWindow>
#include <QPixmap>
#include <QTimer>

class Compass;
class QMenuBar;

namespace Ui
{
class MainWindow;
}

class MainWindow : public QMainWindow
{
    Q_OBJECT

  public:
    explicit MainWindow(int instance, QWidget *parent = nullptr);
    ~MainWindow() override;

    Compass *azimuth_dial;
    Compass *elevation_dial;
    Compass *wind_direction_dial;
    Compass *wind_speed_dial;
    Compass *temperature_dial;
    Compass *barometer_dial;
    Compass *altimeter_dial;
    QPixmap menu_icon;
    Ui::MainWindow *ui;
    QTimer *timer;
    QMenuBar *menu_bar;
    uint8_t menu_shown;

    void LoadIcons(void);
    void createDials(void);
    void createMenus(void);
    void UpdateDisplay(void);
    void SetupTrackingSource(void);
    int SendPskSelfReport(void);

    // The groups of one tick, called by the cycle in its fixed order.
    void DisplayGroup(int source);
    void PositionGroup(int source);
    void PanelPageGroup(void);

  public slots:
    void TimerEvent(void);
    void selectPanel(int pos);

    void MenuButtonPressed(void);
    void SourceButtonPressed(void);
    void AzSourceButtonPressed(void);
    void ElSourceButtonPressed(void);
    void AutoButtonPressed(void);
    void ParkButtonPressed(void);
    void StopButtonPressed(void);
    void AzManualButtonPressed(void);
    void ElManualButtonPressed(void);
    void LeftButtonPressed(void);
    void RightButtonPressed(void);
    void UpButtonPressed(void);
    void DownButtonPressed(void);
    void AzCalibrateButtonPressed(void);
    void ElCalibrateButtonPressed(void);
    void TxButtonPressed(void);
    void RxButtonPressed(void);
    void OmniRigButtonPressed(void);
    void HomeStationButtonPressed(void);
    void DxStationButtonPressed(void);

    void SourceAzimuthMousePosition(void);
    void SourceElevationMousePosition(void);
    void BarometerMousePosition(void);
    void SourceAzimuthMousePressed(void);
    void SourceElevationMousePressed(void);

    void HomeStation(void);
    void SourcesDisplay(void);
    void DxStation(void);
    void EasyComm(void);
    void RigControl(void);
    void Antenna(void);
    bool SetDateTime(void);
    void EncoderScan(void);
    void Calibration(void);
    void SkyMap(void);
    void About(void);
    void Alerts(void);
    void WxConfig(void);
    void UpdateRemoteDisplay(void);
    void EvaluateAlerts(void);

  private:
    void registerPanel(void);
    void connectButtons(void);
    void applyInitialStyles(void);
};
