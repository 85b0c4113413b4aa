/* SPDX-License-Identifier: MIT */
/* zorpelx/files/write_hif.h: the writer of the Hypergraph Interchange Format. */
#ifndef ZORPELX_FILES_WRITE_HIF_H
#define ZORPELX_FILES_WRITE_HIF_H

#include "formats.h"

/* Every node and edge is listed, with its weight if there are weights. Names that look like whole
 * numbers are written as numbers; without names, numbers from 1. */
std::string write_hif(const Hypergraph &graph, Budget *budget);

/* The same with the part of each node as its attribute "zorpel_part", unless part is null. */
std::string hif_text(const Hypergraph &graph, const std::vector<int64_t> *part, Budget *budget);

/* The file that the hypergraph was read from with that attribute, everything else in it as it was;
 * hif_text() if it was of another format. */
std::vector<WrittenFile> annotate_hif(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);

/* A name as the JSON value that the reader makes it from. */
void add_hif_id(std::string *text, const std::string &name, Budget *budget);

#endif
