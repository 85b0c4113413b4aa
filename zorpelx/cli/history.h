/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/history.h: the history of a run, from the JSON answer of the partition command. */
#ifndef ZORPELX_CLI_HISTORY_H
#define ZORPELX_CLI_HISTORY_H

#include <string_view>

#include "account.h"

/* What a run tells about itself. */
struct RunTold {
    History history;
    int64_t nparts; // 0: not told
    double epsilon; // negative: not told, or parts had sizes of their own
    double least;   // negative: not told
};

/* From the text of the file.
 *   name  as messages call it
 * Errors  STATUS_BAD_INPUT if it is no such answer, or one without a history */
RunTold read_history(std::string_view text, const std::string &name);

#endif
