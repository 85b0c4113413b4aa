/* fuzz/fuzz_netlists.cpp: any bytes as a netlist, an HIF file or a table of areas; the first byte
 * tells which.
 *   N1  what is read keeps the invariants of the record, and the budget is never passed
 *   N2  a record written as HIF is read as the same
 *   N3  parts put into a Yosys netlist leave one that is read as the same, and putting them in
 *       again changes nothing */
#include "areas.h"
#include "annotate_yosys.h"
#include "fileerror.h"
#include "formats.h"
#include "hook.h"
#include "read_hif.h"
#include "write_hif.h"

constexpr size_t CAP = size_t{1} << 24;

static Hypergraph read_as(const char *format, std::string_view text)
{
    Findings findings;
    Budget budget = make_budget("input", CAP, 0, 0);
    const Reading reading = {LINES_WHOLE, 1, false};
    Hypergraph graph = read_any(text, find_format(format), reading, &findings, &budget);
    if (budget.used > CAP) fuzz_finding("more than the budget");
    if (!hypergraph_ok(graph)) fuzz_finding("a broken record");
    return graph;
}

static bool are_same(const Hypergraph &a, const Hypergraph &b)
{
    return a.nvertices == b.nvertices && a.nnets == b.nnets && a.start == b.start &&
           a.pins == b.pins && a.vertexwgt == b.vertexwgt && a.netwgt == b.netwgt &&
           a.fixed == b.fixed && a.group == b.group;
}

/* Names that are alike in HIF, and weights beyond 32 bits, come back otherwise. */
static bool comes_back(const Hypergraph &graph)
{
    Budget budget = make_budget("names", CAP, 0, 0);
    Interner vertices, nets;
    for (int64_t v = 0; v < graph.nvertices; v++)
        if (intern(&vertices, vertex_label(graph, v, 1), &budget) != v) return false;
    for (int64_t e = 0; e < graph.nnets; e++)
        if (intern(&nets, net_label(graph, e), &budget) != e) return false;
    for (const auto *const weights : {&graph.vertexwgt, &graph.netwgt}) {
        int64_t left = INT32_MAX - 1;
        for (const int64_t weight : *weights)
            left = weight < 0 || weight > left ? -1 : left - weight;
        if (left < 0) return false;
    }
    return true;
}

static bool is_utf8(const std::string &text)
{
    return text.find("\\ufffd") == std::string::npos;
}

static void check_hif(const Hypergraph &graph)
{
    if (!comes_back(graph)) return;
    Budget budget = make_budget("output", CAP, 0, 0);
    const std::string text = write_hif(graph, &budget);
    if (is_utf8(text) && !are_same(read_as("hif", text), graph))
        fuzz_finding("HIF comes back as something else");
}

static void check_parts(const Hypergraph &graph, std::string_view text)
{
    Budget budget = make_budget("parts", CAP, 0, 0);
    std::vector<int64_t> part;
    for (int64_t v = 0; v < graph.nvertices; v++) part.push_back(v % 3);
    const std::string once = annotate_yosys(graph, {part, 3, text, "a"}, &budget)[0].text;
    if (!are_same(read_as("yosys", once), graph)) fuzz_finding("parts change a netlist");
    const std::string twice = annotate_yosys(graph, {part, 3, once, "a"}, &budget)[0].text;
    if (once != twice) fuzz_finding("parts put in twice");
}

static void check(uint8_t which, std::string_view text)
{
    static const char *const FORMATS[] = {"yosys", "blif", "hif"};
    constexpr uint8_t AREAS = 3, KINDS = 4;
    if (which % KINDS == AREAS) {
        Budget budget = make_budget("areas", CAP, 0, 0);
        read_areas(text, &budget);
        return;
    }
    const Hypergraph graph = read_as(FORMATS[which % KINDS], text);
    check_hif(graph);
    if (which % KINDS == 0) check_parts(graph, text);
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 1) return 0;
    try {
        check(bytes[0], {reinterpret_cast<const char *>(bytes) + 1, size - 1});
    } catch (const FileError &) {
        return 0;
    }
    return 0;
}
