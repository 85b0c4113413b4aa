// SPDX-License-Identifier: MIT
/* zorpelx/files/told.cpp: places and words of what readers tell. */
#include "told.h"

#include <cstring>

Place place_of(std::string_view text, const char *at)
{
    Place place = {1, 1};
    const char *line = text.data();
    while (line < at) {
        const void *const newline = memchr(line, '\n', static_cast<size_t>(at - line));
        if (newline == nullptr) break;
        line = static_cast<const char *>(newline) + 1;
        place.line++;
    }
    place.column = at - line + 1;
    return place;
}
