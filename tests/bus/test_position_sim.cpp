#include "sim_fixture.h"

#include "bus/position.h"
#include "bus/sei_commands.h"
#include "core/position_group.h"
#include "support/panel_record.h"

TEST_F(SimBus, SeiEncodersReadTheMountWithOneSetUpAndOnePositionFramePerAxis)
{
    control("set az 180");
    control("set el 30");
    for (int i = 0; i < 3; i++)
    {
        EXPECT_EQ(0, ReadPosition());
    }
    EXPECT_DOUBLE_EQ(180.0, az_position);
    EXPECT_DOUBLE_EQ(30.0, el_position);
    EXPECT_EQ(18000u, az_last_raw);
    EXPECT_EQ(1, frames_seen("> F0 09"));
    EXPECT_EQ(1, frames_seen("> F1 0B"));
    EXPECT_EQ(3, frames_seen("> 10"));
    EXPECT_EQ(3, frames_seen("> 11"));
}

TEST_F(SimBus, BrtEncodersAreScaledAndADisconnectedOneFailsLikeASilentDevice)
{
    settings.AZ_Addr = 2;
    settings.EL_Addr = 3;
    control("set az 90");
    control("set el 45");
    EXPECT_EQ(0, ReadPosition());
    EXPECT_DOUBLE_EQ(90.0, az_position);
    EXPECT_DOUBLE_EQ(45.0, el_position);
    EXPECT_EQ(0, frames_seen("> F2 09"));
    control("disconnect 2 on");
    control("set az 100");
    EXPECT_EQ(1, ReadPosition());
    EXPECT_NE(0, az_read_status);
    EXPECT_DOUBLE_EQ(90.0, az_position);
    EXPECT_STREQ("Azimuth read error", panel_last_status);
}

TEST_F(SimBus, SilentAzimuthShowsTheErrorKeepsThePositionAndCarriesOver)
{
    control("set az 123");
    ReadPosition();
    control("silent 0 on");
    control("set az 200");
    control("set el 60");
    EXPECT_EQ(1, ReadPosition());
    EXPECT_EQ(1, az_read_status);
    EXPECT_DOUBLE_EQ(123.0, az_position);
    // Elevation was ready, so it is not read in this pass and shares the failure.
    EXPECT_EQ(1, el_read_status);
    EXPECT_DOUBLE_EQ(45.0, el_position);
    // The status bar names the axis that failed, not the one it took along.
    EXPECT_STREQ("Azimuth read error", panel_last_status);
    EXPECT_EQ(1, frames_seen("> 11"));
}

TEST_F(SimBus, SetUpIsRepeatedOnlyWhileItFailsAndElevationSetUpRunsDespiteTheCarriedFailure)
{
    control("silent 0 on");
    control("set el 60");
    EXPECT_EQ(1, ReadPosition());
    EXPECT_EQ(0, el_read_status);
    EXPECT_DOUBLE_EQ(60.0, el_position);
    EXPECT_STREQ("Azimuth read error", panel_last_status);
    ReadPosition();
    EXPECT_EQ(2, frames_seen("> F0 09"));
    control("silent 0 off");
    EXPECT_EQ(0, ReadPosition());
    EXPECT_EQ(1, az_encoder_ready);
    // Answers to the set-up but none to position reads: the error every
    // pass, and the set-up is not asked again.
    control("silent 0 on");
    ReadPosition();
    ReadPosition();
    EXPECT_EQ(3, frames_seen("> F0 09"));
    EXPECT_EQ(1, az_read_status);
}

// What the panel shows of each axis after one position group.
struct AxisLook
{
    const char *az_text, *el_text;
    int az_style, el_style;
    int az_dial, el_dial;
    const char *status;
};

static void expect_look(const AxisLook &want)
{
    EXPECT_STREQ(want.az_text, panel_last_text[PANEL_ANTENNA_AZIMUTH]);
    EXPECT_STREQ(want.el_text, panel_last_text[PANEL_ANTENNA_ELEVATION]);
    EXPECT_EQ(want.az_style, panel_last_style[PANEL_ANTENNA_AZIMUTH]);
    EXPECT_EQ(want.el_style, panel_last_style[PANEL_ANTENNA_ELEVATION]);
    EXPECT_EQ(want.az_dial, panel_dial_states[DIAL_AZIMUTH]);
    EXPECT_EQ(want.el_dial, panel_dial_states[DIAL_ELEVATION]);
    EXPECT_STREQ(want.status, panel_last_status);
}

