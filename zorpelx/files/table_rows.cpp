// SPDX-License-Identifier: MIT
/* zorpelx/files/table_rows.cpp: the rows of a table.
 *
 * Fields are looked at where they stand; only a quoted field that holds a quote is copied.
 */
#include "table_rows.h"

#include <cassert>

#include "builder.h"

constexpr size_t MOST_COLUMNS = 256; // looked at

TableRows open_rows(std::string_view text, char separator, Budget *budget)
{
    return {walk_over(text), separator, budget, {}, {}};
}

/* Moves over one character and keeps count of lines. */
static void step(Walk *walk)
{
    const bool newline = *walk->at++ == '\n';
    if (!newline) return;
    walk->line++;
    walk->begin = walk->at;
}

/* The field behind an opening quote. */
static std::string_view take_quoted(TableRows *rows, Place place, std::string *copy)
{
    Walk *const walk = &rows->walk;
    const char *begin = ++walk->at;
    copy->clear();
    for (; walk->at < walk->end; step(walk)) {
        if (*walk->at != '"') continue;
        const std::string_view piece(begin, static_cast<size_t>(walk->at - begin));
        walk->at++;
        if (walk->at == walk->end || *walk->at != '"') {
            if (copy->empty()) return piece;
            return *copy += piece;
        }
        *copy += piece;
        begin = walk->at; // the second quote of two is kept
    }
    bad_input(*rows->budget, place, "a quoted field has no closing quote");
}

static bool is_field_blank(char c)
{
    return c == ' ' || c == '\r' || c == '\t';
}

static void skip_field_blanks(TableRows *rows)
{
    Walk *const walk = &rows->walk;
    while (walk->at < walk->end && *walk->at != rows->separator && is_field_blank(*walk->at))
        walk->at++;
}

/* The field up to the next separator or newline, without blanks at its end. */
static std::string_view take_plain(TableRows *rows)
{
    Walk *const walk = &rows->walk;
    const char *const begin = walk->at;
    const char separator = rows->separator;
    while (walk->at < walk->end && *walk->at != separator && *walk->at != '\n') walk->at++;
    const char *end = walk->at;
    while (end > begin && is_field_blank(end[-1])) end--;
    return {begin, static_cast<size_t>(end - begin)};
}

/* One field, with its separator if there is one; false at the last of the row. */
static bool take_field(TableRows *rows)
{
    Walk *const walk = &rows->walk;
    skip_field_blanks(rows);
    TableField field = {{}, place_of(*walk), walk->at < walk->end && *walk->at == '"'};
    const size_t column = rows->row.size();
    if (column >= rows->copies.size()) rows->copies.resize(column + 1);
    if (field.quoted) {
        field.text = take_quoted(rows, field.place, &rows->copies[column]);
        skip_field_blanks(rows);
    } else {
        field.text = take_plain(rows);
    }
    if (column < MOST_COLUMNS) rows->row.push_back(field);
    if (line_ended(*walk)) return false;
    if (*walk->at != rows->separator)
        bad_input(*rows->budget, place_of(*walk), "%s behind a closing quote",
                  shown_here(*walk).c_str());
    walk->at++;
    return true;
}

bool take_row(TableRows *rows)
{
    Walk *const walk = &rows->walk;
    skip_space(walk);
    if (text_ended(*walk)) return false;
    if (rows->separator == '\t') // blanks at the begin of a row may be separators
        while (walk->at > walk->begin && is_walk_blank(walk->at[-1])) walk->at--;
    rows->row.clear();
    while (take_field(rows)) continue;
    assert(!rows->row.empty() && line_ended(*walk));
    next_line(walk);
    return true;
}
