/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_yosys.h: netlists in JSON, as Yosys writes them (write_json).
 *
 * Cells are vertices, the bits of nets are hyperedges; ports of the top module are vertices too,
 * one for each bit. Cells of modules that the file holds are opened (netlist.h).
 */
#ifndef ZORPELX_FILES_READ_YOSYS_H
#define ZORPELX_FILES_READ_YOSYS_H

#include "formats.h"
#include "netlist.h"

Recognised recognise_yosys(std::string_view bytes);

Hypergraph read_yosys(std::string_view bytes, const Reading &reading, Findings *findings,
                      Budget *budget);

/* The record and where its vertices come from.
 *   top  name of the module that is taken; empty: the file's top module */
Hypergraph read_yosys_origins(std::string_view bytes, const std::string &top, Findings *findings,
                              Budget *budget, std::vector<NetOrigin> *origins);

#endif
