/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/trim.h: a hypergraph without the hyperedges that no partition can cut. */
#ifndef ZORPELX_LIB_TRIM_H
#define ZORPELX_LIB_TRIM_H

#include <optional>
#include <vector>

#include "watch.h"

/* Stands for a hypergraph whose hyperedges have two vertices or more: the caller's own arrays if
 * they all do, else copies. */
class Trimmed
{
  public:
    Trimmed(const zorpelx_hypergraph &hypergraph, Watch &watch);
    Trimmed(const Trimmed &) = delete;
    Trimmed &operator=(const Trimmed &) = delete;

    const zorpelx_hypergraph &hypergraph() const { return view; }
    int dropped() const { return ndropped; }

  private:
    void copy(const zorpelx_hypergraph &hypergraph, Watch &watch);

    std::optional<Charge> charge;
    std::vector<int> eptr, eind, hewgts;
    zorpelx_hypergraph view;
    int ndropped = 0;
};

#endif
