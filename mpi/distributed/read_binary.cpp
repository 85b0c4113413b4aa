// SPDX-License-Identifier: MIT
/* mpi/distributed/read_binary.cpp: offsets are searched in the file, so that none reads them all.
 */
#include "distributed/read_binary.h"

#include <bit>

static_assert(std::endian::native == std::endian::little, "the form has the lowest byte first");

BinaryPlaces binary_places(const ShareHeader *header)
{
    BinaryPlaces places;
    places.ptr = BINARY_HEADER;
    places.pins = places.ptr + 8 * (header->nnets + 1);
    places.netweight = places.pins + 8 * header->npins;
    places.weight = places.netweight + (header->flags & HAS_NET_WEIGHTS ? 8 * header->nnets : 0);
    places.end = places.weight + (header->flags & HAS_VERTEX_WEIGHTS ? 8 * header->nvertices : 0);
    return places;
}

void read_binary_header(const FileShare *share, ShareHeader *header, ShareFault *fault)
{
    int64_t numbers[4];
    if (!read_bytes(share, 8, numbers, sizeof numbers, fault)) return;
    header->flags = numbers[0];
    header->nnets = numbers[1];
    header->nvertices = numbers[2];
    header->npins = numbers[3];
    bool sound = header->flags >= 0 && header->flags <= 3;
    for (int i = 1; i < 4; i++) sound = sound && numbers[i] >= 0 && numbers[i] < int64_t{1} << 56;
    if (!sound || binary_places(header).end != share->size)
        note_fault(fault, FAULT_INPUT, 0, "the header does not fit the size of the file");
}

/* The first hyperedge whose pins begin at target or behind. */
static int64_t first_net_at(const FileShare *share, const ShareHeader *header, int64_t target,
                            ShareFault *fault)
{
    int64_t low = 0, high = header->nnets;
    while (low < high) {
        const int64_t middle = low + (high - low) / 2;
        int64_t begin = 0;
        if (!read_bytes(share, BINARY_HEADER + 8 * middle, &begin, 8, fault)) return 0;
        if (begin < target)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

static std::vector<int64_t> read_array(const FileShare *share, int64_t place, int64_t first,
                                       int64_t n, ShareFault *fault)
{
    std::vector<int64_t> values(static_cast<size_t>(std::max<int64_t>(n, 0)));
    read_bytes(share, place + 8 * first, values.data(), 8 * n, fault);
    return values;
}

/* Offsets must rise, pins be vertices; a repeated one is kept once. */
static void check_nets(const ShareHeader *header, int64_t firstnet, LooseNets *nets,
                       ShareFault *fault)
{
    std::vector<int64_t> sorted;
    size_t at = 0;
    const std::vector<int64_t> ptr = nets->ptr;
    for (size_t e = 0; e + 1 < ptr.size() && fault->kind == FAULT_NONE; e++) {
        sorted.assign(nets->pins.begin() + ptr[e], nets->pins.begin() + ptr[e + 1]);
        std::sort(sorted.begin(), sorted.end());
        const bool inside = sorted.empty() || (sorted[0] >= 0 && sorted.back() < header->nvertices);
        if (!inside || nets->weight[e] < 0)
            note_fault(fault, FAULT_INPUT, firstnet + static_cast<int64_t>(e),
                       "hyperedge %lld has a vertex out of range or a negative weight",
                       static_cast<long long>(firstnet + static_cast<int64_t>(e)));
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        const bool repeated = static_cast<int64_t>(sorted.size()) < ptr[e + 1] - ptr[e];
        for (size_t i = 0; i < sorted.size(); i++)
            nets->pins[at++] = repeated ? sorted[i] : nets->pins[static_cast<size_t>(ptr[e]) + i];
        nets->ptr[e + 1] = static_cast<int64_t>(at);
    }
    nets->pins.resize(at);
}

static void read_nets(const FileShare *share, const ShareHeader *header, int64_t begin, int64_t end,
                      LooseNets *nets, ShareFault *fault)
{
    const BinaryPlaces places = binary_places(header);
    nets->ptr = read_array(share, places.ptr, begin, end - begin + 1, fault);
    bool rises = begin > 0 || nets->ptr[0] == 0;
    for (size_t e = 0; e + 1 < nets->ptr.size(); e++)
        rises = rises && nets->ptr[e] <= nets->ptr[e + 1];
    const int64_t first = nets->ptr[0];
    if (!rises || first < 0 || nets->ptr.back() > header->npins ||
        (end == header->nnets && nets->ptr.back() != header->npins))
        note_fault(fault, FAULT_INPUT, begin, "the places of the hyperedges do not rise to %lld",
                   static_cast<long long>(header->npins));
    if (fault->kind != FAULT_NONE) return;
    nets->pins = read_array(share, places.pins, first, nets->ptr.back() - first, fault);
    for (int64_t &place : nets->ptr) place -= first;
    if (header->flags & HAS_NET_WEIGHTS)
        nets->weight = read_array(share, places.netweight, begin, end - begin, fault);
    else
        nets->weight.assign(static_cast<size_t>(end - begin), 1);
    check_nets(header, begin, nets, fault);
}

bool read_binary(Ranks *ranks, FileShare *share, const ShareHeader *header, LooseNets *nets,
                 Level *level, ShareFault *fault)
{
    if (!set_share(ranks, BINARY_HEADER, share, fault)) return false;
    const auto pins_before = [&](int r) {
        return static_cast<int64_t>(static_cast<__int128>(header->npins) * r / ranks->nranks);
    };
    const int64_t begin =
        ranks->rank == 0 ? 0 : first_net_at(share, header, pins_before(ranks->rank), fault);
    const int64_t end = ranks->rank + 1 == ranks->nranks
                            ? header->nnets
                            : first_net_at(share, header, pins_before(ranks->rank + 1), fault);
    if (fault->kind == FAULT_NONE)
        read_nets(share, header, begin, std::max(begin, end), nets, fault);
    if (header->flags & HAS_VERTEX_WEIGHTS) {
        level->weight = read_array(share, binary_places(header).weight,
                                   share_begin(ranks, header->nvertices, ranks->rank),
                                   static_cast<int64_t>(level->weight.size()), fault);
        for (const int64_t weight : level->weight)
            if (weight < 0)
                note_fault(fault, FAULT_INPUT, header->nnets, "the weight of a vertex is negative");
    }
    check_unchanged(share, fault);
    return !agree_on_fault(ranks, fault);
}
