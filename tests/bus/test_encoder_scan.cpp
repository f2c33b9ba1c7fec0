// The bus inventory against the simulated station: what each address shows,
// and what a press changes on the device itself.
#include "sim_fixture.h"

#include "bus/encoder_scan.h"
#include "bus/encoders.h"

#include <functional>

class Scan : public SimBus
{
  protected:
    void SetUp() override
    {
        SimBus::SetUp();
        // As the settings load leaves it, before any scan has asked a device.
        for (int n = 0; n < ENCODER_COUNT; n++)
        {
            encoders[n].Info = brt_factory_record(n);
        }
        control("set az 180");
        control("set el 45");
    }
    // The row as the table shows it, columns joined by |; a column the pass
    // left alone shows as ~.
    std::string row(int a)
    {
        ScanRow r = encoder_scan_address(a);
        char texts[SCAN_COLUMNS][SCAN_TEXT_SIZE];
        int filled[SCAN_COLUMNS];
        encoder_row_texts(a, &r, texts, filled);
        std::string joined;
        for (int c = 0; c < SCAN_COLUMNS; c++)
        {
            joined += std::string(c ? "|" : "") + (filled[c] ? texts[c] : "~");
        }
        return joined;
    }
};

TEST_F(Scan, EachAddressShowsWhatAnswersThere)
{
    struct Row
    {
        int address;
        const char *control;
        const char *shown;
        const char *why;
    } rows[] = {
        {0, nullptr, "0|SEI|25|1.02|1.00|2000|03-14-2024|36000|18000|0", "a native encoder says everything itself"},
        {3, nullptr, "3|BRT|38|1.00|2.01|1004|05-29-2025|36000|4500|0", "a BRT-38's position is scaled by its entry"},
        {4, nullptr, "4|||||||||", "Type -1 is not asked"},
        {1, "silent 1 on", "1|SEI||||||||", "a silent encoder blanks its row"},
        {2, "disconnect 2 on", "2|BRT||||||||", "a BRT-38 without its shaft encoder too"},
    };
    for (const Row &r : rows)
    {
        if (r.control)
        {
            control(r.control);
        }
        int before = frames();
        EXPECT_EQ(row(r.address), r.shown) << r.why;
        if (r.address == 4)
        {
            EXPECT_EQ(frames(), before) << "not a byte for an address of Type -1";
        }
    }
    encoders[5].Type = ENCODER_MOD;
    EXPECT_EQ(row(5), "5|MOD||||||||");
}

TEST_F(Scan, PressesChangeTheDeviceAndTheNextPassShowsIt)
{
    for (int a = 0; a < 4; a++)
    {
        row(a); // the factory records tell a BRT-38 from a native encoder
    }
    struct Row
    {
        std::function<void()> press;
        std::function<bool()> device_has;
        int shown_address;
        const char *shown;
        const char *why;
    } rows[] = {
        {[] { encoder_change_mode(0, 255); },
         [this] { return device(0).mode == 0x9D && device(0).power_up_mode == 0x9D; }, 0,
         "0|SEI|25|1.02|1.00|2000|03-14-2024|36000|36846000|157",
         "mode 255 goes as 0x9D, now and at power-up: 32 bits, counting down, over 1024 turns"},
        {[] { encoder_change_resolution(1, 70000); }, [this] { return device(1).resolution == 4464; }, 1,
         "1|SEI|25|1.02|1.00|2001|03-14-2024|4464|558|0", "a resolution goes as its low 16 bits"},
        {[] { encoder_preset_position(0, 12345); },
         [this] { return sim_encoder_counts(&sim->station, 0) == 12345; }, -1, "", "a 32-bit preset"},
        {[] { encoder_preset_position(2, 700); }, [this] { return sim_brt_pulses(&sim->station, 2) == 700; },
         -1, "", "a BRT-38 preset in pulses"},
        {[] { encoder_change_mode(3, 1); }, [this] { return device(3).brt_direction == 0; }, 3,
         "3|BRT|38|1.00|2.01|1004|05-29-2025|36000|31500|1", "a BRT-38 counts the other way round"},
    };
    for (const Row &r : rows)
    {
        r.press();
        EXPECT_TRUE(r.device_has()) << r.why;
        if (r.shown_address >= 0)
        {
            EXPECT_EQ(row(r.shown_address), r.shown) << r.why;
        }
    }
}

TEST_F(Scan, AMovedDeviceAnswersAtItsNewAddress)
{
    for (int a = 0; a < 4; a++)
    {
        row(a);
    }
    int before = frames();
    EXPECT_EQ(0, encoder_change_address(0, 0));
    EXPECT_EQ(0, encoder_change_address(0, 15));
    EXPECT_EQ(0, encoder_change_address(0, -1));
    EXPECT_EQ(frames(), before) << "the same address, 15 or -1 send nothing";

    EXPECT_EQ(1, encoder_change_address(0, 5)) << "a native encoder that moved closes the dialog";
    EXPECT_EQ(device(5).serial, 2000u);
    EXPECT_EQ(row(5), "5|SEI|25|1.02|1.00|2000|03-14-2024|36000|18000|0");
    EXPECT_EQ(row(0), "0|SEI||||||||") << "nothing answers at the old address";

    EXPECT_EQ(0, encoder_change_address(2, 7)) << "a BRT-38 keeps the dialog open";
    EXPECT_EQ(device(7).kind, SIM_DEVICE_BRT);
    EXPECT_EQ(row(7), "7|BRT|38|1.00|2.01|1008|05-29-2025|36000|18000|0");

    // A stale serial is not the device's: it stays, and so does the table.
    encoders[1].Info.Serial = 9999;
    encoders[6].Type = ENCODER_NONE;
    EXPECT_EQ(0, encoder_change_address(1, 6));
    EXPECT_EQ(device(1).serial, 2001u);
    EXPECT_EQ(encoders[6].Type, ENCODER_NONE);
}
