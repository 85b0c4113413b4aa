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
constexpr double LITTLE = 0.95;         // fewer vertices are left: that was worth a level

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
    const int64_t cap = level->totalweight / (CLUSTERS_A_PART * goal->nparts) + 1;
    return std::min(grown, cap);
}

/* The next level, or null if there is none worth it. */
static std::unique_ptr<Level> coarser_level(Ranks *ranks, Level *level,
                                            const DivideOptions *options, size_t depth)
{
    const int64_t enough = static_cast<int64_t>(static_cast<double>(level->nvertices) / SHRINK);
    Clustering clustering;
    form_clusters(ranks, level, lot(options->finishing.seed, depth),
                  most_weight(level, &options->goal), enough, &clustering);
    if (static_cast<double>(clustering.nclusters) > LITTLE * static_cast<double>(level->nvertices))
        return nullptr;
    auto coarser = std::make_unique<Level>();
    contract_level(ranks, level, &clustering, coarser.get());
    return coarser;
}

static void coarsen(Ranks *ranks, const DivideOptions *options, Levels *levels)
{
    while (levels->back()->npins > options->fits || levels->back()->nvertices > options->fits) {
        watch(options, ranks, "coarsen", levels->size() - 1, levels->back().get(), 0);
        std::unique_ptr<Level> coarser =
            coarser_level(ranks, levels->back().get(), options, levels->size());
        if (coarser == nullptr) break;
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
    std::vector<int64_t>().swap(level->coarse);
    load_division(ranks, level, goal, division);
}

Divided divide(Ranks *ranks, Level *level, const DivideOptions *options, std::vector<int> *part)
{
    Levels levels;
    levels.push_back(std::make_unique<Level>(std::move(*level)));
    coarsen(ranks, options, &levels);
    Divided divided = {static_cast<int>(levels.size()), 0, 0, {}};
    Division division;
    watch(options, ranks, "gather", levels.size() - 1, levels.back().get(), 0);
    divide_gathered(ranks, levels.back().get(), &options->goal, &options->finishing, &division);
    for (;;) {
        const Level *const at = levels.back().get();
        const uint64_t seed = lot(options->finishing.seed, levels.size(), 1);
        divided.excess = rebalance_level(ranks, at, &options->goal, seed, &division);
        move_boldly(ranks, at, &options->goal, seed, &division);
        divided.value = refine_level(ranks, at, &options->goal, seed, &division);
        divided.weight = division.weight;
        watch(options, ranks, "refine", levels.size() - 1, at, divided.value);
        if (levels.size() == 1) break;
        project(ranks, &levels, &options->goal, &division);
    }
    divided.excess = excess_of(&options->goal, &division);
    *part = std::move(division.part);
    *level = std::move(*levels.back());
    return divided;
}
