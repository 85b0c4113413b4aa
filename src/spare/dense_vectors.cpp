// SPDX-License-Identifier: MIT
/* spare/dense_vectors.cpp: kernels on vectors of reals.
 *
 * Plain loops from the first entry to the last, in the precision of the vectors: no sum is
 * reordered, so results are the same on every machine.
 */
#include "spare/dense_vectors.h"

#include <cassert>
#include <cmath>

#include "core/memory.h"

template <class T> static T sum_of_reals(int n, const T *x)
{
    T sum = 0;
    for (int i = 0; i < n; i++) sum += x[i];
    return sum;
}

float sasum__(int n, const float *x)
{
    return sum_of_reals<float>(n, x);
}

double dasum__(int n, const double *x)
{
    return sum_of_reals<double>(n, x);
}

void daxpy__(int n, double alpha, const double *x, double *y)
{
    assert(n <= 0 || (x != nullptr && y != nullptr));
    for (int i = 0; i < n; i++) y[i] += alpha * x[i];
}

void dcopy__(int n, const double *x, double *y)
{
    assert(n <= 0 || (x != nullptr && y != nullptr));
    for (int i = 0; i < n; i++) y[i] = x[i];
}

double ddot__(int n, const double *x, const double *y)
{
    double sum = 0;
    for (int i = 0; i < n; i++) sum += x[i] * y[i];
    return sum;
}

double dnrm2__(int n, const double *x)
{
    return std::sqrt(ddot__(n, x, x));
}

void dscal__(int n, double alpha, double *x)
{
    for (int i = 0; i < n; i++) x[i] *= alpha;
}

void dswap__(int n, double *x, double *y)
{
    for (int i = 0; i < n; i++) {
        const double kept = x[i];
        x[i] = y[i];
        y[i] = kept;
    }
}

float *fsmalloc__(size_t n, float value, const char *text)
{
    float *const array = fmalloc__(n, text);
    for (size_t i = 0; i < n; i++) array[i] = value;
    return array;
}
