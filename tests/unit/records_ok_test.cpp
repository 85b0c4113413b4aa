// SPDX-License-Identifier: MIT
/* tests/unit/records_ok_test.cpp: each invariant of the records of matching, of a renumbered copy
 * and of k-way refinement, broken once by hand, is named by its number.
 */
#include "broken.h"
#include "coarsen/coarsen.h"
#include "coarsen/grouping.h"
#include "coarsen/match_star.h"
#include "coarsen/partner.h"
#include "core/net_lists.h"
#include "kway/kway_gains.h"
#include "kway/stale_records.h"
#include "levels.h"
#include "refine/relabel.h"
#include "spare/kway_updates.h"

/* Ten vertices on a path with a hyperedge of three more, the first one fixed. */
static Level small_level()
{
    Nets nets = path_nets(10);
    nets.push_back({1, 5, 9});
    return make_level(10, nets, {}, {}, 1);
}

/* ---- the control record and bare lists ---- */

TEST(CtrlOk, the_broken_rule_is_named)
{
    PartCtrl ctrl = make_ctrl();
    const auto ok = [&] { return ctrl_ok(&ctrl); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(ctrl.CoarsenTo, 0, ok), "O1");
    EXPECT_EQ(broken_by(ctrl.Nruns, 0, ok), "O1");
    EXPECT_EQ(broken_by(ctrl.nparts, 0, ok), "O1");
    EXPECT_EQ(broken_by(ctrl.maxnetsize, -1, ok), "O1");
    EXPECT_EQ(broken_by(ctrl.MaxCellWgt, -1, ok), "O1");
    EXPECT_EQ(broken_by(ctrl.ubfactor, -0.1f, ok), "O2");
    EXPECT_EQ(broken_by(ctrl.splitratio, 1.1f, ok), "O2");
    EXPECT_EQ(broken_by(ctrl.splitratio, -0.1f, ok), "O2");
    EXPECT_EQ(broken_by(ctrl.fixed, 2, ok), "O3");
    EXPECT_EQ(broken_by(ctrl.Reconst, -1, ok), "O3");
    EXPECT_EQ(broken_by(ctrl.heavycells, 2, ok), "O3");
    EXPECT_EQ(broken_by(ctrl.kwayrefine, 2, ok), "O3");
    EXPECT_EQ(broken_by(ctrl.VCycle, 4, ok), "O3");
}

TEST(NetListsOk, the_broken_rule_is_named)
{
    Ints netptr = {0, 2, 2, 5}, netind = {1, 4, 0, 2, 3}, netwgt = {1, 1, 1};
    NetLists nets = {3, netptr.data(), netind.data(), netwgt.data()};
    const auto ok = [&] { return net_lists_ok(&nets); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(nets.nnets, -1, ok), "N1");
    EXPECT_EQ(broken_by(netptr[0], 1, ok), "N1");
    EXPECT_EQ(broken_by(netptr[1], 3, ok), "N2") << "pins that fall";
    EXPECT_EQ(broken_by(netptr[2], 1, ok), "N1");
    EXPECT_EQ(broken_by(netind[2], -1, ok), "N2");
    EXPECT_EQ(broken_by(netind[3], 0, ok), "N2") << "listed twice";
}

/* ---- a search for partners ---- */

struct OpenSearch {
    Level level = small_level();
    Ints where = {0, 0, 0, 0, 0, 1, 1, 1, 1, 1}, htable = Ints(10, -1), cellmap = Ints(10, SINGLE);
    Ints wgts = Ints(11, 0);
    PartCtrl ctrl = make_ctrl();
    PartnerSearch search = open_search(&ctrl, level.get(), where.data(), htable.data());

    OpenSearch()
    {
        search.cellmap = cellmap.data();
        search.wgts = wgts.data() + 1;
    }
    ~OpenSearch() { close_search(&search); }
    std::string broken(GroupedVertices grouped = GroupedVertices::allowed)
    {
        return broken_rule([&] { return search_ok(&search, grouped); });
    }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value,
                         [&] { return search_ok(&search, GroupedVertices::allowed); });
    }
};

