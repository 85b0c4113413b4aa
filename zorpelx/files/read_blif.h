/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_blif.h: netlists in the Berkeley Logic Interchange Format.
 *
 * Each .names, .latch, .gate and .subckt is a vertex, each net a hyperedge, each input and output
 * of the first model a vertex too. Subcircuits whose model the file has are opened (netlist.h).
 */
#ifndef ZORPELX_FILES_READ_BLIF_H
#define ZORPELX_FILES_READ_BLIF_H

#include "formats.h"

Recognised recognise_blif(std::string_view bytes);

Hypergraph read_blif(std::string_view bytes, const Reading &reading, Findings *findings,
                     Budget *budget);

#endif
