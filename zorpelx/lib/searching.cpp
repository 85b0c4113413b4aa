// SPDX-License-Identifier: MIT
/* zorpelx/lib/searching.cpp: the search in a start's own process.
 *
 * A price for moved weight needs no objective of its own: a hyperedge between each vertex and one
 * that is fixed in its part of the start is cut when the vertex moves.
 */
#include "searching.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "channel.h"
#include "search/search.h"

std::vector<Limits> part_bounds(int nparts, double epsilon, double least, const double *capacities,
                                int64_t total)
{
    std::vector<Limits> limits(static_cast<size_t>(nparts));
    double sum = 0;
    for (int p = 0; p < nparts; p++) sum += capacities != nullptr ? capacities[p] : 1;
    for (int p = 0; p < nparts; p++) {
        const double size = capacities != nullptr ? capacities[p] : 1;
        const double average = static_cast<double>(total) * (size / sum);
        const int64_t rounded = capacities != nullptr
                                    ? static_cast<int64_t>(std::ceil(average - 1e-9 * average))
                                    : (total + nparts - 1) / nparts;
        const double most = (1 + epsilon / 100) * static_cast<double>(rounded);
        Limits &limit = limits[static_cast<size_t>(p)];
        // what a product like 1.1 x 50 loses in the last bit is not the caller's loss
        limit.most = std::min(total, static_cast<int64_t>(std::min(most * (1 + 1e-12), 9e18)));
        limit.least = total >= nparts ? 1 : 0;
        if (least >= 0)
            limit.least =
                static_cast<int64_t>(std::ceil((1 - least / 100) * average - 1e-9 * average));
        limit.least = std::clamp<int64_t>(limit.least, 0, limit.most);
    }
    return limits;
}

int zorpelx_part_bounds(int nparts, double epsilon, double least, const double *capacities,
                        int64_t total, int64_t *low, int64_t *high)
{
    if (nparts < 1 || !(epsilon >= 0) || std::isnan(least) || total < 0) return ZORPELX_BAD_OPTION;
    double sum = 0;
    for (int p = 0; capacities != nullptr && p < nparts; p++) {
        sum += capacities[p];
        if (!(capacities[p] > 0) || std::isinf(sum)) return ZORPELX_BAD_OPTION;
    }
    return reporting_to(nullptr, [&]() -> Fault {
        const std::vector<Limits> limits = part_bounds(nparts, epsilon, least, capacities, total);
        for (size_t p = 0; p < limits.size(); p++) {
            if (low != nullptr) low[p] = limits[p].least;
            if (high != nullptr) high[p] = limits[p].most;
        }
        return {};
    });
}

/* The hypergraph that is searched: the caller's, or with a vertex for each part and a hyperedge
 * for each vertex's price. */
struct Priced {
    FlatHypergraph flat;
    std::vector<int> eptr, eind, vwgts, hewgts, fixed, group, start;
};

static std::vector<int> extended(const int *array, int n, int more, int value)
{
    std::vector<int> copy(static_cast<size_t>(n), value);
    if (array != nullptr) std::copy(array, array + n, copy.begin());
    copy.resize(static_cast<size_t>(n + more), value);
    return copy;
}

/* What the sum of external degrees is counted in: a cut hyperedge of two counts twice there, so
 * that odd prices are exact only if everything else is doubled, where 32 bits can hold that. */
static int scale_of(const zorpelx_hypergraph &h, const zorpelx_options &o)
{
    if (o.objective != ZORPELX_SOED || o.start == nullptr || o.keep_price == 0) return 1;
    int64_t total = 0;
    for (int e = 0; e < h.nhedges; e++) total += 2 * int64_t{h.hewgts != nullptr ? h.hewgts[e] : 1};
    for (int v = 0; v < h.nvtxs; v++)
        total += int64_t{o.keep_price} * (h.vwgts != nullptr ? h.vwgts[v] : 1);
    return total < INT_MAX ? 2 : 1;
}

