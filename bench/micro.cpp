// SPDX-License-Identifier: MIT
/* bench/micro.cpp: zorpel-micro, which times the hot routines one by one on made-up levels.
 *
 * All take their size from the argument and report items a second, so that growth beyond linear
 * shows. Options are those of Google Benchmark (--benchmark_filter=..., --help).
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "coarsen/contract.h"
#include "coarsen/match_star.h"
#include "core/hgraph.h"
#include "core/memory.h"
#include "spare/pqueue.h"
#include "core/sort.h"
#include "io/partfile.h"
#include "io/read_hgraph.h"
#include "core/ctrl.h"
#include "refine/fm.h"
#include "refine/gains.h"

using Ints = std::vector<int>;

/* ---- made-up data ------------------------------------------------------------------------ */

static Ints random_ints(int n, int low, int high)
{
    std::mt19937 random(1);
    Ints numbers(static_cast<size_t>(n));
    const unsigned range = static_cast<unsigned>(high - low) + 1;
    for (int &number : numbers) number = low + static_cast<int>(random() % range);
    return numbers;
}

/* A level of n vertices, each with a hyperedge of two to eight vertices around it. */
static HGraph *make_level(int n)
{
    constexpr int LEAST = 2, SIZES = 7, NEAR = 64;
    std::mt19937 random(1);
    HGraph *const graph = CreateHGraph__();
    const size_t size = static_cast<size_t>(n);
    graph->ncells = graph->nnets = n;
    graph->nislands = graph->nfixed = graph->level = 0;
    graph->cellwgt = ismalloc__(size, 1, "micro: cellwgt");
    graph->netwgt = ismalloc__(size, 1, "micro: netwgt");
    graph->netptr = imalloc__(size + 1, "micro: netptr");
    graph->netind = imalloc__((LEAST + SIZES) * size, "micro: netind");
    int *const netptr = graph->netptr;
    netptr[0] = 0;
    for (int e = 0; e < n; e++) {
        const int want = LEAST + static_cast<int>(random() % SIZES);
        int *const pins = graph->netind + netptr[e];
        int used = 0;
        pins[used++] = e;
        while (used < want) {
            const int v = (e + static_cast<int>(random() % NEAR)) % n;
            if (std::find(pins, pins + used, v) == pins + used) pins[used++] = v;
        }
        netptr[e + 1] = netptr[e] + used;
    }
    CreateIncidentHGraph__(graph);
    return graph;
}

static PartCtrl make_ctrl(int n)
{
    PartCtrl ctrl = {};
    ctrl.CoarsenTo = COARSEN_TO;
    ctrl.CType = CTYPE_FC;
    ctrl.RType = RTYPE_FM;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.MaxCellWgt = std::max(2, n / 50);
    ctrl.ubfactor = 0.05f;
    ctrl.splitratio = 0.5f;
    return ctrl;
}

static int pins_of(const HGraph *graph)
{
    return graph->netptr[graph->nnets];
}

/* ---- the gain queue ---------------------------------------------------------------------- */

/* The first argument is the number of vertices, the second the span of the gains, which chooses
 * buckets or a heap. */
struct QueueData {
    PQueue queue;
    int nvertices;
    Ints gains;
};

static void open_queue(const benchmark::State &state, QueueData *data)
{
    const int n = static_cast<int>(state.range(0)), span = static_cast<int>(state.range(1));
    PQueueInit__(&data->queue, n, span);
    data->nvertices = n;
    data->gains = random_ints(n, -std::min(span, 2 * n), std::min(span, 2 * n));
}

static void fill(QueueData *data)
{
    for (int v = 0; v < data->nvertices; v++)
        PQueueInsert__(&data->queue, v, data->gains[static_cast<size_t>(v)]);
}

