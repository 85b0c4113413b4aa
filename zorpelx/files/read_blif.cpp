// SPDX-License-Identifier: MIT
/* zorpelx/files/read_blif.cpp: netlists in the Berkeley Logic Interchange Format.
 *
 * A cell goes by its .cname if there is one, else by the net that it drives, which for a .gate is
 * its last; a .subckt by its model and its number among the model's subcircuits. Outputs of the top
 * model go by "out:" and their net, as that name is the driver's. A .names without inputs drives a
 * constant: it is left out, and its net is a constant wherever it goes.
 * Source: Berkeley Logic Interchange Format (BLIF), University of California, Berkeley, 1992; and
 * .conn, .cname, .attr, .param as Yosys writes them.
 */
#include "read_blif.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <numeric>

#include "blif_lines.h"
#include "casts.h"
#include "fileerror.h"
#include "netlist.h"
#include "told.h"

/* The model being read.
 *   same      union-find over its nets, for .conn
 *   joined    whether there was any .conn
 *   constant  of each net */
struct BlifModel {
    NetModule module;
    Interner nets;
    std::vector<int32_t> same;
    bool joined;
    std::vector<bool> constant;
    int64_t nsubcircuits;
};

struct BlifScan {
    BlifLines lines;
    NetDesign design;
    BlifModel model;
    bool open;                    // within a model
    bool covers;                  // rows of a .names may follow
    bool sampled;                 // what the text may become has been made room for
    std::deque<Names> netnames;   // of the models, for the views of the design
    std::deque<std::string> made; // names of cells that the text does not hold
    Findings *findings;
    Budget *budget;
};

static int32_t net_called(BlifScan *scan, std::string_view name)
{
    BlifModel *const model = &scan->model;
    const int32_t net = intern(&model->nets, name, scan->budget);
    if (at(net) == model->same.size()) {
        push_charged(scan->budget, &model->same, net);
        model->constant.push_back(false);
    }
    return net;
}

static int32_t same_net(BlifModel *model, int32_t net)
{
    while (model->same[at(net)] != net)
        net = model->same[at(net)] = model->same[at(model->same[at(net)])];
    return net;
}

/* Ports come behind the cells here too, whose nets are numbered before theirs. */
static void connect_ports(BlifScan *scan)
{
    NetModule *const module = &scan->model.module;
    for (NetBundle &port : module->ports) {
        port.bit = static_cast<int64_t>(module->bits.size());
        push_charged(scan->budget, &module->bits, net_called(scan, port.name));
    }
}

/* A .conn makes two nets one; nets of constants become CONSTANT_BIT. */
static void settle_nets(BlifModel *model)
{
    const auto constant = std::find(model->constant.begin(), model->constant.end(), true);
    model->module.ordered = !model->joined && constant == model->constant.end();
    if (model->module.ordered) return;
    for (size_t net = 0; net < model->same.size(); net++)
        if (model->constant[net])
            model->constant[at(same_net(model, static_cast<int32_t>(net)))] = true;
    for (int32_t &bit : model->module.bits) {
        const int32_t net = same_net(model, bit);
        bit = model->constant[at(net)] ? CONSTANT_BIT : net;
    }
}

/* Each net is a wire; those that Yosys or another program named begin with a dollar. */
static void add_wires(BlifScan *scan, const Names &names)
{
    NetModule *const module = &scan->model.module;
    const size_t nnets = at(count_names(names));
    reserve_charged(scan->budget, &module->wires, nnets);
    reserve_charged(scan->budget, &module->bits, module->bits.size() + nnets);
    for (int64_t net = 0; net < count_names(names); net++) {
        const std::string_view name = name_of(names, net);
        const bool hidden = !name.empty() && name[0] == '$';
        push_charged(
            scan->budget, &module->wires,
            NetBundle{name, static_cast<int64_t>(module->bits.size()), 1, 0, false, hidden, false});
        push_charged(scan->budget, &module->bits, static_cast<int32_t>(net));
    }
}

/* Where each net has one name and keeps its number, no wires are needed to say so. */
static void name_nets(BlifScan *scan)
{
    NetModule *const module = &scan->model.module;
    Names &names = scan->netnames.emplace_back(take_names(&scan->model.nets, scan->budget));
    if (scan->model.joined || at(count_names(names)) > module->bits.size())
        add_wires(scan, names);
    else
        module->netnames = &names;
}

