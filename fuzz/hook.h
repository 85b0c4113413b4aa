/* SPDX-License-Identifier: MIT */
/* fuzz/hook.h: what lets one process live through many fatal errors.
 *
 * The fuzz programs define the fatal exit themselves, in place of core/errors.cpp: it jumps back
 * here instead of ending the process. Nothing of this is in the library or the tool. The engine's
 * allocations are counted by the linker's --wrap, so that a jump leaves no leak behind, and one
 * beyond a limit fails as on a small machine.
 */
#ifndef ZORPEL_FUZZ_HOOK_H
#define ZORPEL_FUZZ_HOOK_H

#include <cstddef>
#include <cstdint>

/* Runs work(argument); true if it came to its end, false if it took the fatal exit. Leaves no
 * allocation of the fatal case behind. What lies on the stack in between must need no destructor.
 */
bool fuzz_survives(void (*work)(void *argument), void *argument);

/* The message of the last fatal exit. */
const char *fuzz_message();

/* Puts the bytes into the file in memory of that number (0 or 1); returns a name to open it by. */
const char *fuzz_file(int number, const uint8_t *bytes, size_t size);

/* A folder of this process alone, which goes when the process ends. */
const char *fuzz_folder();

/* Sends standard output nowhere. */
void fuzz_silence();

/* Ends the process as a finding. */
[[noreturn]] void fuzz_finding(const char *what);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);

#endif
