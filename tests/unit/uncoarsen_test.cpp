// SPDX-License-Identifier: MIT
/* tests/unit/uncoarsen_test.cpp: the refinement driver and projection. */
#include "refine/uncoarsen.h"

#include "coarsen/coarsen.h"
#include "levels.h"
#include "matchings.h"
#include "refine/fm.h"
#include "traces.h"

/* A ring of hyperedges coarsened nlevels times by pairs; the coarsest is bisected evenly. */
struct Chain {
    Level level;
    HGraph *coarsest;
};

static Chain ring_chain(int ncells, int nlevels)
{
    Nets nets = path_nets(ncells);
    nets.push_back({ncells - 1, 0});
    Chain chain = {make_level(ncells, nets), nullptr};
    PartCtrl ctrl = make_ctrl();
    HGraph *graph = chain.level.get();
    graph->level = 0;
    srand(1);
    for (int i = 1; i <= nlevels; i++) {
        graph = run_matching("Edges", &ctrl, graph);
        graph->level = i;
    }
    Ints sides;
    for (int c = 0; c < graph->ncells; c++) sides.push_back(c % 2);
    set_sides(graph, sides);
    chain.coarsest = graph;
    return chain;
}

static PartCtrl loose_ctrl(int rtype)
{
    PartCtrl ctrl = make_ctrl();
    ctrl.ubfactor = 0.45f; // no level needs balancing
    ctrl.RType = rtype;
    ctrl.dbglvl = DBG_PASS;
    return ctrl;
}

static std::string refine(PartCtrl ctrl, Chain &chain)
{
    return printed_by([&] { Refine__(&ctrl, chain.level.get(), chain.coarsest); });
}

/* One letter a refinement: F plain, C constrained, E early exit, 1 one-way. */
static std::string kinds(const std::string &trace)
{
    std::string letters;
    for (const std::string &line : lines_with(trace, "")) {
        if (line.rfind("1-way", 0) == 0) letters += '1';
        if (line.rfind("Partitions2:", 0) == 0) letters += 'C';
        if (line.rfind("Partitions:", 0) != 0) continue;
        const std::string last = line.substr(line.rfind('['));
        letters += last.find(' ') == std::string::npos ? 'E' : 'F'; // one bound or two
    }
    return letters;
}

TEST(Refine, chain_of_one_level_is_left_as_it_is)
{
    Chain chain = ring_chain(8, 0);
    const Ints sides = to_ints(chain.level->where, 8);
    EXPECT_EQ(refine(loose_ctrl(RTYPE_FM), chain), "");
    EXPECT_EQ(to_ints(chain.level->where, 8), sides);
}

TEST(Refine, scheme_1_refines_every_finer_level)
{
    Chain chain = ring_chain(64, 3);
    EXPECT_EQ(kinds(refine(loose_ctrl(RTYPE_FM), chain)), "FFF");
    EXPECT_EQ(chain.level->coarser, nullptr);
}

TEST(Refine, scheme_2_starts_in_one_direction)
{
    Chain chain = ring_chain(64, 2);
    EXPECT_EQ(kinds(refine(loose_ctrl(RTYPE_ONEWAY), chain)), "1F1F");
}

TEST(Refine, scheme_3_leaves_early_but_on_the_two_levels_next_to_the_coarsest)
{
    Chain three = ring_chain(64, 3), four = ring_chain(64, 4), two = ring_chain(64, 2);
    EXPECT_EQ(kinds(refine(loose_ctrl(RTYPE_EEFM), three)), "FFE");
    EXPECT_EQ(kinds(refine(loose_ctrl(RTYPE_EEFM), four)), "FFEE");
    EXPECT_EQ(kinds(refine(loose_ctrl(RTYPE_EEFM), two)), "FF");
}

TEST(Refine, early_exit_levels_get_three_passes_at_most)
{
    size_t most = 0;
    for (unsigned seed = 0; seed < 300; seed++) {
        Draw draw(seed);
        LevelLimits limits;
        limits.mincells = 100;
        limits.maxcells = 200;
        Chain chain = {random_level(draw, limits), nullptr};
        PartCtrl ctrl = loose_ctrl(RTYPE_EEFM);
        ctrl.CoarsenTo = 10;
        srand(seed);
        chain.coarsest = Coarsen__(&ctrl, chain.level.get());
        set_sides(chain.coarsest, random_parts(draw, chain.coarsest->ncells, 2));
        const std::string trace = refine(ctrl, chain);
        const size_t last = trace.rfind("Partitions");
        if (last == std::string::npos || kinds(trace.substr(last)) != "E") continue;
        most = std::max(most, count_lines(trace.substr(last), "\tMinimum Cut"));
    }
    EXPECT_EQ(most, 3u);
}

