/* SPDX-License-Identifier: MIT */
/* zorpelx/files/members.h: memberships, the rows of tables and of JSON lines, and what they become.
 *
 * A row says that a vertex is in a hyperedge, and may say more of either; a row with one of the two
 * alone says that it is there.
 */
#ifndef ZORPELX_FILES_MEMBERS_H
#define ZORPELX_FILES_MEMBERS_H

#include "builder.h"

/* What a column, or a key, says. */
enum Role {
    ROLE_NET,
    ROLE_VERTEX,
    ROLE_NET_WEIGHT,
    ROLE_VERTEX_WEIGHT,
    ROLE_KIND,
    ROLE_FIXED,
    ROLE_GROUP,
    ROLE_NONE,
    NROLES
};

/* By the name of a column in any case, "transaction" or "item"; ROLE_NONE for any other. */
Role role_of_name(std::string_view name);

/* The name that writers give it. */
const char *name_of_role(Role role);

/* One row: what is absent has no place. */
struct MemberEntry {
    struct Word {
        std::string_view text = {};
        Place place = {0, 0}; // line 0: absent
    };
    Word words[NROLES] = {};
};

/* Rows that say no more than that a vertex is in a hyperedge wait, so that the names of many are
 * asked for before the first is looked up. */
struct WaitingRows {
    struct Row {
        std::string_view net, vertex;
    };
    static constexpr size_t MOST = 64;
    Row rows[MOST] = {};
    size_t count = 0;
};

/*   M1  an entry of a list is -1 until a row says something; the first one counts */
struct Members {
    Builder builder;
    std::vector<int64_t> netweight, vertexweight, fixed, group, kind; // as far as rows said
    Interner kinds;
    int64_t nconflicts; // rows that say something else than one before
    Place conflict;     // of the first
    std::string what;   // in words
    int32_t net;        // of the last row, or -1
    WaitingRows waiting;
};

Members open_members(Findings *findings, Budget *budget);

/* Errors  FileError: a weight or a part that is no whole number from 0 */
void add_member(Members *members, const MemberEntry &member);

/* Adds a row of a hyperedge and a vertex, sooner or later, in order; the texts have to stay. */
void add_later(Members *members, std::string_view net, std::string_view vertex);

/* The record; what rows contradict each other in is told. */
Hypergraph finish_members(Members *members);

#endif
