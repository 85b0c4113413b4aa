// SPDX-License-Identifier: MIT
/* core/vectors.cpp: short loops over arrays.
 *
 * The first of equal extremes is taken, and sums of 32 bits wrap: results depend on both. The last
 * two routines turn counts into the starts of lists, and starts that were moved on while the lists
 * were filled back into starts.
 */
#include "core/vectors.h"

#include <cassert>
#include <cmath>

template <class Sum, class T> static Sum sum_of(int n, const T *x)
{
    assert(n <= 0 || x != nullptr);
    Sum sum = 0;
    for (int i = 0; i < n; i++) sum += static_cast<Sum>(x[i]);
    return sum;
}

template <bool Largest> static int index_of_extreme(int n, const int *x)
{
    assert(n <= 0 || x != nullptr);
    int best = 0;
    for (int i = 1; i < n; i++)
        if (Largest ? x[i] > x[best] : x[i] < x[best]) best = i;
    return best;
}

int iasum__(int n, const int *x)
{
    return static_cast<int>(sum_of<unsigned>(n, x)); // wraps rather than being undefined
}

long long sum_wide(int n, const int *x)
{
    return sum_of<long long>(n, x);
}

int *iset__(int n, int value, int *x)
{
    assert(n <= 0 || x != nullptr);
    for (int i = 0; i < n; i++) x[i] = value;
    return x;
}

int *icopy__(int n, const int *from, int *to)
{
    assert(n <= 0 || (from != nullptr && to != nullptr));
    for (int i = 0; i < n; i++) to[i] = from[i];
    return to;
}

int iamax__(int n, const int *x)
{
    return index_of_extreme<true>(n, x);
}

int iamin__(int n, const int *x)
{
    return index_of_extreme<false>(n, x);
}

int largest_of(int n, const int *x)
{
    assert(n <= 0 || x != nullptr);
    int largest = n > 0 ? x[0] : 0;
    for (int i = 1; i < n; i++) largest = x[i] > largest ? x[i] : largest;
    return largest;
}

void counts_to_starts(int n, int *ptr)
{
    assert(n >= 0 && ptr != nullptr);
    int start = 0;
    for (int i = 0; i < n; i++) {
        const int count = ptr[i];
        ptr[i] = start;
        start += count;
    }
    ptr[n] = start;
}

void ends_to_starts(int n, int *ptr)
{
    assert(n >= 0 && ptr != nullptr);
    for (int i = n; i > 0; i--) ptr[i] = ptr[i - 1];
    ptr[0] = 0;
}
