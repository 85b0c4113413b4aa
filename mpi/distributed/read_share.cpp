// SPDX-License-Identifier: MIT
/* mpi/distributed/read_share.cpp: hyperedges of a text, weights of vertices, lists of numbers.
 *
 * A rank first counts the lines that begin in its share; the sum over the ranks before it tells
 * which line of the file its first one is, and so which are hyperedges and which weights.
 */
#include "distributed/read_share.h"

#include <cstring>

#include "distributed/read_binary.h"

constexpr int64_t MOST_TOTAL = int64_t{1} << 46; // of weights: ratings and gains stay in 64 bits

static long long ll(int64_t number)
{
    return number;
}

/* A number of a vertex on its way to the vertex's owner. */
struct VertexNumber {
    int vertex; // of the receiver
    int64_t value;
};

/* Sends numbers of consecutive vertices from first on to their owners, each into own. */
static void send_numbers(Ranks *ranks, int64_t n, int64_t first,
                         const std::vector<int64_t> &numbers, std::vector<int64_t> *own)
{
    Mail<VertexNumber> mail;
    begin_mail(ranks, &mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(&mail);
        for (size_t i = 0; i < numbers.size(); i++) {
            const int64_t v = first + static_cast<int64_t>(i);
            assert(v >= 0 && v < n);
            const int owner = share_owner(ranks, n, v);
            if (pass == 0)
                count_mail(&mail, owner);
            else
                add_mail(&mail, owner,
                         {static_cast<int>(v - share_begin(ranks, n, owner)), numbers[i]});
        }
    }
    exchange(ranks, &mail);
    for (const VertexNumber &number : mail.records) {
        assert(number.vertex >= 0 && static_cast<size_t>(number.vertex) < own->size());
        (*own)[static_cast<size_t>(number.vertex)] = number.value;
    }
}

static bool read_header(FileShare *share, ShareHeader *header, int64_t *behind, ShareFault *fault)
{
    std::string line;
    if (!first_line(share, &line, behind, fault)) return false;
    const char *at = line.data(), *const end = at + line.size();
    int64_t format = 0;
    const bool counts = next_number(&at, end, &header->nnets) == 1 &&
                        next_number(&at, end, &header->nvertices) == 1;
    if (!counts || next_number(&at, end, &format) < 0 || header->nnets < 0 || header->nvertices < 0)
        note_fault(fault, FAULT_INPUT, 0,
                   "the header is not 'HYPEREDGES VERTICES [FORMAT]', with numbers of at most 62 "
                   "bits");
    else if (format != 0 && format != 1 && format != 10 && format != 11)
        note_fault(fault, FAULT_INPUT, 0, "format %lld is none of 0, 1, 10, 11", ll(format));
    header->flags =
        (format % 10 == 1 ? HAS_NET_WEIGHTS : 0) | (format >= 10 ? HAS_VERTEX_WEIGHTS : 0);
    return fault->kind == FAULT_NONE;
}

/* How many lines begin in the share, and how many pins they have, at most. */
static int64_t count_lines(FileShare *share, ShareFault *fault)
{
    const char *begin, *end;
    int64_t n = 0;
    while (next_line(share, &begin, &end, fault)) n++;
    rewind_share(share);
    return n;
}

struct TextRead {
    const ShareHeader *header;
    int64_t first, line; // of vertices; data line of the file, behind the header
    LooseNets *nets;
    std::vector<int64_t> weights; // of the vertices from line - nnets on
    ShareFault *fault;
};

static void wrong_token(TextRead *read, const char *at, const char *end)
{
    int n = 0;
    while (at + n < end && n < 20 && at[n] > ' ' && at[n] < 127) n++;
    note_fault(read->fault, FAULT_INPUT, read->line + 1,
               "data line %lld: '%.*s' is not a whole number of at most 62 bits",
               ll(read->line + 1), n, at);
}

