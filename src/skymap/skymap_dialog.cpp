#include "skymap/skymap_dialog.h"

#include "astro/source.h"
#include "core/clock.h"
#include "core/state.h"
#include "skymap/frequency_dialog.h"
#include "skymap/map_projection.h"
#include "skymap/map_shade.h"
#include "skymap/overlays.h"
#include "skymap/overlays_dialog.h"
#include "widgets/locator.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <climits>
#include <cstdio>
#include <cstring>

static char picture_folder[512];

void skymap_set_folder(const char *folder)
{
    text_copy(picture_folder, sizeof picture_folder, folder);
}

// The cadence counters of the timer, in milliseconds, counted up by the tick.
static int refresh_ms, tip_ms, shade_ms, play_ms;
static const int map_tick_ms = 10;

void skymap_reset_counters(void)
{
    refresh_ms = tip_ms = shade_ms = play_ms = 0;
}

enum ControlKind
{
    KIND_LABEL,
    KIND_BUTTON,
    KIND_TOOL
};

struct ControlRow
{
    const char *name;
    int kind;
    int x, y, width, height;
    const char *text;
    const char *colour; // of the gradient style; null: none
};

// One row per MapControl, in its order.
static const ControlRow control_rows[MAP_CONTROL_COUNT] = {
    {"WorldMap", KIND_LABEL, 0, 0, 800, 400, "", nullptr},
    {"AzimuthLabel", KIND_LABEL, 10, 405, 66, 21, "Azimuth", "DarkGreen"},
    {"ElevationLabel", KIND_LABEL, 85, 405, 66, 21, "Elevation", "DarkGreen"},
    {"SpatialOffsetLabel", KIND_LABEL, 160, 405, 71, 21, "Spatial Offset", "DarkGreen"},
    {"SkyTempLabel", KIND_LABEL, 240, 405, 71, 21, "SkyTemp", "DarkGreen"},
    {"DegradationLabel", KIND_LABEL, 320, 405, 71, 21, "Degradation", "DarkGreen"},
    {"PathLossLabel", KIND_LABEL, 400, 405, 71, 21, "Path Loss", "DarkGreen"},
    {"DistanceLabel", KIND_LABEL, 480, 405, 71, 21, "Distance", "DarkGreen"},
    {"SetConfigurationButton", KIND_BUTTON, 560, 405, 21, 21, "", nullptr},
    {"SetDateTimeButton", KIND_BUTTON, 588, 405, 174, 21, "", "DarkBlue"},
    {"TimeAdjustPlayButton", KIND_TOOL, 770, 405, 21, 21, "", "Gray"},
    {"HomeAzimuth", KIND_BUTTON, 10, 432, 66, 21, "", "DarkGreen"},
    {"HomeElevation", KIND_BUTTON, 85, 432, 66, 21, "", "DarkGreen"},
    {"HomeSpatialOffset", KIND_BUTTON, 160, 432, 71, 21, "", "DarkRed"},
    {"HomeSkyTemp", KIND_BUTTON, 240, 432, 71, 21, "", "DarkRed"},
    {"HomeDegradation", KIND_BUTTON, 320, 432, 71, 21, "", "DarkRed"},
    {"PathLoss", KIND_BUTTON, 400, 432, 71, 21, "", "DarkGreen"},
    {"Distance", KIND_BUTTON, 480, 432, 71, 21, "", "DarkGreen"},
    {"TimeAdjustMinMButton", KIND_BUTTON, 560, 432, 51, 21, "-10 min", "Gray"},
    {"TimeAdjustHourMButton", KIND_BUTTON, 620, 432, 51, 21, "-Hour", "Gray"},
    {"TimeAdjustDayMButton", KIND_BUTTON, 680, 432, 51, 21, "-Day", "Gray"},
    {"TimeAdjustWeekMButton", KIND_BUTTON, 740, 432, 51, 21, "-Week", "Gray"},
    {"DxAzimuth", KIND_BUTTON, 10, 458, 66, 21, "", "DarkGreen"},
    {"DxElevation", KIND_BUTTON, 85, 458, 66, 21, "", "DarkGreen"},
    {"DxSpatialOffset", KIND_BUTTON, 160, 458, 71, 21, "", "DarkRed"},
    {"DxSkyTemp", KIND_BUTTON, 240, 458, 71, 21, "", "DarkRed"},
    {"DxDegradation", KIND_BUTTON, 320, 458, 71, 21, "", "DarkRed"},
    {"SetFrequencyButton", KIND_BUTTON, 400, 458, 151, 21, "", "DarkBlue"},
    {"TimeAdjustMinPButton", KIND_BUTTON, 560, 458, 51, 21, "+10 min", "Gray"},
    {"TimeAdjustHourPButton", KIND_BUTTON, 620, 458, 51, 21, "+Hour", "Gray"},
    {"TimeAdjustDayPButton", KIND_BUTTON, 680, 458, 51, 21, "+Day", "Gray"},
    {"TimeAdjustWeekPButton", KIND_BUTTON, 740, 458, 51, 21, "+Week", "Gray"},
};

