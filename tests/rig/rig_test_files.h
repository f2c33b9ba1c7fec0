// Rig files for the rig tests: written into the test's private home, or the
// real ones of the shared folder when it is there.
#pragma once

#include <string>

// Write text as a rig file in the test home; returns its path.
std::string rig_test_write(const char *name, const std::string &text);
// The folder of real published rig files, or "" when it is absent.
std::string rig_test_real_folder(void);
// The project's own rig files, and their folder.
std::string rig_test_own_file(const char *name);
std::string rig_test_own_folder(void);
