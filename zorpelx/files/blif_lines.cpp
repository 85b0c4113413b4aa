// SPDX-License-Identifier: MIT
/* zorpelx/files/blif_lines.cpp: the lines of a BLIF file. */
#include "blif_lines.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "told.h"

BlifLines blif_lines_over(std::string_view text, Budget *budget)
{
    constexpr std::string_view MARK = "\xef\xbb\xbf";
    const size_t begin = text.substr(0, MARK.size()) == MARK ? MARK.size() : 0;
    return {text, text.data() + begin, text.data() + text.size(), text.data(), {}, budget};
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

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

/* Where the next line begins if s is at a backslash that ends its line; otherwise s. */
static const char *joined_line(const char *s, const char *end)
{
    const char *after = s + 1;
    while (after < end && is_blank(*after)) after++;
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
    while (s < end && !is_blank(*s) && *s != '\n' && *s != '#' &&
           (*s != '\\' || joined_line(s, end) == s))
        s++;
    push_charged(lines->budget, &lines->words,
                 std::string_view(begin, static_cast<size_t>(s - begin)));
    return s;
}

/* Takes the words up to the end of the line; returns where the next one begins. */
static const char *take_line_words(BlifLines *lines, const char *s)
{
    const char *const end = lines->end;
    while (s < end) {
        if (*s == '\n') return s + 1;
        if (is_blank(*s)) {
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

bool take_words(BlifLines *lines)
{
    lines->words.clear();
    while (lines->next < lines->end && lines->words.empty()) {
        look_at_clock(lines, lines->next);
        lines->next = take_line_words(lines, lines->next);
    }
    return !lines->words.empty();
}
