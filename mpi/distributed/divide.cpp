// SPDX-License-Identifier: MIT
/* mpi/distributed/divide.cpp: coarsen over ranks, partition on one, refine over ranks.
 *
 * What stays true: every step is a function of the hypergraph, the options and global numbers.
 * Which rank owns what, and in which order messages come, decides nothing: sums are of integers,
 * ties go by lots drawn from numbers of vertices, and what is gathered is put in one order.
 */
#include "distributed/divide.h"

#include <memory>

#include "distributed/ask.h"
#include "distributed/bold_moves.h"
#include "distributed/contract_ranks.h"
#include "distributed/refine_ranks.h"

constexpr double SHRINK = 2.5;          // vertices of a level for each of the next one
constexpr int64_t GROWN = 4;            // times the average, that a cluster may weigh
constexpr int64_t CLUSTERS_A_PART = 40; // that the heaviest ones still leave to choose from
constexpr int64_t CHOICES_A_PART = 150, CHOICES = 2000; // vertices that the search is left with
constexpr int64_t PINS_A_VERTEX = 16; // with fewer, too little would be left of a level
constexpr int CYCLES = 2;             // the later ones start from a partition
constexpr double LITTLE = 0.95;       // fewer vertices are left: that was worth a level

using Levels = std::vector<std::unique_ptr<Level>>;

static void watch(const DivideOptions *options, const Ranks *ranks, const char *stage, size_t depth,
                  const Level *level, int64_t value)
{
    if (options->watch != nullptr)
        options->watch(ranks, stage, static_cast<int>(depth), level, value);
}

/* A cluster of the next level weighs at most so much. */
static int64_t most_weight(const Level *level, const Goal *goal)
{
    const double average = static_cast<double>(level->totalweight) /
                           static_cast<double>(std::max<int64_t>(level->nvertices, 1));
    const int64_t grown = static_cast<int64_t>(average * SHRINK * static_cast<double>(GROWN)) + 1;
    assert(goal->nparts > 0);
    const int64_t cap = level->totalweight / (CLUSTERS_A_PART * goal->nparts) + 1;
    return std::min(grown, cap);
}

/* Few vertices that are in many hyperedges leave the search nothing to choose, if they became
 * fewer: it is the number of hyperedges then that keeps the pins up, and a selection has to do. */
static bool is_coarse_enough(const Level *level, const DivideOptions *options)
{
    const int64_t choices = std::max(CHOICES, CHOICES_A_PART * options->goal.nparts);
    return level->nvertices <= std::min(options->fits, choices) ||
           std::max(level->npins, level->nvertices) <= options->fits;
}

/* So many pins of a level rank 0 takes. */
static int64_t pins_that_fit(const Level *level, const DivideOptions *options)
{
    assert(level->nvertices < INT64_MAX / PINS_A_VERTEX);
    return std::max(options->fits, PINS_A_VERTEX * level->nvertices);
}

/* The next level, or null if there is none worth it.
 *   inside  null, or a partition that clusters keep to */
static std::unique_ptr<Level> coarser_level(Ranks *ranks, Level *level,
                                            const DivideOptions *options, uint64_t seed,
                                            const Division *inside)
{
    const int64_t enough = static_cast<int64_t>(static_cast<double>(level->nvertices) / SHRINK);
    Clustering clustering;
    form_clusters(ranks, level, seed, most_weight(level, &options->goal), enough, inside,
                  &clustering);
    if (static_cast<double>(clustering.nclusters) > LITTLE * static_cast<double>(level->nvertices))
        return nullptr;
    auto coarser = std::make_unique<Level>();
    [[maybe_unused]] const int64_t nclusters = clustering.nclusters;
    contract_level(ranks, level, &clustering, coarser.get());
    assert(coarser->nvertices == nclusters && coarser->npins <= level->npins);
    return coarser;
}

struct PartOfCluster {
    int vertex, part; // by the receiver's numbers
};

