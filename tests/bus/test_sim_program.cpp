// morvane-sim as people run it: its command line, its control lines on
// standard input or a Unix socket, and its line on a pseudo-terminal.
#include "support/test_env.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

// Runs a shell script with $SIM set to the simulator and $H to the test home;
// every run is bounded so a simulator that never ends fails the test instead
// of hanging it. Returns the script's exit status.
static int sim_script(const std::string &script)
{
    const char *bin = getenv("MORVANE_BIN");
    std::string command = std::string("SIM='timeout 5 ") + (bin ? bin : "bin") + "/morvane-sim' H='" + test_home() +
                          "' sh -c '" + script + "'";
    int status = system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

static std::string home_file(const char *name)
{
    return test_read_file(std::string(test_home()) + "/" + name);
}

TEST(SimProgram, StandardInputAnswersOneLineEachAndEndsAtQuitOrEndOfInput)
{
    ASSERT_EQ(0,
              sim_script("printf \"state\\nweather temperature -3.5\\nswitch up pressed\\nstate\\nnonsense\\n"
                         "display\\nhelp\\nquit\\n\" | $SIM --link $H/sim-link --az 12.5 --el 7 --instant > $H/out"));
    std::string out = home_file("out");
    EXPECT_EQ(0u, out.find("/dev/pts/"));
    EXPECT_NE(std::string::npos, out.find("\"az\":12.500"));
    EXPECT_NE(std::string::npos, out.find("\"el\":7.000"));
    EXPECT_NE(std::string::npos, out.find("\nok\nok\n{"));
    EXPECT_NE(std::string::npos, out.find("\"up\":1"));
    EXPECT_NE(std::string::npos, out.find("\nerror"));
    EXPECT_NE(std::string::npos, out.find("\n["));
    EXPECT_NE(std::string::npos, out.find("| stall az|el on|off |"));
    EXPECT_EQ(out.size() - 4, out.rfind("bye\n"));
    // The link is removed at the exit.
    EXPECT_NE(0, sim_script("test -L $H/sim-link"));
    EXPECT_EQ(0, sim_script("$SIM < /dev/null > /dev/null"));
    EXPECT_EQ(2, sim_script("$SIM --speed 3 2> /dev/null"));
}

TEST(SimProgram, ControlSocketLinkAndAsk)
{
    ASSERT_EQ(0, sim_script("$SIM --link $H/link --control $H/ctl --baud 9600 > $H/device < /dev/null & "
                            "for i in $(seq 400); do test -S $H/ctl && break; sleep 0.005; done; "
                            "readlink $H/link > $H/target; $SIM --ask $H/ctl set el 33 > $H/ask; "
                            "$SIM --ask $H/ctl state >> $H/ask; $SIM --ask $H/ctl quit > /dev/null; wait $!"));
    EXPECT_EQ(home_file("device"), home_file("target"));
    std::string ask = home_file("ask");
    EXPECT_EQ(0u, ask.find("ok\n"));
    EXPECT_NE(std::string::npos, ask.find("\"el\":33.000"));
}
