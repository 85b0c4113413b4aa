// SPDX-License-Identifier: MIT
/* model/torture_optimum.cpp: how far results are from the optimum, found by trying everything.
 *
 * Random hypergraphs of at most 12 vertices (9 for 3 parts, 8 for 4) with weights of 1. Two parts:
 * the least cut of all bisections within the bounds. More parts: of all partitions whose heaviest
 * part is no heavier than the result's. A result below the optimum would be a mistake of ours.
 * usage: torture_optimum CASES SEED
 */
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "torture_check.h"
#include "torture_draw.h"

struct Tally {
    int nparts, runs;
    long cases, optimal, within_one;
    double excess, worst; // of cut over optimum, relative, on cases with a positive optimum
    long positive;
};

// Pins of each hyperedge as a set of bits.
static std::vector<unsigned> bits_of(const Case &c)
{
    std::vector<unsigned> sets;
    for (int e = 0; e < count_hedges(c); e++) {
        unsigned set = 0;
        for (int j = c.eptr[static_cast<size_t>(e)]; j < c.eptr[static_cast<size_t>(e) + 1]; j++)
            set |= 1u << c.eind[static_cast<size_t>(j)];
        sets.push_back(set);
    }
    return sets;
}

/* Whether the partition in `parts` (bits of each part) may compete. */
static bool is_admitted(const unsigned *parts, int nparts, int least, int most)
{
    for (int p = 0; p < nparts; p++) {
        const int weight = __builtin_popcount(parts[p]);
        if (weight < least || weight > most) return false;
    }
    return true;
}

static int cut_of(const std::vector<unsigned> &hedges, const unsigned *parts, int nparts)
{
    int cut = 0;
    for (const unsigned hedge : hedges) {
        bool whole = false;
        for (int p = 0; p < nparts && !whole; p++) whole = (hedge & ~parts[p]) == 0;
        cut += !whole;
    }
    return cut;
}

// Puts vertex v and those behind it everywhere; vertex 0 stays in part 0.
static void try_all(const std::vector<unsigned> &hedges, unsigned *parts, int nparts, int nvtxs,
                    int v, int least, int most, int *best)
{
    if (v == nvtxs) {
        if (is_admitted(parts, nparts, least, most))
            *best = std::min(*best, cut_of(hedges, parts, nparts));
        return;
    }
    for (int p = 0; p < (v == 0 ? 1 : nparts); p++) {
        parts[p] |= 1u << v;
        try_all(hedges, parts, nparts, nvtxs, v + 1, least, most, best);
        parts[p] &= ~(1u << v);
    }
}

/* The lower of the two sides' bounds, in the engine's own precision. */
static int least_side(int nvtxs)
{
    return static_cast<int>((0.5 - static_cast<double>(0.1f)) * nvtxs);
}

static void tally_case(Tally *tally, const Case &c)
{
    const Outcome outcome = make_call(c);
    const Figures figures = count_figures(c, outcome.part, c.nparts);
    const long long heaviest = *std::max_element(figures.weight.begin(), figures.weight.end());
    const bool two = c.nparts == 2;
    const int least = two ? least_side(c.nvtxs) : 0;
    const int most = two ? c.nvtxs : static_cast<int>(heaviest);
    unsigned parts[4] = {};
    int best = 1 << 30;
    try_all(bits_of(c), parts, c.nparts, c.nvtxs, 0, least, most, &best);
    if (figures.cut < best) {
        fprintf(stderr, "better than the optimum %d: %lld\n%s", best, figures.cut,
                to_text(c).c_str());
        exit(1);
    }
    tally->cases++;
    tally->optimal += figures.cut == best;
    tally->within_one += figures.cut <= best + 1;
    if (best == 0) return;
    const double excess = static_cast<double>(figures.cut - best) / best;
    tally->positive++;
    tally->excess += excess;
    tally->worst = std::max(tally->worst, excess);
}

static Case plain_case(uint64_t seed, int most_vtxs, int nparts, int nruns)
{
    Case c = draw_small_case(seed, most_vtxs);
    c.vwgts.clear();
    c.hewgts.clear();
    c.part.assign(static_cast<size_t>(c.nvtxs), 0);
    c.entry = ENTRY_RECURSIVE;
    c.nparts = nparts;
    c.ubfactor = 10;
    const int options[ZORPEL_NOPTIONS] = {
        1, nruns, ZORPEL_CTYPE_HFC, ZORPEL_RTYPE_FM, ZORPEL_VCYCLE_END, 0, 0, 1, 0};
    std::copy(options, options + ZORPEL_NOPTIONS, c.options);
    return c;
}

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    const long ncases = atol(argv[1]);
    const uint64_t seed = strtoull(argv[2], nullptr, 10);
    for (int nparts = 2; nparts <= 4; nparts++) {
        for (const int nruns : {1, 10}) {
            Tally tally = {nparts, nruns, 0, 0, 0, 0, 0, 0};
            const int most = nparts == 2 ? 12 : nparts == 3 ? 9 : 8;
            for (uint64_t i = 0; tally.cases < ncases; i++) {
                const Case c = plain_case(seed * 1000003 + i, most, nparts, nruns);
                if (c.nvtxs >= nparts && count_hedges(c) > 0) tally_case(&tally, c);
            }
            const double n = static_cast<double>(tally.cases);
            printf("%d parts, %2d runs: %ld cases, optimal %.2f %%, at most one above %.2f %%, "
                   "mean excess %.2f %%, worst %.0f %%\n",
                   nparts, nruns, tally.cases, 100 * static_cast<double>(tally.optimal) / n,
                   100 * static_cast<double>(tally.within_one) / n,
                   tally.positive > 0 ? 100 * tally.excess / static_cast<double>(tally.positive)
                                      : 0.0,
                   100 * tally.worst);
        }
    }
    return 0;
}
