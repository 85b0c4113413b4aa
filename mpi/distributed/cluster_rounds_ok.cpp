// SPDX-License-Identifier: MIT
/* mpi/distributed/cluster_rounds_ok.cpp: the predicate of clusters. */
#include "core/holds.h"
#include "distributed/cluster_rounds.h"

struct Membership {
    int64_t weight;
    int vertex, fixed; // the leader, by its owner's numbers
};

/* What the members say of their clusters, at the leaders' owners. */
static Mail<Membership> memberships(Ranks *ranks, const Level *level, const Clustering *clustering)
{
    Mail<Membership> mail;
    begin_mail(ranks, &mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(&mail);
        for (size_t v = 0; v < level->weight.size(); v++) {
            const int64_t c = leader_of(clustering->label[v]);
            const int owner = share_owner(ranks, level->nvertices, c);
            if (pass == 0)
                count_mail(&mail, owner);
            else
                add_mail(&mail, owner,
                         {level->weight[v],
                          static_cast<int>(c - share_begin(ranks, level->nvertices, owner)),
                          level->fixed.empty() ? -1 : level->fixed[v]});
        }
    }
    exchange(ranks, &mail);
    return mail;
}

static bool clusters_ok(const Level *level, const Clustering *clustering,
                        const Mail<Membership> &members)
{
    const size_t nown = level->weight.size();
    std::vector<int64_t> weight(nown, 0), size(nown, 0);
    for (const Membership &member : members.records) {
        const size_t c = static_cast<size_t>(member.vertex);
        HOLDS(L1, leader_of(clustering->label[c]) == level->begin + member.vertex);
        weight[c] += member.weight;
        size[c]++;
        if (member.fixed >= 0) HOLDS(L4, clustering->clusterfixed[c] == member.fixed);
    }
    for (size_t v = 0; v < nown; v++) {
        if (size[v] == 0) continue;
        HOLDS(L1, is_single(clustering->label[v]) == (size[v] == 1));
        HOLDS(L2, clustering->clusterweight[v] == weight[v]);
        HOLDS(L3, size[v] == 1 || weight[v] <= clustering->mostweight);
    }
    return true;
}

bool clustering_ok(Ranks *ranks, const Level *level, const Clustering *clustering)
{
    Ranks uncounted = *ranks;
    bool inside = true;
    for (const int64_t label : clustering->label)
        inside = inside && label >= 0 && leader_of(label) < level->nvertices;
    if (least_of_all(&uncounted, inside) == 0) {
        if (!inside) fprintf(stderr, "L1 does not hold: a label is out of range\n");
        return false;
    }
    const Mail<Membership> members = memberships(&uncounted, level, clustering);
    return least_of_all(&uncounted, clusters_ok(level, clustering, members)) == 1;
}
