/* SPDX-License-Identifier: MIT */
/* core/vectors.h: short loops over arrays of n entries; n below 1 is an empty array. */
#ifndef ZORPEL_CORE_VECTORS_H
#define ZORPEL_CORE_VECTORS_H

int iasum__(int n, const int *x);              // sum; the caller knows that it fits
long long sum_wide(int n, const int *x);       // sum in 64 bits
int *iset__(int n, int value, int *x);         // fills x, returns x
int *icopy__(int n, const int *from, int *to); // copies, returns to
int iamax__(int n, const int *x);              // index of the first largest entry, 0 when n < 2
int iamin__(int n, const int *x);              // index of the first smallest entry, 0 when n < 2
int largest_of(int n, const int *x);           // the largest entry, 0 without any

/* Offsets from counts: ptr[0..n-1] holds counts, ptr[0..n] the starts on return. */
void counts_to_starts(int n, int *ptr);
/* After each start was advanced to its end while placing: makes ptr starts again. */
void ends_to_starts(int n, int *ptr);

#endif
