/* SPDX-License-Identifier: MIT */
/* search/tests/search_support.h: random hypergraphs and partitions for the tests of the search. */
#ifndef ZORPEL_SEARCH_TESTS_SEARCH_SUPPORT_H
#define ZORPEL_SEARCH_TESTS_SEARCH_SUPPORT_H

#include <algorithm>
#include <random>
#include <vector>

#include "search/parts.h"
#include "support.h"

/* A hypergraph of n vertices and m hyperedges of up to most pins, with incidence. */
inline HGraphPtr random_hypergraph(std::mt19937 &random, int n, int m, int most, bool weighted)
{
    HGraph *const graph = CreateHGraph__();
    graph->ncells = n;
    graph->nislands = 0;
    graph->nnets = m;
    graph->nfixed = 0;
    std::vector<int> ptr = {0}, ind, order(static_cast<size_t>(n));
    for (int v = 0; v < n; v++) order[static_cast<size_t>(v)] = v;
    for (int e = 0; e < m; e++) {
        const int size = std::min(n, 1 + static_cast<int>(random() % static_cast<unsigned>(most)));
        // neighbours mostly, so that there is something to find
        const int first = static_cast<int>(random() % static_cast<unsigned>(n));
        std::vector<int> pins;
        while (static_cast<int>(pins.size()) < size) {
            const int far = random() % 4 == 0 ? n : std::min(n, size + 3);
            const int v = (first + static_cast<int>(random() % static_cast<unsigned>(far))) % n;
            if (std::find(pins.begin(), pins.end(), v) == pins.end()) pins.push_back(v);
        }
        ind.insert(ind.end(), pins.begin(), pins.end());
        ptr.push_back(static_cast<int>(ind.size()));
    }
    std::vector<int> cellwgt(static_cast<size_t>(n), 1), netwgt(static_cast<size_t>(m), 1);
    if (weighted) {
        for (int &w : cellwgt) w = static_cast<int>(random() % 8);
        for (int &w : netwgt) w = static_cast<int>(random() % 5);
    }
    graph->netptr = new_array(ptr);
    graph->netind = new_array(ind);
    graph->cellwgt = new_array(cellwgt);
    graph->netwgt = new_array(netwgt);
    CreateIncidentHGraph__(graph);
    return HGraphPtr(graph);
}

/* Bounds of nparts equal parts, each at most epsilon percent above the average. */
struct TestBounds : Bounds {
    TestBounds(const HGraph *graph, int parts, int epsilon)
        : mosts(static_cast<size_t>(parts)), leasts(static_cast<size_t>(parts), 0)
    {
        int64_t total = 0;
        for (int v = 0; v < graph->ncells; v++) total += graph->cellwgt[v];
        const int64_t all = 100 * parts;
        for (int64_t &bound : mosts) bound = (total * (100 + epsilon) + all - 1) / all;
        nparts = parts;
        most = mosts.data();
        least = leasts.data();
    }
    std::vector<int64_t> mosts, leasts;
};

inline std::vector<int> random_partition(std::mt19937 &random, int n, int nparts)
{
    std::vector<int> where(static_cast<size_t>(n));
    for (int &p : where) p = static_cast<int>(random() % static_cast<unsigned>(nparts));
    return where;
}

#endif
