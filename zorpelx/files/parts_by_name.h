/* SPDX-License-Identifier: MIT */
/* zorpelx/files/parts_by_name.h: partitions as tables of names and parts. */
#ifndef ZORPELX_FILES_PARTS_BY_NAME_H
#define ZORPELX_FILES_PARTS_BY_NAME_H

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

/* The part of each vertex, whatever the order of the rows.
 * Errors  ZORPELX_BAD_INPUT with the place: a row without two fields, a name that no vertex has or
 *         that several have, a vertex with two rows or none, a part that is no part number */
std::vector<int64_t> scan_parts_by_name(std::string_view bytes, const VertexLabels &vertices,
                                        Budget *budget);

/* A partition in either form: such a table, or a number for each vertex as scan_partition() reads
 * them. */
std::vector<int64_t> scan_partition_or_table(std::string_view bytes, const VertexLabels &vertices,
                                             Budget *budget, bool *unended);

#endif
