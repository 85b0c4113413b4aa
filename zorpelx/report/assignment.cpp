// SPDX-License-Identifier: MIT
/* zorpelx/report/assignment.cpp: which part of one partition is which of another.
 *
 * Rows enter one after another. For each a shortest path leads from it, over columns that are taken
 * and the rows that have them, to a free column; along the path every row takes the next column.
 * Potentials keep the reduced costs from falling below zero, so that the paths are shortest ones.
 */
#include "assignment.h"

#include <cassert>
#include <limits>

constexpr size_t NONE = std::numeric_limits<size_t>::max();

/* Of the columns: [m], of the rows: [n]. */
struct Assigning {
    const std::vector<std::vector<int64_t>> &gain;
    std::vector<int64_t> rowprice, columnprice;
    std::vector<size_t> owner;     // row that has the column, or NONE
    std::vector<int64_t> distance; // of the path at work
    std::vector<size_t> before;    // column before this one on the path, or NONE
    std::vector<bool> done;
};

/* Costs are gains with the sign turned. */
static void reach_columns(size_t row, int64_t travelled, size_t from, Assigning *work)
{
    for (size_t j = 0; j < work->owner.size(); j++) {
        if (work->done[j]) continue;
        const int64_t reduced =
            -work->gain[row][j] - work->rowprice[row] - work->columnprice[j] + travelled;
        if (reduced >= work->distance[j]) continue;
        work->distance[j] = reduced;
        work->before[j] = from;
    }
}

static size_t nearest_column(const Assigning &work)
{
    size_t nearest = NONE;
    for (size_t j = 0; j < work.owner.size(); j++)
        if (!work.done[j] && (nearest == NONE || work.distance[j] < work.distance[nearest]))
            nearest = j;
    return nearest;
}

static void raise_prices(size_t row, int64_t length, Assigning *work)
{
    work->rowprice[row] += length;
    for (size_t j = 0; j < work->owner.size(); j++) {
        if (!work->done[j] || work->owner[j] == NONE) continue;
        work->columnprice[j] -= length - work->distance[j];
        work->rowprice[work->owner[j]] += length - work->distance[j];
    }
}

static void enter_row(size_t row, Assigning *work)
{
    const size_t m = work->owner.size();
    work->distance.assign(m, std::numeric_limits<int64_t>::max());
    work->before.assign(m, NONE);
    work->done.assign(m, false);
    reach_columns(row, 0, NONE, work);
    size_t column = nearest_column(*work);
    while (work->owner[column] != NONE) {
        work->done[column] = true;
        reach_columns(work->owner[column], work->distance[column], column, work);
        column = nearest_column(*work);
    }
    raise_prices(row, work->distance[column], work);
    for (size_t last; column != NONE; column = last) {
        last = work->before[column];
        work->owner[column] = last == NONE ? row : work->owner[last];
    }
}

std::vector<size_t> best_assignment(const std::vector<std::vector<int64_t>> &gain)
{
    const size_t n = gain.size(), m = n == 0 ? 0 : gain[0].size();
    assert(n <= m);
    Assigning work = {gain,
                      std::vector<int64_t>(n, 0),
                      std::vector<int64_t>(m, 0),
                      std::vector<size_t>(m, NONE),
                      {},
                      {},
                      {}};
    /* Prices that leave no reduced cost negative. */
    for (size_t i = 0; i < n; i++)
        for (const int64_t g : gain[i])
            if (-g < work.rowprice[i]) work.rowprice[i] = -g;
    for (size_t i = 0; i < n; i++) enter_row(i, &work);
    std::vector<size_t> chosen(n, NONE);
    for (size_t j = 0; j < m; j++)
        if (work.owner[j] != NONE) chosen[work.owner[j]] = j;
    return chosen;
}
