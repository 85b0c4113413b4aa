/* SPDX-License-Identifier: MIT */
/* zorpelx/files/run_tool.h: another program, given a text and giving one back. */
#ifndef ZORPELX_FILES_RUN_TOOL_H
#define ZORPELX_FILES_RUN_TOOL_H

#include <string>
#include <string_view>
#include <vector>

#include "budget.h"

struct ToolResult {
    bool started;       // false: there is no such program
    int status;         // exit status; 128 and the number of a signal
    std::string output; // standard output
    std::string errors; // standard error, the first 64 KiB
};

/* Runs a program found in PATH, without a shell, in a folder ("" for the current one), with the
 * text as its standard input. It is killed if the budget's deadline passes or the budget is
 * cancelled, and what it writes counts against the budget. Neither the caller's signals nor its
 * streams are touched.
 * Errors  FileError: past the budget; pipes or processes that cannot be made */
ToolResult run_tool(const std::vector<std::string> &words, const std::string &folder,
                    std::string_view input, Budget *budget);

#endif
