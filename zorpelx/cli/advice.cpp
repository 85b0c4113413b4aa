// SPDX-License-Identifier: MIT
/* zorpelx/cli/advice.cpp: what a balance factor means for the parts, and whether it can be kept.
 *
 * k parts come from a tree of bisections: floor(k/2) parts to side 0, the rest to side 1, and so on
 * until each side is one part. Each bisection bounds only the lighter side from below, at its
 * share less the factor; the other side gets all the rest. What a part may weigh compounds along
 * its path. An assignment within all limits is looked for greedily along the same tree; that there
 * is none is proved by single vertices, by pairs, by fixed parts, or by all sums of weights that
 * the first bisection can make.
 */
#include "advice.h"

#include <algorithm>
#include <numeric>

#include "casts.h"
#include "failure.h"

constexpr int64_t MOST_SUM_STEPS = 200000000; // words touched while all sums are made

constexpr int SINGLE_PRECISION = 20; // it errs by less than this power of a half

/* Lower bounds of the two sides of one bisection. */
struct BisectionBounds {
    int64_t side0, side1;
};

/* Side 0 in single precision, side 1 in double, both cut to whole numbers; no side is below 0. */
static BisectionBounds bisection_bounds(int64_t nparts, int ubfactor, int64_t total)
{
    const float share =
        static_cast<float>(static_cast<double>(nparts / 2) / static_cast<double>(nparts));
    const float factor = static_cast<float>(ubfactor / 100.0);
    const float least0 = (share - factor) * static_cast<float>(total);
    const double least1 = (1.0 - static_cast<double>(share) - static_cast<double>(factor)) *
                          static_cast<double>(total);
    return {std::max(static_cast<int64_t>(least0), int64_t{0}),
            std::max(static_cast<int64_t>(least1), int64_t{0})};
}

/* Weights that a part, or several together, can have. */
struct WeightRange {
    int64_t least, most;
};

/* In single precision a bound does not quite grow with the weight: where the weight is only known
 * to be in a range, this much is added on both sides. */
static int64_t rounding(WeightRange range)
{
    return range.least == range.most ? 0 : range.most >> SINGLE_PRECISION;
}

static WeightRange widened(int64_t least, int64_t most, int64_t by)
{
    return {std::max(least - by, int64_t{0}), most + by};
}

/* Ranges of nparts parts that weigh range together, into least and most. */
static void compound(int64_t nparts, int ubfactor, WeightRange range, int64_t *least, int64_t *most)
{
    if (nparts == 1) {
        *least = range.least;
        *most = range.most;
        return;
    }
    const int64_t half = nparts / 2, error = rounding(range);
    const BisectionBounds low = bisection_bounds(nparts, ubfactor, range.least);
    const BisectionBounds high = bisection_bounds(nparts, ubfactor, range.most);
    compound(half, ubfactor, widened(low.side0, range.most - high.side1, error), least, most);
    compound(nparts - half, ubfactor, widened(low.side1, range.most - high.side0, error),
             least + half, most + half);
}

/* The refinement of all parts together bounds them all by the ratio of the heaviest to the
 * average, which is at most what the bisections leave. */
static WeightRange polished(int64_t nparts, int64_t total, WeightRange all)
{
    const float weight = static_cast<float>(total), count = static_cast<float>(nparts);
    const float ratio = static_cast<float>(
        static_cast<double>(nparts) * static_cast<double>(all.most) / static_cast<double>(total));
    const int64_t least = static_cast<int64_t>(weight / (count * ratio));
    const int64_t most = static_cast<int64_t>(ratio * weight / count);
    return widened(std::min(all.least, least), std::max(all.most, most), rounding(all));
}

PartRanges part_ranges(int64_t nparts, int ubfactor, int64_t total)
{
    const size_t size = static_cast<size_t>(nparts);
    PartRanges limits = {std::vector<int64_t>(size), std::vector<int64_t>(size), 0, 0};
    compound(nparts, ubfactor, {total, total}, limits.least.data(), limits.most.data());
    WeightRange all = {*std::min_element(limits.least.begin(), limits.least.end()),
                       *std::max_element(limits.most.begin(), limits.most.end())};
    if (nparts > 2 && nparts <= MOST_POLISHED && total > 0) all = polished(nparts, total, all);
    limits.lightest = all.least;
    limits.heaviest = all.most;
    return limits;
}

