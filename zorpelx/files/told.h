/* SPDX-License-Identifier: MIT */
/* zorpelx/files/told.h: places and words of what readers tell. */
#ifndef ZORPELX_FILES_TOLD_H
#define ZORPELX_FILES_TOLD_H

#include <cstdint>
#include <string>
#include <string_view>

#include "builder.h" // tell_note, tell_warning

/* Line and column of a character of a text. It counts the lines before: for messages only. */
Place place_of(std::string_view text, const char *at);

/* "1 net", "2 nets" */
inline std::string counted(int64_t count, const char *one, const char *several)
{
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

/* "a, b, c", with "and N more" where there are too many. */
template <class Show> std::string listed(size_t count, const Show &show)
{
    constexpr size_t MOST = 5;
    std::string text;
    for (size_t i = 0; i < count && i < MOST; i++) text += (i == 0 ? "" : ", ") + show(i);
    return count > MOST ? text + " and " + std::to_string(count - MOST) + " more" : text;
}

#endif
