// SPDX-License-Identifier: MIT
/* tests/model/sort_model_test.cpp: the sorts against a plain retelling, equal keys included.
 *
 * Quicksort partitions around the median of three and leaves ranges of at most 21 elements to one
 * insertion pass. The twin partitions by recursion, and takes a stable sort for the
 * insertion pass, which is one: an element never passes its equal.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/sort.h"
#include "../unit/lopsided.h"
#include "shrink.h"

using Pairs = std::vector<KeyValue>;

/* Order is +1 for increasing keys, -1 for decreasing ones. */
static bool goes_before(int order, const KeyValue &a, const KeyValue &b)
{
    return order > 0 ? a.key < b.key : a.key > b.key;
}

static void twin_partition(int order, Pairs *pairs, int low, int high)
{
    KeyValue *const a = pairs->data();
    const int middle = low + (high - low) / 2;
    if (goes_before(order, a[middle], a[low])) std::swap(a[middle], a[low]);
    if (goes_before(order, a[high], a[middle])) {
        std::swap(a[high], a[middle]);
        if (goes_before(order, a[middle], a[low])) std::swap(a[middle], a[low]);
    }
    const KeyValue pivot = a[middle];
    int left = low + 1, right = high - 1;
    while (left <= right) {
        while (goes_before(order, a[left], pivot)) left++;
        while (goes_before(order, pivot, a[right])) right--;
        if (left > right) break;
        if (left < right) std::swap(a[left], a[right]);
        left++;
        right--;
    }
    if (right - low > 20) twin_partition(order, pairs, low, right);
    if (high - left > 20) twin_partition(order, pairs, left, high);
}

/* The first of the extreme pairs among the first n goes first; then insertion. */
static void twin_finish(int order, Pairs *pairs, size_t n)
{
    const auto before = [order](const KeyValue &a, const KeyValue &b) {
        return goes_before(order, a, b);
    };
    const auto end = pairs->begin() + static_cast<std::ptrdiff_t>(std::min(n, pairs->size()));
    std::iter_swap(pairs->begin(), std::min_element(pairs->begin(), end, before));
    std::stable_sort(pairs->begin(), pairs->end(), before);
}

static void twin_quicksort(int order, Pairs *pairs)
{
    if (pairs->empty()) return;
    if (pairs->size() > 20) // so 21 elements are partitioned once
        twin_partition(order, pairs, 0, static_cast<int>(pairs->size()) - 1);
    twin_finish(order, pairs, 21);
}

static void twin_insertion(Pairs *pairs)
{
    if (!pairs->empty()) twin_finish(1, pairs, pairs->size());
}

static void twin_increasing(Pairs *pairs)
{
    int falls = 0;
    for (size_t i = 0; i + 1 < pairs->size(); i++) falls += (*pairs)[i].key > (*pairs)[i + 1].key;
    if (20 * falls < static_cast<int>(pairs->size()))
        twin_insertion(pairs);
    else
        twin_quicksort(1, pairs);
}

static void twin_decreasing(Pairs *pairs)
{
    twin_quicksort(-1, pairs);
}

struct Sort {
    const char *name;
    void (*sort)(int n, KeyValue *pairs);
    void (*twin)(Pairs *pairs);
};

static bool differs(const Sort &sort, const Pairs &input)
{
    Pairs sorted = input, expected = input;
    sort.sort(static_cast<int>(sorted.size()), sorted.data());
    sort.twin(&expected);
    for (size_t i = 0; i < sorted.size(); i++)
        if (sorted[i].key != expected[i].key || sorted[i].val != expected[i].val) return true;
    return false;
}

static std::string told(const Pairs &pairs)
{
    std::ostringstream text;
    for (const KeyValue &pair : pairs) text << pair.key << ":" << pair.val << " ";
    return text.str();
}

/* Keys of few values in many pairs, or nearly sorted, or of many values. */
static Pairs random_pairs(unsigned seed)
{
    std::minstd_rand random(seed);
    static const int sizes[] = {0, 1, 2, 20, 21, 22, 23, 42, 43, 44};
    const size_t n = seed % 3 == 0 ? static_cast<size_t>(sizes[random() % 10]) : random() % 2001;
    const unsigned range = 1 + static_cast<unsigned>(random() % (seed % 2 == 0 ? 8 : 1000));
    Pairs pairs;
    for (size_t i = 0; i < n; i++)
        pairs.push_back({static_cast<int>(random() % range) - 3, static_cast<int>(i)});
    if (seed % 5 != 0) return pairs;
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const KeyValue &a, const KeyValue &b) { return a.key < b.key; });
    for (auto swaps = random() % 60; swaps > 0 && n > 0; swaps--)
        std::swap(pairs[random() % n], pairs[random() % n]);
    return pairs;
}

