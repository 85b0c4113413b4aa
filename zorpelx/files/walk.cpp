// SPDX-License-Identifier: MIT
/* zorpelx/files/walk.cpp: what messages show of a text. */
#include "walk.h"

#include <cctype>

std::string shown_text(std::string_view text)
{
    constexpr size_t MOST = 24;
    std::string shown = "'";
    for (const char c : text.substr(0, MOST)) shown += c >= ' ' && c <= '~' ? c : '.';
    return shown + (text.size() > MOST ? "...'" : "'");
}

std::string shown_here(const Walk &walk)
{
    Walk ahead = walk;
    skip_blanks(&ahead);
    const std::string_view text = take_text(&ahead);
    return text.empty() ? "the line ends" : shown_text(text);
}

std::string small_letters(std::string_view text)
{
    std::string small;
    for (const char c : text) small += static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return small;
}
