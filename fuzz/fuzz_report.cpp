// SPDX-License-Identifier: MIT
/* fuzz/fuzz_report.cpp: any bytes as a report, held against a small partition. The first byte chooses:
 * the bytes as they are, or put over the report that is right at a place that the second tells. */
#include <string>

#include "hook.h"
#include "report.h"

static const Hypergraph GRAPH = {6,
                                 4,
                                 true,
                                 true,
                                 {0, 3, 5, 7, 9},
                                 {0, 1, 2, 2, 3, 3, 4, 4, 5},
                                 {1, 2, 3, 4},
                                 {1, 0, 2, 1, 3, 1}};
static const std::vector<int64_t> PART = {0, 0, 1, 1, 2, 2};
constexpr int64_t NPARTS = 3;

/* A report of which nothing is wrong. */
static std::string right_report()
{
    const std::string stars(79, '*');
    return stars + "\n ZORPEL 1.0.0  Copyright (c) 2026 the ZORPEL authors\n\n" +
           "HyperGraph Information -----------------------------------------------------\n"
           " Name: g, #Vtxs:     6, #Hedges:     4, #Parts: 3, UBfactor: 0.05\n"
           " Options: HFC, FM, Reconst-False, No V-cycles, No Fixed Vertices\n\n"
           "Recursive Partitioning... --------------------------------------------------\n" +
           tool_statistics(GRAPH, PART, NPARTS) +
           "\n\nTiming Information ---------------------------------------------------------"
           "\n  Partitioning Time:\t\t   0.000sec\n           I/O Time:\t\t   0.000sec\n" +
           stars + "\n";
}

static std::string fault(const std::string &report)
{
    return fault_of_report(report, {GRAPH, PART, NPARTS, false, 5});
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    static const std::string right = right_report();
    if (!fault(right).empty()) fuzz_finding("the right report is called wrong");
    if (size < 3) return 0;
    std::string text(reinterpret_cast<const char *>(bytes) + 3, size - 3);
    if (bytes[0] % 2 == 1) {
        const size_t place = (bytes[1] * size_t{256} + bytes[2]) % right.size();
        text = right.substr(0, place) + text +
               (place + text.size() < right.size() ? right.substr(place + text.size()) : "");
    }
    if (parts_in_report(text) > INT32_MAX) return 0;
    const std::string found = fault(text);
    if (found.empty() && text.find(tool_statistics(GRAPH, PART, NPARTS)) == std::string::npos)
        fuzz_finding("a report without its figures is called right");
    return 0;
}
