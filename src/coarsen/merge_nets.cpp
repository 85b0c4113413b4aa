// SPDX-License-Identifier: MIT
/* coarsen/merge_nets.cpp: merging of identical hyperedges.
 *
 * Candidates for merging stand next to each other once the hyperedges are sorted by a key computed
 * from their pins; only neighbours of equal key are compared pin by pin. Keys that many different
 * hyperedges share, as sums of pins easily are, would make that quadratic: when the comparisons
 * have mostly been in vain, what is left of such a run is ordered by its pins.
 */
#include "coarsen/merge_nets.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "core/heavy_assert.h"
#include "core/prefetch.h"

void sort_pins(int size, int *pins)
{
    assert(size >= 0);
    if (size > 2)
        iintsort__(size, pins);
    else if (size == 2 && pins[0] > pins[1])
        std::swap(pins[0], pins[1]);
}

static int size_of(const NetLists *nets, int e)
{
    assert(0 <= e && e < nets->nnets && nets->netptr[e] <= nets->netptr[e + 1]);
    return nets->netptr[e + 1] - nets->netptr[e];
}

static const int *pins_of(const NetLists *nets, int e)
{
    return nets->netind + nets->netptr[e];
}

/* Copies n > 0 pins; the last two or four may be copied twice. Most hyperedges are too small to be
 * worth a call. */
static inline void copy_pins(int n, const int *from, int *to)
{
    constexpr int few = 2, more = 4;
    assert(n > 0);
    if (n >= more) {
        for (int j = 0; j < n - more; j += more) memcpy(to + j, from + j, more * sizeof *to);
        memcpy(to + n - more, from + n - more, more * sizeof *to);
    } else if (n >= few) {
        memcpy(to, from, few * sizeof *to);
        memcpy(to + n - few, from + n - few, few * sizeof *to);
    } else {
        to[0] = from[0];
    }
}

/* Whether n pins are the same; the last two or four may be compared twice. */
static inline bool same_pins(int n, const int *a, const int *b)
{
    constexpr int few = 2, more = 4;
    if (n >= more) {
        for (int j = 0; j < n - more; j += more)
            if (memcmp(a + j, b + j, more * sizeof *a) != 0) return false;
        return memcmp(a + n - more, b + n - more, more * sizeof *a) == 0;
    }
    if (n >= few)
        return memcmp(a, b, few * sizeof *a) == 0 &&
               memcmp(a + n - few, b + n - few, few * sizeof *a) == 0;
    return n == 0 || a[0] == b[0];
}

/* Appends hyperedge e to merged; returns its number there. */
static int append_net(const NetLists *nets, int e, NetLists *merged)
{
    assert(merged->nnets < nets->nnets);
    const int d = merged->nnets++, start = merged->netptr[d], size = size_of(nets, e);
    if (size > 0) copy_pins(size, pins_of(nets, e), merged->netind + start);
    merged->netptr[d + 1] = start + size;
    merged->netwgt[d] = nets->netwgt[e];
    return d;
}

/* Prefetches the pins and weights of coming hyperedges. */
[[gnu::always_inline]] static inline void prefetch_sorted(const NetLists *nets,
                                                          const KeyValue *pairs, int i)
{
    constexpr int ahead = 8;
    if (i + 2 * ahead >= nets->nnets) return;
    const int e = pairs[i + 2 * ahead].val;
    __builtin_prefetch(&nets->netptr[e]);
    __builtin_prefetch(&nets->netwgt[e]);
    __builtin_prefetch(&nets->netind[nets->netptr[pairs[i + ahead].val]]);
}

/* The end of the hyperedges from begin on that have its key and size. */
static int end_of_run(const NetLists *nets, const KeyValue *pairs, int begin)
{
    assert(0 <= begin && begin < nets->nnets);
    const int key = pairs[begin].key, size = size_of(nets, pairs[begin].val);
    int end = begin + 1;
    while (end < nets->nnets && pairs[end].key == key && size_of(nets, pairs[end].val) == size)
        end++;
    return end;
}

