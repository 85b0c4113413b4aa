/* SPDX-License-Identifier: MIT */
/* zorpelx/files/parts_by_name.h: partitions as tables of names and parts. */
#ifndef ZORPELX_FILES_PARTS_BY_NAME_H
#define ZORPELX_FILES_PARTS_BY_NAME_H

#include "hypergraph.h"

/* Whether a text begins with the header of such a table: vertex and part, in CSV or TSV. */
bool has_parts_by_name(std::string_view bytes);

/* The part of each vertex of the hypergraph, whatever the order of the rows. Names are as
 * annotate writes them; numbers, where there are no names, begin with 1.
 * Errors  ZORPELX_BAD_INPUT with the place: a row without two fields, a name that no vertex has or
 *         that several have, a vertex with two rows or none, a part that is no part number */
std::vector<int64_t> scan_parts_by_name(std::string_view bytes, const Hypergraph &graph,
                                        Budget *budget);

#endif
