/* SPDX-License-Identifier: MIT */
/* zorpelx/files/read_hgr.h: the reader of hypergraph files.
 *
 * It follows the rules of zorpel's own but shares nothing with it: it counts in 64 bits, goes on
 * after an error to find the others, and knows the place of all it reads.
 */
#ifndef ZORPELX_FILES_READ_HGR_H
#define ZORPELX_FILES_READ_HGR_H

#include <string>
#include <string_view>

#include "budget.h"
#include "hypergraph.h"
#include "rules.h"
#include "scan.h"

/* How a file is to be read. The first two are of hypergraph files, all from path on of other
 * formats. */
struct Reading {
    LineMode lines;
    int64_t first;              // number of the first vertex: 1, or 0 for files numbered from 0
    bool notes;                 // look for what is only worth a note, too
    bool few = false;           // fewer than two vertices are no error: nothing is partitioned
    std::string path = {};      // as it was given, for files that name others; "-" for a stream
    std::string model = {};     // one of the format's models; empty: its first
    std::string skip_nets = {}; // patterns of hyperedges left out, separated by commas
    std::string top = {};       // module of a netlist that is partitioned; empty: the top one
    std::string areas = {};     // file with the area of each kind; empty: every vertex weighs 1
};

/* Reads as much as can be made sense of; what is wrong is added to findings. The record keeps H1
 * and H2 whatever the file holds: vertices and lines that cannot be are left out.
 * Cost    O(bytes), and O(vertices) if the file is long enough to mention them
 * Errors  FileError past the budget */
Hypergraph scan_hypergraph(std::string_view bytes, Reading reading, Findings *findings,
                           Budget *budget);

/* What the program zorpel makes of a file. */
enum Judgement { JUDGED_READ, JUDGED_REFUSED, JUDGED_UNKNOWN };

/* From the findings of a reading, or from a further one where zorpel reads the file in another way
 * than this reading. Unknown where reading ended before its end. */
Judgement judge(std::string_view bytes, Reading reading, const Findings &findings, Budget *budget);

#endif