static void close_model(BlifScan *scan)
{
    if (!scan->open) return;
    connect_ports(scan);
    name_nets(scan);
    settle_nets(&scan->model);
    settle_bits(&scan->model.module, scan->budget);
    scan->design.modules.push_back(std::move(scan->model.module));
    charge(scan->budget, sizeof(NetModule));
    give_back(scan->budget, scan->model.same.capacity() * sizeof(int32_t));
    scan->open = scan->covers = false;
}

static void open_model(BlifScan *scan, std::string_view name)
{
    close_model(scan);
    scan->model = {};
    scan->model.module.name = name;
    scan->model.module.top = scan->design.modules.empty();
    scan->open = true;
}

static void add_ports(BlifScan *scan, bool output)
{
    NetModule *const module = &scan->model.module;
    const bool clock = scan->lines.words[0] == ".clock";
    for (size_t i = 1; i < scan->lines.words.size(); i++) {
        const std::string_view name = scan->lines.words[i];
        const auto is_it = [name](const NetBundle &port) { return port.name == name; };
        if (clock && std::any_of(module->ports.begin(), module->ports.end(), is_it)) continue;
        push_charged(scan->budget, &module->ports, NetBundle{name, 0, 1, 0, false, false, output});
    }
}

static void add_cell(BlifScan *scan, std::string_view type, std::string_view name)
{
    NetModule *const module = &scan->model.module;
    const NetCell cell = {name, static_cast<int64_t>(module->connections.size()),
                          static_cast<int64_t>(module->bits.size()),
                          intern(&scan->design.types, type, scan->budget)};
    push_charged(scan->budget, &module->cells, cell);
}

/* Connects the last cell's port to the nets called by words from begin to end. */
static void connect(BlifScan *scan, std::string_view port, size_t begin, size_t end)
{
    add_connection(&scan->design, &scan->model.module, port, static_cast<int32_t>(end - begin),
                   scan->budget);
    for (size_t i = begin; i < end; i++)
        push_charged(scan->budget, &scan->model.module.bits,
                     net_called(scan, scan->lines.words[i]));
}

static void take_names_line(BlifScan *scan)
{
    const size_t nwords = scan->lines.words.size();
    if (nwords < 2)
        blif_error(scan->lines, scan->lines.words[0].data(), ".names without an output");
    scan->covers = true;
    if (nwords == 2) {
        const int32_t net = net_called(scan, scan->lines.words[1]);
        scan->model.constant[at(net)] = true;
        scan->design.nconstants++;
        return;
    }
    add_cell(scan, ".names", scan->lines.words.back());
    connect(scan, "I", 1, nwords - 1);
    connect(scan, "O", nwords - 1, nwords);
}

/* .latch INPUT OUTPUT [TYPE CONTROL] [VALUE] */
static void take_latch(BlifScan *scan)
{
    constexpr size_t FEWEST = 3, MOST = 6, WITH_CONTROL = 5;
    const BlifWords words = scan->lines.words;
    if (words.size() < FEWEST || words.size() > MOST)
        blif_error(scan->lines, words[0].data(),
                   ".latch has an input, an output, perhaps a type with a control, and a value");
    add_cell(scan, ".latch", words[2]);
    connect(scan, "D", 1, 2);
    connect(scan, "Q", 2, 3);
    if (words.size() >= WITH_CONTROL && words[4] != "NIL") connect(scan, "C", 4, 5);
}

/* FORMAL=ACTUAL; a net called "unconn" is none. */
static void connect_formal(BlifScan *scan, std::string_view word)
{
    const size_t sign = word.find('=');
    if (sign == std::string_view::npos || sign == 0)
        blif_error(scan->lines, word.data(), "there should be PORT=NET here");
    const std::string_view net = word.substr(sign + 1);
    if (net.empty() || net == "unconn") return;
    add_connection(&scan->design, &scan->model.module, word.substr(0, sign), 1, scan->budget);
    push_charged(scan->budget, &scan->model.module.bits, net_called(scan, net));
}

/* The net of the last FORMAL=ACTUAL. */
static std::string_view last_actual(BlifWords words, size_t nformals)
{
    const std::string_view word = words[1 + nformals];
    const size_t sign = word.find('=');
    return sign == std::string_view::npos ? word : word.substr(sign + 1);
}

