// SPDX-License-Identifier: MIT
/* fuzz/fuzz_readers.cpp: any bytes as a hypergraph file, given to all readers at once.
 *   D1  the engine's reader and that of zorpelx/files accept the same files, and read the same
 *   D2  what the reader of zorpelx/files reads without an error, libzorpelx reads as the same for
 *       its callers, C and Python; what it calls an error is refused. Not so what libzorpelx takes
 *       for a file of another format
 *   D3  what it reads without error or warning, the reader of check_partition accepts; and what
 *       both accept without an error, they read as the same
 */
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/hgraph.h"
#include "core/memory.h"
#include "formats.h"
#include "hook.h"
#include "io/read_hgraph.h"
#include "read_hgr.h"
#include "zorpelx_files.h"

struct Refused {
};

/* check_partition shares no code with anything, so its text is taken in, where exit() throws. */
namespace checker
{
[[noreturn]] static void give_up(int)
{
    throw Refused();
}
static void say_nothing(FILE *, const char *, ...)
{
}
#define exit give_up
#define fprintf say_nothing
#define main checker_main
#include "../tests/check_partition.cpp"
#undef exit
#undef fprintf
#undef main
} // namespace checker

using Numbers = std::vector<int64_t>;

static constexpr int64_t MOST_VERTICES = 100000;

template <class List> static void append(Numbers *numbers, const List *list, int64_t count)
{
    for (int64_t i = 0; i < count; i++)
        numbers->push_back(list != nullptr ? static_cast<int64_t>(list[i]) : 1);
}

static Numbers numbers_of(const Hypergraph &graph)
{
    Numbers numbers = {graph.nvertices, graph.nnets};
    append(&numbers, graph.start.data(), graph.nnets + 1);
    append(&numbers, graph.pins.data(), graph.start.back());
    append(&numbers, graph.netwgt.data(), graph.nnets);
    append(&numbers, graph.vertexwgt.data(), graph.nvertices);
    return numbers;
}

/* ---- the engine's reader --------------------------------------------------------------------- */

static Numbers *engine_numbers()
{
    static auto *const numbers = new Numbers;
    return numbers;
}

static void read_by_engine(void *argument)
{
    HGraph *graph = ReadHGraph(static_cast<const char *>(argument));
    Numbers *const numbers = engine_numbers();
    *numbers = {graph->ncells, graph->nnets};
    append(numbers, graph->netptr, int64_t{graph->nnets} + 1);
    append(numbers, graph->netind, graph->netptr[graph->nnets]);
    append(numbers, graph->netwgt, graph->nnets);
    append(numbers, graph->cellwgt, graph->ncells);
    QXfree__(&graph->netptr, &graph->netind, &graph->cellwgt, &graph->netwgt, &graph, LTERM);
}

static void compare_engine(const char *name, std::string_view text)
{
    Findings findings;
    Budget budget = make_budget("text", 0, 0, 0);
    const Hypergraph graph = scan_hypergraph(text, {LINES_PIECES, 1, false}, &findings, &budget);
    const bool refused =
        findings.stops > findings.count[RULE_NEGATIVE_WEIGHT] + findings.count[RULE_SUM];
    if (fuzz_survives(read_by_engine, const_cast<char *>(name)) == refused)
        fuzz_finding("one of the engine and zorpelx refuses the file");
    if (!refused && *engine_numbers() != numbers_of(graph))
        fuzz_finding("the engine and zorpelx read it in two ways");
}

/* ---- the library's reader and the checker's -------------------------------------------------- */

static void compare_library(const char *name, std::string_view text, const Findings &findings,
                            const Hypergraph &graph)
{
    if (strcmp(detect_format(text, name)->name, "hgr") != 0) return;
    zorpelx_file *file = nullptr;
    const int status = zorpelx_read_hypergraph(name, nullptr, &file, nullptr);
    const zorpelx_hypergraph *const read = zorpelx_file_hypergraph(file);
    if ((status == ZORPELX_OK) != (count_errors(findings) == 0))
        fuzz_finding("one of libzorpelx and its reader refuses the file");
    if (read != nullptr) {
        Numbers numbers = {read->nvtxs, read->nhedges};
        append(&numbers, read->eptr, int64_t{read->nhedges} + 1);
        append(&numbers, read->eind, read->eptr[read->nhedges]);
        append(&numbers, read->hewgts, read->nhedges);
        append(&numbers, read->vwgts, read->nvtxs);
        if (numbers != numbers_of(graph)) fuzz_finding("libzorpelx reads it in another way");
    }
    zorpelx_file_free(file);
}

static void compare_checker(const char *name, const Findings &findings, const Hypergraph &graph)
{
    try {
        const checker::Hypergraph read = checker::read_hypergraph(name);
        if (count_errors(findings) > 0) return;
        Numbers numbers = {read.nvertices, read.nnets};
        append(&numbers, read.start.data(), read.nnets + 1);
        append(&numbers, read.pins.data(), static_cast<int64_t>(read.start.back()));
        append(&numbers, read.netwgt.data(), read.nnets);
        append(&numbers, read.vertexwgt.data(), read.nvertices);
        if (numbers != numbers_of(graph)) fuzz_finding("the checker reads it in another way");
    } catch (const Refused &) {
        if (count_errors(findings) + findings.severities[WARNING] == 0)
            fuzz_finding("the checker refuses what zorpelx finds nothing wrong with");
    }
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(bytes), size);
    const char *const name = fuzz_file(0, bytes, size);
    Findings findings;
    Budget budget = make_budget("text", 0, 0, 0);
    const Hypergraph graph = scan_hypergraph(text, {LINES_WHOLE, 1, false}, &findings, &budget);
    if (findings.count[RULE_HOLLOW] > 0 || graph.nvertices > MOST_VERTICES) return 0;
    compare_engine(name, text);
    const bool packed = size > 1 && (bytes[0] == 0x1f || bytes[0] == 0x28 || bytes[0] == 0xfd ||
                                     bytes[0] == 'B'); // perhaps; libzorpelx would expand it
    if (!packed) compare_library(name, text, findings, graph);
    if (graph.nvertices > 0) compare_checker(name, findings, graph);
    return 0;
}
