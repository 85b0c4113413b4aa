/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_jsonl.h: memberships and partitions as JSON lines. */
#ifndef ZORPELX_FILES_WRITE_JSONL_H
#define ZORPELX_FILES_WRITE_JSONL_H

#include "formats.h"

/* A line for each vertex with all that the record has of it, in order, then one for each hyperedge
 * with the names of its vertices. What has no name is written by its number. read_jsonl() makes the
 * same record of it, order included.
 * Errors  FileError: past the budget */
std::string write_jsonl(const Hypergraph &graph, Budget *budget);

/* A line {"vertex": NAME, "part": P} for each vertex. */
std::vector<WrittenFile> annotate_jsonl(const Hypergraph &graph, const Annotation &annotation,
                                        Budget *budget);

#endif
