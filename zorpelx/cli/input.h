/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/input.h: the files of a command, read within its caps. */
#ifndef ZORPELX_CLI_INPUT_H
#define ZORPELX_CLI_INPUT_H

#include <string>
#include <vector>

#include "bytes.h"
#include "expand.h" // plain_name
#include "failure.h"
#include "formats.h"
#include "options.h"

/* How messages call a file: its name, escaped; "standard input" for "-". */
std::string shown_name(const std::string &name);

/* Runs work, and gives up where reading does. */
template <class Work> auto or_fail(const Work &work)
{
    try {
        return work();
    } catch (const FileError &error) {
        throw Failure{static_cast<Status>(error.status), error.text};
    }
}

/* What is left for a file of --memory and, since the program was started, of --timeout. */
Budget budget_for(const Settings &settings, const std::string &name);

/* How the command line wants the hypergraph to be read; without notes. */
Reading reading_of(const Settings &settings);

/* The same for commands that do not partition: any number of vertices will do. */
Reading reading_of_any_size(const Settings &settings);

/* The format that the command line wants it to be read by; null: by its content. */
const FormatRow *format_of(const Settings &settings);

/* Reads the hypergraph of a command, which is going to be used.
 * Errors  STATUS_BAD_INPUT with the finding for which it is refused */
Hypergraph read_hypergraph(const Settings &settings, const Reading &reading, Findings *findings);

/* The same with the bytes of its file. */
struct Source {
    Bytes bytes;
    Hypergraph graph;
};
Source read_source(const Settings &settings, const Reading &reading, Findings *findings);

/* The names of the formats of which something holds, with commas. */
std::string format_names(bool (*holds)(const FormatRow &row));

/* Says on standard error that there were errors, overcome by force, or warnings. */
void tell_warnings(const std::string &name, const Findings &findings);

/* A fix file that is going to be used: one entry from -1 to nparts - 1 per vertex, or a table of
 * names and parts, in which vertices without a row are free. */
std::vector<int64_t> read_fix(const Settings &settings, const Hypergraph &graph, int64_t nparts);

/* A file with a number from least to most - 1 for each vertex, whatever they mean; or a table of
 * names and parts, as annotate writes it, in which vertices without a row have -1 if that is allowed.
 * Errors  STATUS_BAD_INPUT with the place */
std::vector<int64_t> read_vertex_numbers(const Settings &settings, const std::string &name,
                                         const Hypergraph &graph, int64_t least, int64_t most);

/* K of a name that ends with ".part.K", compressed or not; 0 if there is none. */
int64_t parts_in_name(const std::string &file);

/* Groups numbered from 0 in the order in which they are first met; -1 stays. */
std::vector<int> dense_groups(const std::vector<int64_t> &groups);

/* All of a small text file. */
std::string read_text(const Settings &settings, const std::string &name);

/* A partition file: exactly one part number per vertex, each from 0 and below 2^31 - 1; or a table
 * of names and parts, as annotate writes it.
 * Errors  STATUS_BAD_INPUT with the place */
std::vector<int64_t> read_partition(const Settings &settings, const Hypergraph &graph);

#endif
