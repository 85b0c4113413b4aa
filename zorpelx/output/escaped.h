/* SPDX-License-Identifier: MIT */
/* zorpelx/output/escaped.h: names as messages show them. */
#ifndef ZORPELX_OUTPUT_ESCAPED_H
#define ZORPELX_OUTPUT_ESCAPED_H

#include <string>
#include <string_view>

/* Text that a terminal shows as it stands: what could move the cursor, change colours, turn the
 * direction of writing or forge a line is shown as \n, \t or \x1b, byte by byte; so is what is no
 * UTF-8. Other text, letters of any language included, stays. Applied twice, it changes nothing
 * more.
 *   keep  characters that stay even so
 */
std::string escaped(std::string_view text, std::string_view keep = "");

#endif
