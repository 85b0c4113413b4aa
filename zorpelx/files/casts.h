/* SPDX-License-Identifier: MIT */
/* zorpelx/files/casts.h: 64-bit numbers as the types that texts and subscripts take. */
#ifndef ZORPELX_FILES_CASTS_H
#define ZORPELX_FILES_CASTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

/* For %lld, whatever int64_t is. */
inline long long ll(int64_t number)
{
    return number;
}

/* For subscripts and sizes; i is not negative. */
inline size_t at(int64_t i)
{
    return static_cast<size_t>(i);
}

/* Numbers that fit 32 bits, as the library takes them. */
inline std::vector<int> narrowed(const std::vector<int64_t> &numbers)
{
    std::vector<int> narrow(numbers.size());
    for (size_t i = 0; i < numbers.size(); i++) narrow[i] = static_cast<int>(numbers[i]);
    return narrow;
}

#endif
