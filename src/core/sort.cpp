// SPDX-License-Identifier: MIT
/* core/sort.cpp: counting sort, and one quicksort for every element type and order.
 *
 * The quicksort partitions down to ranges of at most 21 elements, each of which is then put in
 * order without exchanging equal keys. Its exchanges leave a definite order among equal keys;
 * partitions are reproducible only as long as that order stays as it is. Where the order is the
 * same whatever the method, another one takes over before the work becomes quadratic: a merge from
 * the insertion, which keeps equal keys in their order; a sort of the C++ library from the
 * quicksort, if no two keys are equal or the elements are nothing but keys.
 */
#include "core/sort.h"

#include <cassert>
#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "core/memory.h"
#include "core/vectors.h"

void BucketSortKeysInc(int n, int max, const int *keys, const int *tperm, int *perm)
{
    int *counts = ismalloc__(static_cast<size_t>(max) + 2, 0, "BucketSortKeysInc: counts");
    for (int i = 0; i < n; i++) {
        assert(0 <= keys[i] && keys[i] <= max);
        counts[keys[i]]++;
    }
    counts_to_starts(max + 1, counts);
    for (int j = 0; j < n; j++) perm[counts[keys[tperm[j]]]++] = tperm[j];
    free(counts);
}

struct IncreasingInt {
    using Element = int;
    static constexpr int LAST = INT_MAX; // before no key
    static int key(int x) { return x; }
    static bool before(int a, int b) { return a < b; }
};

struct IncreasingKey {
    using Element = KeyValue;
    static constexpr int LAST = INT_MAX;
    static int key(const KeyValue &x) { return x.key; }
    static bool before(int a, int b) { return a < b; }
};

struct DecreasingKey {
    using Element = KeyValue;
    static constexpr int LAST = INT_MIN;
    static int key(const KeyValue &x) { return x.key; }
    static bool before(int a, int b) { return a > b; }
};

constexpr int SMALL_SPAN = 20; // a range whose last - first is no more is not split again

template <class Order>
static bool precedes(const typename Order::Element &a, const typename Order::Element &b)
{
    return Order::before(Order::key(a), Order::key(b));
}

/* Puts the first smallest (in Order) of a[0..m-1] first, as the sentinel of the insertion. */
template <class Order> static void place_sentinel(int m, typename Order::Element *a)
{
    assert(m > 0);
    int best = 0;
    for (int i = 1; i < m; i++)
        if (precedes<Order>(a[i], a[best])) best = i;
    std::swap(a[0], a[best]);
}

/* Orders a[low], the middle and a[high]; returns the median's key. */
template <class Order> static int median_of_three(typename Order::Element *a, int low, int high)
{
    assert(low < high);
    const int middle = low + (high - low) / 2;
    if (precedes<Order>(a[middle], a[low])) std::swap(a[middle], a[low]);
    if (precedes<Order>(a[high], a[middle])) {
        std::swap(a[middle], a[high]);
        if (precedes<Order>(a[middle], a[low])) std::swap(a[middle], a[low]);
    }
    return Order::key(a[middle]);
}

/* Orders a[0..n-1], a range that is not split again, equal keys as they are. Each element's place
 * is the number of keys before it: counting them all, several at a time, costs less than
 * mispredicting how far each one moves. */
template <class Order> static void order_range(int n, typename Order::Element *a)
{
    constexpr int most = SMALL_SPAN + 4; // a multiple of four
    int keys[most], placed[most];        // placed[i]: elements put at i and behind it, of equal key
    typename Order::Element ordered[most];
    assert(0 <= n && n <= SMALL_SPAN + 1);
    for (int i = 0; i < most; i++) {
        keys[i] = Order::LAST;
        placed[i] = 0;
    }
    for (int i = 0; i < n; i++) keys[i] = Order::key(a[i]);
    for (int i = 0; i < n; i++) {
        int rank = 0;
        for (int j = 0; j < most; j++) rank += Order::before(keys[j], keys[i]);
        assert(rank + placed[rank] < n);
        ordered[rank + placed[rank]++] = a[i];
    }
    std::copy(ordered, ordered + n, a);
}

/* The same for the range at the start of the array, after its first smallest element has been
 * exchanged with a[0]. */
template <class Order> static void order_first_range(int n, typename Order::Element *a)
{
    place_sentinel<Order>(n, a);
    order_range<Order>(n, a);
}

constexpr int BLOCK = 64; // most elements compared at a time, at either end

