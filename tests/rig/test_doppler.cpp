#include "rig/doppler.h"

#include "core/clock.h"

#include "rig_sim_fixture.h"
#include "rig_test_files.h"
#include "support/panel_record.h"

#include <string>

TEST(DopplerArithmetic, HalvesGoAwayFromZeroAndTheCorrectionFollowsTheMode)
{
    struct Row
    {
        double hz;
        int64_t want;
    } rows[] = {{10368100000.5, 10368100001LL}, {12.5, 13}, {-12.5, -13}, {12.49, 12}, {-12.49, -12}, {0.5, 1}, {-0.5, -1}, {0.0, 0}, {-1234.6, -1235}};
    for (const Row &row : rows)
    {
        EXPECT_EQ(doppler_round(row.hz), row.want) << row.hz;
    }
    test_reset_state();
    settings.TrackingSource = SOURCE_MOON;
    source_table[SOURCE_MOON].doppler_hz = 400.0;
    source_table[SOURCE_SUN].doppler_hz = 9999.0;
    dx_source_record.doppler_hz = -100.0;
    const double want[4] = {0.0, 400.0, -100.0, 150.0};
    for (int mode = 0; mode < 4; mode++)
    {
        doppler_mode = mode;
        EXPECT_EQ(doppler_correction(), want[mode]) << mode;
    }
}

class DopplerButtons : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        test_reset_state();
    }
};

// The Tx/Rx pair and the home/DX pair, pressed in turn; each button's
// colour follows from the modes, and mutual Doppler shows only when both are on.
TEST_F(DopplerButtons, StateMachines)
{
    struct Step
    {
        void (*press)(void);
        int want_vfo_mode, want_mode;
        const char *want_status;
    };
    text_copy(settings.Grid, sizeof settings.Grid, "JO22");
    text_copy(dx_grid, sizeof dx_grid, "FN42");
    home_station_valid = dx_station_valid = 1;
    const Step steps[] = {
        {doppler_tx_pressed, 1, 0, "Tx frequency is doppler adjusted from Rx VFO"},
        {doppler_rx_pressed, 2, 0, "Rx frequency is doppler adjusted from Tx VFO"}, // from Tx following straight to Rx
        {doppler_tx_pressed, 1, 0, "Tx frequency is doppler adjusted from Rx VFO"},
        {doppler_tx_pressed, 0, 0, ""},
        {doppler_home_pressed, 0, 1, "Home Station Doppler selected"},
        {doppler_dx_pressed, 0, 3, "Mutual Doppler selected"},
        {doppler_home_pressed, 0, 2, "Dx Station Doppler selected"},
        {doppler_dx_pressed, 0, 0, "Doppler Control is OFF"},
        {doppler_dx_pressed, 0, 2, "Dx Station Doppler selected"},
        {doppler_home_pressed, 0, 3, "Mutual Doppler selected"},
    };
    int n = 0;
    for (const Step &step : steps)
    {
        step.press();
        int mode = step.want_mode, vfo = step.want_vfo_mode;
        EXPECT_EQ(vfo_doppler_mode, vfo) << "step " << n;
        EXPECT_EQ(doppler_mode, mode) << "step " << n;
        EXPECT_STREQ(panel_last_status, step.want_status) << "step " << n;
        EXPECT_EQ(panel_last_style[PANEL_TX_DOPPLER], vfo == 1 ? STYLE_DARKGREEN : STYLE_GRAY) << "step " << n;
        EXPECT_EQ(panel_last_style[PANEL_RX_DOPPLER], vfo == 2 ? STYLE_DARKGREEN : STYLE_GRAY) << "step " << n;
        if (step.press == doppler_home_pressed || step.press == doppler_dx_pressed)
        {
            EXPECT_EQ(panel_last_style[PANEL_HOME_STATION], mode & 1 ? STYLE_DARKGREEN : STYLE_GRAY) << "step " << n;
            EXPECT_EQ(panel_last_style[PANEL_DX_STATION], mode & 2 ? STYLE_DARKGREEN : STYLE_GRAY) << "step " << n;
            EXPECT_EQ(panel_last_visible[PANEL_MUTUAL_DOPPLER], mode == 3) << "step " << n;
        }
        n++;
    }
}

