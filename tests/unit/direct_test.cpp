// SPDX-License-Identifier: MIT
/* tests/unit/direct_test.cpp: direct k-way partitioning, on the shipped examples.
 *
 * The coarsest level is partitioned by a call that seeds from the clock, so no result is pinned:
 * what is tested holds for every sequence of random numbers.
 */
#include "spare/direct.h"

#include "io/read_hgraph.h"
#include "kway_levels.h"
#include "traces.h"

static Level example(const std::string &name)
{
    const std::string path = std::string(ZORPEL_EXAMPLES) + "/" + name + ".hgr";
    HGraph *const graph = ReadHGraph(path.c_str());
    if (graph->netwgt == nullptr) graph->netwgt = new_array(Ints(at(graph->nnets), 1));
    if (graph->cellwgt == nullptr) graph->cellwgt = new_array(Ints(at(graph->ncells), 1));
    graph->nfixed = 0;
    return Level(graph);
}

static PartCtrl direct_ctrl(int nparts, int rtype, int vcycle, int nruns = 2)
{
    PartCtrl ctrl = kway_ctrl(nparts, 1.1f);
    ctrl.RType = rtype;
    ctrl.VCycle = vcycle;
    ctrl.Nruns = nruns;
    ctrl.seed = 5;
    return ctrl;
}

struct Result {
    Ints part;
    int value;
    std::string trace;
};

static Result partition(PartCtrl ctrl, HGraph *graph)
{
    Result result = {Ints(at(graph->ncells), -1), 0, ""};
    result.trace = printed_by(
        [&] { result.value = MultilevelKwayPartition__(&ctrl, graph, result.part.data()); });
    return result;
}

using Row = std::tuple<std::string, int, int, int>; // example, parts, objective, V-cycles

class Direct : public testing::TestWithParam<Row>
{
};

TEST_P(Direct, value_equals_a_count_from_the_pins_and_parts_are_balanced)
{
    const auto [name, nparts, rtype, vcycle] = GetParam();
    const Level level = example(name);
    const Ints pins = to_ints(level->netind, level->netptr[level->nnets]);
    const PartCtrl ctrl = direct_ctrl(nparts, rtype, vcycle);
    const Result result = partition(ctrl, level.get());
    for (int part : result.part) {
        ASSERT_GE(part, 0);
        ASSERT_LT(part, nparts);
    }
    const int cut = fresh_cut(level.get(), result.part.data());
    const int soed = fresh_soed(level.get(), result.part.data());
    EXPECT_EQ(result.value, rtype == OBJECTIVE_CUT ? cut : soed);
    EXPECT_EQ(ComputeActualSOED__(level.get(), result.part.data()), soed);
    const Ints weights = part_weights(level.get(), result.part.data(), nparts);
    const int total = sum(level->cellwgt, level->ncells);
    const int heaviest = *std::max_element(weights.begin(), weights.end());
    EXPECT_FLOAT_EQ(ComputeBalanceKway__(&ctrl, level.get(), result.part.data()),
                    static_cast<float>(nparts * heaviest) / static_cast<float>(total));
    EXPECT_LE(nparts * heaviest, 1.2 * total);
    EXPECT_GT(*std::min_element(weights.begin(), weights.end()), 0);
    EXPECT_EQ(to_ints(level->netind, level->netptr[level->nnets]), pins); // numbering restored
    EXPECT_TRUE(hgraph_ok(level.get(), HG_LISTS | HG_INCIDENCE));
    EXPECT_EQ(level->where, nullptr);
}

static std::string row_name(const testing::TestParamInfo<Row> &row)
{
    return std::get<0>(row.param) + "_" + std::to_string(std::get<1>(row.param)) + "parts_" +
           (std::get<2>(row.param) == OBJECTIVE_CUT ? "cut" : "soed") + "_vcycle" +
           std::to_string(std::get<3>(row.param));
}

INSTANTIATE_TEST_SUITE_P(
    examples, Direct,
    testing::Combine(testing::Values("mult16", "fifo", "lshape", "cpu32_bus", "miter6"),
                     testing::Values(4), testing::Values(OBJECTIVE_CUT, OBJECTIVE_SOED),
                     testing::Values(VCYCLE_NO, VCYCLE_END, VCYCLE_FORMIN, VCYCLE_ALL)),
    row_name);
