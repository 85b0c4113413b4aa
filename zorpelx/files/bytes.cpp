// SPDX-License-Identifier: MIT
/* zorpelx/files/bytes.cpp: a whole file in memory, plain or expanded. */
#include "bytes.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

#include "expand.h"
#include "rawfile.h"

char *room_for(Bytes *bytes, size_t more)
{
    if (bytes->capacity - bytes->size < more) {
        const size_t larger = std::max(bytes->size + more, 2 * bytes->capacity);
        void *const data = realloc(bytes->data.get(), larger);
        if (data == nullptr) throw std::bad_alloc();
        static_cast<void>(bytes->data.release());
        bytes->data.reset(static_cast<char *>(data));
        bytes->capacity = larger;
    }
    return bytes->data.get() + bytes->size;
}

void take_in(Bytes *bytes, size_t more, Budget *budget)
{
    assert(more <= bytes->capacity - bytes->size);
    charge(budget, more);
    bytes->size += more;
}

std::string_view view_of(const Bytes &bytes)
{
    return {bytes.data.get(), bytes.size};
}

/* What the block holds, then the rest of the file, which needs no block on its way. */
static void copy_plain(RawFile *file, Bytes *bytes)
{
    const size_t begun = file->end - file->begin;
    if (begun == 0) return; // an empty file
    memcpy(room_for(bytes, begun), file->block.data() + file->begin, begun);
    take_in(bytes, begun, file->budget);
    file->begin = file->end;
    while (!file->finished)
        take_in(bytes, read_into(file, room_for(bytes, RAW_BLOCK), RAW_BLOCK), file->budget);
}

Bytes read_bytes(const std::string &name, Budget *budget)
{
    RawFile raw = open_raw(name, budget);
    const std::unique_ptr<RawFile, decltype(&close_raw)> closing(&raw, close_raw);
    fill_up_to(&raw, LONGEST_MAGIC);
    Bytes bytes;
    const Expander *const expander = find_expander(raw);
    if (expander != nullptr)
        expander->expand(&raw, &bytes);
    else
        copy_plain(&raw, &bytes);
    return bytes;
}
