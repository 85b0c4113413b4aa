// SPDX-License-Identifier: MIT
/* fuzz/fuzz_netlists.cpp: any bytes as a file of any format but zorpel's own, or as a table of
 * areas; the first byte tells which, and by which model. N1  what is read keeps the invariants of
 * the record, and the budget is never passed N2  a record written as HIF is read as the same N3
 * parts put into a Yosys netlist leave one that is read as the same, and putting them in again
 * changes nothing N4  a record written as JSON lines is read as the same, and as a table with as
 * many of everything N5  a matrix with its parts is read as a matrix of as many nonzeros N6  every
 * format that takes parts takes them for what it reads */
#include <cstring>
#include <fstream>
#include <sstream>

#include "areas.h"
#include "annotate_yosys.h"
#include "fileerror.h"
#include "formats.h"
#include "hook.h"
#include "read_hif.h"
#include "write_hif.h"
#include "write_jsonl.h"
#include "write_mtx.h"
#include "write_table.h"

constexpr size_t CAP = size_t{1} << 24;

static Hypergraph read_as(const char *format, std::string_view text, const std::string &model = "",
                          const std::string &path = "")
{
    Findings findings;
    Budget budget = make_budget("input", CAP, 0, 0);
    Reading reading = {LINES_WHOLE, 1, false};
    reading.model = model;
    reading.path = path;
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

/* Names that one format takes for nothing, or for numbers, are out of the round trip. */
static void check_members(const Hypergraph &graph)
{
    if (!comes_back(graph)) return;
    Budget budget = make_budget("output", CAP, 0, 0);
    const std::string lines = write_jsonl(graph, &budget);
    if (is_utf8(lines) && graph.nvertices + graph.nnets > 0 &&
        !are_same(read_as("jsonl", lines), graph))
        fuzz_finding("JSON lines come back as something else");
    const Hypergraph table = read_as("csv", write_csv(graph, &budget));
    if (table.nnets != graph.nnets || table.pins.size() != graph.pins.size() ||
        table.nvertices != graph.nvertices)
        fuzz_finding("a table comes back as something else");
}

static void check_matrix(const Hypergraph &graph, std::string_view text)
{
    Budget budget = make_budget("parts", CAP, 0, 0);
    std::vector<int64_t> part;
    for (int64_t v = 0; v < graph.nvertices; v++) part.push_back(v % 3);
    const std::vector<WrittenFile> files = annotate_mtx(graph, {part, 3, text, "a"}, &budget);
    const Hypergraph again = read_as("mtx", files[0].text, graph.provenance.model);
    if (again.pins.size() != graph.pins.size()) fuzz_finding("parts change a matrix");
}

/* Parts into every format that needs no original. */
static void check_all_parts(const Hypergraph &graph)
{
    std::vector<int64_t> part;
    for (int64_t v = 0; v < graph.nvertices; v++) part.push_back(v % 3);
    for (const FormatRow &row : format_rows()) {
        Budget budget = make_budget("parts", CAP, 0, 0);
        if (row.annotate != nullptr && !row.needs_own)
            row.annotate(graph, {part, 3, "", "a"}, &budget);
    }
}

/* The files of a Bookshelf benchmark in a folder of the process; the text has them one after
 * another, with a line "%%" between. */
static Hypergraph read_shelf(std::string_view text)
{
    static const std::string *const folder = new std::string(fuzz_folder());
    static const char *const ENDS[] = {"nodes", "nets", "wts", "pl", "scl"};
    for (const char *const end : ENDS) {
        const size_t cut = std::min(text.find("%%\n"), text.size());
        std::ofstream(*folder + "/a." + end) << text.substr(0, cut);
        text.remove_prefix(std::min(cut + 3, text.size()));
    }
    return read_as("bookshelf", "RowBasedPlacement : a.nodes a.nets a.wts a.pl a.scl", "",
                   *folder + "/a.aux");
}

/* The format and, if it has models, one of them. */
static Hypergraph read_chosen(const char *format, size_t choice, std::string_view text)
{
    std::istringstream models(find_format(format)->models);
    std::vector<std::string> names;
    for (std::string name; models >> name;) names.push_back(name);
    const char *const path = strcmp(format, "cnf") == 0 ? "input.wcnf" : ""; // a header may lack
    return read_as(format, text, names.empty() ? "" : names[choice % names.size()], path);
}

static void check(uint8_t which, std::string_view text)
{
    static const char *const FORMATS[] = {"yosys", "blif", "hif",   "areas", "mtx",      "cnf",
                                          "csv",   "tsv",  "jsonl", "edges", "bookshelf"};
    const std::string_view format = FORMATS[which % std::size(FORMATS)];
    if (format == "areas") {
        Budget budget = make_budget("areas", CAP, 0, 0);
        read_areas(text, &budget);
        return;
    }
    const Hypergraph graph = format == "bookshelf"
                                 ? read_shelf(text)
                                 : read_chosen(format.data(), which / std::size(FORMATS), text);
    check_hif(graph);
    check_members(graph);
    check_all_parts(graph);
    if (format == "yosys") check_parts(graph, text);
    if (format == "mtx") check_matrix(graph, text);
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
