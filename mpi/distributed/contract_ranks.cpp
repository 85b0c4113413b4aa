// SPDX-License-Identifier: MIT
/* mpi/distributed/contract_ranks.cpp: clusters become vertices, over ranks.
 *
 * Stages: number the leaders; tell the members; weights to the coarser vertices' owners; rename the
 * pins; merge identical hyperedges; open the level.
 */
#include "distributed/contract_ranks.h"

#include "core/heavy_assert.h"
#include "distributed/ask.h"
#include "distributed/merge_ranks.h"

/* Sets level->coarse; returns the number of coarser vertices. */
static int64_t number_clusters(Ranks *ranks, Level *level, const Clustering *clustering)
{
    const size_t nown = level->weight.size();
    std::vector<int64_t> numbers(nown, -1), asked(nown, -1);
    int64_t nleaders = 0;
    for (size_t v = 0; v < nown; v++) {
        const int64_t leader = leader_of(clustering->label[v]);
        assert(leader >= 0 && leader < level->nvertices);
        if (leader == level->begin + static_cast<int64_t>(v))
            numbers[v] = nleaders++;
        else
            asked[v] = leader;
    }
    const int64_t before = sum_before(ranks, nleaders);
    for (int64_t &number : numbers)
        if (number >= 0) number += before;
    level->coarse = numbers;
    ask_owners(ranks, level->nvertices, asked, numbers, &level->coarse);
    return sum_of_all(ranks, nleaders);
}

struct CoarseVertex {
    int64_t weight;
    int vertex, fixed;
};

/* Leaders send what the clusters weigh to the owners of the coarser vertices. */
static void send_weights(Ranks *ranks, const Level *level, const Clustering *clustering,
                         Level *coarser)
{
    Mail<CoarseVertex> mail;
    begin_mail(ranks, &mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(&mail);
        for (size_t v = 0; v < level->weight.size(); v++) {
            if (leader_of(clustering->label[v]) != level->begin + static_cast<int64_t>(v)) continue;
            const int64_t c = level->coarse[v];
            assert(c >= 0 && c < coarser->nvertices);
            const int owner = share_owner(ranks, coarser->nvertices, c);
            if (pass == 0)
                count_mail(&mail, owner);
            else
                add_mail(&mail, owner,
                         {clustering->clusterweight[v],
                          static_cast<int>(c - share_begin(ranks, coarser->nvertices, owner)),
                          level->fixed.empty() ? -1 : clustering->clusterfixed[v]});
        }
    }
    exchange(ranks, &mail);
    assert(static_cast<int64_t>(mail.records.size()) ==
           share_begin(ranks, coarser->nvertices, ranks->rank + 1) -
               share_begin(ranks, coarser->nvertices, ranks->rank));
    coarser->weight.resize(mail.records.size());
    coarser->fixed.resize(level->fixed.empty() ? 0 : mail.records.size());
    for (const CoarseVertex &vertex : mail.records) {
        assert(vertex.vertex >= 0 && static_cast<size_t>(vertex.vertex) < mail.records.size());
        coarser->weight[static_cast<size_t>(vertex.vertex)] = vertex.weight;
        if (!level->fixed.empty())
            coarser->fixed[static_cast<size_t>(vertex.vertex)] = vertex.fixed;
    }
}

/* The hyperedges with the clusters as pins, each cluster once, rising. */
static LooseNets rename_pins(const Level *level, const std::vector<int64_t> &coarse)
{
    LooseNets nets;
    nets.pins.reserve(level->netind.size());
    std::vector<int64_t> pins;
    for (size_t e = 0; e + 1 < level->netptr.size(); e++) {
        pins.clear();
        for (int i = level->netptr[e]; i < level->netptr[e + 1]; i++)
            pins.push_back(coarse[static_cast<size_t>(level->netind[static_cast<size_t>(i)])]);
        std::sort(pins.begin(), pins.end());
        pins.erase(std::unique(pins.begin(), pins.end()), pins.end());
        assert(!pins.empty() && pins[0] >= 0); // every vertex is in a cluster
        if (pins.size() < 2) continue;
        nets.pins.insert(nets.pins.end(), pins.begin(), pins.end());
        nets.ptr.push_back(static_cast<int64_t>(nets.pins.size()));
        nets.weight.push_back(level->netweight[e]);
    }
    return nets;
}

void contract_level(Ranks *ranks, Level *level, Clustering *clustering, Level *coarser)
{
    coarser->nvertices = number_clusters(ranks, level, clustering);
    send_weights(ranks, level, clustering, coarser);
    *clustering = Clustering();
    LooseNets nets;
    {
        std::vector<int64_t> coarse;
        mirror_values(ranks, level, level->coarse, &coarse);
        nets = rename_pins(level, coarse);
    }
    merge_nets_of_ranks(ranks, &nets);
    open_level(ranks, coarser, &nets);
    assert(coarser->totalweight == level->totalweight);
}
