// SPDX-License-Identifier: MIT
/* zorpelx/lib/watch.cpp: the deadline, the cancel flag and the memory cap of one call. */
#include "watch.h"

#include <cassert>

double Watch::seconds() const
{
    return std::chrono::duration<double>(Clock::now() - began).count();
}

double Watch::left() const
{
    constexpr double NO_DEADLINE = 1e9;
    return o != nullptr && o->timeout > 0 ? o->timeout - seconds() : NO_DEADLINE;
}

bool Watch::cancelled() const
{
    return told_to_stop ||
           (o->cancel != nullptr && __atomic_load_n(o->cancel, __ATOMIC_RELAXED) != 0);
}

Fault Watch::stop_reason() const
{
    const char *const kept = finished > 0 ? "the best finished start is kept" : "none has finished";
    if (cancelled())
        return fault(ZORPELX_CANCELLED, "Cancelled after %d of %d starts; %s.", finished + failed,
                     o->starts, kept);
    if (left() <= 0)
        return fault(ZORPELX_TIMEOUT, "The deadline came after %d of %d starts; %s.",
                     finished + failed, o->starts, kept);
    return {};
}

void Watch::look()
{
    until_look = PATIENCE;
    if (o == nullptr || closing) return;
    if (Fault reason = stop_reason()) throw Stopped{reason};
}

size_t Watch::room() const
{
    if (!capped()) return SIZE_MAX;
    assert(charged <= o->memory);
    return o->memory - charged;
}

void Watch::charge(size_t bytes, const char *purpose)
{
    if (!capped()) return;
    if (bytes > room())
        throw Stopped{
            fault(ZORPELX_NO_MEMORY,
                  "The memory cap of %zu bytes is passed in the calling process: %s would "
                  "take %zu of the %zu left.",
                  o->memory, purpose, bytes, room())};
    charged += bytes;
}
