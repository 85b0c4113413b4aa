/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_hif.h: the Hypergraph Interchange Format, in JSON.
 *
 * What its schema refuses is refused. Numbers and strings are different names: a string that looks
 * like a whole number, or begins with a quote, is called by its JSON text, quotes included.
 */
#ifndef ZORPELX_FILES_READ_HIF_H
#define ZORPELX_FILES_READ_HIF_H

#include "formats.h"
#include "json_scan.h"

Recognised recognise_hif(std::string_view bytes);

Hypergraph read_hif(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget);

/* The name of a node or an edge, which is a string or a whole number; in the text or in scratch. */
std::string_view take_hif_id(JsonScan *json, std::string *scratch);

/* "12" or "-3", but not "-0" or "012". */
bool looks_whole(std::string_view text);

/* Attributes by which the writer keeps what the format itself has no place for, and the reader
 * finds it again. */
constexpr std::string_view HIF_KIND = "zorpel_kind", HIF_FIXED = "zorpel_fixed",
                           HIF_GROUP = "zorpel_group", HIF_PART = "zorpel_part";

#endif
