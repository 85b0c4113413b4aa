// SPDX-License-Identifier: MIT
/* zorpelx/lib/trace_progress.cpp: progress read off the engine's trace while it grows. */
#include "trace_progress.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

static void count_line(const char *line, Counts *counts)
{
    int number, value;
    if (sscanf(line, "    Cut of trial %d: %d", &number, &value) == 2) {
        counts->runs++;
        counts->run_cut = value;
    } else if (sscanf(line, "[%d", &value) == 1) { // a level of coarsening
        counts->levels++;
        counts->level_vtxs = value;
    }
}

void TraceScanner::scan(int fd, Counts *counts)
{
    char block[4096];
    const off_t before = place;
    for (ssize_t got; (got = pread(fd, block, sizeof block, place)) > 0;) {
        place += got;
        const char *next = block, *const end = block + got;
        while (const void *found = memchr(next, '\n', static_cast<size_t>(end - next))) {
            const char *const newline = static_cast<const char *>(found);
            line.append(next, newline);
            count_line(line.c_str(), counts);
            line.clear();
            next = newline + 1;
        }
        line.append(next, end);
    }
    if (place > before) fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, place);
}
