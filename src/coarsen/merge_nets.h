/* SPDX-License-Identifier: MIT */
/* coarsen/merge_nets.h: merging of identical hyperedges (coarsen/ only). */
#ifndef ZORPEL_COARSEN_MERGE_NETS_H
#define ZORPEL_COARSEN_MERGE_NETS_H

#include "core/net_lists.h"
#include "core/sort.h"

/* Sorts the pins of one hyperedge increasingly. */
void sort_pins(int size, int *pins);

/* Merges hyperedges of equal pins; pins are sorted within each.
 *   nets    in   hyperedges to merge
 *   pairs   in   [nets->nnets] (key, number) of each; of no use on return
 *   merged  out  hyperedges in key order, weights summed; arrays large enough come with it
 *   map     out  [nets->nnets] number in merged of each hyperedge, or null
 *   seen    work [nets->nnets] all -1; 1 marks what was merged into an earlier one
 * Cost    O(n log n) for n hyperedges of bounded size, however many share a key.
 * A hyperedge of equal key but other size ends the search for duplicates of the one before it,
 * even if an identical one follows: kept on purpose. */
void merge_identical(const NetLists *nets, KeyValue *pairs, NetLists *merged, int *map, int *seen);

#endif
