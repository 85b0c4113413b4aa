// SPDX-License-Identifier: MIT
/* zorpelx/report/agreement.cpp: how far two partitions of the same vertices agree.
 *
 * The overlaps of parts are counted once; matching and index are made from them.
 * Source: Hubert & Arabie, Comparing partitions, Journal of Classification 2, 1985, for the index.
 */
#include "agreement.h"

#include <algorithm>

#include "assignment.h"

static std::vector<Overlap> overlaps_of(const std::vector<int64_t> &a,
                                        const std::vector<int64_t> &b,
                                        const std::vector<int64_t> &weight)
{
    std::vector<Overlap> single, list;
    for (size_t v = 0; v < a.size(); v++) single.push_back({a[v], b[v], 1, weight[v]});
    std::sort(single.begin(), single.end(), [](const Overlap &x, const Overlap &y) {
        return x.a != y.a ? x.a < y.a : x.b < y.b;
    });
    for (const Overlap &one : single) {
        if (list.empty() || list.back().a != one.a || list.back().b != one.b)
            list.push_back({one.a, one.b, 0, 0});
        list.back().vertices++;
        list.back().weight += one.weight;
    }
    return list;
}

using Worth = int64_t Overlap::*; // what is counted

/* Rows are the parts of whichever partition has fewer. */
static std::vector<int64_t> best_twins(const std::vector<Overlap> &overlaps, size_t na, size_t nb,
                                       Worth worth)
{
    const bool turned = na > nb; // rows are the parts of b
    std::vector<std::vector<int64_t>> gain(std::min(na, nb),
                                           std::vector<int64_t>(std::max(na, nb), 0));
    for (const Overlap &both : overlaps) {
        const size_t a = static_cast<size_t>(both.a), b = static_cast<size_t>(both.b);
        gain[turned ? b : a][turned ? a : b] = both.*worth;
    }
    const std::vector<size_t> chosen = best_assignment(gain);
    std::vector<int64_t> twin(nb, -1);
    for (size_t row = 0; row < chosen.size(); row++)
        twin[turned ? row : chosen[row]] = static_cast<int64_t>(turned ? chosen[row] : row);
    return twin;
}

static std::vector<int64_t> greedy_twins(std::vector<Overlap> overlaps, size_t na, size_t nb,
                                         Worth worth)
{
    std::stable_sort(overlaps.begin(), overlaps.end(),
                     [worth](const Overlap &x, const Overlap &y) { return x.*worth > y.*worth; });
    std::vector<bool> taken(na, false);
    std::vector<int64_t> twin(nb, -1);
    for (const Overlap &both : overlaps) {
        const size_t a = static_cast<size_t>(both.a), b = static_cast<size_t>(both.b);
        if (taken[a] || twin[b] >= 0) continue;
        taken[a] = true;
        twin[b] = both.a;
    }
    return twin;
}

/* The pairs of twins that have vertices in common; other parts have no twin. */
static void take_matched(Agreement *agreement)
{
    std::vector<int64_t> twin(agreement->twin.size(), -1);
    for (const Overlap &both : agreement->overlaps) {
        const size_t b = static_cast<size_t>(both.b);
        if (agreement->twin[b] != both.a) continue;
        twin[b] = both.a;
        agreement->matched.push_back(both);
        agreement->vertices += both.vertices;
        agreement->weight += both.weight;
    }
    agreement->twin = std::move(twin);
}

static long double pairs(long double n)
{
    return n * (n - 1) / 2;
}

/* Pairs of vertices that are together in both, against what chance would give. */
static double adjusted_rand(const std::vector<Overlap> &overlaps, size_t na, size_t nb, size_t n)
{
    std::vector<int64_t> in_a(na), in_b(nb);
    long double both = 0, together_a = 0, together_b = 0;
    for (const Overlap &overlap : overlaps) {
        in_a[static_cast<size_t>(overlap.a)] += overlap.vertices;
        in_b[static_cast<size_t>(overlap.b)] += overlap.vertices;
        both += pairs(static_cast<long double>(overlap.vertices));
    }
    for (const int64_t size : in_a) together_a += pairs(static_cast<long double>(size));
    for (const int64_t size : in_b) together_b += pairs(static_cast<long double>(size));
    if (n < 2) return 1;
    const long double chance = together_a * together_b / pairs(static_cast<long double>(n));
    const long double most = (together_a + together_b) / 2;
    return most == chance ? 1 : static_cast<double>((both - chance) / (most - chance));
}

Agreement agreement_of(const std::vector<int64_t> &a, int64_t na, const std::vector<int64_t> &b,
                       int64_t nb, const std::vector<int64_t> &weight)
{
    int64_t total = 0;
    for (const int64_t one : weight) total += one;
    const Worth worth = total > 0 ? &Overlap::weight : &Overlap::vertices;
    const size_t rows = static_cast<size_t>(na), columns = static_cast<size_t>(nb);
    Agreement agreement = {};
    agreement.overlaps = overlaps_of(a, b, weight);
    agreement.exact = std::max(na, nb) <= MOST_MATCHED;
    agreement.twin = agreement.exact ? best_twins(agreement.overlaps, rows, columns, worth)
                                     : greedy_twins(agreement.overlaps, rows, columns, worth);
    take_matched(&agreement);
    agreement.moved_vertices = static_cast<int64_t>(a.size()) - agreement.vertices;
    agreement.moved_weight = total - agreement.weight;
    agreement.adjusted_rand = adjusted_rand(agreement.overlaps, rows, columns, a.size());
    return agreement;
}
