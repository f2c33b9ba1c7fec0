// The in-process simulator on its pseudo-terminal with the bus open on it:
// the program's real code against the station's devices.
#pragma once

#include "pty_peer.h"
#include "support/test_env.h"

#include "bus/encoders.h"
#include "bus/sei_link.h"
#include "core/state.h"
#include "sim/pty_server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <string>

class SimBus : public ::testing::Test
{
  protected:
    SimServer *sim = nullptr;

    void SetUp() override
    {
        test_reset_state();
        test_clear_settings();
        // The program's default encoder table and axis addresses.
        for (int n = 0; n < ENCODER_COUNT; n++)
        {
            encoders[n].Type = encoder_default_type(n);
            encoders[n].Resolution = 36000;
            encoders[n].PPR = 1024;
            encoders[n].Range = 1024;
        }
        settings.AZ_Addr = 0;
        settings.EL_Addr = 1;
        sim = new SimServer;
        sim_station_init(&sim->station);
        ASSERT_EQ(0, sim_server_start(sim, nullptr));
        ASSERT_EQ(0, bus_open_on(sim->device));
    }
    void TearDown() override
    {
        sei_link_reset();
        sim_server_stop(sim);
        delete sim;
    }
    std::string control(const char *line)
    {
        char reply[16384];
        sim_server_control(sim, line, reply, sizeof reply);
        return reply;
    }
    // How often a frame (as the log writes it, "> F0 09") reached the devices.
    int frames_seen(const char *text)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        int seen = 0;
        int count = sim->station.frame_count < SIM_FRAME_LOG ? sim->station.frame_count : SIM_FRAME_LOG;
        for (int i = 0; i < count; i++)
        {
            seen += std::string(sim->station.frames[i].text) == text;
        }
        return seen;
    }
    // All frames the devices have heard, and an encoder as it stands now.
    int frames(void)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.frame_count;
    }
    SimEncoder device(int a)
    {
        std::lock_guard<std::mutex> hold(sim->lock);
        return sim->station.encoders[a];
    }
    // Frames without a reply reach the devices a moment after the write
    // returns; look again for up to a second.
    int frames_arrived(const char *text, int count)
    {
        for (int i = 0; i < 200 && frames_seen(text) < count; i++)
        {
            poll(nullptr, 0, 5);
        }
        return frames_seen(text);
    }
};
