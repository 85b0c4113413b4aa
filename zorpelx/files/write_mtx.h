/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_mtx.h: a partition of a matrix: who has which entry, and the matrix in
 * blocks.
 *
 * The rows and columns of each part come together, those that several parts touch come last: a
 * bordered block diagonal form (Aykanat, Pinar & Catalyurek, Permuting sparse rectangular matrices
 * into block-diagonal form, SIAM J. Sci. Comput. 25(6), 2004). The border is of rows in the row-net
 * model, of columns in the column-net model, of both in the fine-grain model.
 */
#ifndef ZORPELX_FILES_WRITE_MTX_H
#define ZORPELX_FILES_WRITE_MTX_H

#include "formats.h"

/* Four files: the permuted matrix, values kept, a matrix that was stored by half written whole;
 * ".distribution.mtx", the same entries in the order of the file with 1 + their part as value;
 * ".rows" and ".columns", the old number of each new row and column, from 1. */
std::vector<WrittenFile> annotate_mtx(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);

#endif