/* Adds a vertex to the last net, if it is not there yet. Large nets are checked when all are in. */
static void read_net(TextRead *read, const char *at, const char *end, std::vector<int64_t> *sorted)
{
    LooseNets *const nets = read->nets;
    int64_t weight = 1, v;
    int got = 1;
    if (read->header->flags & HAS_NET_WEIGHTS) {
        got = next_number(&at, end, &weight);
        if (got == 0) weight = 0;
        if (got == 1 && weight < 0)
            note_fault(read->fault, FAULT_INPUT, read->line + 1,
                       "data line %lld: the weight of a hyperedge is negative", ll(read->line + 1));
    }
    const size_t begin = nets->pins.size();
    while (got == 1 && (got = next_number(&at, end, &v)) == 1) {
        v -= read->first;
        if (v < 0 || v >= read->header->nvertices)
            note_fault(read->fault, FAULT_INPUT, read->line + 1,
                       "data line %lld: there is no vertex %lld", ll(read->line + 1),
                       ll(v + read->first));
        nets->pins.push_back(v);
    }
    if (got < 0) wrong_token(read, at, end);
    sorted->assign(nets->pins.begin() + static_cast<int64_t>(begin), nets->pins.end());
    std::sort(sorted->begin(), sorted->end());
    sorted->erase(std::unique(sorted->begin(), sorted->end()), sorted->end());
    if (sorted->size() < nets->pins.size() - begin) {
        nets->pins.resize(begin);
        nets->pins.insert(nets->pins.end(), sorted->begin(), sorted->end());
    }
    nets->ptr.push_back(static_cast<int64_t>(nets->pins.size()));
    nets->weight.push_back(weight);
}

static void read_weight(TextRead *read, const char *at, const char *end)
{
    int64_t weight = 0;
    if (next_number(&at, end, &weight) < 0) wrong_token(read, at, end);
    if (weight < 0)
        note_fault(read->fault, FAULT_INPUT, read->line + 1,
                   "data line %lld: the weight of a vertex is negative", ll(read->line + 1));
    read->weights.push_back(weight);
}

/* Reads the lines of the share. Returns the vertex whose weight comes first. */
static int64_t read_lines(FileShare *share, TextRead *read)
{
    const ShareHeader *const header = read->header;
    const int64_t vertex = std::max<int64_t>(read->line - header->nnets, 0);
    const int64_t lines =
        header->nnets + (header->flags & HAS_VERTEX_WEIGHTS ? header->nvertices : 0);
    const char *begin, *end;
    std::vector<int64_t> sorted;
    for (; read->fault->kind == FAULT_NONE && next_line(share, &begin, &end, read->fault);
         read->line++) {
        if (read->line < header->nnets)
            read_net(read, begin, end, &sorted);
        else if (read->line < lines)
            read_weight(read, begin, end);
    }
    return vertex;
}

static bool check_total(Ranks *ranks, const std::vector<int64_t> &weights, const char *what,
                        ShareFault *fault)
{
    int64_t total = 0;
    bool large = false;
    for (const int64_t weight : weights) {
        large = large || weight > MOST_TOTAL || total > MOST_TOTAL;
        total += large ? 0 : weight;
    }
    if (most_of_all(ranks, large) == 1 || sum_of_all(ranks, total) > MOST_TOTAL)
        note_fault(fault, FAULT_INPUT, 0, "the weights of the %s total more than 2^46", what);
    return !agree_on_fault(ranks, fault);
}

static bool read_text(Ranks *ranks, FileShare *share, int64_t first, int64_t behind,
                      const ShareHeader *header, LooseNets *nets, Level *level, ShareFault *fault)
{
    if (!set_share(ranks, behind, share, fault)) return false;
    const int64_t nlines = count_lines(share, fault);
    TextRead read = {header, first, sum_before(ranks, nlines), nets, {}, fault};
    const int64_t needed =
        header->nnets + (header->flags & HAS_VERTEX_WEIGHTS ? header->nvertices : 0);
    const int64_t there = sum_of_all(ranks, nlines);
    if (there < needed)
        note_fault(fault, FAULT_INPUT, there + 1,
                   "%lld lines are missing: the header tells of %lld", ll(needed - there),
                   ll(needed));
    if (agree_on_fault(ranks, fault)) return false;
    const int64_t vertex = read_lines(share, &read);
    check_unchanged(share, fault);
    if (agree_on_fault(ranks, fault)) return false;
    if (header->flags & HAS_VERTEX_WEIGHTS)
        send_numbers(ranks, header->nvertices, vertex, read.weights, &level->weight);
    return true;
}