/* .gate, .subckt or .mlatch; the last has a control and a value behind its nets. */
static void take_gate(BlifScan *scan)
{
    const BlifWords words = scan->lines.words;
    if (words.size() < 2) blif_error(scan->lines, words[0].data(), "there should be a type behind");
    size_t nformals = words.size() - 2;
    if (words[0] == ".mlatch")
        while (nformals > 0 && words[1 + nformals].find('=') == std::string_view::npos) nformals--;
    const int64_t number = ++scan->model.nsubcircuits;
    std::string_view name;
    if (words[0] == ".subckt" || nformals == 0) {
        name = scan->made.emplace_back(std::string(words[1]) + "$" + std::to_string(number));
        charge(scan->budget, sizeof(std::string) + name.size());
    } else {
        name = last_actual(words, nformals);
    }
    add_cell(scan, words[1], name);
    for (size_t i = 0; i < nformals; i++) connect_formal(scan, words[2 + i]);
    if (words[0] == ".mlatch" && nformals + 2 < words.size() && words[nformals + 2] != "NIL")
        connect(scan, "C", nformals + 2, nformals + 3);
}

static void take_conn(BlifScan *scan)
{
    const BlifWords words = scan->lines.words;
    if (words.size() != 3) blif_error(scan->lines, words[0].data(), ".conn joins two nets");
    const int32_t a = net_called(scan, words[1]), b = net_called(scan, words[2]);
    scan->model.same[at(same_net(&scan->model, b))] = same_net(&scan->model, a);
    scan->model.joined = true;
}

static void name_cell(BlifScan *scan)
{
    const BlifWords words = scan->lines.words;
    if (words.size() != 2 || scan->model.module.cells.empty())
        blif_error(scan->lines, words[0].data(), ".cname gives the cell before it a name");
    scan->model.module.cells.back().name = words[1];
}

/* A row of a .names: nothing but 0, 1 and -, in one word or two. */
static bool is_cover(BlifWords words)
{
    for (const std::string_view word : words)
        if (word.find_first_not_of("01-") != std::string_view::npos) return false;
    return words.size() <= 2;
}

static void skip_to(BlifScan *scan, std::string_view end)
{
    const char *const begin = scan->lines.words[0].data();
    while (take_words(&scan->lines))
        if (scan->lines.words[0] == end) return;
    blif_error(scan->lines, begin, "no %s follows", std::string(end).c_str());
}

/* What says nothing about what is joined to what. */
static bool is_of_no_concern(std::string_view word)
{
    static constexpr std::string_view WORDS[] = {".attr",
                                                 ".param",
                                                 ".area",
                                                 ".delay",
                                                 ".wire_load_slope",
                                                 ".wire",
                                                 ".input_arrival",
                                                 ".output_arrival",
                                                 ".input_required",
                                                 ".output_required",
                                                 ".default_input_arrival",
                                                 ".default_output_required",
                                                 ".input_drive",
                                                 ".default_input_drive",
                                                 ".output_load",
                                                 ".default_output_load",
                                                 ".max_input_load",
                                                 ".default_max_input_load",
                                                 ".cycle",
                                                 ".clock_event",
                                                 ".latch_order",
                                                 ".code",
                                                 ".no_merge",
                                                 ".no"};
    return std::find(std::begin(WORDS), std::end(WORDS), word) != std::end(WORDS);
}

static void take_other(BlifScan *scan)
{
    const std::string_view word = scan->lines.words[0];
    if (word == ".start_kiss") return skip_to(scan, ".end_kiss");
    if (word == ".exdc") return skip_to(scan, ".end");
    if (word == ".blackbox") {
        scan->model.module.blackbox = true;
        return;
    }
    if (is_of_no_concern(word)) return;
    const Place place = place_of(scan->lines.text, word.data());
    if (word == ".search")
        return tell_warning(scan->findings, place, "files named by .search are not read");
    if (word[0] == '.')
        return tell_warning(
            scan->findings, place,
            text_of("'%s' is not known and left out", std::string(word.substr(0, 60)).c_str()));
    blif_error(scan->lines, word.data(), "there should be a word with a dot before it here");
}

