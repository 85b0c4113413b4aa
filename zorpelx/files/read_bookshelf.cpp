// SPDX-License-Identifier: MIT
/* zorpelx/files/read_bookshelf.cpp: placement benchmarks in the Bookshelf format.
 *
 * .aux: RowBasedPlacement : a.nodes a.nets a.wts a.pl a.scl, in any order; .nodes and .nets must be
 * there. .nodes: NAME WIDTH HEIGHT [terminal | terminal_NI]. .nets: NetDegree : N [NAME], then N
 * lines NODE DIRECTION : X Y. .wts: NAME WEIGHT, of a net or a node. .pl: NAME X Y : ORIENTATION
 * [/FIXED]. Counts that are off are told.
 * Source: Caldwell, Kahng, Markov, Toward CAD-IP reuse: the MARCO GSRC Bookshelf of fundamental CAD
 * algorithms, IEEE Design & Test 19(3), 2002.
 */
#include "read_bookshelf.h"

#include <algorithm>
#include <cmath>

#include "bookshelf_lines.h"
#include "builder.h"
#include "casts.h"
#include "expand.h"
#include "fileerror.h"
#include "told.h"
#include "whole_weights.h"
#include "zorpelx.h"

enum NodeKind : int32_t { NODE_CELL, NODE_TERMINAL, NODE_OVERLAP, NODE_FIXED };
static constexpr std::string_view KINDS[] = {"cell", "terminal", "terminal_NI", "fixed"};

/* Paths of the files; empty where the .aux names none. */
struct BookshelfPaths {
    std::string nodes, nets, weights, places, rows;
};

struct Bookshelf {
    Builder builder;
    std::vector<double> area, netweight;
    std::vector<int32_t> kind;
    Findings *findings;
    Budget *budget;
};

