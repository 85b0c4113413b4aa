// SPDX-License-Identifier: MIT
/* zorpelx/lib/engine_libc.cpp: the C library as the engine inside libzorpelx sees it.
 *
 * The linker sends the engine's calls of exit() here: exit() would run the caller's handlers and
 * write what its streams have buffered. Random numbers come from a generator that the call owns,
 * so nothing is drawn from rand(), whose lock may be held by a thread that does not exist in a
 * child.
 */
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

extern "C" {
[[noreturn]] void __wrap_exit(int status);
}

void __wrap_exit(int status)
{
    fflush(stdout);
    fflush(stderr);
    _exit(status);
}
