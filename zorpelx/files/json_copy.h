/* SPDX-License-Identifier: MIT */
/* zorpelx/files/json_copy.h: JSON text copied as it is, but for attributes that are put in.
 *
 * The scan goes over the text; what it has passed is copied when something is to be put in behind
 * it. Attributes are the members of an object in an object, {"attributes": {...}}.
 */
#ifndef ZORPELX_FILES_JSON_COPY_H
#define ZORPELX_FILES_JSON_COPY_H

#include <span>
#include <string>

#include "json_scan.h"

/*   K1  all before `copied` is in the text, which is at or before json.next */
struct JsonCopy {
    JsonScan json;
    const char *copied;
    std::string text;
};

JsonCopy copy_over(std::string_view bytes, Budget *budget);

/* Copies what has been passed up to `end`. */
void copy_to(JsonCopy *copy, const char *end);

/* Passes the object that comes next and puts an attribute into it.
 *   member     name of the member that has the attributes; made if the object lacks it
 *   attribute  "\"key\": value"
 *   own        attributes of these names go */
void copy_with_attribute(JsonCopy *copy, std::string_view member, const std::string &attribute,
                         std::span<const std::string_view> own);

#endif