/* The partition that the clusters kept to becomes that of the coarser level. */
static void carry_up(Ranks *ranks, const Level *level, const Level *coarser, const Goal *goal,
                     Division *division)
{
    Mail<PartOfCluster> mail;
    begin_mail(ranks, &mail);
    const int64_t n = coarser->nvertices;
    for (const int64_t c : level->coarse) count_mail(&mail, share_owner(ranks, n, c));
    open_mail(&mail);
    for (size_t v = 0; v < level->coarse.size(); v++) {
        const int64_t c = level->coarse[v];
        const int owner = share_owner(ranks, n, c);
        add_mail(&mail, owner,
                 {static_cast<int>(c - share_begin(ranks, n, owner)), division->part[v]});
    }
    exchange(ranks, &mail);
    division->part.assign(static_cast<size_t>(nown_of(coarser)), -1);
    for (const PartOfCluster &record : mail.records) {
        int *const part = &division->part[static_cast<size_t>(record.vertex)];
        assert(*part < 0 || *part == record.part);
        *part = record.part;
    }
    assert(std::find(division->part.begin(), division->part.end(), -1) == division->part.end());
    load_division(ranks, coarser, goal, division);
}

/*   division  in/out  of the finest level, then of the coarsest; without parts: there is none */
static void coarsen(Ranks *ranks, const DivideOptions *options, int cycle, Levels *levels,
                    Division *division)
{
    const bool within = cycle > 0;
    while (!is_coarse_enough(levels->back().get(), options)) {
        watch(options, ranks, "coarsen", levels->size() - 1, levels->back().get(), 0);
        const uint64_t seed =
            lot(options->finishing.seed, levels->size(), 2 * static_cast<uint64_t>(cycle));
        std::unique_ptr<Level> coarser =
            coarser_level(ranks, levels->back().get(), options, seed, within ? division : nullptr);
        if (coarser == nullptr) break;
        if (within) carry_up(ranks, levels->back().get(), coarser.get(), &options->goal, division);
        levels->push_back(std::move(coarser));
    }
}

/* The partition of a level becomes that of the next finer one, and the coarser level goes. */
static void project(Ranks *ranks, Levels *levels, const Goal *goal, Division *division)
{
    const std::vector<int> coarse = std::move(division->part);
    const int64_t n = levels->back()->nvertices;
    levels->pop_back();
    Level *const level = levels->back().get();
    *division = Division();
    ask_owners(ranks, n, level->coarse, coarse, &division->part);
    assert(division->part.size() == level->weight.size());
    std::vector<int64_t>().swap(level->coarse);
    load_division(ranks, level, goal, division);
}

/* From the coarsest level to the finest. */
static void refine_levels(Ranks *ranks, const DivideOptions *options, int cycle, Levels *levels,
                          Division *division, Divided *divided)
{
    for (;;) {
        const Level *const at = levels->back().get();
        const uint64_t seed =
            lot(options->finishing.seed, levels->size(), 2 * static_cast<uint64_t>(cycle) + 1);
        rebalance_level(ranks, at, &options->goal, seed, division);
        move_boldly(ranks, at, &options->goal, seed, division);
        divided->value = refine_level(ranks, at, &options->goal, seed, division);
        watch(options, ranks, "refine", levels->size() - 1, at, divided->value);
        if (levels->size() == 1) break;
        project(ranks, levels, &options->goal, division);
    }
}

Divided divide(Ranks *ranks, Level *level, const DivideOptions *options, std::vector<int> *part)
{
    Levels levels;
    levels.push_back(std::make_unique<Level>(std::move(*level)));
    Divided divided = {};
    Division division;
    for (int cycle = 0; cycle < CYCLES; cycle++) {
        coarsen(ranks, options, cycle, &levels, &division);
        watch(options, ranks, "gather", levels.size() - 1, levels.back().get(), 0);
        const int64_t mostpins = pins_that_fit(levels.back().get(), options);
        // a search among some of the hyperedges would worsen a partition that all have shaped
        if (cycle == 0 || levels.back()->npins <= mostpins)
            divide_gathered(ranks, levels.back().get(), &options->goal, &options->finishing,
                            mostpins, static_cast<uint64_t>(cycle), &division);
        divided.levels = std::max(divided.levels, static_cast<int>(levels.size()));
        for (size_t i = 0; cycle == 0 && i < levels.size(); i++)
            divided.pins.push_back(levels[i]->npins);
        refine_levels(ranks, options, cycle, &levels, &division, &divided);
        if (divided.levels == 1) break; // there are no clusters to keep to the parts
    }
    assert(levels.size() == 1 && divided.levels >= 1);
    divided.weight = division.weight;
    divided.excess = excess_of(&options->goal, &division);
    *part = std::move(division.part);
    *level = std::move(*levels.back());
    return divided;
}
