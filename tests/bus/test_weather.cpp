// The weather station: unit conversions and their rounding, the interval
// gates, the latches, the section's round trip, and the whole path from the
// simulated station's sensors to the panel.
#include "sim_fixture.h"

#include "bus/alerts.h"
#include "bus/weather.h"
#include "core/clock.h"
#include "core/cycle.h"
#include "core/mainwindow.h"
#include "core/sensor_groups.h"
#include "core/settings.h"
#include "support/panel_record.h"

#include <cmath>
#include <string>

TEST(WeatherUnits, ConversionsRoundAsTheDisplayShowsThem)
{
    // Wind speed: whole km/h first, by integer division, then to mph.
    EXPECT_DOUBLE_EQ(12.0, weather_speed(129, WX_UNITS_FIRST));
    EXPECT_DOUBLE_EQ(12 * 0.621371, weather_speed(129, WX_UNITS_SECOND));
    EXPECT_DOUBLE_EQ(0.0, weather_speed(9, WX_UNITS_FIRST));
    // Temperature, signed tenths.
    EXPECT_DOUBLE_EQ(-10.0, weather_temperature(-100, WX_UNITS_FIRST));
    EXPECT_DOUBLE_EQ(14.0, weather_temperature(-100, WX_UNITS_SECOND));
    EXPECT_DOUBLE_EQ(212.0, weather_temperature(1000, WX_UNITS_SECOND));
    // Altitude in tenths of a metre.
    EXPECT_DOUBLE_EQ(120.0, weather_altitude(1200, WX_UNITS_FIRST));
    EXPECT_NEAR(393.7008, weather_altitude(1200, WX_UNITS_SECOND), 1e-4);

    char text[32];
    // The bare station pressure: whole millibars, no unit word, whatever the units.
    EXPECT_DOUBLE_EQ(1013.0, weather_pressure(1013999, 0, 1, WX_UNITS_SECOND, text, sizeof text));
    EXPECT_STREQ("1013", text);
    EXPECT_DOUBLE_EQ(1013.0, weather_pressure(1013250, 1000, 0, WX_UNITS_FIRST, text, sizeof text));
    // With the altimeter at 100 m the pressure rises by about 12 mb, in mb or inHg.
    double p = weather_pressure(1000000, 1000, 1, WX_UNITS_FIRST, text, sizeof text);
    EXPECT_NEAR(1012.0, p, 0.7);
    EXPECT_STREQ("1012 mb", text);
    double inches = weather_pressure(1000000, 1000, 1, WX_UNITS_SECOND, text, sizeof text);
    EXPECT_NEAR(p * 0.0295299830714, inches, 1e-9);
    EXPECT_STREQ("29.87 in", text);
}

TEST(WeatherUnits, CompassWordsKeepTheirUnevenBounds)
{
    struct
    {
        uint16_t raw;
        const char *word;
    } cases[] = {{0, "N"},     {224, "N"},    {225, "NE"},   {674, "NE"},  {675, "E"},  {1200, "E"},
                 {1224, "E"},  {1225, "SE"},  {1675, "S"},   {2125, "SW"}, {2575, "W"}, {3024, "W"},
                 {3025, "NW"}, {3374, "NW"},  {3375, "N"},   {3400, "N"},  {3599, "N"}};
    for (auto c : cases)
    {
        EXPECT_STREQ(c.word, weather_compass_word(c.raw)) << c.raw;
    }
}

class WeatherPanel : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
    }
};

