/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_table.h: tables as text: memberships, and partitions by name. */
#ifndef ZORPELX_FILES_WRITE_TABLE_H
#define ZORPELX_FILES_WRITE_TABLE_H

#include "formats.h"

/* A header, then a row for each pin, with all that the record has. A vertex in no hyperedge has a
 * row without one, a hyperedge without vertices one without a vertex. What has no name is written
 * by its number. read_csv() makes the same record of it but for the order of vertices. */
std::string write_csv(const Hypergraph &graph, Budget *budget);
std::string write_tsv(const Hypergraph &graph, Budget *budget);

/* "vertex,part" and a row for each vertex. */
std::vector<WrittenFile> annotate_csv(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);
std::vector<WrittenFile> annotate_tsv(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);

#endif
