// SPDX-License-Identifier: MIT
/* tests/model/coarsen_properties_test.cpp: what every matching and every coarsening scheme must
 * keep, on thousands of random levels: weights, cuts of projected partitions, fixed vertices,
 * weight limits, parts. Everything is recounted from the pin lists.
 */
#include <gtest/gtest.h>

#include "chains.h"
#include "coarsen/coarsen.h"
#include "levels.h"
#include "matchings.h"

/* where of each finer level of the chain below graph, from the coarsest up: the cut stays. */
static void check_projections(Draw &draw, const HGraph *graph, int nparts)
{
    Ints where = random_parts(draw, graph->ncells, nparts);
    const int cut = fresh_cut(graph, where.data());
    const int soed = fresh_soed(graph, where.data());
    for (; graph->finer != nullptr; graph = graph->finer) {
        const HGraph *const finer = graph->finer;
        Ints projected;
        for (int v = 0; v < finer->ncells; v++) projected.push_back(where[at(finer->cellmap[v])]);
        for (int v = 0; v < finer->nislands; v++) projected.push_back(below(draw, nparts));
        ASSERT_EQ(fresh_cut(finer, projected.data()), cut);
        ASSERT_EQ(fresh_soed(finer, projected.data()), soed);
        where = projected;
    }
}

static int all_weight(const HGraph *graph)
{
    return sum(graph->cellwgt, graph->ncells + graph->nislands);
}

static void check_contraction(const HGraph *graph)
{
    const HGraph *const coarser = graph->coarser;
    ASSERT_TRUE(hgraph_ok(coarser, HG_LISTS | HG_INCIDENCE));
    ASSERT_EQ(coarser->finer, graph);
    ASSERT_EQ(coarser->nfixed, graph->nfixed);
    ASSERT_EQ(all_weight(coarser), sum(graph->cellwgt, graph->ncells));
    ASSERT_EQ(sum(coarser->netwgt, coarser->nnets) + coarser->removedwgt,
              sum(graph->netwgt, graph->nnets) + graph->removedwgt);
    ASSERT_EQ(graph->mptr[0], 0);
    ASSERT_EQ(graph->mptr[coarser->ncells + coarser->nislands], graph->ncells);
}

struct Scheme {
    const char *name;
    bool restricted;
    int ctype;
};

static void PrintTo(const Scheme &row, std::ostream *out)
{
    *out << row.name;
}

static const Scheme SCHEMES[] = {
    {"HFC", false, CTYPE_HFC},
    {"FC", false, CTYPE_FC},
    {"GFC", false, CTYPE_GFC},
    {"HEDGE", false, CTYPE_HEDGE},
    {"EDGE", false, CTYPE_EDGE},
    {"HedgeOnly", false, CTYPE_HEDGE_ONLY},
    {"HedgeEdge", false, CTYPE_HEDGE_EDGE},
    {"CStars", true, RESTRICTED_STARS},
    {"CEdges", true, RESTRICTED_EDGES},
};

class ChainProperties : public testing::TestWithParam<Scheme>
{
};

TEST_P(ChainProperties, every_level_is_sound_and_keeps_weights_and_cuts)
{
    int ncontractions = 0;
    for (unsigned seed = 0; seed < 400; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        Level level = random_level(draw, chain_limits(one_in(draw, 2)));
        PartCtrl ctrl = chain_ctrl(draw, level.get());
        ctrl.CType = GetParam().ctype;
        const Ints parts = random_parts(draw, level->ncells, 3);
        int cut = 0;
        if (GetParam().restricted) {
            level->where = new_array(parts);
            cut = fresh_cut(level.get(), parts.data());
        }
        srand(seed);
        HGraph *const coarsest =
            GetParam().restricted ? CCoarsen__(&ctrl, level.get()) : Coarsen__(&ctrl, level.get());
        int number = 0;
        for (const HGraph *graph = level.get(); graph != coarsest; graph = graph->coarser) {
            ASSERT_EQ(graph->level, number++);
            check_contraction(graph);
            ncontractions++;
            if (GetParam().restricted) {
                ASSERT_EQ(graph->where, nullptr);
            }
        }
        ASSERT_EQ(coarsest->level, number);
        if (GetParam().restricted) {
            ASSERT_EQ(fresh_cut(coarsest, coarsest->where), cut);
        }
        for (int i = 0; i < 4; i++) check_projections(draw, coarsest, between(draw, 2, 5));
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(ncontractions, 400);
}

INSTANTIATE_TEST_SUITE_P(schemes, ChainProperties, testing::ValuesIn(SCHEMES),
                         [](const auto &row) { return std::string(row.param.name); });

/* ---- matchings ---- */

class MatchingProperties : public testing::TestWithParam<Matching>
{
};

TEST_P(MatchingProperties, groups_fit_and_respect_fixed_vertices_and_parts)
{
    int nmerged = 0;
    for (unsigned seed = 0; seed < 1500; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        LevelLimits limits;
        limits.unitnets = true;
        Level level = random_level(draw, limits);
        PartCtrl ctrl = make_ctrl();
        ctrl.maxnetsize = between(draw, 2, 9);
        ctrl.MaxCellWgt = between(draw, 1, one_in(draw, 2) ? 12 : 5000);
        level->where = new_array(random_parts(draw, level->ncells, 3));
        srand(seed);
        const HGraph *const coarser = run_matching(GetParam(), &ctrl, level.get());
        check_contraction(level.get());
        for (int i = 0; i < 3; i++) check_projections(draw, coarser, between(draw, 2, 5));
        if (HasFatalFailure()) return;
        for (int c = 0; c < coarser->ncells; c++) {
            const Ints group = group_of(level.get(), c);
            ASSERT_FALSE(group.empty());
            nmerged += group.size() > 1;
            if (c < level->nfixed) {
                ASSERT_EQ(group, Ints{c});
            }
            if (group.size() > 1) {
                ASSERT_LE(coarser->cellwgt[c], ctrl.MaxCellWgt);
            }
            for (int v : group) {
                ASSERT_EQ(level->cellmap[v], c);
                if (GetParam().restricted) {
                    ASSERT_EQ(level->where[v], level->where[group[0]]);
                }
            }
            if (!GetParam().star && !GetParam().hedges) {
                ASSERT_LE(group.size(), 2u);
            }
        }
        if (GetParam().star) {
            ASSERT_GE(5 * coarser->ncells, 3 * level->ncells - 4);
        }
    }
    EXPECT_GT(nmerged, 1000);
}

INSTANTIATE_TEST_SUITE_P(matchings, MatchingProperties, testing::ValuesIn(all_matchings()),
                         [](const auto &row) { return std::string(row.param.name); });
