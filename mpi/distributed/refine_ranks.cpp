// SPDX-License-Identifier: MIT
/* mpi/distributed/refine_ranks.cpp: turns of moves whose gains are added up from all ranks.
 *
 * A turn: rate, choose the best part for each vertex whose turn it is, keep the best moves that the
 * bounds allow, make them. Gains are exact for each move alone. Two that touch one hyperedge can
 * spoil one another; the next sweep tells the objective, and a turn that made it worse is undone.
 */
#include "distributed/refine_ranks.h"

#include "core/heavy_assert.h"
#include "distributed/choose_part.h"
#include "distributed/rate_moves.h"
#include "distributed/select_moves.h"
#include "distributed/senders.h"
#include "distributed/tally.h"

constexpr int ROUNDS = 6, TURNS = 4, REPEATS = 2;
constexpr int REBALANCINGS = 60;

/* The moves that better the objective. */
static std::vector<Move> list_gains(const Chooser *chooser, uint64_t seed, const Mail<Share> &mail)
{
    const Level *const level = chooser->level;
    std::vector<Move> moves;
    Tally tally;
    for_each_vertex(
        mail, [&](const Share &share) { add_tally(&tally, share.part + 1, share.value, -1); },
        [&](int vertex) {
            const size_t v = static_cast<size_t>(vertex);
            const Choice choice = choose_part(chooser, v, &tally);
            if (is_free(level, v) && choice.part >= 0 && choice.gain > 0)
                moves.push_back(
                    {vertex, chooser->division->part[v], choice.part,
                     key_of(WORST_CLASS - half_octave(static_cast<uint64_t>(choice.gain)), seed,
                            level->begin + vertex),
                     level->weight[v]});
            empty_tally(&tally);
        });
    return moves;
}

/* Drops what would make a part lighter than it may be, then what would make one too heavy; both
 * count what comes in or goes out alone, so that they hold whatever else is moved. */
static void keep_within_bounds(Ranks *ranks, const Goal *goal, const Division *division,
                               std::vector<Move> *moves)
{
    std::vector<int64_t> room(division->weight.size());
    for (size_t p = 0; p < room.size(); p++) room[p] = division->weight[p] - goal->least[p];
    select_moves(ranks, Side::from, room, false, moves);
    for (size_t p = 0; p < room.size(); p++) room[p] = goal->most[p] - division->weight[p];
    select_moves(ranks, Side::to, room, false, moves);
}

/* Undoes moves if they made the objective worse. */
static bool undo_if_worse(Ranks *ranks, const Level *level, int64_t value, int64_t before,
                          std::vector<Move> *moves, Division *division)
{
    const bool worse = value > before;
    if (worse) make_moves(ranks, level, *moves, true, division);
    moves->clear();
    return worse;
}

int64_t refine_level(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                     Division *division)
{
    int64_t value = rate_moves(ranks, level, goal, division, nullptr, nullptr);
    std::vector<Move> made; // by the last turn
    for (int round = 0; round < ROUNDS; round++) {
        const int64_t start = value;
        for (int i = 0; i < TURNS; i++) {
            const Turn turn = {lot(seed, static_cast<uint64_t>(round)), i, TURNS, {}};
            Mail<Share> mail;
            int64_t now = rate_moves(ranks, level, goal, division, &turn, &mail);
            if (undo_if_worse(ranks, level, now, value, &made, division)) {
                mail = Mail<Share>();
                now = rate_moves(ranks, level, goal, division, &turn, &mail);
            }
            value = now;
            const Chooser chooser = open_chooser(level, goal, division);
            made = list_gains(&chooser, turn.seed, mail);
            keep_within_bounds(ranks, goal, division, &made);
            make_moves(ranks, level, made, false, division);
        }
        const int64_t now = rate_moves(ranks, level, goal, division, nullptr, nullptr);
        if (!undo_if_worse(ranks, level, now, value, &made, division)) value = now;
        if (start - value <= start / 1000) break;
    }
    HEAVY_ASSERT(division_ok(ranks, level, goal, division));
    return value;
}

/* All moves out of heavy parts; what costs little for its weight has the small keys. */
static std::vector<Move> list_ways_out(const Chooser *chooser, uint64_t seed,
                                       const std::vector<char> &heavy, const Mail<Share> &mail)
{
    const Level *const level = chooser->level;
    std::vector<Move> moves;
    Tally tally;
    size_t next = 0; // vertices before it are done
    const auto close = [&](size_t v) {
        const int from = chooser->division->part[v];
        if (!heavy[static_cast<size_t>(from)] || !is_free(level, v) || level->weight[v] == 0)
            return;
        const Choice choice = choose_part(chooser, v, &tally);
        if (choice.part < 0) return;
        const uint64_t loss = static_cast<uint64_t>(std::max<int64_t>(-choice.gain, 0));
        const uint64_t rate = std::min<uint64_t>(loss, UINT64_MAX >> 20) << 10;
        const uint32_t order = half_octave(rate / static_cast<uint64_t>(level->weight[v]));
        moves.push_back({static_cast<int>(v), from, choice.part,
                         key_of(order, seed, level->begin + static_cast<int64_t>(v)),
                         level->weight[v]});
    };
    for_each_vertex(
        mail,
        [&](const Share &share) {
            while (next < static_cast<size_t>(share.vertex)) close(next++);
            add_tally(&tally, share.part + 1, share.value, -1);
        },
        [&](int) {
            close(next++);
            empty_tally(&tally);
        });
    while (next < level->weight.size()) close(next++);
    return moves;
}

int64_t rebalance_level(Ranks *ranks, const Level *level, const Goal *goal, uint64_t seed,
                        Division *division)
{
    int64_t excess = excess_of(goal, division);
    for (int i = 0, stuck = 0; i < REBALANCINGS && excess > 0 && stuck < REPEATS; i++) {
        Turn turn = {lot(seed, static_cast<uint64_t>(i), 7), 0, 1, {}};
        std::vector<int64_t> over, room;
        for (size_t p = 0; p < goal->most.size(); p++) {
            over.push_back(std::max<int64_t>(division->weight[p] - goal->most[p], 0));
            room.push_back(goal->most[p] - division->weight[p]);
            turn.from.push_back(over[p] > 0);
        }
        Mail<Share> mail;
        rate_moves(ranks, level, goal, division, &turn, &mail);
        const Chooser chooser = open_chooser(level, goal, division);
        std::vector<Move> moves = list_ways_out(&chooser, turn.seed, turn.from, mail);
        select_moves(ranks, Side::to, room, false, &moves);
        select_moves(ranks, Side::from, over, true, &moves);
        make_moves(ranks, level, moves, false, division);
        const int64_t now = excess_of(goal, division);
        stuck = now < excess ? 0 : stuck + 1;
        excess = now;
    }
    return excess;
}
