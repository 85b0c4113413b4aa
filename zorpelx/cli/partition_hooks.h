/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/partition_hooks.h: what differs where a partition is made together with others. */
#ifndef ZORPELX_CLI_PARTITION_HOOKS_H
#define ZORPELX_CLI_PARTITION_HOOKS_H

#include "json.h"
#include "solving.h"

/* As it stands, for partitioning alone. */
struct PartitionHooks {
    virtual ~PartitionHooks() = default;
    virtual Problem read(const Settings &settings);
    virtual void begin(const Settings &, const Problem &) {} // before solve()
    virtual const Sharing *sharing() { return nullptr; }
    virtual void end(Status, const Solution &) {} // may throw: then nothing is delivered
    virtual void add_to(Json *) {}
};

/* The partition command with outputs and all. */
Status partition_with(const Settings &settings, PartitionHooks *hooks);

#endif
