// SPDX-License-Identifier: MIT
/* io/read_hgraph.cpp: the hypergraph file.
 *
 * A first pass counts the vertex entries so that the second may fill arrays of the final size. A
 * mark per vertex (the last hyperedge that listed it) drops repeated vertices in constant time.
 * The list of a hyperedge ends at the first number that is not positive, or not a number.
 */
#include "io/read_hgraph.h"

#include <cassert>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "core/errors.h"
#include "core/memory.h"
#include "io/textfile.h"

static const char *const OPEN_TEXT = "Can't open input file";

struct Header {
    int nnets;
    int ncells;
    bool netweights;
    bool cellweights;
};

static void check_line_length(TextLine line)
{
    if (line.end - line.next == LINE_BUFFER) errexit__("\nBuffer for fgets not big enough!\n");
}

static Header read_header(TextFile *file)
{
    TextLine line = {nullptr, nullptr};
    do {
        if (at_end(file)) errexit__("Header line missing from the input file!\n");
        line = next_line(file);
    } while (is_comment(line));
    Header header = {0, 0, false, false};
    int code = 0;
    if (!take_int(&line, &header.nnets) || !take_int(&line, &header.ncells))
        errexit__("The header needs the number of hyperedges and the number of vertices!\n");
    if (!take_int(&line, &code)) code = 0;
    if (header.ncells < 2) errexit__("Cannot partition graph with %d cells\n", header.ncells);
    if (code > 99) errexit__("Cannot read this type of file format!");
    if (header.nnets < 0) errexit__("Cannot partition graph with %d hyperedges\n", header.nnets);
    header.netweights = code % 10 > 0;
    header.cellweights = code / 10 % 10 > 0;
    return header;
}

/* The line of hyperedge e, comments skipped. */
static TextLine hyperedge_line(TextFile *file, int e)
{
    TextLine line;
    do {
        if (at_end(file)) errexit__("Data about hyperedge %d missing from the input file!\n", e);
        line = next_line(file);
    } while (is_comment(line));
    check_line_length(line);
    return line;
}

/* First pass. A weight that is not positive hides the entries behind it: the count may be short,
 * even negative. */
static int count_entries(TextFile *file, const Header *header)
{
    long long total = 0;
    for (int e = 0; e < header->nnets; e++) {
        TextLine line = hyperedge_line(file, e);
        while (int_or_zero(&line) > 0) total++;
        if (header->netweights) total--;
    }
    if (total > INT_MAX) errexit__("Too many vertex entries for 32 bits in the input file!\n");
    return total < INT_MIN ? INT_MIN : static_cast<int>(total);
}

int GetNetListSize(const char *name)
{
    TextFile file = read_text_file(name, OPEN_TEXT);
    const Header header = read_header(&file);
    const int total = count_entries(&file, &header);
    free_text_file(&file);
    return total;
}

/* Arrays being filled by the second pass. */
struct Gathering {
    int *netptr; // [nnets + 1]
    int *netind; // [capacity]
    int *netwgt; // [nnets] or null
    int *last;   // [ncells] last hyperedge that listed each vertex, -1 at first
    int capacity;
    int used;
};

/* Appends the vertices of hyperedge e. */
static void read_pins(TextLine *line, const Header *header, int e, Gathering *lists)
{
    assert(lists->used >= 0 && lists->netptr[e] == lists->used);
    for (int number; (number = int_or_zero(line)) > 0;) {
        const int v = number - 1;
        if (v >= header->ncells)
            errexit__("Mismatch between the provided and actual value of num_cells\n");
        if (lists->last[v] == e) continue;
        lists->last[v] = e;
        if (lists->used >= lists->capacity) errexit__("Out of netind memory!");
        lists->netind[lists->used++] = v;
    }
}

/* Second pass. The emptiness test looks back one hyperedge, so the last one is never tested: kept
 * on purpose, an empty last line is accepted. */
static void read_hyperedges(TextFile *file, const Header *header, Gathering *lists)
{
    for (int e = 0; e < header->nnets; e++) {
        TextLine line = hyperedge_line(file, e);
        lists->netptr[e] = lists->used;
        if (header->netweights) lists->netwgt[e] = int_or_zero(&line);
        read_pins(&line, header, e, lists);
        if (e > 0 && lists->netptr[e] == lists->netptr[e - 1])
            errexit__("Empty Hyperedge # %d\n", e);
    }
    lists->netptr[header->nnets] = lists->used;
}

static void read_cell_weights(TextFile *file, int ncells, int *cellwgt)
{
    for (int v = 0; v < ncells;) {
        if (at_end(file))
            errexit__("Weights from vertex %d onwards missing from the input file!\n", v);
        TextLine line = next_line(file);
        if (!is_comment(line)) cellwgt[v++] = int_or_zero(&line);
    }
}

/* Copies the gathered lists into arrays of their exact size. */
static void keep_lists(HGraph *graph, const Gathering *lists)
{
    const size_t nptr = static_cast<size_t>(graph->nnets) + 1;
    const size_t npins = static_cast<size_t>(lists->used);
    assert(lists->used <= lists->capacity || lists->used == 0);
    graph->netptr = imalloc__(nptr, "ReadHGraph: graph->netptr");
    memcpy(graph->netptr, lists->netptr, nptr * sizeof(int));
    graph->netind = imalloc__(npins, "ReadHGraph: graph->netind");
    if (npins > 0) memcpy(graph->netind, lists->netind, npins * sizeof(int));
}

HGraph *ReadHGraph(const char *name)
{
    TextFile file = read_text_file(name, OPEN_TEXT);
    const Header header = read_header(&file);
    const size_t body = file.place, nnets = static_cast<size_t>(header.nnets);
    const int total = count_entries(&file, &header);
    file.place = body;

    HGraph *const graph = CreateHGraph__();
    graph->ncells = header.ncells;
    graph->nnets = header.nnets;
    Gathering lists = {nullptr, nullptr, nullptr, nullptr, total, 0};
    lists.netptr = imalloc__(nnets + 1, "main: netptr");
    lists.netind = imalloc__(total > 0 ? static_cast<size_t>(total) : 0, "main: netind");
    if (header.netweights) graph->netwgt = lists.netwgt = imalloc__(nnets, "main: netwgt");
    lists.last = ismalloc__(static_cast<size_t>(header.ncells), -1, "main: last");
    read_hyperedges(&file, &header, &lists);
    if (header.cellweights) {
        graph->cellwgt = imalloc__(static_cast<size_t>(header.ncells), "main: cellwgt");
        read_cell_weights(&file, header.ncells, graph->cellwgt);
    }
    free_text_file(&file);
    keep_lists(graph, &lists);
    QXfree__(&lists.netptr, &lists.netind, &lists.last, LTERM);
    return graph;
}