TEST(Refine, early_exit_comes_after_a_tenth_of_the_vertices)
{
    Nets nets; // two groups of 32, each joined pairwise: every move makes the cut worse
    for (int u = 0; u < 64; u++)
        for (int v = u + 1; v < 64; v++)
            if (u / 32 == v / 32) nets.push_back({u, v});
    Chain chain = {make_level(64, nets), nullptr};
    PartCtrl ctrl = loose_ctrl(RTYPE_EEFM);
    ctrl.dbglvl = DBG_PASS | DBG_MOVE;
    HGraph *graph = chain.level.get();
    Ints sides(64);
    for (int v = 0; v < 64; v++) sides[at(v)] = v / 32;
    for (int i = 1; i <= 3; i++) {
        graph = run_matching("Edges", &ctrl, graph);
        graph->level = i;
        Ints coarse(at(graph->ncells));
        for (int v = 0; v < graph->finer->ncells; v++)
            coarse[at(graph->finer->cellmap[v])] = sides[at(v)];
        sides = coarse;
    }
    chain.level->level = 0;
    set_sides(graph, sides);
    chain.coarsest = graph;
    const std::string trace = refine(ctrl, chain);
    EXPECT_EQ(moved_vertices(trace.substr(trace.rfind("Partitions"))).size(), 6u);
}

TEST(Refine, full_refinement_gets_ten_passes_at_most)
{
    size_t most = 0;
    for (unsigned seed = 95; seed < 110; seed++) {
        size_t npasses[2];
        for (const bool limited : {false, true}) {
            Draw draw(seed);
            LevelLimits limits;
            limits.mincells = 100;
            limits.maxcells = 300;
            const Level level = random_level(draw, limits);
            PartCtrl ctrl = loose_ctrl(RTYPE_FM);
            set_sides(level.get(), random_parts(draw, level->ncells, 2));
            srand(seed);
            const std::string trace = printed_by([&] {
                limited ? refine_whole(&ctrl, level.get()) : Refine_FM__(&ctrl, level.get(), 100);
            });
            npasses[limited] = count_lines(trace, "\tMinimum Cut");
        }
        EXPECT_EQ(npasses[1], std::min<size_t>(npasses[0], 10));
        most = std::max(most, npasses[0]);
    }
    EXPECT_GT(most, 10u);
}

TEST(Refine, heavy_levels_get_the_constrained_form)
{
    Chain one = ring_chain(64, 3), two = ring_chain(64, 3), three = ring_chain(64, 3);
    PartCtrl ctrl = loose_ctrl(RTYPE_FM);
    ctrl.heavycells = 1;
    EXPECT_EQ(kinds(refine(ctrl, one)), "CCC");
    ctrl.RType = RTYPE_ONEWAY;
    EXPECT_EQ(kinds(refine(ctrl, two)), "1C1C1C");
    ctrl.RType = RTYPE_EEFM;
    EXPECT_EQ(kinds(refine(ctrl, three)), "CCE");
}

TEST(Refine, scheme_5_is_constrained_with_and_without_heavy_vertices)
{
    Chain light = ring_chain(64, 2), heavy = ring_chain(64, 2);
    PartCtrl ctrl = loose_ctrl(5);
    EXPECT_EQ(kinds(refine(ctrl, light)), "CC");
    ctrl.heavycells = 1;
    EXPECT_EQ(kinds(refine(ctrl, heavy)), "CC");
}

TEST(Refine, scheme_10_only_projects)
{
    Chain chain = ring_chain(64, 3);
    Ints wanted(64);
    for (int v = 0; v < 64; v++) {
        const HGraph *graph = chain.level.get();
        int c = v;
        for (; graph->coarser != nullptr; graph = graph->coarser) c = graph->cellmap[c];
        wanted[at(v)] = graph->where[c];
    }
    EXPECT_EQ(refine(loose_ctrl(10), chain), "");
    EXPECT_EQ(to_ints(chain.level->where, 64), wanted);
}

