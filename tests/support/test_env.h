// What every test program shares: a temporary HOME of its own, the offscreen
// platform, one QApplication, and the C numeric locale the program pins.
#pragma once

#include <string>

// The temporary home directory of this test program.
const char *test_home(void);
// Remove the program's settings folder, so the next load is a first run.
void test_clear_settings(void);
// Put every global record back to its start value.
void test_reset_state(void);
// Read a whole file into a string ("" when it cannot be read).
std::string test_read_file(const std::string &path);
