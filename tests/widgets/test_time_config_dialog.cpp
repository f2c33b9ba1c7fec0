#include "widgets/time_config_dialog.h"

#include "../astro/astro_test_time.h"
#include "core/clock.h"
#include "core/mainwindow.h"
#include "core/panel_seam.h"
#include "support/panel_record.h"
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

// What the dialog's combo boxes show, as indices, month first.
static std::vector<int> shown(const TimeConfigDialog &d)
{
    const Ui::TimeConfigDialog *ui = d.ui;
    return {ui->MonthComboBox->currentIndex(), ui->DayComboBox->currentIndex(), ui->YearComboBox->currentIndex(),
            ui->HoursComboBox->currentIndex(), ui->MinutesComboBox->currentIndex(), ui->SecondsComboBox->currentIndex()};
}

static std::vector<int> fields(void)
{
    const DateTimeFields &f = map_date_time;
    return {f.Month, f.Day, f.Year, f.Hours, f.Minutes, f.Seconds};
}

class TimeDialog : public ::testing::Test
{
  protected:
    std::string proc = std::string(test_home()) + "/proc";
    void SetUp() override
    {
        test_reset_state();
        QDir().mkpath(QString::fromStdString(proc));
    }
    void TearDown() override
    {
        clock_set_runner(nullptr);
        test_reset_state();
    }
};

TEST_F(TimeDialog, OpensOnTheClockPlusTheMapOffsetAsUtc)
{
    struct Row
    {
        time_t now;
        int offset;
        std::vector<int> fields, shown;
        const char *why;
    } rows[] = {
        {astro_test_time(2024, 2, 28, 23, 59, 30), 86400, {2, 29, 2024, 23, 59, 30}, {1, 28, 24, 23, 59, 30},
         "tomorrow, a leap day"},
        {astro_test_time(2050, 6, 1, 12, 0, 5), 0, {6, 1, 2050, 12, 0, 5}, {5, 0, -1, 12, 0, 5},
         "past 2047 the year shows nothing and keeps the real one"},
    };
    // The local zone must not show: the fields are UTC.
    setenv("TZ", "America/New_York", 1);
    tzset();
    for (const Row &row : rows)
    {
        clock_freeze(row.now);
        map_time_offset = row.offset;
        TimeConfigDialog d(nullptr, proc.c_str());
        EXPECT_EQ(fields(), row.fields) << row.why;
        EXPECT_EQ(shown(d), row.shown) << row.why;
    }
    unsetenv("TZ");
    tzset();
}

TEST_F(TimeDialog, ChoicesGoToTheirFieldsAndNetworkTimeIsNamed)
{
    clock_freeze(astro_test_time(2024, 3, 7, 9, 5, 1));
    TimeConfigDialog d(nullptr, proc.c_str());
    EXPECT_TRUE(d.ui->NetworkTimeLabel->isHidden());
    QComboBox *boxes[] = {d.ui->MonthComboBox,  d.ui->DayComboBox,     d.ui->YearComboBox,
                          d.ui->HoursComboBox,  d.ui->MinutesComboBox, d.ui->SecondsComboBox};
    const int chosen[] = {1, 30, 47, 23, 0, 59};
    for (int i = 0; i < 6; i++)
    {
        boxes[i]->setCurrentIndex(chosen[i]);
    }
    EXPECT_EQ(fields(), (std::vector<int>{2, 31, 2047, 23, 0, 59}));

    QDir().mkpath(QString::fromStdString(proc + "/77"));
    FILE *f = fopen((proc + "/77/comm").c_str(), "w");
    fputs("chronyd\n", f);
    fclose(f);
    TimeConfigDialog kept(nullptr, proc.c_str());
    EXPECT_FALSE(kept.ui->NetworkTimeLabel->isHidden());
    EXPECT_EQ(kept.ui->NetworkTimeLabel->text().toStdString(),
              "The clock is set by network time; a manual setting will be overwritten");
}

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

// The menu entry runs the dialog; OK sets the clock from the chosen fields,
// a refusal reaches the status bar, Cancel runs nothing. The recorder stands
// in for the command, so the machine's clock is never touched.
TEST_F(TimeDialog, MenuEntrySetsTheClockFromTheFields)
{
    clock_set_runner(record);
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
                           [accept]
                           {
                               auto *d = qobject_cast<TimeConfigDialog *>(QApplication::activeModalWidget());
                               ASSERT_NE(d, nullptr);
                               d->ui->MonthComboBox->setCurrentIndex(1);
                               d->ui->DayComboBox->setCurrentIndex(30);
                               accept ? d->accept() : d->reject();
                           });
        entry->trigger();
        EXPECT_EQ(runs, row.runs);
        EXPECT_STREQ(panel_last_status, row.status);
        EXPECT_EQ(map_date_time.Month * 100 + map_date_time.Day, 231) << "Cancel keeps the chosen fields";
    }
    EXPECT_STREQ(last_command.words[last_command.count - 1], "023110202025.30") << "31 February goes as chosen";
}
