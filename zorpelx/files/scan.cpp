// SPDX-License-Identifier: MIT
/* zorpelx/files/scan.cpp: lines and tokens of a text, with their places. */
#include "scan.h"

#include <climits>
#include <cstring>

Text text_over(std::string_view bytes, bool pieces)
{
    return {bytes.data(), static_cast<int64_t>(bytes.size()), 0, 0, 1, pieces};
}

bool at_end(const Text &text)
{
    return text.place == text.size;
}

Line take_line(Text *text)
{
    const char *const begin = text->bytes + text->place;
    int64_t most = text->size - text->place;
    if (text->pieces && most > PIECE) most = PIECE;
    const void *const newline = memchr(begin, '\n', static_cast<size_t>(most));
    const char *const end =
        newline != nullptr ? static_cast<const char *>(newline) + 1 : begin + most;
    if (text->column == 1) text->number++;
    const Line line = {begin, begin, end, text->number, text->column};
    text->place += end - begin;
    text->column = newline != nullptr ? 1 : text->column + (end - begin);
    return line;
}

bool is_comment(const Line &line)
{
    return line.begin < line.end && *line.begin == '%';
}

bool is_long(const Line &line)
{
    return line.end - line.begin > PIECE;
}

/* White space of the C locale. */
static bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_blank(const Line &line)
{
    for (const char *s = line.begin; s < line.end; s++)
        if (!is_space(*s)) return false;
    return true;
}

/* The number whose digits begin at s, held at the largest that 64 bits keep with either sign. */
static const char *take_digits(const char *s, const char *end, int64_t *value)
{
    for (*value = 0; s < end && is_digit(*s); s++) {
        const int digit = *s - '0';
        *value = *value > (INT64_MAX - digit) / 10 ? INT64_MAX : 10 * *value + digit;
    }
    return s;
}

Token take_token(Line *line)
{
    const char *s = line->next, *const end = line->end;
    Token token = {TOKEN_END, 0, true, {line->number, line->column + (s - line->begin)}, s, s};
    while (s < end && is_space(*s)) s++;
    if (s < end) {
        token.place.column += s - token.begin;
        token.begin = s;
        const bool sign = *s == '+' || *s == '-', negative = *s == '-';
        const char *const digits = sign ? s + 1 : s;
        if (digits < end && is_digit(*digits)) {
            token.kind = TOKEN_NUMBER;
            s = take_digits(digits, end, &token.value);
            if (negative) token.value = -token.value;
            token.fits = token.value >= INT_MIN && token.value <= INT_MAX;
        } else {
            token.kind = TOKEN_RUBBISH;
            while (s < end && !is_space(*s)) s++;
        }
    }
    token.end = line->next = s;
    return token;
}

Token take_word(Line *line)
{
    const char *s = line->next, *const end = line->end;
    while (s < end && is_space(*s)) s++;
    Token token = {TOKEN_END, 0, true, {line->number, line->column + (s - line->begin)}, s, s};
    if (s < end) token.kind = TOKEN_RUBBISH;
    while (s < end && !is_space(*s)) s++;
    token.end = line->next = s;
    return token;
}

std::string_view text_of_token(const Token &token)
{
    return {token.begin, static_cast<size_t>(token.end - token.begin)};
}

static std::string printable(const char *begin, const char *end)
{
    constexpr int64_t MOST = 24;
    std::string text;
    for (const char *s = begin; s < end && s < begin + MOST; s++)
        text += *s >= ' ' && *s <= '~' ? *s : '.';
    if (end - begin > MOST) text += "...";
    return text;
}

std::string shown(const Token &token)
{
    return printable(token.begin, token.end);
}

std::string shown_word(const Line &line, const Token &token)
{
    const char *begin = token.begin;
    while (begin > line.begin && !is_space(begin[-1])) begin--;
    return printable(begin, token.end);
}
