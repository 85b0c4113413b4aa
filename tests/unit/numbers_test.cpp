// SPDX-License-Identifier: MIT
/* tests/unit/numbers_test.cpp: conversions whose rounding decides results. */
#include "core/numbers.h"
#include "spare/dense_vectors.h"

#include <gtest/gtest.h>

#include <limits>

/* The compiler saturates what it converts itself, the processor does not: so it may not know x. */
static int truncated(double x)
{
    volatile const double unknown = x;
    return trunc_int(unknown);
}

TEST(Numbers, reals_are_truncated_toward_zero)
{
    EXPECT_EQ(truncated(2.999), 2);
    EXPECT_EQ(truncated(-2.999), -2);
    EXPECT_EQ(truncated(0.0), 0);
    EXPECT_EQ(truncated(-0.5), 0);
}

TEST(Numbers, the_ends_of_the_range_are_kept_and_what_lies_beyond_saturates)
{
    EXPECT_EQ(truncated(2147483647.0), INT_MAX);
    EXPECT_EQ(truncated(2147483646.5), INT_MAX - 1);
    EXPECT_EQ(truncated(2147483647.5), INT_MAX);
    EXPECT_EQ(truncated(2147483648.0), INT_MAX);
    EXPECT_EQ(truncated(1e300), INT_MAX);
    EXPECT_EQ(truncated(-2147483648.0), INT_MIN);
    EXPECT_EQ(truncated(-2147483648.5), INT_MIN);
    EXPECT_EQ(truncated(-2147483649.0), INT_MIN);
    EXPECT_EQ(truncated(-1e300), INT_MIN);
}

TEST(Numbers, what_is_negative_becomes_0)
{
    for (const int x : {INT_MIN, INT_MIN + 1, -2, -1, 0}) EXPECT_EQ(at_least_0(x), 0);
    for (const int x : {1, 2, INT_MAX - 1, INT_MAX}) EXPECT_EQ(at_least_0(x), x);
}

TEST(Numbers, infinity_saturates_and_not_a_number_gives_0)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(truncated(infinity), INT_MAX);
    EXPECT_EQ(truncated(-infinity), INT_MIN);
    EXPECT_EQ(truncated(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Numbers, the_difference_is_relative_to_the_larger_number)
{
    EXPECT_EQ(RelDiff__(4.0f, 3.0f), 0.25f);
    EXPECT_EQ(RelDiff__(3.0f, 4.0f), 0.25f);
    EXPECT_EQ(RelDiff__(2.0f, 2.0f), 0.0f);
}