/* Orders the run by pins, equal ones as they are, and writes into first [run] for each place the
 * first place of the same pins; the run stays as it is, but its keys become the places. */
static void find_first_places(const NetLists *nets, KeyValue *pairs, int begin, int end, int *first)
{
    const int size = size_of(nets, pairs[begin].val);
    const auto in_order = [=](const KeyValue &a, const KeyValue &b) {
        const int *const p = pins_of(nets, a.val), *const q = pins_of(nets, b.val);
        const int same = static_cast<int>(std::mismatch(p, p + size, q).first - p);
        return same < size ? p[same] < q[same] : a.key < b.key;
    };
    for (int i = begin; i < end; i++) pairs[i].key = i;
    std::sort(pairs + begin, pairs + end, in_order);
    for (int i = begin, place = begin; i < end; i++) {
        if (i == begin ||
            !same_pins(size, pins_of(nets, pairs[i - 1].val), pins_of(nets, pairs[i].val)))
            place = pairs[i].key;
        first[pairs[i].key] = place;
    }
    std::sort(pairs + begin, pairs + end,
              [](const KeyValue &a, const KeyValue &b) { return a.key < b.key; });
}

/* Merges what is left, from begin on, of the hyperedges of its key and size; returns their end.
 * What was merged into earlier ones is marked in seen, and so are all that have the same pins as
 * it. */
static int merge_in_order(const NetLists *nets, KeyValue *pairs, int begin, NetLists *merged,
                          int *map, int *seen)
{
    const int end = end_of_run(nets, pairs, begin);
    assert(begin < end && end <= nets->nnets);
    int kept = begin; // those not seen stand first
    for (int i = begin; i < end; i++)
        if (seen[i] != 1) pairs[kept++] = pairs[i];
    find_first_places(nets, pairs, begin, kept, seen);
    assert(begin < kept && kept <= end);
    for (int i = begin; i < kept; i++) {
        const int e = pairs[i].val, first = seen[i];
        assert(begin <= first && first <= i);
        const int d = first == i ? append_net(nets, e, merged) : pairs[first].key;
        if (first != i) merged->netwgt[d] += nets->netwgt[e];
        if (map != nullptr) map[e] = d;
        pairs[i].key = d;
    }
    return end;
}

void merge_identical(const NetLists *nets, KeyValue *pairs, NetLists *merged, int *map, int *seen)
{
    constexpr int usual = 16; // comparisons in vain, for each hyperedge so far
    long long patience = 0;
    const bool far = nets->netptr[nets->nnets] >= PREFETCH_PINS;
    ikeysort__(nets->nnets, pairs);
    merged->nnets = 0;
    merged->netptr[0] = 0;
    for (int i = 0; i < nets->nnets; i++) {
        const int e = pairs[i].val, size = size_of(nets, e);
        if (far) prefetch_sorted(nets, pairs, i);
        patience += usual;
        if (seen[i] == 1) continue;
        if (patience < 0) {
            i = merge_in_order(nets, pairs, i, merged, map, seen) - 1;
            patience = 0;
            continue;
        }
        const int d = append_net(nets, e, merged);
        if (map != nullptr) map[e] = d;
        for (int j = i + 1; j < nets->nnets && pairs[j].key == pairs[i].key; j++) {
            if (seen[j] == 1) continue;
            const int f = pairs[j].val;
            if (size_of(nets, f) != size) break;
            assert(f != e);
            if (!same_pins(size, pins_of(nets, e), pins_of(nets, f))) {
                patience--;
                continue;
            }
            seen[j] = 1;
            merged->netwgt[d] += nets->netwgt[f];
            if (map != nullptr) map[f] = d;
        }
    }
    HEAVY_ASSERT(net_lists_ok(merged));
}
