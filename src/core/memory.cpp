/* core/memory.cpp: checked allocation and release of arrays in groups. */
#include "core/memory.h"

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/errors.h"

void *QXmalloc__(size_t size, const char *text)
{
    if (size == 0) return nullptr;
    void *const array = size > PTRDIFF_MAX ? nullptr : malloc(size);
    if (array == nullptr) {
        const int shown = size > INT_MAX ? INT_MAX : static_cast<int>(size);
        errexit__("Memory allocation failed for %s. Requested size: %d bytes\n", text, shown);
    }
    return array;
}

void *alloc_records(size_t n, size_t recordsize, const char *text)
{
    return QXmalloc__(n > SIZE_MAX / recordsize ? SIZE_MAX : n * recordsize, text);
}

void keep_freed_memory(size_t size)
{
    // glibc gets blocks above a bound of 128 KB straight from the system, and raises the bound, to
    // 32 MB at most, when it is given one back; until then every level's arrays are new pages. The
    // block is never touched, and volatile, as a pair of calls without effect may be left out.
    constexpr size_t least = size_t{128} << 10, most = (size_t{32} << 20) - (size_t{64} << 10);
    if (size <= least) return;
    void *volatile const block = malloc(size < most ? size : most);
    free(block);
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

float *fsmalloc__(size_t n, float value, const char *text)
{
    float *const array = fmalloc__(n, text);
    for (size_t i = 0; i < n; i++) array[i] = value;
    return array;
}

/* Frees what the pointer variable at slot refers to. The variable has some object pointer type, so
 * it is read and written as bytes. */
static void free_slot(void *slot)
{
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
