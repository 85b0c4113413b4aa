/* SPDX-License-Identifier: MIT */
/* zorpelx/files/names.h: names of vertices, hyperedges and kinds.
 *
 * All names of one kind stand one behind another in one array of characters. A format without names
 * has none here either; whoever shows a vertex then shows its number.
 */
#ifndef ZORPELX_FILES_NAMES_H
#define ZORPELX_FILES_NAMES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "budget.h"

/*   N1  name i is text[start[i]] .. text[start[i + 1] - 1]
 *   N2  start is empty if there are no names, otherwise it begins with 0 and ends with the size of
 *       text, and never descends */
struct Names {
    std::vector<char> text = {};
    std::vector<int64_t> start = {};
};

int64_t count_names(const Names &names);
bool names_ok(const Names &names);

/* Name i, which is there. */
std::string_view name_of(const Names &names, int64_t i);

/* Adds a name at the end, equal to another or not. */
void add_name(Names *names, std::string_view name, Budget *budget);

/* Name i, or its number from `first` on if there are no names. */
std::string name_or_number(const Names &names, int64_t i, int64_t first);

/* Whether a name fits a pattern, in which * stands for any characters, also none, ? for one, and
 * [...] for one of a set, as in the shell; a backslash takes the next character as it is. */
bool name_fits(std::string_view name, std::string_view pattern);

#endif
