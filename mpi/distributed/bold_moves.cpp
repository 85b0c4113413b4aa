// SPDX-License-Identifier: MIT
/* mpi/distributed/bold_moves.cpp: plan, judge again, move, rebalance, keep the best.
 *
 * A plan is a move that each vertex would make by itself. Ghosts learn it, and every hyperedge
 * plays the plans of its pins through in the order of their keys: what each then changes, over all
 * hyperedges, is the gain by which its owner decides. A vertex that has moved rests for one
 * iteration.
 */
#include "distributed/bold_moves.h"

#include "core/heavy_assert.h"
#include "distributed/choose_part.h"
#include "distributed/rate_moves.h"
#include "distributed/refine_ranks.h"
#include "distributed/senders.h"

constexpr int ITERATIONS = 30, PATIENCE = 6; // of one boldness, and without a gain worth it

/* How a pass goes about it. */
struct Boldness {
    int64_t share; // a vertex may lose one in so many of its hyperedges' weight
    int turns;     // one in so many vertices, by lot, plans in each iteration
};
/* First far, which a mesh needs, then nearer, and last with fewer neighbours that move at once, which
 * a netlist needs. */
constexpr Boldness PASSES[] = {{2, 1}, {8, 1}, {64, 2}};
constexpr int64_t WORTH_IT = 1000; // of the objective, that a gain is

struct Plan {
    int to; // -1: stays
    uint32_t key;
};

/* The moves that vertices would make by themselves. */
static std::vector<Plan> make_plans(const Level *level, const Goal *goal, const Division *division,
                                    uint64_t seed, const Boldness *boldness,
                                    const std::vector<char> &rests, const Mail<Share> &mail)
{
    std::vector<Plan> plans(level->weight.size(), {-1, 0});
    Chooser chooser = open_chooser(level, goal, division);
    for (int64_t &room : chooser.room) room = INT64_MAX;
    const int64_t scale = cost_of(goal->objective, 2);
    Tally tally;
    for_each_vertex(
        mail, [&](const Share &share) { add_tally(&tally, share.part + 1, share.value, -1); },
        [&](int vertex) {
            const size_t v = static_cast<size_t>(vertex);
            const Choice choice = choose_part(&chooser, v, &tally);
            empty_tally(&tally);
            if (rests[v] || !is_free(level, v) || choice.part < 0) return;
            if (choice.gain < -(scale * level->incident[v] / boldness->share)) return;
            assert(choice.part != division->part[v] && choice.part < goal->nparts);
            plans[v] = {choice.part,
                        key_of(class_of_gain(choice.gain), seed, level->begin + vertex)};
        });
    return plans;
}

/* Plays the plans of one hyperedge through; each change goes to its ghost. */
static void play_net(const Level *level, const Goal *goal, const Division *division, int e,
                     const std::vector<Plan> &plans, std::vector<int> *count,
                     std::vector<int> *movers, std::vector<int64_t> *gains)
{
    const int begin = level->netptr[static_cast<size_t>(e)];
    const int end = level->netptr[static_cast<size_t>(e) + 1];
    movers->clear();
    for (int i = begin; i < end; i++)
        if (plans[static_cast<size_t>(level->netind[static_cast<size_t>(i)])].to >= 0)
            movers->push_back(level->netind[static_cast<size_t>(i)]);
    if (movers->empty()) return;
    assert(static_cast<int>(movers->size()) <= end - begin);
    std::sort(movers->begin(), movers->end(), [&](int a, int b) {
        const uint32_t ka = plans[static_cast<size_t>(a)].key,
                       kb = plans[static_cast<size_t>(b)].key;
        return ka != kb ? ka < kb : a < b; // ghosts rise as global numbers do
    });
    int d = 0;
    for (int i = begin; i < end; i++) {
        const int g = level->netind[static_cast<size_t>(i)];
        d += (*count)[static_cast<size_t>(division->seen[static_cast<size_t>(g)])]++ == 0;
    }
    for (const int g : *movers) {
        int *const from = &(*count)[static_cast<size_t>(division->seen[static_cast<size_t>(g)])];
        int *const to = &(*count)[static_cast<size_t>(plans[static_cast<size_t>(g)].to)];
        const int before = d;
        assert(*from > 0 && from != to && d >= 1);
        d += ((*to)++ == 0) - (--*from == 0);
        (*gains)[static_cast<size_t>(g)] +=
            level->netweight[static_cast<size_t>(e)] *
            (cost_of(goal->objective, before) - cost_of(goal->objective, d));
    }
    for (int i = begin; i < end; i++) {
        const size_t g = static_cast<size_t>(level->netind[static_cast<size_t>(i)]);
        (*count)[static_cast<size_t>(division->seen[g])] = 0;
        if (plans[g].to >= 0) (*count)[static_cast<size_t>(plans[g].to)] = 0;
    }
}