INSTANTIATE_TEST_SUITE_P(large_example, Direct,
                         testing::Combine(testing::Values("cpu32"), testing::Values(7),
                                          testing::Values(OBJECTIVE_CUT, OBJECTIVE_SOED),
                                          testing::Values(VCYCLE_NO)),
                         row_name);

/* The lines of one run in the trace of every stage. */
struct TracedRun {
    int trial;                // value of the pruned level
    bool refined_whole;       // hyperedges were left out
    int value;                // before V-cycles
    std::vector<Ints> cycles; // one entry for each call of the V-cycles, its last value
};

/* Splits the trace of bit 128; V-cycles after the last run are returned apart. */
static std::vector<TracedRun> runs_of(const std::string &trace, bool soed)
{
    std::vector<TracedRun> runs;
    for (const std::string &line : lines_with(trace, "    ")) {
        if (line.rfind("    Cut/SOED of trial", 0) == 0) {
            Ints values;
            std::istringstream fields(line.substr(line.find('\t')));
            for (int value; fields >> value;) values.push_back(value);
            TracedRun run = {values.at(soed ? 1 : 0), false, values.at(soed ? 1 : 0), {}};
            const size_t comma = line.find(", ");
            run.refined_whole = comma != std::string::npos;
            if (run.refined_whole) run.value = std::stoi(line.substr(comma + 2));
            runs.push_back(run);
        } else if (line.rfind("          [", 0) == 0) {
            Ints values;
            std::istringstream fields(line.substr(11));
            for (int value; fields >> value;) values.push_back(value);
            runs.back().cycles.push_back(values);
        }
    }
    return runs;
}

static std::vector<TracedRun> traced_runs(PartCtrl ctrl, HGraph *graph)
{
    ctrl.dbglvl = DBG_DETAIL;
    return runs_of(partition(ctrl, graph).trace, ctrl.RType == OBJECTIVE_SOED);
}

TEST(DirectRuns, hypergraph_without_large_hyperedges_keeps_the_pruned_result)
{
    const Level lshape = example("lshape"), fifo = example("fifo"); // largest: 19 and 139 pins
    for (const TracedRun &run : traced_runs(direct_ctrl(4, OBJECTIVE_CUT, VCYCLE_NO), lshape.get()))
        EXPECT_FALSE(run.refined_whole);
    for (const TracedRun &run : traced_runs(direct_ctrl(4, OBJECTIVE_CUT, VCYCLE_NO), fifo.get()))
        EXPECT_TRUE(run.refined_whole);
}

TEST(DirectRuns, kept_partitions_are_refined_at_the_end)
{
    const struct {
        int nruns;
        size_t kept;
    } rows[] = {{1, 1}, {2, 2}, {10, 2}, {11, 3}};
    for (const auto &row : rows) {
        const Level level = example("cpu32_bus");
        const auto runs =
            traced_runs(direct_ctrl(3, OBJECTIVE_CUT, VCYCLE_END, row.nruns), level.get());
        ASSERT_EQ(runs.size(), static_cast<size_t>(row.nruns));
        for (size_t i = 0; i + 1 < runs.size(); i++) EXPECT_TRUE(runs[i].cycles.empty());
        EXPECT_EQ(runs.back().cycles.size(), row.kept);
    }
}

/* The value that a run ends with. */
static int final_value(const TracedRun &run)
{
    return run.cycles.empty() ? run.value : run.cycles.back().back();
}

