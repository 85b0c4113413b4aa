// SPDX-License-Identifier: MIT
/* zorpelx/report/likeness.cpp: how far two partitions of one hypergraph agree. */
#include "likeness.h"

#include <algorithm>

static std::vector<Overlap> heaviest_first(std::vector<Overlap> overlaps)
{
    std::stable_sort(overlaps.begin(), overlaps.end(), [](const Overlap &x, const Overlap &y) {
        return x.weight != y.weight ? x.weight > y.weight : x.vertices > y.vertices;
    });
    return overlaps;
}

static void add_changed(ChangedNet changed, size_t most, std::vector<ChangedNet> *list)
{
    const auto heavier = [](const ChangedNet &a, const ChangedNet &b) {
        return a.weight != b.weight ? a.weight > b.weight : a.net < b.net;
    };
    list->insert(std::upper_bound(list->begin(), list->end(), changed, heavier), changed);
    if (list->size() > most) list->pop_back();
}

static void compare_nets(const Hypergraph &graph, const NamedPartition &first,
                         const NamedPartition &second, size_t nchanged, Likeness *likeness)
{
    std::vector<int64_t> count(static_cast<size_t>(std::max(first.nparts, second.nparts)), 0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const int64_t before = static_cast<int64_t>(shares_of(graph, first, e, &count).size());
        const int64_t after = static_cast<int64_t>(shares_of(graph, second, e, &count).size());
        const int64_t weight = graph.netwgt[static_cast<size_t>(e)];
        if (before < 2 && after > 1) {
            likeness->ncut++;
            likeness->cutwgt += weight;
            add_changed({e, weight, after}, nchanged, &likeness->cut);
        } else if (before > 1 && after < 2) {
            likeness->nmend++;
            likeness->mendwgt += weight;
            add_changed({e, weight, before}, nchanged, &likeness->mended);
        }
    }
}

Likeness likeness_of(const Hypergraph &graph, const NamedPartition &first,
                     const NamedPartition &second, size_t nchanged)
{
    Likeness likeness = {};
    likeness.parts =
        agreement_of(first.part, first.nparts, second.part, second.nparts, graph.vertexwgt);
    likeness.flows = heaviest_first(likeness.parts.overlaps);
    compare_nets(graph, first, second, nchanged, &likeness);
    return likeness;
}
