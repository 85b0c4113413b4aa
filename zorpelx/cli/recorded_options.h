/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/recorded_options.h: the options of the partition command in a record, and back. */
#ifndef ZORPELX_CLI_RECORDED_OPTIONS_H
#define ZORPELX_CLI_RECORDED_OPTIONS_H

#include "json.h"
#include "options.h"

/* Every option with the value in force, by its long name with underscores; null for those that are
 * not in force. Names of files, and options that cannot change the result, are left out.
 *   capacities  as numbers; empty if there are none */
Json options_record(const Settings &settings, const std::vector<double> &capacities);

/* The settings that these options stand for.
 *   settings  out: those fields; the others stay
 *   name      of the record, for messages
 * Throws  STATUS_BAD_INPUT for what is no option or no value of one */
void set_options(const Json &options, const std::string &name, Settings *settings);

/* The same for those options alone that say how files are read. */
void set_reading(const Json &options, const std::string &name, Settings *settings);

/* "keep_in_place" */
std::string record_name(const OptionRow &row);

#endif
