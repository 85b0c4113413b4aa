/* SPDX-License-Identifier: MIT */
/* zorpelx/files/parts_by_name.h: partitions, pre-assignments and groups as tables of names and parts.
 */
#ifndef ZORPELX_FILES_PARTS_BY_NAME_H
#define ZORPELX_FILES_PARTS_BY_NAME_H

#include <climits>
#include <functional>

#include "hypergraph.h"

/* What vertices are called; two may share a name. */
struct VertexLabels {
    int64_t count;
    std::function<std::string(int64_t)> label; // of vertex v, from 0
};

/* Names as annotate writes them; numbers, where there are no names, begin with 1. For as long as
 * the hypergraph stays. */
VertexLabels labels_of(const Hypergraph &graph);

/* Whether a text begins with the header of such a table: vertex and part, in CSV or TSV. */
bool has_parts_by_name(std::string_view bytes);

/* What a table may say. */
struct PartTableRule {
    int64_t nparts = INT_MAX; // parts are from 0 to nparts - 1
    bool partial = false;     // a vertex without a row, or with -1 in it, has part -1
};

/* The part of each vertex, whatever the order of the rows.
 * Errors  ZORPELX_BAD_INPUT with the place: a row without two fields, a name that no vertex has or
 *         that several have, a vertex with two rows or, unless partial, none, a part out of range */
std::vector<int64_t> scan_parts_by_name(std::string_view bytes, const VertexLabels &vertices,
                                        const PartTableRule &rule, Budget *budget);

/* A partition in either form: such a table, or a number for each vertex as scan_partition() reads
 * them. */
std::vector<int64_t> scan_partition_or_table(std::string_view bytes, const VertexLabels &vertices,
                                             Budget *budget, bool *unended);

#endif
