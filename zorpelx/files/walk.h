/* SPDX-License-Identifier: MIT */
/* zorpelx/files/walk.h: the characters of a text, line by line, for readers that must be fast.
 *
 * Beside scan.h, which makes a token with its place of everything: here a number costs its digits,
 * and places are worked out only where something is wrong. Blanks are spaces, tabs and \r, so that
 * DOS line ends need no further care.
 */
#ifndef ZORPELX_FILES_WALK_H
#define ZORPELX_FILES_WALK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "budget.h"
#include "rules.h"

/*   W1  begin <= at <= end, begin is where line `line` begins, counted from 1 */
struct Walk {
    const char *at, *end, *begin;
    int64_t line;
};

/* A walk over a text, behind a byte order mark if it begins with one. */
inline Walk walk_over(std::string_view bytes)
{
    const bool mark = bytes.substr(0, 3) == "\xef\xbb\xbf";
    const char *const begin = bytes.data();
    return {begin + (mark ? 3 : 0), begin + bytes.size(), begin, 1};
}

/* Where the next character stands. */
inline Place place_of(const Walk &walk)
{
    return {walk.line, walk.at - walk.begin + 1};
}

inline bool text_ended(const Walk &walk)
{
    return walk.at == walk.end;
}

inline bool is_walk_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

inline void skip_blanks(Walk *walk)
{
    while (walk->at < walk->end && is_walk_blank(*walk->at)) walk->at++;
}

/* At a newline or at the end of the text; after skip_blanks() nothing is left of the line. */
inline bool line_ended(const Walk &walk)
{
    return walk.at == walk.end || *walk.at == '\n';
}

/* To the begin of the next line, from anywhere in this one. */
inline void next_line(Walk *walk)
{
    while (walk->at < walk->end && *walk->at != '\n') walk->at++;
    if (walk->at == walk->end) return;
    walk->begin = ++walk->at;
    walk->line++;
}

/* Over blanks, line ends and blank lines, to the next character that is neither. */
inline void skip_space(Walk *walk)
{
    for (;;) {
        skip_blanks(walk);
        if (walk->at == walk->end || *walk->at != '\n') return;
        next_line(walk);
    }
}

/* A whole number without a sign, of at most 18 digits, up to a blank or the end of the line. False
 * if something else stands here; then the place stays. */
inline bool take_whole(Walk *walk, int64_t *number)
{
    constexpr int MOST_DIGITS = 18; // beyond, the value may have wrapped
    const char *s = walk->at, *const end = walk->end;
    uint64_t value = 0;
    while (s < end && *s >= '0' && *s <= '9')
        value = 10 * value + static_cast<uint64_t>(*s++ - '0');
    const int64_t digits = s - walk->at;
    if (digits == 0 || (s < end && *s != '\n' && !is_walk_blank(*s))) return false;
    if (digits > MOST_DIGITS) return false;
    walk->at = s;
    *number = static_cast<int64_t>(value);
    return true;
}

/* The characters up to a blank or the end of the line; may be none. */
inline std::string_view take_text(Walk *walk)
{
    const char *const begin = walk->at;
    while (walk->at < walk->end && *walk->at != '\n' && !is_walk_blank(*walk->at)) walk->at++;
    return {begin, static_cast<size_t>(walk->at - begin)};
}

/* What stands here, as a message shows it: shortened, in quotes; "the line ends" for nothing. */
std::string shown_here(const Walk &walk);

/* A text as a message shows it: shortened, unprintable characters as dots, in quotes. */
std::string shown_text(std::string_view text);

/* In small letters. */
std::string small_letters(std::string_view text);

#endif
