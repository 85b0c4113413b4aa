/* SPDX-License-Identifier: MIT */
/* refine/net_counts.h: the pins of a hyperedge on each side of a bisection, packed in a word.
 *
 * A move changes the counts of every hyperedge of its vertex. What it changes of one hyperedge is
 * a word, so that counting a move reads and writes eight bytes of memory a hyperedge:
 *
 *      63      62    61    56 55      48 47      40 39      32 31              0
 *   +-------+-------+--------+----------+----------+----------+-----------------+
 *   |   0   | fixed |    0   | nqueued  | npins[1] | npins[0] |      xor0       |  small
 *   +-------+-------+--------+----------+----------+----------+-----------------+
 *   |   1   | fixed |                     0                   | place in a list |  large
 *   +-------+-------+-----------------------------------------+-----------------+
 *
 * A small hyperedge has 1 to PACKED_SIZE pins. Each of its counts has a byte whose top bit stays
 * free: 128 - k added to a count sets it exactly if the count is k or more, so that three counts
 * are compared at once. Those of large hyperedges, and of the ones without pins, are records of
 * their own in a list.
 */
#ifndef ZORPEL_REFINE_NET_COUNTS_H
#define ZORPEL_REFINE_NET_COUNTS_H

#include <cassert>
#include <cstdint>

#include "core/heavy_assert.h"

/* The counts of a hyperedge of any size. */
struct NetCounts {
    int npins[2]; // pins on each side
    int nqueued;  // pins in a queue, under the rules that keep it
    int xor0;     // exclusive or of the pins on side 0
};

using PackedCounts = uint64_t;
constexpr int PACKED_SIZE = HEAVY_ASSERTS ? 5 : 127; // most pins of a hyperedge in packed form
constexpr PackedCounts PACKED_LARGE = PackedCounts{1} << 63, PACKED_FIXED = PackedCounts{1} << 62;
constexpr int NQUEUED_SHIFT = 48;

constexpr int npins_shift(int side)
{
    assert(side == 0 || side == 1);
    return 32 + 8 * side;
}

/* A count at its place in the word. */
constexpr PackedCounts packed_byte(int count, int shift)
{
    return static_cast<PackedCounts>(count) << shift;
}

constexpr int unpacked_byte(PackedCounts counts, int shift)
{
    return static_cast<uint8_t>(counts >> shift);
}

inline bool is_large(PackedCounts counts)
{
    return counts >= PACKED_LARGE;
}

/* The low 32 bits: xor0, or a place in the list. */
inline int low_word(PackedCounts counts)
{
    return static_cast<int>(static_cast<uint32_t>(counts));
}

/* The word of a small hyperedge, without its fixed bit. */
inline PackedCounts pack_counts(const NetCounts *counts)
{
    assert(counts->npins[0] >= 0 && counts->npins[1] >= 0 && counts->nqueued >= 0);
    assert(counts->npins[0] + counts->npins[1] < 128);
    assert(counts->nqueued <= counts->npins[0] + counts->npins[1]);
    return static_cast<uint32_t>(counts->xor0) | packed_byte(counts->npins[0], npins_shift(0)) |
           packed_byte(counts->npins[1], npins_shift(1)) |
           packed_byte(counts->nqueued, NQUEUED_SHIFT);
}

inline NetCounts unpack_counts(PackedCounts counts)
{
    assert(!is_large(counts));
    return {{unpacked_byte(counts, npins_shift(0)), unpacked_byte(counts, npins_shift(1))},
            unpacked_byte(counts, NQUEUED_SHIFT),
            low_word(counts)};
}

/* Whether the move that left these counts behind changed the gain of another pin. It did for all
 * pins of a side if it was the first to cross or left nobody behind, for one pin if that is alone
 * now on the side left or was alone on the side entered; never with three pins or more on the side
 * entered and two or more on the side left. */
inline bool few_pins(int nto, int nfrom)
{
    assert(nto >= 1 && nfrom >= 0);
    return (nto <= 2) | (nfrom <= 1);
}

/* What a count of a move keeps: with Queued also the number of queued pins, of which the moved one
 * was one, and true is returned only if some are left. */
enum class Counted { sides, sides_and_queued };

/* Counts the move of v from side From to the other; returns whether a gain may change. */
template <int From, Counted C> inline bool count_move_plain(NetCounts *counts, int v)
{
    assert(counts->npins[From] > 0);
    const int nto = ++counts->npins[1 - From], nfrom = --counts->npins[From];
    assert(v >= 0 && nto > 0);
    counts->xor0 ^= v;
    if (C == Counted::sides) return few_pins(nto, nfrom);
    assert(counts->nqueued > 0);
    counts->nqueued--;
    return few_pins(nto, nfrom) && counts->nqueued > 0;
}

/* The same in the packed form, without a branch. */
template <int From, Counted C> inline bool count_move_packed(PackedCounts *word, int v)
{
    constexpr int fromshift = npins_shift(From), toshift = npins_shift(1 - From);
    constexpr bool queued = C == Counted::sides_and_queued;
    PackedCounts counts = *word;
    assert(!is_large(counts) && v >= 0);
    assert(unpacked_byte(counts, fromshift) > 0 && unpacked_byte(counts, toshift) < 127);
    assert(!queued || unpacked_byte(counts, NQUEUED_SHIFT) > 0);
    counts ^= static_cast<uint32_t>(v);
    counts += packed_byte(1, toshift) - packed_byte(1, fromshift);
    if (queued) counts -= packed_byte(1, NQUEUED_SHIFT);
    *word = counts;
    // top bits after the sum: at least 3 came, at least 2 are left, at least 1 is queued
    constexpr PackedCounts three = packed_byte(128, toshift), two = packed_byte(128, fromshift);
    constexpr PackedCounts one = queued ? packed_byte(128, NQUEUED_SHIFT) : 0;
    constexpr PackedCounts limits = packed_byte(128 - 3, toshift) +
                                    packed_byte(128 - 2, fromshift) +
                                    (queued ? packed_byte(128 - 1, NQUEUED_SHIFT) : 0);
    // with the bit of the queued ones turned around, a value below both other bits says yes
    return (((counts + limits) & (three | two | one)) ^ one) < (three | two);
}

#endif