double worst_excess(const PartRanges &limits, int64_t total)
{
    if (total == 0) return 0;
    return 100 * (static_cast<double>(limits.heaviest) * static_cast<double>(limits.most.size()) /
                      static_cast<double>(total) -
                  1);
}

int largest_factor(int64_t nparts, int64_t total, double percent)
{
    for (int factor = MOST_UBFACTOR; factor > 0; factor--)
        if (worst_excess(part_ranges(nparts, factor, total), total) <= percent) return factor;
    return 0;
}

std::string no_factor_text(int64_t nparts, int64_t total, double percent)
{
    return text_of("no --ubfactor keeps %lld parts within %g %% of the average for certain: with "
                   "--ubfactor 1 a part can be %.2f %% above it",
                   ll(nparts), percent, worst_excess(part_ranges(nparts, 1, total), total));
}

/* A search for an assignment: free vertices in decreasing weight, and the fixed weight of each
 * part. */
struct SideSearch {
    const std::vector<int64_t> &fixed; // [nparts]
    int ubfactor;
};

static int64_t sum_of(const std::vector<int64_t> &weights, int64_t begin, int64_t end)
{
    return std::accumulate(weights.begin() + begin, weights.begin() + end, int64_t{0});
}

/* Adds to side 0, which weighs sum, free weights that keep it at most `most`, heaviest first. */
static void fill_side(const std::vector<int64_t> &free, int64_t most, std::vector<bool> *taken,
                      int64_t *sum)
{
    for (size_t i = 0; i < free.size(); i++) {
        if ((*taken)[i] || *sum + free[i] > most) continue;
        (*taken)[i] = true;
        *sum += free[i];
    }
}

/* Assigns the free weights [decreasing] to the parts begin .. begin + nparts - 1; false if that
 * is not managed. */
static bool assign(const SideSearch &search, const std::vector<int64_t> &free, int64_t begin,
                   int64_t nparts)
{
    if (nparts == 1) return true;
    const int64_t half = nparts / 2;
    const int64_t fixed = sum_of(search.fixed, begin, begin + nparts);
    const int64_t total = fixed + total_weight(free);
    const BisectionBounds bounds = bisection_bounds(nparts, search.ubfactor, total);
    const int64_t most = total - bounds.side1;
    const int64_t goal = std::clamp(total * half / nparts, std::min(bounds.side0, most), most);
    int64_t sum = sum_of(search.fixed, begin, begin + half);
    std::vector<bool> taken(free.size(), false);
    fill_side(free, goal, &taken, &sum);
    if (sum < bounds.side0) fill_side(free, most, &taken, &sum);
    if (sum < bounds.side0 || sum > most) return false;
    std::vector<int64_t> sides[2];
    for (size_t i = 0; i < free.size(); i++) sides[taken[i] ? 0 : 1].push_back(free[i]);
    return assign(search, sides[0], begin, half) &&
           assign(search, sides[1], begin + half, nparts - half);
}

/* Marks in sums every sum that was marked, plus weight. */
static void add_shifted(std::vector<uint64_t> *sums, int64_t weight)
{
    const size_t words = static_cast<size_t>(weight / 64);
    const unsigned bits = static_cast<unsigned>(weight % 64);
    for (size_t i = sums->size(); i-- > words;) {
        uint64_t word = (*sums)[i - words] << bits;
        if (bits > 0 && i > words) word |= (*sums)[i - words - 1] >> (64 - bits);
        (*sums)[i] |= word;
    }
}

/* Equal weights count - 1, - 2, - 4, ... times as one: few items make the same sums. */
static std::vector<int64_t> bundled(const std::vector<int64_t> &weights)
{
    std::vector<int64_t> items;
    for (size_t i = 0, j; i < weights.size(); i = j) {
        for (j = i; j < weights.size() && weights[j] == weights[i]; j++) continue;
        int64_t left = static_cast<int64_t>(j - i);
        for (int64_t times = 1; left > 0; left -= times, times *= 2)
            items.push_back(weights[i] * std::min(times, left));
    }
    return items;
}

