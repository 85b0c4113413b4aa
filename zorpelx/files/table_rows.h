/* SPDX-License-Identifier: MIT */
/* zorpelx/files/table_rows.h: the rows of a table whose fields a character separates.
 *
 * Quotes as of RFC 4180: a field in quotes may hold separators, ends of lines and, doubled, quotes.
 * Blanks around a field without quotes do not count, and blank lines are no rows.
 */
#ifndef ZORPELX_FILES_TABLE_ROWS_H
#define ZORPELX_FILES_TABLE_ROWS_H

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "walk.h"

struct TableField {
    std::string_view text;
    Place place;
    bool quoted;
};

/*   R1  the texts of `row`, at most 256 fields, stand in the table or in copies, until the next row
 *       is taken */
struct TableRows {
    Walk walk;
    char separator;
    Budget *budget;
    std::vector<TableField> row;
    std::deque<std::string> copies; // [column] of fields that hold quotes
};

/* The rows of a text, behind a byte order mark if it begins with one; none is taken yet. */
TableRows open_rows(std::string_view text, char separator, Budget *budget);

/* Takes the next row that is not blank; false at the end of the text.
 * Errors  ZORPELX_BAD_INPUT with the place: a quote without an end, or something behind one */
bool take_row(TableRows *rows);

#endif