TEST(SearchOk, the_broken_rule_is_named)
{
    OpenSearch open;
    ASSERT_EQ(open.broken(), "");
    EXPECT_EQ(open.with(open.htable[3], strengthened(UNSEEN, 1.0f)), "C1");
    EXPECT_EQ(open.with(open.htable[3], BARRED), "C1");
    EXPECT_EQ(open.with(open.search.heaviest, 0), "C2");
    open.cellmap[4] = 2;
    EXPECT_EQ(open.with(open.wgts[3], 7), "C2") << "a group";
    EXPECT_EQ(open.broken(GroupedVertices::barred), "C1") << "grouped and not barred";
    open.htable[4] = BARRED;
    EXPECT_EQ(open.broken(GroupedVertices::barred), "");
    open.htable[4] = UNSEEN;
    EXPECT_EQ(open.with(open.search.marks[0], true), "C3");
    EXPECT_EQ(open.with(open.search.marks[4], false), "C3");
    EXPECT_EQ(open.with(open.wgts[0], -1), "C4");
}

TEST(SearchOk, marks_of_a_level_that_lie_are_C3)
{
    const Level level = small_level();
    Ints where = {0, 0, 0, 0, 0, 1, 1, 1, 1, 1};
    bool marks[10] = {};
    marks[4] = marks[9] = true;
    level->where = new_array(where);
    level->cutnets = marks;
    EXPECT_EQ(broken_rule([&] { return cut_nets_ok(level.get()); }), "");
    marks[9] = false;
    EXPECT_EQ(broken_rule([&] { return cut_nets_ok(level.get()); }), "C3");
    level->cutnets = nullptr;
}

/* ---- groups ---- */

struct Grouped {
    Level level = small_level();
    Ints cellmap = Ints(10, SINGLE), mptr = Ints(11), mind = Ints(10);
    Grouping groups = {};

    Grouped()
    {
        level->cellmap = cellmap.data();
        level->mptr = mptr.data();
        level->mind = mind.data();
        groups = open_grouping(level.get());
        list_vertex(&groups, 3);
        list_vertex(&groups, 2);
        close_group(&groups);
        group_alone(&groups, 7);
    }
    ~Grouped() { level->cellmap = level->mptr = level->mind = nullptr; }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return grouping_ok(level.get(), &groups); });
    }
};

TEST(GroupingOk, the_broken_rule_is_named)
{
    Grouped grouped;
    ASSERT_EQ(broken_rule([&] { return grouping_ok(grouped.level.get(), &grouped.groups); }), "");
    EXPECT_EQ(grouped.with(grouped.mptr[0], 1), "J1");
    EXPECT_EQ(grouped.with(grouped.mptr[2], 1), "J1");
    EXPECT_EQ(grouped.with(grouped.groups.nlisted, 5), "J1");
    EXPECT_EQ(grouped.with(grouped.cellmap[2], 2), "J2");
    EXPECT_EQ(grouped.with(grouped.cellmap[9], 0), "J3") << "not listed";
    EXPECT_EQ(grouped.with(grouped.mind[2], 3), "J3") << "listed twice";
    EXPECT_EQ(grouped.with(grouped.level->nfixed, 2), "J4");
}

struct Starred {
    Level level = small_level();
    PartCtrl ctrl = make_ctrl();
    Ints cellmap = {0, 1, 1, 2, SINGLE, SINGLE, SINGLE, SINGLE, SINGLE, 1};
    Ints wgts = Ints(11, 0);
    Stars stars = {cellmap.data(), wgts.data() + 1, 3};

    Starred()
    {
        ctrl.MaxCellWgt = 3;
        wgts[1] = 6; // the fixed vertex's
        wgts[2] = 3;
        wgts[3] = 1;
    }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return stars_ok(&ctrl, level.get(), &stars); });
    }
};

TEST(StarsOk, the_broken_rule_is_named)
{
    Starred starred;
    ASSERT_EQ(
        broken_rule([&] { return stars_ok(&starred.ctrl, starred.level.get(), &starred.stars); }),
        "");
    EXPECT_EQ(starred.with(starred.cellmap[4], 3), "T1");
    EXPECT_EQ(starred.with(starred.cellmap[4], -2), "T1");
    EXPECT_EQ(starred.with(starred.cellmap[0], 1), "T1") << "a fixed vertex";
    EXPECT_EQ(starred.with(starred.wgts[0], 1), "T2");
    EXPECT_EQ(starred.with(starred.wgts[1], 1), "T2") << "a fixed vertex takes nobody";
    EXPECT_EQ(starred.with(starred.wgts[2], 2), "T2");
    starred.wgts[2] = 4;
    EXPECT_EQ(starred.with(starred.cellmap[4], 1), "T3") << "too heavy";
}