TEST(DirectRuns, mode_3_gives_cycles_to_runs_near_the_best_and_to_no_others)
{
    size_t without = 0;
    for (const bool soed : {false, true}) {
        const Level level = example("cpu32_bus");
        PartCtrl ctrl = direct_ctrl(2, soed ? OBJECTIVE_SOED : OBJECTIVE_CUT, VCYCLE_ALL, 16);
        ctrl.ubfactor = 1.02f;
        long long best = 10LL * sum(level->netwgt, level->nnets) + 1;
        for (const TracedRun &run : traced_runs(ctrl, level.get())) {
            const bool near = static_cast<double>(run.value) < 1.2 * static_cast<double>(best) ||
                              run.value - best <= 19;
            EXPECT_EQ(run.cycles.size(), near ? 1u : 0u) << run.value << " against " << best;
            best = std::min<long long>(best, final_value(run));
            without += !near;
        }
    }
    RecordProperty("runs_without_cycles", static_cast<int>(without));
}

TEST(DirectRuns, first_run_is_near_the_best_though_soed_exceeds_the_total_weight)
{
    Draw draw(9);
    Nets nets;
    for (int e = 0; e < 150; e++) nets.push_back(random_net(draw, UNIFORM, 150, 12));
    for (Ints &net : nets) // every hyperedge in all corners
        for (int v = 0; v < 150; v += 30)
            if (std::find(net.begin(), net.end(), v) == net.end()) net.push_back(v);
    const Level level = make_level(150, nets);
    QXfree__(&level->incptr, &level->incind, &level->adjwgt, &level->edgewgt, LTERM); // built anew
    const auto runs = traced_runs(direct_ctrl(8, OBJECTIVE_SOED, VCYCLE_ALL, 1), level.get());
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_GT(runs[0].value, 180 + 19);
    EXPECT_EQ(runs[0].cycles.size(), 1u);
}

TEST(DirectRuns, a_run_whose_degrees_are_beyond_the_start_value_is_kept_without_cycles)
{
    constexpr int nparts = 40;
    Draw draw(5);
    Nets nets(4000);
    for (Ints &net : nets) {
        Ints last(1500, 0);
        while (net.size() < 45) {
            const int v = static_cast<int>(draw() % 1500);
            if (last[at(v)]++ == 0) net.push_back(v);
        }
    }
    const Level level = make_level(1500, nets);
    QXfree__(&level->incptr, &level->incind, &level->adjwgt, &level->edgewgt, LTERM); // built anew
    PartCtrl ctrl = direct_ctrl(nparts, OBJECTIVE_SOED, VCYCLE_END, 1);
    const Result result = partition(ctrl, level.get());
    EXPECT_GT(result.value, 10 * 4000 + 1);
    EXPECT_EQ(result.value, fresh_soed(level.get(), result.part.data()));
    const Ints weights = part_weights(level.get(), result.part.data(), nparts);
    EXPECT_GT(*std::min_element(weights.begin(), weights.end()), 0);
    EXPECT_LE(nparts * *std::max_element(weights.begin(), weights.end()), 2 * 1500); // coarse
    EXPECT_EQ(count_lines(result.trace, "          ["), 0u);
}

TEST(DirectRuns, mode_2_gives_cycles_to_new_bests_only)
{
    const Level level = example("cpu32_bus");
    long long best = 10LL * sum(level->netwgt, level->nnets) + 1, besttrial = best;
    size_t without = 0;
    for (const TracedRun &run :
         traced_runs(direct_ctrl(4, OBJECTIVE_CUT, VCYCLE_FORMIN, 12), level.get())) {
        const bool deserves = run.value <= best || run.trial < besttrial;
        EXPECT_EQ(run.cycles.size(), deserves ? 1u : 0u);
        best = std::min<long long>(best, final_value(run));
        besttrial = std::min<long long>(besttrial, run.trial);
        without += !deserves;
    }
    EXPECT_GT(without, 0u);
}

TEST(DirectRuns, mode_0_gives_no_cycles_and_the_best_run_wins)
{
    const Level level = example("cpu32_bus");
    PartCtrl ctrl = direct_ctrl(4, OBJECTIVE_SOED, VCYCLE_NO, 10);
    ctrl.dbglvl = DBG_DETAIL;
    const Result result = partition(ctrl, level.get());
    Ints values;
    for (const TracedRun &run : runs_of(result.trace, true)) {
        EXPECT_TRUE(run.cycles.empty());
        values.push_back(run.value);
    }
    EXPECT_EQ(result.value, *std::min_element(values.begin(), values.end()));
}