TEST_F(WeatherPanel, LatchesSetOnTheirBandsAndStaySetUntilTaken)
{
    // The defaults (all limits 0): every speed alarms, north alone is in the
    // direction band, and every temperature is outside the empty band.
    weather_show_wind_speed(0, 0);
    weather_show_wind_direction(5, 0);
    weather_show_thermometer(215, 0);
    EXPECT_EQ(1, weather.wind_speed_alarm);
    EXPECT_EQ(1, weather.wind_direction_alarm);
    EXPECT_EQ(1, weather.thermometer_alarm);

    weather.wind_speed_alarm = weather.wind_direction_alarm = weather.thermometer_alarm = 0;
    weather.WindSpeedAlarmHigh = 50;
    weather.WindDirectionAlarmLow = 90;
    weather.WindDirectionAlarmHigh = 180;
    weather.ThermometerAlarmLow = -5;
    weather.ThermometerAlarmHigh = 30;
    struct
    {
        uint16_t speed, direction;
        int16_t temperature;
        int speed_alarm, direction_alarm, thermometer_alarm;
    } cases[] = {
        {499, 899, -49, 0, 0, 0},  // just inside each limit
        {500, 900, -50, 1, 1, 1},  // on each limit: all alarm
        {509, 1809, 300, 1, 1, 1}, // 180.9 degrees is whole 180, still in the band
        {1000, 1810, 299, 1, 0, 0},
    };
    for (auto c : cases)
    {
        weather.wind_speed_alarm = weather.wind_direction_alarm = weather.thermometer_alarm = 0;
        weather_show_wind_speed(c.speed, 0);
        weather_show_wind_direction(c.direction, 0);
        weather_show_thermometer(c.temperature, 0);
        EXPECT_EQ(c.speed_alarm, weather.wind_speed_alarm) << c.speed;
        EXPECT_EQ(c.direction_alarm, weather.wind_direction_alarm) << c.direction;
        EXPECT_EQ(c.thermometer_alarm, weather.thermometer_alarm) << c.temperature;
    }
    // A reading back inside the band clears nothing.
    weather_show_wind_speed(0, 0);
    EXPECT_EQ(1, weather.wind_speed_alarm);
    // A low limit above the high one never fires the direction alarm.
    weather.wind_direction_alarm = 0;
    weather.WindDirectionAlarmLow = 200;
    weather.WindDirectionAlarmHigh = 100;
    for (uint16_t raw = 0; raw < 3600; raw += 50)
    {
        weather_show_wind_direction(raw, 0);
    }
    EXPECT_EQ(0, weather.wind_direction_alarm);
}

// Ticks until each weather group fell due n times, through the real cadence.
static void count_polls(int ticks, int counts[CYCLE_GROUP_COUNT])
{
    for (int t = 0; t < ticks; t++)
    {
        CycleConditions c = cycle_conditions_now();
        uint32_t due = cycle_tick(nullptr, &c);
        for (int g = 0; g < CYCLE_GROUP_COUNT; g++)
        {
            counts[g] += (due >> g) & 1;
        }
    }
}

// The gates themselves are the cycle's; here, what the weather record makes
// of them.
TEST_F(WeatherPanel, OnlyPolledSensorsOfAnAddressedStationFallDue)
{
    weather.WxStationAddr = 4;
    weather.WindSpeed = weather.WindDirection = true;
    weather.WindDirectionInterval = 0;
    int counts[CYCLE_GROUP_COUNT] = {};
    refresh_now = 0;
    count_polls(42, counts);
    EXPECT_EQ(14, counts[CYCLE_WIND_SPEED]);
    EXPECT_EQ(42, counts[CYCLE_WIND_DIRECTION]); // an interval of 0 polls in each tick
    EXPECT_EQ(0, counts[CYCLE_THERMOMETER] + counts[CYCLE_BAROMETER] + counts[CYCLE_ALTIMETER]);
    // The thermometer's counter was cleared at each of its turns all the
    // same: switched on now, it is due 1050 ms later, not at once.
    weather.Thermometer = true;
    int more[CYCLE_GROUP_COUNT] = {};
    count_polls(20, more);
    EXPECT_EQ(0, more[CYCLE_THERMOMETER]);
    count_polls(1, more);
    EXPECT_EQ(1, more[CYCLE_THERMOMETER]);

    // Without an address nothing is due, the calibration word included.
    weather.WxStationAddr = -1;
    weather.calibration_pending = 1;
    int none[CYCLE_GROUP_COUNT] = {};
    refresh_now = 1;
    count_polls(300, none);
    for (int g = CYCLE_WIND_SPEED; g <= CYCLE_BAROMETER; g++)
    {
        EXPECT_EQ(0, none[g]) << g;
    }
    EXPECT_EQ(1, weather.calibration_pending);
}

