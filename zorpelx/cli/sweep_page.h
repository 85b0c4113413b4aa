/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/sweep_page.h: a sweep as one page of HTML, and a page for each of its best
 * partitions. */
#ifndef ZORPELX_CLI_SWEEP_PAGE_H
#define ZORPELX_CLI_SWEEP_PAGE_H

#include <string>
#include <vector>

#include "hypergraph.h"
#include "sweep_tables.h"

/* What the page is about. */
struct SweepShown {
    const Settings &settings;
    const Hypergraph &graph;
    const std::vector<SweepCell> &plan;
    const std::vector<SweepResult> &results;
    const std::vector<SweepGroup> &groups;
    std::vector<std::string> reports; // file of the report about the best run of each group, or ""
};

/* The page of the sweep with its two pictures. */
std::string sweep_page(const SweepShown &sweep, const std::vector<Picture> &pictures);

/* The page of report about the best partition of a group.
 *   name  of the partition's file */
std::string best_page(const Settings &settings, const Hypergraph &graph, const SweepGroup &group,
                      const std::vector<int> &part, const std::string &name);

#endif
