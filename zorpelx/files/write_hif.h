/* zorpelx/files/write_hif.h: the writer of the Hypergraph Interchange Format. */
#ifndef ZORPELX_FILES_WRITE_HIF_H
#define ZORPELX_FILES_WRITE_HIF_H

#include "formats.h"

/* Every node and edge is listed, with its weight if there are weights. Names that look like whole
 * numbers are written as numbers; without names, numbers from 1. */
std::string write_hif(const Hypergraph &graph, Budget *budget);

/* The same, with the part of each node as its attribute "zorpel_part". */
std::vector<WrittenFile> annotate_hif(const Hypergraph &graph, const Annotation &annotation,
                                      Budget *budget);

#endif