TEST_F(WeatherPanel, SectionRoundTripsWithUnitWordsAndDefaultsWrittenOnSave)
{
    WeatherSettings w;
    weather_defaults(&w);
    weather_save("Morvane.ini", &w);
    std::string file = test_read_file(std::string(settings_directory()) + "Morvane.ini");
    for (const char *line : {"WxStationAddr=-1", "WindSpeedUnits=km/h", "ThermometerUnits=Deg C",
                             "BarometerUnits=mb", "AltimeterUnits=meters", "AltimeterInterval=10000",
                             "Calibration=50663", "WindStow=0", "WindStowResumeMinutes=10"})
    {
        EXPECT_NE(std::string::npos, file.find(line)) << line;
    }
    w.WxStationAddr = 4;
    w.WindSpeed = w.Altimeter = true;
    w.WindSpeedUnits = w.ThermometerUnits = w.BarometerUnits = w.AltimeterUnits = 1;
    w.WindSpeedAlarmHigh = 55.5;
    w.WindStow = 1;
    w.WindStowResume = 30;
    w.wind_speed_alarm = 1;
    weather_save("Morvane.ini", &w);
    file = test_read_file(std::string(settings_directory()) + "Morvane.ini");
    EXPECT_NE(std::string::npos, file.find("BarometerUnits=inHg"));
    WeatherSettings back;
    weather_defaults(&back);
    weather_load("Morvane.ini", &back);
    EXPECT_EQ(4, back.WxStationAddr);
    EXPECT_TRUE(back.WindSpeed && back.Altimeter && !back.Thermometer);
    EXPECT_EQ(1, back.WindSpeedUnits + back.ThermometerUnits + back.BarometerUnits + back.AltimeterUnits - 3);
    EXPECT_DOUBLE_EQ(55.5, back.WindSpeedAlarmHigh);
    EXPECT_EQ(1, back.WindStow);
    EXPECT_DOUBLE_EQ(30, back.WindStowResume);
    EXPECT_EQ(0, back.wind_speed_alarm); // latches start clear
}

// The program's weather groups against the simulated station at address 4.
class WeatherSim : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        weather.WxStationAddr = 4;
        weather.WindSpeed = weather.WindDirection = weather.Thermometer = weather.Barometer = true;
        settings.DisplayEnabled = 0;
    }
    // Ticks of the cycle with only the sensor groups wired.
    void run_ticks(int n, int slider = 1)
    {
        for (int i = 0; i < n; i++)
        {
            CycleActions actions = {};
            sensor_groups_wire(&actions, slider);
            CycleConditions c = cycle_conditions_now();
            cycle_tick(&actions, &c);
        }
    }
};

TEST_F(WeatherSim, TheStationsSensorsDriveThePanelAndAnOffSensorIsNeverAsked)
{
    // The word field is two wide, so "E" ends in a blank.
    control("weather speed 12.9");
    control("weather direction 120");
    control("weather temperature -10");
    control("weather pressure 1000");
    run_ticks(25);
    EXPECT_STREQ(" 12 km/h", panel_last_text[PANEL_WIND_SPEED]);
    EXPECT_STREQ("120 E ", panel_last_text[PANEL_WIND_DIRECTION]);
    EXPECT_STREQ("-10.0 C", panel_last_text[PANEL_THERMOMETER]);
    EXPECT_EQ(1000000u, pressure_raw);
    EXPECT_EQ(0, frames_seen("> F4 1B")); // the altimeter is off
    // The calibration word went out once, at the first tick.
    EXPECT_EQ(1, frames_seen("> F4 1D C5 E7"));
    EXPECT_EQ(0, weather.calibration_pending);

    weather.WindSpeedUnits = WX_UNITS_SECOND;
    weather.ThermometerUnits = WX_UNITS_SECOND;
    control("weather direction 340");
    run_ticks(25);
    EXPECT_STREQ("  7 mph", panel_last_text[PANEL_WIND_SPEED]);
    EXPECT_STREQ("340 N ", panel_last_text[PANEL_WIND_DIRECTION]);
    EXPECT_STREQ("14.0 F", panel_last_text[PANEL_THERMOMETER]);
}

