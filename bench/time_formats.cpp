// SPDX-License-Identifier: MIT
/* bench/time_formats.cpp: zorpel-formats, which times the readers of all formats.
 *
 *   zorpel-formats FILE
 * Prints one line of CSV: CPU seconds, user and system, from the first byte of the file to the
 * whole record; vertices, hyperedges, pins; peak memory in bytes.
 */
#include <cstdio>
#include <sys/resource.h>

#include "bytes.h"
#include "fileerror.h"
#include "formats.h"

static double seconds_of(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

static rusage used_so_far()
{
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return used;
}

static void read_and_print(const char *path)
{
    Budget budget = make_budget(path, 0, 0, 0);
    Findings findings = {};
    Reading reading = {LINES_WHOLE, 1, false};
    reading.path = path;
    const Bytes text = read_bytes(path, &budget);
    const Hypergraph graph = read_any(view_of(text), nullptr, reading, &findings, &budget);
    const rusage used = used_so_far();
    printf("%.3f,%lld,%lld,%zu,%lld\n", seconds_of(used.ru_utime) + seconds_of(used.ru_stime),
           static_cast<long long>(graph.nvertices), static_cast<long long>(graph.nnets),
           graph.pins.size(), 1024LL * used.ru_maxrss);
}

int main(int nwords, char **words)
{
    if (nwords != 2) {
        fputs("usage: zorpel-formats FILE\n", stderr);
        return 2;
    }
    try {
        read_and_print(words[1]);
    } catch (const FileError &error) {
        fprintf(stderr, "zorpel-formats: %s\n", error.text.c_str());
        return 1;
    }
    return 0;
}
