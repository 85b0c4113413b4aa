// SPDX-License-Identifier: MIT
/* fuzz/fuzz_fixfile.cpp: any bytes as a fix file, behind one byte that gives the count of vertices.
 * Entries are taken in order and those behind the first malformed one keep their value.
 */
#include <cstdlib>

#include "hook.h"
#include "io/partfile.h"

constexpr int UNREAD = -77777777;

struct FixRun {
    const char *name;
    int nvtxs;
    int *part; // [nvtxs]
};

static void read_fixes(void *argument)
{
    const FixRun *const run = static_cast<const FixRun *>(argument);
    ReadPartition(run->nvtxs, run->part, run->name);
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 1) return 0;
    const size_t n = bytes[0];
    int *const part = new int[n];
    for (size_t v = 0; v < n; v++) part[v] = UNREAD;
    FixRun run = {fuzz_file(0, bytes + 1, size - 1), static_cast<int>(n), part};
    const bool survived = fuzz_survives(read_fixes, &run);
    size_t taken = 0;
    while (taken < n && part[taken] != UNREAD) taken++;
    for (size_t v = taken; v < n && survived; v++)
        if (part[v] != UNREAD && taken * 2 < size) fuzz_finding("an entry behind a gap");
    if (taken > size) fuzz_finding("more entries than bytes");
    delete[] part;
    return 0;
}
