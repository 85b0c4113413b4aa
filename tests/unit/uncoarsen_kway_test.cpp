// SPDX-License-Identifier: MIT
/* tests/unit/uncoarsen_kway_test.cpp: uncoarsening of k-way partitions, islands, V-cycles. */
#include "kway/uncoarsen_kway.h"

#include "partition/vcycle.h"

#include "coarsen/coarsen.h"
#include "kway_levels.h"
#include "matchings.h"
#include "traces.h"

static Level level_of(int ncells, unsigned seed, bool islands = false)
{
    Draw draw(seed);
    LevelLimits limits;
    limits.mincells = limits.maxcells = ncells;
    limits.islands = islands;
    limits.heavy = false;
    return random_level(draw, limits);
}

TEST(RefineKway, chain_of_one_level_is_left_as_it_is)
{
    PartCtrl ctrl = kway_ctrl(3, 1.5f);
    ctrl.RType = 99; // not even looked at
    const Level level = make_level(4, path_nets(4));
    set_parts(ctrl, level.get(), {0, 1, 2, 0});
    RefineKway__(&ctrl, level.get(), level.get());
    EXPECT_EQ(to_ints(level->where, 4), (Ints{0, 1, 2, 0}));
}

TEST(RefineKway, projection_copies_parts_and_frees_the_coarser_level)
{
    PartCtrl ctrl = kway_ctrl(3, 1.5f);
    const Level level = make_level(4, path_nets(4));
    HGraph *const coarsest = run_matching("Edges", &ctrl, level.get());
    set_parts(ctrl, coarsest, {2, 1});
    const Ints cellmap = to_ints(level->cellmap, 4);
    ProjectKwayPartition__(&ctrl, coarsest);
    EXPECT_EQ(level->coarser, nullptr);
    EXPECT_NE(level->crinfo, nullptr);
    for (int v = 0; v < 4; v++) EXPECT_EQ(level->where[v], cellmap[at(v)] == 0 ? 2 : 1);
}

TEST(RefineKway, projection_tells_which_hyperedges_are_within_one_part)
{
    int nuncut = 0, ncut = 0;
    for (unsigned seed = 1; seed <= 40; seed++) {
        PartCtrl ctrl = kway_ctrl(4, 1.5f);
        const Level level = level_of(60, seed);
        HGraph *const coarsest = run_matching("Edges", &ctrl, level.get());
        Draw draw(seed);
        Ints parts(at(coarsest->ncells));
        for (int &part : parts) part = static_cast<int>(draw() % 4);
        const bool refined = seed % 2 == 0;
        if (refined)
            set_parts(ctrl, coarsest, parts);
        else
            coarsest->where = new_array(parts);
        ProjectKwayPartition__(&ctrl, coarsest);
        for (int e = 0; e < level->nnets; e++) {
            const int lambda = lambda_of(level.get(), e, level->where);
            EXPECT_EQ(level->nrinfo[e].ndegrees, refined && lambda == 1 ? UNCUT : 0);
            nuncut += refined && lambda == 1;
            ncut += lambda > 1;
        }
    }
    EXPECT_GT(nuncut, 100);
    EXPECT_GT(ncut, 100);
}

TEST(RefineKway, objective_of_the_scheme_is_refined)
{
    for (const int rtype : {OBJECTIVE_CUT, OBJECTIVE_SOED}) {
        PartCtrl ctrl = kway_ctrl(2, 2.0f);
        ctrl.RType = rtype;
        const Level level = make_level(4, {{0, 1}, {0, 2}, {1, 2}, {0, 3}}, {2, 2, 2, 1});
        set_parts(ctrl, level.get(), {1, 0, 0, 1});
        EXPECT_TRUE(refine_objective(&ctrl, level.get(), KwayRecords::current));
        EXPECT_EQ(level->objval, rtype == OBJECTIVE_CUT ? level->mincut : level->minsoed);
        EXPECT_EQ(level->where[0], 0);
    }
    PartCtrl ctrl = kway_ctrl(2, 2.0f);
    ctrl.RType = RTYPE_NONE;
    const Level level = make_level(2, path_nets(2));
    EXPECT_FALSE(refine_objective(&ctrl, level.get(), KwayRecords::current));
}