/* Where in a block the elements stand that must cross to the other end. */
struct Crossing {
    uint8_t at[BLOCK];
    int n, used;
    int size; // of the block
};

/* Exchanges the elements at l and above with those at r and below that are on the wrong side of
 * the pivot, in pairs from the ends inwards, until all are compared. A comparison with
 * the pivot can't be predicted, so its result is added up, not branched on. Source: Edelkamp &
 * Weiss, BlockQuicksort, ESA 2016. */
template <class Order>
static void partition_blocks(typename Order::Element *a, int pivot, int *l, int *r)
{
    Crossing left = {}, right = {};
    int low = *l, high = *r; // start of the left block, end of the right one
    for (;;) {
        const int rest = high - low + 1 - left.size - right.size; // not compared
        const bool both = left.size == 0 && right.size == 0;
        assert(rest >= 0); // the blocks do not overlap
        if (rest == 0) break;
        if (left.size == 0) {
            left.size = std::min(both ? (rest + 1) / 2 : rest, BLOCK);
            left.used = left.n = 0;
            for (int i = 0; i < left.size; i++) {
                left.at[left.n] = static_cast<uint8_t>(i);
                left.n += !Order::before(Order::key(a[low + i]), pivot);
            }
        }
        if (right.size == 0) {
            right.size = std::min(both ? rest / 2 : rest, BLOCK);
            right.used = right.n = 0;
            for (int i = 0; i < right.size; i++) {
                right.at[right.n] = static_cast<uint8_t>(i);
                right.n += !Order::before(pivot, Order::key(a[high - i]));
            }
        }
        const int n = std::min(left.n - left.used, right.n - right.used);
        assert(n >= 0 && left.n <= left.size && right.n <= right.size);
        for (int i = 0; i < n; i++)
            std::swap(a[low + left.at[left.used++]], a[high - right.at[right.used++]]);
        if (left.used == left.n) {
            low += left.size;
            left.size = 0;
        }
        if (right.used == right.n) {
            high -= right.size;
            right.size = 0;
        }
    }
    *l = left.size > 0 ? low + left.at[left.used] : low;
    *r = right.size > 0 ? high - right.at[right.used] : high;
}

/* Splits a[low..high]: on return a[low..*right] goes before a[*left..high]. */
template <class Order>
static void partition_range(typename Order::Element *a, int low, int high, int *left, int *right)
{
    const int pivot = median_of_three<Order>(a, low, high);
    int l = low + 1, r = high - 1;
    partition_blocks<Order>(a, pivot, &l, &r);
    while (l <= r) {
        while (Order::before(Order::key(a[l]), pivot)) l++;
        while (Order::before(pivot, Order::key(a[r]))) r--;
        if (l < r) {
            std::swap(a[l++], a[r--]);
        } else if (l == r) {
            l++;
            r--;
        }
    }
    *left = l;
    *right = r;
    assert(low < l && r < high && r < l);
}

/* Whether a[low..high] is to be split again; orders it if not. */
template <class Order> static bool is_left_to_split(typename Order::Element *a, int low, int high)
{
    if (high - low > SMALL_SPAN) return true;
    if (low == 0)
        order_first_range<Order>(high + 1, a);
    else
        order_range<Order>(high - low + 1, a + low);
    return false;
}

/* Elements that partitioning n of them looks at before it counts as lopsided: well over twice what
 * is usual. */
static long long most_work(int n)
{
    return 3LL * n * std::bit_width(static_cast<unsigned>(n));
}

/* Sorts a[0..n-1] in one go; false, and nothing done, if its order depends on the method. */
static bool sort_at_once(IncreasingInt, int n, int *a)
{
    std::sort(a, a + n);
    return true;
}

template <class Order> static bool sort_at_once(Order, int n, KeyValue *a)
{
    KeyValue *sorted = alloc_array<KeyValue>(static_cast<size_t>(n), "quicksort: sorted");
    std::copy(a, a + n, sorted);
    std::sort(sorted, sorted + n, precedes<Order>);
    bool distinct = true;
    for (int i = 1; i < n && distinct; i++) distinct = precedes<Order>(sorted[i - 1], sorted[i]);
    if (distinct) std::copy(sorted, sorted + n, a);
    free(sorted);
    return distinct;
}

