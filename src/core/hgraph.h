/* SPDX-License-Identifier: MIT */
/* core/hgraph.h: the hypergraph record of one level of the multilevel scheme. */
#ifndef ZORPEL_CORE_HGRAPH_H
#define ZORPEL_CORE_HGRAPH_H

#include <cassert>

struct PartCtrl;

/* One part that a hyperedge or a vertex is connected to (k-way refinement). */
struct KwayPartDeg {
    int pid;  // part
    int num;  // hyperedge: its pins in pid; vertex: weight made uncut by moving there
    int ties; // vertex only: majority vote of its hyperedges for pid over its own part
    int soed; // vertex only: fall of the sum of lambda(e) w(e) by moving there
};

struct NetKwayInfo {
    int ndegrees;         // lambda(e), parts that the hyperedge touches
    KwayPartDeg *degrees; // view into nrdata, in order of first appearance
};

struct CellKwayInfo {
    int ndegrees;         // other parts that the vertex is connected to
    int id;               // weight of its hyperedges that lie in its part whole
    int ed;               // weight of its cut hyperedges that it alone keeps in its part
    KwayPartDeg *degrees; // view into crdata, in order of first appearance
};

/* Every array is owned by the record unless said otherwise (see borrows), null until its maker
 * fills it.
 *   H1  counts are not negative; netptr[0] == 0, netptr never falls; a hyperedge lists each vertex
 *       at most once
 *   H2  incind lists each vertex's hyperedges once; increasing at levels that
 *       CreateIncidentHGraph__ built, in the order in which they are first encountered at
 *       contracted ones
 *   H3  adjwgt[v] is the sum of netwgt over v's hyperedges
 *   H4  edgewgt[e] is netwgt[e] / (size - 1) rounded to single
 *   H5  where[v] is a part for v < ncells + nislands
 *   H6  ndeg, gain, pwgts, mincut describe where (stale after FM passes, see refine/fm.h)
 */
struct HGraph {
    int ncells;     // vertices, islands excluded while they are parked
    int nislands;   // islands parked behind the ncells vertices
    int nnets;      // hyperedges
    int removedwgt; // weight of hyperedges that contraction dropped on the way here
    int keep;       // 1: the owner of the root frees the record
    bool borrows;   // lists, incidence and weights are those of another record, which frees them
    int nfixed;     // leading vertices that are fixed

    int *incptr;    // [ncells + 1]
    int *incind;    // [netptr[nnets]] hyperedges of each vertex
    int *netptr;    // [nnets + 1]
    int *netind;    // [netptr[nnets]] vertices of each hyperedge
    int *islandmap; // [ncells + nislands] number after parking of each number before
    int *cellwgt;   // [ncells + nislands]
    int *netwgt;    // [nnets]
    int *adjwgt;    // [ncells + nislands]
    float *edgewgt; // [nnets]
    int *label;     // [ncells] number of each vertex in the input; freed by its maker
    int *nearby;    // [ncells] the vertices, neighbours close together; null: as numbered

    int *cellmap;    // [ncells] coarse vertex of each vertex
    int *netmap;     // [nnets] coarse hyperedge of each hyperedge, -1 if dropped
    int *mptr;       // [coarse vertices + 1] groups of merged vertices
    int *mind;       // [ncells] their members
    HGraph *coarser; // owned by this level until projected
    HGraph *finer;   // not owned
    int level;       // contractions since the finest level of this coarsening

    int *where;          // [ncells + nislands] part of each vertex
    const bool *cutnets; // [nnets] whether where cuts each hyperedge: a view; null: not known
    int mincut;          // cut of where
    int *gain;           // [ncells] fall of the cut if the vertex changes sides
    int *ndeg[2];        // [nnets] pins of each hyperedge on side 0 and on side 1
    int pwgts[2];        // weight of each side

    int objval;           // objective that the last k-way refinement optimised
    int minsoed;          // sum of external degrees of where
    NetKwayInfo *nrinfo;  // [nnets]
    CellKwayInfo *crinfo; // [ncells]
    KwayPartDeg *nrdata;  // [netptr[nnets]] storage behind nrinfo
    KwayPartDeg *crdata;  // [ncells x nparts] storage behind crinfo
    int *kpwgts;          // [nparts] weight of each part
    int *kplace;          // [nparts] workspace of kway/kway_gains.h, all -1 between uses
};

inline int net_size(const HGraph *graph, int e)
{
    assert(0 <= e && e < graph->nnets && graph->netptr[e] <= graph->netptr[e + 1]);
    return graph->netptr[e + 1] - graph->netptr[e];
}

/* Where in netind the first pin of e stands that is in another part than e's first; the end of e if
 * there is none. */
inline int end_of_part(const HGraph *graph, const int *where, int e)
{
    const int *const netind = graph->netind;
    assert(0 <= e && e < graph->nnets);
    const int begin = graph->netptr[e], end = graph->netptr[e + 1];
    int j = begin;
    while (j < end && where[netind[j]] == where[netind[begin]]) j++;
    return j;
}

/* Sets every field to its initial value: -1 for counts and sides not known, null, 0. */
void InitHGraph__(HGraph *graph);

/* A new record, initialised. */
HGraph *CreateHGraph__();

/* Frees the record and all its arrays but label and those it borrows; does not follow coarser. */
void FreeHGraph__(HGraph *graph);

/* Frees what partitioning added to a record whose owner keeps it: matching, refinement and k-way
 * arrays, where and islandmap; lists, incidence and weights stay. */
void FreeRootHGraph__(HGraph *graph);

/* Frees the matching arrays, the two-way gains and islandmap: what one V-cycle leaves behind. */
void free_cycle_arrays(HGraph *graph);

/* Frees the k-way arrays and islandmap, not where. */
void free_kway_arrays(HGraph *graph);

/* Builds incptr, incind, adjwgt and edgewgt from the pin lists and netwgt, in O(pins).
 * A hyperedge of one vertex gets an infinite edgewgt. */
void CreateIncidentHGraph__(HGraph *graph);

/* edgewgt of a hyperedge of this weight and size. */
float edge_weight(int netwgt, int size);

/* Writes into cutnets, [nnets], whether where cuts each hyperedge; O(pins). */
void mark_cut_nets(const HGraph *graph, const int *where, bool *cutnets);

/* The most weight that coarsening may merge into one vertex: twice the average of CoarsenTo
 * vertices, those above it left out. Sets ctrl->heavycells when any was left out. */
int ComputeMaxCellWgt__(PartCtrl *ctrl, int n, const int *cellwgt);

/* What hgraph_ok is asked to test. */
enum HGraphStage { HG_LISTS = 1, HG_INCIDENCE = 2, HG_WHERE = 4, HG_GAINS = 8 };

/* Tests the invariants of the stages from scratch: H1; H2 to H4; H5 for two sides; H6. Gains and
 * the cut are left out of H6 where a hyperedge has one pin, as they drift. */
bool hgraph_ok(const HGraph *graph, int stages);

#endif
