// SPDX-License-Identifier: MIT
/* tests/model/kway_twin_test.cpp: k-way refinement against a plain twin, move by move.
 *
 * The twin counts every vertex's record from the hyperedges' part lists at each visit. Two things
 * it must keep like the refiner, for moves depend on them: the order of a hyperedge's parts (the
 * last one takes the place of one that vanishes), and the majority votes of pins that a move does
 * not revisit, which stay as they were.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "core/random.h"
#include "kway/kway_gains.h"
#include "kway/refine_random.h"
#include "print_to.h"
#include "levels.h"

struct Count {
    int part, pins;
};

struct Target {
    int part, num, ties, soed;
};

struct Record {
    int id, ed;
    std::vector<Target> targets;
};

struct KwayTwin {
    const HGraph *graph;
    int nparts;
    bool soed; // objective
    Ints where, weights;
    std::vector<std::vector<Count>> parts; // of each hyperedge
    std::vector<Record> records;
    int minpwgt, maxpwgt;
    int cut, minsoed; // by the gains of the moves, as the refiner counts them
    std::string trace;
};

static Ints nets_of(const HGraph *graph, int v)
{
    return to_ints(graph->incind + graph->incptr[v], graph->incptr[v + 1] - graph->incptr[v]);
}

static void add_pin(std::vector<Count> &counts, int part)
{
    for (Count &count : counts) {
        if (count.part != part) continue;
        count.pins++;
        return;
    }
    counts.push_back({part, 1});
}

static void drop_pin(std::vector<Count> &counts, int part)
{
    for (Count &count : counts) {
        if (count.part != part) continue;
        if (--count.pins > 0) return;
        count = counts.back();
        counts.pop_back();
        return;
    }
}

static int pins_in(const std::vector<Count> &counts, int part)
{
    for (const Count &count : counts)
        if (count.part == part) return count.pins;
    return 0;
}

static Target &target_of(Record &record, int part)
{
    for (Target &target : record.targets)
        if (target.part == part) return target;
    record.targets.push_back({part, 0, 0, 0});
    return record.targets.back();
}

/* The record of v by the meaning of its fields. */
static Record count_record(const KwayTwin &twin, int v)
{
    const int home = twin.where[at(v)];
    Record record = {0, 0, {}};
    int total = 0;
    std::map<int, int> touching; // weight of v's hyperedges that touch each part
    for (int e : nets_of(twin.graph, v)) {
        const std::vector<Count> &counts = twin.parts[at(e)];
        const int w = twin.graph->netwgt[e], own = pins_in(counts, home);
        total += w;
        if (counts.size() == 1) record.id += w;
        if (counts.size() > 1 && own == 1) record.ed += w;
        for (const Count &count : counts) {
            if (count.part == home) continue;
            Target &target = target_of(record, count.part);
            touching[count.part] += w;
            target.ties += (own < count.pins) - (own > count.pins);
            if (own == 1 && counts.size() == 2) target.num += w;
        }
    }
    for (Target &target : record.targets) target.soed = record.ed - (total - touching[target.part]);
    return record;
}

static int first_key(const KwayTwin &twin, const Target &target)
{
    return twin.soed ? target.soed : target.num;
}

static int second_key(const KwayTwin &twin, const Target &target)
{
    return twin.soed ? target.num : target.soed;
}

static bool ranks_above(const KwayTwin &twin, const Target &a, const Target &b)
{
    const Ints keys_a = {first_key(twin, a), second_key(twin, a), a.ties};
    const Ints keys_b = {first_key(twin, b), second_key(twin, b), b.ties};
    if (keys_a != keys_b) return keys_a > keys_b;
    return twin.weights[at(a.part)] <= twin.weights[at(b.part)];
}

static const Target *best_target(const KwayTwin &twin, const Record &record, int weight)
{
    const Target *best = nullptr;
    for (const Target &target : record.targets) {
        if (twin.weights[at(target.part)] + weight > twin.maxpwgt) continue;
        const int least = twin.soed ? 0 : record.id;
        if (best == nullptr ? first_key(twin, target) >= least : ranks_above(twin, target, *best))
            best = &target;
    }
    return best;
}