template <class Order> static void quicksort(int n, typename Order::Element *a)
{
    struct Range {
        int low, high;
    } stack[32]; // the smaller range goes first, so each entry at least halves the next
    int depth = 0, low = 0, high = n - 1;
    if (n < 1) return;
    if (n <= SMALL_SPAN) { // 21 elements are split once
        order_first_range<Order>(n, a);
        return;
    }
    for (long long work = most_work(n);; work -= high - low) {
        int left, right;
        if (work < 0 && sort_at_once(Order(), n, a)) return;
        if (work < 0) work = LLONG_MAX; // it is as long as it is
        partition_range<Order>(a, low, high, &left, &right);
        const bool lower = is_left_to_split<Order>(a, low, right);
        const bool upper = is_left_to_split<Order>(a, left, high);
        if (lower && upper) {
            if (right - low > high - left) {
                assert(depth < 32);
                stack[depth++] = {low, right};
                low = left;
            } else {
                stack[depth++] = {left, high};
                assert(depth <= 32);
                high = right;
            }
        } else if (lower) {
            high = right;
        } else if (upper) {
            low = left;
        } else {
            if (depth == 0) return;
            depth--;
            low = stack[depth].low;
            high = stack[depth].high;
        }
    }
}

void iintsort__(int n, int *a)
{
    quicksort<IncreasingInt>(n, a);
}

void dkeysort__(int n, KeyValue *pairs)
{
    quicksort<DecreasingKey>(n, pairs);
}

void ikeysort__(int n, KeyValue *pairs)
{
    int falls = 0;
    for (int i = 0; i < n - 1; i++) falls += pairs[i].key > pairs[i + 1].key;
    if (0.05 * n > falls)
        ikeysort2__(n, pairs);
    else
        quicksort<IncreasingKey>(n, pairs);
}

/* Inserts pairs[2..n-1] one by one: pairs[0] is before or equal to all, so no bound is tested.
 * Gives up, with all pairs in some order that keeps equal keys in theirs, once most pairs have been
 * moved; true if it came to the end. */
static bool insert_pairs(int n, KeyValue *pairs, long long most)
{
    for (int i = 2; i < n && most >= 0; i++) {
        const KeyValue moving = pairs[i];
        int j = i;
        for (; moving.key < pairs[j - 1].key; j--) pairs[j] = pairs[j - 1];
        pairs[j] = moving;
        most -= i - j;
    }
    return most >= 0;
}

/* The end of the run of keys that do not fall from begin on. */
static int end_of_run(int n, const KeyValue *pairs, int begin)
{
    assert(0 <= begin && begin < n);
    int end = begin + 1;
    while (end < n && pairs[end - 1].key <= pairs[end].key) end++;
    return end;
}

/* Merges from[begin..middle-1] and from[middle..end-1] into to[begin..end-1]; of equal keys the
 * former go first. */
static void merge_runs(const KeyValue *from, int begin, int middle, int end, KeyValue *to)
{
    assert(begin <= middle && middle <= end && from != to);
    int i = begin, j = middle;
    for (int k = begin; k < end; k++)
        to[k] = j == end || (i < middle && from[i].key <= from[j].key) ? from[i++] : from[j++];
}

/* Merges the runs of from in pairs; returns how many runs to consists of. */
static int merge_neighbours(int n, const KeyValue *from, KeyValue *to)
{
    int nruns = 0;
    for (int begin = 0; begin < n; nruns++) {
        const int middle = end_of_run(n, from, begin);
        const int end = middle < n ? end_of_run(n, from, middle) : n;
        merge_runs(from, begin, middle, end, to);
        begin = end;
    }
    return nruns;
}

/* Sorts by merging what is in order already, equal keys as they are. Source: Knuth, The Art of
 * Computer Programming 3, 1973, 5.2.4 (natural merge). */
static void sort_by_merging(int n, KeyValue *pairs)
{
    KeyValue *const other = alloc_array<KeyValue>(static_cast<size_t>(n), "ikeysort2: merged");
    KeyValue *from = pairs, *to = other;
    while (merge_neighbours(n, from, to) > 1) std::swap(from, to);
    if (to == other) std::copy(other, other + n, pairs);
    free(other);
}

void ikeysort2__(int n, KeyValue *pairs)
{
    constexpr int most_moves = 16; // a pair on average: then merging is no slower
    if (n < 1) return;
    place_sentinel<IncreasingKey>(n, pairs);
    if (!insert_pairs(n, pairs, 1LL * most_moves * n)) sort_by_merging(n, pairs);
}