/* ---- a renumbered copy ---- */

struct Copied {
    Level level = small_level();
    Relabelled copy = {};

    Copied()
    {
        level->nearby = new_array({4, 9, 1, 0, 8, 7, 6, 5, 3, 2});
        relabel_level(level.get(), &copy);
    }
    ~Copied() { free_relabelled(&copy); }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return relabelled_ok(level.get(), &copy); });
    }
};

TEST(RelabelledOk, the_broken_rule_is_named)
{
    Copied copied;
    Relabelled *const copy = &copied.copy;
    ASSERT_EQ(broken_rule([&] { return relabelled_ok(copied.level.get(), copy); }), "");
    EXPECT_EQ(copied.with(copy->label[3], copy->label[3] + 1), "R1");
    EXPECT_EQ(copied.with(copy->vertex[3], 0), "R1");
    EXPECT_EQ(copied.with(copy->netlabel[0], copy->netlabel[1]), "R1");
    EXPECT_EQ(copied.with(copied.level->nfixed, 5), "R2");
    EXPECT_EQ(copied.with(copy->level.incind[2], copy->level.incind[2] + 1), "R3");
    EXPECT_EQ(copied.with(copy->level.netind[2], copy->level.netind[2] + 1), "R3");
    EXPECT_EQ(copied.with(copy->level.netptr[1], 1), "R3");
    EXPECT_EQ(copied.with(copy->level.cellwgt[4], 9), "R4");
    EXPECT_EQ(copied.with(copy->level.adjwgt[4], 9), "R4");
    EXPECT_EQ(copied.with(copy->level.netwgt[4], 9), "R4");
    EXPECT_EQ(copied.with(copy->nets[4].wgt, 9), "R5");
    EXPECT_EQ(copied.with(copy->nets[4].first, 1), "R5");
    EXPECT_EQ(copied.with(copy->nets[4].end, 1), "R5");
    EXPECT_EQ(copied.with(copy->nets[4].pinxor, -1), "R5");
}

TEST(RelabelledOk, a_copy_lists_close_vertices_together_and_fixed_ones_first)
{
    Copied copied;
    EXPECT_EQ(to_ints(copied.copy.vertex, 10), (Ints{0, 4, 9, 1, 8, 7, 6, 5, 3, 2}));
}

/* ---- k-way records ---- */

struct Parted {
    Level level = small_level();
    PartCtrl ctrl = make_ctrl();
    StaleRecords stale = {};
    Ints marker = Ints(10, -1);

    explicit Parted(bool stale_ones)
    {
        ctrl.nparts = 3;
        AllocateKwayRefinementMemory__(&ctrl, level.get());
        const Ints parts = {0, 0, 1, 1, 1, 2, 2, 0, 0, 2};
        std::copy(parts.begin(), parts.end(), level->where);
        open_stale(level.get(), &stale);
        if (stale_ones)
            outline_records(&ctrl, level.get(), &stale, true);
        else
            ComputeInitKwayGains__(&ctrl, level.get());
    }
    ~Parted() { close_stale(&stale); }
    bool ok() { return kway_ok(&ctrl, level.get()); }
    bool waiting_ok() { return stale_ok(&ctrl, level.get(), &stale); }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return ok(); });
    }
    template <typename Field, typename Value> std::string waiting_with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return waiting_ok(); });
    }
};

