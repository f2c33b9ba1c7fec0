// What every fuzz target shares: a scratch home so no input reaches the
// operator's settings, silent logs, and files for the readers that only take
// a path. A target defines LLVMFuzzerTestOneInput; libFuzzer drives it while
// fuzzing, and replay_main.cpp feeds it the stored corpus in the test suite.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// Once per process: a temporary HOME, the C locale and no log output.
void fuzz_setup(void);
// The input written whole to a scratch file of this process; its path.
const char *fuzz_scratch_file(const uint8_t *data, size_t size);
// A broken promise of a parser: print why and abort, so that libFuzzer keeps
// the input and the replay fails.
void fuzz_fail(const char *target, const char *why);
// 1 when a fixed field holds its terminator.
int fuzz_terminated(const char *text, size_t size);
