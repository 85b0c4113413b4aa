// SPDX-License-Identifier: MIT
/* tests/unit/random_test.cpp: seeding and random permutations, against a plain retelling of the
 * draws with the C library's own generator.
 */
#include "core/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <numeric>

#include "broken.h"
#include "support.h"

static std::vector<int> identity(int n)
{
    std::vector<int> p(static_cast<size_t>(n));
    std::iota(p.begin(), p.end(), 0);
    return p;
}

/* The integer part of draw x range x 2^-31. */
static size_t place(int range)
{
    const long long draw = rand();
    return static_cast<size_t>(draw * range >> 31);
}

static void twin_coarse(std::vector<int> *p)
{
    const int n = static_cast<int>(p->size());
    if (n < 16) return;
    for (int round = 0; round < n / 16; round++) {
        const size_t a = place(n - 8), b = place(n - 8);
        std::swap((*p)[a], (*p)[b]);
        std::swap((*p)[a + 1], (*p)[b + 1]);
        std::swap((*p)[a + 2], (*p)[b + 2]);
        std::swap((*p)[a + 3], (*p)[b + 3]);
    }
}

static void twin_fine(std::vector<int> *p)
{
    const int n = static_cast<int>(p->size());
    for (int round = 0; round < n; round++) {
        const size_t i = place(n), j = place(n);
        std::swap((*p)[i], (*p)[j]);
    }
}

TEST(Random, fifteen_entries_are_only_set_to_the_identity_and_nothing_is_drawn)
{
    std::vector<int> p(15, -1);
    InitRandom__(3);
    RandomPermute__(p.data(), 15, 1);
    EXPECT_EQ(p, identity(15));
    const int next = rand();
    srand(3);
    EXPECT_EQ(next, rand());
}

TEST(Random, fifteen_entries_stay_as_they_are_without_reset)
{
    std::vector<int> p(15, -1);
    RandomPermute__(p.data(), 15, 0);
    EXPECT_EQ(p, std::vector<int>(15, -1));
}

TEST(Random, sixteen_entries_get_exactly_one_block_exchange)
{
    for (int seed = 0; seed < 50; seed++) {
        std::vector<int> p(16), expected = identity(16);
        InitRandom__(seed);
        RandomPermute__(p.data(), 16, 1);
        const int next = rand();
        srand(static_cast<unsigned>(seed));
        const size_t a = place(8), b = place(8);
        for (size_t k = 0; k < 4; k++) std::swap(expected[a + k], expected[b + k]);
        EXPECT_EQ(p, expected) << "seed " << seed;
        EXPECT_EQ(next, rand()) << "more or fewer than two draws, seed " << seed;
    }
}

TEST(Random, overlapping_blocks_are_exchanged_entry_by_entry)
{
    int overlapping = 0;
    for (int seed = 0; seed < 200; seed++) {
        srand(static_cast<unsigned>(seed));
        const size_t a = place(8), b = place(8);
        if (a == b || std::max(a, b) - std::min(a, b) > 3) continue;
        overlapping++;
        std::vector<int> p(16), expected = identity(16);
        for (size_t k = 0; k < 4; k++) std::swap(expected[a + k], expected[b + k]);
        InitRandom__(seed);
        RandomPermute__(p.data(), 16, 1);
        EXPECT_EQ(p, expected) << "blocks at " << a << " and " << b;
    }
    EXPECT_GT(overlapping, 20);
}

TEST(Random, the_coarse_shuffle_draws_two_numbers_a_block_and_keeps_a_permutation)
{
    for (int n : {16, 17, 31, 32, 33, 100, 1000}) {
        std::vector<int> p(static_cast<size_t>(n)), expected = identity(n);
        InitRandom__(n);
        RandomPermute__(p.data(), n, 1);
        const int next = rand();
        srand(static_cast<unsigned>(n));
        twin_coarse(&expected);
        EXPECT_EQ(p, expected) << n << " entries";
        EXPECT_EQ(next, rand()) << "number of draws, " << n << " entries";
        std::sort(p.begin(), p.end());
        EXPECT_EQ(p, identity(n));
    }
}

TEST(Random, the_fine_shuffle_makes_as_many_exchanges_as_entries_two_draws_each)
{
    for (int n : {1, 2, 3, 15, 16, 100, 1000}) {
        std::vector<int> p(static_cast<size_t>(n)), expected = identity(n);
        InitRandom__(n + 7);
        RandomPermuteFine__(p.data(), n, 1);
        const int next = rand();
        srand(static_cast<unsigned>(n + 7));
        twin_fine(&expected);
        EXPECT_EQ(p, expected) << n << " entries";
        EXPECT_EQ(next, rand()) << "number of draws, " << n << " entries";
    }
}

