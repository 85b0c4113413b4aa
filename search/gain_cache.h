/* SPDX-License-Identifier: MIT */
/* search/gain_cache.h: gains of the vertices near the boundary, kept up to date under moves.
 *
 * The gain of moving a vertex to part p is a number of its own and one for p, both sums over its
 * hyperedges. With a the vertex's part, w the weight of a hyperedge and d the parts it touches:
 *
 *             to base                                   to each p
 *     km1     -w, but 0 where it is alone in a          w where the hyperedge touches p
 *     cut     -w where d is 1                           w where d is 2, p is the other part and
 *                                                       the vertex alone in a
 *
 * Rows hold cut times the one and km1 times the other. For the sum of external degrees both are 1.
 * When the cut is minimised km1 counts a little as well: it ranks moves that leave the cut
 * as it is, and hyperedges that touch few parts are cut no more sooner. Where weights are too large
 * for such sums the main term stands alone.
 *
 * A vertex is near few of many parts. Where there are many, a row marks those that it may gain
 * from; without a mark the gain is 0, and its place in the row has not been written yet:
 *
 *     base | marks, 32 parts a word | gain to part 0, 1, ... nparts - 1
 *
 * A vertex gets its row when it is first asked for. From then on every change of a hyperedge
 * changes it by the difference: all pins' when a part is entered or left as a whole, else only
 * those of pins that become the one of their part, or are that no more.
 * Source: Akhremtsev, Heuer, Sanders, Schlag, ALENEX 2017 (a cache of gains for adjacent parts).
 */
#ifndef ZORPEL_SEARCH_GAIN_CACHE_H
#define ZORPEL_SEARCH_GAIN_CACHE_H

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "search/parts.h"

/*   C1  row[v] is -1, or the place of v's row, one of nrows, no other vertex's
 *   C2  base and gains of a row are the sums above for the partition as it is; the gain to the
 *       vertex's own part is 0
 */
struct GainCache {
    int nparts;
    int nmarks;   // words of marks in a row; 0: all gains are written
    int length;   // of a row: 1 + nmarks + nparts
    int cut, km1; // how often the two count
    int nrows, mostrows;
    int *row;   // [ncells]
    int *owner; // [mostrows] vertex of each row
    int *rows;  // [mostrows x length]
};

/* Room for the rows of all vertices, or as many as fit into some bytes a pin. */
void open_gain_cache(GainCache *cache, const HGraph *graph, int nparts, Objective objective);
void close_gain_cache(GainCache *cache);

/* Gives all rows up. */
void clear_gain_cache(GainCache *cache);

/* Sees to it that v has a row; may give up all others. Returns its place. */
int row_of(GainCache *cache, const Parts *parts, int v);

inline bool has_row(const GainCache *cache, int v)
{
    assert(cache->row[v] >= -1 && cache->row[v] < cache->nrows); // C1
    return cache->row[v] >= 0;
}

/* The base, marks and gains of a row. */
inline int *row_at(const GainCache *cache, int row)
{
    assert(0 <= row && row < cache->nrows); // C1
    return cache->rows + static_cast<size_t>(row) * static_cast<size_t>(cache->length);
}

/* The word of a row that has the mark of part p, and the mark. */
inline int &marks_of(int *row, int p)
{
    return row[1 + p / 32];
}
inline int mark_of(int p)
{
    return static_cast<int>(1u << (p % 32));
}

/* The gains of a row; where there are marks, only those that have one are written. */
inline int *gains_in(const GainCache *cache, int *row)
{
    return row + 1 + cache->nmarks;
}

/* What a row holds for part p. */
inline int gain_in(const GainCache *cache, int *row, int p)
{
    assert(0 <= p && p < cache->nparts);
    const bool written = cache->nmarks == 0 || (marks_of(row, p) & mark_of(p)) != 0;
    return written ? gains_in(cache, row)[p] : 0;
}

/* The gain of v, which has a row, to part p, another than its own, as rows count it. */
inline int64_t cached_gain(const GainCache *cache, int v, int p)
{
    assert(has_row(cache, v));
    int *const row = row_at(cache, cache->row[v]);
    return static_cast<int64_t>(row[0]) + gain_in(cache, row, p);
}

/* move_vertex, and the rows of all vertices. */
void move_and_update(Parts *parts, GainCache *cache, int v, int to);

/* Tests C1 and C2 from scratch. */
bool gain_cache_ok(const GainCache *cache, const Parts *parts);

#endif
