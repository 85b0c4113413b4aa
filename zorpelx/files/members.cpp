// SPDX-License-Identifier: MIT
/* zorpelx/files/members.cpp: memberships, the rows of tables and of JSON lines. */
#include "members.h"

#include <climits>

#include "fileerror.h"
#include "walk.h"
#include "told.h"

struct RoleName {
    std::string_view name;
    Role role;
};

/* The first of each role is what writers use. */
constexpr RoleName ROLE_NAMES[] = {{"hyperedge", ROLE_NET},
                                   {"vertex", ROLE_VERTEX},
                                   {"weight", ROLE_NET_WEIGHT},
                                   {"vertex_weight", ROLE_VERTEX_WEIGHT},
                                   {"kind", ROLE_KIND},
                                   {"fixed", ROLE_FIXED},
                                   {"group", ROLE_GROUP},
                                   {"edge", ROLE_NET},
                                   {"net", ROLE_NET},
                                   {"transaction", ROLE_NET},
                                   {"transaction_id", ROLE_NET},
                                   {"basket", ROLE_NET},
                                   {"order", ROLE_NET},
                                   {"order_id", ROLE_NET},
                                   {"query", ROLE_NET},
                                   {"vertices", ROLE_VERTEX},
                                   {"node", ROLE_VERTEX},
                                   {"nodes", ROLE_VERTEX},
                                   {"cell", ROLE_VERTEX},
                                   {"cells", ROLE_VERTEX},
                                   {"item", ROLE_VERTEX},
                                   {"items", ROLE_VERTEX},
                                   {"item_id", ROLE_VERTEX},
                                   {"product", ROLE_VERTEX},
                                   {"member", ROLE_VERTEX},
                                   {"members", ROLE_VERTEX},
                                   {"pin", ROLE_VERTEX},
                                   {"pins", ROLE_VERTEX},
                                   {"hyperedge_weight", ROLE_NET_WEIGHT},
                                   {"edge_weight", ROLE_NET_WEIGHT},
                                   {"net_weight", ROLE_NET_WEIGHT},
                                   {"node_weight", ROLE_VERTEX_WEIGHT},
                                   {"cell_weight", ROLE_VERTEX_WEIGHT},
                                   {"area", ROLE_VERTEX_WEIGHT},
                                   {"type", ROLE_KIND}};

static Role role_called(std::string_view name)
{
    for (const RoleName &row : ROLE_NAMES)
        if (name == row.name) return row.role;
    return ROLE_NONE;
}

Role role_of_name(std::string_view name)
{
    const Role role = role_called(name);
    return role != ROLE_NONE ? role : role_called(small_letters(name));
}

const char *name_of_role(Role role)
{
    for (const RoleName &row : ROLE_NAMES)
        if (row.role == role) return row.name.data();
    return "";
}

Members open_members(Findings *findings, Budget *budget)
{
    Members members = {};
    members.builder = open_builder(findings, budget);
    members.net = -1;
    return members;
}

static bool is_there(const MemberEntry &member, Role role)
{
    return member.words[role].place.line > 0;
}

/* Rows of one hyperedge mostly stand together. */
static int32_t number_net(Members *members, std::string_view name)
{
    const Names &names = members->builder.nets.names;
    if (members->net < 0 || name_of(names, members->net) != name)
        members->net = named_net(&members->builder, name);
    return members->net;
}

static int64_t number_of(const Members &members, const MemberEntry &member, Role role)
{
    constexpr size_t MOST_DIGITS = 18;
    const MemberEntry::Word &word = member.words[role];
    int64_t number = 0;
    bool whole = !word.text.empty() && word.text.size() <= MOST_DIGITS;
    for (const char c : word.text) {
        whole = whole && c >= '0' && c <= '9';
        if (whole) number = 10 * number + (c - '0');
    }
    if (!whole)
        bad_input(*members.builder.budget, word.place, "%s, the %s, is not a whole number from 0",
                  shown_text(word.text).c_str(), name_of_role(role));
    const bool small = role == ROLE_FIXED || role == ROLE_GROUP;
    if (small && number >= INT_MAX)
        bad_input(*members.builder.budget, word.place, "%s, the %s, does not fit 32 bits",
                  shown_text(word.text).c_str(), name_of_role(role));
    return number;
}

/* What a row says of number i; the first that is said counts. */
static void say(Members *members, std::vector<int64_t> *list, int32_t i, int64_t value,
                const MemberEntry &member, Role role)
{
    const size_t index = static_cast<size_t>(i);
    while (list->size() <= index) push_charged(members->builder.budget, list, int64_t{-1});
    if ((*list)[index] == -1) (*list)[index] = value;
    if ((*list)[index] == value) return;
    if (members->nconflicts++ > 0) return;
    members->conflict = member.words[role].place;
    members->what = text_of("%s here is another %s than before",
                            shown_text(member.words[role].text).c_str(), name_of_role(role));
}

