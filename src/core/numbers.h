/* SPDX-License-Identifier: MIT */
/* core/numbers.h: conversions whose rounding decides results. */
#ifndef ZORPEL_CORE_NUMBERS_H
#define ZORPEL_CORE_NUMBERS_H

#include <climits>

/* Truncates toward zero; what leaves the range of int saturates, not-a-number gives 0. */
inline int trunc_int(double x)
{
    if (!(x < 2147483648.0)) return x != x ? 0 : INT_MAX;
    return x > -2147483649.0 ? static_cast<int>(x) : INT_MIN;
}

/* The nearest int. */
inline int clamp_int(long long x)
{
    return x > INT_MAX ? INT_MAX : x < INT_MIN ? INT_MIN : static_cast<int>(x);
}

/* x, or 0 if it is negative: a mask, where g++ might make a branch of std::max. */
inline int at_least_0(int x)
{
    return x & ~(x >> 31);
}

#endif