static void queue_fill_and_empty(benchmark::State &state)
{
    QueueData data;
    open_queue(state, &data);
    for (auto _ : state) {
        fill(&data);
        for (int v; (v = PQueueGetMax__(&data.queue)) >= 0;) benchmark::DoNotOptimize(v);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    PQueueFree__(&data.queue);
}
BENCHMARK(queue_fill_and_empty)
    ->ArgNames({"vertices", "span"})
    ->ArgsProduct({{1000, 30000, 1000000}, {20}})
    ->ArgsProduct({{1000, 30000, 1000000}, {10000000}});

/* Steps of one up and down, as hyperedges of weight one cause them. */
static void queue_update(benchmark::State &state)
{
    QueueData data;
    open_queue(state, &data);
    fill(&data);
    const Ints order = random_ints(1 << 16, 0, data.nvertices - 1);
    size_t i = 0;
    for (auto _ : state) {
        const int v = order[i++ & 0xffff];
        int *const gain = &data.gains[static_cast<size_t>(v)];
        const int next = *gain > 0 ? *gain - 1 : *gain + 1;
        PQueueUpdate__(&data.queue, v, *gain, next);
        *gain = next;
    }
    state.SetItemsProcessed(state.iterations());
    PQueueFree__(&data.queue);
}
BENCHMARK(queue_update)
    ->ArgNames({"vertices", "span"})
    ->ArgsProduct({{1000, 30000, 1000000}, {20}})
    ->ArgsProduct({{1000, 30000, 1000000}, {10000000}});

/* ---- sorts ------------------------------------------------------------------------------- */

static void sort_pins_of_a_hyperedge(benchmark::State &state)
{
    const Ints numbers = random_ints(static_cast<int>(state.range(0)), 0, 1000000);
    Ints sorted(numbers.size());
    for (auto _ : state) {
        sorted = numbers;
        iintsort__(static_cast<int>(sorted.size()), sorted.data());
        benchmark::DoNotOptimize(sorted.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(sort_pins_of_a_hyperedge)->Arg(4)->Arg(50)->Arg(1000000);

static void sort_hyperedges_by_key(benchmark::State &state)
{
    const Ints keys = random_ints(static_cast<int>(state.range(0)), 0, 1000000000);
    std::vector<KeyValue> pairs(keys.size());
    for (auto _ : state) {
        for (size_t i = 0; i < keys.size(); i++) pairs[i] = {keys[i], static_cast<int>(i)};
        ikeysort__(static_cast<int>(pairs.size()), pairs.data());
        benchmark::DoNotOptimize(pairs.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(sort_hyperedges_by_key)->Arg(1000)->Arg(30000)->Arg(1000000);

/* ---- coarsening -------------------------------------------------------------------------- */

struct MatchData {
    PartCtrl ctrl;
    HGraph *graph;
    Ints perm, htable, vpairs;
};

static void open_match(const benchmark::State &state, MatchData *data)
{
    const int n = static_cast<int>(state.range(0));
    const size_t size = static_cast<size_t>(n);
    *data = {make_ctrl(n), make_level(n), Ints(size), Ints(2 * size, -1), Ints(2 * size)};
}

static void match(MatchData *data)
{
    const MatchWork work = {data->perm.data(), data->htable.data(), data->vpairs.data()};
    Match_EdgesStars__(&data->ctrl, data->graph, &work, VisitOrder::by_degree);
}

static void drop_coarser(HGraph *graph)
{
    FreeHGraph__(graph->coarser);
    graph->coarser = nullptr;
    QXfree__(&graph->netmap, LTERM);
}

static void report_pins(benchmark::State &state, const HGraph *graph)
{
    state.SetItemsProcessed(state.iterations() * pins_of(graph));
}

static void match_and_contract(benchmark::State &state)
{
    MatchData data;
    open_match(state, &data);
    for (auto _ : state) {
        srand(1);
        match(&data);
        state.PauseTiming();
        drop_coarser(data.graph);
        free_cycle_arrays(data.graph);
        state.ResumeTiming();
    }
    report_pins(state, data.graph);
    FreeHGraph__(data.graph);
}
BENCHMARK(match_and_contract)->Arg(1000)->Arg(30000)->Arg(1000000);

static void contract(benchmark::State &state)
{
    MatchData data;
    open_match(state, &data);
    match(&data);
    const int cnvtxs = data.graph->coarser->ncells;
    for (auto _ : state) {
        state.PauseTiming();
        drop_coarser(data.graph);
        state.ResumeTiming();
        CreateCoarseHGraph__(&data.ctrl, data.graph, cnvtxs);
    }
    report_pins(state, data.graph);
    FreeHGraph__(data.graph->coarser);
    FreeHGraph__(data.graph);
}
BENCHMARK(contract)->Arg(1000)->Arg(30000)->Arg(1000000);

/* ---- refinement -------------------------------------------------------------------------- */

static void initial_gains(benchmark::State &state)
{
    HGraph *const graph = make_level(static_cast<int>(state.range(0)));
    const Ints sides = random_ints(graph->ncells, 0, 1);
    AllocateRefinementMemory__(graph);
    std::copy(sides.begin(), sides.end(), graph->where);
    for (auto _ : state) ComputeInitGains__(graph);
    report_pins(state, graph);
    FreeHGraph__(graph);
}
BENCHMARK(initial_gains)->Arg(1000)->Arg(30000)->Arg(1000000);

/* From halves whose border is rough: every tenth vertex near the middle is on the wrong side. */
static void refine_one_pass(benchmark::State &state)
{
    HGraph *const graph = make_level(static_cast<int>(state.range(0)));
    PartCtrl ctrl = make_ctrl(graph->ncells);
    Ints sides(static_cast<size_t>(graph->ncells));
    for (int v = 0; v < graph->ncells; v++)
        sides[static_cast<size_t>(v)] = (2 * v < graph->ncells) != (v % 10 == 0);
    AllocateRefinementMemory__(graph);
    for (auto _ : state) {
        std::copy(sides.begin(), sides.end(), graph->where);
        Refine_FM__(&ctrl, graph, 1);
    }
    report_pins(state, graph);
    FreeHGraph__(graph);
}
BENCHMARK(refine_one_pass)->Arg(1000)->Arg(30000)->Arg(1000000);

/* ---- files ------------------------------------------------------------------------------- */

/* A scratch folder of this process, which goes with what is in it. */
static std::string open_folder()
{
    const std::string name = "zorpel_micro_" + std::to_string(getpid());
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directories(folder);
    return folder.string();
}

static void write_lists(const HGraph *graph, const std::string &name)
{
    FILE *const file = fopen(name.c_str(), "w");
    fprintf(file, "%d %d\n", graph->nnets, graph->ncells);
    for (int e = 0; e < graph->nnets; e++) {
        const int end = graph->netptr[e + 1];
        for (int j = graph->netptr[e]; j < end; j++)
            fprintf(file, "%d%c", graph->netind[j] + 1, j + 1 < end ? ' ' : '\n');
    }
    fclose(file);
}

static void read_file(benchmark::State &state)
{
    const std::string folder = open_folder(), name = folder + "/level.hgr";
    HGraph *const graph = make_level(static_cast<int>(state.range(0)));
    write_lists(graph, name);
    for (auto _ : state) FreeHGraph__(ReadHGraph(name.c_str()));
    report_pins(state, graph);
    FreeHGraph__(graph);
    std::filesystem::remove_all(folder);
}
BENCHMARK(read_file)->Arg(1000)->Arg(30000)->Arg(1000000);

static void write_parts(benchmark::State &state)
{
    const std::string folder = open_folder(), name = folder + "/level.hgr";
    const Ints part = random_ints(static_cast<int>(state.range(0)), 0, 63);
    for (auto _ : state) WriteHGraphPart(static_cast<int>(part.size()), part.data(), name.c_str());
    state.SetItemsProcessed(state.iterations() * state.range(0));
    std::filesystem::remove_all(folder);
}
BENCHMARK(write_parts)->Arg(1000)->Arg(30000)->Arg(1000000);

BENCHMARK_MAIN();
