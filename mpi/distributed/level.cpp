// SPDX-License-Identifier: MIT
/* mpi/distributed/level.cpp: ghosts, mirrors and totals of a level.
 *
 * Stages: leave out what cannot be cut, list the ghosts (sort, unique), number the pins by them,
 * tell owners which of their vertices are whose ghosts, sum up.
 */
#include "distributed/level.h"

#include "core/heavy_assert.h"

/* Leaves out nets that no partition can cut, in place. */
static void leave_out(LooseNets *nets)
{
    size_t kept = 0, at = 0;
    for (size_t e = 0; e + 1 < nets->ptr.size(); e++) {
        const int64_t begin = nets->ptr[e], end = nets->ptr[e + 1];
        if (end - begin < 2 || nets->weight[e] == 0) continue;
        for (int64_t i = begin; i < end; i++) nets->pins[at++] = nets->pins[static_cast<size_t>(i)];
        nets->weight[kept] = nets->weight[e];
        nets->ptr[++kept] = static_cast<int64_t>(at);
    }
    nets->ptr.resize(kept + 1);
    nets->weight.resize(kept);
    nets->pins.resize(at);
}

static void list_ghosts(const Ranks *ranks, Level *level, const std::vector<int64_t> &pins)
{
    std::vector<int64_t> sorted = pins;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    level->ghost.assign(sorted.begin(), sorted.end()); // no larger than it must be
    assert(sorted.empty() || (sorted[0] >= 0 && sorted.back() < level->nvertices));
    level->ghostfirst.clear();
    for (int r = 0; r <= ranks->nranks; r++)
        level->ghostfirst.push_back(std::lower_bound(level->ghost.begin(), level->ghost.end(),
                                                     share_begin(ranks, level->nvertices, r)) -
                                    level->ghost.begin());
}

/* Pins by number of ghost. Pins that follow one another are close to one another mostly. */
static void number_pins(Level *level, const std::vector<int64_t> &pins)
{
    const auto begin = level->ghost.begin(), end = level->ghost.end();
    level->netind.resize(pins.size());
    for (size_t i = 0; i < pins.size(); i++) {
        assert(pins[i] >= 0 && pins[i] < level->nvertices);
        level->netind[i] = static_cast<int>(std::lower_bound(begin, end, pins[i]) - begin);
        assert(level->ghost[static_cast<size_t>(level->netind[i])] == pins[i]);
    }
}

static void tell_owners(Ranks *ranks, Level *level)
{
    Mail<int64_t> mail;
    mail.first = level->ghostfirst;
    mail.records = level->ghost;
    exchange(ranks, &mail);
    level->mirrorfirst = mail.first;
    level->mirror.resize(mail.records.size());
    for (size_t i = 0; i < mail.records.size(); i++) {
        assert(mail.records[i] >= level->begin && mail.records[i] < level->end);
        level->mirror[i] = static_cast<int>(mail.records[i] - level->begin);
    }
}

static void sum_incident(Ranks *ranks, Level *level)
{
    Mail<int64_t> mail;
    mail.first = level->ghostfirst;
    mail.records.assign(level->ghost.size(), 0);
    for (int e = 0; e < nnets_of(level); e++)
        for (int i = level->netptr[static_cast<size_t>(e)];
             i < level->netptr[static_cast<size_t>(e) + 1]; i++)
            mail.records[static_cast<size_t>(level->netind[static_cast<size_t>(i)])] +=
                level->netweight[static_cast<size_t>(e)];
    exchange(ranks, &mail); // comes in as the mirrors stand
    assert(mail.first == level->mirrorfirst);
    level->incident.assign(static_cast<size_t>(nown_of(level)), 0);
    for (size_t i = 0; i < level->mirror.size(); i++)
        level->incident[static_cast<size_t>(level->mirror[i])] += mail.records[i];
}

static void sum_up(Ranks *ranks, Level *level)
{
    int64_t sums[3] = {nnets_of(level), static_cast<int64_t>(level->netind.size()), 0};
    int64_t heaviest = 0;
    for (const int64_t weight : level->weight) {
        sums[2] += weight;
        heaviest = std::max(heaviest, weight);
    }
    sum_all(ranks, sums, 3);
    level->nnets = sums[0];
    level->npins = sums[1];
    level->totalweight = sums[2];
    level->heaviest = most_of_all(ranks, heaviest);
    assert(level->npins >= 2 * level->nnets && level->heaviest <= level->totalweight);
}

void open_level(Ranks *ranks, Level *level, LooseNets *nets)
{
    level->begin = share_begin(ranks, level->nvertices, ranks->rank);
    level->end = share_begin(ranks, level->nvertices, ranks->rank + 1);
    assert(level->weight.size() == static_cast<size_t>(level->end - level->begin));
    assert(level->fixed.empty() || level->fixed.size() == level->weight.size());
    assert(nets->ptr.size() == nets->weight.size() + 1);
    assert(nets->ptr.back() == static_cast<int64_t>(nets->pins.size()));
    leave_out(nets);
    if (nets->pins.size() >= INT_MAX || level->end - level->begin >= INT_MAX)
        give_up(ranks, "this rank's share has more than 2147483646 pins or vertices; more ranks "
                       "are needed");
    list_ghosts(ranks, level, nets->pins);
    number_pins(level, nets->pins);
    level->netptr.assign(nets->ptr.begin(), nets->ptr.end());
    level->netweight.assign(nets->weight.begin(), nets->weight.end());
    *nets = LooseNets();
    tell_owners(ranks, level);
    sum_incident(ranks, level);
    sum_up(ranks, level);
    HEAVY_ASSERT(level_ok(ranks, level));
}
