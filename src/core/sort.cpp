/* core/sort.cpp: counting sort, and one quicksort for every element type and order.
 *
 * The quicksort partitions down to blocks of at most 21 elements, then one insertion pass over the
 * whole array finishes them. Its exchanges leave a definite order among equal keys; partitions are
 * reproducible only as long as that order stays as it is.
 */
#include "core/sort.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "core/memory.h"
#include "core/vectors.h"

void BucketSortKeysInc(int n, int max, const int *keys, const int *tperm, int *perm)
{
    int *counts = ismalloc__(static_cast<size_t>(max) + 2, 0, "BucketSortKeysInc: counts");
    for (int i = 0; i < n; i++) counts[keys[i]]++;
    counts_to_starts(max + 1, counts);
    for (int j = 0; j < n; j++) perm[counts[keys[tperm[j]]]++] = tperm[j];
    free(counts);
}

struct IncreasingInt {
    using Element = int;
    static int key(int x) { return x; }
    static bool before(int a, int b) { return a < b; }
};

struct IncreasingKey {
    using Element = KeyValue;
    static int key(const KeyValue &x) { return x.key; }
    static bool before(int a, int b) { return a < b; }
};

struct DecreasingKey {
    using Element = KeyValue;
    static int key(const KeyValue &x) { return x.key; }
    static bool before(int a, int b) { return a > b; }
};

constexpr int SMALL_SPAN =
    20; // a range whose last - first is no more is left to the insertion pass

template <class Order>
static bool precedes(const typename Order::Element &a, const typename Order::Element &b)
{
    return Order::before(Order::key(a), Order::key(b));
}

/* Puts the first smallest (in Order) of a[0..m-1] first, as the sentinel of the insertion. */
template <class Order> static void place_sentinel(int m, typename Order::Element *a)
{
    int best = 0;
    for (int i = 1; i < m; i++)
        if (precedes<Order>(a[i], a[best])) best = i;
    std::swap(a[0], a[best]);
}

/* Inserts a[start..n-1] one by one; a[0] is before or equal to all, so no bound is tested. */
template <class Order> static void insert_from(int start, int n, typename Order::Element *a)
{
    for (int i = start; i < n; i++) {
        const typename Order::Element moving = a[i];
        int j = i;
        for (; precedes<Order>(moving, a[j - 1]); j--) a[j] = a[j - 1];
        a[j] = moving;
    }
}

/* Orders a[low], the middle and a[high]; returns the median's key. */
template <class Order> static int median_of_three(typename Order::Element *a, int low, int high)
{
    const int middle = low + (high - low) / 2;
    if (precedes<Order>(a[middle], a[low])) std::swap(a[middle], a[low]);
    if (precedes<Order>(a[high], a[middle])) {
        std::swap(a[middle], a[high]);
        if (precedes<Order>(a[middle], a[low])) std::swap(a[middle], a[low]);
    }
    return Order::key(a[middle]);
}

constexpr int BLOCK = 64; // elements compared at a time, at either end

/* Where in a block the elements stand that must cross to the other end. */
struct Crossing {
    uint8_t at[BLOCK];
    int n, used;
};

/* Exchanges the elements at l and above with those at r and below that are on the wrong side of
 * the pivot, in pairs from the ends inwards, while there are whole blocks at both ends. Nobody can
 * foresee a comparison with the pivot, so its result is added up, not branched on.
 * Source: Edelkamp & Weiss, BlockQuicksort, ESA 2016. */
template <class Order>
static void partition_blocks(typename Order::Element *a, int pivot, int *l, int *r)
{
    Crossing left = {}, right = {};
    int low = *l, high = *r; // start of the left block, end of the right one
    while (high - low >= 2 * BLOCK) {
        if (left.used == left.n) {
            left.used = left.n = 0;
            for (int i = 0; i < BLOCK; i++) {
                left.at[left.n] = static_cast<uint8_t>(i);
                left.n += !Order::before(Order::key(a[low + i]), pivot);
            }
        }
        if (right.used == right.n) {
            right.used = right.n = 0;
            for (int i = 0; i < BLOCK; i++) {
                right.at[right.n] = static_cast<uint8_t>(i);
                right.n += !Order::before(pivot, Order::key(a[high - i]));
            }
        }
        const int n = std::min(left.n - left.used, right.n - right.used);
        for (int i = 0; i < n; i++)
            std::swap(a[low + left.at[left.used++]], a[high - right.at[right.used++]]);
        if (left.used == left.n) low += BLOCK;
        if (right.used == right.n) high -= BLOCK;
    }
    *l = left.used < left.n ? low + left.at[left.used] : low;
    *r = right.used < right.n ? high - right.at[right.used] : high;
}

/* Splits a[low..high]: on return a[low..*right] goes before a[*left..high]. */
template <class Order>
static void partition_range(typename Order::Element *a, int low, int high, int *left, int *right)
{
    const int pivot = median_of_three<Order>(a, low, high);
    int l = low + 1, r = high - 1;
    partition_blocks<Order>(a, pivot, &l, &r);
    do {
        while (Order::before(Order::key(a[l]), pivot)) l++;
        while (Order::before(pivot, Order::key(a[r]))) r--;
        if (l < r) {
            std::swap(a[l++], a[r--]);
        } else if (l == r) {
            l++;
            r--;
            break;
        }
    } while (l <= r);
    *left = l;
    *right = r;
}

template <class Order> static void partition_all(int n, typename Order::Element *a)
{
    struct Range {
        int low, high;
    } stack[32]; // the smaller range goes first, so each entry at least halves the next
    int depth = 0, low = 0, high = n - 1;
    for (;;) {
        int left, right;
        partition_range<Order>(a, low, high, &left, &right);
        const bool lower_large = right - low > SMALL_SPAN, upper_large = high - left > SMALL_SPAN;
        if (lower_large && upper_large) {
            if (right - low > high - left) {
                stack[depth++] = {low, right};
                low = left;
            } else {
                stack[depth++] = {left, high};
                high = right;
            }
        } else if (lower_large) {
            high = right;
        } else if (upper_large) {
            low = left;
        } else {
            if (depth == 0) return;
            depth--;
            low = stack[depth].low;
            high = stack[depth].high;
        }
    }
}

template <class Order> static void quicksort(int n, typename Order::Element *a)
{
    if (n < 1) return;
    if (n > SMALL_SPAN) partition_all<Order>(n, a);
    place_sentinel<Order>(n < SMALL_SPAN + 1 ? n : SMALL_SPAN + 1, a);
    insert_from<Order>(1, n, a);
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

void ikeysort2__(int n, KeyValue *pairs)
{
    if (n < 1) return;
    place_sentinel<IncreasingKey>(n, pairs);
    insert_from<IncreasingKey>(2, n, pairs);
}
