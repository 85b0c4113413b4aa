// SPDX-License-Identifier: MIT
/* partition/recursive.cpp: recursive bisection into any number of parts.
 *
 * The left half is recursed into, the right half iterated on. With an odd number of parts the
 * right half gets the extra one. Fixed vertices are compressed first, one vertex per part. With
 * threads to spare the two halves are partitioned side by side, to the same end.
 */
#include "partition/recursive.h"

#include <cassert>

#include "core/memory.h"
#include "core/numbers.h"
#include "core/trace.h"
#include "core/vectors.h"
#include "kway/kway_gains.h"
#include "kway/uncoarsen_kway.h"
#include "kway/refine_random.h"
#include "partition/bisection.h"
#include "partition/fixed.h"
#include "partition/halves.h"
#include "partition/split.h"
#include "partition/vcycle.h"

static void free_half(HGraph *graph)
{
    QXfree__(&graph->label, LTERM);
    if (graph->keep != 1) FreeHGraph__(graph);
}

int MLRB__(PartCtrl *ctrl, HGraph *graph, int *part, int k, int offset)
{
    long long cuts = 0; // the cuts of reconstructed halves add up beyond the total
    for (;;) {
        const int left = k / 2;
        assert(left >= 1 && k - left >= left && offset >= 0);
        assert(graph->label != nullptr || graph->ncells == 0);
        ctrl->splitratio = static_cast<float>(static_cast<double>(left) / k);
        int *bisection = imalloc__(static_cast<size_t>(graph->ncells), "MLRB: bisection");
        cuts += Hypergraph_Bisection__(ctrl, graph, bisection);
        for (int v = 0; v < graph->ncells; v++) part[graph->label[v]] = bisection[v] + offset;
        HGraph *lgraph = nullptr, *rgraph = nullptr;
        if (k > 2) {
            lgraph = CreateHGraph__();
            rgraph = CreateHGraph__();
            SplitGraphPart__(ctrl, graph, bisection, lgraph, rgraph);
            assert(lgraph->ncells + rgraph->ncells == graph->ncells);
            assert(lgraph->nfixed + rgraph->nfixed == graph->nfixed);
        }
        QXfree__(&bisection, LTERM);
        free_half(graph);
        if (k == 2) return clamp_int(cuts);
        if (left == 1) // done already; its vertices have their part
            free_half(lgraph);
        else if (long long both;
                 ctrl->crew != nullptr &&
                 partition_side_by_side(ctrl, lgraph, rgraph, part, left, k - left, offset, &both))
            return clamp_int(cuts + both);
        else
            cuts += MLRB__(ctrl, lgraph, part, left, offset);
        // vertices of the right half stand at offset + 1 until its own bisection numbers them
        graph = rgraph;
        offset += left;
        k -= left;
    }
}

/* Polishes the partition of graph by k-way refinement, bounded by the balance that bisection
 * reached and not by the caller's factor; returns the cut. */
static int polish_kway(PartCtrl *ctrl, HGraph *graph, int *part)
{
    assert(ctrl->nparts > 2 && graph->nislands == 0 && graph->incptr != nullptr);
    const int rtype = ctrl->RType;
    ctrl->RType = OBJECTIVE_CUT;
    int *kpwgts = ismalloc__(static_cast<size_t>(ctrl->nparts), 0, "MultilevelPartition: kpwgts");
    for (int v = 0; v < graph->ncells; v++) kpwgts[part[v]] += graph->cellwgt[v];
    const double heaviest = kpwgts[iamax__(ctrl->nparts, kpwgts)];
    assert(heaviest >= 0);
    ctrl->ubfactor = static_cast<float>(ctrl->nparts * heaviest /
                                        static_cast<double>(iasum__(ctrl->nparts, kpwgts)));
    AllocateKwayRefinementMemory__(ctrl, graph);
    icopy__(graph->ncells, part, graph->where);
    refine_kway_random(ctrl, graph, KWAY_PASSES, OBJECTIVE_CUT, KwayRecords::dropped);
    free_kway_arrays(graph);
    VCycleRefinementKway__(ctrl, graph, VCYCLES);
    icopy__(graph->ncells, graph->where, part);
    ctrl->RType = rtype;
    QXfree__(&kpwgts, LTERM);
    return graph->mincut;
}

/* Partitions graph, whose leading nfixed vertices are fixed, into part. */
static int partition_graph(PartCtrl *ctrl, HGraph *graph, int *part, int nfixed)
{
    assert(nfixed >= 0 && nfixed <= graph->ncells && graph->label == nullptr);
    graph->keep = 1;
    graph->nfixed = nfixed;
    graph->label = imalloc__(static_cast<size_t>(graph->ncells), "MultilevelPartition: label");
    for (int v = 0; v < graph->ncells; v++) graph->label[v] = v;
    const int cut = MLRB__(ctrl, graph, part, ctrl->nparts, 0);
    if (ctrl->nparts > 2 && ctrl->kwayrefine) return polish_kway(ctrl, graph, part);
    return cut;
}

static int partition_with_fixed(PartCtrl *ctrl, HGraph *graph, int *part)
{
    int *orgpart = imalloc__(static_cast<size_t>(graph->ncells), "orgpart");
    icopy__(graph->ncells, part, orgpart);
    CompressFixedCells__(ctrl, graph, part);
    HGraph *const compressed = graph->coarser;
    assert(compressed->ncells >= ctrl->nparts);
    compressed->finer = nullptr;
    graph->coarser = nullptr;
    int *fpart = imalloc__(static_cast<size_t>(compressed->ncells), "MultilevelPartition: fpart");
    const int cut = partition_graph(ctrl, compressed, fpart, ctrl->nparts);
    ProjectFixedCells__(ctrl, graph, part, fpart);
    for (int v = 0; v < graph->ncells; v++)
        if (orgpart[v] != -1 && orgpart[v] != part[v])
            print_trace(ctrl, "Fixing failed: %d %d %d\n", v, orgpart[v], part[v]);
    QXfree__(&orgpart, &fpart, LTERM);
    FreeHGraph__(compressed);
    return cut;
}

int MultilevelPartition__(PartCtrl *ctrl, HGraph *graph, int *part)
{
    if (ctrl->fixed) return partition_with_fixed(ctrl, graph, part);
    return partition_graph(ctrl, graph, part, 0);
}
