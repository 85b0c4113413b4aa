// SPDX-License-Identifier: MIT
/* core/memory.cpp: checked allocation and release of arrays in groups.
 *
 * Every request goes through checked_malloc: nothing for no bytes, and a sentence and the end for
 * what cannot be had. Large arrays also ask the system for large pages. Sizes are counted in
 * elements and saturate rather than wrap, so that what is too large is refused.
 */
#include "core/memory.h"

#include <cassert>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

#include "core/errors.h"

constexpr size_t MB = size_t{1} << 20;
constexpr size_t LARGE_PAGE = 2 * MB, LARGE_ARRAY = 4 * MB;

/* Requests large pages behind a block, where the system has them on request. The first use of a
 * page interrupts the program, which took 4 to 8 % of a run with pages of 4 KB, and the processor
 * keeps track of some 1,500 pages at a time only. */
static void ask_for_large_pages([[maybe_unused]] void *block, [[maybe_unused]] size_t size)
{
#ifdef MADV_HUGEPAGE
    const uintptr_t address = reinterpret_cast<uintptr_t>(block);
    const uintptr_t begin = (address + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    const uintptr_t end = (address + size) / LARGE_PAGE * LARGE_PAGE;
    if (begin < end) madvise(reinterpret_cast<void *>(begin), end - begin, MADV_HUGEPAGE);
#endif
}

static void *checked_malloc(size_t size, const char *text)
{
    assert(text != nullptr);
    if (size == 0) return nullptr;
    void *const array = size > PTRDIFF_MAX ? nullptr : malloc(size);
    if (array == nullptr) {
        const int shown = size > INT_MAX ? INT_MAX : static_cast<int>(size);
        errexit__("Memory allocation failed for %s. Requested size: %d bytes\n", text, shown);
    }
    return array;
}

void *QXmalloc__(size_t size, const char *text)
{
    void *const array = checked_malloc(size, text);
    if (size >= LARGE_ARRAY) ask_for_large_pages(array, size);
    return array;
}

static size_t size_of_records(size_t n, size_t recordsize)
{
    assert(recordsize > 0);
    return n > SIZE_MAX / recordsize ? SIZE_MAX : n * recordsize;
}

void *alloc_records(size_t n, size_t recordsize, const char *text)
{
    return QXmalloc__(size_of_records(n, recordsize), text);
}

void *alloc_pool_records(size_t n, size_t recordsize, const char *text)
{
    return checked_malloc(size_of_records(n, recordsize), text);
}

void keep_freed_memory(size_t size, size_t used)
{
    // glibc gets blocks above a bound of 128 KB straight from the system, and raises the bound, to
    // 32 MB at most, when it is given one back; until then every level's arrays are new pages. The
    // block is never touched, and volatile, as a pair of calls without effect may be left out.
    constexpr size_t least = MB / 8, most = 32 * MB - MB / 16;
    if (size <= least) return;
    const size_t kept = size < most ? size : most;
    assert(kept > least);
    void *volatile const block = malloc(kept);
    free(block);
    // The next arrays will be where this block is.
    const size_t first = used < kept ? used : kept;
    void *const next = malloc(first);
    if (next != nullptr) ask_for_large_pages(next, first);
    free(next);
}

int *imalloc__(size_t n, const char *text)
{
    return alloc_array<int>(n, text);
}

int *ismalloc__(size_t n, int value, const char *text)
{
    int *const array = imalloc__(n, text);
    for (size_t i = 0; i < n; i++) array[i] = value;
    return array;
}

float *fmalloc__(size_t n, const char *text)
{
    return alloc_array<float>(n, text);
}

/* Frees what the pointer variable at slot refers to. The variable has some object pointer type, so
 * it is read and written as bytes. */
static void free_slot(void *slot)
{
    assert(slot != nullptr && slot != LTERM); // the address of a variable
    void *array;
    memcpy(&array, slot, sizeof array);
    free(array);
    array = nullptr;
    memcpy(slot, &array, sizeof array);
}

void QXfree__(void *first, ...)
{
    free_slot(first);
    va_list slots;
    va_start(slots, first);
    for (void *slot; (slot = va_arg(slots, void *)) != LTERM;) free_slot(slot);
    va_end(slots);
}
