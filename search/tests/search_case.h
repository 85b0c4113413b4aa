/* SPDX-License-Identifier: MIT */
/* search/tests/search_case.h: random searches for the programs that try many of them. */
#ifndef ZORPEL_SEARCH_TESTS_SEARCH_CASE_H
#define ZORPEL_SEARCH_TESTS_SEARCH_CASE_H

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "search/search.h"

using Ints = std::vector<int>;

inline int draw(std::mt19937 &random, int from, int to)
{
    return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
}

/* A hypergraph with all that a search can be told about it. */
struct SearchCase {
    int n = 0, nparts = 2;
    Ints eptr = {0}, eind, vwgts, hewgts, fixed, group, start;
    std::vector<int64_t> most, least;
    Objective objective = Objective::cut;

    FlatHypergraph flat() const
    {
        return {n,
                static_cast<int>(hewgts.size()),
                eptr.data(),
                eind.data(),
                vwgts.data(),
                hewgts.data()};
    }
    Constraints constraints() const
    {
        return {fixed.empty() ? nullptr : fixed.data(), group.empty() ? nullptr : group.data()};
    }
    Bounds bounds() const
    {
        return {nparts, const_cast<int64_t *>(most.data()), const_cast<int64_t *>(least.data())};
    }
};

/* Hyperedges of up to size pins, of vertices that are mostly close. */
inline void draw_hyperedges(std::mt19937 &random, SearchCase *c, int m, int size)
{
    for (int e = 0; e < m; e++) {
        const int npins = draw(random, 1, std::min(size, c->n)), first = draw(random, 0, c->n - 1);
        Ints pins;
        for (int i = 0; i < npins; i++) {
            const int reach = random() % 4 == 0 ? c->n : std::min(c->n, npins + 2);
            pins.push_back((first + draw(random, 0, reach - 1)) % c->n);
        }
        std::sort(pins.begin(), pins.end());
        pins.erase(std::unique(pins.begin(), pins.end()), pins.end());
        c->eind.insert(c->eind.end(), pins.begin(), pins.end());
        c->eptr.push_back(static_cast<int>(c->eind.size()));
        c->hewgts.push_back(1);
    }
}

/* Parts of at most epsilon percent above the average, rounded up. */
inline void set_epsilon(SearchCase *c, int epsilon)
{
    int64_t total = 0;
    for (const int w : c->vwgts) total += w;
    const int64_t average = (total + c->nparts - 1) / c->nparts;
    c->most.assign(static_cast<size_t>(c->nparts),
                   std::min(total, average * (100 + epsilon) / 100));
    c->least.assign(static_cast<size_t>(c->nparts), total >= c->nparts ? 1 : 0);
}

/* What where costs and by how much its parts are outside their bounds, counted plainly. */
struct PlainFigures {
    int64_t objective, excess;
};

inline PlainFigures plain_figures(const SearchCase &c, const int *where)
{
    PlainFigures figures = {0, 0};
    std::vector<int64_t> weight(static_cast<size_t>(c.nparts), 0);
    for (size_t v = 0; v < c.vwgts.size(); v++) weight[static_cast<size_t>(where[v])] += c.vwgts[v];
    for (size_t p = 0; p < weight.size(); p++)
        figures.excess += std::max<int64_t>(0, weight[p] - c.most[p]) +
                          std::max<int64_t>(0, c.least[p] - weight[p]);
    for (size_t e = 0; e < c.hewgts.size(); e++) {
        std::vector<bool> seen(static_cast<size_t>(c.nparts), false);
        int64_t d = 0;
        for (int j = c.eptr[e]; j < c.eptr[e + 1]; j++) {
            const size_t p = static_cast<size_t>(where[c.eind[static_cast<size_t>(j)]]);
            d += !seen[p];
            seen[p] = true;
        }
        if (d < 2) continue;
        const int64_t times = c.objective == Objective::cut   ? 1
                              : c.objective == Objective::km1 ? d - 1
                                                              : d;
        figures.objective += c.hewgts[e] * times;
    }
    return figures;
}

#endif
