// SPDX-License-Identifier: MIT
/* fuzz/fuzz_fixfile.cpp: any bytes as a fix file, behind one byte that gives the count of vertices.
 * Entries are taken in order and those behind the first malformed one keep their value.
 */
#include <cstdlib>
#include <vector>

#include "hook.h"
#include "io/partfile.h"

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

/* The entries, each `before` where the file has none; nothing if the reader ended the process. */
static std::vector<int> entries_of(size_t n, const char *name, int before)
{
    std::vector<int> part(n, before);
    FixRun run = {name, static_cast<int>(n), part.data()};
    if (!fuzz_survives(read_fixes, &run)) part.clear();
    return part;
}

/* An entry that is there is the same whatever it was before. */
int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 1) return 0;
    const size_t n = bytes[0];
    const char *const name = fuzz_file(0, bytes + 1, size - 1);
    const std::vector<int> part = entries_of(n, name, 0), again = entries_of(n, name, -1);
    if (part.size() != again.size()) fuzz_finding("what was there decides the end");
    size_t taken = 0;
    while (taken < part.size() && part[taken] == again[taken]) taken++;
    for (size_t v = taken; v < part.size(); v++)
        if (part[v] == again[v]) fuzz_finding("an entry behind a gap");
    if (taken > size) fuzz_finding("more entries than bytes");
    return 0;
}