static std::string folder_of(const std::string &path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

/* Whether a name ends so, a compression's ending left out. */
static bool ends_so(std::string name, std::string_view suffix)
{
    name = plain_name(name);
    return name.size() > suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

static BookshelfPaths paths_of(std::string_view bytes, const Reading &reading, Budget *budget)
{
    BookshelfFile aux;
    open_text(bytes, *budget, &aux);
    BookshelfPaths paths;
    while (take_words(&aux))
        for (const std::string_view word : aux.words) {
            const std::string path =
                (word[0] == '/' ? "" : folder_of(reading.path)) + std::string(word);
            if (ends_so(path, ".nodes")) paths.nodes = path;
            if (ends_so(path, ".nets")) paths.nets = path;
            if (ends_so(path, ".wts")) paths.weights = path;
            if (ends_so(path, ".pl")) paths.places = path;
            if (ends_so(path, ".scl")) paths.rows = path;
        }
    if (paths.nodes.empty() || paths.nets.empty())
        file_error(ZORPELX_BAD_INPUT, "%s: an .aux file names a .nodes and a .nets file",
                   budget->name.c_str());
    return paths;
}

static void tell_count(Bookshelf *shelf, const BookshelfFile &file, int64_t said, int64_t found,
                       const char *one, const char *several)
{
    if (said >= 0 && said != found)
        tell_warning(shelf->findings, {0, 0},
                     text_of("%s says %s and has %lld", file.budget.name.c_str(),
                             counted(said, one, several).c_str(), static_cast<long long>(found)));
}

static double area_of(const BookshelfFile &file)
{
    if (file.words.size() < 3) return 0;
    const double width = real_of(file, file.words[1]), height = real_of(file, file.words[2]);
    if (width < 0 || height < 0 || !std::isfinite(width * height))
        bad_input(file.budget, place_in(file, file.words[1]), "a size below 0");
    return width * height;
}

static void take_node(Bookshelf *shelf, const BookshelfFile &file)
{
    const std::string_view name = file.words[0];
    const int32_t v = named_vertex(&shelf->builder, name);
    if (at(v) < shelf->area.size())
        bad_input(file.budget, place_in(file, name), "node '%.60s' is there already",
                  std::string(name).c_str());
    int32_t kind = NODE_CELL;
    for (const std::string_view word : file.words) {
        if (word == "terminal") kind = NODE_TERMINAL;
        if (word == "terminal_NI") kind = NODE_OVERLAP;
    }
    const bool sized = file.words.size() >= 3;
    push_charged(shelf->budget, &shelf->area,
                 sized               ? area_of(file)
                 : kind == NODE_CELL ? 1.0
                                     : 0.0);
    push_charged(shelf->budget, &shelf->kind, kind);
}

/* Prefetches the places of nodes and nets that the next lines name. */
static void ask_for_names(const Bookshelf &shelf, const BookshelfFile &file, BookshelfAhead *ahead)
{
    if (!look_ahead(file, "NetDegree", ahead)) return;
    for (const std::string_view name : ahead->first) prefetch_name(shelf.builder.vertices, name);
    for (const std::string_view name : ahead->last) prefetch_name(shelf.builder.nets, name);
}

static void take_nodes(Bookshelf *shelf, const std::string &path)
{
    BookshelfFile file;
    open_bookshelf(path, *shelf->budget, &file);
    int64_t nodes = -1, terminals = -1;
    BookshelfAhead ahead;
    while (take_words(&file)) {
        ask_for_names(*shelf, file, &ahead);
        if (!is_count(file, "NumNodes", &nodes) && !is_count(file, "NumTerminals", &terminals))
            take_node(shelf, file);
    }
    const auto is_terminal = [](int32_t kind) { return kind != NODE_CELL; };
    tell_count(shelf, file, nodes, static_cast<int64_t>(shelf->kind.size()), "node", "nodes");
    tell_count(shelf, file, terminals,
               std::count_if(shelf->kind.begin(), shelf->kind.end(), is_terminal), "terminal",
               "terminals");
}

/* The net being read: how many pins it still should have. */
struct OpenNet {
    int32_t net = -1;
    int64_t said = 0, found = 0;
    Place place = {0, 0};
};

static void end_net(Bookshelf *shelf, const BookshelfFile &file, const OpenNet &open)
{
    if (open.net >= 0 && open.said != open.found)
        tell_warning(shelf->findings, {0, 0},
                     text_of("%s:%lld: the net says %lld pins and has %lld",
                             file.budget.name.c_str(), static_cast<long long>(open.place.line),
                             static_cast<long long>(open.said),
                             static_cast<long long>(open.found)));
}

static OpenNet begin_net(Bookshelf *shelf, const BookshelfFile &file, int64_t number, int64_t said)
{
    OpenNet open;
    const bool named = file.words.size() > 2;
    const std::string made = "net" + std::to_string(number);
    const std::string_view name = named ? file.words[2] : std::string_view(made);
    const int64_t before = shelf->builder.graph.nnets;
    open.net = named_net(&shelf->builder, name);
    if (open.net < before)
        bad_input(file.budget, place_in(file, file.words[0]), "net '%.60s' is there already",
                  std::string(name).c_str());
    open.said = said;
    return open;
}

static void take_pin(Bookshelf *shelf, const BookshelfFile &file, OpenNet *open)
{
    const std::string_view name = file.words[0];
    if (open->net < 0)
        bad_input(file.budget, place_in(file, name), "a pin before the first NetDegree");
    const int32_t v = find_name(shelf->builder.vertices, name);
    if (v < 0)
        bad_input(file.budget, place_in(file, name), "node '%.60s' is not in the .nodes file",
                  std::string(name).c_str());
    open->found++;
    add_pin(&shelf->builder, open->net, v);
}

static void take_nets(Bookshelf *shelf, const std::string &path)
{
    BookshelfFile file;
    open_bookshelf(path, *shelf->budget, &file);
    int64_t nets = -1, pins = -1, said = 0, found = 0, count = 0, line = 0;
    const char *counted_to = file.text.data();
    OpenNet open;
    BookshelfAhead ahead;
    while (take_words(&file)) {
        ask_for_names(*shelf, file, &ahead);
        if (is_count(file, "NumNets", &nets) || is_count(file, "NumPins", &pins)) continue;
        if (!is_count(file, "NetDegree", &said)) {
            take_pin(shelf, file, &open);
            found++;
            continue;
        }
        end_net(shelf, file, open);
        open = begin_net(shelf, file, count++, said);
        const char *const here = file.words[0].data();
        line += std::count(counted_to, here, '\n');
        counted_to = here;
        open.place.line = line + 1;
    }
    end_net(shelf, file, open);
    tell_count(shelf, file, nets, count, "net", "nets");
    tell_count(shelf, file, pins, found, "pin", "pins");
}

/* A file that may be missing; a sentence tells if it is. */
static bool is_there(Bookshelf *shelf, const std::string &path)
{
    if (path.empty()) return false;
    FILE *const file = fopen(path.c_str(), "rb");
    if (file == nullptr) {
        tell_note(shelf->findings, {0, 0}, text_of("%s is not there", path.c_str()));
        return false;
    }
    fclose(file);
    return true;
}

static void take_weights(Bookshelf *shelf, const std::string &path)
{
    BookshelfFile file;
    open_bookshelf(path, *shelf->budget, &file);
    int64_t unknown = 0;
    while (take_words(&file)) {
        if (file.words.size() < 2) continue;
        const double weight = real_of(file, file.words[1]);
        if (weight < 0) bad_input(file.budget, place_in(file, file.words[1]), "a weight below 0");
        const int32_t e = find_name(shelf->builder.nets, file.words[0]);
        if (e < 0) {
            unknown += find_name(shelf->builder.vertices, file.words[0]) < 0;
            continue; // nodes weigh their area
        }
        while (shelf->netweight.size() <= at(e))
            push_charged(shelf->budget, &shelf->netweight, 1.0);
        shelf->netweight[at(e)] = weight;
    }
    if (unknown > 0)
        tell_warning(shelf->findings, {0, 0},
                     text_of("%s: %s", path.c_str(),
                             counted(unknown, "name is of no net and no node",
                                     "names are of no net and no node")
                                 .c_str()));
}

static bool is_fixed(const BookshelfFile &file)
{
    for (const std::string_view word : file.words)
        if (word == "/FIXED" || word == "/Fixed" || word == "/FIXED_NI" || word == "/fixed")
            return true;
    return false;
}

/* What has a fixed place is of that kind, unless it is a terminal. */
static void take_places(Bookshelf *shelf, const std::string &path)
{
    BookshelfFile file;
    open_bookshelf(path, *shelf->budget, &file);
    int64_t fixed = 0, unknown = 0;
    while (take_words(&file)) {
        const int32_t v = find_name(shelf->builder.vertices, file.words[0]);
        unknown += v < 0;
        if (v < 0 || !is_fixed(file)) continue;
        fixed++;
        if (shelf->kind[at(v)] == NODE_CELL) shelf->kind[at(v)] = NODE_FIXED;
    }
    if (fixed > 0)
        tell_note(shelf->findings, {0, 0},
                  counted(fixed, "node has a fixed place", "nodes have fixed places"));
    if (unknown > 0)
        tell_warning(
            shelf->findings, {0, 0},
            text_of("%s: %s", path.c_str(),
                    counted(unknown, "place is of no node", "places are of no node").c_str()));
}

static void take_rows(Bookshelf *shelf, const std::string &path)
{
    BookshelfFile file;
    open_bookshelf(path, *shelf->budget, &file);
    int64_t said = -1, rows = 0;
    while (take_words(&file))
        if (!is_count(file, "NumRows", &said)) rows += file.words[0] == "CoreRow";
    tell_count(shelf, file, said, rows, "row", "rows");
}

static Names kind_names(Budget *budget)
{
    Names names;
    for (const std::string_view kind : KINDS) add_name(&names, kind, budget);
    return names;
}

static Hypergraph finish(Bookshelf *shelf)
{
    Hypergraph *const graph = &shelf->builder.graph;
    graph->vertexwgt = whole_weights(shelf->area, "areas", shelf->findings);
    graph->vertexweights = true;
    if (!shelf->netweight.empty()) {
        shelf->netweight.resize(at(graph->nnets), 1.0);
        graph->netwgt = whole_weights(shelf->netweight, "weights of nets", shelf->findings);
        graph->netweights = true;
    }
    graph->kind = std::move(shelf->kind);
    graph->kindnames = kind_names(shelf->budget);
    return finish_hypergraph(&shelf->builder);
}

Hypergraph read_bookshelf(std::string_view bytes, const Reading &reading, Findings *findings,
                          Budget *budget)
{
    const BookshelfPaths paths = paths_of(bytes, reading, budget);
    Bookshelf shelf = {open_builder(findings, budget), {}, {}, {}, findings, budget};
    take_nodes(&shelf, paths.nodes);
    take_nets(&shelf, paths.nets);
    if (is_there(&shelf, paths.weights)) take_weights(&shelf, paths.weights);
    if (is_there(&shelf, paths.places)) take_places(&shelf, paths.places);
    if (is_there(&shelf, paths.rows)) take_rows(&shelf, paths.rows);
    return finish(&shelf);
}

/* "NAME : files", with one of them a .nodes file. */
Recognised recognise_bookshelf(std::string_view bytes)
{
    const std::string_view head = bytes.substr(0, 4096);
    const bool named = head.find(".nodes") != std::string_view::npos &&
                       head.find(".nets") != std::string_view::npos;
    const bool placement = head.find("RowBasedPlacement") != std::string_view::npos;
    if (placement && named) return CERTAIN;
    return named && head.find(':') != std::string_view::npos ? LIKE : UNLIKE;
}

std::vector<WrittenFile> annotate_bookshelf(const Hypergraph &graph, const Annotation &annotation,
                                            Budget *budget)
{
    std::string text = "# parts by zorpelx: node, part\n";
    for (int64_t v = 0; v < graph.nvertices; v++)
        text += vertex_label(graph, v, 1) + ' ' + std::to_string(annotation.part[at(v)]) + '\n';
    charge(budget, text.size());
    return {{"", std::move(text)}};
}
