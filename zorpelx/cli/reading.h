/* zorpelx/cli/reading.h: what the reader of hypergraph files carries from line to line. */
#ifndef ZORPELX_CLI_READING_H
#define ZORPELX_CLI_READING_H

#include <cstdint>
#include <vector>

#include "hypergraph.h"

/* What the reading of one file carries along. */
struct Scan {
    Text text;
    Reading reading;
    Findings *findings;
    int64_t code;
    std::vector<int64_t> last; // last hyperedge that listed each vertex
    int64_t room;              // vertex entries that zorpel's first pass counts
    int64_t largest;           // vertex number met
    Place zero;                // first vertex number 0
    Place header;
    Place tight;                 // first hyperedge that takes more room than counted
    std::vector<Place> netplace; // where each hyperedge begins
    std::vector<Place> wgtplace; // and each vertex weight, if there are any
    int64_t crlf;                // first line that ends so, or 0
};

/* Adds what shows once all is read: sums, vertices in no hyperedge, hyperedges that are alike. */
void check_whole(Scan *scan, const Hypergraph &graph);

#endif