TEST(KwayOk, the_broken_rule_is_named)
{
    Parted parted(false);
    HGraph *const level = parted.level.get();
    ASSERT_EQ(broken_rule([&] { return parted.ok(); }), "");
    EXPECT_EQ(parted.with(level->kpwgts[1], 9), "K1");
    EXPECT_EQ(parted.with(level->mincut, 9), "K2");
    EXPECT_EQ(parted.with(level->minsoed, 9), "K2");
    EXPECT_EQ(parted.with(level->nrinfo[1].ndegrees, 1), "K3");
    EXPECT_EQ(parted.with(level->nrinfo[1].degrees, nullptr), "K3");
    EXPECT_EQ(parted.with(level->nrinfo[1].degrees[0].num, 2), "K3");
    EXPECT_EQ(parted.with(level->nrinfo[1].degrees[0].pid, 2), "K3");
    EXPECT_EQ(parted.with(level->crinfo[4].id, 9), "K4");
    EXPECT_EQ(parted.with(level->crinfo[4].ed, 9), "K4");
    EXPECT_EQ(parted.with(level->crinfo[4].ndegrees, 0), "K5");
    EXPECT_EQ(parted.with(level->crinfo[4].degrees[0].num, 9), "K5");
    EXPECT_EQ(parted.with(level->crinfo[4].degrees[0].soed, 9), "K5");
    EXPECT_EQ(parted.with(level->crinfo[4].degrees[0].pid, 0), "K5");
    EXPECT_EQ(parted.with(level->kplace[2], 0), "K6");
}

TEST(StaleOk, the_broken_rule_is_named)
{
    Parted parted(true);
    HGraph *const level = parted.level.get();
    StaleRecords *const stale = &parted.stale;
    ASSERT_EQ(broken_rule([&] { return parted.waiting_ok(); }), "");
    const int v = stale->list[0];
    EXPECT_EQ(parted.waiting_with(stale->state[v], STALE), "S1");
    EXPECT_EQ(parted.waiting_with(stale->state[v], LISTED | OUTLINED), "S1");
    EXPECT_EQ(parted.waiting_with(stale->n, stale->n - 1), "S2");
    EXPECT_EQ(parted.waiting_with(stale->list[0], stale->list[1]), "S2");
    EXPECT_EQ(parted.waiting_with(stale->state[v], 0), "S2");
    EXPECT_EQ(parted.waiting_with(level->crinfo[v].id, 9), "S4");
    refresh_record(level, stale, v);
    EXPECT_EQ(broken_rule([&] { return parted.waiting_ok(); }), "");
    EXPECT_EQ(parted.waiting_with(level->crinfo[v].id, 9), "S3");
    EXPECT_EQ(parted.waiting_with(level->crinfo[v].degrees[0].soed, 9), "S3");
    EXPECT_EQ(parted.waiting_with(stale->cells, level->crdata - 1), "S5");
    EXPECT_EQ(parted.waiting_with(stale->nets, level->nrdata + 1000), "S5");
    EXPECT_EQ(parted.waiting_with(level->kpwgts[1], 9), "K1");
}

TEST(LateOk, the_broken_rule_is_named)
{
    Parted late(true), atonce(false);
    HGraph *const graph = late.level.get();
    const auto ok = [&] { return late_ok(graph, atonce.level.get()); };
    Ints updind(10), marker(10, -1);
    for (HGraph *const level : {graph, atonce.level.get()}) level->where[4] = 2;
    note_kway_move(graph, 4, 1, 2, late.marker.data(), &late.stale);
    KwayUpdateGainInfo__(atonce.level.get(), 4, 1, 2, marker.data(), updind.data());
    EXPECT_EQ(broken_rule(ok), "S6") << "not refreshed yet";
    refresh_all(graph, &late.stale);
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(graph->crinfo[4].id, 9, ok), "S6");
    EXPECT_EQ(broken_by(graph->crinfo[4].degrees[0].ties, 9, ok), "S6");
    EXPECT_EQ(broken_by(graph->crinfo[4].degrees[0].pid, 9, ok), "S6");
}

TEST(StaleOk, moves_and_visits_keep_the_records_whole)
{
    Parted parted(true);
    HGraph *const level = parted.level.get();
    for (const int v : {4, 1, 9, 7}) {
        const int from = level->where[v], to = (from + 1) % 3;
        refresh_outline(level, &parted.stale, v);
        refresh_record(level, &parted.stale, v);
        EXPECT_EQ(broken_rule([&] { return parted.waiting_ok(); }), "");
        level->where[v] = to;
        level->kpwgts[from]--;
        level->kpwgts[to]++;
        note_kway_move(level, v, from, to, parted.marker.data(), &parted.stale);
        level->mincut = fresh_cut(level, level->where);
        level->minsoed = fresh_soed(level, level->where);
        EXPECT_EQ(broken_rule([&] { return parted.waiting_ok(); }), "");
    }
    refresh_all(level, &parted.stale);
    EXPECT_EQ(broken_rule([&] { return parted.ok(); }), "");
}
