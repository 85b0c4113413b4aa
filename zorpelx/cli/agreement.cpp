/* zorpelx/cli/agreement.cpp: how far two partitions of the same vertices agree.
 *
 * The overlaps of parts are counted once; matching and index are made from them.
 * Sources: Kuhn, The Hungarian method for the assignment problem, Naval Research Logistics
 * Quarterly 2, 1955, here with shortest augmenting paths; Hubert & Arabie, Comparing partitions,
 * Journal of Classification 2, 1985.
 */
#include "agreement.h"

#include <algorithm>
#include <limits>

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

/* The assignment of columns to rows of least cost. Rows and columns count from 1; of row 0 is the
 * column that is being added. */
struct Assignment {
    size_t n;
    const std::vector<int64_t> *cost;       // [n x n]
    std::vector<int64_t> of_row, of_column; // potentials
    std::vector<size_t> row;                // of each column, 0: none
};

static int64_t reduced_cost(const Assignment &at, size_t row, size_t column)
{
    return (*at.cost)[(row - 1) * at.n + column - 1] - at.of_row[row] - at.of_column[column];
}

/* One step of the shortest path: from the row of column `last` to the nearest column. */
static size_t nearest_column(const Assignment &at, size_t last, const std::vector<bool> &reached,
                             std::vector<int64_t> *distance, std::vector<size_t> *before)
{
    size_t nearest = 0;
    for (size_t column = 1; column <= at.n; column++) {
        if (reached[column]) continue;
        const int64_t cost = reduced_cost(at, at.row[last], column);
        if (cost < (*distance)[column]) {
            (*distance)[column] = cost;
            (*before)[column] = last;
        }
        if (nearest == 0 || (*distance)[column] < (*distance)[nearest]) nearest = column;
    }
    return nearest;
}

static void shift_potentials(Assignment *at, const std::vector<bool> &reached, int64_t by,
                             std::vector<int64_t> *distance)
{
    for (size_t column = 0; column <= at->n; column++) {
        if (reached[column]) {
            at->of_row[at->row[column]] += by;
            at->of_column[column] -= by;
        } else {
            (*distance)[column] -= by;
        }
    }
}

static void add_row(Assignment *at, size_t row)
{
    std::vector<int64_t> distance(at->n + 1, std::numeric_limits<int64_t>::max() / 4);
    std::vector<size_t> before(at->n + 1, 0);
    std::vector<bool> reached(at->n + 1, false);
    size_t column = 0;
    at->row[0] = row;
    while (at->row[column] != 0) {
        reached[column] = true;
        const size_t next = nearest_column(*at, column, reached, &distance, &before);
        shift_potentials(at, reached, distance[next], &distance);
        column = next;
    }
    for (; column != 0; column = before[column]) at->row[column] = at->row[before[column]];
}

/* The column of each row, both from 0. */
static std::vector<size_t> cheapest_assignment(const std::vector<int64_t> &cost, size_t n)
{
    Assignment at = {n, &cost, std::vector<int64_t>(n + 1), std::vector<int64_t>(n + 1),
                     std::vector<size_t>(n + 1)};
    for (size_t row = 1; row <= n; row++) add_row(&at, row);
    std::vector<size_t> columns(n);
    for (size_t column = 1; column <= n; column++) columns[at.row[column] - 1] = column - 1;
    return columns;
}

using Worth = int64_t Overlap::*; // what is counted

static std::vector<Overlap> best_matching(const std::vector<Overlap> &overlaps, size_t n,
                                          Worth worth)
{
    std::vector<int64_t> cost(n * n);
    for (const Overlap &both : overlaps)
        cost[static_cast<size_t>(both.a) * n + static_cast<size_t>(both.b)] = -(both.*worth);
    const std::vector<size_t> columns = cheapest_assignment(cost, n);
    std::vector<Overlap> matched;
    for (const Overlap &both : overlaps)
        if (columns[static_cast<size_t>(both.a)] == static_cast<size_t>(both.b))
            matched.push_back(both);
    return matched;
}

static std::vector<Overlap> greedy_matching(std::vector<Overlap> overlaps, size_t n, Worth worth)
{
    std::stable_sort(overlaps.begin(), overlaps.end(),
                     [worth](const Overlap &x, const Overlap &y) { return x.*worth > y.*worth; });
    std::vector<bool> taken_a(n, false), taken_b(n, false);
    std::vector<Overlap> matched;
    for (const Overlap &both : overlaps) {
        const size_t a = static_cast<size_t>(both.a), b = static_cast<size_t>(both.b);
        if (taken_a[a] || taken_b[b]) continue;
        taken_a[a] = taken_b[b] = true;
        matched.push_back(both);
    }
    std::sort(matched.begin(), matched.end(),
              [](const Overlap &x, const Overlap &y) { return x.a < y.a; });
    return matched;
}

static long double pairs(long double n)
{
    return n * (n - 1) / 2;
}

/* Pairs of vertices that are together in both, against what chance would give. */
static double adjusted_rand(const std::vector<Overlap> &overlaps, size_t nparts, size_t n)
{
    std::vector<int64_t> in_a(nparts), in_b(nparts);
    long double both = 0, together_a = 0, together_b = 0;
    for (const Overlap &overlap : overlaps) {
        in_a[static_cast<size_t>(overlap.a)] += overlap.vertices;
        in_b[static_cast<size_t>(overlap.b)] += overlap.vertices;
        both += pairs(static_cast<long double>(overlap.vertices));
    }
    for (size_t p = 0; p < nparts; p++) {
        together_a += pairs(static_cast<long double>(in_a[p]));
        together_b += pairs(static_cast<long double>(in_b[p]));
    }
    if (n < 2) return 1;
    const long double chance = together_a * together_b / pairs(static_cast<long double>(n));
    const long double most = (together_a + together_b) / 2;
    return most == chance ? 1 : static_cast<double>((both - chance) / (most - chance));
}

Agreement agreement_of(const std::vector<int64_t> &a, const std::vector<int64_t> &b,
                       const std::vector<int64_t> &weight, int64_t nparts)
{
    const std::vector<Overlap> overlaps = overlaps_of(a, b, weight);
    int64_t total = 0;
    for (const int64_t one : weight) total += one;
    const Worth worth = total > 0 ? &Overlap::weight : &Overlap::vertices;
    const size_t n = static_cast<size_t>(nparts);
    Agreement agreement = {};
    agreement.matched = nparts <= MOST_MATCHED ? best_matching(overlaps, n, worth)
                                               : greedy_matching(overlaps, n, worth);
    for (const Overlap &both : agreement.matched) {
        agreement.vertices += both.vertices;
        agreement.weight += both.weight;
    }
    agreement.moved_vertices = static_cast<int64_t>(a.size()) - agreement.vertices;
    agreement.moved_weight = total - agreement.weight;
    agreement.adjusted_rand = adjusted_rand(overlaps, n, a.size());
    return agreement;
}
