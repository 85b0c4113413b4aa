/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_bookshelf.h: placement benchmarks in the Bookshelf format.
 *
 * The .aux file names the others, which are read from its folder: .nodes with sizes, .nets, and, if
 * they are there, .wts with weights, .pl with places and .scl with rows. Nodes are vertices whose
 * weight is their area; their kind says whether they are cells, terminals or fixed.
 */
#ifndef ZORPELX_FILES_READ_BOOKSHELF_H
#define ZORPELX_FILES_READ_BOOKSHELF_H

#include "formats.h"

Recognised recognise_bookshelf(std::string_view bytes);

/* The text is that of the .aux file; reading.path says where it is. */
Hypergraph read_bookshelf(std::string_view bytes, const Reading &reading, Findings *findings,
                          Budget *budget);

/* The part of each node, a line "NAME PART" each, behind a comment. */
std::vector<WrittenFile> annotate_bookshelf(const Hypergraph &graph, const Annotation &annotation,
                                            Budget *budget);

#endif
