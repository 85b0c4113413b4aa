/* SPDX-License-Identifier: MIT */
/* model/torture_case.h: one trial of the tester, a hypergraph with the call to make on it, and its
 * text form, in which failures are saved and replayed.
 */
#ifndef ZORPEL_TESTS_TORTURE_CASE_H
#define ZORPEL_TESTS_TORTURE_CASE_H

#include <cstdint>
#include <string>
#include <vector>

#include "zorpel.h"

/* What is called. The last two reach what no command line does: coarsening of tiny inputs, and the
 * direct k-way partitioner. */
enum Entry {
    ENTRY_RECURSIVE, // ZORPEL_PartRecursive
    ENTRY_INTERNAL,  // ZORPEL_PartRecursiveInternal
    ENTRY_REFINE,    // ZORPEL_2WayRefine
    ENTRY_SHALLOW,   // MultilevelPartition__ that coarsens to `coarsento` vertices
    ENTRY_DIRECT,    // MultilevelKwayPartition__, rtype its objective
    NENTRIES
};

/*   T1  eptr [nhedges + 1] starts at 0 and never falls; a hyperedge holds distinct vertices
 *   T2  vwgts and hewgts are empty (a null argument) or hold one weight for each
 *   T3  part [nvtxs] holds a part or -1 with the fixed option, sides for ENTRY_REFINE, else 0
 */
struct Case {
    std::string family;
    int nvtxs;
    std::vector<int> eptr, eind, vwgts, hewgts, part;
    Entry entry;
    int nparts, ubfactor, coarsento;
    bool polish; // ENTRY_SHALLOW: kwayrefine
    int options[ZORPEL_NOPTIONS];
};

inline int count_hedges(const Case &c)
{
    return static_cast<int>(c.eptr.size()) - 1;
}

inline int hedge_size(const Case &c, int e)
{
    const size_t i = static_cast<size_t>(e);
    return c.eptr[i + 1] - c.eptr[i];
}

inline int vertex_weight(const Case &c, int v)
{
    return c.vwgts.empty() ? 1 : c.vwgts[static_cast<size_t>(v)];
}

inline int hedge_weight(const Case &c, int e)
{
    return c.hewgts.empty() ? 1 : c.hewgts[static_cast<size_t>(e)];
}

/* A case without vertices or hyperedges, options at their plainest. */
Case empty_case();

/* Appends a hyperedge; vertices listed again are dropped. */
void add_hedge(Case *c, const std::vector<int> &pins);

/* Whether the call keeps pre-assigned parts. */
bool is_fixed(const Case &c);

std::string to_text(const Case &c);

/* False, and *c of no use, when the text is not a saved case. */
bool from_text(const std::string &text, Case *c);
bool load_case(const std::string &name, Case *c);
bool save_case(const std::string &name, const Case &c, const std::string &why);

#endif
