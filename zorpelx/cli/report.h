/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/report.h: what zorpel prints about a partition, rebuilt from the files. */
#ifndef ZORPELX_CLI_REPORT_H
#define ZORPELX_CLI_REPORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "hypergraph.h"

/* What a report is held against. */
struct ReportFacts {
    const Hypergraph &graph;
    const std::vector<int64_t> &part;
    int64_t nparts;
    bool fixed;   // there was a fix file
    int ubfactor; // percent; 0: not known
};

/* Where a report is not what zorpel prints, in a sentence; empty if it is. Every byte counts but
 * those that the files cannot tell: version, name, options, traces and times have only to look as
 * they should. */
std::string fault_of_report(const std::string &report, const ReportFacts &facts);

/* The number of parts in a report's statistics; 0 if it has none. */
int64_t parts_in_report(const std::string &report);

/* The statistics that zorpel prints for this partition, byte for byte: sums in single precision,
 * rounded at every addition as zorpel rounds them. */
std::string tool_statistics(const Hypergraph &graph, const std::vector<int64_t> &part,
                            int64_t nparts);

#endif
