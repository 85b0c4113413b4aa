// SPDX-License-Identifier: MIT
/* tests/unit/sort_test.cpp: the sorts of coarsening. Their order among equal keys is compared with
 * a twin in tests/model/sort_model_test.cpp.
 */
#include "core/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <numeric>

#include "core/heavy_assert.h"
#include "lopsided.h"
#include "support.h"

static std::vector<KeyValue> pairs_of(const std::vector<int> &keys)
{
    std::vector<KeyValue> pairs;
    for (int key : keys) pairs.push_back({key, static_cast<int>(pairs.size())});
    return pairs;
}

static std::vector<int> keys_of(const std::vector<KeyValue> &pairs)
{
    std::vector<int> keys;
    for (const KeyValue &pair : pairs) keys.push_back(pair.key);
    return keys;
}

static std::vector<int> values_of(const std::vector<KeyValue> &pairs)
{
    std::vector<int> values;
    for (const KeyValue &pair : pairs) values.push_back(pair.val);
    return values;
}

static std::vector<int> bucket_sorted(int max, const std::vector<int> &keys,
                                      const std::vector<int> &tperm)
{
    std::vector<int> perm(keys.size(), -1);
    BucketSortKeysInc(static_cast<int>(keys.size()), max, keys.data(), tperm.data(), perm.data());
    return perm;
}

TEST(Sort, bucket_sort_with_equal_keys_returns_the_order_given)
{
    const std::vector<int> tperm = {3, 0, 4, 1, 2};
    EXPECT_EQ(bucket_sorted(7, {7, 7, 7, 7, 7}, tperm), tperm);
    EXPECT_EQ(bucket_sorted(0, {0, 0, 0, 0, 0}, tperm), tperm);
}

TEST(Sort, bucket_sort_orders_by_key_and_then_by_the_order_given)
{
    EXPECT_EQ(bucket_sorted(3, {2, 0, 3, 0, 2}, {4, 3, 2, 1, 0}),
              (std::vector<int>{3, 1, 4, 0, 2}));
}

TEST(Sort, bucket_sort_of_nothing_does_nothing)
{
    BucketSortKeysInc(0, 0, nullptr, nullptr, nullptr);
    BucketSortKeysInc(0, 5, nullptr, nullptr, nullptr);
}

TEST(Sort, sorts_of_no_elements_and_of_one_do_nothing)
{
    KeyValue one = {4, 8};
    int single = 6;
    for (int n : {0, 1}) {
        iintsort__(n, &single);
        ikeysort__(n, &one);
        ikeysort2__(n, &one);
        dkeysort__(n, &one);
    }
    EXPECT_EQ(single, 6);
    EXPECT_EQ(one.key, 4);
    EXPECT_EQ(one.val, 8);
}

