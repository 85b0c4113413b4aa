// SPDX-License-Identifier: MIT
/* mpi/distributed/rate_moves.cpp: one sweep over a rank's hyperedges.
 *
 * A hyperedge of weight w that touches d parts costs w c(d). If a pin leaves part a for b, it
 * touches d - s + t, where s says that it was the only one in a, and t that b had none. So
 *
 *     gain = w (c(d) - c(d - s + 1))  +  [b has pins] w (c(d - s + 1) - c(d - s))
 *
 * of which the first term is the same for all b. In a hyperedge that is not cut d is 1 and s is 0,
 * and the gain is -w c(2): these send nothing, the owner subtracts the weight of all hyperedges of
 * the vertex and those that are cut give it back. If all parts have pins, the terms are sent as
 * one.
 */
#include "distributed/rate_moves.h"

#include "distributed/pack_shares.h"
#include "distributed/tally.h"

/* A share before it is addressed: for a ghost. */
struct Draft {
    int ghost, part;
    int64_t value;
};

struct Sweep {
    const Level *level;
    const Goal *goal;
    const Division *division;
    const Turn *turn;
    std::vector<int> count;   // [nparts] pins of the hyperedge at hand
    std::vector<int> touched; // parts that have some
    std::vector<Draft> drafts;
};

static bool is_cut(const int *pins, int size, const int *seen)
{
    for (int i = 1; i < size; i++)
        if (seen[pins[i]] != seen[pins[0]]) return true;
    return false;
}

static void draft_shares(Sweep *sweep, int64_t w, const int *pins, int size)
{
    const int *const seen = sweep->division->seen.data();
    const Turn *const turn = sweep->turn;
    const Objective objective = sweep->goal->objective;
    const int d = static_cast<int>(sweep->touched.size());
    assert(d >= 2 && d <= sweep->goal->nparts && w > 0);
    const int64_t back = w * cost_of(objective, 2), now = w * cost_of(objective, d);
    for (int i = 0; i < size; i++) {
        const int g = pins[i], from = seen[g];
        if (!turn->from.empty() && !turn->from[static_cast<size_t>(from)]) continue;
        if (!has_turn(turn, sweep->level->ghost[static_cast<size_t>(g)])) continue;
        assert(sweep->count[static_cast<size_t>(from)] > 0);
        const int left = d - (sweep->count[static_cast<size_t>(from)] == 1);
        const int64_t anew = w * cost_of(objective, left + 1), kept = w * cost_of(objective, left);
        if (d == sweep->goal->nparts) {
            sweep->drafts.push_back({g, -1, back + now - kept});
            continue;
        }
        sweep->drafts.push_back({g, -1, back + now - anew});
        if (anew == kept) continue;
        for (const int p : sweep->touched)
            if (p != from) sweep->drafts.push_back({g, p, anew - kept});
    }
}

/* The cost of a hyperedge, and its shares. */
static int64_t sweep_net(Sweep *sweep, int e)
{
    const Level *const level = sweep->level;
    const int *const seen = sweep->division->seen.data();
    const int begin = level->netptr[static_cast<size_t>(e)];
    const int *const pins = level->netind.data() + begin;
    const int size = level->netptr[static_cast<size_t>(e) + 1] - begin;
    if (!is_cut(pins, size, seen)) return 0;
    for (int i = 0; i < size; i++)
        if (sweep->count[static_cast<size_t>(seen[pins[i]])]++ == 0)
            sweep->touched.push_back(seen[pins[i]]);
    const int64_t w = level->netweight[static_cast<size_t>(e)];
    if (sweep->turn != nullptr) draft_shares(sweep, w, pins, size);
    const int64_t cost =
        w * cost_of(sweep->goal->objective, static_cast<int>(sweep->touched.size()));
    for (const int p : sweep->touched) sweep->count[static_cast<size_t>(p)] = 0;
    sweep->touched.clear();
    assert(cost > 0);
    return cost;
}

/* The drafts by ghost. */
static void sort_drafts(const Level *level, std::vector<Draft> *drafts, std::vector<int> *first)
{
    first->assign(level->ghost.size() + 1, 0);
    for (const Draft &draft : *drafts) (*first)[static_cast<size_t>(draft.ghost) + 1]++;
    for (size_t g = 0; g < level->ghost.size(); g++) (*first)[g + 1] += (*first)[g];
    std::vector<Draft> sorted(drafts->size());
    std::vector<int> at(first->begin(), first->end() - 1);
    for (const Draft &draft : *drafts)
        sorted[static_cast<size_t>(at[static_cast<size_t>(draft.ghost)]++)] = draft;
    assert(first->back() == static_cast<int>(drafts->size()));
    *drafts = std::move(sorted);
}

/* Adds up what the rank's hyperedges say of each ghost. Ghosts rise, and so do their owners. */
static void write_shares(const Ranks *ranks, Sweep *sweep, Mail<Share> *mail)
{
    const Level *const level = sweep->level;
    std::vector<int> first;
    sort_drafts(level, &sweep->drafts, &first);
    Tally tally;
    mail->first.assign(1, 0);
    for (int r = 0; r < ranks->nranks; r++) {
        const int64_t begin = share_begin(ranks, level->nvertices, r);
        for (int64_t g = level->ghostfirst[static_cast<size_t>(r)];
             g < level->ghostfirst[static_cast<size_t>(r) + 1]; g++) {
            for (int i = first[static_cast<size_t>(g)]; i < first[static_cast<size_t>(g) + 1]; i++)
                add_tally(&tally, sweep->drafts[static_cast<size_t>(i)].part + 1,
                          sweep->drafts[static_cast<size_t>(i)].value, -1);
            assert(level->ghost[static_cast<size_t>(g)] >= begin);
            for (const int place : tally.taken)
                mail->records.push_back(
                    {static_cast<int>(level->ghost[static_cast<size_t>(g)] - begin),
                     static_cast<int>(tally.keys[static_cast<size_t>(place)]) - 1,
                     tally.sums[static_cast<size_t>(place)]});
            empty_tally(&tally);
        }
        mail->first.push_back(static_cast<int64_t>(mail->records.size()));
    }
    sweep->drafts = std::vector<Draft>();
}

int64_t rate_moves(Ranks *ranks, const Level *level, const Goal *goal, const Division *division,
                   const Turn *turn, Mail<Share> *mail)
{
    assert(division->seen.size() == level->ghost.size());
    assert(turn == nullptr || (turn->turn >= 0 && turn->turn < turn->turns));
    Sweep sweep = {level, goal, division, turn, {}, {}, {}};
    sweep.count.assign(static_cast<size_t>(goal->nparts), 0);
    int64_t value = 0;
    for (int e = 0; e < nnets_of(level); e++) value += sweep_net(&sweep, e);
    if (turn != nullptr) {
        if (sweep.drafts.size() >= INT_MAX)
            give_up(ranks, "more than 2147483646 gains at a time; more ranks are needed");
        write_shares(ranks, &sweep, mail);
        exchange_shares(ranks, mail);
    }
    return sum_of_all(ranks, value);
}
