// SPDX-License-Identifier: MIT
/* model/torture_shrink.cpp: the smallest case that still fails.
 *
 * Blocks of hyperedges and vertices are dropped, halves first, then ever smaller ones; then single
 * pins; then each weight and option takes its plainest value. Rounds repeat until one changes
 * nothing. Every try keeps the invariants of a case.
 */
#include "torture_shrink.h"

#include <algorithm>

struct Shrink {
    Case best;
    bool (*fails)(const Case &c);
    int tries_left;
};

// Takes the candidate if it still fails.
static bool try_case(Shrink *shrink, const Case &candidate)
{
    if (shrink->tries_left-- <= 0 || !shrink->fails(candidate)) return false;
    shrink->best = candidate;
    return true;
}

/* The case with its lists put together anew: hyperedges and vertices that are kept, renumbered. */
static Case keep_only(const Case &c, const std::vector<bool> &hedges,
                      const std::vector<bool> &vertices)
{
    Case smaller = c;
    smaller.eptr = {0};
    smaller.eind.clear();
    smaller.vwgts.clear();
    smaller.hewgts.clear();
    smaller.part.clear();
    std::vector<int> number(vertices.size(), -1);
    smaller.nvtxs = 0;
    for (size_t v = 0; v < vertices.size(); v++) {
        if (!vertices[v]) continue;
        number[v] = smaller.nvtxs++;
        smaller.part.push_back(c.part[v]);
        if (!c.vwgts.empty()) smaller.vwgts.push_back(c.vwgts[v]);
    }
    for (size_t e = 0; e < hedges.size(); e++) {
        if (!hedges[e]) continue;
        std::vector<int> pins;
        for (int j = c.eptr[e]; j < c.eptr[e + 1]; j++) {
            const int v = number[static_cast<size_t>(c.eind[static_cast<size_t>(j)])];
            if (v >= 0) pins.push_back(v);
        }
        add_hedge(&smaller, pins);
        if (!c.hewgts.empty()) smaller.hewgts.push_back(c.hewgts[e]);
    }
    return smaller;
}

static bool drop_blocks(Shrink *shrink, bool of_vertices)
{
    bool changed = false;
    const auto count = [&] {
        return static_cast<size_t>(of_vertices ? shrink->best.nvtxs : count_hedges(shrink->best));
    };
    for (size_t block = std::max<size_t>(count() / 2, 1); block > 0; block /= 2) {
        for (size_t begin = 0; begin < count();) {
            std::vector<bool> hedges(static_cast<size_t>(count_hedges(shrink->best)), true);
            std::vector<bool> vertices(static_cast<size_t>(shrink->best.nvtxs), true);
            std::vector<bool> &list = of_vertices ? vertices : hedges;
            for (size_t i = begin; i < std::min(begin + block, list.size()); i++) list[i] = false;
            if (try_case(shrink, keep_only(shrink->best, hedges, vertices)))
                changed = true;
            else
                begin += block;
        }
    }
    return changed;
}

static bool drop_pins(Shrink *shrink)
{
    bool changed = false;
    for (size_t j = 0; j < shrink->best.eind.size();) {
        Case candidate = shrink->best;
        candidate.eind.erase(candidate.eind.begin() + static_cast<long>(j));
        for (int &start : candidate.eptr) start -= start > static_cast<int>(j);
        if (try_case(shrink, candidate))
            changed = true;
        else
            j++;
    }
    return changed;
}

static bool plain_weights(Shrink *shrink, std::vector<int> Case::*weights)
{
    if ((shrink->best.*weights).empty()) return false;
    Case candidate = shrink->best;
    (candidate.*weights).clear();
    if (try_case(shrink, candidate)) return true;
    bool changed = false;
    for (size_t i = 0; i < (shrink->best.*weights).size(); i++) {
        if ((shrink->best.*weights)[i] == 1) continue;
        candidate = shrink->best;
        (candidate.*weights)[i] = 1;
        changed |= try_case(shrink, candidate);
    }
    return changed;
}

static bool plain_number(Shrink *shrink, int *(*field)(Case *c), int plain)
{
    Case candidate = shrink->best;
    int *const number = field(&candidate);
    if (*number == plain) return false;
    *number = plain;
    return try_case(shrink, candidate);
}

static bool plain_options(Shrink *shrink)
{
    const Case plain = empty_case();
    bool changed = false;
    for (int i = 0; i < ZORPEL_NOPTIONS; i++) {
        Case candidate = shrink->best;
        if (candidate.options[i] == plain.options[i] || i == ZORPEL_OPT_FIXED) continue;
        candidate.options[i] = plain.options[i];
        changed |= try_case(shrink, candidate);
    }
    if (is_fixed(shrink->best)) {
        Case candidate = shrink->best;
        candidate.options[ZORPEL_OPT_FIXED] = 0;
        candidate.part.assign(candidate.part.size(), 0);
        changed |= try_case(shrink, candidate);
    } else {
        const auto largest = std::max_element(shrink->best.part.begin(), shrink->best.part.end());
        const int least = largest == shrink->best.part.end() ? 2 : std::max(2, *largest + 1);
        Case candidate = shrink->best;
        candidate.nparts = std::max(least, candidate.nparts / 2);
        if (candidate.nparts < shrink->best.nparts) changed |= try_case(shrink, candidate);
        candidate = shrink->best;
        candidate.nparts = std::max(least, candidate.nparts - 1);
        if (candidate.nparts < shrink->best.nparts) changed |= try_case(shrink, candidate);
    }
    changed |= plain_number(
        shrink, [](Case *c) { return &c->ubfactor; }, plain.ubfactor);
    return changed;
}

Case shrink_case(const Case &c, bool (*fails)(const Case &c), int most_tries)
{
    Shrink shrink = {c, fails, most_tries};
    bool changed = true;
    while (changed && shrink.tries_left > 0) {
        changed = drop_blocks(&shrink, false);
        changed |= drop_blocks(&shrink, true);
        changed |= drop_pins(&shrink);
        changed |= plain_weights(&shrink, &Case::vwgts);
        changed |= plain_weights(&shrink, &Case::hewgts);
        changed |= plain_options(&shrink);
    }
    return shrink.best;
}