TEST(RefineKway, unknown_objective_ends_the_process)
{
    for (const int rtype : {0, 3, 5}) {
        PartCtrl ctrl = kway_ctrl(2, 2.0f);
        ctrl.RType = rtype;
        const Level level = make_level(4, path_nets(4));
        HGraph *const coarsest = run_matching("Edges", &ctrl, level.get());
        set_parts(ctrl, coarsest, {0, 1});
        EXPECT_EXIT(RefineKway__(&ctrl, level.get(), coarsest), testing::ExitedWithCode(0),
                    "Unknown refinement type: " + std::to_string(rtype));
    }
}

TEST(RefineKway, scheme_10_computes_the_weights_that_islands_need)
{
    PartCtrl ctrl = kway_ctrl(3, 1.5f);
    ctrl.RType = RTYPE_NONE;
    ctrl.CoarsenTo = 4;
    ctrl.CType = CTYPE_EDGE;
    const Level level = make_level(10, path_nets(8), {}, {1, 1, 1, 1, 1, 1, 1, 1, 3, 3});
    HGraph *const coarsest = Coarsen__(&ctrl, level.get());
    set_parts(ctrl, coarsest, {0, 0, 0, 0});
    RefineKway__(&ctrl, level.get(), coarsest);
    EXPECT_EQ(part_weights(level.get(), level->where, 3), (Ints{8, 3, 3}));
    EXPECT_EQ(to_ints(level->kpwgts, 3), (Ints{8, 3, 3}));
    EXPECT_EQ(level->mincut, 0);
}

TEST(RefineKway, level_of_islands_only_goes_to_the_lightest_parts)
{
    PartCtrl ctrl = kway_ctrl(3, 1.5f);
    ctrl.RType = OBJECTIVE_CUT;
    ctrl.CoarsenTo = 2;
    ctrl.CType = CTYPE_EDGE;
    const Level level = make_level(5, {}, {}, {1, 1, 4, 2, 5});
    HGraph *const coarsest = Coarsen__(&ctrl, level.get());
    EXPECT_EQ(coarsest->ncells, 0);
    set_parts(ctrl, coarsest, {});
    RefineKway__(&ctrl, level.get(), coarsest);
    // parked in reverse: 5, 2, 4, 1, 1 by number 4, 3, 2, 1, 0
    EXPECT_EQ(to_ints(level->where, 5), (Ints{1, 1, 2, 1, 0}));
    EXPECT_EQ(to_ints(level->kpwgts, 3), (Ints{5, 4, 4}));
}

TEST(RefineKway, islands_fill_the_lowest_of_the_lightest_parts_and_spread)
{
    const PartCtrl ctrl = kway_ctrl(4, 1.5f);
    const Level level = make_level(1, {});
    level->nislands = 6;
    QXfree__(&level->cellwgt, LTERM);
    level->cellwgt = new_array({3, 1, 1, 2, 1, 1, 1});
    AllocateKwayRefinementMemory__(&ctrl, level.get());
    level->where[0] = 1;
    ComputeInitKwayGains__(&ctrl, level.get());
    PartitionIslandsKway__(&ctrl, level.get());
    EXPECT_EQ(to_ints(level->where, 7), (Ints{1, 0, 2, 3, 0, 2, 0}));
    EXPECT_EQ(to_ints(level->kpwgts, 4), (Ints{3, 3, 2, 2}));
    level->nislands = 0;
}

/* ---- V-cycles ---- */

struct Cycles {
    Ints values; // the start, then one a cycle
    int result, last;
};

