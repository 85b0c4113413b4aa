/* SPDX-License-Identifier: MIT */
/* core/small_sort.h: sorting of a few numbers by a network, without a branch.
 *
 * A network compares the same places whatever the numbers are, here those of Batcher's odd-even
 * merge sort. For 8 numbers it has 19 comparators in 6 layers:
 *
 *     0 --o-----o-----------o----------------- 0
 *     1 --o--o--+-----o-----+--o-----------... 1     each o joins two places, whose numbers
 *     2 -----+--o--...                               are put in order
 *
 * The order of chance in small lists makes a comparison sort mispredict every other comparison.
 * Source: Batcher, Sorting networks and their applications, AFIPS SJCC 1968.
 */
#ifndef ZORPEL_CORE_SMALL_SORT_H
#define ZORPEL_CORE_SMALL_SORT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

/* The numbers at these places are put in order. */
struct Comparator {
    int low, high;
};

/* Calls compare for each comparator, layer by layer. */
template <typename Compare> constexpr void for_each_comparator(int size, Compare compare)
{
    for (int p = 1; p < size; p *= 2)
        for (int k = p; k > 0; k /= 2)
            for (int j = k % p; j + k < size; j += 2 * k)
                for (int i = j; i < j + k && i + k < size; i++)
                    if (i / (2 * p) == (i + k) / (2 * p)) compare(Comparator{i, i + k});
}

template <int Size> constexpr auto sorting_network()
{
    constexpr size_t ncomparators = [] {
        size_t n = 0;
        for_each_comparator(Size, [&](Comparator) { n++; });
        return n;
    }();
    std::array<Comparator, ncomparators> network{};
    size_t n = 0;
    for_each_comparator(Size, [&](Comparator c) { network[n++] = c; });
    return network;
}

/* Puts two numbers in order; of std::min and std::max together g++ makes a branch. */
inline void put_in_order(int &low, int &high)
{
    const int least = std::min(low, high), both = low ^ high;
    low = least;
    high = both ^ least;
}

template <int Size, size_t... I>
[[gnu::always_inline]] inline void sort_by_network(int *numbers, std::index_sequence<I...>)
{
    constexpr auto network = sorting_network<Size>();
    (put_in_order(numbers[network[I].low], numbers[network[I].high]), ...);
}

/* Sorts numbers[0..Size-1] increasingly. */
template <int Size> [[gnu::always_inline]] inline void small_sort(int *numbers)
{
    sort_by_network<Size>(numbers, std::make_index_sequence<sorting_network<Size>().size()>());
}

#endif