static Priced add_prices(const zorpelx_hypergraph &h, const zorpelx_options &o)
{
    Priced priced;
    const int n = h.nvtxs, k = o.nparts;
    priced.vwgts = extended(h.vwgts, n, 0, 1);
    priced.vwgts.resize(static_cast<size_t>(n + k), 0);
    priced.fixed = extended(o.fixed, n, k, -1);
    priced.group = extended(o.groups, n, k, -1);
    priced.start = extended(o.start, n, k, 0);
    priced.eptr.assign(h.eptr, h.eptr + h.nhedges + 1);
    priced.eind.assign(h.eind, h.eind + h.eptr[h.nhedges]);
    priced.hewgts = extended(h.hewgts, h.nhedges, 0, 1);
    const int scale = scale_of(h, o);
    for (int &weight : priced.hewgts) weight *= scale;
    for (int p = 0; p < k; p++)
        priced.fixed[static_cast<size_t>(n + p)] = priced.start[static_cast<size_t>(n + p)] = p;
    for (int v = 0; v < n; v++) {
        const int64_t price = int64_t{o.keep_price} * priced.vwgts[static_cast<size_t>(v)];
        priced.eind.insert(priced.eind.end(), {v, n + o.start[v]});
        priced.eptr.push_back(static_cast<int>(priced.eind.size()));
        priced.hewgts.push_back(
            static_cast<int>(o.objective == ZORPELX_SOED && scale == 1 ? (price + 1) / 2 : price));
    }
    priced.flat = {n + k,
                   static_cast<int>(priced.hewgts.size()),
                   priced.eptr.data(),
                   priced.eind.data(),
                   priced.vwgts.data(),
                   priced.hewgts.data()};
    return priced;
}

/* What publishing needs. */
struct Publisher {
    Board *board;
    int *parts;
    int nvtxs;
    int scale; // of the objective
};

static void publish(void *place, const int *part, const Found *found)
{
    const Publisher *const publisher = static_cast<const Publisher *>(place);
    Board *const board = publisher->board;
    const size_t n = static_cast<size_t>(publisher->nvtxs);
    std::copy(part, part + n, publisher->parts + static_cast<size_t>(board->published % 2) * n);
    board->objective = found->objective / publisher->scale;
    board->excess = found->excess;
    board->alljobs = found->alljobs;
    strncpy(board->step, found->step, sizeof board->step - 1);
    __atomic_store_n(&board->published, board->published + 1, __ATOMIC_RELEASE);
}

void search_and_publish(const zorpelx_hypergraph &h, const zorpelx_options &o,
                        const std::vector<Limits> &limits, int seed, Crew *crew, int threads,
                        int channel, Board *board, int *parts)
{
    std::vector<int64_t> least, most;
    for (const Limits &limit : limits) {
        least.push_back(limit.least);
        most.push_back(limit.most);
    }
    const Bounds bounds = {o.nparts, most.data(), least.data()};
    Publisher publisher = {board, parts, h.nvtxs, scale_of(h, o)};
    SearchOptions options = {};
    const Objective objective = static_cast<Objective>(o.objective);
    options.schedule =
        schedule_for(static_cast<Preset>(o.preset), h.eptr[h.nhedges], o.nparts, objective);
    if (o.shared > 0) options.schedule = widened(&options.schedule, o.shared);
    options.seed = static_cast<uint64_t>(seed);
    options.endless = o.time > 0;
    options.threads = threads;
    options.crew = crew;
    options.start = o.start;
    options.publish = publish;
    options.done = &board->jobs;
    options.user = &publisher;
    options.report = &board->report;
    FlatHypergraph flat = {h.nvtxs, h.nhedges, h.eptr, h.eind, h.vwgts, h.hewgts};
    Constraints constraints = {o.fixed, o.groups};
    Priced priced;
    if (o.start != nullptr && o.keep_price > 0) {
        priced = add_prices(h, o);
        flat = priced.flat;
        constraints = {priced.fixed.data(), priced.group.data()};
        options.start = priced.start.data();
    }
    std::vector<int> part(static_cast<size_t>(flat.nvtxs));
    Fleet fleet = {};
    Channel *const shared = channel >= 0 ? open_channel(channel, o.nparts) : nullptr;
    if (shared != nullptr) {
        fleet = fleet_of(shared);
        options.fleet = &fleet;
    }
    const Found found =
        search_partition(&flat, &constraints, &bounds, objective, &options, part.data());
    close_channel(shared);
    board->jobs = found.jobs;
    board->alljobs = found.alljobs;
}
