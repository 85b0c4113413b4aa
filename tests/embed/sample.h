/* SPDX-License-Identifier: MIT */
/* tests/embed/sample.h: hypergraphs for the tests of libzorpelx. */
#ifndef ZORPEL_TESTS_EMBED_SAMPLE_H
#define ZORPEL_TESTS_EMBED_SAMPLE_H

#include <algorithm>
#include <random>
#include <vector>

#include "zorpelx.hpp"

/* Whether the address sanitizer's heap is in place of the system's. A fork hands its locks to the
 * child as they are, so a child may wait for ever for one that another thread was holding. */
#if defined(__SANITIZE_ADDRESS__)
constexpr bool SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif
#else
constexpr bool SANITIZED = false;
#endif

/* Hyperedges of minsize to 5 vertices that lie near each other, weights from 1 to 4. */
inline zorpelx::Hypergraph random_hypergraph(int nvtxs, int nhedges, unsigned seed, int minsize = 2)
{
    std::mt19937 chance(seed);
    const auto draw = [&](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(chance);
    };
    zorpelx::Hypergraph hypergraph;
    hypergraph.nvtxs = nvtxs;
    for (int e = 0; e < nhedges; e++) {
        std::vector<int> pins;
        const int middle = draw(0, nvtxs - 1);
        for (int size = draw(minsize, 5); size > 0; size--) {
            const int v = (middle + draw(0, 12)) % nvtxs;
            if (std::find(pins.begin(), pins.end(), v) == pins.end()) pins.push_back(v);
        }
        if (static_cast<int>(pins.size()) < minsize) pins = {middle, (middle + 1) % nvtxs};
        hypergraph.add_hyperedge(pins);
        hypergraph.hewgts.push_back(draw(1, 4));
    }
    for (int v = 0; v < nvtxs; v++) hypergraph.vwgts.push_back(draw(1, 4));
    return hypergraph;
}

inline zorpelx::Options options_for(int nparts, int starts = 1, int jobs = 1)
{
    zorpelx::Options options;
    options.nparts = nparts;
    options.nruns = 2;
    options.starts = starts;
    options.jobs = jobs;
    return options;
}

inline zorpelx_result new_result()
{
    zorpelx_result result;
    zorpelx_result_init(&result, sizeof result);
    return result;
}

#endif