// A dead reading never looks live: the silent axis keeps its last position
// in gray with a "?" ("---" before any), the status bar names it, and the
// first good pass puts everything back.
TEST_F(SimBus, SilentEncoderGraysItsAxisNamesItAndRecoveryRestoresBoth)
{
    const int red = STYLE_RED_TEXT, gray = STYLE_GRAY_TEXT;
    settings.AzimuthLimitMin = settings.ElevationLimitMin = -1000;
    settings.AzimuthLimitMax = settings.ElevationLimitMax = 1000;
    control("set az 120");
    control("set el 20");
    control("silent 0 on");
    control("silent 1 on");
    {
        SCOPED_TRACE("both silent from the start, as with no bus: no reading yet, both named");
        position_group(0);
        expect_look({"---", "---", gray, gray, DIAL_STALE, DIAL_STALE, "Azimuth and elevation read error"});
    }
    control("silent 1 off");
    {
        SCOPED_TRACE("elevation answers its set-up while azimuth stays silent");
        position_group(0);
        expect_look({"---", "  20.00", gray, red, DIAL_STALE, DIAL_LIVE, "Azimuth read error"});
    }
    control("silent 0 off");
    {
        SCOPED_TRACE("both read: the message goes");
        position_group(0);
        expect_look({" 120.00", "  20.00", red, red, DIAL_LIVE, DIAL_LIVE, ""});
    }
    control("silent 1 on");
    control("set el 30");
    {
        SCOPED_TRACE("elevation silent: only elevation is gray");
        position_group(0);
        expect_look({" 120.00", "  20.00 ?", red, gray, DIAL_LIVE, DIAL_STALE, "Elevation read error"});
    }
    control("silent 1 off");
    control("silent 0 on");
    {
        SCOPED_TRACE("azimuth silent: elevation, not asked, is gray too; azimuth is named");
        position_group(0);
        expect_look({" 120.00 ?", "  20.00 ?", gray, gray, DIAL_STALE, DIAL_STALE, "Azimuth read error"});
    }
    control("silent 0 off");
    panel_status("Azimuth stalled", 0);
    {
        SCOPED_TRACE("recovery clears only its own message");
        position_group(0);
        expect_look({" 120.00", "  30.00", red, red, DIAL_LIVE, DIAL_LIVE, "Azimuth stalled"});
    }
}

TEST_F(SimBus, DevicesFindTheNextFrameAfterNoise)
{
    // Bytes that start no frame, and a frame cut short, ahead of a real read.
    const uint8_t noise[6] = {0x00, 0x2A, 0xA5, 0x33, 0x0F, 0xF0};
    EXPECT_EQ(6, sei_transact(noise, sizeof noise, nullptr, 0, 0));
    control("set az 45");
    control("set el 10");
    // The cut frame swallows the request that follows it (unless the devices
    // gave up on it first); a pass later the bus is in step again.
    int passes = 1;
    while (ReadPosition() != 0 && passes < 5)
    {
        passes++;
    }
    EXPECT_LE(passes, 2);
    EXPECT_DOUBLE_EQ(45.0, az_position);
    EXPECT_DOUBLE_EQ(10.0, el_position);
}

TEST_F(SimBus, ALoneByteIsAPositionOnlyFromAnEncoderWhoseTurnFitsInIt)
{
    control("set az 123");
    EXPECT_EQ(0, ReadPosition());
    // 180 degrees is 0x46 0x50; cut short, the 0x46 alone is not 0.70 degrees.
    control("short 0 on");
    control("set az 180");
    EXPECT_EQ(1, ReadPosition());
    EXPECT_EQ(1, az_read_status);
    EXPECT_DOUBLE_EQ(123.0, az_position);
    // An encoder of 256 counts a turn answers every read with one byte.
    control("short 0 off");
    uint8_t status = 0;
    ASSERT_EQ(0, sei_change_resolution(0, 256, &status));
    az_encoder_ready = 0;
    EXPECT_EQ(0, ReadPosition());
    EXPECT_EQ(1, frames_seen("< 80"));
    EXPECT_DOUBLE_EQ(180.0, az_position);
}
