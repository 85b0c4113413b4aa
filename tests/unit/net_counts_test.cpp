// SPDX-License-Identifier: MIT
/* tests/unit/net_counts_test.cpp: the packed counts of a hyperedge against the plain rule, for
 * every combination of counts that fits.
 */
#include "refine/net_counts.h"

#include <gtest/gtest.h>

constexpr int MOST_PINS = 127; // that a byte may count

/* Calls check for all counts of 1 to MOST_PINS pins. */
template <typename Check> static void for_all_counts(Check check)
{
    for (int npins0 = 0; npins0 <= MOST_PINS; npins0++)
        for (int npins1 = npins0 == 0 ? 1 : 0; npins0 + npins1 <= MOST_PINS; npins1++)
            for (int nqueued = 0; nqueued <= npins0 + npins1; nqueued++)
                check(NetCounts{{npins0, npins1}, nqueued, npins0 ^ 77 * npins1 ^ nqueued << 20});
}

static bool same_counts(const NetCounts &a, const NetCounts &b)
{
    return a.npins[0] == b.npins[0] && a.npins[1] == b.npins[1] && a.nqueued == b.nqueued &&
           a.xor0 == b.xor0;
}

TEST(NetCounts, unpacking_gives_what_was_packed)
{
    for_all_counts([](const NetCounts &counts) {
        const PackedCounts packed = pack_counts(&counts);
        ASSERT_TRUE(same_counts(unpack_counts(packed), counts));
        ASSERT_FALSE(is_large(packed));
        ASSERT_TRUE(same_counts(unpack_counts(packed | PACKED_FIXED), counts));
    });
}

template <int From, Counted C> static void compare_moves(NetCounts counts, int v)
{
    if (counts.npins[From] == 0) return;
    if (C == Counted::sides_and_queued && counts.nqueued == 0) return;
    PackedCounts packed = pack_counts(&counts) | PACKED_FIXED;
    const bool changes = count_move_plain<From, C>(&counts, v);
    ASSERT_EQ((count_move_packed<From, C>(&packed, v)), changes)
        << From << ": " << counts.npins[0] << ' ' << counts.npins[1] << ' ' << counts.nqueued;
    ASSERT_TRUE(same_counts(unpack_counts(packed), counts));
    ASSERT_TRUE(packed & PACKED_FIXED);
}

TEST(NetCounts, moves_count_the_same_packed_and_plain)
{
    for_all_counts([](const NetCounts &counts) {
        for (const int v : {0, 5, 0x7ffffffe}) {
            compare_moves<0, Counted::sides>(counts, v);
            compare_moves<1, Counted::sides>(counts, v);
            compare_moves<0, Counted::sides_and_queued>(counts, v);
            compare_moves<1, Counted::sides_and_queued>(counts, v);
        }
    });
}

/* Gains are sums over hyperedges of this; side tells where the pin is. */
static int share(const int npins[2], int side)
{
    return npins[1 - side] == 0 ? -1 : npins[side] == 1 ? 1 : 0;
}

TEST(NetCounts, a_move_that_may_change_no_gain_changes_none)
{
    for (int nto = 1; nto <= 10; nto++)
        for (int nfrom = 0; nfrom <= 10; nfrom++) {
            const int before[2] = {nto - 1, nfrom + 1}, after[2] = {nto, nfrom};
            const bool entered = nto > 1 && share(before, 0) != share(after, 0);
            const bool left = nfrom > 0 && share(before, 1) != share(after, 1);
            EXPECT_LE(entered || left, few_pins(nto, nfrom)) << nto << ' ' << nfrom;
            if (nfrom > 1 && nto > 1) {
                EXPECT_EQ(entered || left, few_pins(nto, nfrom));
            }
        }
}

TEST(NetCounts, a_large_hyperedge_is_told_by_its_top_bit)
{
    const PackedCounts large = PACKED_LARGE | PACKED_FIXED | 12345;
    EXPECT_TRUE(is_large(large));
    EXPECT_EQ(low_word(large), 12345);
    EXPECT_FALSE(is_large(PACKED_FIXED));
}
