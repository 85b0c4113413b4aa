/* SPDX-License-Identifier: MIT */
/* core/memory.h: checked allocation. Every array is named in a text for the error message; a
 * request for 0 elements gives null; a failed one ends the process. */
#ifndef ZORPEL_CORE_MEMORY_H
#define ZORPEL_CORE_MEMORY_H

#include <cstddef>

/* size bytes, uninitialised. */
void *QXmalloc__(size_t size, const char *text);

/* n elements; the s-form sets each to value. */
int *imalloc__(size_t n, const char *text);
int *ismalloc__(size_t n, int value, const char *text);
float *fmalloc__(size_t n, const char *text);

/* n records of type T, uninitialised; the size is never wrapped. */
void *alloc_records(size_t n, size_t recordsize, const char *text);
template <class T> T *alloc_array(size_t n, const char *text)
{
    return static_cast<T *>(alloc_records(n, sizeof(T), text));
}

/* The same for pools of which most is never used: what is not, takes no memory. */
void *alloc_pool_records(size_t n, size_t recordsize, const char *text);
template <class T> T *alloc_pool(size_t n, const char *text)
{
    return static_cast<T *>(alloc_pool_records(n, sizeof(T), text));
}

/* Makes the C library, where it can, keep freed memory of up to twice size bytes for the
 * next arrays instead of giving it back to the system, and asks for large pages behind the first
 * used bytes of it: as many as are used in any case, so that none is taken for a small rest.
 * Nothing is allocated. */
void keep_freed_memory(size_t size, size_t used);

/* Takes the addresses of pointer variables up to the sentinel LTERM; frees each array that is not
 * null and nulls its variable. The first argument is always an address. */
#define LTERM (reinterpret_cast<void *>(-1))
void QXfree__(void *first, ...);

#endif
