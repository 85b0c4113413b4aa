// SPDX-License-Identifier: MIT
/* zorpelx/report/markup.cpp: text and numbers as HTML and SVG show them. */
#include "markup.h"

#include <cmath>

#include "entities.h"
#include "escaped.h"
#include "fileerror.h" // text_of

std::string markup(std::string_view text)
{
    std::string out;
    for (const char c : escaped(text)) {
        if (c == '\'')
            out += "&#39;";
        else
            append_markup(c, &out);
    }
    return out;
}

static bool begins_character(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80; // UTF-8
}

std::string short_markup(std::string_view text, size_t most)
{
    if (text.size() <= most) return markup(text);
    size_t head = most * 2 / 5, tail = text.size() - (most - head - 3);
    while (head > 0 && !begins_character(text[head])) head--;
    while (tail < text.size() && !begins_character(text[tail])) tail++;
    return markup(text.substr(0, head)) + "..." + markup(text.substr(tail));
}

std::string grouped(int64_t number)
{
    std::string digits = std::to_string(number);
    const size_t first = number < 0 ? 1 : 0;
    for (size_t i = digits.size(); i > first + 3;) digits.insert(i -= 3, ",");
    return digits;
}

std::string decimal(double number, int decimals)
{
    const std::string text = text_of("%.*f", decimals, number);
    const bool is_zero = text.find_first_not_of("-0.") == std::string::npos;
    return is_zero && text[0] == '-' ? text.substr(1) : text;
}

std::string with_number(int64_t number, const char *one, const char *several)
{
    return grouped(number) + ' ' + (number == 1 ? one : several);
}

std::string length(double number)
{
    const int64_t tenths = std::llround(number * 10);
    const int64_t size = tenths < 0 ? -tenths : tenths;
    return (tenths < 0 ? "-" : "") + std::to_string(size / 10) +
           (size % 10 == 0 ? "" : "." + std::to_string(size % 10));
}