TEST(Random, without_reset_the_given_order_is_shuffled_on)
{
    std::vector<int> given = identity(64);
    std::reverse(given.begin(), given.end());
    std::vector<int> fine = given, coarse = given, twin = given;
    InitRandom__(5);
    RandomPermuteFine__(fine.data(), 64, 0);
    srand(5);
    twin_fine(&twin);
    EXPECT_EQ(fine, twin);
    twin = given;
    InitRandom__(6);
    RandomPermute__(coarse.data(), 64, 0);
    srand(6);
    twin_coarse(&twin);
    EXPECT_EQ(coarse, twin);
}

TEST(Random, only_the_flag_1_resets)
{
    std::vector<int> p = {4, 4, 4};
    RandomPermuteFine__(p.data(), 3, 2);
    EXPECT_EQ(p, (std::vector<int>{4, 4, 4}));
    RandomPermute__(p.data(), 3, 2);
    EXPECT_EQ(p, (std::vector<int>{4, 4, 4}));
}

TEST(Random, no_entries_draw_nothing)
{
    InitRandom__(9);
    RandomPermuteFine__(nullptr, 0, 1);
    RandomPermuteFine__(nullptr, -1, 1);
    RandomPermute__(nullptr, 0, 1);
    const int next = rand();
    srand(9);
    EXPECT_EQ(next, rand());
}

TEST(Random, a_seed_that_is_not_negative_seeds_by_itself)
{
    for (int seed : {0, 1, 77, 2147483647}) {
        InitRandom__(seed);
        const int drawn = rand();
        srand(static_cast<unsigned>(seed));
        EXPECT_EQ(drawn, rand());
    }
}

TEST(Random, a_negative_seed_takes_the_clock_in_seconds)
{
    const time_t before = time(nullptr);
    InitRandom__(-5);
    const int drawn = rand();
    bool found = false;
    for (time_t t = before; t <= time(nullptr); t++) {
        srand(static_cast<unsigned>(t));
        found = found || rand() == drawn;
    }
    EXPECT_TRUE(found);
}

/* Whether an own generator gives ndraws numbers of rand() after the same seed. */
static bool same_sequence(unsigned seed, int ndraws)
{
    Generator generator = own_generator(seed);
    srand(seed);
    for (int i = 0; i < ndraws; i++)
        if (draw(&generator) != rand()) return false;
    return generator_ok(&generator);
}

TEST(Random, an_own_generator_gives_the_numbers_of_the_process)
{
    for (const unsigned seed : {0u, 1u, 2u, 2147483646u, 2147483647u, 2147483648u, 4294967295u})
        ASSERT_TRUE(same_sequence(seed, 1000000)) << "seed " << seed;
    for (unsigned i = 0; i < 3000; i++) // all over the range of seeds
        ASSERT_TRUE(same_sequence(i * 1431655u, 1000)) << "seed " << i * 1431655u;
}

TEST(Random, an_own_generator_leaves_the_process_alone)
{
    srand(4);
    Generator generator = own_generator(7), other = own_generator(8);
    std::vector<int> p(100);
    InitRandom__(&generator, 9);
    RandomPermute__(&generator, p.data(), 100, 1);
    RandomPermuteFine__(&generator, p.data(), 100, 1);
    draw(&generator);
    const int next = rand();
    srand(4);
    EXPECT_EQ(next, rand());
    srand(8);
    EXPECT_EQ(draw(&other), rand()); // nor did they meet each other
}

TEST(Random, an_own_generator_shuffles_as_the_process_does)
{
    for (int seed = 0; seed < 50; seed++) {
        const int n = 10 + 3 * seed;
        std::vector<int> p(static_cast<size_t>(n)), q = p;
        Generator generator = own_generator(1), process = {};
        InitRandom__(&generator, seed);
        InitRandom__(&process, seed);
        for (int reset = 1; reset >= 0; reset--) {
            RandomPermute__(&generator, p.data(), n, reset);
            RandomPermute__(&process, q.data(), n, reset);
            EXPECT_EQ(p, q);
            RandomPermuteFine__(&generator, p.data(), n, 0);
            RandomPermuteFine__(&process, q.data(), n, 0);
            EXPECT_EQ(p, q);
        }
        EXPECT_EQ(draw(&generator), draw(&process));
    }
}

TEST(Random, a_broken_generator_is_noticed)
{
    Generator generator = own_generator(1);
    EXPECT_TRUE(generator_ok(&generator));
    generator.oldest = NLAGGED;
    EXPECT_EQ(broken_rule([&] { return generator_ok(&generator); }), "G1");
    generator.oldest = -1;
    EXPECT_EQ(broken_rule([&] { return generator_ok(&generator); }), "G1");
    generator.oldest = 0;
    for (unsigned &word : generator.lagged) word &= ~1u;
    EXPECT_EQ(broken_rule([&] { return generator_ok(&generator); }), "G2");
    EXPECT_TRUE(generator_ok(std::make_unique<Generator>().get()));
}
