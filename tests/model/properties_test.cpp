// SPDX-License-Identifier: MIT
/* tests/model/properties_test.cpp: what every two-way refiner and the refinement driver must keep,
 * on thousands of random levels: several families of hyperedges, weights, heavy and fixed vertices,
 * gain ranges for both queue forms. Everything is recounted from the pin lists.
 */
#include <gtest/gtest.h>

#include "chains.h"
#include "coarsen/coarsen.h"
#include "levels.h"
#include "refine/balance.h"
#include "refine/fm.h"
#include "refine/oneway.h"
#include "refine/uncoarsen.h"

/* ---- two-way refiners ---- */

static bool bounds_hold(const PartCtrl &ctrl, const Ints &weights)
{
    const int total = weights[0] + weights[1];
    const int least0 =
        static_cast<int>((ctrl.splitratio - ctrl.ubfactor) * static_cast<float>(total));
    const int least1 = static_cast<int>(
        (1.0 - static_cast<double>(ctrl.splitratio) - static_cast<double>(ctrl.ubfactor)) * total);
    return weights[0] >= least0 && weights[1] >= least1;
}

struct Refiner {
    const char *name;
    bool exact;   // gain and ndeg are right on return
    bool repairs; // may worsen the cut of an unbalanced bisection
    void (*run)(PartCtrl *ctrl, HGraph *graph);
};

static void PrintTo(const Refiner &row, std::ostream *out)
{
    *out << row.name;
}

static const std::vector<Refiner> REFINERS = {
    {"FM", false, false, [](PartCtrl *c, HGraph *g) { Refine_FM__(c, g, 10); }},
    {"FM2", false, false, [](PartCtrl *c, HGraph *g) { Refine_FM2__(c, g, 10); }},
    {"EEFM", true, false, [](PartCtrl *c, HGraph *g) { Refine_EEFM__(c, g, 3, 0.1f); }},
    {"EEFM2", true, false, [](PartCtrl *c, HGraph *g) { Refine_EEFM2__(c, g, 3, 0.1f); }},
    {"OneWay", true, false, [](PartCtrl *c, HGraph *g) { Refine_OneWayFM__(c, g, 10); }},
    {"Balance", true, true, Balance__},
};

class RefinerProperties : public testing::TestWithParam<Refiner>
{
};

class ExactRefinerProperties : public RefinerProperties
{
};

static std::vector<Refiner> exact_refiners()
{
    std::vector<Refiner> exact;
    std::copy_if(REFINERS.begin(), REFINERS.end(), std::back_inserter(exact),
                 [](const Refiner &row) { return row.exact; });
    return exact;
}

struct Start {
    PartCtrl ctrl;
    Level level;
    Ints sides;
    int cut;
    bool balanced;
};

static Start random_start(unsigned seed)
{
    Draw draw(seed);
    LevelLimits limits;
    limits.maxcells = one_in(draw, 4) ? 8 : 60;
    Start start;
    start.level = random_level(draw, limits);
    start.ctrl = random_bisection_ctrl(draw);
    start.sides = random_parts(draw, start.level->ncells, 2);
    set_sides(start.level.get(), start.sides);
    start.cut = fresh_cut(start.level.get(), start.sides.data());
    start.balanced =
        bounds_hold(start.ctrl, part_weights(start.level.get(), start.sides.data(), 2));
    srand(seed);
    return start;
}

constexpr unsigned NSEEDS = 2000;

TEST_P(RefinerProperties, never_worse_and_never_out_of_bounds_once_in)
{
    int nbalanced = 0, nbetter = 0;
    for (unsigned seed = 0; seed < NSEEDS; seed++) {
        Start start = random_start(seed);
        const HGraph *const graph = start.level.get();
        GetParam().run(&start.ctrl, start.level.get());
        const bool balanced = bounds_hold(start.ctrl, part_weights(graph, graph->where, 2));
        if (start.balanced) {
            ASSERT_TRUE(balanced) << "seed " << seed;
        }
        if (start.balanced || !GetParam().repairs) {
            ASSERT_LE(fresh_cut(graph, graph->where), start.cut) << "seed " << seed;
        }
        nbalanced += start.balanced;
        nbetter += fresh_cut(graph, graph->where) < start.cut;
    }
    EXPECT_GT(nbalanced, 300);
    EXPECT_GT(nbetter, 100);
}

TEST_P(RefinerProperties, fixed_vertices_stay_and_the_level_is_not_touched)
{
    for (unsigned seed = 0; seed < NSEEDS; seed++) {
        Start start = random_start(seed);
        const HGraph *const graph = start.level.get();
        const Ints pins = to_ints(graph->netind, graph->netptr[graph->nnets]);
        const Ints cellwgt = to_ints(graph->cellwgt, graph->ncells);
        GetParam().run(&start.ctrl, start.level.get());
        for (int v = 0; v < graph->nfixed; v++)
            ASSERT_EQ(graph->where[v], start.sides[at(v)]) << "seed " << seed;
        ASSERT_EQ(to_ints(graph->netind, graph->netptr[graph->nnets]), pins);
        ASSERT_EQ(to_ints(graph->cellwgt, graph->ncells), cellwgt);
        ASSERT_TRUE(hgraph_ok(graph, HG_LISTS | HG_INCIDENCE | HG_WHERE)) << "seed " << seed;
    }
}

