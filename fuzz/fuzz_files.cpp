// SPDX-License-Identifier: MIT
/* fuzz/fuzz_files.cpp: any bytes as a hypergraph file of zorpelx, compressed or not, numbered from 0 or
 * 1, with long lines refused, whole or in pieces, within a cap; the first byte chooses. Whatever
 * the bytes are, the record is sound, and what was charged to the budget is within its cap. */
#include "bytes.h"
#include "fileerror.h"
#include "hook.h"
#include "read_hgr.h"
#include "write_hgr.h"

constexpr size_t CAP = size_t{1} << 24;

/* What is written reads back as the same. */
static void check_round(const Hypergraph &graph)
{
    Findings findings;
    Budget budget = make_budget("again", CAP, 0, 0);
    const std::string text = hgr_text(graph);
    const Hypergraph again = scan_hypergraph(text, {LINES_WHOLE, 1, false}, &findings, &budget);
    if (again.pins != graph.pins || again.start != graph.start || again.netwgt != graph.netwgt ||
        again.vertexwgt != graph.vertexwgt)
        fuzz_finding("what is written reads back as something else");
}

static bool empty_net(const Hypergraph &graph)
{
    for (int64_t e = 0; e < graph.nnets; e++)
        if (net_size(graph, e) == 0) return true;
    return false;
}

static void read_and_check(const char *name, Reading reading)
{
    Findings findings;
    Budget budget = make_budget(name, CAP, 0, 0);
    findings.budget = &budget;
    try {
        const Bytes bytes = read_bytes(name, &budget);
        const Hypergraph graph = scan_hypergraph(view_of(bytes), reading, &findings, &budget);
        if (!hypergraph_ok(graph)) fuzz_finding("the record is not sound");
        const bool judged = judge(view_of(bytes), reading, findings, &budget) != JUDGED_READ;
        if (judged && count_errors(findings) == 0 && reading.first == 1 &&
            findings.count[RULE_LONG_LINE] == 0)
            fuzz_finding("refused by zorpel, and without an error");
        if (count_errors(findings) == 0 && !empty_net(graph)) check_round(graph);
    } catch (const FileError &error) {
        if (error.text.find(name) == std::string::npos) fuzz_finding("an error without its file");
    }
    if (budget.used > budget.most) fuzz_finding("more than the cap was charged");
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size == 0) return 0;
    const Reading reading = {static_cast<LineMode>(bytes[0] % 3), bytes[0] / 3 % 2,
                             bytes[0] / 6 % 2 == 0};
    read_and_check(fuzz_file(0, bytes + 1, size - 1), reading);
    return 0;
}
