/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/byname.h: vertices chosen on the command line by patterns of their names. */
#ifndef ZORPELX_CLI_BYNAME_H
#define ZORPELX_CLI_BYNAME_H

#include <cstdint>
#include <string>
#include <vector>

#include "hypergraph.h"
#include "options.h"

/* Whether a word is a list such as "core*=2,io?=0", and not the name of a file. */
bool is_pattern_list(const std::string &word);

/* The number that the last pattern which fits gives to each vertex; `otherwise` where none does.
 *   option       for messages, "--fix"
 *   least, most  what the numbers may be
 * Throws  STATUS_USAGE for a pattern without a number or one that fits no vertex */
std::vector<int64_t> numbers_by_name(const std::string &list, const char *option,
                                     const Hypergraph &graph, int64_t first, int64_t least,
                                     int64_t most, int64_t otherwise);

/* Where vertices are fixed: by --fix, a file or patterns, otherwise by the hypergraph's own file;
 * empty if none is.
 * Throws  STATUS_USAGE, STATUS_BAD_INPUT */
std::vector<int64_t> fixed_vertices(const Settings &settings, const Hypergraph &graph,
                                    int64_t nparts);

/* The group of each vertex, -1 for none, by --together or by the hypergraph's own file; empty if
 * there are none. */
std::vector<int64_t> vertex_groups(const Settings &settings, const Hypergraph &graph);

#endif