static Cycles run_cycles(PartCtrl ctrl, HGraph *graph, int ncycles)
{
    ctrl.dbglvl = DBG_DETAIL;
    const PartCtrl before = ctrl;
    Cycles cycles;
    const std::string trace =
        printed_by([&] { cycles.result = VCycleRefinementKway__(&ctrl, graph, ncycles); });
    EXPECT_EQ(ctrl.CoarsenTo, before.CoarsenTo);
    EXPECT_EQ(ctrl.CType, before.CType);
    EXPECT_EQ(trace.rfind("          [", 0), 0u);
    const size_t end = trace.find("(min = ");
    std::istringstream values(trace.substr(11, end - 11));
    for (int value; values >> value;) cycles.values.push_back(value);
    cycles.last = std::stoi(trace.substr(end + 7));
    EXPECT_EQ(trace.substr(trace.size() - 3), ")]\n");
    return cycles;
}

/* A level large enough to be coarsened by V-cycles, and a partition refined or not. */
static Level large_level(PartCtrl ctrl, unsigned seed, bool refined)
{
    Level level = level_of(1300, seed);
    Draw draw(seed);
    Ints parts(1300);
    for (int &part : parts) part = below(draw, ctrl.nparts);
    set_parts(ctrl, level.get(), parts);
    level->objval = ctrl.RType == OBJECTIVE_SOED ? level->minsoed : level->mincut;
    if (refined) refine_objective(&ctrl, level.get(), KwayRecords::current);
    free_kway_arrays(level.get());
    return level;
}

TEST(VCycleKway, one_cycle_is_one_cycle)
{
    const PartCtrl ctrl = kway_ctrl(4, 1.3f);
    const Level level = large_level(ctrl, 1, false);
    const Cycles cycles = run_cycles(ctrl, level.get(), 1);
    EXPECT_EQ(cycles.values.size(), 2u);
    EXPECT_LT(cycles.result, cycles.values[0]);
    EXPECT_EQ(cycles.result, fresh_cut(level.get(), level->where));
}

TEST(VCycleKway, hopeless_partition_gets_two_cycles)
{
    // too small to be coarsened: no cycle changes anything
    const PartCtrl ctrl = kway_ctrl(4, 1.3f);
    const Level level = level_of(60, 2);
    level->where = new_array(Ints(60, 1));
    level->objval = 5;
    const Cycles cycles = run_cycles(ctrl, level.get(), 10);
    EXPECT_EQ(cycles.values, (Ints{5, 5, 5}));
}

TEST(VCycleKway, cycles_end_after_two_in_a_row_without_improvement)
{
    std::set<size_t> counts;
    for (const int rtype : {OBJECTIVE_CUT, OBJECTIVE_SOED}) {
        for (unsigned seed = 0; seed < 12; seed++) {
            PartCtrl ctrl = kway_ctrl(3, 1.1f);
            ctrl.RType = rtype;
            srand(seed);
            const Level level = large_level(ctrl, seed, true);
            const Cycles cycles = run_cycles(ctrl, level.get(), 10);
            int best = cycles.values[0];
            size_t bestcycle = 0, end = 0; // counted from 1, 0 is the start
            for (size_t i = 1; i < cycles.values.size(); i++) {
                EXPECT_EQ(end, 0u) << "cycle after the end";
                if (cycles.values[i] < best) {
                    best = cycles.values[i];
                    bestcycle = i;
                } else if (i - bestcycle >= 2) {
                    end = i;
                }
            }
            EXPECT_TRUE(end > 0 || cycles.values.size() == 11u);
            EXPECT_EQ(cycles.result, cycles.values.back()); // the last one stands
            EXPECT_EQ(cycles.last, cycles.result);
            EXPECT_EQ(level->objval, cycles.result);
            EXPECT_EQ(cycles.result, rtype == OBJECTIVE_CUT
                                         ? fresh_cut(level.get(), level->where)
                                         : fresh_soed(level.get(), level->where));
            EXPECT_EQ(level->kpwgts, nullptr);
            EXPECT_EQ(level->crinfo, nullptr);
            EXPECT_EQ(level->cellmap, nullptr);
            counts.insert(cycles.values.size() - 1);
        }
    }
    EXPECT_TRUE(counts.count(3)) << "one improvement and two without";
    EXPECT_LE(*counts.rbegin(), 10u);
}
