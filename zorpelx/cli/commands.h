/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/commands.h: the commands; each returns the exit status. */
#ifndef ZORPELX_CLI_COMMANDS_H
#define ZORPELX_CLI_COMMANDS_H

#include "failure.h"
#include "options.h"

/* All throw Failure, and what the libraries throw. */
Status run_partition(const Settings &settings);
Status run_verify(const Settings &settings);
Status run_merge(const Settings &settings);
Status run_lint(const Settings &settings);
Status run_stats(const Settings &settings);
Status run_replay(const Settings &settings);
Status run_convert(const Settings &settings);
Status run_annotate(const Settings &settings);
Status run_sweep(const Settings &settings);
Status run_compare(const Settings &settings);
Status run_explain(const Settings &settings);
Status run_report(const Settings &settings);

/* What the table of options becomes besides the parser. */
std::string help_of(const CommandRow &command);
std::string help_of_all();
std::string manual_page();
std::string bash_completion();
std::string zsh_completion();

#endif
