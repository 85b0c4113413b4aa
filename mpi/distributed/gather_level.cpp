// SPDX-License-Identifier: MIT
/* mpi/distributed/gather_level.cpp: a level on one rank: all of it, or what fits.
 *
 * Ranks hold vertices in the order of their numbers, and hyperedges in the order in which they were
 * read or in that of their keys: put together by rank, the hypergraph is the same for any number of
 * ranks.
 */
#include "distributed/gather_level.h"

#include "distributed/select_nets.h"
#include "search/search.h"

constexpr int64_t MOST_COUNT = 2147482624;

/* All ranks' values on rank 0, in order; empty elsewhere. */
template <class T> static std::vector<T> gather(Ranks *ranks, std::vector<T> values)
{
    Mail<T> mail;
    mail.first.assign(static_cast<size_t>(ranks->nranks) + 1, static_cast<int64_t>(values.size()));
    mail.first[0] = 0;
    mail.records = std::move(values);
    exchange(ranks, &mail);
    assert(ranks->rank == 0 || mail.records.empty());
    return std::move(mail.records);
}

/* The largest number of bits to be dropped from each weight, so that all fit. */
static int bits_to_drop(const std::vector<int64_t> &weights)
{
    for (int bits = 0;; bits++) {
        int64_t sum = 0;
        for (const int64_t weight : weights) sum += weight >> bits;
        if (sum <= MOST_WEIGHT) return bits;
    }
}

static std::vector<int> dropped(const std::vector<int64_t> &weights, int bits)
{
    std::vector<int> small(weights.size());
    for (size_t i = 0; i < weights.size(); i++) small[i] = static_cast<int>(weights[i] >> bits);
    return small;
}

/* A whole hypergraph. */
struct Whole {
    std::vector<int> eptr, eind;
    std::vector<int64_t> vwgts, hewgts;
    std::vector<int> fixed; // empty: all free
    std::vector<int> start; // a partition; empty: none
};

/* The selected hyperedges: pins by global numbers, sizes, weights. */
static void gather_nets(Ranks *ranks, const Level *level, const std::vector<int> &nets,
                        Whole *whole)
{
    std::vector<int> pins, sizes;
    std::vector<int64_t> weights;
    for (const int net : nets) {
        const size_t e = static_cast<size_t>(net);
        for (int i = level->netptr[e]; i < level->netptr[e + 1]; i++)
            pins.push_back(static_cast<int>(
                level->ghost[static_cast<size_t>(level->netind[static_cast<size_t>(i)])]));
        sizes.push_back(level->netptr[e + 1] - level->netptr[e]);
        weights.push_back(level->netweight[e]);
    }
    whole->eind = gather(ranks, std::move(pins));
    whole->eptr = gather(ranks, std::move(sizes));
    whole->eptr.insert(whole->eptr.begin(), 0);
    for (size_t e = 1; e < whole->eptr.size(); e++) whole->eptr[e] += whole->eptr[e - 1];
    whole->hewgts = gather(ranks, std::move(weights));
    assert(whole->eptr.size() == whole->hewgts.size() + 1);
    assert(whole->eptr.back() == static_cast<int>(whole->eind.size()));
}

static Whole gather_whole(Ranks *ranks, const Level *level, int64_t mostpins,
                          const Division *division)
{
    Whole whole;
    gather_nets(ranks, level, select_nets(ranks, level, mostpins), &whole);
    whole.vwgts = gather(ranks, level->weight);
    whole.fixed = gather(ranks, level->fixed);
    whole.start = gather(ranks, division->part);
    assert(ranks->rank != 0 || whole.vwgts.size() == static_cast<size_t>(level->nvertices));
    assert(static_cast<int64_t>(whole.eind.size()) <= std::min(level->npins, mostpins));
    assert(whole.fixed.empty() || whole.fixed.size() == whole.vwgts.size());
    assert(whole.start.empty() || whole.start.size() == whole.vwgts.size());
    return whole;
}

static std::vector<int> divide_whole(const Whole &whole, const Goal *goal,
                                     const Finishing *finishing, uint64_t draw)
{
    const int vbits = bits_to_drop(whole.vwgts);
    const std::vector<int> vwgts = dropped(whole.vwgts, vbits),
                           hewgts = dropped(whole.hewgts, bits_to_drop(whole.hewgts));
    std::vector<int64_t> most = goal->most, least = goal->least;
    for (int64_t &bound : most) bound >>= vbits;
    for (int64_t &bound : least) bound >>= vbits;
    const FlatHypergraph flat = {static_cast<int>(vwgts.size()),
                                 static_cast<int>(hewgts.size()),
                                 whole.eptr.data(),
                                 whole.eind.data(),
                                 vwgts.data(),
                                 hewgts.data()};
    const Constraints constraints = {whole.fixed.empty() ? nullptr : whole.fixed.data(), nullptr};
    const Bounds bounds = {goal->nparts, most.data(), least.data()};
    SearchOptions options = {};
    options.schedule = SCHEDULES[finishing->preset];
    options.seed = finishing->seed + draw;
    options.start = whole.start.empty() ? nullptr : whole.start.data();
    options.threads = finishing->threads;
    options.crew = finishing->crew;
    std::vector<int> part(vwgts.size());
    search_partition(&flat, &constraints, &bounds, goal->objective, &options, part.data());
    return part;
}

/* Rank 0 gives each rank its own part of the values. */
static std::vector<int> scatter(Ranks *ranks, const Level *level, std::vector<int> values)
{
    assert(values.size() == static_cast<size_t>(ranks->rank == 0 ? level->nvertices : 0));
    Mail<int> mail;
    mail.first.assign(1, 0);
    for (int r = 1; r <= ranks->nranks; r++)
        mail.first.push_back(ranks->rank == 0 ? share_begin(ranks, level->nvertices, r) : 0);
    mail.records = std::move(values);
    exchange(ranks, &mail);
    assert(mail.records.size() == level->weight.size());
    return std::move(mail.records);
}

void divide_gathered(Ranks *ranks, const Level *level, const Goal *goal, const Finishing *finishing,
                     int64_t mostpins, uint64_t draw, Division *division)
{
    if (level->nvertices > MOST_COUNT)
        give_up(ranks, "what is left after clustering does not fit one rank: %lld vertices",
                static_cast<long long>(level->nvertices));
    mostpins = std::min(mostpins, MOST_COUNT);
    std::vector<int> part;
    {
        const Whole whole = gather_whole(ranks, level, mostpins, division);
        if (ranks->rank == 0) part = divide_whole(whole, goal, finishing, draw);
    }
    division->part = scatter(ranks, level, std::move(part));
    load_division(ranks, level, goal, division);
}
