/* SPDX-License-Identifier: MIT */
/* zorpelx/report/figures.h: what a partition is worth, counted afresh in 64 bits. */
#ifndef ZORPELX_REPORT_FIGURES_H
#define ZORPELX_REPORT_FIGURES_H

#include <cstdint>
#include <string>
#include <vector>

#include "hypergraph.h"

struct Figures {
    int64_t nparts;
    int64_t cut;             // weight of the hyperedges in several parts
    int64_t ncut;            // their number
    int64_t soed;            // sum of external degrees: weight x parts, over cut hyperedges
    int64_t km1;             // connectivity: weight x (parts - 1)
    long double scaled_cost; // exact to the last digit of a double; infinite if a part weighs
                             // nothing and touches a cut hyperedge
    int64_t whole;           // absorption is whole + fraction, with 0 <= fraction < 1
    long double fraction;
    std::vector<int64_t> weight;   // [nparts]
    std::vector<int64_t> vertices; // [nparts]
    std::vector<int64_t> external; // [nparts] weight of cut hyperedges with a vertex in the part
};

/* part[v] is below nparts for every vertex. */
Figures figures_of(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t nparts);

/* The numbers, from 0, of the hyperedges in several parts. */
std::vector<int64_t> cut_hyperedges(const Hypergraph &graph, const std::vector<int64_t> &part);

/* How many parts hold a vertex of e. */
int64_t parts_of_net(const Hypergraph &graph, const std::vector<int64_t> &part, int64_t e);

/* The heaviest part over the average, less one, in percent; 0 if nothing weighs anything. */
double imbalance_percent(const Figures &figures);

#endif