static void say_of_vertex(Members *members, const MemberEntry &member, int32_t v)
{
    if (is_there(member, ROLE_VERTEX_WEIGHT))
        say(members, &members->vertexweight, v, number_of(*members, member, ROLE_VERTEX_WEIGHT),
            member, ROLE_VERTEX_WEIGHT);
    if (is_there(member, ROLE_FIXED))
        say(members, &members->fixed, v, number_of(*members, member, ROLE_FIXED), member,
            ROLE_FIXED);
    if (is_there(member, ROLE_GROUP))
        say(members, &members->group, v, number_of(*members, member, ROLE_GROUP), member,
            ROLE_GROUP);
    if (is_there(member, ROLE_KIND))
        say(members, &members->kind, v,
            intern(&members->kinds, member.words[ROLE_KIND].text, members->builder.budget), member,
            ROLE_KIND);
}

static void add_waiting(Members *members)
{
    WaitingRows *const waiting = &members->waiting;
    for (size_t i = 0; i < waiting->count; i++) {
        const WaitingRows::Row &row = waiting->rows[i];
        const int32_t e = number_net(members, row.net);
        add_pin(&members->builder, e, named_vertex(&members->builder, row.vertex));
    }
    waiting->count = 0;
}

void add_later(Members *members, std::string_view net, std::string_view vertex)
{
    WaitingRows *const waiting = &members->waiting;
    if (waiting->count == WaitingRows::MOST) add_waiting(members);
    const bool again = waiting->count > 0 && waiting->rows[waiting->count - 1].net == net;
    if (!again) prefetch_name(members->builder.nets, net);
    prefetch_name(members->builder.vertices, vertex);
    waiting->rows[waiting->count++] = {net, vertex};
}

void add_member(Members *members, const MemberEntry &member)
{
    add_waiting(members);
    const bool net = is_there(member, ROLE_NET), vertex = is_there(member, ROLE_VERTEX);
    const int32_t e = net ? number_net(members, member.words[ROLE_NET].text) : -1;
    const int32_t v = vertex ? named_vertex(&members->builder, member.words[ROLE_VERTEX].text) : -1;
    if (net && vertex) add_pin(&members->builder, e, v);
    if (net && is_there(member, ROLE_NET_WEIGHT))
        say(members, &members->netweight, e, number_of(*members, member, ROLE_NET_WEIGHT), member,
            ROLE_NET_WEIGHT);
    if (vertex) say_of_vertex(members, member, v);
}

static void put_weights(Members *members)
{
    Builder *const builder = &members->builder;
    for (size_t e = 0; e < members->netweight.size(); e++)
        if (members->netweight[e] >= 0)
            set_net_weight(builder, static_cast<int32_t>(e), members->netweight[e]);
    for (size_t v = 0; v < members->vertexweight.size(); v++)
        if (members->vertexweight[v] >= 0)
            set_vertex_weight(builder, static_cast<int32_t>(v), members->vertexweight[v]);
}

/* An entry for each vertex if any has one. */
static void put_entries(Members *members, const std::vector<int64_t> &from,
                        std::vector<int32_t> *entries)
{
    if (from.empty()) return;
    const size_t nvertices = static_cast<size_t>(members->builder.graph.nvertices);
    charge(members->builder.budget, nvertices * sizeof(int32_t));
    entries->assign(nvertices, -1);
    for (size_t v = 0; v < from.size(); v++) (*entries)[v] = static_cast<int32_t>(from[v]);
}

static void tell_conflicts(const Members &members)
{
    if (members.nconflicts > 0)
        tell_warning(members.builder.findings, members.conflict,
                     members.what + "; the first counts, " +
                         counted(members.nconflicts, "time", "times") + " in all");
}

Hypergraph finish_members(Members *members)
{
    Hypergraph *const graph = &members->builder.graph;
    add_waiting(members);
    put_weights(members);
    put_entries(members, members->fixed, &graph->fixed);
    put_entries(members, members->group, &graph->group);
    put_entries(members, members->kind, &graph->kind);
    graph->kindnames = take_names(&members->kinds, members->builder.budget);
    tell_conflicts(*members);
    int64_t nrepeated = 0;
    Hypergraph made = finish_hypergraph(&members->builder, &nrepeated);
    if (nrepeated > 0)
        tell_note(members->builder.findings, {0, 0},
                  text_of("memberships that are listed again, counted once: %lld",
                          static_cast<long long>(nrepeated)));
    return made;
}
