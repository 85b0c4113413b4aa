// SPDX-License-Identifier: MIT
/* zorpelx/lib/engine_memory.cpp: a cap on what the engine allocates in a child.
 *
 * The linker sends the engine's calls of malloc() and free() here. A limit of the address space
 * alone is no cap: a child inherits the caller's heap, and blocks that were free there are used
 * without the heap growing. So the bytes of the blocks that the engine holds are counted.
 *   M1  with a cap, held is the sum of the usable sizes of the blocks given out since it was set,
 *       and of what threads at work in malloc() are about to take
 */
#include "engine_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>

static size_t cap = SIZE_MAX;
static std::atomic<size_t> held;

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size);
void __wrap_free(void *block);
}

void cap_engine_memory(size_t most)
{
    cap = most;
    held = 0;
}

void *__wrap_malloc(size_t size)
{
    if (cap == SIZE_MAX) return __real_malloc(size);
    if (size > cap) return nullptr;
    if (held.fetch_add(size) > cap - size) {
        held -= size;
        return nullptr;
    }
    void *const block = __real_malloc(size);
    held += malloc_usable_size(block) - size; // null has no size
    return block;
}

void __wrap_free(void *block)
{
    if (cap != SIZE_MAX) held -= malloc_usable_size(block);
    __real_free(block);
}
