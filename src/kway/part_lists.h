/* SPDX-License-Identifier: MIT */
/* kway/part_lists.h: lists of parts with a number each, and what a move changes in them (kway/
 * only).
 *
 * A hyperedge lists the parts that it touches with its pins in each, a vertex the other parts that
 * it is connected to with what a move there would gain. Lists are short and searched linearly.
 */
#ifndef ZORPEL_KWAY_PART_LISTS_H
#define ZORPEL_KWAY_PART_LISTS_H

#include <cassert>

#include "core/hgraph.h"
#include "core/ctrl.h"

/* ndegrees of a vertex that has cut hyperedges, but no list yet. */
constexpr int NOT_COUNTED = -1;

/* Place of part in a list of n entries, n when it is not there. */
inline int find_part(const KwayPartDeg *list, int n, int part)
{
    assert(n == 0 || list != nullptr);
    int i = 0;
    while (i < n && list[i].pid != part) i++;
    return i;
}

/* The same for a part that is there. Most lists have two parts, and which it is can't be predicted.
 */
inline int place_in(const KwayPartDeg *list, int n, int part)
{
    assert(find_part(list, n, part) < n);
    return n == 2 ? list[0].pid != part : find_part(list, n, part);
}

/* The next size entries of what is unused of a pool. */
inline KwayPartDeg *take_list(KwayPartDeg **unused, int size)
{
    assert(size > 0);
    KwayPartDeg *const list = *unused;
    *unused += size;
    return list;
}

/* A pin of a hyperedge on its way from one part to another. */
struct PinMove {
    int i, k; // places of the parts in the list; k is ndegrees if the part entered is not there
    int nfrom, nto; // their pins after the move
};

inline PinMove find_move(const NetKwayInfo *net, int from, int to)
{
    const KwayPartDeg *const list = net->degrees;
    const int i = find_part(list, net->ndegrees, from), k = find_part(list, net->ndegrees, to);
    assert(from != to && i < net->ndegrees && list[i].num > 0);
    return {i, k, list[i].num - 1, (k < net->ndegrees ? list[k].num : 0) + 1};
}

inline void move_pin(NetKwayInfo *net, PinMove move, int to)
{
    KwayPartDeg *const list = net->degrees;
    const bool listed = move.k < net->ndegrees;
    list[move.i].num = move.nfrom;
    if (move.nfrom == 0) {
        list[move.i] = list[--net->ndegrees];
        if (listed && move.k == net->ndegrees) move.k = move.i;
    }
    if (!listed) list[move.k = net->ndegrees++] = {to, 0, 0, 0};
    assert(list[move.k].pid == to && (move.nfrom > 0) + (move.nto > 0) <= net->ndegrees);
    list[move.k].num = move.nto;
}

/* Whether the move may change more than ties in the records of the hyperedge's pins. */
inline bool gains_change(PinMove move)
{
    return move.nfrom <= 1 || move.nto <= 2;
}

/* Computes kpwgts, mincut, minsoed, the hyperedges' records, and id and ed of all vertices; those
 * with cut hyperedges get NOT_COUNTED. Lists are at their own places; with unused, those of cut
 * hyperedges are taken from it, and nobody else has one. */
void outline_all(const PartCtrl *ctrl, HGraph *graph, KwayPartDeg **unused);

/* Computes the record of v from those of its hyperedges. */
void compute_record(HGraph *graph, int v);

#endif
