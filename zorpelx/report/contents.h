/* SPDX-License-Identifier: MIT */
/* zorpelx/report/contents.h: what lies in each part: kinds of cells, or beginnings of names. */
#ifndef ZORPELX_REPORT_CONTENTS_H
#define ZORPELX_REPORT_CONTENTS_H

#include <string>
#include <vector>

#include "facts.h"

struct GroupFacts {
    std::string name;
    int64_t vertices, weight;
};

/* Of one part: its largest groups, and what the others hold together. */
struct PartContents {
    std::vector<GroupFacts> groups;
    int64_t nothers, vertices, weight; // of the others
};

/* Groups of the vertices.
 *   group  [nvertices] number of a name */
struct VertexGrouping {
    std::vector<int32_t> group;
    std::vector<std::string> names;
};

/* By the kinds of cells; empty if the record has none. */
VertexGrouping group_by_kind(const Hypergraph &graph);

/* By the beginnings of names: as many levels of the hierarchy as tell the parts apart, or what
 * stands before a number. Empty if vertices have no names. */
VertexGrouping group_by_prefix(const Hypergraph &graph, int64_t nparts);

/* The first `depth` levels of a hierarchical name; without levels, the name without the number or
 * index at its end. */
std::string_view name_prefix(std::string_view name, int depth);

/* At most so many groups for each part, by falling weight, then by number and name. */
std::vector<PartContents> contents_of(const Hypergraph &graph, const NamedPartition &division,
                                      const VertexGrouping &grouping, size_t most);

#endif
