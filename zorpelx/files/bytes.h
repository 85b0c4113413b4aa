/* SPDX-License-Identifier: MIT */
/* zorpelx/files/bytes.h: a whole file in memory, plain or expanded. */
#ifndef ZORPELX_FILES_BYTES_H
#define ZORPELX_FILES_BYTES_H

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "budget.h"

/* A text that grows at its end. Its room grows by remapping, so that growing holds no copy.
 *   Y1  size <= capacity; the budget is charged with size bytes */
struct Bytes {
    std::unique_ptr<char, decltype(&free)> data = {nullptr, free}; // [capacity]
    size_t size = 0, capacity = 0;
};

/* Makes room for `more` bytes behind the end and returns where; `size` stays. */
char *room_for(Bytes *bytes, size_t more);

/* Takes `more` of the bytes behind the end in, and charges them. */
void take_in(Bytes *bytes, size_t more, Budget *budget);

std::string_view view_of(const Bytes &bytes);

/* Without the byte order mark of UTF-8 that some editors put in front of a text. */
inline std::string_view without_mark(std::string_view text)
{
    constexpr std::string_view MARK = "\xef\xbb\xbf";
    return text.substr(0, MARK.size()) == MARK ? text.substr(MARK.size()) : text;
}

/* The content of a file, expanded. The name "-" is standard input. Gzip, zstd, xz and bzip2 are
 * recognised by the first bytes, not by the name, and may hold several members one after another.
 * Errors  a file that cannot be opened or read: ZORPELX_SYSTEM; damaged or truncated compression:
 *         ZORPELX_BAD_INPUT; past the budget: ZORPELX_NO_MEMORY, _TIMEOUT, _CANCELLED */
Bytes read_bytes(const std::string &name, Budget *budget);

#endif