/* True if it is proved that no set of weights [decreasing] sums to least .. most. */
static bool no_sum_between(const std::vector<int64_t> &weights, int64_t least, int64_t most)
{
    const std::vector<int64_t> items = bundled(weights);
    const int64_t nwords = most / 64 + 1;
    if (least > most) return true;
    if (static_cast<int64_t>(items.size()) > MOST_SUM_STEPS / nwords) return false;
    std::vector<uint64_t> sums(static_cast<size_t>(nwords), 0);
    sums[0] = 1;
    for (const int64_t item : items)
        if (item <= most) add_shifted(&sums, item);
    for (int64_t sum = least; sum <= most; sum++)
        if (sums[static_cast<size_t>(sum / 64)] >> (sum % 64) & 1) return false;
    return true;
}

/* Why no assignment can be within the limits; empty if that is not proved. */
static std::string impossible(const std::vector<int64_t> &sorted, const std::vector<int64_t> &fixed,
                              const PartRanges &limits, int ubfactor)
{
    const int64_t nparts = static_cast<int64_t>(fixed.size()), heaviest = limits.heaviest;
    const int64_t total = total_weight(sorted);
    if (sorted.front() > heaviest)
        return text_of("a vertex weighs %lld, and no part may weigh more than %lld",
                       ll(sorted.front()), ll(heaviest));
    const size_t most = static_cast<size_t>(nparts);
    if (sorted.size() > most && 2 * sorted[most] > heaviest)
        return text_of("%lld vertices weigh %lld or more each, no part may hold two of them, and "
                       "there are %lld parts",
                       ll(nparts + 1), ll(sorted[most]), ll(nparts));
    for (size_t p = 0; p < fixed.size(); p++)
        if (fixed[p] > heaviest)
            return text_of("vertices that weigh %lld are fixed to part %zu, and no part may weigh "
                           "more than %lld",
                           ll(fixed[p]), p, ll(heaviest));
    const BisectionBounds bounds = bisection_bounds(nparts, ubfactor, total);
    if (no_sum_between(sorted, bounds.side0, total - bounds.side1))
        return text_of("no set of vertices weighs between %lld and %lld, as the first bisection "
                       "needs",
                       ll(bounds.side0), ll(total - bounds.side1));
    return "";
}

Advice advise(const std::vector<int64_t> &weights, const std::vector<int64_t> &fix, int64_t nparts,
              int ubfactor)
{
    const int64_t total = total_weight(weights);
    Advice advice = {part_ranges(nparts, ubfactor, total), UNDECIDED,
                     "an assignment within all limits was neither found nor ruled out"};
    std::vector<int64_t> sorted = weights, free, fixed(static_cast<size_t>(nparts), 0);
    for (size_t v = 0; v < weights.size(); v++) {
        if (fix.empty() || fix[v] < 0)
            free.push_back(weights[v]);
        else
            fixed[static_cast<size_t>(fix[v])] += weights[v];
    }
    std::sort(sorted.rbegin(), sorted.rend());
    std::sort(free.rbegin(), free.rend());
    if (assign({fixed, ubfactor}, free, 0, nparts)) {
        advice.verdict = FEASIBLE;
        advice.reason = "the vertices can be assigned within all limits";
        return advice;
    }
    const std::string why = impossible(sorted, fixed, advice.limits, ubfactor);
    if (why.empty()) return advice;
    advice.verdict = INFEASIBLE;
    advice.reason = why;
    return advice;
}

std::vector<int64_t> heavy_vertices(const std::vector<int64_t> &weights)
{
    const int64_t limit = 2 * total_weight(weights) / 100;
    std::vector<int64_t> heavy;
    for (size_t v = 0; v < weights.size(); v++)
        if (weights[v] > limit) heavy.push_back(static_cast<int64_t>(v));
    std::stable_sort(heavy.begin(), heavy.end(), [&](int64_t a, int64_t b) {
        return weights[static_cast<size_t>(a)] > weights[static_cast<size_t>(b)];
    });
    return heavy;
}