static bool is_binary(const FileShare *share, ShareFault *fault)
{
    char mark[8];
    return share->size >= BINARY_HEADER && read_bytes(share, 0, mark, 8, fault) &&
           memcmp(mark, BINARY_MARK, 8) == 0;
}

static bool read_either(Ranks *ranks, FileShare *share, int64_t first, ShareHeader *header,
                        LooseNets *nets, Level *level, ShareFault *fault)
{
    int64_t behind = BINARY_HEADER;
    *header = {0, 0, 0, 0, is_binary(share, fault)};
    const int64_t forms = sum_of_all(ranks, header->binary);
    if (forms != 0 && forms != ranks->nranks)
        note_fault(fault, FAULT_INPUT, 0, "is not the same on all ranks: its form differs");
    if (!agree_on_fault(ranks, fault)) {
        if (header->binary)
            read_binary_header(share, header, fault);
        else
            read_header(share, header, &behind, fault);
    }
    if (agree_on_fault(ranks, fault)) return false;
    if (least_of_all(ranks, behind) != most_of_all(ranks, behind))
        note_fault(fault, FAULT_INPUT, 0, "is not the same on all ranks: its header differs");
    if (agree_on_fault(ranks, fault)) return false;
    level->nvertices = header->nvertices;
    level->weight.assign(
        static_cast<size_t>(share_begin(ranks, header->nvertices, ranks->rank + 1) -
                            share_begin(ranks, header->nvertices, ranks->rank)),
        1);
    const bool done = header->binary
                          ? read_binary(ranks, share, header, nets, level, fault)
                          : read_text(ranks, share, first, behind, header, nets, level, fault);
    return done && check_total(ranks, level->weight, "vertices", fault) &&
           check_total(ranks, nets->weight, "hyperedges", fault);
}

bool read_hypergraph_share(Ranks *ranks, const char *name, int64_t first, ShareHeader *header,
                           LooseNets *nets, Level *level, ShareFault *fault)
{
    FileShare share = {};
    const bool done = open_share(ranks, name, &share, fault) &&
                      read_either(ranks, &share, first, header, nets, level, fault);
    close_share(&share);
    return done;
}

static bool read_numbers(Ranks *ranks, FileShare *share, int64_t n, int64_t least, int64_t most,
                         std::vector<int> *numbers, ShareFault *fault)
{
    if (!set_share(ranks, 0, share, fault)) return false;
    const int64_t nlines = count_lines(share, fault), before = sum_before(ranks, nlines);
    if (sum_of_all(ranks, nlines) != n)
        note_fault(fault, FAULT_INPUT, 0, "has %lld lines, not one for each of the %lld vertices",
                   ll(before + nlines), ll(n));
    if (agree_on_fault(ranks, fault)) return false;
    std::vector<int64_t> list;
    const char *begin, *end;
    while (fault->kind == FAULT_NONE && next_line(share, &begin, &end, fault)) {
        int64_t number = 0;
        const int64_t line = before + static_cast<int64_t>(list.size()) + 1;
        if (next_number(&begin, end, &number) != 1 || number < least || number > most)
            note_fault(fault, FAULT_INPUT, line,
                       "line %lld is not a whole number from %lld to %lld", ll(line), ll(least),
                       ll(most));
        list.push_back(number);
    }
    check_unchanged(share, fault);
    if (agree_on_fault(ranks, fault)) return false;
    std::vector<int64_t> own(static_cast<size_t>(share_begin(ranks, n, ranks->rank + 1) -
                                                 share_begin(ranks, n, ranks->rank)));
    send_numbers(ranks, n, before, list, &own);
    numbers->assign(own.begin(), own.end());
    return true;
}

bool read_vertex_numbers(Ranks *ranks, const char *name, int64_t n, int64_t least, int64_t most,
                         std::vector<int> *numbers, ShareFault *fault)
{
    FileShare share = {};
    const bool done = open_share(ranks, name, &share, fault) &&
                      read_numbers(ranks, &share, n, least, most, numbers, fault);
    close_share(&share);
    return done;
}