static void take_statement(BlifScan *scan)
{
    const std::string_view word = scan->lines.words[0];
    if (word == ".end") return close_model(scan);
    if (word == ".model")
        return open_model(scan, scan->lines.words.size() > 1 ? scan->lines.words[1] : "");
    if (scan->covers && is_cover(scan->lines.words)) return;
    if (!scan->open && word[0] == '.') open_model(scan, "");
    scan->covers = false;
    if (word == ".inputs" || word == ".input" || word == ".clock") return add_ports(scan, false);
    if (word == ".outputs" || word == ".output") return add_ports(scan, true);
    if (word == ".names" || word == ".barbuf") return take_names_line(scan);
    if (word == ".latch") return take_latch(scan);
    if (word == ".gate" || word == ".subckt" || word == ".mlatch") return take_gate(scan);
    if (word == ".conn") return take_conn(scan);
    if (word == ".cname") return name_cell(scan);
    take_other(scan);
}

/* Nets of the lines ahead; those of gates stand behind the ports that they are joined to. */
static void ask_for_names(const BlifScan &scan)
{
    bool formal = false;
    for (const std::string_view word : scan.lines.ahead) {
        if (word[0] == '.')
            formal = word == ".gate" || word == ".subckt" || word == ".mlatch";
        else
            prefetch_name(scan.model.nets, formal ? word.substr(word.find('=') + 1) : word);
    }
}

/* More room for a list, if the rest of the text goes on as its begin did. */
template <class T> static void expect_more(std::vector<T> *list, double factor, Budget *budget)
{
    const size_t count = static_cast<size_t>(factor * static_cast<double>(list->size()));
    reserve_charged(budget, list, count);
}

/* After a sample of the text: room for what the model seems to become. Lists that grow by doubling
 * take twice the memory on the way, and the system's time to provide it. Where memory is short they
 * do grow so. */
static void expect_rest(BlifScan *scan)
{
    constexpr size_t SAMPLE = size_t{1} << 20;
    const BlifLines &lines = scan->lines;
    const size_t read = static_cast<size_t>(lines.next - lines.text.data());
    if (scan->sampled || read < SAMPLE) return;
    scan->sampled = true;
    Budget *const budget = scan->budget;
    constexpr size_t LARGEST = 8; // bytes of lists for each of the text, at most
    if ((budget->most - budget->used) / LARGEST < lines.text.size()) return;
    const double factor = 1.05 * static_cast<double>(lines.text.size()) / static_cast<double>(read);
    NetModule *const module = &scan->model.module;
    expect_more(&module->cells, factor, budget);
    expect_more(&module->connections, factor, budget);
    expect_more(&module->bits, factor, budget);
    expect_more(&scan->model.same, factor, budget);
}

/* Where there is one model alone, its .end may be left out. */
static void tell_missing_end(const BlifScan &scan, std::string_view bytes)
{
    if (!scan.open) return;
    const Place place = place_of(bytes, scan.lines.end);
    if (!scan.design.modules.empty())
        tell_warning(scan.findings, place, "the last model has no .end");
    else if (!scan.model.module.name.empty())
        tell_note(scan.findings, place, "the model has no .end: the file may have been cut off");
}

Hypergraph read_blif(std::string_view bytes, const Reading &reading, Findings *findings,
                     Budget *budget)
{
    BlifScan scan = {
        blif_lines_over(bytes, budget), {}, {}, false, false, false, {}, {}, findings, budget};
    scan.design.outputs = "out:";
    while (take_words(&scan.lines)) {
        if (is_first_ahead(scan.lines)) {
            expect_rest(&scan);
            ask_for_names(scan);
        }
        take_statement(&scan);
    }
    tell_missing_end(scan, bytes);
    close_model(&scan);
    const size_t top = top_module(scan.design, reading.top, *budget);
    return flatten_design(scan.design, top, findings, budget);
}

/* The first word that is no comment. */
Recognised recognise_blif(std::string_view bytes)
{
    constexpr size_t LOOKED_AT = size_t{1} << 16;
    std::string_view head = bytes.substr(0, LOOKED_AT);
    for (;;) {
        const size_t begin = head.find_first_not_of(" \t\r\n\v\f\xef\xbb\xbf");
        if (begin == std::string_view::npos) return UNLIKE;
        head.remove_prefix(begin);
        if (head[0] != '#') break;
        head.remove_prefix(std::min(head.find('\n'), head.size()));
    }
    for (const std::string_view word : {".model", ".inputs", ".names"})
        if (head.substr(0, word.size()) == word && head.size() > word.size() &&
            isspace(static_cast<unsigned char>(head[word.size()])))
            return CERTAIN;
    return UNLIKE;
}
