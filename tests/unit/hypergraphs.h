/* SPDX-License-Identifier: MIT */
/* tests/unit/hypergraphs.h: small hypergraphs built by hand, and the control record of the
 * defaults: what the tests of whole calls (support.h) and those of single levels (levels.h) share.
 */
#ifndef ZORPEL_TESTS_UNIT_HYPERGRAPHS_H
#define ZORPEL_TESTS_UNIT_HYPERGRAPHS_H

#include <algorithm>
#include <vector>

#include "core/ctrl.h"
#include "core/hgraph.h"
#include "core/memory.h"

using Ints = std::vector<int>;
using Nets = std::vector<Ints>;

inline size_t at(int i)
{
    return static_cast<size_t>(i);
}

/* A copy of x in an array of malloc's, as records own them; null when x is empty. */
inline int *new_array(const Ints &x)
{
    int *const array = imalloc__(x.size(), "test array");
    std::copy(x.begin(), x.end(), array);
    return array;
}

/* The n entries of array. */
inline Ints to_ints(const int *array, int n)
{
    return n > 0 ? Ints(array, array + n) : Ints();
}

/* Lists one behind the other in ind, list i from ptr[i] on. */
struct FlatLists {
    Ints ptr = {0}, ind;
};

inline FlatLists flat(const Nets &lists)
{
    FlatLists all;
    for (const Ints &list : lists) {
        all.ind.insert(all.ind.end(), list.begin(), list.end());
        all.ptr.push_back(static_cast<int>(all.ind.size()));
    }
    return all;
}

/* A record of the given hyperedges; weights left out are 1. nfixed 0, no incidence. */
inline HGraph *build_hgraph(int ncells, const Nets &nets, const Ints &netwgt, const Ints &cellwgt)
{
    HGraph *const graph = CreateHGraph__();
    const FlatLists lists = flat(nets);
    graph->ncells = ncells;
    graph->nnets = static_cast<int>(nets.size());
    graph->nfixed = 0;
    graph->netptr = new_array(lists.ptr);
    graph->netind = new_array(lists.ind);
    graph->netwgt = new_array(netwgt.empty() ? Ints(nets.size(), 1) : netwgt);
    graph->cellwgt = new_array(cellwgt.empty() ? Ints(at(ncells), 1) : cellwgt);
    return graph;
}

inline Ints net_pins(const HGraph *graph, int e)
{
    return to_ints(graph->netind + graph->netptr[e], net_size(graph, e));
}

/* The control record of the defaults, ready for one bisection in halves; one run, a fixed seed. */
inline PartCtrl default_ctrl()
{
    PartCtrl ctrl = {};
    ctrl.CoarsenTo = COARSEN_TO;
    ctrl.CType = CTYPE_HFC;
    ctrl.RType = RTYPE_FM;
    ctrl.Nruns = 1;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.ubfactor = 0.05f;
    ctrl.seed = 1;
    ctrl.VCycle = VCYCLE_NO;
    ctrl.nparts = 2;
    ctrl.splitratio = 0.5f;
    ctrl.MaxCellWgt = 1 << 29; // above any that a bisection computes, and twice it fits
    return ctrl;
}

#endif