struct StepButton
{
    int control;
    int seconds;
};

static const StepButton step_buttons[] = {
    {MAP_STEP_MIN_MINUS, -600},     {MAP_STEP_HOUR_MINUS, -3600}, {MAP_STEP_DAY_MINUS, -86400},
    {MAP_STEP_WEEK_MINUS, -604800}, {MAP_STEP_MIN_PLUS, 600},     {MAP_STEP_HOUR_PLUS, 3600},
    {MAP_STEP_DAY_PLUS, 86400},     {MAP_STEP_WEEK_PLUS, 604800},
};

// The five Moon figures of a station's row: the format of each and where the
// record keeps it.
struct FigureButton
{
    const char *format;
    double SourceRecord::*field;
};

static const FigureButton figure_buttons[5] = {
    {"%7.2f", &SourceRecord::az},       {"%7.2f", &SourceRecord::el},          {"%0.1f", &SourceRecord::spatial_offset},
    {"%0.1f", &SourceRecord::sky_temp}, {"%0.1f", &SourceRecord::degradation},
};

static QString map_style(const char *colour)
{
    return QString::asprintf("background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 %s, "
                             "stop:1 white); color:white; border-radius:5px;",
                             colour);
}

static void map_time(struct tm *utc)
{
    time_t now = clock_utc() + map_time_offset;
    gmtime_r(&now, utc);
}

SkyMapDialog::SkyMapDialog(QWidget *parent)
    : QDialog(parent), WorldMap(nullptr), timer(new QTimer(this)), map_playing(false), map_adjust_step(0),
      map_dirty(false), tip(), pictures(), common_window(), map_draws(0), map_layers(0), sun_shade_builds(0),
      moon_shade_builds(0)
{
    setObjectName("SkyMapDialog");
    setWindowTitle(tr("Sky Map"));
    build_controls();
    setFixedSize(800, 480);

    LoadOverlays(ini_file_name, overlays);
    home_station_valid = settings.Grid[0] != 0;
    dx_station_valid = dx_grid[0] != 0;
    LoadPixmaps();

    setMouseTracking(true);
    map_time_offset = 0;
    map_adjust_step = 0;
    map_playing = false;

    QAbstractButton *configure = static_cast<QAbstractButton *>(controls[MAP_SET_CONFIGURATION]);
    configure->setIcon(QIcon(pictures.icons[MAP_ICON_MENU]));
    configure->setIconSize(QSize(4 * configure->width() / 5, 4 * configure->height() / 5));

    tip.visible = 0;
    tip.rect = QRect(0, 0, 130, 20);
    connect_controls();

    RecalculateSources();
    BuildShades();
    map_dirty = true;

    connect(timer, &QTimer::timeout, this, &SkyMapDialog::TimerEvent);
    timer->start(map_tick_ms);
}

SkyMapDialog::~SkyMapDialog()
{
    SaveOverlays(ini_file_name, overlays);
}

