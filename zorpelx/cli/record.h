/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/record.h: the record of a run, by which others can check or repeat it.
 *
 * docs/RECORDS.md describes it and docs/zorpel-record.schema.json has its fields. The last field is
 * the digest of all bytes before its line, so no byte of a record changes unnoticed.
 */
#ifndef ZORPELX_CLI_RECORD_H
#define ZORPELX_CLI_RECORD_H

#include <string>
#include <vector>

#include "figures.h"
#include "hypergraph.h"
#include "json.h"
#include "solving.h"

/* Goes up when a field changes its meaning or goes. */
constexpr int RECORD_FORMAT = 1;

/* What stands in a record about a partition that was just made.
 *   settings   with a seed that is no longer to be drawn
 *   partition  name of its file */
Json record_of(const Settings &settings, const Problem &problem, const Solution &solution,
               Status status, const std::string &partition);

/* The text of a record, its digest added. */
std::string record_text(Json record);

/* The pieces that are counted from files, without running anything. */
Json hypergraph_record(const std::string &file, const Hypergraph &graph);
Json input_record(const std::string &file, const std::vector<int> &numbers);
Json figures_record(const Figures &figures, bool valid, const Json &moved);
Json partition_record(const std::string &file, const std::vector<int> &part);

/* Whether the run gives the same again: nothing but work that is counted decided when it ended. */
bool is_repeatable(const Json &run, const Json &options);

/* A record as it was read.
 *   fault  why its text is not as it was written; empty if it is */
struct Record {
    std::string name;
    Json json;
    std::string fault;
};

/* Reads a record and makes sure that every field that is used later is there, of its kind.
 * Throws  STATUS_BAD_INPUT with line and column of what is no JSON, or the field that is amiss */
Record read_record(const Settings &settings);

/* Settings that a record stands for, but for files and for what the command line alone decides. */
Settings settings_of(const Record &record, const Settings &given);

/* Where a file of a record is to be found: what was given, else the file of that name beside the
 * record, else the name as it was recorded. Empty if the record has none. */
std::string file_of(const Record &record, const Json &recorded, const std::string &given);

#endif
