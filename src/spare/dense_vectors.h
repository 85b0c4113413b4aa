/* SPDX-License-Identifier: MIT */
/* spare/dense_vectors.h: kernels on vectors of reals, which belong to the engine's vocabulary though
 * partitioning needs none of them. */
#ifndef ZORPEL_SPARE_DENSE_VECTORS_H
#define ZORPEL_SPARE_DENSE_VECTORS_H

#include <cstddef>

/* The usual linear algebra kernels; stride 1, n entries. */
float sasum__(int n, const float *x);
double dasum__(int n, const double *x);
void daxpy__(int n, double alpha, const double *x, double *y); // y += alpha x
void dcopy__(int n, const double *x, double *y);
double ddot__(int n, const double *x, const double *y);
double dnrm2__(int n, const double *x);
void dscal__(int n, double alpha, double *x);
void dswap__(int n, double *x, double *y);

/* n reals, each set to value. */
float *fsmalloc__(size_t n, float value, const char *text);

/* |a - b| relative to the larger of the two. */
inline float RelDiff__(float a, float b)
{
    return a > b ? (a - b) / a : (b - a) / b;
}

#endif