TEST_F(DopplerButtons, DxWithoutStationStaysOffAndHomeWithoutGridSwitchesDopplerOffButKeepsDx)
{
    doppler_dx_pressed();
    EXPECT_EQ(dx_doppler_on, 0);
    dx_station_valid = 1;
    text_copy(dx_grid, sizeof dx_grid, "FN42");
    doppler_dx_pressed();
    ASSERT_EQ(doppler_mode, 2);
    home_doppler_on = 1;
    doppler_home_pressed();
    EXPECT_EQ(doppler_mode, 0);
    EXPECT_EQ(home_doppler_on, 0);
    EXPECT_EQ(dx_doppler_on, 1);
    EXPECT_STREQ(panel_last_status, "Doppler Control is OFF");
}

class DopplerRig : public RigSimTest
{
  protected:
    void SetUp() override
    {
        start(RIGSIM_CIV);
        rig_load_path(rig_test_own_file("Simulator CI-V.ini").c_str(), 0);
        rigsim_command(&sim, "freq a 1296000000");
        rigsim_command(&sim, "freq b 1296000000");
        rig_send_init();
        rx_frequency_hz = tx_frequency_hz = 1.0;
    }
};

TEST_F(DopplerRig, SignsInBothModes)
{
    rig_poll_status();
    doppler_follow(1, 1000.5);
    rig_run_until_idle();
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1295998999); // Tx below Rx
    EXPECT_EQ(rx_frequency_hz, 1296000000.0);
    EXPECT_EQ(tx_frequency_hz, 1295998999.0);

    rigsim_command(&sim, "freq b 432000000");
    rig_poll_status();
    doppler_follow(2, -12.5);
    rig_run_until_idle();
    EXPECT_EQ(rigsim_vfo(&sim, 0), 431999987); // a negative figure puts Rx below Tx
    doppler_follow(2, 12.5);
    rig_run_until_idle();
    EXPECT_EQ(rigsim_vfo(&sim, 0), 432000013); // a positive one above
    EXPECT_EQ(rx_frequency_hz, 432000013.0);
    EXPECT_EQ(tx_frequency_hz, 432000000.0);
}

TEST_F(DopplerRig, NoReadingWritesNothingAndModeZeroOnlyReads)
{
    rigsim_command(&sim, "freq b 5");
    doppler_follow(1, 100.0);
    doppler_follow(2, 100.0);
    doppler_follow(0, 100.0);
    rig_run_until_idle();
    EXPECT_EQ(rigsim_vfo(&sim, 1), 5);
    EXPECT_EQ(rigsim_vfo(&sim, 0), 1296000000);
    EXPECT_EQ(tx_frequency_hz, 1.0);
    // Mode 0 only reads.
    rigsim_command(&sim, "freq b 1296000700");
    rig_poll_status();
    doppler_follow(0, 100.0);
    EXPECT_EQ(rx_frequency_hz, 1296000000.0);
    EXPECT_EQ(tx_frequency_hz, 1296000700.0);
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1296000700);
}

// One pass of the group: the walk it starts, run out as later ticks and the
// port's signals would.
static void group_pass(void)
{
    doppler_frequency_group();
    rig_run_until_idle();
}

TEST_F(DopplerRig, GroupFollowsTheTurningDialUpToTheTenGigahertzBand)
{
    // The operator tunes VFO A; with Doppler off VFO B follows it exactly.
    settings.OmniRigActive = 1;
    vfo_doppler_mode = 1;
    doppler_mode = 0;
    source_table[SOURCE_MOON].doppler_hz = 700.0;
    rigsim_command(&sim, "turn a 450");
    group_pass();
    group_pass();
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1296000450);
    EXPECT_STREQ(panel_last_text[PANEL_RX_FREQUENCY], "  1296.00045");

    doppler_mode = 1;
    group_pass();
    EXPECT_EQ(rigsim_vfo(&sim, 1), 1296000450 - 700);
    EXPECT_STREQ(panel_last_text[PANEL_TX_FREQUENCY], "  1295.99975");

    // Five bytes of BCD hold up to 9999.999999 MHz: the 5.7 GHz band.
    rigsim_command(&sim, "freq a 5760100000");
    group_pass();
    group_pass();
    EXPECT_EQ(rigsim_vfo(&sim, 1), 5760100000LL - 700);
    EXPECT_STREQ(panel_last_text[PANEL_RX_FREQUENCY], "  5760.10000");
}

