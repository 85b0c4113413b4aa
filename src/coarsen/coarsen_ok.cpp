// SPDX-License-Identifier: MIT
/* coarsen/coarsen_ok.cpp: the invariants of matching's records, tested from scratch.
 *
 * The search for partners, the marks of cut hyperedges, bare lists, and the two kinds of groups.
 * Each predicate reads the record alone and compares it with what the level's pin lists say; none
 * is in a release library.
 */
#include <vector>

#include "coarsen/coarsen.h"
#include "coarsen/grouping.h"
#include "coarsen/match_star.h"
#include "coarsen/partner.h"
#include "core/holds.h"
#include "core/net_lists.h"
#include "core/numbers.h"

static bool marks_ok(const HGraph *graph, const int *where, const bool *cutnets)
{
    for (int e = 0; e < graph->nnets; e++)
        HOLDS(C3, cutnets[e] == (end_of_part(graph, where, e) < graph->netptr[e + 1]));
    return true;
}

bool cut_nets_ok(const HGraph *graph)
{
    return marks_ok(graph, graph->where, graph->cutnets);
}

bool net_lists_ok(const NetLists *nets)
{
    HOLDS(N1, nets->nnets >= 0 && nets->netptr[0] == 0);
    for (int e = 0; e < nets->nnets; e++) {
        HOLDS(N1, nets->netptr[e] <= nets->netptr[e + 1]);
        for (int j = nets->netptr[e]; j < nets->netptr[e + 1]; j++) {
            HOLDS(N2, nets->netind[j] >= 0);
            HOLDS(N2, j == nets->netptr[e] || nets->netind[j - 1] < nets->netind[j]);
        }
    }
    return true;
}

bool search_ok(const PartnerSearch *search, GroupedVertices grouped)
{
    const HGraph *const graph = search->graph;
    for (int v = 0; v < graph->ncells; v++) {
        const bool barred = grouped == GroupedVertices::barred && search->cellmap[v] != SINGLE;
        HOLDS(C1, search->table[v] == (barred ? BARRED : UNSEEN));
        HOLDS(C2, graph->cellwgt[v] <= search->heaviest);
        HOLDS(C2, search->wgts == nullptr || search->wgts[search->cellmap[v]] <= search->heaviest);
    }
    HOLDS(C4, search->wgts == nullptr || search->wgts[-1] == 0);
    return search->where == nullptr || marks_ok(graph, search->where, search->cutnets);
}

bool grouping_ok(const HGraph *graph, const Grouping *groups)
{
    HOLDS(J1, groups->mptr[0] == 0 && groups->mptr[groups->ngroups] == groups->nlisted);
    for (int c = 0; c < groups->ngroups; c++) {
        HOLDS(J1, groups->mptr[c] < groups->mptr[c + 1]);
        for (int i = groups->mptr[c]; i < groups->mptr[c + 1]; i++)
            HOLDS(J2, groups->cellmap[groups->mind[i]] == c);
    }
    int ngrouped = 0;
    for (int v = 0; v < graph->ncells; v++) ngrouped += groups->cellmap[v] != SINGLE;
    HOLDS(J3, ngrouped == groups->nlisted); // with J2 nobody is listed twice in two groups
    std::vector<bool> listed(static_cast<size_t>(graph->ncells));
    for (int i = 0; i < groups->nlisted; i++) {
        const size_t v = static_cast<size_t>(groups->mind[i]);
        HOLDS(J3, !listed[v]);
        listed[v] = true;
    }
    for (int v = 0; v < graph->nfixed; v++)
        HOLDS(J4, groups->cellmap[v] == v && groups->mptr[v + 1] - groups->mptr[v] == 1);
    return true;
}

bool stars_ok(const PartCtrl *ctrl, const HGraph *graph, const Stars *stars)
{
    struct Group {
        int size;
        long long weight;
    };
    std::vector<Group> groups(static_cast<size_t>(stars->ngroups), Group{0, 0});
    for (int v = 0; v < graph->ncells; v++) {
        const int c = stars->cellmap[v];
        HOLDS(T1, SINGLE <= c && c < stars->ngroups && (v >= graph->nfixed || c == v));
        if (c == SINGLE) continue;
        groups[static_cast<size_t>(c)].size++;
        groups[static_cast<size_t>(c)].weight += graph->cellwgt[v];
    }
    HOLDS(T2, stars->wgts[-1] == 0);
    const int full = clamp_int(2LL * ctrl->MaxCellWgt);
    for (int c = 0; c < stars->ngroups; c++) {
        const Group group = groups[static_cast<size_t>(c)];
        HOLDS(T2, stars->wgts[c] == (c < graph->nfixed ? full : group.weight));
        const bool joinable = c >= graph->nfixed || ctrl->MaxCellWgt == 0;
        HOLDS(T3, group.size == 1 || (joinable && group.weight <= ctrl->MaxCellWgt));
    }
    return true;
}
