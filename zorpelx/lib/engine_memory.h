/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/engine_memory.h: a cap on what the engine allocates in a child. */
#ifndef ZORPELX_LIB_ENGINE_MEMORY_H
#define ZORPELX_LIB_ENGINE_MEMORY_H

#include <cstddef>

/* From now on malloc() fails where the blocks held since would take more than this many bytes. */
void cap_engine_memory(size_t most);

#endif