TEST(Refine, unknown_scheme_ends_the_process_at_the_first_finer_level)
{
    for (const int rtype : {0, 4}) {
        Chain chain = ring_chain(16, 1);
        PartCtrl ctrl = loose_ctrl(rtype);
        EXPECT_EXIT(Refine__(&ctrl, chain.level.get(), chain.coarsest), testing::ExitedWithCode(0),
                    "Unknown refinement type: " + std::to_string(rtype));
        Chain single = ring_chain(16, 0); // no finer level, no complaint
        EXPECT_EQ(refine(ctrl, single), "");
    }
}

TEST(Refine, unbalanced_levels_are_balanced_first)
{
    Chain chain = ring_chain(64, 1);
    for (int c = 0; c < chain.coarsest->ncells; c++) chain.coarsest->where[c] = 0;
    PartCtrl ctrl = loose_ctrl(RTYPE_FM);
    ctrl.ubfactor = 0.05f;
    const std::string trace = refine(ctrl, chain);
    EXPECT_EQ(trace.rfind("Partitions[B]:", 0), 0u);
    EXPECT_GE(chain.level->pwgts[1], 28);
}

TEST(Refine, islands_come_back_with_a_side)
{
    Nets nets = path_nets(40);
    for (Ints &net : nets)
        for (int &v : net) v = v < 20 ? v : v + 5; // 20 to 24 stand alone
    Chain chain = {make_level(45, nets), nullptr};
    PartCtrl ctrl = loose_ctrl(RTYPE_FM);
    ctrl.CoarsenTo = 10;
    chain.coarsest = Coarsen__(&ctrl, chain.level.get());
    EXPECT_EQ(chain.level->nislands, 5);
    set_sides(chain.coarsest, Ints(at(chain.coarsest->ncells), 0));
    refine(ctrl, chain);
    EXPECT_EQ(chain.level->ncells, 45);
    EXPECT_EQ(chain.level->nislands, 0);
    const Ints weights = part_weights(chain.level.get(), chain.level->where, 2);
    EXPECT_EQ(weights[0], chain.level->pwgts[0]);
    EXPECT_EQ(chain.level->mincut, fresh_cut(chain.level.get(), chain.level->where));
}

TEST(Refine, hypergraph_of_islands_only_is_shared_out_by_weight)
{
    Chain chain = {make_level(9, {}, {}, {5, 1, 1, 1, 1, 1, 1, 1, 4}), nullptr};
    PartCtrl ctrl = loose_ctrl(RTYPE_FM);
    ctrl.CoarsenTo = 4;
    chain.coarsest = Coarsen__(&ctrl, chain.level.get());
    AllocateRefinementMemory__(chain.coarsest);
    ComputeInitGains__(chain.coarsest);
    refine(ctrl, chain);
    // from the last to the first: 4 to side 1, ones evenly, 5 to the lighter side
    EXPECT_EQ(chain.level->where[8], 1);
    EXPECT_EQ(std::abs(chain.level->pwgts[0] - chain.level->pwgts[1]), 4);
    EXPECT_EQ(chain.level->mincut, 0);
}

TEST(Refine, projection_copies_sides_and_frees_the_coarser_level)
{
    Chain chain = ring_chain(16, 1);
    PartCtrl ctrl = make_ctrl();
    const Ints coarse = to_ints(chain.coarsest->where, chain.coarsest->ncells);
    ProjectPartition__(&ctrl, chain.coarsest);
    EXPECT_EQ(chain.level->coarser, nullptr);
    for (int v = 0; v < 16; v++)
        EXPECT_EQ(chain.level->where[v], coarse[at(chain.level->cellmap[v])]);
}

TEST(Refine, timers_are_charged_only_when_asked_for)
{
    Chain quiet = ring_chain(64, 2), timed = ring_chain(64, 2);
    PartCtrl ctrl = loose_ctrl(RTYPE_FM);
    ctrl.dbglvl = 0;
    for (Chain *chain : {&quiet, &timed}) {
        Refine__(&ctrl, chain->level.get(), chain->coarsest);
        for (double timer : ctrl.timers) EXPECT_GE(timer, 0.0);
        for (double timer : ctrl.timers) EXPECT_TRUE(ctrl.dbglvl == DBG_TIME || timer == 0.0);
        ctrl.dbglvl = DBG_TIME;
    }
}
