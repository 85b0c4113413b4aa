// SPDX-License-Identifier: MIT
/* zorpelx/files/interner.cpp: a table of open addressing over names.
 *
 * The key stands in the slot: a short name is found without a look at its characters, and the
 * table grows without one.
 */
#include "interner.h"

#include <cassert>
#include <climits>

#include "fileerror.h"
#include "zorpelx.h"

constexpr size_t FEWEST_SLOTS = 64;

/* Eight bytes at a time, each mixed by a multiplication whose upper half is folded in. */
NameKey long_key(std::string_view name)
{
    uint64_t hash = name.size() * KEY_FACTOR;
    while (name.size() >= 8) {
        hash = (hash ^ load_eight(name.data())) * KEY_FACTOR;
        hash ^= hash >> 32;
        name.remove_prefix(8);
    }
    hash = (hash ^ plain_short_key(name).head) * KEY_FACTOR;
    return {hash ^ hash >> 32, LONG_KEY};
}

static void grow_slots(Interner *interner, Budget *budget)
{
    const size_t old = interner->slots.size(), larger = old == 0 ? FEWEST_SLOTS : 2 * old;
    charge(budget, larger * sizeof(Interner::Slot));
    std::vector<Interner::Slot> slots(larger, {0, 0, -1});
    for (const Interner::Slot &slot : interner->slots) {
        if (slot.index < 0) continue;
        size_t at = hash_of_key({slot.head, slot.tail}) & (larger - 1);
        while (slots[at].index >= 0) at = (at + 1) & (larger - 1);
        slots[at] = slot;
    }
    interner->slots.swap(slots);
    give_back(budget, old * sizeof(Interner::Slot));
}

int32_t intern_new(Interner *interner, std::string_view name, const NameKey &key, Budget *budget)
{
    const size_t count = static_cast<size_t>(count_names(interner->names));
    if (4 * count >= 3 * interner->slots.size()) grow_slots(interner, budget);
    if (count >= INT_MAX - 1)
        file_error(ZORPELX_BAD_INPUT, "%s: more than %d names, which 32 bits do not count",
                   budget->name.c_str(), INT_MAX - 1);
    add_name(&interner->names, name, budget);
    const int32_t index = static_cast<int32_t>(count);
    interner->slots[slot_of(*interner, name, key)] = {key.head, key.tail, index};
    return index;
}

int32_t find_name(const Interner &interner, std::string_view name)
{
    if (interner.slots.empty()) return -1;
    return interner.slots[slot_of(interner, name, key_of_name(name))].index;
}

Names take_names(Interner *interner, Budget *budget)
{
    give_back(budget, interner->slots.size() * sizeof(Interner::Slot));
    interner->slots = {};
    Names names;
    std::swap(names, interner->names);
    return names;
}
