/* SPDX-License-Identifier: MIT */
/* zorpelx/output/outputs.h: everything that a command writes, decided before it runs.
 *
 *     Outputs outputs;
 *     OutputFault fault = open_outputs({"g.part.2", "g.json"}, {"g.hgr"}, &outputs);
 *     ... the run ...
 *     fault = write_outputs(&outputs, {part, json});
 *     close_outputs(&outputs);
 *
 * A regular file is the old one or the new one, whole, whatever happens: the new one is written
 * without a name where the file system can do that, synced, given a name beside its place and
 * renamed over it. Owner and permissions stay; rights to run as its owner are dropped. Standard
 * streams, FIFOs and devices are written where they stand.
 */
#ifndef ZORPELX_OUTPUT_OUTPUTS_H
#define ZORPELX_OUTPUT_OUTPUTS_H

#include <string>
#include <string_view>
#include <vector>

#include "place.h"

/* As the library and the program call them. */
constexpr int OUTPUT_REFUSED = 2; // two names for one place
constexpr int OUTPUT_FAILED = 5;  // it cannot be written

/* Why something is not done; status 0: it is. */
struct OutputFault {
    int status = 0;
    std::string text; // a sentence that names the file
};

struct Output {
    std::string name; // as it was given
    FilePlace place;
    int file = -1; // PLACE_FILE: the nameless file, -1 where there is none; PLACE_DEVICE: open
};

struct Outputs {
    std::vector<Output> list;
};

/* Finds the places of all outputs and makes sure that they can be written. The name "-" is
 * standard output, and standard input among the inputs.
 *   names    of the outputs; an empty one stands for none
 *   inputs   what is read; empty names and files that are not there are passed over
 *   outputs  out: to be released by close_outputs(), also after a fault
 * Faults  OUTPUT_REFUSED if two outputs are one place, or an output is an input; OUTPUT_FAILED */
OutputFault open_outputs(const std::vector<std::string> &names,
                         const std::vector<std::string> &inputs, Outputs *outputs);

/* The same test for what goes to standard output and standard error beside the outputs: each may
 * be redirected to a file, which must be neither read nor, under its name, written. */
OutputFault check_streams(const Outputs &outputs, const std::vector<std::string> &inputs);

/* Writes all outputs. Everything is on its disk before the first file appears, and no signal that
 * can be held back comes between the first and the last.
 *   contents  [names] one for each name
 * Faults  OUTPUT_FAILED; the text says which files stand in spite of it, if any do. May be called
 *         again, with other contents or with the empty view that has no data for those that are to
 *         stay as they are. */
OutputFault write_outputs(Outputs *outputs, const std::vector<std::string_view> &contents);

void close_outputs(Outputs *outputs);

/* Whether an output goes where standard output goes. */
bool takes_standard_output(const Output &output);

/* How messages call an output: its name, escaped; "standard output" for "-". */
std::string shown_output(const std::string &name);

#endif
