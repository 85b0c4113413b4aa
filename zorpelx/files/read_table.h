/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_table.h: the reader of tables of memberships, as CSV or TSV.
 *
 * A row names a hyperedge and a vertex in it. Without a header these are the first two columns, and
 * a third is the weight of the hyperedge. A header is recognised by the names of its columns, or as
 * a first row of words above numbers; columns with names that are not known are left out, and that
 * is told. A row with an empty hyperedge is a vertex by itself, one with an empty vertex a
 * hyperedge.
 */
#ifndef ZORPELX_FILES_READ_TABLE_H
#define ZORPELX_FILES_READ_TABLE_H

#include "formats.h"

Recognised recognise_csv(std::string_view bytes);
Recognised recognise_tsv(std::string_view bytes);

/* Quotes as of RFC 4180; the separator is the most frequent of , ; | and tab in the first line.
 * Blanks around a field without quotes do not count. */
Hypergraph read_csv(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget);

/* The same, separated by tabs. */
Hypergraph read_tsv(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget);

#endif
