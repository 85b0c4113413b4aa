/* SPDX-License-Identifier: MIT */
/* tests/unit/broken.h: which invariant a predicate says is broken. */
#ifndef ZORPEL_TESTS_UNIT_BROKEN_H
#define ZORPEL_TESTS_UNIT_BROKEN_H

#include <gtest/gtest.h>

#include <string>

/* The number that predicate names, empty if the record is whole. */
template <typename Predicate> inline std::string broken_rule(Predicate predicate)
{
    testing::internal::CaptureStderr();
    const bool whole = predicate();
    const std::string printed = testing::internal::GetCapturedStderr();
    if (whole) return printed; // which should be nothing
    const size_t end = printed.find(" does not hold"), start = printed.rfind(' ', end - 1) + 1;
    return end == std::string::npos ? "unnamed" : printed.substr(start, end - start);
}

/* Gives field another value for the time of a check. */
template <typename Field, typename Value, typename Predicate>
inline std::string broken_by(Field &field, Value value, Predicate predicate)
{
    const Field kept = field;
    field = static_cast<Field>(value);
    const std::string rule = broken_rule(predicate);
    field = kept;
    return rule;
}

#endif
