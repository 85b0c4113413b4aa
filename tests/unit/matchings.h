/* SPDX-License-Identifier: MIT */
/* tests/unit/matchings.h: every matching under one signature, with its work arrays, for tests. */
#ifndef ZORPEL_TESTS_MATCHINGS_H
#define ZORPEL_TESTS_MATCHINGS_H

#include "coarsen/match_edges.h"
#include "coarsen/match_hedges.h"
#include "coarsen/match_star.h"
#include "levels.h"

struct Matching {
    const char *name;
    bool restricted; // needs where, keeps its parts apart
    bool star;
    bool hedges;
    void (*run)(PartCtrl *ctrl, HGraph *graph, const MatchWork *work);
};

inline void PrintTo(const Matching &row, std::ostream *out)
{
    *out << row.name;
}

inline const std::vector<Matching> &all_matchings()
{
    using Work = const MatchWork *;
    static const std::vector<Matching> all = {
        {"Edges", false, false, false,
         [](PartCtrl *c, HGraph *g, Work w) { Match_Edges__(c, g, w); }},
        {"EdgesStars0", false, true, false,
         [](PartCtrl *c, HGraph *g, Work w) {
             Match_EdgesStars__(c, g, w, VisitOrder::by_degree);
         }},
        {"EdgesStars1", false, true, false,
         [](PartCtrl *c, HGraph *g, Work w) {
             Match_EdgesStars__(c, g, w, VisitOrder::by_strength);
         }},
        {"Hedges", false, false, true,
         [](PartCtrl *c, HGraph *g, Work w) { Match_Hedges__(c, g, w); }},
        {"HedgesEdges", false, false, true,
         [](PartCtrl *c, HGraph *g, Work w) { Match_Hedges_Edges__(c, g, w); }},
        {"HedgesPHedgesEdges", false, false, true,
         [](PartCtrl *c, HGraph *g, Work w) { Match_Hedges_PHedges_Edges__(c, g, w); }},
        {"CEdges", true, false, false,
         [](PartCtrl *c, HGraph *g, Work w) { CMatch_Edges__(c, g, g->where, w); }},
        {"CEdgesStars", true, true, false,
         [](PartCtrl *c, HGraph *g, Work w) { CMatch_EdgesStars__(c, g, g->where, w); }},
    };
    return all;
}

inline const Matching &matching(const std::string &name)
{
    for (const Matching &row : all_matchings())
        if (row.name == name) return row;
    std::abort();
}

/* Matches and contracts one level; htable must come back as it was. */
inline HGraph *run_matching(const Matching &row, PartCtrl *ctrl, HGraph *graph)
{
    const size_t m = at(std::max(graph->ncells, graph->nnets));
    Ints perm(m), htable(2 * m, -1), vpairs(2 * m);
    const MatchWork work = {perm.data(), htable.data(), vpairs.data()};
    row.run(ctrl, graph, &work);
    EXPECT_EQ(htable, Ints(2 * m, -1));
    return graph->coarser;
}

inline HGraph *run_matching(const std::string &name, PartCtrl *ctrl, HGraph *graph)
{
    return run_matching(matching(name), ctrl, graph);
}

/* The groups of a matched level, in coarse order. */
inline Nets groups_of(const HGraph *graph)
{
    Nets groups;
    for (int c = 0; c < graph->coarser->ncells; c++) groups.push_back(group_of(graph, c));
    return groups;
}

/* The same with each group and the list of groups in increasing order. */
inline Nets sorted_groups_of(const HGraph *graph)
{
    Nets groups = groups_of(graph);
    for (Ints &group : groups) std::sort(group.begin(), group.end());
    std::sort(groups.begin(), groups.end());
    return groups;
}

#endif
