/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/output.h: what a command writes, with failures for faults. */
#ifndef ZORPELX_CLI_OUTPUT_H
#define ZORPELX_CLI_OUTPUT_H

#include <memory>

#include "outputs.h"

using Writer = std::unique_ptr<Outputs, void (*)(Outputs *)>;

/* Opens all outputs of a command before it runs; see open_outputs(). Standard output and standard
 * error, where they are files, must be none of the inputs or outputs either.
 *   names   of the outputs; an empty one stands for none
 *   inputs  all that the command reads; empty names are passed over
 * Throws  STATUS_USAGE, STATUS_IO */
Writer open_writer(const std::vector<std::string> &names, const std::vector<std::string> &inputs);

/* Writes them together: the contents in the order of the names; see write_outputs().
 * Throws  STATUS_IO */
void write_together(const Writer &writer, const std::vector<std::string_view> &contents);

/* Whether one of the outputs goes to standard output, which then takes nothing else. */
bool standard_output_taken(const Writer &writer);

/* Sends what standard output still holds on its way. Throws: STATUS_IO */
void flush_output();

#endif
