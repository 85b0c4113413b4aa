/* SPDX-License-Identifier: MIT */
/* zorpelx/report/account.h: everything that a report tells. The page, the pictures and the JSON
 * answer are all made from this record, so they say the same. */
#ifndef ZORPELX_REPORT_ACCOUNT_H
#define ZORPELX_REPORT_ACCOUNT_H

#include <string>
#include <vector>

#include "likeness.h"
#include "contents.h"
#include "facts.h"
#include "figures.h"
#include "kinds.h"
#include "layout.h"
#include "sketch.h"

constexpr size_t MOST_ROWS = 256;   // parts in a table
constexpr size_t MOST_BARS = 64;    // parts in a picture of bars, and in the graph of parts
constexpr size_t MOST_SQUARES = 32; // parts in a matrix
constexpr size_t MOST_GROUPS = 6;   // of the contents of a part
constexpr size_t MOST_CHANGED = 10; // hyperedges in a comparison

/* What every part may weigh, where that is known; otherwise the arrays are empty. */
struct Allowed {
    std::vector<int64_t> least, most; // [nparts]
    double epsilon;
};

/* A better partition was found: when, how good, and by which step. */
struct Improvement {
    double seconds;
    int64_t objective;
    std::string step;
};

/* Of a run. */
struct History {
    std::string name;      // of its file; empty if none was given
    std::string objective; // "cut", "km1", "soed"
    std::vector<Improvement> improvements;
    double seconds; // of all
};

/* The main partition is the first; the others are compared with it.
 *   C1  figures has an entry for each partition, agreements for each but the first
 *   C2  places has an entry for each point of the sketch, then one for each hub: the hyperedges of
 *       the sketch with more than two points, in their order */
struct Account {
    std::string name;    // of the hypergraph
    std::string version; // of the program
    int64_t first;       // number of the first vertex
    const Hypergraph *graph;
    std::vector<NamedPartition> divisions;
    std::vector<Figures> figures;
    Facts facts;
    Allowed allowed;
    Origin origin;
    std::vector<PartContents> kinds, prefixes; // [nparts], or empty
    Words words;                               // of a matrix
    SharedVariables variables;                 // of a formula
    History history;
    std::vector<Likeness> agreements;
    Sketch sketch;
    std::vector<Spot> places;
};

/* Picture of the hypergraph: what lay_out() is given. */
constexpr double DRAWING_WIDTH = 700, DRAWING_HEIGHT = 520;

/* Counts everything but the history and what is allowed, which stay empty.
 *   graph      must stay as long as the account
 *   divisions  at least one
 *   ncostly    most hyperedges in the list of costly ones */
Account account_of(const Hypergraph &graph, std::vector<NamedPartition> divisions, size_t ncostly);

/* At most so many parts, the heaviest, by rising number. */
std::vector<int64_t> shown_parts(const Figures &figures, size_t most);

/* "/parts/3/weight": where the JSON answer has a figure of a list. */
std::string pointer_to(const char *list, int64_t index, const char *field);

#endif
