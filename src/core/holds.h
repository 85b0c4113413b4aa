/* SPDX-License-Identifier: MIT */
/* core/holds.h: how a record's predicate says which invariant is broken.
 *
 * A record's comment numbers its invariants. Its predicate, named ..._ok, tests each of them by
 * HOLDS(number, condition), and every stage that makes or changes the record calls the predicate
 * through HEAVY_ASSERT. A failure prints one line with the number and makes the predicate false.
 * Predicates stand in files of their own, which the release library does not contain.
 */
#ifndef ZORPEL_CORE_HOLDS_H
#define ZORPEL_CORE_HOLDS_H

#include <cstdio>

#define HOLDS(rule, condition)                                                                     \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: %s does not hold: %s\n", __FILE__, __LINE__, #rule,       \
                         #condition);                                                              \
            return false;                                                                          \
        }                                                                                          \
    } while (0)

#endif
