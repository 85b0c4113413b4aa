/* SPDX-License-Identifier: MIT */
/* zorpelx/files/blif_lines.h: the lines of a BLIF file.
 *
 * A backslash at the end of a line joins the next one to it; a # begins a comment.
 */
#ifndef ZORPELX_FILES_BLIF_LINES_H
#define ZORPELX_FILES_BLIF_LINES_H

#include <string_view>
#include <vector>

#include "budget.h"

struct BlifLines {
    std::string_view text;
    const char *next, *end;
    const char *look;                    // where the clock is looked at again
    std::vector<std::string_view> words; // of the line last taken; views of the text
    Budget *budget;
};

BlifLines blif_lines_over(std::string_view text, Budget *budget);

/* Takes the words of the next line that has any; false at the end. */
bool take_words(BlifLines *lines);

/* Ends reading with the place of a character of the text. */
[[noreturn]] void blif_error(const BlifLines &lines, const char *at, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

#endif