// A radio that is switched off: the group never waits for it, and after
// three unanswered commands rig control goes off and says where.
TEST_F(DopplerRig, SilentRadioNeverHoldsTheGroupAndSwitchesRigControlOff)
{
    settings.OmniRigActive = 1;
    vfo_doppler_mode = 1;
    rigsim_command(&sim, "silent 1");
    doppler_frequency_group();
    EXPECT_TRUE(rig_busy());
    EXPECT_EQ(rig_engine.last_outcome, RIG_OUTCOME_REPLY); // the init's, from SetUp
    int64_t t = clock_monotonic_ms();
    for (int n = 1; n <= RIG_SILENT_LIMIT; n++)
    {
        rig_service(t + n * RIG_BUDGET_MS);
    }
    EXPECT_EQ(settings.OmniRigActive, 1);
    doppler_frequency_group();
    EXPECT_EQ(settings.OmniRigActive, 0);
    EXPECT_EQ(rig_link.is_open, 0);
    EXPECT_EQ(rig_busy(), 0);
    EXPECT_EQ(panel_last_style[PANEL_OMNIRIG], STYLE_DARKRED);
    EXPECT_EQ(std::string(panel_last_status), std::string("Radio not answering on ") + sim.path);
}

TEST_F(DopplerRig, OmniRigButtonSwitchesRigControl)
{
    serial_close(&rig_link);
    rig_tables_clear();
    rig_files_set_folder(rig_test_own_folder().c_str());
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "Simulator CI-V.ini");
    text_copy(settings.PortName, sizeof settings.PortName, sim.path);
    settings.BaudRate = 3;
    settings.DataBits = 1;
    size_t frames_before = rigsim_frames(&sim).size();

    doppler_omnirig_pressed();
    EXPECT_EQ(settings.OmniRigActive, 1);
    EXPECT_STREQ(panel_last_status, "OmniRig is active");
    rig_run_until_idle();
    std::vector<std::string> frames = rigsim_frames(&sim);
    ASSERT_GT(frames.size(), frames_before);
    EXPECT_EQ(frames[frames_before], "> FE FE A2 E0 1A 05 01 27 00 FD"); // the file's INIT1

    doppler_omnirig_pressed();
    EXPECT_EQ(settings.OmniRigActive, 0);
    EXPECT_EQ(rig_link.is_open, 0);
    EXPECT_EQ(panel_last_style[PANEL_OMNIRIG], STYLE_GRAY);

    // A file that reads only pmFreq says at once that Doppler cannot follow.
    rig_test_write("Only pmFreq.ini", "[STATUS1]\nCommand=FEFEA2E0.03.FD\nReplyLength=17\n"
                                      "Value1=11|5|vfBcdLU|1|0|pmFreq\n");
    rig_files_set_folder(test_home());
    text_copy(settings.OmniRigFilename, sizeof settings.OmniRigFilename, "Only pmFreq.ini");
    doppler_omnirig_pressed();
    EXPECT_STREQ(panel_last_status,
                 "OmniRig is active, but reads only pmFreq: Doppler tuning needs pmFreqA and pmFreqB");
    rig_control_off();

    // A port that is not there says so.
    text_copy(settings.PortName, sizeof settings.PortName, "/dev/ttyMorvaneNone");
    doppler_omnirig_pressed();
    EXPECT_STREQ(panel_last_status, "OmniRig is inactive: No such port /dev/ttyMorvaneNone");
    rig_files_set_folder(nullptr);
}