void SkyMapDialog::build_controls(void)
{
    for (int i = 0; i < MAP_CONTROL_COUNT; i++)
    {
        const ControlRow &row = control_rows[i];
        QWidget *w;
        if (row.kind == KIND_LABEL)
        {
            QLabel *label = new QLabel(tr(row.text), this);
            label->setAlignment(Qt::AlignCenter);
            // "Spatial Offset" and "Degradation" must fit 71 pixels.
            QFont small = label->font();
            small.setPixelSize(10);
            label->setFont(small);
            w = label;
        }
        else if (row.kind == KIND_TOOL)
        {
            QToolButton *tool = new QToolButton(this);
            tool->setArrowType(Qt::RightArrow);
            tool->setIconSize(QSize(16, 16));
            w = tool;
        }
        else
        {
            w = new QPushButton(tr(row.text), this);
        }
        w->setObjectName(row.name);
        w->setGeometry(row.x, row.y, row.width, row.height);
        if (row.colour)
        {
            w->setStyleSheet(map_style(row.colour));
        }
        controls[i] = w;
    }
    WorldMap = static_cast<QLabel *>(controls[MAP_WORLD]);
    // The window takes the pointer itself, wherever it is over the map.
    WorldMap->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SkyMapDialog::connect_controls(void)
{
    auto button = [this](int control) { return static_cast<QAbstractButton *>(controls[control]); };
    connect(button(MAP_SET_CONFIGURATION), &QAbstractButton::pressed, this, &SkyMapDialog::SetConfiguration);
    connect(button(MAP_SET_DATE_TIME), &QAbstractButton::pressed, this, &SkyMapDialog::SetDateTime);
    connect(button(MAP_PLAY), &QAbstractButton::pressed, this, &SkyMapDialog::TimeAdjustPlayButtonPressed);
    connect(button(MAP_SET_FREQUENCY), &QAbstractButton::pressed, this, &SkyMapDialog::SetFrequency);
    for (const StepButton &s : step_buttons)
    {
        int control = s.control;
        connect(button(control), &QAbstractButton::pressed, this,
                [this, control]() { TimeAdjustButtonPressed(control); });
    }
}

void SkyMapDialog::LoadPixmaps(void)
{
    QString folder = picture_folder[0] ? QString::fromUtf8(picture_folder) : QCoreApplication::applicationDirPath();
    if (map_load_pictures(&pictures, folder, WorldMap->width(), WorldMap->height()) != 0)
    {
        return;
    }
    WorldMap->setPixmap(pictures.map);
    WorldMap->show();
}

void SkyMapDialog::DrawMapOverlay(void)
{
    map_draw_base(&pictures);
}

void SkyMapDialog::DrawMap(void)
{
    struct tm utc;
    map_time(&utc);
    const CommonWindow *common = nullptr;
    if (home_station_valid && dx_station_valid)
    {
        common_window_update(&common_window, clock_utc() + map_time_offset, settings.Latitude, settings.Longitude,
                             dx_latitude, dx_longitude);
        common = &common_window;
    }
    QPixmap picture;
    map_layers = map_compose(&picture, &pictures, &utc, &tip, common);
    WorldMap->setPixmap(picture);
    map_draws++;
    map_dirty = false;
}

void SkyMapDialog::UpdateDisplay(void)
{
    char text[32];
    home_station_valid = settings.Grid[0] != 0;
    dx_station_valid = dx_grid[0] != 0;
    snprintf(text, sizeof text, "%7.2f MHz", settings.Frequency);
    static_cast<QPushButton *>(controls[MAP_SET_FREQUENCY])->setText(QString::fromLatin1(text));
}

// The Sun, the planets and the radio sources stand still between these
// calls; only the Moon's rows follow the clock each second.
void SkyMapDialog::RecalculateSources(void)
{
    struct tm utc;
    map_time(&utc);
    if (dx_station_valid)
    {
        source_calculate(SOURCE_MOON, SOURCE_MASK_ALL, &utc, dx_latitude, dx_longitude, settings.Frequency,
                         dx_source_record);
    }
    if (home_station_valid)
    {
        double lat = settings.Latitude, lng = settings.Longitude, mhz = settings.Frequency;
        source_calculate(SOURCE_MOON, SOURCE_MASK_ALL, &utc, lat, lng, mhz, source_table[SOURCE_MOON]);
        source_calculate(SOURCE_SUN, SOURCE_MASK_POSITION, &utc, lat, lng, mhz, source_table[SOURCE_SUN]);
        for (int i = 0; i < map_body_count; i++)
        {
            int row = map_bodies[i].row;
            if (row != SOURCE_SUN && row != SOURCE_MOON && overlays.*map_bodies[i].overlay)
            {
                source_calculate(row, SOURCE_MASK_POSITION, &utc, lat, lng, mhz, source_table[row]);
            }
        }
        for (int row = 12; row <= 23; row++)
        {
            source_calculate(row, SOURCE_MASK_POSITION, &utc, lat, lng, mhz, source_table[row]);
        }
    }
    UpdateDisplay();
}

// A shade that is off is neither built nor drawn.
void SkyMapDialog::BuildShades(void)
{
    const SourceRecord &sun = source_table[SOURCE_SUN];
    const SourceRecord &moon = source_table[SOURCE_MOON];
    if (sun.computed && overlays.SunShadingOverlay)
    {
        map_shade(&pictures.sun_shade, sun.sub_lat, sun.sub_lng, 10.0);
        sun_shade_builds++;
    }
    if (moon.computed && overlays.MoonShadingOverlay)
    {
        map_shade(&pictures.moon_shade, moon.sub_lat, moon.sub_lng, 8.0);
        moon_shade_builds++;
    }
}

void SkyMapDialog::TimeAdjusted(void)
{
    RecalculateSources();
    BuildShades();
    DrawMap();
}

// The clock is moved in whole steps; a week a second of Play for a long
// time would run the offset past what it holds, so it stops at the end.
void SkyMapDialog::add_to_clock(long seconds)
{
    long long offset = (long long)map_time_offset + seconds;
    map_time_offset = (int32_t)(offset > INT_MAX ? INT_MAX : offset < INT_MIN ? INT_MIN : offset);
}

void SkyMapDialog::TimeAdjustButtonPressed(int control)
{
    for (const StepButton &s : step_buttons)
    {
        controls[s.control]->setStyleSheet(map_style(s.control == control ? "DarkBlue" : "Gray"));
        if (s.control == control)
        {
            map_adjust_step = s.seconds;
        }
    }
    add_to_clock(map_adjust_step);
    TimeAdjusted();
}

void SkyMapDialog::TimeAdjustPlayButtonPressed(void)
{
    map_playing = !map_playing;
    controls[MAP_PLAY]->setStyleSheet(map_style(map_playing ? "DarkBlue" : "Gray"));
}

// Back to real time. The step button that was pressed stays lit, though the
// step is 0 until one is pressed again.
void SkyMapDialog::SetDateTime(void)
{
    map_playing = false;
    controls[MAP_PLAY]->setStyleSheet(map_style("Gray"));
    map_time_offset = 0;
    map_adjust_step = 0;
    TimeAdjusted();
}

void SkyMapDialog::SetFrequency(void)
{
    FrequencyDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
    {
        UpdateDisplay();
    }
}

// OK saves the section and moves the clock to the date shown, read as UTC.
// The figures and icons follow at once; the base picture, rebuilt last,
// shows at the next redraw.
void SkyMapDialog::SetConfiguration(void)
{
    OverlaysDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
    {
        return;
    }
    SaveOverlays(ini_file_name, overlays);
    struct tm fields;
    memset(&fields, 0, sizeof fields);
    fields.tm_mon = map_date_time.Month - 1;
    fields.tm_mday = map_date_time.Day;
    fields.tm_year = map_date_time.Year - 1900;
    fields.tm_hour = map_date_time.Hours;
    fields.tm_min = map_date_time.Minutes;
    fields.tm_sec = map_date_time.Seconds;
    map_time_offset = 0;
    add_to_clock((long)(timegm(&fields) - clock_utc()));
    TimeAdjusted();
    DrawMapOverlay();
}

void SkyMapDialog::set_text(int control, const char *format, double value)
{
    char text[32];
    snprintf(text, sizeof text, format, value);
    static_cast<QAbstractButton *>(controls[control])->setText(QString::fromLatin1(text));
}

// Green: the Moon is up at that station.
void SkyMapDialog::show_figures(int first, const SourceRecord &moon)
{
    QString style = map_style(moon.az > 0 && moon.el > 0 ? "DarkGreen" : "DarkRed");
    for (int i = 0; i < 5; i++)
    {
        controls[first + i]->setStyleSheet(style);
        set_text(first + i, figure_buttons[i].format, moon.*figure_buttons[i].field);
    }
}

void SkyMapDialog::refresh_figures(void)
{
    struct tm utc;
    map_time(&utc);
    static_cast<QAbstractButton *>(controls[MAP_SET_DATE_TIME])->setText(QString::fromLatin1(TimeText(&utc)));
    // The whole record on the first picture and while playing, else the
    // position; the rise and set times once a minute.
    int mask = map_first_tick || map_playing ? 15 : 1;
    mask += utc.tm_sec == 0 ? 10 : 2;
    SourceRecord &moon = source_table[SOURCE_MOON];
    source_calculate(SOURCE_MOON, mask, &utc, settings.Latitude, settings.Longitude, settings.Frequency, moon);
    show_figures(MAP_HOME_AZIMUTH, moon);
    set_text(MAP_PATH_LOSS, "%0.1f", moon.path_loss);
    if (mask > 14)
    {
        UpdateDisplay();
    }
    set_text(MAP_DISTANCE, "%6.0f km", moon.distance * 1.5e8);
    if (dx_station_valid)
    {
        source_calculate(SOURCE_MOON, mask, &utc, dx_latitude, dx_longitude, settings.Frequency, dx_source_record);
        show_figures(MAP_DX_AZIMUTH, dx_source_record);
    }
}

void SkyMapDialog::TimerEvent(void)
{
    refresh_ms += map_tick_ms;
    tip_ms += map_tick_ms;
    shade_ms += map_tick_ms;
    play_ms += map_tick_ms;
    if (map_first_tick || refresh_ms >= 1001)
    {
        refresh_ms = 0;
        refresh_figures();
    }
    if (tip_ms > 5000)
    {
        tip_ms = 0;
        if (tip.visible)
        {
            tip.visible = 0;
            map_dirty = true;
        }
    }
    if (shade_ms > 2000)
    {
        shade_ms = 0;
        BuildShades();
        map_dirty = true;
    }
    if (play_ms > 1000)
    {
        play_ms = 0;
        if (map_playing)
        {
            add_to_clock(map_adjust_step);
            RecalculateSources();
            map_dirty = true;
        }
    }
    if (map_dirty)
    {
        DrawMap();
    }
    map_first_tick = 0;
}

// The place under the pointer, with the map offset taken off, and its
// locator: 0, or -1 off the map or where no locator can be made.
int SkyMapDialog::map_place(QMouseEvent *event, QPoint *at, double *latitude, double *longitude, char grid[7])
{
    *at = WorldMap->mapFrom(this, event->position().toPoint());
    if (map_position(at->x(), at->y(), WorldMap->width(), WorldMap->height(), overlays.MapOffset, latitude,
                     longitude) != 0)
    {
        return -1;
    }
    return position_to_grid(grid, *latitude, *longitude) == 0 ? 0 : 1;
}

void SkyMapDialog::mouseMoveEvent(QMouseEvent *event)
{
    QPoint at;
    double latitude, longitude;
    char grid[7];
    int place = map_place(event, &at, &latitude, &longitude, grid);
    if (place == 0)
    {
        QRect map = WorldMap->rect();
        int left = at.x() + 130 <= map.right() ? at.x() : map.right() - 145;
        int top = (at.y() < map.bottom() ? at.y() : map.bottom()) - 20;
        tip.rect = QRect(left, top, 130, 20);
        memcpy(tip.grid, grid, sizeof tip.grid);
        tip.latitude = latitude;
        tip.longitude = longitude;
        tip.visible = 1;
        map_dirty = true;
    }
    else if (place < 0 && tip.visible)
    {
        tip.visible = 0;
        map_dirty = true;
    }
}

// A left click makes a DX station of the place itself, not of its locator's
// centre; any click on the map refreshes the display.
void SkyMapDialog::mousePressEvent(QMouseEvent *event)
{
    QPoint at;
    double latitude, longitude;
    char grid[7];
    if (map_place(event, &at, &latitude, &longitude, grid) != 0)
    {
        return;
    }
    if (event->button() == Qt::LeftButton)
    {
        text_copy(dx_grid, sizeof dx_grid, grid);
        dx_latitude = latitude;
        dx_longitude = longitude;
        dx_station_valid = 1;
        map_dirty = true;
    }
    UpdateDisplay();
}
