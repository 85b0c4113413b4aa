// SPDX-License-Identifier: MIT
/* zorpelx/files/blif_lines.cpp: the lines of a BLIF file. */
#include "blif_lines.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "bytes.h"
#include "told.h"

BlifLines blif_lines_over(std::string_view text, Budget *budget)
{
    const char *const begin = without_mark(text).data();
    return {text, begin, text.data() + text.size(), text.data(), {}, {}, {}, 0, false, budget};
}

void blif_error(const BlifLines &lines, const char *at, const char *format, ...)
{
    constexpr size_t LONGEST = 512;
    char text[LONGEST];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    bad_input(*lines.budget, place_of(lines.text, at), "%s", text);
}

static constexpr bool is_blank_in_blif(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

/* [character] whether a word may end there; a backslash says so only at the end of its line. */
struct WordEnds {
    bool may[UCHAR_MAX + 1];
};

static constexpr WordEnds word_ends()
{
    WordEnds ends = {};
    for (int c = 0; c <= UCHAR_MAX; c++) {
        const char letter = static_cast<char>(c);
        ends.may[c] = is_blank_in_blif(letter) || letter == '\n' || letter == '#' || letter == '\\';
    }
    return ends;
}

static bool may_end_word(char c)
{
    static constexpr WordEnds ENDS = word_ends();
    return ENDS.may[static_cast<unsigned char>(c)];
}

/* Where the next line begins if s is at a backslash that ends its line; otherwise s. */
static const char *joined_line(const char *s, const char *end)
{
    const char *after = s + 1;
    while (after < end && is_blank_in_blif(*after)) after++;
    if (after == end) return end;
    return *after == '\n' ? after + 1 : s;
}

static void look_at_clock(BlifLines *lines, const char *s)
{
    constexpr int64_t STRIDE = int64_t{1} << 20;
    if (s < lines->look) return;
    check_time(*lines->budget);
    lines->look = lines->end - s > STRIDE ? s + STRIDE : lines->end;
}

static const char *take_word(BlifLines *lines, const char *s)
{
    const char *const begin = s, *const end = lines->end;
    while (s < end && (!may_end_word(*s) || (*s == '\\' && joined_line(s, end) == s))) s++;
    push_charged(lines->budget, &lines->ahead,
                 std::string_view(begin, static_cast<size_t>(s - begin)));
    return s;
}

/* Takes the words up to the end of the line; returns where the next one begins. */
static const char *take_line_words(BlifLines *lines, const char *s)
{
    const char *const end = lines->end;
    while (s < end) {
        if (*s == '\n') return s + 1;
        if (is_blank_in_blif(*s)) {
            s++;
        } else if (*s == '#') {
            const void *const newline = memchr(s, '\n', static_cast<size_t>(end - s));
            s = newline != nullptr ? static_cast<const char *>(newline) : end;
        } else if (*s == '\\' && joined_line(s, end) != s) {
            s = joined_line(s, end);
        } else {
            s = take_word(lines, s);
        }
    }
    return s;
}

/* Behind the rows of a cover that begin here: lines of at most two words of 0, 1 and -. */
static const char *skip_covers(const char *s, const char *end)
{
    for (const char *line = s; line < end; line = s) {
        int nwords = 0;
        for (bool within = false; s < end && *s != '\n'; s++) {
            const bool row = *s == '0' || *s == '1' || *s == '-';
            if (!row && !is_blank_in_blif(*s)) return line;
            nwords += row && !within;
            within = row;
        }
        if (nwords > 2) return line;
        s += s < end;
    }
    return s;
}

/* Takes one line more apart; it may have no words. */
static void take_line_ahead(BlifLines *lines)
{
    const size_t before = lines->ahead.size();
    look_at_clock(lines, lines->next);
    lines->next = take_line_words(lines, lines->next);
    if (lines->ahead.size() == before) return;
    push_charged(lines->budget, &lines->ends, lines->ahead.size());
    const std::string_view word = lines->ahead[before];
    lines->covers = word == ".names" || word == ".barbuf";
}

static void take_lines_ahead(BlifLines *lines)
{
    constexpr size_t AHEAD = 32;
    lines->ahead.clear();
    lines->ends.clear();
    lines->line = 0;
    while (lines->next < lines->end && lines->ends.size() < AHEAD) {
        if (lines->covers) lines->next = skip_covers(lines->next, lines->end);
        if (lines->next < lines->end) take_line_ahead(lines);
    }
}

bool take_words(BlifLines *lines)
{
    if (lines->line == lines->ends.size()) take_lines_ahead(lines);
    if (lines->ends.empty()) return false;
    const size_t begin = lines->line == 0 ? 0 : lines->ends[lines->line - 1];
    lines->words = BlifWords(lines->ahead).subspan(begin, lines->ends[lines->line] - begin);
    lines->line++;
    return true;
}

bool is_first_ahead(const BlifLines &lines)
{
    return lines.line == 1;
}
