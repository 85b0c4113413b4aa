/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_cnf.h: the reader of DIMACS CNF files.
 *
 * The hypergraph that is made of a formula is one of three:
 *   primal   variables are vertices, clauses are hyperedges
 *   dual     clauses are vertices, variables are hyperedges
 *   literal  literals are vertices, 1, -1, 2, -2 and so on; clauses are hyperedges
 */
#ifndef ZORPELX_FILES_READ_CNF_H
#define ZORPELX_FILES_READ_CNF_H

#include "formats.h"

Recognised recognise_cnf(std::string_view bytes);

/* Counts of the header that are off are told; what the clauses say holds. */
Hypergraph read_cnf(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget);

#endif
