// The weather and alert dialogs: what each control shows at the start, and
// where each edit goes, with the re-arming rules of the alerts.
#include "bus/alerts.h"
#include "bus/alerts_dialog.h"
#include "bus/weather.h"
#include "bus/weather_dialog.h"
#include "core/mainwindow.h"
#include "core/settings.h"
#include "core/state.h"
#include "support/test_env.h"
#include "widgets/enter.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <gtest/gtest.h>

class WeatherDialogs : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        enter_reset();
    }
    void TearDown() override
    {
        enter_reset();
    }
    static void answer(std::initializer_list<const char *> answers)
    {
        static const char *kept[8];
        std::copy(answers.begin(), answers.end(), kept);
        enter_set_answers(kept, (int)answers.size());
    }
};

TEST_F(WeatherDialogs, WxConfigShowsTheRecordAndEditsGoStraightIntoIt)
{
    weather.WxStationAddr = 4;
    weather.Thermometer = true;
    weather.BarometerUnits = 1;
    weather.WindSpeedAlarmHigh = 62.5;
    WxConfigDialog dialog;
    EXPECT_EQ("WxStation Configuration", dialog.windowTitle().toStdString());
    EXPECT_EQ(5, dialog.WxStationEdit->currentIndex());
    EXPECT_EQ("50663", dialog.CalibrationEdit->text().toStdString());
    EXPECT_EQ(" 62.5", dialog.WindSpeedAlarmHighEdit->text().toStdString());
    EXPECT_EQ("in Hg", dialog.BarometerUnits->currentText().toStdString());
    EXPECT_TRUE(dialog.sensor_buttons[2]->isChecked());
    EXPECT_EQ("10000", dialog.interval_edits[4]->text().toStdString());

    dialog.WxStationEdit->setCurrentIndex(0);
    EXPECT_EQ(-1, weather.WxStationAddr);
    dialog.sensor_buttons[0]->click();
    dialog.sensor_buttons[2]->click();
    EXPECT_TRUE(weather.WindSpeed);
    EXPECT_FALSE(weather.Thermometer);
    dialog.WindSpeedUnits->setCurrentIndex(1);
    EXPECT_EQ(1, weather.WindSpeedUnits);

    answer({"250", "-7.25", nullptr, "12345"});
    dialog.interval_edits[1]->click();
    dialog.ThermometerAlarmLowEdit->click();
    dialog.ThermometerAlarmHighEdit->click(); // cancelled: nothing changes
    dialog.CalibrationEdit->click();
    EXPECT_EQ(250, weather.WindDirectionInterval);
    EXPECT_EQ("250", dialog.interval_edits[1]->text().toStdString());
    EXPECT_DOUBLE_EQ(-7.25, weather.ThermometerAlarmLow);
    EXPECT_EQ(" -7.2", dialog.ThermometerAlarmLowEdit->text().toStdString());
    EXPECT_DOUBLE_EQ(0, weather.ThermometerAlarmHigh);
    EXPECT_EQ(12345, weather.Calibration);
    EXPECT_EQ(16, enter_last_max_length);

    dialog.WindStowButton->click();
    answer({"30", "20"});
    dialog.WindStowResumeEdit->click();
    dialog.WindStowMinutesEdit->click();
    EXPECT_EQ(1, weather.WindStow);
    EXPECT_DOUBLE_EQ(30, weather.WindStowResume);
    EXPECT_EQ(20, weather.WindStowResumeMinutes);
}

