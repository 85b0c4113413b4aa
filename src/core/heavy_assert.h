/* SPDX-License-Identifier: MIT */
/* core/heavy_assert.h: assertions dearer than O(degree) a move, on in the check preset only.
 *
 * There sizes that only choose between two ways to the same result are small, so that tests on
 * small inputs take both ways.
 */
#ifndef ZORPEL_CORE_HEAVY_ASSERT_H
#define ZORPEL_CORE_HEAVY_ASSERT_H

#ifdef ZORPEL_HEAVY_ASSERTS
#include <cstdio>
#include <cstdlib>
constexpr bool HEAVY_ASSERTS = true;
#define HEAVY_ASSERT(condition)                                                                    \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: heavy assertion failed: %s\n", __FILE__, __LINE__,        \
                         #condition);                                                              \
            std::abort();                                                                          \
        }                                                                                          \
    } while (0)
#else
constexpr bool HEAVY_ASSERTS = false;
#define HEAVY_ASSERT(condition) static_cast<void>(0)
#endif

#endif