TEST(DirectRuns, trace_opens_with_the_size_and_closes_with_the_value)
{
    for (const bool soed : {false, true}) {
        const Level level = example("fifo");
        PartCtrl ctrl = direct_ctrl(4, soed ? OBJECTIVE_SOED : OBJECTIVE_CUT, VCYCLE_NO, 1);
        ctrl.dbglvl = DBG_BISECTION | DBG_RUN | DBG_INIT;
        const Result result = partition(ctrl, level.get());
        EXPECT_EQ(result.trace.rfind("\n  Partitioning a hgraph of size [vertices=385, hedges=370, "
                                     "balance=1.10]\n",
                                     0),
                  0u);
        EXPECT_EQ(count_lines(result.trace, soed ? "4-way initial soed: " : "4-way initial cut: "),
                  1u);
        EXPECT_EQ(count_lines(result.trace, "    Cut/SOED of trial    0:\t "), 1u);
        EXPECT_EQ(count_lines(result.trace,
                              std::string("    The ") + (soed ? "minsoed" : "mincut") +
                                  " for this partitioning = " + std::to_string(result.value) +
                                  ", (average = " + std::to_string(result.value) +
                                  ".0) (balance = "),
                  1u);
    }
}

TEST(DirectRuns, unknown_objective_ends_the_process)
{
    const Level level = example("mult16");
    Ints part(at(level->ncells));
    PartCtrl ctrl = direct_ctrl(3, 3, VCYCLE_NO, 1);
    EXPECT_EXIT(MultilevelKwayPartition__(&ctrl, level.get(), part.data()),
                testing::ExitedWithCode(0), "Unknown refinement type: 3");
}

TEST(DirectRuns, scheme_is_restored)
{
    const Level level = example("cpu32_bus");
    PartCtrl ctrl = direct_ctrl(3, OBJECTIVE_CUT, VCYCLE_END, 3);
    Ints part(at(level->ncells));
    MultilevelKwayPartition__(&ctrl, level.get(), part.data());
    EXPECT_EQ(ctrl.CType, CTYPE_HFC);
    EXPECT_EQ(ctrl.CoarsenTo, COARSEN_TO);
    EXPECT_EQ(ctrl.ubfactor, 1.1f);
}

TEST(InitPartitionKway, coarsest_level_is_partitioned_and_measured)
{
    for (const int rtype : {OBJECTIVE_CUT, OBJECTIVE_SOED}) {
        PartCtrl ctrl = direct_ctrl(3, rtype, VCYCLE_NO);
        const Level level = make_level(60, path_nets(60));
        InitPartitionKway__(&ctrl, level.get());
        EXPECT_EQ(level->mincut, fresh_cut(level.get(), level->where));
        EXPECT_EQ(level->minsoed, fresh_soed(level.get(), level->where));
        EXPECT_EQ(level->objval, rtype == OBJECTIVE_CUT ? level->mincut : level->minsoed);
        EXPECT_TRUE(kway_ok(&ctrl, level.get()));
    }
}

TEST(Measures, balance_is_the_heaviest_part_over_the_average)
{
    const PartCtrl ctrl = kway_ctrl(3, 1.1f);
    const Level level = make_level(4, {}, {}, {5, 1, 2, 1});
    const Ints where = {1, 1, 0, 2};
    EXPECT_FLOAT_EQ(ComputeBalanceKway__(&ctrl, level.get(), where.data()), 2.0f);
}

TEST(Measures, soed_counts_the_parts_of_cut_hyperedges)
{
    const Level level = make_level(5, {{0, 1, 2, 3, 4}, {0, 1}, {2, 4}, {3}, {}}, {3, 5, 7, 9, 9});
    const Ints where = {4, 4, 0, 2, 0};
    EXPECT_EQ(ComputeActualSOED__(level.get(), where.data()), 9);
    const Ints apart = {4, 1, 0, 2, 0};
    EXPECT_EQ(ComputeActualSOED__(level.get(), apart.data()), 12 + 10);
    const Level none = make_level(0, {});
    EXPECT_EQ(ComputeActualSOED__(none.get(), nullptr), 0);
}