TEST_P(RefinerProperties, cut_and_weights_equal_a_fresh_count)
{
    for (unsigned seed = 0; seed < NSEEDS; seed++) {
        Start start = random_start(seed);
        const HGraph *const graph = start.level.get();
        GetParam().run(&start.ctrl, start.level.get());
        const Ints weights = part_weights(graph, graph->where, 2);
        ASSERT_EQ(graph->mincut, fresh_cut(graph, graph->where)) << "seed " << seed;
        ASSERT_EQ(graph->pwgts[0], weights[0]) << "seed " << seed;
        ASSERT_EQ(graph->pwgts[1], weights[1]) << "seed " << seed;
    }
}

TEST_P(ExactRefinerProperties, exact_gains_equal_a_fresh_computation)
{
    for (unsigned seed = 0; seed < NSEEDS; seed++) {
        Start start = random_start(seed);
        HGraph *const graph = start.level.get();
        GetParam().run(&start.ctrl, graph);
        const Ints gain = to_ints(graph->gain, graph->ncells);
        const Ints ndeg0 = to_ints(graph->ndeg[0], graph->nnets);
        const Ints ndeg1 = to_ints(graph->ndeg[1], graph->nnets);
        ASSERT_TRUE(hgraph_ok(graph, HG_GAINS)) << "seed " << seed;
        ComputeInitGains__(graph);
        ASSERT_EQ(to_ints(graph->gain, graph->ncells), gain) << "seed " << seed;
        ASSERT_EQ(to_ints(graph->ndeg[0], graph->nnets), ndeg0) << "seed " << seed;
        ASSERT_EQ(to_ints(graph->ndeg[1], graph->nnets), ndeg1) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(refiners, RefinerProperties, testing::ValuesIn(REFINERS),
                         [](const auto &row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(refiners, ExactRefinerProperties, testing::ValuesIn(exact_refiners()),
                         [](const auto &row) { return std::string(row.param.name); });

/* ---- the refinement driver ---- */

class DriverProperties : public testing::TestWithParam<int>
{
};

TEST_P(DriverProperties, bisection_of_the_finest_level_is_whole_and_never_worse)
{
    const bool refines = GetParam() != RTYPE_NONE;
    int ncompared = 0;
    for (unsigned seed = 0; seed < 600; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        Level level = random_level(draw, chain_limits(one_in(draw, 2)));
        PartCtrl ctrl = chain_ctrl(draw, level.get());
        ctrl.RType = GetParam();
        const int n = level->ncells;
        const Ints cellwgt = to_ints(level->cellwgt, n);
        const Ints pins = to_ints(level->netind, level->netptr[level->nnets]);
        srand(seed);
        HGraph *const coarsest = Coarsen__(&ctrl, level.get());
        if (coarsest == level.get()) continue;
        const bool islands = has_islands(level.get());
        set_sides(coarsest, random_parts(draw, coarsest->ncells, 2));
        const Ints fixed = to_ints(coarsest->where, coarsest->nfixed);
        const int cut = coarsest->mincut;
        const bool balanced = bounds_hold(ctrl, part_weights(coarsest, coarsest->where, 2));

        Refine__(&ctrl, level.get(), coarsest);
        ASSERT_EQ(level->coarser, nullptr);
        ASSERT_EQ(level->ncells, n);
        ASSERT_EQ(level->nislands, 0);
        ASSERT_EQ(to_ints(level->cellwgt, n), cellwgt);
        ASSERT_EQ(to_ints(level->netind, level->netptr[level->nnets]), pins);
        ASSERT_TRUE(hgraph_ok(level.get(), HG_LISTS | HG_INCIDENCE | HG_WHERE));
        ASSERT_EQ(to_ints(level->where, level->nfixed), fixed);
        const Ints weights = part_weights(level.get(), level->where, 2);
        ASSERT_EQ(level->pwgts[0], weights[0]);
        ASSERT_EQ(level->pwgts[1], weights[1]);
        if (refines) {
            ASSERT_EQ(level->mincut, fresh_cut(level.get(), level->where));
        }
        if (!balanced || islands) continue;
        ncompared++;
        ASSERT_TRUE(bounds_hold(ctrl, weights));
        ASSERT_LE(fresh_cut(level.get(), level->where), cut);
        if (!refines) {
            ASSERT_EQ(fresh_cut(level.get(), level->where), cut);
        }
    }
    EXPECT_GT(ncompared, 40);
}

INSTANTIATE_TEST_SUITE_P(rtypes, DriverProperties,
                         testing::Values(RTYPE_FM, RTYPE_ONEWAY, RTYPE_EEFM, RTYPE_FM2,
                                         RTYPE_NONE));
