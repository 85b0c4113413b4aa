/* SPDX-License-Identifier: MIT */
/* zorpelx/files/reading.h: what the reader of hypergraph files carries from line to line. */
#ifndef ZORPELX_FILES_READING_H
#define ZORPELX_FILES_READING_H

#include <cstdint>
#include <vector>

#include "read_hgr.h"

/* Most that weights of one kind may sum up to. The engine's number, written again on purpose: what
 * reads files shares nothing with it. A test compares the two. */
constexpr int64_t MOST_TOTAL = 2147483646;

/* What the reading of one file carries along. */
struct Scan {
    Text text;
    Reading reading;
    Findings *findings;
    Budget *budget;
    int64_t code;
    std::vector<int32_t> last; // last hyperedge that listed each vertex, -1 at first
    int64_t room;              // vertex entries that zorpel's first pass counts
    int64_t largest;           // vertex number so far
    Place zero;                // first vertex number 0
    Place header;
    Place tight;                 // first hyperedge that takes more room than counted
    std::vector<Place> netplace; // where each hyperedge begins
    std::vector<Place> wgtplace; // and each vertex weight, if there are any
    int64_t crlf;                // first line that ends so, or 0
    int64_t look;                // byte from which on the clock is looked at again
};

/* Adds what shows once all is read: sums, vertices in no hyperedge, hyperedges that are alike. */
void check_whole(Scan *scan, const Hypergraph &graph);

/* Looks at the deadline once in a while: `place` counts bytes or steps of a loop, and grows. */
inline void look_at_clock(Scan *scan, int64_t place)
{
    constexpr int64_t STRIDE = int64_t{1} << 18;
    if (place < scan->look) return;
    scan->look = place + STRIDE;
    check_time(*scan->budget);
}

#endif
