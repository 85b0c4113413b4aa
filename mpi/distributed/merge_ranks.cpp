// SPDX-License-Identifier: MIT
/* mpi/distributed/merge_ranks.cpp: a sample sort of hyperedges by content.
 *
 * Stages: keys; bounds of the ranks' keys, from samples; exchange; sort; merge neighbours.
 */
#include "distributed/merge_ranks.h"

#include <numeric>

/* The middle pin, and a number that hyperedges of other pins hardly share. */
struct NetKey {
    int64_t pivot;
    uint64_t hash;
};

static bool operator<(const NetKey &a, const NetKey &b)
{
    return a.pivot != b.pivot ? a.pivot < b.pivot : a.hash < b.hash;
}

constexpr int SAMPLES = 64; // of each rank, about

static NetKey key_of(const int64_t *pins, int64_t size)
{
    uint64_t hash = static_cast<uint64_t>(size);
    for (int64_t i = 0; i < size; i++) hash = mixed(hash * 31 + static_cast<uint64_t>(pins[i]) + 1);
    assert(size >= 2); // the others have been left out
    return {pins[size / 2], hash};
}

static NetKey key_at(const LooseNets &nets, size_t e)
{
    return key_of(nets.pins.data() + nets.ptr[e], nets.ptr[e + 1] - nets.ptr[e]);
}

/* Every so many pins the key of the hyperedge that is there. */
static std::vector<NetKey> draw_samples(Ranks *ranks, const LooseNets &nets)
{
    const int64_t all = sum_of_all(ranks, static_cast<int64_t>(nets.pins.size()));
    const int64_t step = std::max<int64_t>(all / (int64_t{SAMPLES} * ranks->nranks), 1);
    std::vector<NetKey> samples;
    for (size_t e = 0; e + 1 < nets.ptr.size(); e++)
        if (nets.ptr[e] / step != nets.ptr[e + 1] / step) samples.push_back(key_at(nets, e));
    return samples;
}

/* The first key of each rank but rank 0. */
static std::vector<NetKey> choose_bounds(Ranks *ranks, const LooseNets &nets)
{
    const std::vector<NetKey> samples = draw_samples(ranks, nets);
    Mail<NetKey> mail;
    mail.first.assign(1, 0);
    for (int r = 0; r < ranks->nranks; r++) {
        mail.records.insert(mail.records.end(), samples.begin(), samples.end());
        mail.first.push_back(static_cast<int64_t>(mail.records.size()));
    }
    exchange(ranks, &mail);
    std::vector<NetKey> &all = mail.records, bounds;
    assert(mail.first.size() == static_cast<size_t>(ranks->nranks) + 1);
    std::sort(all.begin(), all.end());
    for (size_t r = 1; r < static_cast<size_t>(ranks->nranks); r++)
        bounds.push_back(all.empty() ? NetKey{INT64_MAX, 0}
                                     : all[r * all.size() / static_cast<size_t>(ranks->nranks)]);
    return bounds;
}

/* A hyperedge travels as weight, size, pins. */
static void send_nets(Ranks *ranks, LooseNets *nets)
{
    const std::vector<NetKey> bounds = choose_bounds(ranks, *nets);
    std::vector<int> to(nets->weight.size());
    Mail<int64_t> mail;
    begin_mail(ranks, &mail);
    for (size_t e = 0; e < to.size(); e++) {
        to[e] = static_cast<int>(std::upper_bound(bounds.begin(), bounds.end(), key_at(*nets, e)) -
                                 bounds.begin());
        assert(to[e] >= 0 && to[e] < ranks->nranks);
        mail.first[static_cast<size_t>(to[e]) + 1] += nets->ptr[e + 1] - nets->ptr[e] + 2;
    }
    open_mail(&mail);
    for (size_t e = 0; e < to.size(); e++) {
        add_mail(&mail, to[e], nets->weight[e]);
        add_mail(&mail, to[e], nets->ptr[e + 1] - nets->ptr[e]);
        for (int64_t i = nets->ptr[e]; i < nets->ptr[e + 1]; i++)
            add_mail(&mail, to[e], nets->pins[static_cast<size_t>(i)]);
    }
    *nets = LooseNets();
    exchange(ranks, &mail);
    for (size_t i = 0; i < mail.records.size();) {
        assert(i + 2 <= mail.records.size() && mail.records[i] > 0 && mail.records[i + 1] >= 2);
        const size_t size = static_cast<size_t>(mail.records[i + 1]);
        assert(size <= mail.records.size() - i - 2);
        nets->weight.push_back(mail.records[i]);
        nets->pins.insert(nets->pins.end(), mail.records.begin() + static_cast<int64_t>(i) + 2,
                          mail.records.begin() + static_cast<int64_t>(i + 2 + size));
        nets->ptr.push_back(static_cast<int64_t>(nets->pins.size()));
        i += size + 2;
    }
}

/* Below 0, 0 or above, as the pins of a come before those of b, are the same, or come after. */
static int compare_pins(const LooseNets &nets, size_t a, size_t b)
{
    const int64_t *const pins = nets.pins.data();
    const int64_t na = nets.ptr[a + 1] - nets.ptr[a], nb = nets.ptr[b + 1] - nets.ptr[b];
    if (na != nb) return na < nb ? -1 : 1;
    for (int64_t i = 0; i < na; i++) {
        const int64_t pa = pins[nets.ptr[a] + i], pb = pins[nets.ptr[b] + i];
        if (pa != pb) return pa < pb ? -1 : 1;
    }
    return 0;
}

static void merge_sorted(LooseNets *nets, const std::vector<uint32_t> &order)
{
    LooseNets merged;
    merged.ptr.reserve(order.size() + 1);
    merged.weight.reserve(order.size());
    merged.pins.reserve(nets->pins.size());
    for (size_t i = 0; i < order.size(); i++) {
        const size_t e = order[i];
        if (i > 0 && compare_pins(*nets, order[i - 1], e) == 0) {
            merged.weight.back() += nets->weight[e];
            continue;
        }
        merged.pins.insert(merged.pins.end(), nets->pins.begin() + nets->ptr[e],
                           nets->pins.begin() + nets->ptr[e + 1]);
        merged.ptr.push_back(static_cast<int64_t>(merged.pins.size()));
        merged.weight.push_back(nets->weight[e]);
    }
    assert(merged.weight.size() <= nets->weight.size());
    assert(merged.ptr.size() == merged.weight.size() + 1);
    *nets = std::move(merged);
}

void merge_nets_of_ranks(Ranks *ranks, LooseNets *nets)
{
    if (ranks->nranks > 1) send_nets(ranks, nets);
    if (nets->weight.size() > UINT32_MAX)
        give_up(ranks, "more than 4294967295 hyperedges on one rank; more ranks are needed");
    std::vector<NetKey> keys(nets->weight.size());
    for (size_t e = 0; e < keys.size(); e++) keys[e] = key_at(*nets, e);
    std::vector<uint32_t> order(keys.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        if (keys[a] < keys[b] || keys[b] < keys[a]) return keys[a] < keys[b];
        const int order_of_pins = compare_pins(*nets, a, b);
        return order_of_pins != 0 ? order_of_pins < 0 : a < b;
    });
    std::vector<NetKey>().swap(keys);
    merge_sorted(nets, order);
}