static bool accepts(const KwayTwin &twin, const Record &record, const Target &best, int home,
                    int weight)
{
    const int gain = best.num - record.id;
    if (best.soed > 0 || (!twin.soed && gain > 0) || (twin.soed && gain > 0)) return true;
    if (best.soed < 0 || gain < 0 || best.ties < 0) return false;
    return best.ties > 0 || twin.weights[at(home)] - twin.weights[at(best.part)] > weight;
}

static void move_in_twin(KwayTwin &twin, int v, int to)
{
    const int from = twin.where[at(v)];
    twin.where[at(v)] = to;
    twin.weights[at(from)] -= twin.graph->cellwgt[v];
    twin.weights[at(to)] += twin.graph->cellwgt[v];
    std::set<int> revisited = {v};
    for (int e : nets_of(twin.graph, v)) {
        std::vector<Count> &counts = twin.parts[at(e)];
        drop_pin(counts, from);
        add_pin(counts, to);
        if (pins_in(counts, from) > 1 && pins_in(counts, to) > 2) continue;
        for (int u : net_pins(twin.graph, e)) revisited.insert(u);
    }
    for (int u : revisited) twin.records[at(u)] = count_record(twin, u);
}

/* The stored record of v, which may differ from a fresh count in the votes only. */
static const Record &record_of(const KwayTwin &twin, int v)
{
    const Record &stored = twin.records[at(v)];
    const Record fresh = count_record(twin, v);
    EXPECT_EQ(stored.id, fresh.id);
    EXPECT_EQ(stored.ed, fresh.ed);
    EXPECT_EQ(stored.targets.size(), fresh.targets.size());
    for (size_t i = 0; i < std::min(stored.targets.size(), fresh.targets.size()); i++) {
        EXPECT_EQ(stored.targets[i].part, fresh.targets[i].part);
        EXPECT_EQ(stored.targets[i].num, fresh.targets[i].num);
        EXPECT_EQ(stored.targets[i].soed, fresh.targets[i].soed);
    }
    return stored;
}

static void visit(KwayTwin &twin, int v)
{
    const Record record = record_of(twin, v);
    const int home = twin.where[at(v)], weight = twin.graph->cellwgt[v];
    if (v < twin.graph->nfixed || record.id > record.ed) return;
    if (twin.weights[at(home)] - weight < twin.minpwgt) return;
    const Target *const best = best_target(twin, record, weight);
    if (best == nullptr || !accepts(twin, record, *best, home, weight)) return;
    twin.cut -= best->num - record.id;
    twin.minsoed -= best->num - record.id + best->soed;
    move_in_twin(twin, v, best->part);
    print_to(twin.trace, "\tMoving %6d[%3d] (%3d -> %3d) [%4d %4d %4d %4d] %5d %5d\n", v,
             static_cast<int>(nets_of(twin.graph, v).size()), home, best->part, record.id,
             best->num, best->soed, best->ties, twin.cut, twin.minsoed);
}

static void open_twin(KwayTwin &twin, const HGraph *graph, const PartCtrl &ctrl, bool soed,
                      const Ints &where)
{
    twin.graph = graph;
    twin.nparts = ctrl.nparts;
    twin.soed = soed;
    twin.where = where;
    twin.weights = part_weights(graph, where.data(), ctrl.nparts);
    for (int e = 0; e < graph->nnets; e++) {
        twin.parts.emplace_back();
        for (int u : net_pins(graph, e)) add_pin(twin.parts.back(), where[at(u)]);
    }
    twin.cut = fresh_cut(graph, where.data());
    twin.minsoed = fresh_soed(graph, where.data());
    for (int v = 0; v < graph->ncells; v++) twin.records.push_back(count_record(twin, v));
    const float total = static_cast<float>(sum(graph->cellwgt, graph->ncells));
    const float nparts = static_cast<float>(ctrl.nparts), scaled = ctrl.ubfactor * total;
    const float divisor = nparts * ctrl.ubfactor;
    twin.maxpwgt = static_cast<int>(scaled / nparts);
    twin.minpwgt = static_cast<int>(total / divisor);
}

