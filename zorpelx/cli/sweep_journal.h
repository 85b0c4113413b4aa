/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/sweep_journal.h: the results of a sweep, line by line, as they come.
 *
 * A line is appended and synced when its run has ended. Whatever ends the process, the lines before
 * stay; a last line that is torn is dropped when the journal is opened again.
 */
#ifndef ZORPELX_CLI_SWEEP_JOURNAL_H
#define ZORPELX_CLI_SWEEP_JOURNAL_H

#include <string>
#include <vector>

#include "json.h"

struct SweepJournal {
    std::string name;
    int file = -1;           // locked, so that no other sweep writes there
    std::vector<Json> lines; // that were there, without the first
};

/* Opens or creates a journal.
 *   head  its first line: what all of its results have in common
 * Throws  STATUS_IO; STATUS_USAGE if it is another sweep's, or one is at work there;
 *         STATUS_BAD_INPUT with the line that makes no sense */
SweepJournal open_journal(const std::string &name, const Json &head);

/* Throws: STATUS_IO */
void append_line(const SweepJournal &journal, const Json &line);

void close_journal(SweepJournal *journal);

#endif
