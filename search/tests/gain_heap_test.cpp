// SPDX-License-Identifier: MIT
/* search/tests/gain_heap_test.cpp: the heap of moves against a sorted list. */
#include <gtest/gtest.h>

#include <map>

#include "broken.h"
#include "search/gain_heap.h"
#include "search_support.h"

namespace
{

TEST(GainHeap, random_operations_agree_with_a_map)
{
    constexpr int N = 60;
    for (unsigned seed = 1; seed <= 20; seed++) {
        std::mt19937 random(seed);
        GainHeap heap;
        open_gain_heap(&heap, N);
        std::map<int, int64_t> twin;
        for (int step = 0; step < 400; step++) {
            const int v = static_cast<int>(random() % N);
            if (random() % 3 == 0 && twin.count(v) > 0) {
                remove_from_heap(&heap, v);
                twin.erase(v);
            } else {
                const int64_t gain = static_cast<int64_t>(random() % 21) - 10;
                put_in_heap(&heap, v, gain);
                twin[v] = gain;
            }
            ASSERT_TRUE(gain_heap_ok(&heap, N)) << "seed " << seed;
            ASSERT_EQ(heap.n, static_cast<int>(twin.size()));
            if (twin.empty()) continue;
            int64_t most = INT64_MIN;
            for (const auto &[u, gain] : twin) most = std::max(most, gain);
            ASSERT_EQ(top_gain(&heap), most);
            ASSERT_EQ(twin[top_of(&heap)], most);
        }
        empty_heap(&heap);
        EXPECT_TRUE(gain_heap_ok(&heap, N));
        close_gain_heap(&heap);
    }
}

TEST(GainHeap, the_broken_rule_is_named)
{
    GainHeap heap;
    open_gain_heap(&heap, 4);
    put_in_heap(&heap, 0, 5);
    put_in_heap(&heap, 1, 3);
    put_in_heap(&heap, 2, 4);
    const auto ok = [&] { return gain_heap_ok(&heap, 4); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(heap.place[3], 1, ok), "G1");
    EXPECT_EQ(broken_by(heap.place[0], -1, ok), "G1");
    EXPECT_EQ(broken_by(heap.nodes[1].gain, 6, ok), "G2");
    close_gain_heap(&heap);
}

} // namespace
