/* SPDX-License-Identifier: MIT */
/* zorpelx/files/json_scan.h: JSON read value by value, from front to back, without a tree.
 *
 *     JsonScan scan = json_over(bytes, budget);
 *     std::string_view key;
 *     for (JsonList list = open_object(&scan); next_key(&scan, &list, &key);)
 *         if (key == "nodes") read_nodes(&scan); else skip_value(&scan);
 *     end_json(&scan);
 *
 * All that is read or skipped is checked against the grammar (RFC 8259). Errors are FileErrors of
 * ZORPELX_BAD_INPUT, with line and column; the place of a character is counted only when a message
 * wants it.
 */
#ifndef ZORPELX_FILES_JSON_SCAN_H
#define ZORPELX_FILES_JSON_SCAN_H

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "budget.h"
#include "rules.h"

/*   J1  begin <= next <= end */
struct JsonScan {
    const char *begin, *next, *end;
    const char *look; // where the clock is looked at again
    int depth;        // of lists that are open
    Budget *budget;
    std::deque<std::string> unescaped; // strings that the text does not hold as they are
};

enum JsonKind { JSON_OBJECT, JSON_ARRAY, JSON_STRING, JSON_NUMBER, JSON_WORD };

/* What begins at the next value: JSON_WORD for true, false and null. */
JsonKind json_kind(JsonScan *scan);

/* An object or an array that is being gone through. */
struct JsonList {
    bool first;
};

/* A byte order mark is skipped. The bytes have to stay as long as what is read of them. */
JsonScan json_over(std::string_view bytes, Budget *budget);

/* Errors  the next value is of another kind; more than 500 lists one in another */
JsonList open_object(JsonScan *scan);
JsonList open_array(JsonScan *scan);

/* Goes to the next member, whose value is then read or skipped; false behind the last one, where
 * the list is closed. */
bool next_key(JsonScan *scan, JsonList *list, std::string_view *key);
bool next_item(JsonScan *scan, JsonList *list);

/* A string, as a view of the text where that has no escapes. Stays as long as the scan. */
std::string_view take_string(JsonScan *scan);

/* A number as it is written. */
std::string_view take_number(JsonScan *scan);

/* A whole number of at most 18 digits, however it is written ("12", "1.2e1"); false for others. */
bool is_whole(std::string_view number, int64_t *value);

/* Skips the next value; returns its text. */
std::string_view skip_value(JsonScan *scan);

/* Nothing but white space is left. */
void end_json(JsonScan *scan);

/* Where the next value begins, behind white space. */
const char *next_value(JsonScan *scan);

/* Line and column of a character of the text. */
Place json_place(const JsonScan &scan, const char *at);

/* Ends reading with "FILE:LINE:COLUMN: text". */
[[noreturn]] void json_error(const JsonScan &scan, const char *at, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

/* Whether the text begins like an object, and one of the keys of that object, among those that
 * begin in the first 64 KiB, is this one. For recognising a format; nothing is checked. */
bool has_top_key(std::string_view text, std::string_view key);

/* Text as a JSON string, with its quotes. What is not UTF-8 becomes U+FFFD. */
std::string json_quoted(std::string_view text);

/* The length of the UTF-8 character that text, which is not empty, begins with; 0 if it begins with
 * none. */
size_t utf8_length(std::string_view text);

#endif
