// SPDX-License-Identifier: MIT
/* zorpelx/output/escaped.cpp: names as messages show them.
 *
 * The text is taken character by character. What a terminal might obey is a control character (of
 * one byte, or of two in UTF-8), or one that changes the direction of writing.
 */
#include "escaped.h"

#include <cstdint>
#include <cstdio>

/* Bytes of the UTF-8 character at the front, 0 if there is none; its number goes to *code. */
static size_t take_character(std::string_view text, uint32_t *code)
{
    constexpr uint32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000}; // by length: shorter ones are fakes
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xc2 && first < 0xe0 ? 2
                          : first >= 0xe0 && first < 0xf0 ? 3
                          : first >= 0xf0 && first < 0xf5 ? 4
                                                          : 0;
    if (length == 0 || length > text.size()) return 0;
    *code = length == 1 ? first : first & (0x7fu >> length);
    for (size_t i = 1; i < length; i++) {
        if ((byte(i) & 0xc0) != 0x80) return 0;
        *code = *code << 6 | (byte(i) & 0x3fu);
    }
    const bool surrogate = *code >= 0xd800 && *code < 0xe000;
    return *code < LEAST[length] || surrogate || *code > 0x10ffff ? 0 : length;
}

static bool is_obeyed(uint32_t code)
{
    const bool control = code < 0x20 || (code >= 0x7f && code < 0xa0);
    const bool line = code == 0x2028 || code == 0x2029;
    const bool direction = code == 0x200e || code == 0x200f || code == 0x61c ||
                           (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
    return control || line || direction;
}

static void append_escape(unsigned char byte, std::string *out)
{
    char escape[8];
    if (byte == '\n' || byte == '\t' || byte == '\r')
        snprintf(escape, sizeof escape, "\\%c", byte == '\n' ? 'n' : byte == '\t' ? 't' : 'r');
    else
        snprintf(escape, sizeof escape, "\\x%02x", byte);
    *out += escape;
}

std::string escaped(std::string_view text, std::string_view keep)
{
    std::string out;
    while (!text.empty()) {
        uint32_t code = 0;
        const size_t length = take_character(text, &code);
        const size_t bytes = length == 0 ? 1 : length;
        if (keep.find(text[0]) != std::string_view::npos || (length > 0 && !is_obeyed(code)))
            out += text.substr(0, bytes);
        else
            for (const char c : text.substr(0, bytes))
                append_escape(static_cast<unsigned char>(c), &out);
        text.remove_prefix(bytes);
    }
    return out;
}