static void sweep(KwayTwin &twin, const PartCtrl &ctrl, int npasses)
{
    Ints perm(at(twin.graph->ncells));
    std::iota(perm.begin(), perm.end(), 0);
    for (int pass = 0; pass < npasses; pass++) {
        RandomPermute__(perm.data(), twin.graph->ncells, 0);
        const int oldcut = twin.cut, oldsoed = twin.minsoed;
        const auto before = std::minmax_element(twin.weights.begin(), twin.weights.end());
        if (pass == 0)
            print_to(twin.trace,
                     "Partitions: [%5d,%5d], Balance: [%3.2f, %5d,%5d], "
                     "Init Cut: %5d, Init SOED: %5d\n",
                     *before.first, *before.second, static_cast<double>(ctrl.ubfactor),
                     twin.minpwgt, twin.maxpwgt, oldcut, oldsoed);
        const size_t start = twin.trace.size();
        for (int v : perm) visit(twin, v);
        const int nmoves = static_cast<int>(
            std::count(twin.trace.begin() + static_cast<long>(start), twin.trace.end(), '\n'));
        const auto after = std::minmax_element(twin.weights.begin(), twin.weights.end());
        print_to(twin.trace, "\tCut: %8d, SOED: %8d, Nmoves: %3d, Pwgts: [%6d %6d]\n", twin.cut,
                 twin.minsoed, nmoves, *after.first, *after.second);
        if (twin.cut == oldcut && twin.minsoed == oldsoed) break;
    }
}

static void compare_with_twin(bool soed, bool unitnets)
{
    int nmoves = 0;
    for (unsigned seed = 0; seed < 1200; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Draw draw(seed);
        LevelLimits limits;
        limits.unitnets = unitnets;
        limits.maxsize = one_in(draw, 3) ? 16 : 6;
        const Level level = random_level(draw, limits);
        PartCtrl ctrl = make_ctrl();
        ctrl.nparts = between(draw, 2, 6);
        ctrl.ubfactor = 1.0f + 0.2f * static_cast<float>(below(draw, 12));
        ctrl.dbglvl = DBG_PASS | DBG_MOVE;
        const int npasses = between(draw, 0, 5);
        const Ints parts = random_parts(draw, level->ncells, ctrl.nparts);
        AllocateKwayRefinementMemory__(&ctrl, level.get());
        std::copy(parts.begin(), parts.end(), level->where);

        KwayTwin twin;
        open_twin(twin, level.get(), ctrl, soed, parts);
        srand(seed);
        sweep(twin, ctrl, npasses);
        srand(seed);
        testing::internal::CaptureStdout();
        (soed ? RefineSOEDKway_Random__ : RefineCutKway_Random__)(&ctrl, level.get(), npasses);
        ASSERT_EQ(testing::internal::GetCapturedStdout(), twin.trace);
        ASSERT_EQ(to_ints(level->where, level->ncells), twin.where);
        ASSERT_EQ(to_ints(level->kpwgts, ctrl.nparts), twin.weights);
        ASSERT_EQ(level->objval, soed ? level->minsoed : level->mincut);
        ASSERT_EQ(level->mincut, twin.cut);
        ASSERT_EQ(level->minsoed, twin.minsoed);
        if (!unitnets) {
            ASSERT_EQ(level->mincut, fresh_cut(level.get(), level->where));
            ASSERT_EQ(level->minsoed, fresh_soed(level.get(), level->where));
            ASSERT_TRUE(kway_ok(&ctrl, level.get()));
        }
        ASSERT_FALSE(testing::Test::HasFailure());
        nmoves += to_ints(level->where, level->ncells) != parts;
    }
    EXPECT_GT(nmoves, 200);
}

TEST(KwayTwin, cut_refinement_agrees_move_by_move)
{
    compare_with_twin(false, false);
}

TEST(KwayTwin, soed_refinement_agrees_move_by_move)
{
    compare_with_twin(true, false);
}

/* A hyperedge of one vertex is inside its part wherever the vertex goes, yet weighs against every
 * move of it; the cut that the refiner keeps drifts by it. */
TEST(KwayTwin, hyperedges_of_one_vertex_count_as_told)
{
    compare_with_twin(false, true);
    compare_with_twin(true, true);
}
