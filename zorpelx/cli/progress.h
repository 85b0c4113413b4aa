/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/progress.h: the progress line of a run. */
#ifndef ZORPELX_CLI_PROGRESS_H
#define ZORPELX_CLI_PROGRESS_H

#include <string>

#include "options.h"
#include "zorpelx.h"

/* What a line says, the most important first: how much is done and how long the rest may take,
 * starts, the best cut, runs, the time so far; only what fits into the width.
 *   search   whether its jobs are counted, not runs of the engine
 *   width    columns of the terminal, of which the last stays free
 *   timeout  seconds; 0: no deadline */
std::string progress_text(const zorpelx_progress &progress, bool search, double timeout, int width);

/* Whether progress is shown: auto does on a terminal that can rewrite a line. */
bool wants_progress(const Settings &settings);

/* Shows the line on standard error: over the last one on a terminal, else as a line of its own
 * whenever a percent more is done. For zorpelx_options.on_progress; user is a const Settings. */
int show_progress(void *user, const zorpelx_progress *progress);

/* Takes the line away. */
void clear_progress();

#endif
