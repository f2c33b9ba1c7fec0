// A simulated radio on a pty with the rig link open on it, for the tests that
// run the engine through a real serial port.
#pragma once

#include "rig/rig_engine.h"
#include "rig/rig_loader.h"
#include "rigsim/rigsim_pty.h"
#include "support/test_env.h"

#include <cstring>
#include <gtest/gtest.h>

class RigSimTest : public ::testing::Test
{
  protected:
    RigsimPty sim;

    void start(int protocol)
    {
        test_reset_state();
        ASSERT_EQ(rigsim_start(&sim, protocol), 0);
        snprintf(rig_link.PortName, sizeof rig_link.PortName, "%s", sim.path);
        rig_link.BaudRate = 7;
        rig_link.DataBits = 1;
        ASSERT_EQ(serial_open(&rig_link), 0);
    }

    void TearDown() override
    {
        serial_close(&rig_link);
        rigsim_stop(&sim);
    }
};