static void drive(const Sort &sort, unsigned rounds)
{
    for (unsigned seed = 1; seed <= rounds; seed++) {
        const Pairs input = random_pairs(seed);
        if (!differs(sort, input)) continue;
        const Pairs shortest =
            shrink(input, [&](const Pairs &part) { return differs(sort, part); });
        FAIL() << sort.name << ", seed " << seed << ", key:value pairs\n" << told(shortest);
    }
}

TEST(SortModel, increasing_keys_agree_with_their_twin)
{
    drive({"ikeysort__", ikeysort__, twin_increasing}, 600);
}

TEST(SortModel, decreasing_keys_agree_with_their_twin)
{
    drive({"dkeysort__", dkeysort__, twin_decreasing}, 600);
}

TEST(SortModel, insertion_agrees_with_its_twin)
{
    drive({"ikeysort2__", ikeysort2__, twin_insertion}, 100);
}

/* Each partition of the first ones splits off 24 of thousands of pairs, so that the quicksort looks
 * for a shorter way; keys that repeat forbid it, and the order must be its own. */
TEST(SortModel, lopsided_partitions_agree_with_the_twin_whether_keys_repeat_or_not)
{
    const int n = 60000;
    const std::vector<int> keys = lopsided_order(n);
    for (const int repeated : {0, 1, 1000}) {
        Pairs pairs;
        for (const int key : keys)
            pairs.push_back({key < n / 2 ? key : std::max(key, n / 2 + repeated),
                             static_cast<int>(pairs.size())});
        EXPECT_FALSE(differs({"ikeysort__", ikeysort__, twin_increasing}, pairs)) << repeated;
        for (KeyValue &pair : pairs) pair.key = -pair.key;
        EXPECT_FALSE(differs({"dkeysort__", dkeysort__, twin_decreasing}, pairs)) << repeated;
    }
}

TEST(SortModel, lopsided_partitions_agree_with_the_twin_if_only_the_smallest_key_repeats)
{
    const int n = 60000;
    const std::vector<int> keys = lopsided_order(n);
    for (const int again : {1, 23, 24, 1000, 1024, n / 2, n - 1}) {
        Pairs pairs;
        for (const int key : keys)
            pairs.push_back({key == again ? 0 : key, static_cast<int>(pairs.size())});
        EXPECT_FALSE(differs({"ikeysort__", ikeysort__, twin_increasing}, pairs)) << again;
    }
}

TEST(SortModel, integers_come_out_sorted)
{
    for (unsigned seed = 1; seed <= 300; seed++) {
        std::vector<int> a;
        for (const KeyValue &pair : random_pairs(seed)) a.push_back(pair.key);
        std::vector<int> expected = a;
        std::sort(expected.begin(), expected.end());
        iintsort__(static_cast<int>(a.size()), a.data());
        ASSERT_EQ(a, expected) << "seed " << seed;
    }
}

/* Of each bucket, the elements in the order given. */
TEST(SortModel, buckets_agree_with_a_stable_sort)
{
    for (unsigned seed = 1; seed <= 300; seed++) {
        std::minstd_rand random(seed);
        const int n = static_cast<int>(random() % 500), max = static_cast<int>(random() % 40);
        std::vector<int> keys, tperm, perm(static_cast<size_t>(n), -1);
        for (int i = 0; i < n; i++) {
            keys.push_back(static_cast<int>(random() % static_cast<unsigned>(max + 1)));
            tperm.push_back(i);
        }
        std::shuffle(tperm.begin(), tperm.end(), random);
        BucketSortKeysInc(n, max, keys.data(), tperm.data(), perm.data());
        std::stable_sort(tperm.begin(), tperm.end(), [&](int a, int b) {
            return keys[static_cast<size_t>(a)] < keys[static_cast<size_t>(b)];
        });
        ASSERT_EQ(perm, tperm) << "seed " << seed;
    }
}