TEST_F(WeatherDialogs, AlertsSwitchActionAndTriggerReArmButNameAndThresholdDoNot)
{
    alerts[2].Trigger = TRIGGER_BELOW_THRESHOLD;
    alerts[2].Threshold = 12.25;
    AlertsConfigDialog dialog;
    EXPECT_EQ("Alerts Configuration", dialog.windowTitle().toStdString());
    EXPECT_EQ("Alert-1", dialog.name_edits[0]->text().toStdString());
    EXPECT_EQ("---", dialog.threshold_edits[0]->text().toStdString());
    EXPECT_FALSE(dialog.threshold_edits[0]->isEnabled());
    EXPECT_EQ("12.2", dialog.threshold_edits[2]->text().toStdString());
    EXPECT_TRUE(dialog.threshold_edits[2]->isEnabled());
    EXPECT_EQ(7, dialog.action_boxes[0]->count());
    EXPECT_EQ("Thermometer Alarm", dialog.trigger_boxes[0]->itemText(6).toStdString());

    auto fired = [] {
        for (AlertEntry &a : alerts)
        {
            a.Triggered = 1;
        }
    };
    fired();
    dialog.active_buttons[0]->click();
    EXPECT_EQ(1, alerts[0].Active);
    EXPECT_EQ(0, alerts[0].Triggered);
    dialog.action_boxes[1]->setCurrentIndex(ACTION_PARK);
    EXPECT_EQ(ACTION_PARK, alerts[1].Action);
    EXPECT_EQ(0, alerts[1].Triggered);
    dialog.trigger_boxes[3]->setCurrentIndex(TRIGGER_ABOVE_THRESHOLD);
    EXPECT_EQ(0, alerts[3].Triggered);
    EXPECT_EQ("0.0", dialog.threshold_edits[3]->text().toStdString());
    EXPECT_TRUE(dialog.threshold_edits[3]->isEnabled());

    answer({"Moonrise", "15.5", nullptr});
    dialog.name_edits[4]->click();
    EXPECT_STREQ("Alert-5", enter_last_title);
    EXPECT_EQ(32, enter_last_max_length);
    dialog.threshold_edits[2]->click();
    EXPECT_STREQ("Moonrise", alerts[4].Name);
    EXPECT_EQ("Moonrise", dialog.name_edits[4]->text().toStdString());
    EXPECT_EQ(1, alerts[4].Triggered);
    EXPECT_DOUBLE_EQ(15.5, alerts[2].Threshold);
    EXPECT_EQ(1, alerts[2].Triggered);
    // A cancelled keypad leaves the value rounded to the one decimal shown.
    alerts[2].Threshold = 15.56;
    dialog.threshold_edits[2]->click();
    EXPECT_DOUBLE_EQ(15.6, alerts[2].Threshold);
    EXPECT_EQ("15.6", dialog.threshold_edits[2]->text().toStdString());
}

// Wiring only: the menu's two entries, and what the window does after each
// dialog closes.
TEST_F(WeatherDialogs, TheMenuOpensBothAndWeatherAsksForTheCalibrationEitherWay)
{
    test_clear_settings();
    MainWindow window(0);
    window.timer->stop();
    window.MenuButtonPressed();
    QStringList entries;
    for (QAction *action : window.menu_bar->findChildren<QAction *>())
    {
        entries << action->text();
    }
    EXPECT_TRUE(entries.contains("Alerts") && entries.contains("Weather")) << entries.join(",").toStdString();

    static int accept;
    auto close_dialog = [] {
        QTimer::singleShot(0, [] {
            QDialog *d = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            accept ? d->accept() : d->reject();
        });
    };
    weather.calibration_pending = 0;
    weather.WxStationAddr = 6;
    accept = 0;
    close_dialog();
    window.WxConfig();
    EXPECT_EQ(1, weather.calibration_pending);
    std::string path = std::string(settings_directory()) + ini_file_name;
    EXPECT_EQ(std::string::npos, test_read_file(path).find("WxStationAddr=6"));
    accept = 1;
    close_dialog();
    window.WxConfig();
    EXPECT_NE(std::string::npos, test_read_file(path).find("WxStationAddr=6"));
    alerts[2].Action = ACTION_ADDR_1;
    close_dialog();
    window.Alerts();
    EXPECT_NE(std::string::npos, test_read_file(path).find("Alert3Action=6"));
}
