/* SPDX-License-Identifier: MIT */
/* fuzz/take_byte.h: the bytes of an input one by one, zeros behind the last. */
#ifndef ZORPEL_FUZZ_TAKE_BYTE_H
#define ZORPEL_FUZZ_TAKE_BYTE_H

#include <cstddef>
#include <cstdint>

struct Source {
    const uint8_t *bytes;
    size_t left;
};

inline int take_byte(Source *source)
{
    if (source->left == 0) return 0;
    source->left--;
    return *source->bytes++;
}

#endif
