#include "widgets/time_config_dialog.h"

#include "../astro/astro_test_time.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "support/test_env.h"
#include "ui_time_config_dialog.h"
#include "widgets/system_clock.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <gtest/gtest.h>
#include <string>

static ClockCommand last_command;
static int runs;
static const char *run_answer;
static int record(const ClockCommand *command, char *why, int why_size)
{
    last_command = *command;
    runs++;
    snprintf(why, (size_t)why_size, "%s", run_answer ? run_answer : "");
    return run_answer ? -1 : 0;
}

class TimeDialog : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
        clock_set_runner(record);
        runs = 0;
        run_answer = nullptr;
        QDir().mkpath(QString::fromUtf8(test_home()) + "/proc");
    }
    void TearDown() override
    {
        clock_set_runner(nullptr);
        test_reset_state();
    }
    std::string proc(void)
    {
        return std::string(test_home()) + "/proc";
    }
};

TEST_F(TimeDialog, OpensOnTheClockPlusTheMapOffsetAsUtc)
{
    struct Row
    {
        time_t now;
        int offset;
        DateTimeFields want;
        int month, day, year, hours, minutes, seconds; // combo indices
        const char *why;
    } rows[] = {
        {astro_test_time(2024, 2, 28, 23, 59, 30), 86400, {2, 29, 2024, 23, 59, 30}, 1, 28, 24, 23, 59, 30, "tomorrow, a leap day"},
        {astro_test_time(2031, 12, 31, 0, 0, 0), 0, {12, 31, 2031, 0, 0, 0}, 11, 30, 31, 0, 0, 0, "the last day of a year"},
        {astro_test_time(2050, 6, 1, 12, 0, 5), 0, {6, 1, 2050, 12, 0, 5}, 5, 0, -1, 12, 0, 5,
         "past 2047 the year shows nothing and keeps the real one"},
    };
    // The local zone must not show: the fields are UTC.
    setenv("TZ", "America/New_York", 1);
    tzset();
    for (const Row &row : rows)
    {
        clock_freeze(row.now);
        map_time_offset = row.offset;
        TimeConfigDialog dialog(nullptr, proc().c_str());
        const DateTimeFields &f = map_date_time;
        EXPECT_TRUE(f.Month == row.want.Month && f.Day == row.want.Day && f.Year == row.want.Year &&
                    f.Hours == row.want.Hours && f.Minutes == row.want.Minutes && f.Seconds == row.want.Seconds)
            << row.why;
        const Ui::TimeConfigDialog *ui = dialog.ui;
        EXPECT_EQ(ui->MonthComboBox->currentIndex(), row.month) << row.why;
        EXPECT_EQ(ui->DayComboBox->currentIndex(), row.day) << row.why;
        EXPECT_EQ(ui->YearComboBox->currentIndex(), row.year) << row.why;
        EXPECT_EQ(ui->HoursComboBox->currentIndex(), row.hours) << row.why;
        EXPECT_EQ(ui->MinutesComboBox->currentIndex(), row.minutes) << row.why;
        EXPECT_EQ(ui->SecondsComboBox->currentIndex(), row.seconds) << row.why;
    }
    unsetenv("TZ");
    tzset();
}

TEST_F(TimeDialog, EachChoiceGoesToItsField)
{
    clock_freeze(astro_test_time(2024, 3, 7, 9, 5, 1));
    TimeConfigDialog dialog(nullptr, proc().c_str());
    struct Row
    {
        QComboBox *box;
        int index;
        int32_t *field;
        int value;
    } rows[] = {
        {dialog.ui->MonthComboBox, 1, &map_date_time.Month, 2},
        {dialog.ui->DayComboBox, 30, &map_date_time.Day, 31},
        {dialog.ui->YearComboBox, 47, &map_date_time.Year, 2047},
        {dialog.ui->HoursComboBox, 23, &map_date_time.Hours, 23},
        {dialog.ui->MinutesComboBox, 0, &map_date_time.Minutes, 0},
        {dialog.ui->SecondsComboBox, 59, &map_date_time.Seconds, 59},
    };
    for (const Row &row : rows)
    {
        row.box->setCurrentIndex(row.index);
        EXPECT_EQ(*row.field, row.value) << row.box->objectName().toStdString();
    }
}

TEST_F(TimeDialog, NoticeShowsWhenNetworkTimeKeepsTheClock)
{
    TimeConfigDialog plain(nullptr, proc().c_str());
    EXPECT_TRUE(plain.ui->NetworkTimeLabel->isHidden());

    QDir().mkpath(QString::fromStdString(proc() + "/77"));
    FILE *f = fopen((proc() + "/77/comm").c_str(), "w");
    fputs("chronyd\n", f);
    fclose(f);
    TimeConfigDialog kept(nullptr, proc().c_str());
    EXPECT_FALSE(kept.ui->NetworkTimeLabel->isHidden());
    EXPECT_EQ(kept.ui->NetworkTimeLabel->text().toStdString(),
              "The clock is set by network time; a manual setting will be overwritten");
    QDir(QString::fromStdString(proc() + "/77")).removeRecursively();
}

// The menu entry runs the dialog; OK sets the clock from the chosen fields,
// a refusal reaches the status bar, Cancel runs nothing.
TEST_F(TimeDialog, MenuEntrySetsTheClockFromTheFields)
{
    clock_freeze(astro_test_time(2025, 1, 15, 10, 20, 30));
    MainWindow w(0);
    w.timer->stop();
    w.MenuButtonPressed();
    QAction *entry = nullptr;
    for (QAction *top : w.menu_bar->actions())
    {
        for (QAction *action : top->menu() ? top->menu()->actions() : QList<QAction *>())
        {
            entry = action->text() == "Date and Time" ? action : entry;
        }
    }
    ASSERT_NE(entry, nullptr);

    struct Row
    {
        bool accept;
        const char *answer;
        int runs;
        const char *status;
    } rows[] = {
        {true, nullptr, 1, ""},
        {true, "sudo: a password is required", 2, "The clock could not be set: sudo: a password is required"},
        {false, nullptr, 2, ""},
    };
    for (const Row &row : rows)
    {
        run_answer = row.answer;
        panel_last_status[0] = 0;
        bool accept = row.accept;
        QTimer::singleShot(0,
                           [accept]()
                           {
                               auto *dialog = qobject_cast<TimeConfigDialog *>(QApplication::activeModalWidget());
                               ASSERT_NE(dialog, nullptr);
                               dialog->ui->MonthComboBox->setCurrentIndex(1);
                               dialog->ui->DayComboBox->setCurrentIndex(30);
                               accept ? dialog->accept() : dialog->reject();
                           });
        entry->trigger();
        EXPECT_EQ(runs, row.runs);
        EXPECT_STREQ(panel_last_status, row.status);
        EXPECT_EQ(map_date_time.Month * 100 + map_date_time.Day, 231) << "Cancel keeps the chosen fields";
    }
    std::string date = last_command.words[last_command.count - 1];
    EXPECT_EQ(date, "023110202025.30") << "31 February goes as chosen";
}
