// SkyMapDialog: the world map with the Sun, Moon, planets, radio sources and
// the sky over it, and the EME figures of the home and DX stations, on a
// clock of its own: real time plus map_time_offset, which the step buttons
// move and Play runs on by itself. A left click on the map makes that place
// the DX station. The main cycle stands still while the window is open, so
// the map uses source_table as its own.
#pragma once

#include "core/state.h"
#include "skymap/common_window.h"
#include "skymap/map_layers.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTimer;

// The window's controls, in the order of its table.
enum MapControl
{
    MAP_WORLD,
    MAP_AZIMUTH_LABEL,
    MAP_ELEVATION_LABEL,
    MAP_SPATIAL_OFFSET_LABEL,
    MAP_SKY_TEMP_LABEL,
    MAP_DEGRADATION_LABEL,
    MAP_PATH_LOSS_LABEL,
    MAP_DISTANCE_LABEL,
    MAP_SET_CONFIGURATION,
    MAP_SET_DATE_TIME,
    MAP_PLAY,
    MAP_HOME_AZIMUTH, // the five Moon figures of the home station, then path loss and distance
    MAP_HOME_ELEVATION,
    MAP_HOME_SPATIAL_OFFSET,
    MAP_HOME_SKY_TEMP,
    MAP_HOME_DEGRADATION,
    MAP_PATH_LOSS,
    MAP_DISTANCE,
    MAP_STEP_MIN_MINUS, // the eight step buttons
    MAP_STEP_HOUR_MINUS,
    MAP_STEP_DAY_MINUS,
    MAP_STEP_WEEK_MINUS,
    MAP_DX_AZIMUTH, // the five Moon figures of the DX station
    MAP_DX_ELEVATION,
    MAP_DX_SPATIAL_OFFSET,
    MAP_DX_SKY_TEMP,
    MAP_DX_DEGRADATION,
    MAP_SET_FREQUENCY,
    MAP_STEP_MIN_PLUS,
    MAP_STEP_HOUR_PLUS,
    MAP_STEP_DAY_PLUS,
    MAP_STEP_WEEK_PLUS,
    MAP_CONTROL_COUNT
};

// Where the pictures are read from: the folder that holds "pixmaps", by
// default the program's own. Null goes back to that.
void skymap_set_folder(const char *folder);

// The four cadence counters of the window's timer run on from one window to
// the next; a test starts them from 0.
void skymap_reset_counters(void);

class SkyMapDialog : public QDialog
{
    Q_OBJECT

  public:
    explicit SkyMapDialog(QWidget *parent = nullptr);
    ~SkyMapDialog() override;

    QWidget *controls[MAP_CONTROL_COUNT];
    QLabel *WorldMap;
    QTimer *timer;

    bool map_playing;
    int map_adjust_step; // seconds a step button moves the clock, and Play each second
    bool map_dirty;
    MapTip tip;
    MapPictures pictures;
    CommonWindow common_window;

    // For the tests and the benchmark: what happened so far.
    int map_draws;  // pictures set on the map
    int map_layers; // MapLayer bits of the last picture
    int sun_shade_builds;
    int moon_shade_builds;

    void LoadPixmaps(void);
    void DrawMapOverlay(void);
    void DrawMap(void);
    void RecalculateSources(void);
    void BuildShades(void);

  public slots:
    void UpdateDisplay(void);
    void SetConfiguration(void);
    void SetFrequency(void);
    void SetDateTime(void);
    void TimeAdjustPlayButtonPressed(void);
    void TimeAdjusted(void);
    void TimeAdjustButtonPressed(int control);
    void TimerEvent(void);

  protected:
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

  private:
    void build_controls(void);
    void connect_controls(void);
    void refresh_figures(void);
    void show_figures(int first, const SourceRecord &moon);
    void set_text(int control, const char *format, double value);
    void add_to_clock(long seconds);
    int map_place(QMouseEvent *event, QPoint *at, double *latitude, double *longitude, char grid[7]);
};