TEST(Sort, decreasing_keys_1_3_2_become_3_2_1)
{
    std::vector<KeyValue> pairs = pairs_of({1, 3, 2});
    dkeysort__(3, pairs.data());
    EXPECT_EQ(keys_of(pairs), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(values_of(pairs), (std::vector<int>{1, 2, 0}));
}

TEST(Sort, a_hundred_sorted_pairs_stay_as_they_are_equal_keys_included)
{
    std::vector<int> keys(100);
    for (size_t i = 0; i < keys.size(); i++) keys[i] = static_cast<int>(i / 3);
    std::vector<KeyValue> pairs = pairs_of(keys);
    ikeysort__(100, pairs.data());
    EXPECT_EQ(keys_of(pairs), keys);
    for (int i = 0; i < 100; i++) EXPECT_EQ(pairs[static_cast<size_t>(i)].val, i);
}

/* 100 keys that fall nfalls times: blocks of rising keys with equal ones among them. */
static std::vector<KeyValue> with_falls(int nfalls)
{
    std::vector<int> keys;
    const int length = 100 / (nfalls + 1);
    for (int i = 0; i < 100; i++)
        keys.push_back(i / length <= nfalls ? i % length / 2 : i % length / 2 + 100);
    return pairs_of(keys);
}

static bool same_order(const std::vector<KeyValue> &a, const std::vector<KeyValue> &b)
{
    return keys_of(a) == keys_of(b) && values_of(a) == values_of(b);
}

TEST(Sort, fewer_falls_than_a_twentieth_go_to_insertion_and_a_twentieth_does_not)
{
    for (int nfalls : {4, 5}) {
        std::vector<KeyValue> sorted = with_falls(nfalls), inserted = sorted;
        int falls = 0;
        for (size_t i = 0; i + 1 < sorted.size(); i++) falls += sorted[i].key > sorted[i + 1].key;
        ASSERT_EQ(falls, nfalls);
        ikeysort__(100, sorted.data());
        ikeysort2__(100, inserted.data());
        EXPECT_EQ(keys_of(sorted), keys_of(inserted));
        EXPECT_EQ(same_order(sorted, inserted), nfalls == 4) << nfalls << " falls";
    }
}

TEST(Sort, insertion_puts_the_first_smallest_pair_first_and_keeps_the_order_of_the_rest)
{
    std::vector<KeyValue> pairs = pairs_of({5, 1, 3, 1, 5});
    ikeysort2__(5, pairs.data()); // pairs 0 and 1 change places, then insertion
    EXPECT_EQ(keys_of(pairs), (std::vector<int>{1, 1, 3, 5, 5}));
    EXPECT_EQ(values_of(pairs), (std::vector<int>{1, 3, 2, 0, 4}));
}

TEST(Sort, twenty_one_and_twenty_two_elements_are_sorted_like_all_others)
{
    for (int n : {2, 19, 20, 21, 22, 23, 41, 42, 43, 500}) {
        const size_t size = static_cast<size_t>(n);
        for (unsigned seed = 1; seed < 20; seed++) {
            std::vector<int> a = random_ints(seed, n, -5, n), expected = a;
            std::sort(expected.begin(), expected.end());
            std::vector<KeyValue> rising = pairs_of(a), falling = rising, inserted = rising;
            iintsort__(n, a.data());
            EXPECT_EQ(a, expected) << n << " elements";
            ikeysort__(n, rising.data());
            EXPECT_EQ(keys_of(rising), expected);
            ikeysort2__(n, inserted.data());
            EXPECT_EQ(keys_of(inserted), expected);
            std::reverse(expected.begin(), expected.end());
            dkeysort__(n, falling.data());
            EXPECT_EQ(keys_of(falling), expected);
            std::vector<int> values = values_of(falling);
            std::sort(values.begin(), values.end());
            for (size_t i = 0; i < size; i++) ASSERT_EQ(values[i], static_cast<int>(i));
        }
    }
}

TEST(Sort, the_extreme_keys_of_32_bits_are_ordered)
{
    std::vector<int> a(30, INT_MAX);
    a[7] = INT_MIN;
    a[29] = 0;
    std::vector<KeyValue> pairs = pairs_of(a);
    iintsort__(30, a.data());
    EXPECT_EQ(a[0], INT_MIN);
    EXPECT_EQ(a[1], 0);
    dkeysort__(30, pairs.data());
    EXPECT_EQ(pairs[29].key, INT_MIN);
    EXPECT_EQ(pairs[28].key, 0);
}

TEST(Sort, falling_and_constant_inputs_of_many_elements_are_sorted)
{
    std::vector<int> falling(100000), constant(100000, 3);
    for (size_t i = 0; i < falling.size(); i++) falling[i] = static_cast<int>(falling.size() - i);
    iintsort__(100000, falling.data());
    EXPECT_TRUE(std::is_sorted(falling.begin(), falling.end()));
    EXPECT_EQ(falling[0], 1);
    iintsort__(100000, constant.data());
    EXPECT_EQ(constant, std::vector<int>(100000, 3));
}

TEST(Sort, thousands_of_lopsided_partitions_need_no_more_room_than_32_ranges)
{
    constexpr int n = 240001;
    for (const bool largest : {false, true}) { // which end each partition splits off
        std::vector<int> a = lopsided_order(n);
        if (largest) { // the middle of an odd number is that of their mirror image too
            std::reverse(a.begin(), a.end());
            for (int &key : a) key = n - 1 - key;
        }
        iintsort__(n, a.data());
        for (int i = 0; i < n; i++) ASSERT_EQ(a[static_cast<size_t>(i)], i);
    }
}

/* CPU seconds that work takes. */
template <class Work> static double seconds_of(Work work)
{
    const clock_t begin = clock();
    work();
    return static_cast<double>(clock() - begin) / CLOCKS_PER_SEC;
}

static std::vector<KeyValue> stably_sorted(std::vector<KeyValue> pairs)
{
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const KeyValue &a, const KeyValue &b) { return a.key < b.key; });
    return pairs;
}

/* Whether the sort takes no more than 50 times as long as the library's, which is n log n, or a
 * second; inputs are such that a quadratic one would take minutes. */
template <class Sort> static void expect_no_quadratic(const std::vector<int> &keys, Sort sort)
{
    std::vector<KeyValue> pairs = pairs_of(keys), expected;
    const double usual = seconds_of([&] { expected = stably_sorted(pairs); });
    EXPECT_LT(seconds_of([&] { sort(static_cast<int>(pairs.size()), pairs.data()); }),
              std::max(1.0, 50 * usual));
    EXPECT_TRUE(same_order(pairs, expected));
}

TEST(Sort, nearly_sorted_pairs_of_which_half_are_far_from_their_places_are_merged)
{
    constexpr int n = HEAVY_ASSERTS ? 200000 : 1000000;
    std::vector<int> keys;
    for (int i = 0; i < n; i++) keys.push_back(i < n / 2 ? i / 3 : (i - n / 2) / 2);
    expect_no_quadratic(keys, ikeysort__);
    expect_no_quadratic(keys, ikeysort2__);
}

TEST(Sort, millions_of_lopsided_partitions_are_given_up_where_no_keys_are_equal)
{
    const std::vector<int> keys = lopsided_order(HEAVY_ASSERTS ? 300000 : 2000000);
    expect_no_quadratic(keys, ikeysort__);
    expect_no_quadratic(keys, [](int n, KeyValue *pairs) {
        for (int i = 0; i < n; i++) pairs[i].key = -pairs[i].key;
        dkeysort__(n, pairs);
        for (int i = 0; i < n; i++) pairs[i].key = -pairs[i].key;
    });
    std::vector<int> a = keys;
    EXPECT_LT(seconds_of([&] { iintsort__(static_cast<int>(a.size()), a.data()); }), 5.0);
    EXPECT_TRUE(std::is_sorted(a.begin(), a.end()));
}

TEST(Sort, lopsided_partitions_of_keys_that_repeat_keep_the_order_of_the_quicksort)
{
    std::vector<int> keys = lopsided_order(100000);
    std::replace(keys.begin(), keys.end(), 70001, 70000);
    std::vector<KeyValue> pairs = pairs_of(keys);
    ikeysort__(100000, pairs.data());
    EXPECT_TRUE(std::is_sorted(pairs.begin(), pairs.end(),
                               [](const KeyValue &a, const KeyValue &b) { return a.key < b.key; }));
    std::vector<int> values = values_of(pairs);
    std::sort(values.begin(), values.end());
    for (int i = 0; i < 100000; i++) ASSERT_EQ(values[static_cast<size_t>(i)], i);
}
