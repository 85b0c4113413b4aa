// SPDX-License-Identifier: MIT
/* tests/unit/vectors_test.cpp: short loops over arrays. */
#include "core/vectors.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "support.h"
#include "spare/dense_vectors.h"

TEST(Vectors, the_sum_of_no_entries_is_0)
{
    const int x[] = {5};
    EXPECT_EQ(iasum__(0, x), 0);
    EXPECT_EQ(iasum__(-3, x), 0);
    EXPECT_EQ(iasum__(0, nullptr), 0);
    EXPECT_EQ(sum_wide(0, nullptr), 0);
}

TEST(Vectors, sums_take_every_entry_and_signs)
{
    const int x[] = {5, -7, 11};
    EXPECT_EQ(iasum__(3, x), 9);
    EXPECT_EQ(sum_wide(3, x), 9);
}

TEST(Vectors, a_narrow_sum_wraps_and_a_wide_one_does_not)
{
    const int x[] = {INT_MAX, INT_MAX};
    EXPECT_EQ(iasum__(2, x), -2);
    EXPECT_EQ(sum_wide(2, x), 4294967294LL);
}

TEST(Vectors, filling_and_copying_return_the_array_written)
{
    int x[4] = {9, 9, 9, 9}, y[4] = {0, 0, 0, 0};
    EXPECT_EQ(iset__(3, 2, x), x);
    EXPECT_EQ(to_ints(x, 4), (std::vector<int>{2, 2, 2, 9}));
    EXPECT_EQ(icopy__(3, x, y), y);
    EXPECT_EQ(to_ints(y, 4), (std::vector<int>{2, 2, 2, 0}));
    EXPECT_EQ(iset__(0, 2, nullptr), nullptr);
}

TEST(Vectors, the_first_of_equal_extremes_is_found)
{
    const int x[] = {3, 8, 1, 8, 1};
    EXPECT_EQ(iamax__(5, x), 1);
    EXPECT_EQ(iamin__(5, x), 2);
}

TEST(Vectors, extremes_at_the_last_place_and_below_zero_are_found)
{
    const int x[] = {-4, -9, -2};
    EXPECT_EQ(iamax__(3, x), 2);
    const int y[] = {-4, -3, -9};
    EXPECT_EQ(iamin__(3, y), 2);
}

TEST(Vectors, the_largest_entry_may_stand_anywhere_and_be_negative)
{
    std::vector<int> x(37, -5);
    for (size_t i = 0; i < x.size(); i++) {
        x[i] = -2;
        EXPECT_EQ(largest_of(37, x.data()), -2);
        EXPECT_EQ(largest_of(static_cast<int>(i), x.data()), i > 0 ? -5 : 0);
        x[i] = -5;
    }
}

TEST(Vectors, the_extreme_of_less_than_two_entries_is_at_0)
{
    const int x[] = {3};
    EXPECT_EQ(iamax__(1, x), 0);
    EXPECT_EQ(iamin__(1, x), 0);
    EXPECT_EQ(iamax__(0, nullptr), 0);
    EXPECT_EQ(iamin__(0, nullptr), 0);
}

TEST(Vectors, counts_become_starts_and_advanced_starts_become_starts_again)
{
    int ptr[] = {2, 0, 3, -99};
    counts_to_starts(3, ptr);
    EXPECT_EQ(to_ints(ptr, 4), (std::vector<int>{0, 2, 2, 5}));
    int ends[] = {2, 2, 5, 5};
    ends_to_starts(3, ends);
    EXPECT_EQ(to_ints(ends, 4), (std::vector<int>{0, 2, 2, 5}));
    int none[] = {7};
    counts_to_starts(0, none);
    EXPECT_EQ(none[0], 0);
}

TEST(Vectors, the_real_sums_keep_signs)
{
    const float x[] = {1.5f, -4.0f};
    const double y[] = {1.5, -4.0};
    EXPECT_EQ(sasum__(2, x), -2.5f);
    EXPECT_EQ(dasum__(2, y), -2.5);
    EXPECT_EQ(sasum__(0, nullptr), 0.0f);
}

TEST(Vectors, the_linear_algebra_kernels_have_their_usual_meanings)
{
    const double x[] = {3, 4};
    double y[] = {1, 2};
    EXPECT_EQ(ddot__(2, x, y), 11);
    EXPECT_EQ(dnrm2__(2, x), 5);
    daxpy__(2, 2, x, y);
    EXPECT_EQ(y[0], 7);
    EXPECT_EQ(y[1], 10);
    dscal__(2, 0.5, y);
    EXPECT_EQ(y[0], 3.5);
    EXPECT_EQ(y[1], 5);
    double z[] = {0, 0};
    dcopy__(2, x, z);
    dswap__(2, y, z);
    EXPECT_EQ(y[0], 3);
    EXPECT_EQ(y[1], 4);
    EXPECT_EQ(z[0], 3.5);
    EXPECT_EQ(z[1], 5);
}