/* The plans of own vertices at their ghosts. */
static std::vector<Plan> plans_of_ghosts(Ranks *ranks, const Level *level,
                                         const std::vector<Plan> &own)
{
    std::vector<char> planned(own.size());
    for (size_t v = 0; v < own.size(); v++) planned[v] = own[v].to >= 0;
    assert(own.size() == level->weight.size());
    std::vector<Plan> plans(level->ghost.size(), {-1, 0});
    mirror_changes(ranks, level, planned, own, &plans);
    return plans;
}

/* Sums what ghosts that have a plan gain into the own vertices that they stand for. Nothing but the
 * gains is sent: owners know the plans, and both sides go through them in one order. */
static std::vector<int64_t> gains_of_own(Ranks *ranks, const Level *level,
                                         const std::vector<Plan> &plans,
                                         const std::vector<int64_t> &gains,
                                         const std::vector<Plan> &own)
{
    Mail<int64_t> mail;
    mail.first.assign(1, 0);
    for (size_t r = 1; r < level->ghostfirst.size(); r++) {
        for (int64_t g = level->ghostfirst[r - 1]; g < level->ghostfirst[r]; g++)
            if (plans[static_cast<size_t>(g)].to >= 0)
                mail.records.push_back(gains[static_cast<size_t>(g)]);
        mail.first.push_back(static_cast<int64_t>(mail.records.size()));
    }
    exchange(ranks, &mail);
    std::vector<int64_t> sums(own.size(), 0);
    size_t next = 0;
    for (const int mirrored : level->mirror) {
        const size_t v = static_cast<size_t>(mirrored);
        if (own[v].to < 0) continue;
        assert(next < mail.records.size());
        sums[v] += mail.records[next++];
    }
    assert(next == mail.records.size());
    return sums;
}

/* The gains of the plans, all played through; by own vertex. */
static std::vector<int64_t> judge(Ranks *ranks, const Level *level, const Goal *goal,
                                  const Division *division, const std::vector<Plan> &own)
{
    const std::vector<Plan> plans = plans_of_ghosts(ranks, level, own);
    std::vector<int> count(static_cast<size_t>(goal->nparts), 0), movers;
    std::vector<int64_t> gains(plans.size(), 0);
    for (int e = 0; e < nnets_of(level); e++)
        play_net(level, goal, division, e, plans, &count, &movers, &gains);
    return gains_of_own(ranks, level, plans, gains, own);
}

/* One iteration without its rebalancing. */
static void move_once(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                      const Boldness *boldness, std::vector<char> *rests, Division *division)
{
    const Turn turn = {seed, 0, boldness->turns, {}, 9};
    Mail<Share> mail;
    rate_moves(ranks, level, goal, division, &turn, &mail);
    const std::vector<Plan> plans = make_plans(level, goal, division, seed, boldness, *rests, mail);
    mail = Mail<Share>();
    const std::vector<int64_t> gains = judge(ranks, level, goal, division, plans);
    std::vector<Move> moves;
    for (size_t v = 0; v < plans.size(); v++) {
        (*rests)[v] = plans[v].to >= 0 && gains[v] >= 0;
        if ((*rests)[v])
            moves.push_back({static_cast<int>(v), division->part[v], plans[v].to, plans[v].key,
                             level->weight[v]});
    }
    make_moves(ranks, level, moves, false, division);
}

/* Iterations of one boldness; the best partition on the way stays. Returns its objective. */
static int64_t move_until_idle(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                               const Boldness *boldness, Division *division)
{
    int64_t best = rate_moves(ranks, level, goal, division, nullptr, nullptr);
    int64_t excess = excess_of(goal, division), start = best;
    std::vector<int> bestpart = division->part;
    std::vector<char> rests(bestpart.size(), 0);
    for (int i = 0, idle = 0; i < ITERATIONS && idle < PATIENCE; i++) {
        const uint64_t mine = lot(seed, static_cast<uint64_t>(i), 3);
        move_once(ranks, level, goal, mine, boldness, &rests, division);
        rebalance_level(ranks, level, goal, mine, division);
        const int64_t value = rate_moves(ranks, level, goal, division, nullptr, nullptr);
        const int64_t over = excess_of(goal, division);
        idle++;
        if (over > excess || (over == excess && value >= best)) continue;
        best = value;
        excess = over;
        bestpart = division->part;
        if (start - best <= start / WORTH_IT) continue;
        start = best;
        idle = 0;
    }
    assert(bestpart.size() == division->part.size());
    division->part = std::move(bestpart);
    load_division(ranks, level, goal, division);
    return best;
}

int64_t move_boldly(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                    Division *division)
{
    int64_t value = 0;
    for (const Boldness &boldness : PASSES)
        value =
            move_until_idle(ranks, level, goal, lot(seed, static_cast<uint64_t>(boldness.share), 5),
                            &boldness, division);
    HEAVY_ASSERT(division_ok(ranks, level, goal, division));
    return value;
}
