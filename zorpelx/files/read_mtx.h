/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_mtx.h: the reader of Matrix Market files.
 *
 * The hypergraph that is made of a matrix is one of three (Catalyurek & Aykanat, Hypergraph-
 * partitioning-based decomposition for parallel sparse-matrix vector multiplication, IEEE TPDS
 * 10(7), 1999; the same, A fine-grain hypergraph model for 2D decomposition of sparse matrices,
 * IPDPS 2001):
 *   row-net     columns are vertices, of the weight of their nonzeros; rows are hyperedges
 *   column-net  rows are vertices, of the weight of their nonzeros; columns are hyperedges
 *   fine-grain  nonzeros are vertices in the order of the file, of weight 1; rows and then columns
 *               are hyperedges
 */
#ifndef ZORPELX_FILES_READ_MTX_H
#define ZORPELX_FILES_READ_MTX_H

#include "formats.h"

Recognised recognise_mtx(std::string_view bytes);

/* Coordinate files of every field and symmetry. A matrix that is stored by half is read whole.
 * Every entry that is listed counts, be its value 0. */
Hypergraph read_mtx(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget);

#endif
