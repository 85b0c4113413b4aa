// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/names_test.cpp: keys of names, and the table that numbers names. */
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

#include "interner.h"

namespace
{

/* Names that are hard to tell apart: all lengths around that of short keys, zeros and ff within. */
std::string drawn_name(std::mt19937 *random)
{
    static const char CHARACTERS[] = {'a', 'b', '\0', '\xff'};
    std::string name((*random)() % 28, 'a');
    for (int changes = 3; changes > 0 && !name.empty(); changes--)
        name[(*random)() % name.size()] = CHARACTERS[(*random)() % 4];
    return name;
}

TEST(NameKey, short_keys_by_two_loads_are_those_by_bytes)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; i++) {
        std::string name;
        for (size_t size = random() % (SHORT_NAME + 1); size > 0; size--)
            name += static_cast<char>(random());
        EXPECT_TRUE(same_key(short_key(name), plain_short_key(name))) << name;
    }
}

TEST(NameKey, equal_short_keys_have_equal_names)
{
    std::mt19937 random(2);
    std::map<std::pair<uint64_t, uint32_t>, std::string> seen;
    for (int i = 0; i < 50000; i++) {
        const std::string name = drawn_name(&random);
        const NameKey key = key_of_name(name);
        if (is_long_key(key)) continue;
        EXPECT_EQ(seen.try_emplace({key.head, key.tail}, name).first->second, name);
    }
    EXPECT_GT(seen.size(), 500u);
}

TEST(Interner, numbers_names_as_a_map_does)
{
    std::mt19937 random(3);
    Budget budget = make_budget("names", 0, 0, 0);
    Interner interner;
    std::map<std::string, int32_t> expected;
    for (int i = 0; i < 100000; i++) {
        const std::string name = drawn_name(&random);
        const auto known = expected.find(name);
        EXPECT_EQ(find_name(interner, name), known == expected.end() ? -1 : known->second);
        prefetch_name(interner, name);
        const int32_t number = static_cast<int32_t>(expected.size());
        EXPECT_EQ(intern(&interner, name, &budget),
                  expected.try_emplace(name, number).first->second);
    }
    for (const auto &[name, number] : expected) EXPECT_EQ(name_of(interner.names, number), name);
}

TEST(Interner, names_that_count_on_spread_over_the_table)
{
    std::set<uint32_t> low;
    constexpr uint32_t NAMES = 1 << 14;
    for (uint32_t i = 0; i < NAMES; i++)
        low.insert(hash_of_key(key_of_name(std::string("u").append(std::to_string(i)))) %
                   (2 * NAMES));
    EXPECT_GT(low.size(), NAMES * 7 / 10); // 79 % at random
}

} // namespace
