// SPDX-License-Identifier: MIT
/* tests/unit/small_sort_test.cpp: sorting networks, for every input of zeros and ones. A network
 * that sorts these sorts any numbers.
 */
#include "core/small_sort.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

template <int Size> static void sort_all_zeros_and_ones()
{
    for (unsigned bits = 0; bits < 1u << Size; bits++) {
        int numbers[Size], ones = 0;
        for (int i = 0; i < Size; i++) ones += numbers[i] = static_cast<int>(bits >> i & 1);
        small_sort<Size>(numbers);
        for (int i = 0; i < Size; i++)
            ASSERT_EQ(numbers[i], i >= Size - ones) << Size << ' ' << bits;
    }
}

TEST(SmallSort, networks_sort_every_input_of_zeros_and_ones)
{
    sort_all_zeros_and_ones<2>();
    sort_all_zeros_and_ones<3>();
    sort_all_zeros_and_ones<4>();
    sort_all_zeros_and_ones<7>();
    sort_all_zeros_and_ones<8>();
    sort_all_zeros_and_ones<16>();
}

TEST(SmallSort, numbers_of_the_whole_range_are_put_in_order_and_none_is_lost)
{
    std::mt19937 draw(3);
    for (int round = 0; round < 1000; round++) {
        std::vector<int> numbers(16);
        for (int &number : numbers)
            number = round % 3 == 0 ? static_cast<int>(draw() % 4) : static_cast<int>(draw());
        if (round % 7 == 0) numbers[0] = INT_MAX, numbers[5] = INT_MIN;
        std::vector<int> expected = numbers;
        std::sort(expected.begin(), expected.end());
        small_sort<16>(numbers.data());
        ASSERT_EQ(numbers, expected);
    }
}

TEST(SmallSort, networks_are_those_of_odd_even_merge_sort)
{
    EXPECT_EQ(sorting_network<2>().size(), 1u);
    EXPECT_EQ(sorting_network<4>().size(), 5u);
    EXPECT_EQ(sorting_network<8>().size(), 19u);
    EXPECT_EQ(sorting_network<16>().size(), 63u);
}
