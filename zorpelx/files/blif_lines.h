/* SPDX-License-Identifier: MIT */
/* zorpelx/files/blif_lines.h: the lines of a BLIF file.
 *
 * A backslash at the end of a line joins the next one to it; a # begins a comment. Lines are taken
 * apart some ahead of the one at hand, so that a reader can ask for what they name; rows of covers
 * are left out on the way.
 */
#ifndef ZORPELX_FILES_BLIF_LINES_H
#define ZORPELX_FILES_BLIF_LINES_H

#include <span>
#include <string_view>
#include <vector>

#include "budget.h"

using BlifWords = std::span<const std::string_view>; // views of the text

/*   L1  line i of those ahead has the words ahead[ends[i - 1]] .. ahead[ends[i] - 1], one at least;
 *       ends[-1] stands for 0
 *   L2  line <= ends.size(); words is line number line - 1 */
struct BlifLines {
    std::string_view text;
    const char *next, *end;
    const char *look; // where the clock is looked at again
    BlifWords words;  // of the line last taken
    std::vector<std::string_view> ahead;
    std::vector<size_t> ends;
    size_t line;
    bool covers; // the last line ahead is one that rows of a cover follow
    Budget *budget;
};

BlifLines blif_lines_over(std::string_view text, Budget *budget);

/* Takes the words of the next line that has any; false at the end. */
bool take_words(BlifLines *lines);

/* Whether the line last taken is the first of those ahead. */
bool is_first_ahead(const BlifLines &lines);

/* Ends reading with the place of a character of the text. */
[[noreturn]] void blif_error(const BlifLines &lines, const char *at, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

#endif
