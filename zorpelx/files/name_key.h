/* SPDX-License-Identifier: MIT */
/* zorpelx/files/name_key.h: a name in twelve bytes, so that most names are compared without being
 * looked up.
 *
 *        head, 8 bytes            tail, 4 bytes
 *     | u  _  c  o  r  e  /  g |  1  7  0  0 |     "u_core/g17"
 *     |   hash of the text     | length | ff |     longer ones, and those that end with 00 or ff
 *
 * Two short keys are equal only if their names are; two long ones leave it to the texts.
 */
#ifndef ZORPELX_FILES_NAME_KEY_H
#define ZORPELX_FILES_NAME_KEY_H

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

/*   K1  the last byte of tail is ff in long keys only */
struct NameKey {
    uint64_t head;
    uint32_t tail;
};

constexpr size_t SHORT_NAME = 12;
constexpr uint32_t LONG_KEY = 0xff000000;
constexpr uint64_t KEY_FACTOR = 0x9e3779b97f4a7c15;

inline bool is_long_key(const NameKey &key)
{
    return key.tail >= LONG_KEY;
}

inline bool same_key(const NameKey &a, const NameKey &b)
{
    return a.head == b.head && a.tail == b.tail;
}

inline uint64_t load_eight(const char *at)
{
    uint64_t word = 0;
    memcpy(&word, at, sizeof word);
    return word;
}

inline uint32_t load_four(const char *at)
{
    uint32_t word = 0;
    memcpy(&word, at, sizeof word);
    return word;
}

/* Byte by byte: the plain rule. */
inline NameKey plain_short_key(std::string_view name)
{
    NameKey key = {0, 0};
    for (size_t i = 0; i < name.size(); i++) {
        const uint64_t byte = static_cast<unsigned char>(name[i]);
        if (i < 8)
            key.head |= byte << (8 * i);
        else
            key.tail |= static_cast<uint32_t>(byte) << (8 * (i - 8));
    }
    return key;
}

/* The same by two loads that overlap, of which the second is shifted to where it belongs. */
inline NameKey short_key(std::string_view name)
{
    const char *const s = name.data();
    const size_t size = name.size();
    if constexpr (std::endian::native != std::endian::little) return plain_short_key(name);
    if (size > 8)
        return {load_eight(s), static_cast<uint32_t>(load_eight(s + size - 8) >> (128 - 8 * size))};
    if (size >= 4) return {load_four(s) | uint64_t{load_four(s + size - 4)} << (8 * size - 32), 0};
    return plain_short_key(name);
}

/* The key of a name that has no short one. */
NameKey long_key(std::string_view name);

inline NameKey key_of_name(std::string_view name)
{
    if (name.empty()) return {0, 0};
    const unsigned char last = static_cast<unsigned char>(name.back());
    if (name.size() > SHORT_NAME || last == 0 || last == 0xff) return long_key(name);
    return short_key(name);
}

/* One multiplication for the head, one for both. */
inline uint32_t hash_of_key(const NameKey &key)
{
    uint64_t hash = (key.head ^ key.head >> 32) * KEY_FACTOR;
    hash = (hash ^ hash >> 32 ^ key.tail) * KEY_FACTOR;
    return static_cast<uint32_t>(hash >> 32);
}

#endif
