/* SPDX-License-Identifier: MIT */
/* zorpelx/files/annotate_yosys.h: the parts of a Yosys netlist as attributes of its cells. */
#ifndef ZORPELX_FILES_ANNOTATE_YOSYS_H
#define ZORPELX_FILES_ANNOTATE_YOSYS_H

#include "formats.h"

/* The file as it was, with the attribute "zorpel_part" of each cell that is a vertex: its part. A
 * cell of a module that is opened more than once, with parts that differ, gets "zorpel_parts": all
 * of them in order, separated by blanks. So does the wire of a port of the top module. Attributes
 * of these names that were there before go.
 * Errors  FileError: the file is another one than the hypergraph was read from */
std::vector<WrittenFile> annotate_yosys(const Hypergraph &graph, const Annotation &annotation,
                                        Budget *budget);

#endif
