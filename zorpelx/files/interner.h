/* SPDX-License-Identifier: MIT */
/* zorpelx/files/interner.h: the table that numbers names.
 *
 * Names come in an order that no cache foresees. A reader that knows some names ahead asks for the
 * places of all of them before it looks the first one up:
 *
 *     for (name of a block) prefetch_name(interner, name);
 *     for (name of a block) numbers.push_back(intern(&interner, name, budget));
 */
#ifndef ZORPELX_FILES_INTERNER_H
#define ZORPELX_FILES_INTERNER_H

#include <cassert>

#include "name_key.h"
#include "names.h"

/* Names that are all different, each with its number.
 *   I1  slots[s].index is -1 or the number of a name whose search passes s; head and tail are its
 *       key
 *   I2  at most three quarters of the slots are taken; their number is a power of two, or 0 */
struct Interner {
    struct Slot {
        uint64_t head;
        uint32_t tail;
        int32_t index;
    };
    Names names = {};
    std::vector<Slot> slots = {};
};

/* The slot of a name, or the free one where it belongs. There is a free one. */
inline size_t slot_of(const Interner &interner, std::string_view name, const NameKey &key)
{
    assert(!interner.slots.empty());
    const Interner::Slot *const slots = interner.slots.data();
    const size_t mask = interner.slots.size() - 1;
    for (size_t at = hash_of_key(key) & mask;; at = (at + 1) & mask) {
        const Interner::Slot &slot = slots[at];
        if (slot.index < 0) return at;
        if (!same_key({slot.head, slot.tail}, key)) continue;
        if (!is_long_key(key) || name_of(interner.names, slot.index) == name) return at;
    }
}

/* Adds a name that is not there. */
int32_t intern_new(Interner *interner, std::string_view name, const NameKey &key, Budget *budget);

/* The number of a name, which is added if it is new. Numbers begin at 0 and have no gaps.
 * Cost    O(length)
 * Errors  FileError: more than 2^31 - 2 names; past the budget */
__attribute__((always_inline)) inline int32_t intern(Interner *interner, std::string_view name,
                                                     Budget *budget)
{
    const NameKey key = key_of_name(name);
    if (!interner->slots.empty()) {
        const int32_t index = interner->slots[slot_of(*interner, name, key)].index;
        if (index >= 0) return index;
    }
    return intern_new(interner, name, key, budget);
}

/* The number of a name; -1 if it is not there. */
int32_t find_name(const Interner &interner, std::string_view name);

/* Asks for the place where a name is looked for. */
__attribute__((always_inline)) inline void prefetch_name(const Interner &interner,
                                                         std::string_view name)
{
    if (interner.slots.empty()) return;
    const size_t mask = interner.slots.size() - 1;
    __builtin_prefetch(&interner.slots[hash_of_key(key_of_name(name)) & mask]);
}

/* The names, and an interner as new. */
Names take_names(Interner *interner, Budget *budget);

#endif
