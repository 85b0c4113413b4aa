/* SPDX-License-Identifier: MIT */
/* bench/flat_hypergraph.h: a hypergraph file as the flat arrays that the library's entry points take.
 *
 * Reads what the program's own reader reads, except that a line may be of any length; shares no
 * code with it.
 */
#ifndef ZORPEL_BENCH_FLAT_HYPERGRAPH_H
#define ZORPEL_BENCH_FLAT_HYPERGRAPH_H

#include <vector>

struct Input {
    int nvtxs, nhedges;
    std::vector<int> eptr;   // [nhedges + 1]
    std::vector<int> eind;   // [eptr[nhedges]]
    std::vector<int> vwgts;  // [nvtxs], or empty: all 1
    std::vector<int> hewgts; // [nhedges], or empty: all 1
};

/* Ends the program with status 2 if the file cannot be read or is no hypergraph. */
Input read_input(const char *name);

#endif
