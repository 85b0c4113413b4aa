/* SPDX-License-Identifier: MIT */
/* zorpelx/report/markup.h: text and numbers as HTML and SVG show them. */
#ifndef ZORPELX_REPORT_MARKUP_H
#define ZORPELX_REPORT_MARKUP_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/* Foreign text: nothing in it is markup any more, in text and in quoted attributes alike; control
 * characters and what is no UTF-8 are shown as messages show them. */
std::string markup(std::string_view text);

/* The same, with the middle left out if it is longer than so many bytes. */
std::string short_markup(std::string_view text, size_t most);

/* "1,234,567" */
std::string grouped(int64_t number);

/* "2.40": so many decimals, never "-0.00". */
std::string decimal(double number, int decimals);

/* "1 vertex", "1,234 vertices" */
std::string with_number(int64_t number, const char *one, const char *several);

/* A length in a picture, in tenths: "12", "12.5". */
std::string length(double number);

#endif
