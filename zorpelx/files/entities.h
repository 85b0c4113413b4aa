/* SPDX-License-Identifier: MIT */
/* zorpelx/files/entities.h: characters that mean something in XML and HTML. */
#ifndef ZORPELX_FILES_ENTITIES_H
#define ZORPELX_FILES_ENTITIES_H

#include <string>

/* Appends c as text, or as part of a value between double quotes. */
inline void append_markup(char c, std::string *out)
{
    switch (c) {
    case '&':
        *out += "&amp;";
        break;
    case '<':
        *out += "&lt;";
        break;
    case '>':
        *out += "&gt;";
        break;
    case '"':
        *out += "&quot;";
        break;
    default:
        *out += c;
    }
}

#endif
