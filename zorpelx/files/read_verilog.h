/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_verilog.h: structural Verilog, through Yosys where it is installed. */
#ifndef ZORPELX_FILES_READ_VERILOG_H
#define ZORPELX_FILES_READ_VERILOG_H

#include "formats.h"

Recognised recognise_verilog(std::string_view bytes);

/* Yosys reads the text from its standard input, in the file's folder, and writes JSON, which is
 * read as read_yosys() does. Modules keep their hierarchy.
 * Errors  FileError: Yosys is not installed; what Yosys has against the text */
Hypergraph read_verilog(std::string_view bytes, const Reading &reading, Findings *findings,
                        Budget *budget);

#endif
