/* SPDX-License-Identifier: MIT */
/* core/sort.h: the sorts of coarsening. The order that they leave among equal keys decides
 * results, so none may be replaced by a library sort. */
#ifndef ZORPEL_CORE_SORT_H
#define ZORPEL_CORE_SORT_H

struct KeyValue {
    int key;
    int val;
};

/* Lists 0..n-1 in perm by increasing keys[i] (each in 0..max), equal keys in the order of tperm.
 *   keys   [n] in    tperm  [n] in, a permutation    perm  [n] out
 * Cost O(n + max); allocates max + 2 ints. */
void BucketSortKeysInc(int n, int max, const int *keys, const int *tperm, int *perm);

/* Quicksort with a final insertion pass; not stable. O(n log n) for integers and for keys that are
 * all different, whatever their order; quadratic at worst where keys repeat. Allocates only, n
 * pairs, when the partitions of many pairs come out lopsided.
 * Source: Sedgewick, Implementing Quicksort programs, CACM 21(10), 1978. */
void iintsort__(int n, int *a);          // increasing
void dkeysort__(int n, KeyValue *pairs); // decreasing key
/* Increasing key; input with fewer than 5 % of its neighbours out of order goes to ikeysort2__. */
void ikeysort__(int n, KeyValue *pairs);

/* Increasing key: the first smallest pair changes places with the first, and the others keep their
 * order where keys are equal. Linear on nearly sorted input, O(n log n) at worst, with n pairs of
 * memory then. */
void ikeysort2__(int n, KeyValue *pairs);

#endif
