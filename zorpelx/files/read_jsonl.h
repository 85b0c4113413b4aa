/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_jsonl.h: the reader of memberships as JSON lines.
 *
 * Each line is an object or an array:
 *     {"hyperedge": "clk", "vertex": "u1", "weight": 3}    one membership
 *     {"hyperedge": "clk", "vertices": ["u1", "u2"]}       several
 *     {"items": ["bread", "milk"]}                         a hyperedge with the number of its line
 *     ["clk", "u1", 3]  ["clk", ["u1", "u2"]]              the same by place
 * Keys are those of the columns of tables; others are passed over. A name is a string or a number.
 */
#ifndef ZORPELX_FILES_READ_JSONL_H
#define ZORPELX_FILES_READ_JSONL_H

#include "formats.h"

Recognised recognise_jsonl(std::string_view bytes);
Hypergraph read_jsonl(std::string_view bytes, const Reading &reading, Findings *findings,
                      Budget *budget);

#endif