TEST_F(WeatherSim, ASilentStationKeepsTheLastReadingsAndSaysNothing)
{
    control("weather speed 30");
    run_ticks(4);
    EXPECT_STREQ(" 30 km/h", panel_last_text[PANEL_WIND_SPEED]);
    control("silent 4 on");
    control("weather speed 80");
    panel_last_status[0] = 0;
    run_ticks(4);
    EXPECT_STREQ(" 30 km/h", panel_last_text[PANEL_WIND_SPEED]);
    EXPECT_STREQ("", panel_last_status);
    control("silent 4 off");
    run_ticks(4);
    EXPECT_STREQ(" 80 km/h", panel_last_text[PANEL_WIND_SPEED]);
}

// An output line alert on the simulated station's output board at 5: ALRT is
// its port 1, and the alert sets it at each pass while the wind alarms.
TEST_F(WeatherSim, AnOutputLineAlertSetsTheSimulatorsOutput)
{
    control("board 5 on");
    alert_output_address = 5;
    weather.WindSpeedAlarmHigh = 50;
    alerts[0].Active = 1;
    alerts[0].Trigger = TRIGGER_WIND_SPEED;
    alerts[0].Action = ACTION_ALRT_1;
    alerts[1].Active = 1;
    alerts[1].Trigger = TRIGGER_BELOW_HORIZON;
    alerts[1].Action = ACTION_ADDR_1;
    control("weather speed 70");
    run_ticks(4);
    alerts_evaluate(alerts);
    std::string state = control("state");
    EXPECT_NE(std::string::npos, state.find("{\"addr\":5,\"relay\":[1,1,0,0]")) << state;
    EXPECT_EQ(0, alerts[0].Triggered);

    alerts[0].Action = ACTION_ALRT_0;
    run_ticks(4);
    alerts_evaluate(alerts);
    EXPECT_NE(std::string::npos, control("state").find("{\"addr\":5,\"relay\":[0,1,0,0]"));
    // The motor boards are never output boards.
    alert_output_address = settings.EL_Addr;
    int before = frames();
    alert_output_line(LINE_ALRT, 1);
    EXPECT_EQ(before, frames());
}

static void no_sleep(int) {}

// Wiring only: the window loads both sections, asks for the calibration,
// polls the station in its cycle, evaluates the alerts in its display group
// and writes both sections whole at exit.
TEST_F(WeatherSim, TheWindowPollsTheStationAndEvaluatesTheAlerts)
{
    sei_link_reset();
    clock_set_sleep_hook(no_sleep);
    SaveSettings(ini_file_name, &settings);
    weather.calibration_pending = 0;
    weather_save(ini_file_name, &weather);
    alerts[0].Active = 1;
    alerts[0].Trigger = TRIGGER_WIND_SPEED;
    alerts_save(ini_file_name, alerts);
    test_reset_state();
    control("weather speed 42");
    {
        MainWindow window(0);
        window.timer->stop();
        EXPECT_EQ(4, weather.WxStationAddr);
        EXPECT_EQ(1, alerts[0].Active);
        window.TimerEvent();
        EXPECT_EQ(1, frames_seen("> F4 1D C5 E7"));
        EXPECT_STREQ(" 42 km/h", panel_last_text[PANEL_WIND_SPEED]);
        EXPECT_EQ(1, weather.wind_speed_alarm);
        for (int tick = 0; tick < 11; tick++)
        {
            window.TimerEvent();
        }
        EXPECT_EQ(1, alerts[0].Triggered);
    }
    std::string file = test_read_file(std::string(settings_directory()) + ini_file_name);
    EXPECT_NE(std::string::npos, file.find("[WXSTATION]"));
    EXPECT_NE(std::string::npos, file.find("WindStowResumeMinutes=10"));
    EXPECT_NE(std::string::npos, file.find("Alert6Name=Alert-6"));
}
